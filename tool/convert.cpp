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
  return options.output_format == "png" ? FileKind::kPng : FileKind::kRaw;
}

// The format to write: asked for or, by default, RGB.
const FormatInfo &target_format(const ConvertOptions &options, const FormatInfo &source) {
  const FormatInfo &target = !options.to.empty() ? parse_format(options.to)
                             : source.rgb()      ? source
                                                 : *find_format(PIVRA_FORMAT_RGB888);
  if (target.code != source.code && !converts(source.code, target.code)) {
    fail("{} does not convert to {}; 'pivra formats' lists what does", source.name, target.name);
  }
  if (output_kind(options) == FileKind::kPng && !target.rgb()) {
    fail("PNG does not hold {}; choose an RGB format with --to", target.name);
  }
  return target;
}

void print_stats(std::uint64_t frames, const FrameShape &shape, Seconds spent) {
  const double pixels = double(frames) * shape.width * shape.height;
  fmt::print(stderr, "{} frames of {}x{}: {:.3f} ms per frame, {:.1f} Mpixel/s in the library\n",
             frames, shape.width, shape.height, 1e3 * spent.count() / double(frames),
             1e-6 * pixels / spent.count());
}

}  // namespace

void convert_clip(const ConvertOptions &options) {
  const FrameRange range = parse_frames(options.frames);
  Clip clip(options.input, raw_shape(options));
  const FrameShape shape = clip.shape();
  const FormatInfo &target = target_format(options, *find_format(shape.format));
  const bool converting = target.code != shape.format;
  if (options.stats && !converting) fail("--stats has nothing to measure without a conversion");

  Picture source(shape.format, shape.width, shape.height);
  std::uint64_t index = 0;
  for (; index < range.first && !clip.at_end(); ++index) clip.read(source);
  if (clip.at_end()) fail("{} has {} frames, none of them selected", clip.name(), index);
  const auto more = [&] { return index < range.end && !clip.at_end(); };

  std::optional<std::uint64_t> total = clip.frames();
  if (total) total = std::min(*total, range.end) - range.first;
  Progress progress(total);
  std::unique_ptr<FrameWriter> writer;
  Picture result(target.code, shape.width, shape.height);
  Seconds spent(0);
  do {
    clip.read(source);
    const std::uint64_t number = index++;
    if (converting) {
      const auto start = std::chrono::steady_clock::now();
      convert(source.desc(), result.desc());
      spent += std::chrono::steady_clock::now() - start;
    }
    if (!writer) writer = make_writer(options.output, output_kind(options), more());
    writer->write(converting ? result : source, number);
    progress.show(index - range.first);
  } while (more());
  writer->finish();
  if (options.stats) print_stats(index - range.first, shape, spent);
}

}  // namespace pivra::tool
