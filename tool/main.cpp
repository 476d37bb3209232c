// The command line.
#include <CLI/CLI.hpp>
#include <cstdio>
#include <exception>
#include <new>

#include "commands.h"
#include "failure.h"
#include "output.h"

namespace pivra::tool {

namespace {

void add_convert(CLI::App &app, ConvertOptions &options) {
  CLI::App *command = app.add_subcommand("convert", "Convert the frames of a clip");
  command
      ->add_option("input", options.input,
                   "Y4M file, or raw frames with --from and --size; - is standard input")
      ->required();
  command->add_option("output", options.output, "File to write; - is standard output")->required();
  command->add_option("-f,--from", options.from, "Format of raw input");
  command->add_option("-s,--size", options.size, "Size of raw input in pixels, as 1280x720");
  command->add_option("-t,--to", options.to,
                      "Format to convert to (default: rgb888; RGB input stays as it is)");
  command->add_option("--frames", options.frames,
                      "Frames A:B from 0, without B; A: to the end, :B from the start, A for one");
  command
      ->add_option("--output-format", options.output_format, "raw or png (default: by the suffix)")
      ->check(CLI::IsMember({"raw", "png"}));
  command->add_flag("--stats", options.stats, "Print the time spent in the library");
  command->footer(
      "Raw output holds the frames one behind the other. Several frames to frame.png\n"
      "become frame-0000.png, frame-0001.png, ... by their numbers in the clip; %d or\n"
      "%04d in the name puts the number elsewhere. Format names are those of\n"
      "'pivra formats', with FFmpeg's and GStreamer's.\n\n"
      "  pivra convert clip.y4m frame.png --to rgb565 --frames 100\n"
      "  ffmpeg -i clip.mp4 -f rawvideo -pix_fmt nv12 - | \\\n"
      "    pivra convert - clip.rgb -f nv12 -s 1280x720 --to bgra8888");
  command->callback([&options] { convert_clip(options); });
}

int run(int argc, char **argv) {
  CLI::App app("Bit-exact pixel format conversion of video frames.");
  app.set_version_flag("--version", "pivra " PIVRA_VERSION);
  app.require_subcommand(1);
  ConvertOptions options;
  add_convert(app, options);
  app.add_subcommand("formats", "List the formats and what converts")->callback(list_formats);
  try {
    app.parse(argc, argv);
  } catch (const CLI::ParseError &stop) {
    // Also how CLI11 ends after --help and --version.
    if (stop.get_exit_code() == 0) return app.exit(stop);
    fail("{}", stop.what());
  }
  if (std::fflush(stdout) != 0) fail_to("write", "standard output");
  return 0;
}

}  // namespace

}  // namespace pivra::tool

int main(int argc, char **argv) {
  pivra::tool::remove_unfinished_output_on_signals();
  try {
    return pivra::tool::run(argc, argv);
  } catch (const std::bad_alloc &) {
    fmt::print(stderr, "pivra: a frame does not fit into memory\n");
  } catch (const std::exception &error) {
    fmt::print(stderr, "pivra: {}\n", error.what());
  }
  return 1;
}
