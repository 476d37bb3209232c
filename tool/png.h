// PNG files as RGB pictures and the other way round.
#ifndef PIVRA_TOOL_PNG_H
#define PIVRA_TOOL_PNG_H

#include <cstdint>
#include <pivra.hpp>
#include <vector>

#include "input.h"

namespace pivra::tool {

inline constexpr int kFirstByteOfPng = 0x89;

// The picture of a PNG file with up to 8 bits a sample: rgba8888 if it has any
// transparency, else rgb888. Samples are taken as they are, without gamma.
Picture decode_png(InputFile &file);

// The bytes of a PNG file. 16-bit pictures keep their precision: the 5 and 6 bits
// become 8 by repeating the top ones, and an sBIT chunk tells how many count.
std::vector<std::uint8_t> encode_png(Picture &picture);

}  // namespace pivra::tool

#endif
