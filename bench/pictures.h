// A picture of any format, tiled ones too, with memory of its own.
#ifndef PIVRA_BENCH_PICTURES_H
#define PIVRA_BENCH_PICTURES_H

#include <algorithm>
#include <cstddef>
#include <span>
#include <vector>

#include "pivra.hpp"

// Tiled planes come in whole bands: luma and chroma are rounded up to so many
// bytes and rows.
struct TiledShape {
  std::int32_t format, width, rows;
};
inline constexpr TiledShape kTiledShapes[] = {{PIVRA_FORMAT_T64X32, 128, 64},
                                              {PIVRA_FORMAT_T16X16, 16, 16},
                                              {PIVRA_FORMAT_T8X8, 16, 16},
                                              {PIVRA_FORMAT_T256X16, 2048, 32}};

class BenchPicture {
 public:
  BenchPicture(std::int32_t format, std::int32_t width, std::int32_t height) {
    const auto *tiled = std::ranges::find(kTiledShapes, format, &TiledShape::format);
    if (tiled == std::end(kTiledShapes)) {
      samples_ = pivra::size_in_bytes(format, width, height);
      bytes_.resize(samples_ + kTile);
      desc_ = pivra::describe(format, width, height, bytes_.data());
      return;
    }
    samples_ = std::size_t(width) * std::size_t(height + height / 2);
    const std::size_t row = whole(width, tiled->width);
    const std::size_t luma = row * whole(height, tiled->rows);
    bytes_.resize(luma + row * whole((height + 1) / 2, tiled->rows));
    desc_.format = format, desc_.width[0] = width, desc_.height[0] = height;
    desc_.plane[0] = bytes_.data(), desc_.plane[1] = bytes_.data() + luma;
  }
  BenchPicture(const BenchPicture &) = delete;
  BenchPicture &operator=(const BenchPicture &) = delete;

  // Bytes of the picture itself, without what only fills the last tiles.
  std::size_t samples() const { return samples_; }
  std::span<std::uint8_t> bytes() { return bytes_; }
  const ImageDesc &desc() const { return desc_; }

 private:
  // The copies of 64x32 tiles write at least one.
  static constexpr std::size_t kTile = 64 * 32;

  static std::size_t whole(std::int32_t size, std::int32_t unit) {
    return std::size_t((size + unit - 1) / unit) * std::size_t(unit);
  }

  ImageDesc desc_ = {};
  std::size_t samples_ = 0;
  std::vector<std::uint8_t> bytes_;
};

#endif
