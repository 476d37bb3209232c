// Frames of one shape in a file: Y4M, raw planes one behind the other, or the one of a PNG.
#ifndef PIVRA_TOOL_CLIP_H
#define PIVRA_TOOL_CLIP_H

#include <cstdint>
#include <optional>
#include <pivra.hpp>
#include <string>

#include "input.h"

namespace pivra::tool {

struct FrameShape {
  std::int32_t format, width, height;
};

class Clip {
 public:
  // Raw if a shape is given, else what the file says that it is.
  Clip(const std::string &path, const std::optional<FrameShape> &raw);

  const std::string &name() const { return file_.name(); }
  const FrameShape &shape() const { return shape_; }

  // How many frames there are; nothing for pipes.
  std::optional<std::uint64_t> frames() const { return frames_; }

  // What a Y4M header says of the clip beside its shape, else empty.
  const std::string &y4m_parameters() const { return y4m_parameters_; }

  bool at_end() { return png_ ? next_ > 0 : file_.at_end(); }

  // Reads the next frame. Fails if it is not there as a whole.
  void read(Picture &frame);

 private:
  InputFile file_;
  bool raw_;
  std::optional<Picture> png_;
  std::string y4m_parameters_;
  FrameShape shape_;
  std::optional<std::uint64_t> frames_;
  std::uint64_t next_ = 0;
};

}  // namespace pivra::tool

#endif
