// What happens to each frame between reading and writing it, step by step.
#ifndef PIVRA_TOOL_PIPELINE_H
#define PIVRA_TOOL_PIPELINE_H

#include <chrono>
#include <functional>
#include <memory>
#include <optional>
#include <pivra.hpp>
#include <string>
#include <vector>

#include "clip.h"
#include "options.h"

namespace pivra::tool {

// What is asked for; steps that are not are left out.
struct Wanted {
  std::optional<std::int32_t> deblock;  // strength
  std::optional<double> saturation;     // gain
  bool detail = false;
  std::optional<Red> anaglyph;  // of two views side by side
  std::optional<Size> size;
  Growth growth = Growth::kRepeat;
  Turn turn = Turn::kNone;
  bool transcode = false;              // size and turn by way of a transcoder
  const FormatInfo *format = nullptr;  // as it comes out of the other steps
  bool dither = false;
};

class Pipeline {
 public:
  // Puts the steps together for frames of one shape. Fails if one does not take what
  // the one before it makes.
  Pipeline(const FrameShape &input, const Wanted &wanted);

  // To be filled with a frame.
  Picture &source() { return *pictures_.front(); }

  // The frame as the last step leaves it.
  Picture &run();

  bool empty() const { return steps_.empty(); }
  std::chrono::duration<double> spent() const { return spent_; }

  // The calls of the library, "rsz + csc".
  std::string calls() const;

 private:
  // From the last picture to `to`, which may be the same.
  struct Step {
    std::string call;
    std::function<void(const ImageDesc &from, const ImageDesc &to)> run;
    std::size_t from, to;  // indices of pictures
  };
  using Run = decltype(Step::run);

  Picture &last() { return *pictures_.back(); }
  const FormatInfo &format() { return *find_format(last().format()); }

  void add_in_place(std::string call, std::function<void(const ImageDesc &)> run);
  void add(std::string call, std::int32_t format, Size size, Run run);
  void convert_to(std::int32_t format);
  void add_filters(const Wanted &wanted);
  void add_anaglyph(Red red);
  void add_transcoder(const Wanted &wanted);
  void add_geometry(const Wanted &wanted);

  std::vector<std::unique_ptr<Picture>> pictures_;
  std::vector<Step> steps_;
  std::chrono::duration<double> spent_{0};
};

}  // namespace pivra::tool

#endif
