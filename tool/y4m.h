// YUV4MPEG2: a line of parameters, then for each frame a line and its planes.
#ifndef PIVRA_TOOL_Y4M_H
#define PIVRA_TOOL_Y4M_H

#include "clip.h"
#include "input.h"

namespace pivra::tool {

// Whether Y4M has a name for the format: 8-bit grey, 4:2:0, 4:2:2 and 4:4:4.
bool y4m_holds(std::int32_t format);

// Reads the stream's line, of pictures in video range. What it says of time and
// pixels, but not of their layout, goes to `parameters`.
FrameShape read_y4m_header(InputFile &file, std::string &parameters);

// The stream's line, with such parameters or, if they are empty, 25 frames a second.
std::string y4m_header(const FrameShape &shape, const std::string &parameters);

// Reads the line in front of a frame; `index` is for the message.
void read_y4m_frame_line(InputFile &file, std::uint64_t index);

}  // namespace pivra::tool

#endif
