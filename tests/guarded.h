// Memory for the tests: planes that end exactly at an inaccessible page, so that
// a read or write of a single byte too many ends the test program.
#ifndef PIVRA_TESTS_GUARDED_H
#define PIVRA_TESTS_GUARDED_H

#include <gtest/gtest.h>
#include <sys/mman.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cstdint>
#include <cstdlib>
#include <iostream>
#include <random>
#include <stdexcept>
#include <vector>

#include "pivra.h"

namespace pivra::test {

// Seeded from PIVRA_TEST_SEED, or at random; printed so that a failure can be repeated.
inline std::mt19937 &random_engine() {
  static std::mt19937 engine = [] {
    const char *given = std::getenv("PIVRA_TEST_SEED");
    const auto seed =
        given ? static_cast<unsigned>(std::strtoul(given, nullptr, 10)) : std::random_device{}();
    std::cout << "PIVRA_TEST_SEED=" << seed << std::endl;
    return std::mt19937(seed);
  }();
  return engine;
}

inline int32_t random_in(int32_t low, int32_t high) {
  return std::uniform_int_distribution<int32_t>(low, high)(random_engine());
}

inline std::vector<uint8_t> noise(size_t count) {
  std::vector<uint8_t> bytes(count);
  uint32_t word = 0;
  for (size_t i = 0; i < count; ++i, word >>= 8) {
    if (i % 4 == 0) word = static_cast<uint32_t>(random_engine()());
    bytes[i] = static_cast<uint8_t>(word);
  }
  return bytes;
}

// Noise mostly; sometimes only the two extremes, or one value throughout.
inline std::vector<uint8_t> random_bytes(size_t count) {
  std::vector<uint8_t> bytes = noise(count);
  const int kind = random_in(0, 4);
  if (kind == 0)
    for (uint8_t &b : bytes) b = b & 1 ? 255 : 0;
  if (kind == 1) std::fill(bytes.begin(), bytes.end(), static_cast<uint8_t>(random_engine()()));
  return bytes;
}

// Sizes around the blocks and tails of rows; what strides have beyond a row.
inline int32_t random_width() { return random_in(1, random_in(0, 3) ? 72 : 300); }
inline int32_t random_padding() { return random_in(0, 1) ? random_in(0, 40) : 0; }

inline constexpr std::pair<int32_t, int32_t> kEmptySizes[] = {
    {0, 8}, {8, 0}, {-7, 8}, {8, -7}, {-8, -8}};

// A plane between two inaccessible pages, touching one of them.
class GuardedPlane {
 public:
  GuardedPlane() : page_(static_cast<size_t>(sysconf(_SC_PAGESIZE))) {}
  GuardedPlane(const GuardedPlane &) = delete;
  GuardedPlane &operator=(const GuardedPlane &) = delete;
  ~GuardedPlane() { release(); }

  // `content` placed against the page behind it (any alignment) or before it.
  uint8_t *place(const std::vector<uint8_t> &content, bool at_end) {
    const size_t needed = (content.size() / page_ + 3) * page_;
    if (needed > size_) {
      release();
      void *p = mmap(nullptr, needed, PROT_NONE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
      if (p == MAP_FAILED) throw std::runtime_error("mmap");
      base_ = static_cast<uint8_t *>(p);
      size_ = needed;
      if (mprotect(base_ + page_, size_ - 2 * page_, PROT_READ | PROT_WRITE) != 0)
        throw std::runtime_error("mprotect");
    }
    count_ = content.size();
    data_ = at_end ? base_ + size_ - page_ - count_ : base_ + page_;
    std::copy(content.begin(), content.end(), data_);
    return data_;
  }

  uint8_t *data() const { return data_; }
  std::vector<uint8_t> content() const { return {data_, data_ + count_}; }

 private:
  void release() {
    if (base_ != nullptr) munmap(base_, size_);
  }

  size_t page_, size_ = 0, count_ = 0;
  uint8_t *base_ = nullptr, *data_ = nullptr;
};

// A picture in guarded memory: what was in its planes, and what is.
struct GuardedPicture {
  std::vector<std::vector<uint8_t>> now() const {
    std::vector<std::vector<uint8_t>> planes;
    for (size_t p = 0; p < before.size(); ++p) planes.push_back(memory[p].content());
    return planes;
  }

  ImageDesc desc{};
  std::vector<std::vector<uint8_t>> before;
  std::array<GuardedPlane, 3> memory;
};

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

// The planes as a model sees them: it reads and writes bytes by offset, and the
// planes grow to what is touched. Nothing may lie before the first byte.
class ModelPlane {
 public:
  uint8_t read(ptrdiff_t offset) { return at(offset); }
  void write(ptrdiff_t offset, int32_t value) { at(offset) = static_cast<uint8_t>(value); }

  std::vector<uint8_t> bytes;
  ptrdiff_t origin = 0;  // the byte that has offset 0
  size_t touched = 0;

 private:
  uint8_t &at(ptrdiff_t offset) {
    if (origin + offset < 0) throw std::out_of_range("the model went before its plane");
    const auto index = static_cast<size_t>(origin + offset);
    if (index >= bytes.size()) bytes.resize(index + 1);
    touched = std::max(touched, index + 1);
    return bytes[index];
  }
};

using ModelPlanes = std::vector<ModelPlane *>;
inline ModelPlanes all(std::array<ModelPlane, 3> &planes) {
  return {planes.data(), planes.data() + 1, planes.data() + 2};
}

// Runs a kernel on planes that hold exactly what its model touches, with inaccessible pages
// around them, and compares all of their bytes with what the model makes of them. Sources
// that have bytes already keep them.
template <class Model, class Run, class What>
void compare_with_model(const ModelPlanes &in, const ModelPlanes &out, const Model &model,
                        const Run &run, const What &what,
                        std::vector<uint8_t> (*content)(size_t) = random_bytes) {
  std::vector<bool> given;
  for (const ModelPlane *plane : in) given.push_back(!plane->bytes.empty());
  model();  // finds out what is touched
  std::array<GuardedPlane, 8> memory;
  std::array<uint8_t *, 4> src{}, dst{};
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
    dst[p] = place(*out[p], memory[4 + p]);
  }
  run(src.data(), dst.data());
  model();
  for (size_t p = 0; p < in.size(); ++p)
    ASSERT_EQ(memory[p].content(), in[p]->bytes) << testing::PrintToString(what) << " from " << p;
  for (size_t p = 0; p < out.size(); ++p)
    ASSERT_EQ(memory[4 + p].content(), out[p]->bytes)
        << testing::PrintToString(what) << " to " << p;
}

// Kernels take from the arrays what they need; of most that is the size of the first plane.
using Four = std::array<int32_t, 4>;
inline void call(pivra_csc_kernel *kernel, int32_t width, int32_t height, Four stride,
                 Four dst_stride, uint8_t **src, uint8_t **dst) {
  Four widths = {width, -1, -1, -1}, heights = {height, -1, -1, -1};
  kernel(src, widths.data(), heights.data(), stride.data(), dst_stride.data(), dst);
}

}  // namespace pivra::test

#endif
