#include <algorithm>
#include <chrono>
#include <optional>
#include <pivra.hpp>

#include "clip.h"
#include "commands.h"
#include "failure.h"
#include "options.h"
#include "progress.h"
#include "writer.h"
#include "y4m.h"

namespace pivra::tool {

namespace {

using Seconds = std::chrono::duration<double>;

std::optional<FrameShape> raw_shape(const ConvertOptions &options) {
  if (options.from.empty() && options.size.empty()) return {};
  if (options.from.empty() || options.size.empty()) {
    fail("raw frames need both --from and --size");
  }
  const Size size = parse_size(options.size);
  return FrameShape{parse_format(options.from).code, size.width, size.height};
}

FileKind output_kind(const ConvertOptions &options) {
  if (options.output_format.empty()) return kind_of(options.output);
  return options.output_format == "png"   ? FileKind::kPng
         : options.output_format == "y4m" ? FileKind::kY4m
                                          : FileKind::kRaw;
}

// By default the input's format if the output holds it, else yuv420 or RGB.
std::string_view default_target(FileKind kind, const FormatInfo &source) {
  if (kind == FileKind::kY4m) return y4m_holds(source.code) ? source.name : "yuv420";
  return source.rgb()                                 ? source.name
         : converts(source.code, PIVRA_FORMAT_RGB888) ? "rgb888"
                                                      : "rgba8888";
}

const FormatInfo &target_format(const ConvertOptions &options, const FormatInfo &source) {
  const FileKind kind = output_kind(options);
  const std::string fallback(default_target(kind, source));
  const FormatInfo &target = parse_format(options.to.empty() ? fallback : options.to);
  if (target.code != source.code && !converts(source.code, target.code)) {
    fail("{} does not convert to {}; 'pivra formats' lists what does", source.name, target.name);
  }
  if (kind == FileKind::kPng && !target.rgb()) {
    fail("PNG does not hold {}; choose an RGB format with --to", target.name);
  }
  if (kind == FileKind::kY4m && !y4m_holds(target.code)) {
    fail("Y4M does not hold {}; choose yuv400, yuv420, yuv422n or yuv444 with --to", target.name);
  }
  return target;
}

std::optional<std::uint64_t> count_selected(const Clip &clip, const FrameRange &range) {
  if (!clip.frames()) return {};
  const std::uint64_t end = std::min(*clip.frames(), range.end);
  return end > range.first ? end - range.first : 0;
}

struct Stats {
  std::uint64_t frames = 0;
  Seconds in_library{0};
};

// Frames that have the target's format already are passed on as they are.
Stats convert_frames(Clip &clip, const FormatInfo &target, const FrameRange &range,
                     const ConvertOptions &options) {
  const auto [format, width, height] = clip.shape();
  Picture source(format, width, height), converted(target.code, width, height);
  Picture &result = target.code == format ? source : converted;

  std::uint64_t index = 0;
  for (; index < range.first && !clip.at_end(); ++index) clip.read(source);
  const auto more = [&] { return index < range.end && !clip.at_end(); };
  if (!more()) fail("{} has {} frames, none of them selected", clip.name(), index);

  Stats stats;
  Progress progress(count_selected(clip, range));
  std::unique_ptr<FrameWriter> writer;
  while (more()) {
    clip.read(source);
    const std::uint64_t number = index++;
    if (&result == &converted) {
      const auto start = std::chrono::steady_clock::now();
      convert(source.desc(), converted.desc());
      stats.in_library += std::chrono::steady_clock::now() - start;
    }
    if (!writer)
      writer = make_writer(options.output, output_kind(options), more(), clip.y4m_parameters());
    writer->write(result, number);
    progress.show(++stats.frames);
  }
  writer->finish();
  return stats;
}

void print_stats(const Stats &stats, const FrameShape &shape) {
  const double frames = double(stats.frames), seconds = stats.in_library.count();
  fmt::print(stderr, "{} frames of {}x{}: {:.3f} ms per frame, {:.1f} Mpixel/s in the library\n",
             stats.frames, shape.width, shape.height, 1e3 * seconds / frames,
             1e-6 * frames * shape.width * shape.height / seconds);
}

}  // namespace

void convert_clip(const ConvertOptions &options) {
  const FrameRange range = parse_frames(options.frames);
  Clip clip(options.input, raw_shape(options));
  const FormatInfo &source = *find_format(clip.shape().format);
  const FormatInfo &target = target_format(options, source);
  if (options.stats && source.code == target.code) {
    fail("--stats has nothing to measure without a conversion");
  }
  const Stats stats = convert_frames(clip, target, range, options);
  if (options.stats) print_stats(stats, clip.shape());
}

}  // namespace pivra::tool
