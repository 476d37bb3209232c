#include "compare.h"
#include "levels.h"
#include "tile_model.h"

namespace pivra::test {
namespace {

using Planes = uint8_t **;

// A kernel, how it is called and what it is to do.
struct Kernel {
  std::string name;
  int32_t source, destination;  // none for the copies
  void (*model)(TileModel &);
  void (*run)(TileModel &, Planes src, Planes dst);
  pivra_csc_kernel *TiledToRgb::*at_level = nullptr;
};

void call(pivra_csc_kernel *kernel, TileModel &m, Planes src, Planes dst) {
  test::call(kernel, m.width, m.height, m.stride, m.dst_strides, src, dst);
}

using M = TileModel &;
void t64x32_to_planes(M m, int u, int v) {
  m.copy_tiles(0, m.width, m.height);
  m.unpack_tiles(m.width, m.height / 2, u, v, v, v);
}
void t64x32_to_yuv420(M m) { t64x32_to_planes(m, 1, 2); }
void t64x32_to_yv12(M m) { t64x32_to_planes(m, 2, 1); }
void t64x32_to_nv12(M m) {
  m.copy_tiles(0, m.width, m.height);
  m.copy_tiles(1, m.width, m.height / 2);
}
void t64x32_to_nv21(M m) {
  t64x32_to_nv12(m);
  m.exchange(1, m.width, m.height / 2);
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
#define PIVRA_COPY(layout, model)                                                          \
  {"copy_" #layout "_to_linear", -1, -1, [](M m) { model; },                               \
   [](M m, Planes s, Planes d) {                                                           \
     pivra_csc_copy_##layout##_to_linear(s[0], m.width, m.height, m.dst_strides[0], d[0]); \
   }},
#define PIVRA_RGB(SOURCE, source, DESTINATION, destination)                             \
  {#source "_to_" #destination,                                                         \
   PIVRA_FORMAT_##SOURCE,                                                               \
   PIVRA_FORMAT_##DESTINATION,                                                          \
   [](M m) { m.source##_to_rgb(); },                                                    \
   [](M m, Planes s, Planes d) { call(PIVRA_CSC_NAME(source, destination), m, s, d); }, \
   &TiledToRgb::source##_to_##destination},

const std::vector<Kernel> kKernels = {
    PIVRA_TILED_TO_RGB(PIVRA_RGB) PIVRA_TILED_TO_LINEAR(PIVRA_LINEAR)  //
    PIVRA_COPY(8x8tiles, m.copy_raster({8, 8, 64}, 0, m.width, m.height))
        PIVRA_COPY(8x4tiles, m.copy_raster({8, 4, 64}, 0, m.width, m.height))
            PIVRA_COPY(tiles, m.copy_tiles(0, m.width, m.height)){
                "unpack_tiles_to_linear", -1, -1,
                [](M m) { m.unpack_tiles(m.width, m.height, 1, 2, 1, 2); },
                [](M m, Planes s, Planes d) {
                  pivra_csc_unpack_tiles_to_linear(s[1], m.width, m.height, m.dst_strides[1], d[1],
                                                   m.dst_strides[2], d[2]);
                }},
    {"swap_8byte8", -1, -1, [](M m) { m.exchange(0, m.width, m.height); },
     [](M m, Planes, Planes d) { pivra_csc_swap_8byte8(d[0], m.width, m.height); }},
};

// Sizes around the tiles of each layout, strides of each plane apart; now and then strides
// that lay rows over each other, or an empty plane, whose first tile may be copied still.
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
  if (m.source < 0 && random_in(0, 7) == 0) {
    m.width = random_in(-64, 0);
    m.height = random_in(-64, 32);
  }
  return m;
}

template <class Run>
void expect_equal_to_model(const Kernel &kernel, const std::string &level, Run run) {
  TileModel m = random_job(kernel);
  compare_with_model(
      all(m.in), {&m.out, &m.out_plane(1), &m.out_plane(2)}, [&] { kernel.model(m); },
      [&](Planes src, Planes dst) { run(m, src, dst); },
      std::tuple(level, kernel.name, m.width, m.height, "strides", m.stride, m.dst_strides));
}

// The exported kernels choose their level, as they do in a program; scalar code has a table.
TEST(TiledKernels, EqualTheModelAtEveryLevel) {
  at_every_level([](const std::string &level) {
    for (const Kernel &kernel : kKernels)
      for (int round = 0; round < 40 && !HasFatalFailure(); ++round)
        expect_equal_to_model(kernel, level, kernel.run);
  });
  for (const Kernel &kernel : kKernels)
    for (int round = 0; round < 20 && kernel.at_level && !HasFatalFailure(); ++round)
      expect_equal_to_model(kernel, "plain", [&](M m, Planes s, Planes d) {
        call(plain::tiled_to_rgb.*kernel.at_level, m, s, d);
      });
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

TEST(Dispatcher, TakesThe256x16LayoutFrom1281ColumnsOn) {
  for (const int32_t width : {1280, 1281}) {
    Image src(PIVRA_FORMAT_T256X16, width, 8), dst(PIVRA_FORMAT_RGBA8888, width, 8);
    const auto before = dst.bytes;
    const bool taken = width > 1280;
    EXPECT_EQ(pivra_csc(&src.desc, &dst.desc), taken ? PIVRA_OK : PIVRA_UNSUPPORTED);
    EXPECT_EQ(dst.bytes != before, taken);
  }
}

}  // namespace
}  // namespace pivra::test
