// RGB pictures as PNG files.
#ifndef PIVRA_TOOL_PNG_H
#define PIVRA_TOOL_PNG_H

#include <cstdint>
#include <pivra.hpp>
#include <vector>

namespace pivra::tool {

// The bytes of a PNG file. 16-bit pictures keep their precision: the 5 and 6 bits
// become 8 by repeating the top ones, and an sBIT chunk tells how many count.
std::vector<std::uint8_t> encode_png(Picture &picture);

}  // namespace pivra::tool

#endif
