// What compares the library with a model: rounds at every level, planes of what a model
// touches, and pictures.
#ifndef PIVRA_TESTS_COMPARE_H
#define PIVRA_TESTS_COMPARE_H

#include <gtest/gtest.h>

#include <string>

#include "guarded.h"
#include "levels.h"

namespace pivra::test {

// body(number of the round), so often at every level unless something fails.
template <class Body>
void rounds_at_every_level(int rounds, Body body) {
  at_every_level([&](const std::string &level) {
    SCOPED_TRACE(level);
    for (int round = 0; round < rounds && !testing::Test::HasFatalFailure(); ++round) body(round);
  });
}

using ModelPlanes = std::vector<ModelPlane *>;
inline ModelPlanes all(std::array<ModelPlane, 3> &planes) {
  return {planes.data(), planes.data() + 1, planes.data() + 2};
}

// Runs a kernel on planes that hold exactly what its model touches, with inaccessible pages
// around them, and compares all of their bytes with what the model makes of them. Sources
// that have bytes already keep them, others get such content.
template <class Model, class Run, class What>
void compare_with_model(const ModelPlanes &in, const ModelPlanes &out, const Model &model,
                        const Run &run, const What &what,
                        std::vector<uint8_t> (*content)(size_t) = random_bytes) {
  std::vector<bool> given;
  for (const ModelPlane *plane : in) given.push_back(!plane->bytes.empty());
  for (ModelPlane *plane : out) plane->bytes.clear();
  model();  // finds out what is touched
  std::array<GuardedPlane, 10> memory;
  std::array<uint8_t *, 5> src{}, dst{};
  const auto place = [](ModelPlane &plane, GuardedPlane &guarded) {
    return guarded.place(plane.bytes, random_in(0, 1)) + plane.origin;
  };
  for (size_t p = 0; p < in.size(); ++p) {
    in[p]->bytes.resize(in[p]->touched);
    if (!given[p]) in[p]->bytes = content(in[p]->touched);
    src[p] = place(*in[p], memory[p]);
  }
  for (size_t p = 0; p < out.size(); ++p) {
    out[p]->bytes = random_bytes(out[p]->bytes.size());
    dst[p] = place(*out[p], memory[5 + p]);
  }
  run(src.data(), dst.data());
  model();
  for (size_t p = 0; p < in.size(); ++p)
    ASSERT_EQ(memory[p].content(), in[p]->bytes) << testing::PrintToString(what) << " from " << p;
  for (size_t p = 0; p < out.size(); ++p)
    ASSERT_EQ(memory[5 + p].content(), out[p]->bytes)
        << testing::PrintToString(what) << " to " << p;
}

// Kernels take from the arrays what they need; of most that is the size of the first plane.
using Four = std::array<int32_t, 4>;
inline void call(pivra_csc_kernel *kernel, int32_t width, int32_t height, Four stride,
                 Four dst_stride, uint8_t **src, uint8_t **dst) {
  Four widths = {width, -1, -1, -1}, heights = {height, -1, -1, -1};
  kernel(src, widths.data(), heights.data(), stride.data(), dst_stride.data(), dst);
}

// The sentence that a call of the C++ layer refuses its arguments with.
template <class Call>
std::string refusal(Call call) {
  try {
    call();
  } catch (const std::invalid_argument &error) {
    return error.what();
  }
  return "accepted";
}

inline std::string sizes(int32_t w, int32_t h, int32_t dw, int32_t dh) {
  return std::to_string(w) + "x" + std::to_string(h) + " to " + std::to_string(dw) + "x" +
         std::to_string(dh);
}

// A picture whose planes differ in everything and have room for any format.
struct Image {
  explicit Image(int32_t format, int32_t width = 24, int32_t height = 16) {
    desc.format = format;
    for (int p = 0; p < 4; ++p) {
      bytes[p] = noise(size_t{8} * width * height + 4096);  // tiles are whole
      desc.width[p] = width - 4 * p;
      desc.height[p] = height - 2 * p;
      desc.stride[p] = 4 * width + p;
    }
    own();
  }
  Image(const Image &other) : bytes(other.bytes), desc(other.desc) { own(); }

  void own() {
    for (int p = 0; p < 4; ++p) desc.plane[p] = bytes[p].data();
  }
  // What a dispatcher has a kernel do: plane `from` of another picture to plane `to`.
  void take(pivra_cpy_kernel *kernel, const Image &src, int from, int to) {
    kernel(src.desc.plane[from], src.desc.width[from], src.desc.height[from], src.desc.stride[from],
           desc.stride[to], desc.plane[to]);
  }
  void take(pivra_csc_kernel *kernel, const Image &src) {
    ImageDesc from = src.desc;
    kernel(from.plane, from.width, from.height, from.stride, desc.stride, desc.plane);
  }

  std::array<std::vector<uint8_t>, 4> bytes;
  ImageDesc desc{};
};

// The bytes of a sample of each plane, by format. Codes below 100 that say nothing else
// have three planes of bytes.
inline std::vector<int32_t> sample_bytes(int32_t format) {
  if (format == PIVRA_FORMAT_NV12 || format == PIVRA_FORMAT_NV21) return {1, 2};
  if (format == PIVRA_FORMAT_YUV400) return {1};
  if (format < 100) return {1, 1, 1};
  return {format < 300 ? 2 : format < 500 ? 3 : 4};
}

// Noise, in planes of which those behind the first one have half the size, rounded up.
struct NoisyPicture : GuardedPicture {
  NoisyPicture(int32_t format, int32_t w, int32_t h, int32_t padding = 0, size_t slack = 0) {
    desc.format = format;
    for (const int32_t bytes : sample_bytes(format)) {
      const size_t p = before.size();
      desc.width[p] = p == 0 ? w : (w + 1) / 2;
      desc.height[p] = p == 0 ? h : (h + 1) / 2;
      desc.stride[p] = desc.width[p] * bytes + padding * int32_t(p + 1);
      before.push_back(noise(size_t(desc.height[p] - 1) * size_t(desc.stride[p]) +
                             size_t(desc.width[p] * bytes) + slack));
      desc.plane[p] = memory[p].place(before[p], random_in(0, 1));
    }
  }
  // In another place, what this one was.
  void become(const NoisyPicture &other) {
    before = other.before;
    for (size_t p = 0; p < before.size(); ++p)
      desc.plane[p] = memory[p].place(before[p], random_in(0, 1));
  }
};

}  // namespace pivra::test

#endif
