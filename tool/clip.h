// Frames of one shape in a file: Y4M, or raw planes one behind the other.
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
  // Raw if a shape is given, else Y4M.
  Clip(const std::string &path, const std::optional<FrameShape> &raw);

  const std::string &name() const { return file_.name(); }
  const FrameShape &shape() const { return shape_; }

  // How many frames there are; nothing for pipes.
  std::optional<std::uint64_t> frames() const { return frames_; }

  bool at_end() { return file_.at_end(); }

  // Reads the next frame. Fails if it is not there as a whole.
  void read(Picture &frame);

 private:
  InputFile file_;
  bool raw_;
  FrameShape shape_;
  std::optional<std::uint64_t> frames_;
  std::uint64_t next_ = 0;
};

}  // namespace pivra::tool

#endif
