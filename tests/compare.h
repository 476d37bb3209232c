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

// Lets model() and run(addresses of the planes) work on the same bytes. The planes hold
// exactly what the model touches, and inaccessible pages are around them.
template <class Model, class Run>
void expect_equal_to_model(const std::string &what, const std::vector<ModelPlane *> &planes,
                           Model model, Run run) {
  for (ModelPlane *plane : planes) plane->bytes.clear();
  model();  // finds out what is touched
  std::array<GuardedPlane, 5> memory;
  std::array<uint8_t *, 5> at{};
  for (size_t p = 0; p < planes.size(); ++p) {
    planes[p]->bytes = random_bytes(planes[p]->bytes.size());
    at[p] = memory[p].place(planes[p]->bytes, random_in(0, 1));
  }
  run(at.data());
  model();
  for (size_t p = 0; p < planes.size(); ++p)
    ASSERT_EQ(memory[p].content(), planes[p]->bytes) << what << ", plane " << p;
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

// A quicker noise than that of guarded.h, for pictures, which can be large, and for what is
// written over.
inline std::vector<uint8_t> quick_noise(size_t count) {
  std::vector<uint8_t> bytes(count);
  auto state = static_cast<uint32_t>(random_engine()());
  for (uint8_t &b : bytes) b = static_cast<uint8_t>((state = state * 1664525 + 1013904223) >> 24);
  return bytes;
}

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
      before.push_back(quick_noise(size_t(desc.height[p] - 1) * size_t(desc.stride[p]) +
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
