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
  auto state = static_cast<uint32_t>(random_engine()());
  for (uint8_t &b : bytes) b = static_cast<uint8_t>((state = state * 1664525 + 1013904223) >> 24);
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

}  // namespace pivra::test

#endif
