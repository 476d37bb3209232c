// What the program does.
#ifndef PIVRA_TOOL_COMMANDS_H
#define PIVRA_TOOL_COMMANDS_H

#include <string>

namespace pivra::tool {

// The command line of `pivra convert`, `anaglyph` and `transcode`; empty text is an option not
// given.
struct ConvertOptions {
  std::string input, output;
  std::string from, size;  // of raw input; both empty for Y4M and PNG
  std::string to;
  std::string frames = ":";
  std::string output_format;  // "raw", "y4m" or "png"
  std::string resize, rotate, deblock, saturation;
  bool transcode = false;               // to `resize`
  bool anaglyph = false, swap = false;  // red from the right view if swapped
  bool mode1 = false, dither = false, detail = false;
  bool stats = false;
};

void convert_clip(const ConvertOptions &options);
void list_formats();

}  // namespace pivra::tool

#endif
