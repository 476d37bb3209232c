#include <algorithm>
#include <chrono>
#include <optional>
#include <pivra.hpp>

#include "clip.h"
#include "commands.h"
#include "failure.h"
#include "options.h"
#include "pipeline.h"
#include "progress.h"
#include "writer.h"
#include "y4m.h"

namespace pivra::tool {

namespace {

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

Wanted wanted_of(const ConvertOptions &options) {
  Wanted wanted;
  if (!options.deblock.empty()) wanted.deblock = parse_integer(options.deblock, 0, 15, "strength");
  if (!options.saturation.empty())
    wanted.saturation = parse_decimal(options.saturation, 0, 31, "gain");
  if (!options.resize.empty()) wanted.size = parse_size(options.resize);
  if (!options.rotate.empty()) wanted.turn = parse_turn(options.rotate);
  if (options.mode1) wanted.growth = Growth::kRamp;
  wanted.transcode = options.transcode;
  if (options.anaglyph) wanted.anaglyph = options.swap ? Red::kRight : Red::kLeft;
  wanted.detail = options.detail;
  wanted.dither = options.dither;
  return wanted;
}

// What is written, if the steps before the conversion leave frames in the `source` format.
const FormatInfo &target_format(const ConvertOptions &options, const FormatInfo &source) {
  const FileKind kind = output_kind(options);
  const std::string fallback(options.dither ? "rgb565"
                             : options.transcode && kind == FileKind::kRaw
                                 ? "nv12"
                                 : default_target(kind, source));
  const FormatInfo &target = parse_format(options.to.empty() ? fallback : options.to);
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

// Returns their number.
std::uint64_t convert_frames(Clip &clip, Pipeline &pipeline, const FrameRange &range,
                             const ConvertOptions &options) {
  std::uint64_t index = 0, frames = 0;
  for (; index < range.first && !clip.at_end(); ++index) clip.read(pipeline.source());
  const auto more = [&] { return index < range.end && !clip.at_end(); };
  if (!more()) fail("{} has {} frames, none of them selected", clip.name(), index);

  Progress progress(count_selected(clip, range));
  std::unique_ptr<FrameWriter> writer;
  while (more()) {
    clip.read(pipeline.source());
    const std::uint64_t number = index++;
    Picture &result = pipeline.run();
    if (!writer)
      writer = make_writer(options.output, output_kind(options), more(), clip.y4m_parameters());
    writer->write(result, number);
    progress.show(++frames);
  }
  writer->finish();
  return frames;
}

void print_stats(const Pipeline &pipeline, std::uint64_t count, const FrameShape &shape,
                 std::chrono::duration<double> elapsed) {
  const double frames = double(count), seconds = pipeline.spent().count();
  fmt::print(stderr,
             "{} frames of {}x{}: {:.3f} ms per frame, {:.1f} Mpixel/s in the library ({})\n"
             "{:.1f} frames/s with reading and writing, {:.0f} % of the time outside the library\n",
             count, shape.width, shape.height, 1e3 * seconds / frames,
             1e-6 * frames * shape.width * shape.height / seconds, pipeline.calls(),
             frames / elapsed.count(), 100 * (1 - seconds / elapsed.count()));
}

}  // namespace

void convert_clip(const ConvertOptions &options) {
  const FrameRange range = parse_frames(options.frames);
  Wanted wanted = wanted_of(options);
  Clip clip(options.input, raw_shape(options));
  const FormatInfo &source = *find_format(clip.shape().format);
  const FormatInfo *turned = turned_format(source.code, wanted.turn);
  wanted.format = &target_format(options, wanted.anaglyph    ? parse_format("rgb888")
                                          : wanted.transcode ? parse_format("nv12")
                                          : turned           ? *turned
                                                             : source);
  Pipeline pipeline(clip.shape(), wanted);
  if (options.stats && pipeline.empty())
    fail("--stats has nothing to measure, for nothing is done");
  const auto start = std::chrono::steady_clock::now();
  const std::uint64_t frames = convert_frames(clip, pipeline, range, options);
  if (options.stats)
    print_stats(pipeline, frames, clip.shape(), std::chrono::steady_clock::now() - start);
}

}  // namespace pivra::tool
