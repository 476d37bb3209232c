#include <gtest/gtest.h>

#include "levels.h"
#include "tile_model.h"

namespace pivra::test {
namespace {

using Planes = std::array<uint8_t *, 4>;

// A kernel, how it is called and what it is to do.
struct Kernel {
  std::string name;
  int32_t source, destination;  // none for the copies
  void (*model)(TileModel &);
  void (*run)(TileModel &, Planes src, Planes dst);
  pivra_csc_kernel *TiledToRgb::*at_level = nullptr;
};

void call(pivra_csc_kernel *kernel, TileModel &m, Planes src, Planes dst) {
  std::array<int32_t, 4> width = {m.width}, height = {m.height};
  kernel(src.data(), width.data(), height.data(), m.stride.data(), m.dst_strides.data(),
         dst.data());
}

using M = TileModel &;
void t64x32_to_yuv420(M m) {
  m.copy_tiles(0, m.width, m.height);
  m.unpack_tiles(m.width, m.height / 2, 1, 2, 2, 2);
}
void t64x32_to_yv12(M m) {
  m.copy_tiles(0, m.width, m.height);
  m.unpack_tiles(m.width, m.height / 2, 2, 1, 1, 1);
}
void t64x32_to_nv12(M m) {
  m.copy_tiles(0, m.width, m.height);
  m.copy_tiles(1, m.width, m.height / 2);
}
void t64x32_to_nv21(M m) {
  t64x32_to_nv12(m);
  m.swap(1, m.width, m.height / 2);
}
void t16x16_to_nv12(M m) {
  m.copy_raster({16, 16, 256}, 0, m.width, m.height);
  m.copy_raster({16, 8, 128}, 1, m.width, m.height / 2);
}
void t16x16_to_yuv420(M m) {
  m.copy_raster({16, 16, 256}, 0, m.width, m.height);
  m.unpack_16x8(m.width, m.height / 2);
}
void yuv420_to_t64x32(M m) { m.tile_yuv420(); }

#define PIVRA_LINEAR(SOURCE, source, DESTINATION, destination)                     \
  {#source "_to_" #destination, PIVRA_FORMAT_##SOURCE, PIVRA_FORMAT_##DESTINATION, \
   source##_to_##destination,                                                      \
   [](M m, Planes s, Planes d) { call(PIVRA_CSC_NAME(source, destination), m, s, d); }},
#define PIVRA_RGB(SOURCE, source, DESTINATION, destination)                             \
  {#source "_to_" #destination,                                                         \
   PIVRA_FORMAT_##SOURCE,                                                               \
   PIVRA_FORMAT_##DESTINATION,                                                          \
   [](M m) { m.source##_to_rgb(); },                                                    \
   [](M m, Planes s, Planes d) { call(PIVRA_CSC_NAME(source, destination), m, s, d); }, \
   &TiledToRgb::source##_to_##destination},

const std::vector<Kernel> kKernels = {
    PIVRA_TILED_TO_RGB(PIVRA_RGB) PIVRA_TILED_TO_LINEAR(PIVRA_LINEAR)  //
    {"copy_8x8tiles_to_linear", -1, -1,
     [](M m) {
       m.copy_raster({8, 8, 64}, 0, m.width, m.height);
     },
     [](M m, Planes s, Planes d) {
       pivra_csc_copy_8x8tiles_to_linear(s[0], m.width, m.height, m.dst_strides[0], d[0]);
     }},
    {"copy_8x4tiles_to_linear", -1, -1,
     [](M m) {
       m.copy_raster({8, 4, 64}, 0, m.width, m.height);
     },
     [](M m, Planes s, Planes d) {
       pivra_csc_copy_8x4tiles_to_linear(s[0], m.width, m.height, m.dst_strides[0], d[0]);
     }},
    {"unpack_tiles_to_linear", -1, -1, [](M m) { m.unpack_tiles(m.width, m.height, 1, 2, 1, 2); },
     [](M m, Planes s, Planes d) {
       pivra_csc_unpack_tiles_to_linear(s[1], m.width, m.height, m.dst_strides[1], d[1],
                                        m.dst_strides[2], d[2]);
     }},
    {"swap_8byte8", -1, -1, [](M m) { m.swap(0, m.width, m.height); },
     [](M m, Planes, Planes d) { pivra_csc_swap_8byte8(d[0], m.width, m.height); }},
};

// Sizes around the tiles of each layout, strides of each plane apart; now and
// then strides that lay rows over each other.
TileModel random_job(const Kernel &kernel) {
  TileModel m{};
  m.source = kernel.source;
  m.destination = kernel.destination;
  m.width = random_in(0, 2) == 0 ? random_in(1, 300) : random_in(1, 70);
  m.height = random_in(1, 140);
  if (m.source == PIVRA_FORMAT_T256X16) {
    m.width = random_in(0, 3) == 0 ? random_in(1, 2200) : random_in(1, 600);
    m.height = random_in(1, 40);
  }
  const bool any = random_in(0, 4) == 0;
  const auto stride = [&](int32_t row_bytes) {
    return any ? random_in(0, 2 * row_bytes) : row_bytes + random_in(0, 2) * random_in(0, 40);
  };
  const int32_t bytes = m.destination >= PIVRA_FORMAT_RGB565 ? m.pixel_bytes() : 1;
  for (size_t p = 0; p < 4; ++p) {
    m.stride[p] = stride(p == 0 ? m.width : (m.width + 1) / 2);
    m.dst_strides[p] = stride(m.width * bytes);
  }
  return m;
}

std::string describe(const Kernel &kernel, const std::string &level, const TileModel &m) {
  std::string text = level + " " + kernel.name + " " + std::to_string(m.width) + "x" +
                     std::to_string(m.height) + " strides";
  for (const int32_t stride : m.dst_strides) text += " " + std::to_string(stride);
  return text;
}

// The planes hold exactly what the model touches, and inaccessible pages around it.
template <class Run>
void expect_equal_to_model(const Kernel &kernel, const std::string &level, TileModel m, Run run) {
  kernel.model(m);  // finds out what is touched
  std::array<GuardedPlane, 3> in, out;
  Planes src{}, dst{};
  for (int p = 0; p < 3; ++p) {
    m.in[p].bytes = random_bytes(m.in[p].bytes.size());
    m.out_plane(p).bytes = random_bytes(m.out_plane(p).bytes.size());
    src[p] = in[p].place(m.in[p].bytes, random_in(0, 1));
    dst[p] = out[p].place(m.out_plane(p).bytes, random_in(0, 1));
  }
  run(m, src, dst);
  kernel.model(m);
  for (int p = 0; p < 3; ++p) {
    ASSERT_EQ(out[p].content(), m.out_plane(p).bytes) << describe(kernel, level, m);
    ASSERT_EQ(in[p].content(), m.in[p].bytes) << describe(kernel, level, m);
  }
}

// The exported kernels choose their level, as they do in a program.
TEST(TiledKernels, EqualTheModelAtEveryLevel) {
  at_every_level([](const std::string &level) {
    for (const Kernel &kernel : kKernels)
      for (int round = 0; round < 40 && !HasFatalFailure(); ++round)
        expect_equal_to_model(kernel, level, random_job(kernel), kernel.run);
  });
}

TEST(TiledKernels, EqualTheModelInScalarCode) {
  for (const Kernel &kernel : kKernels) {
    if (kernel.at_level == nullptr) continue;
    for (int round = 0; round < 20; ++round) {
      expect_equal_to_model(kernel, "plain", random_job(kernel), [&](M m, Planes s, Planes d) {
        call(plain::tiled_to_rgb.*kernel.at_level, m, s, d);
      });
      if (HasFatalFailure()) return;
    }
  }
}

TEST(TileOffset, IsThatOfKnownTiles) {
  EXPECT_EQ(pivra_get_tile_offset(256, 64, 0, 32), 4096);
  EXPECT_EQ(pivra_get_tile_offset(256, 64, 128, 0), 12288);
  EXPECT_EQ(pivra_get_tile_offset(256, 64, 64, 32), 6144);
  EXPECT_EQ(pivra_get_tile_offset(256, 96, 128, 64), 20480);  // a lone last row
}

TEST(TileOffset, GivesEveryByteAPlaceOfItsOwn) {
  for (const auto &[w, h] : {std::pair{200, 96}, {512, 64}, {130, 33}, {64, 32}, {333, 161}}) {
    std::vector<int> hits(size_t((h + 63) / 64) * ((w + 127) / 128) * 8192);
    for (int32_t y = 0; y < h; ++y)
      for (int32_t x = 0; x < w; ++x) {
        const int32_t offset = pivra_get_tile_offset(w, h, x, y);
        ASSERT_EQ(offset, address_64x32(w, h, x, y)) << x << "," << y << " of " << w << "x" << h;
        ASSERT_EQ(hits.at(offset)++, 0);
      }
  }
}

// An empty plane still has its first tile copied, and a pair swapped.
TEST(TileCopies, TakeAWholeTileOfAnEmptyPlane) {
  const std::vector<uint8_t> tile = random_bytes(2048);
  for (const auto &[w, h] : {std::pair{0, 0}, {40, 8}, {64, 32}, {-64, -32}}) {
    std::vector<uint8_t> out(2048);
    pivra_csc_copy_tiles_to_linear(tile.data(), w, h, 64, out.data());
    EXPECT_EQ(out, tile);
  }
  uint8_t bytes[] = {1, 2, 3, 4};
  pivra_csc_swap_8byte8(bytes, 0, 0);
  EXPECT_EQ(std::vector(bytes, bytes + 4), (std::vector<uint8_t>{2, 1, 3, 4}));
}

// Tiled 4:2:0 gives the colours that it gives by way of linear nv12.
TEST(TiledToRgb, EqualsTheWayThroughNv12) {
  constexpr int32_t kWidth = 200, kHeight = 96;
  std::vector<uint8_t> luma = random_bytes(65536), chroma = random_bytes(65536);
  for (const int32_t format : {PIVRA_FORMAT_T64X32, PIVRA_FORMAT_T16X16}) {
    std::vector<uint8_t> linear(kWidth * kHeight * 2), direct(kWidth * kHeight * 4), by(direct);
    ImageDesc src{}, nv12{}, rgb{};
    for (ImageDesc *desc : {&src, &nv12, &rgb}) desc->width[0] = kWidth, desc->height[0] = kHeight;
    src.plane[0] = luma.data(), src.plane[1] = chroma.data(), src.format = format;
    nv12.plane[0] = linear.data(), nv12.plane[1] = &linear[kWidth * kHeight];
    nv12.stride[0] = nv12.stride[1] = kWidth, nv12.format = PIVRA_FORMAT_NV12;
    rgb.plane[0] = by.data(), rgb.stride[0] = 4 * kWidth, rgb.format = PIVRA_FORMAT_RGBA8888;
    ASSERT_EQ(pivra_csc(&src, &nv12), PIVRA_OK);
    ASSERT_EQ(pivra_csc(&nv12, &rgb), PIVRA_OK);
    rgb.plane[0] = direct.data();
    ASSERT_EQ(pivra_csc(&src, &rgb), PIVRA_OK);
    EXPECT_EQ(direct, by);
  }
}

TEST(Dispatcher, TakesThe256x16LayoutFrom1281ColumnsOn) {
  std::vector<uint8_t> plane(32768), out(1282 * 8 * 4);
  for (const int32_t width : {1280, 1281}) {
    ImageDesc src{}, dst{};
    src.format = PIVRA_FORMAT_T256X16, dst.format = PIVRA_FORMAT_RGBA8888;
    src.width[0] = dst.width[0] = width, src.height[0] = dst.height[0] = 8;
    src.plane[0] = src.plane[1] = plane.data(), dst.plane[0] = out.data();
    dst.stride[0] = 1282 * 4;
    const bool taken = width > 1280;
    EXPECT_EQ(pivra_csc(&src, &dst), taken ? PIVRA_OK : PIVRA_UNSUPPORTED);
    EXPECT_EQ(std::count(out.begin(), out.end(), 255) != 0, taken);  // alpha
  }
}

}  // namespace
}  // namespace pivra::test
