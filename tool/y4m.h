// YUV4MPEG2: a line of parameters, then for each frame a line and its planes.
#ifndef PIVRA_TOOL_Y4M_H
#define PIVRA_TOOL_Y4M_H

#include "clip.h"
#include "input.h"

namespace pivra::tool {

// Reads the stream's line: 8-bit grey, 4:2:0, 4:2:2 and 4:4:4 in video range.
FrameShape read_y4m_header(InputFile &file);

// Reads the line in front of a frame; `index` is for the message.
void read_y4m_frame_line(InputFile &file, std::uint64_t index);

}  // namespace pivra::tool

#endif
