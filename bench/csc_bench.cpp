// The conversions beside libyuv's and beside memcpy of as many bytes, and the
// copy kernels beside memcpy.
//
// The memcpy of a conversion reads and writes, taken together, as many bytes as
// the conversion does: it copies half the sum of both pictures. Pictures are
// the same ones again and again, so they stay in the cache as far as they fit.
#include <fmt/format.h>

#include <algorithm>
#include <cstring>
#include <random>

#include "kernels.h"
#include "peers.h"
#include "pictures.h"
#include "race.h"

namespace {

constexpr std::string_view kHeadline[] = {
    "yuv420_to_rgba8888",  "yuv420_to_bgra8888", "yuv420_to_argb8888", "yuv420_to_abgr8888",
    "yuv420_to_rgb888",    "yuv420_to_bgr888",   "yuv420_to_rgb565",   "yuv422n_to_rgb565",
    "yuv422n_to_rgba8888", "yuv444_to_rgb888",   "yuv444_to_rgba8888", "nv12_to_rgb565",
    "nv12_to_rgb888",      "nv12_to_rgba8888",   "nv12_to_bgra8888",   "nv21_to_rgb888",
    "nv21_to_rgba8888",    "nv21_to_bgra8888",   "yuyv_to_bgra8888",   "uyvy_to_bgra8888",
    "rgb565_to_yuv420",    "rgb888_to_yuv420",   "bgr888_to_yuv420",   "rgba8888_to_yuv420",
    "bgra8888_to_yuv420",  "argb8888_to_yuv420", "bgra8888_to_nv12",   "rgba8888_to_nv21",
};

std::vector<std::uint8_t> noise(std::size_t size) {
  std::vector<std::uint8_t> bytes(size);
  std::ranges::generate(bytes, std::independent_bits_engine<std::minstd_rand, 8, unsigned>());
  return bytes;
}

void race_conversion(benchmark::State &state, const Kernel &kernel, int width, int height) {
  BenchPicture source(kernel.from, width, height), result(kernel.to, width, height);
  std::ranges::copy(noise(source.bytes().size()), source.bytes().begin());
  const ImageDesc src = source.desc(), dst = result.desc();
  const auto copied = noise((source.samples() + result.samples()) / 2);
  auto copy = copied;

  std::vector<Contender> contenders = {{"pivra", [&] { kernel(src, dst); }}};
  if (const Peer &peer = find_peer(kernel.name))
    contenders.push_back({"libyuv", [&] { peer(src, dst); }});
  contenders.push_back({"memcpy", [&] { std::memcpy(copy.data(), copied.data(), copied.size()); }});
  race(state, double(width) * height, contenders);
}

struct CopyKernel {
  const char *name;
  pivra_cpy_kernel *run;
  int bytes;  // of a sample
};
constexpr CopyKernel kCopyKernels[] = {
    {"cpy_8b", pivra_cpy_8b, 1}, {"cpy_24b", pivra_cpy_24b, 3}, {"cpy_32b", pivra_cpy_32b, 4}};

void race_copy(benchmark::State &state, const CopyKernel &kernel, int width, int height,
               int padding) {
  const int row = width * kernel.bytes, stride = row + padding;
  const auto source = noise(std::size_t(stride) * std::size_t(height));
  auto result = source;
  const auto rows = padding == 0 ? 1 : height;  // a packed picture is one long row
  const auto bytes = std::size_t(row) * std::size_t(height / rows);

  const Contender contenders[] = {
      {"pivra", [&] { kernel.run(source.data(), width, height, stride, stride, result.data()); }},
      {"memcpy", [&] {
         for (std::ptrdiff_t y = 0; y < rows; ++y)
           std::memcpy(result.data() + y * stride, source.data() + y * stride, bytes);
       }}};
  race(state, double(width) * height, contenders);
}

void add_races(int width, int height) {
  for (const Kernel &kernel : kKernels) {
    benchmark::RegisterBenchmark(kernel.name.data(), race_conversion, kernel, width, height)
        ->UseManualTime();
  }
  for (const CopyKernel &kernel : kCopyKernels) {
    for (const int padding : {0, 64}) {
      const std::string name = fmt::format("{}_{}", kernel.name, padding ? "padded" : "packed");
      benchmark::RegisterBenchmark(name.c_str(), race_copy, kernel, width, height, padding)
          ->UseManualTime();
    }
  }
}

}  // namespace

int main(int argc, char **argv) {
  RaceReporter reporter(
      {"libyuv", "memcpy"},
      {{"headline conversions",
        [](std::string_view name) { return std::ranges::count(kHeadline, name) != 0; }},
       {"all conversions", [](std::string_view name) { return find_kernel(name) != nullptr; }},
       {"copies", [](std::string_view name) { return name.starts_with("cpy_"); }}});
  return run_races(argc, argv, std::move(reporter), add_races);
}
