// The values of options, from their text.
#ifndef PIVRA_TOOL_OPTIONS_H
#define PIVRA_TOOL_OPTIONS_H

#include <cstdint>
#include <limits>
#include <pivra.hpp>
#include <string>

namespace pivra::tool {

struct Size {
  std::int32_t width, height;
};

// Frames first, first + 1, ... up to but without end.
struct FrameRange {
  std::uint64_t first = 0, end = std::numeric_limits<std::uint64_t>::max();
};

// A linear format by any of its names.
const FormatInfo &parse_format(const std::string &text);

// WxH, in pixels.
Size parse_size(const std::string &text);

// A:B, A:, :B, or A for the one frame A.
FrameRange parse_frames(const std::string &text);

// 90l, 90r, 180, hmirror or vmirror.
Turn parse_turn(const std::string &text);

// A number between two others, and what it is called if it is not.
std::int32_t parse_integer(const std::string &text, std::int32_t low, std::int32_t high,
                           const char *what);
double parse_decimal(const std::string &text, double low, double high, const char *what);

}  // namespace pivra::tool

#endif
