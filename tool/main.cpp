// The command line.
#include <CLI/CLI.hpp>
#include <cstdio>
#include <exception>
#include <functional>
#include <new>

#include "commands.h"
#include "failure.h"
#include "output.h"

namespace pivra::tool {

namespace {

using AddOption = std::function<CLI::Option *(const char *name, std::string &value,
                                              const char *type, const char *help)>;

// What commands that read and write clips have in common; `raw_size` is how they call the size
// of raw input.
AddOption add_files(CLI::App &command, ConvertOptions &options,
                    const char *raw_size = "-s,--size") {
  AddOption add = [&command](const char *name, std::string &value, const char *type,
                             const char *help) {
    return command.add_option(name, value, help)->type_name(type);
  };
  add("input", options.input, "FILE", "Y4M, PNG, or raw frames with -f and -s; - is standard input")
      ->required();
  add("output", options.output, "FILE", "Raw frames, Y4M or PNG; - is standard output")->required();
  add("-f,--from", options.from, "FORMAT", "Format of raw input");
  add(raw_size, options.size, "WxH", "Size of raw input in pixels");
  add("-t,--to", options.to, "FORMAT",
      "Format to convert to (default: RGB, or yuv420 for Y4M, unless the input fits)");
  add("--frames", options.frames, "A:B",
      "Frames A to B - 1, counted from 0; also A: to the end, :B, or A alone");
  add("--output-format", options.output_format, "KIND",
      "By default png for *.png, y4m for *.y4m, else raw")
      ->check(CLI::IsMember({"raw", "y4m", "png"}));
  command.add_flag("--stats", options.stats, "Print the time spent in the library");
  command.callback([&options] { convert_clip(options); });
  return add;
}

void add_convert(CLI::App &app, ConvertOptions &options) {
  CLI::App *command = app.add_subcommand("convert", "Convert the frames of a clip");
  const AddOption add = add_files(*command, options);
  add("--resize", options.resize, "WxH", "Size of the result in pixels");
  command->add_flag("--mode1", options.mode1, "Fill the gaps of a growing picture with ramps");
  add("--rotate", options.rotate, "TURN", "90l, 90r, 180, hmirror or vmirror");
  command->add_flag("--dither", options.dither, "Dither yuv400, yuv420 or yv12 to 16-bit RGB");
  add("--deblock", options.deblock, "QP", "Smooth the edges of 8x8 blocks, by 0 to 15");
  add("--saturation", options.saturation, "GAIN", "Multiply the colour, 1 leaves it as it is");
  command->add_flag("--detail", options.detail, "Bring out detail in the luma");
  command->footer(
      "Formats go by the names that 'pivra formats' lists. Raw frames lie one behind the\n"
      "other, their planes too, without padding. Several frames to frame.png become\n"
      "frame-0000.png, frame-0001.png, ... by their numbers in the clip; %d or %04d in\n"
      "the name puts the number there.\n\n"
      "Deblocking comes first, then detail, saturation, size, turn and format.\n\n"
      "  pivra convert clip.y4m frame.png --to rgb565 --frames 100\n"
      "  pivra convert frame.png frame.y4m\n"
      "  pivra convert clip.y4m portrait.y4m --resize 540x960 --rotate 90l\n"
      "  ffmpeg -i clip.mp4 -f rawvideo -pix_fmt nv12 - |\n"
      "    pivra convert - clip.bgra -f nv12 -s 1280x720 --to bgra8888");
}

void add_anaglyph(CLI::App &app, ConvertOptions &options) {
  CLI::App *command =
      app.add_subcommand("anaglyph", "Make red and cyan frames of side-by-side ones");
  add_files(*command, options);
  command->add_flag("--swap", options.swap, "Red from the right view");
  command->parse_complete_callback([&options] { options.anaglyph = true; });
  command->footer("  pivra anaglyph left-and-right.png glasses.png");
}

void add_transcode(CLI::App &app, ConvertOptions &options) {
  CLI::App *command = app.add_subcommand(
      "transcode", "Make nv12 frames of another size and orientation for an encoder");
  const AddOption add = add_files(*command, options, "-s,--from-size");
  add("--size", options.resize, "WxH", "Size of the result in pixels")->required();
  add("--rotate", options.rotate, "TURN", "90l, 90r or 180");
  command->parse_complete_callback([&options] { options.transcode = true; });
  command->footer("  pivra transcode in.y4m out.y4m --size 540x960 --rotate 90l");
}

int run(int argc, char **argv) {
  CLI::App app("Bit-exact pixel format conversion of video frames.", "pivra");
  app.set_version_flag("--version", "pivra " PIVRA_VERSION);
  app.require_subcommand(1);
  ConvertOptions options;
  add_convert(app, options);
  add_anaglyph(app, options);
  add_transcode(app, options);
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
