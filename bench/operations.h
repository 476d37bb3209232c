// Everything that is raced and counted: calls of the library, each with the
// formats and sizes of its two pictures, as one list.
#ifndef PIVRA_BENCH_OPERATIONS_H
#define PIVRA_BENCH_OPERATIONS_H

#include <cstdint>
#include <functional>
#include <string>
#include <vector>

#include "pivra.hpp"

struct Size {
  std::int32_t width, height;

  Size turned() const { return {height, width}; }
};

struct Frame {
  std::int32_t format;
  Size size;
  std::int32_t alignment = 1;  // of the strides, in bytes
};

// A picture full of noise.
pivra::Picture noise(const Frame &frame);

// By value: conversions from yv12 change the source's descriptor.
using Call = std::function<void(ImageDesc src, ImageDesc dst)>;

struct Operation {
  std::string name;  // like yuv420_to_rgb565
  std::string kind;  // the same for calls that differ in sizes only
  Frame from, to;
  Call run;
  double read = 1;                // share of the source that is read
  std::uint32_t resize_mode = 0;  // of the result

  // What figures per pixel count: the pixels of the result.
  double pixels() const { return double(to.size.width) * to.size.height; }
};

// What an operation is given.
struct Pictures {
  explicit Pictures(const Operation &operation);

  pivra::Picture source, result;
  ImageDesc src, dst;
};

// Every operation on pictures of this size, or of its own where it has one.
std::vector<Operation> operations(Size size);

#endif
