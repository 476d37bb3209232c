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

}  // namespace pivra::tool

#endif
