// The kernels of tiled layouts told literally, byte by byte and in the order in
// which they write.
#ifndef PIVRA_TESTS_TILE_MODEL_H
#define PIVRA_TESTS_TILE_MODEL_H

#include "yuv_to_rgb_model.h"

namespace pivra::test {

// The place of a tile among the eight of four columns and two rows.
inline constexpr int32_t kZigzag[2][4] = {{0, 1, 6, 7}, {2, 3, 4, 5}};

inline ptrdiff_t address_64x32(int32_t width, int32_t height, int32_t x, int32_t y) {
  const int32_t column = x / 64, row = y / 32, rows = (height + 31) / 32;
  const ptrdiff_t band = ptrdiff_t{row / 2} * ((width + 127) / 128) * 4;
  const bool lone = row == rows - 1 && row % 2 == 0;
  const int32_t place = lone ? column : column / 4 * 8 + kZigzag[row % 2][column % 4];
  return (band + place) * 2048 + y % 32 * 64 + x % 64;
}

struct Raster {
  int32_t columns, rows, slot;
  ptrdiff_t address(int32_t tiles_per_band, int32_t x, int32_t y) const {
    return (ptrdiff_t{y / rows} * tiles_per_band + x / columns) * slot + y % rows * columns +
           x % columns;
  }
  // The samples of a plane, tile by tile and in each row by row.
  template <class Each>
  void walk(int32_t width, int32_t height, Each each) const {
    for (int32_t y0 = 0; y0 < height; y0 += rows)
      for (int32_t x0 = 0; x0 < width; x0 += columns)
        for (int32_t y = y0; y < std::min(height, y0 + rows); ++y)
          for (int32_t x = x0; x < std::min(width, x0 + columns); ++x) each(x, y);
  }
};

struct TileModel : ConversionModel {
  std::array<int32_t, 4> dst_strides;
  std::array<ModelPlane, 2> chroma_out;

  ModelPlane &out_plane(int p) { return p == 0 ? out : chroma_out[p - 1]; }

  // --- copies, of source plane p to the destination plane of that number ---

  void copy_tiles(int p, int32_t w, int32_t h) {
    const int32_t step = dst_strides[p];
    int32_t y0 = 0;
    const auto tile = [&](int32_t x0, int32_t bytes, int32_t rows) {
      const ptrdiff_t band = int16_t(y0) * int16_t(step);
      for (int32_t r = 0; r < rows; ++r)
        for (int32_t i = 0; i < bytes; ++i)
          out_plane(p).write(band + ptrdiff_t{r} * step + x0 + i,
                             in[p].read(address_64x32(w, h, x0, y0) + 64 * r + i));
    };
    const auto band = [&](int32_t rows) {
      int32_t x0 = 0;
      do tile(x0, 64, rows);
      while ((x0 += 64) < w / 64 * 64);
      if (x0 < w) tile(x0, (w - x0) / 2 * 2, rows);
    };
    do band(32);
    while ((y0 += 32) < h / 32 * 32);
    if (y0 < h) band(h - y0);
  }

  // Pairs of plane 1 to planes a and b, which step by the strides of sa and sb.
  void unpack_tiles(int32_t w, int32_t h, int a, int b, int sa, int sb) {
    Raster{64, 32, 2048}.walk(w, h, [&](int32_t x, int32_t y) {
      if (x % 2 != 0 || x + 1 >= w) return;
      const ptrdiff_t from = address_64x32(w, h, x, y);
      out_plane(a).write(ptrdiff_t{y} * dst_strides[sa] + x / 2, in[1].read(from));
      out_plane(b).write(ptrdiff_t{y} * dst_strides[sb] + x / 2, in[1].read(from + 1));
    });
  }

  void copy_raster(const Raster &layout, int p, int32_t w, int32_t h) {
    const int32_t tiles = (w + layout.columns - 1) / layout.columns;
    layout.walk(w, h, [&](int32_t x, int32_t y) {
      out_plane(p).write(ptrdiff_t{y} * dst_strides[p] + x,
                         in[p].read(layout.address(tiles, x, y)));
    });
  }

  // Of a tile that is whole, the rows of plane 2 step by the stride of plane 1.
  void unpack_16x8(int32_t w, int32_t h) {
    const Raster layout = {16, 8, 128};
    const ptrdiff_t a = dst_strides[1], b = dst_strides[2];
    layout.walk(w, h, [&](int32_t x, int32_t y) {
      if (x % 2 != 0 || x + 1 >= w) return;
      const ptrdiff_t from = layout.address((w + 15) / 16, x, y);
      const ptrdiff_t in_tile = x / 16 * 16 + 16 > w ? b : a;
      out_plane(1).write(y * a + x / 2, in[1].read(from));
      out_plane(2).write(y / 8 * 8 * b + y % 8 * in_tile + x / 2, in[1].read(from + 1));
    });
  }

  void exchange(int p, int32_t w, int32_t h) {
    const int32_t count = int16_t(w) * int16_t(h);
    int32_t i = 0;
    do {
      const uint8_t first = out_plane(p).read(i);
      out_plane(p).write(i, out_plane(p).read(i + 1));
      out_plane(p).write(i + 1, first);
    } while ((i += 2) + 1 < count);
  }

  void tile_yuv420() {
    for (int32_t y = 0; y < height; ++y)
      for (int32_t x = 0; x < width; ++x)
        out.write(address_64x32(width, height, x, y), in[0].read(ptrdiff_t{y} * stride[0] + x));
    for (int32_t y = 0; y < height / 2; ++y)
      for (int32_t x = 0; x < width; ++x)
        for (int32_t second = x % 2; second < 2; ++second)  // an odd width ends in a whole pair
          out_plane(1).write(address_64x32(width, height / 2, x / 2 * 2, y) + second,
                             in[1 + second].read(ptrdiff_t{y} * stride[1 + second] + x / 2));
  }

  // --- to RGB: where a sample of luma or a pair of chroma is, and where a row starts ---

  template <class Address, class Line>
  void convert_tiles(const Raster &tile, int32_t columns, Address address, Line line) {
    tile.walk(columns, height, [&](int32_t x, int32_t y) {
      const ptrdiff_t pair = address(true, x / 2 * 2, y / 2);
      put(line(y) + ptrdiff_t{x} * pixel_bytes(),
          model_matrix(in[0].read(address(false, x, y)), in[1].read(pair), in[1].read(pair + 1)));
    });
  }

  void t64x32_to_rgb() {
    const int32_t pitch = pixel_bytes() == 2 ? dst_strides[0] / 2 * 2 : dst_strides[0];
    const auto address = [&](bool chroma, int32_t x, int32_t y) {
      return address_64x32(width, chroma ? height / 2 : height, x, y);
    };
    convert_tiles({64, 32, 2048}, width, address, [&](ptrdiff_t y) { return y * pitch; });
  }

  void t16x16_to_rgb() {
    const auto address = [&](bool chroma, int32_t x, int32_t y) {
      return Raster{16, chroma ? 8 : 16, chroma ? 128 : 256}.address((width + 15) / 16, x, y);
    };
    convert_tiles({width, 1, 0}, width, address, [&](ptrdiff_t y) { return y * dst_strides[0]; });
  }

  void t256x16_to_rgb() {
    const Raster layout = {256, 16, 4096};
    const auto address = [&](bool, int32_t x, int32_t y) { return layout.address(8, x, y); };
    const auto line = [s = dst_strides[0]](ptrdiff_t y) {
      return y / 16 * 16 * s / 4 * 4 + y % 16 * s / 4 * 4;
    };
    convert_tiles(layout, (std::min(width, 2048) + 1) / 2 * 2, address, line);
  }

  void t8x8_to_rgb() {
    const int32_t across = (width + 15) / 16, down = (height + 15) / 16;
    for (int32_t y = 0; y < height; ++y)
      for (int32_t x = 0; x < width; ++x) {
        const int32_t block = y / 16 * across + x / 16, strip = x / 8 % 2;
        const ptrdiff_t pair =
            256 * across * down + 128 * block + 64 * strip + y % 16 / 2 * 8 + x % 8 / 2 * 2;
        const int32_t l = in[0].read(256 * block + 128 * strip + y % 16 * 8 + x % 8);
        const int32_t u = in[0].read(pair), v = in[0].read(pair + 1);
        Colour c = {298 * l + 408 * v - 57059, 298 * l - 100 * u - 208 * v + 34713,
                    298 * l + 516 * u - 70887};
        for (int32_t &n : c) n = n < 0 ? 0 : n > 65535 ? 255 : n >> 8;
        put((ptrdiff_t{y} * width + x) * 4, {c[0] >> 3 << 3, c[1] >> 2 << 2, c[2] >> 3 << 3});
      }
  }
};

}  // namespace pivra::test

#endif
