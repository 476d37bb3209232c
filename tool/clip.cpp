#include "clip.h"

#include <algorithm>
#include <string_view>

#include "failure.h"
#include "png.h"
#include "y4m.h"

namespace pivra::tool {

Clip::Clip(const std::string &path, const std::optional<FrameShape> &raw)
    : file_(path), raw_(raw.has_value()) {
  if (!raw && file_.next() == kFirstByteOfPng) {
    png_ = decode_png(file_);
    shape_ = {png_->format(), png_->width(), png_->height()};
    frames_ = 1;
    return;
  }
  shape_ = raw ? *raw : read_y4m_header(file_, y4m_parameters_);
  const std::optional<std::uint64_t> bytes = file_.remaining();
  if (!bytes) return;
  const auto [format, width, height] = shape_;
  const std::uint64_t frame = size_in_bytes(format, width, height);
  // Also keeps a false size from asking for memory that no frame will fill.
  if (raw_ ? *bytes == 0 || *bytes % frame != 0 : *bytes != 0 && *bytes < frame) {
    fail("{} has {} bytes of frames, but {} frames of {}x{} take {} bytes each", name(), *bytes,
         find_format(format)->name, width, height, frame);
  }
  frames_ = *bytes / (raw_ ? frame : frame + std::string_view("FRAME\n").size());
}

void Clip::read(Picture &frame) {
  if (png_) {
    std::ranges::copy(png_->bytes(), frame.bytes().begin());
    ++next_;
    return;
  }
  if (!raw_) read_y4m_frame_line(file_, next_);
  const std::size_t size = frame.bytes().size(), got = file_.read(frame.bytes());
  if (got != size) {
    fail("{} is truncated: frame {} has {} of {} bytes", name(), next_, got, size);
  }
  ++next_;
}

}  // namespace pivra::tool
