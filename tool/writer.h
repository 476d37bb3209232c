// Where the frames go: one raw or Y4M file, or PNG files.
#ifndef PIVRA_TOOL_WRITER_H
#define PIVRA_TOOL_WRITER_H

#include <cstdint>
#include <memory>
#include <pivra.hpp>
#include <string>

namespace pivra::tool {

enum class FileKind { kRaw, kY4m, kPng };

// PNG and Y4M for the suffixes .png and .y4m, in upper or lower case.
FileKind kind_of(const std::string &path);

class FrameWriter {
 public:
  virtual ~FrameWriter() = default;

  // `index` is the frame's number in the input.
  virtual void write(Picture &frame, std::uint64_t index) = 0;

  // The last frame has been written.
  virtual void finish() = 0;
};

// PNG files have the frame's number in their names where the path has %d or %04d,
// else in front of the suffix if there are `several` frames. The parameters are
// those that y4m_header() takes.
std::unique_ptr<FrameWriter> make_writer(const std::string &path, FileKind kind, bool several,
                                         const std::string &y4m_parameters);

}  // namespace pivra::tool

#endif
