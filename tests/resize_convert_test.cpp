#include <gtest/gtest.h>

#include <array>

#include "heap.h"
#include "levels.h"
#include "resize_convert_model.h"
#include "resize_model.h"

namespace pivra::test {
namespace {

using Strides = std::array<int32_t, 4>;

class ResizeConvert : public testing::Test {
 protected:
  // What the model and the library work on.
  std::array<ModelPlane, 3> in;
  ModelPlane out;

  // Compares them, with planes that hold exactly what the model touches.
  template <class Model, class Run>
  void expect_equal(const Model &model, const Run &run, const std::string &what) {
    for (ModelPlane &plane : in) plane.bytes.clear();
    out.bytes.clear();
    model();
    std::array<GuardedPlane, 4> memory;
    std::array<uint8_t *, 4> src{};
    for (size_t p = 0; p < in.size(); ++p) {
      in[p].bytes = random_bytes(in[p].bytes.size());
      src[p] = memory[p].place(in[p].bytes, random_in(0, 1));
    }
    out.bytes = random_bytes(out.bytes.size());
    run(src.data(), memory[3].place(out.bytes, random_in(0, 1)));
    model();
    ASSERT_EQ(memory[3].content(), out.bytes) << what;
    for (size_t p = 0; p < in.size(); ++p) ASSERT_EQ(memory[p].content(), in[p].bytes) << what;
  }
};

std::string text(const char *what, int32_t w, int32_t h, int32_t dw, int32_t dh) {
  return std::string(" ") + what + " " + std::to_string(w) + "x" + std::to_string(h) + " to " +
         std::to_string(dw) + "x" + std::to_string(dh);
}

int32_t padding() { return random_in(0, 2) == 0 ? 0 : random_in(0, 40); }
int32_t small_or_large(int32_t small, int32_t large) {
  return random_in(0, 3) == 0 ? random_in(1, large) : random_in(1, small);
}

TEST_F(ResizeConvert, ShrinksByWholeFactors) {
  at_every_level([&](const std::string &level) {
    for (int round = 0; round < 200 && !HasFatalFailure(); ++round) {
      const int32_t qx = random_in(2, 6), qy = random_in(2, 6);
      const int32_t dw = small_or_large(40, 150), dh = random_in(1, 9);
      const int32_t w = dw * qx, h = dh * qy;
      Strides stride = {w + padding(), (w + 1) / 2 + padding(), (w + 1) / 2 + padding()};
      const int32_t dst_stride = 2 * dw + padding();
      const auto linear = [&](int32_t p, int32_t x, int32_t y, bool lower) {
        const int32_t below = p == 0 ? stride[0] : stride[0] / 2;
        return in[p].read(ptrdiff_t{y} * stride[p] + lower * below + x);
      };
      expect_equal(
          [&] {
            DirectShrinkModel{dw, dh, dst_stride, linear, out}.whole(qx, qy);
          },
          [&](uint8_t **src, uint8_t *dst) {
            pivra_8b_rsz_csc_down_mult_yuvtorgb565(src, dst, dw, dh, qx, qy, stride.data(),
                                                   dst_stride);
          },
          level + text("planes", w, h, dw, dh));
    }
  });
}

// Sizes of planes, and of the tiles' chroma in pairs.
struct Sizes {
  Strides width, height;
  Sizes(int32_t w, int32_t h)
      : width{w, (w + 1) / 2, (w + 1) / 2}, height{h, (h + 1) / 2, (h + 1) / 2} {}
};

TEST_F(ResizeConvert, ShrinksByOtherFactors) {
  at_every_level([&](const std::string &level) {
    for (int round = 0; round < 200 && !HasFatalFailure(); ++round) {
      const int32_t dw = small_or_large(40, 150), dh = random_in(1, 9);
      const int32_t w = random_in(dw + 1, dw * 5), h = random_in(dh + 1, dh * 5);
      Sizes size(w, h);
      Strides stride = {w + padding(), 0, 0};
      const int32_t dst_stride = 2 * dw + padding();
      const auto linear = [&](int32_t p, int32_t x, int32_t y, bool lower) {
        const int32_t row = std::min(y + lower, size.height[p] - 1);
        const int32_t pitch = p == 0 ? stride[0] : stride[0] / 2;
        return in[p].read(ptrdiff_t{row} * pitch + std::min(x, size.width[p] - 1));
      };
      expect_equal(
          [&] {
            DirectShrinkModel{dw, dh, dst_stride, linear, out}.fractional(w, h, size.width[1],
                                                                          size.height[1]);
          },
          [&](uint8_t **src, uint8_t *dst) {
            pivra_8b_rsz_csc_down_non_multyuvtorgb565(
                src, dst, dw, dh, size.width.data(), size.height.data(), stride.data(), dst_stride);
          },
          level + text("planes", w, h, dw, dh));
    }
  });
}

TEST_F(ResizeConvert, ShrinksTiles) {
  at_every_level([&](const std::string &level) {
    for (int round = 0; round < 100 && !HasFatalFailure(); ++round) {
      const bool whole = random_in(0, 1) == 0;
      const bool apart = round % 20 == 0;  // columns of which few fit a buffer
      const int32_t dw = random_in(1, apart ? 5 : 90), dh = random_in(1, 40);
      const int32_t qx = apart ? random_in(1000, 2500) : random_in(2, 4), qy = random_in(2, 4);
      const int32_t w = whole ? dw * qx : random_in(dw * (qx - 1) + 1, dw * qx),
                    h = whole ? dh * qy : random_in(dh + 1, dh * 4);
      Sizes size(w, h);
      const int32_t dst_stride = 2 * dw + padding();
      const auto tiled = [&](int32_t p, int32_t x, int32_t y, bool lower) {
        const int32_t plane = std::min(p, 1);
        x = std::min(x, size.width[plane] - 1);
        y = std::min(y + lower, size.height[plane] - 1);
        if (p > 0) x = 2 * x + p - 1;
        const ptrdiff_t at = address_64x32(w, size.height[plane], x, y);
        // Pairs of rows of a tile are there as a whole.
        in[plane].read(
            address_64x32(w, size.height[plane], x, std::min(y | 1, size.height[plane] - 1)) | 63);
        return in[plane].read(at);
      };
      expect_equal(
          [&] {
            DirectShrinkModel model{dw, dh, dst_stride, tiled, out};
            if (whole)
              model.whole(qx, qy);
            else
              model.fractional(w, h, size.width[1], size.height[1]);
          },
          [&](uint8_t **src, uint8_t *dst) {
            if (whole)
              pivra_8b_rsz_csc_down_mult_t64x32torgb565(src, dst, dw, dh, qx, qy, size.width.data(),
                                                        size.height.data(), dst_stride);
            else
              pivra_8b_rsz_csc_down_non_multt64x32torgb565(src, dst, dw, dh, size.width.data(),
                                                           size.height.data(), dst_stride);
          },
          level + text(whole ? "tiles, whole" : "tiles", w, h, dw, dh));
    }
  });
}

TEST_F(ResizeConvert, ConvertsWhatThePassesLeave) {
  at_every_level([&](const std::string &level) {
    for (int round = 0; round < 200 && !HasFatalFailure(); ++round) {
      const bool pairs = random_in(0, 1) == 0;
      Strides width = {small_or_large(40, 300)}, height = {random_in(1, 7)};
      Strides stride = {2 * ((width[0] + 1) & ~1) + padding()};
      const auto plane = [&](size_t p) {
        return [&, p](ptrdiff_t offset) { return in[p].read(offset); };
      };
      expect_equal(
          [&] {
            model_convert_passes(plane(0), plane(1), plane(2), width[0], height[0], stride[0],
                                 pairs, out);
          },
          [&](uint8_t **src, uint8_t *dst) {
            const auto convert = pairs ? pivra_rsz_csc_up_h2x_yuv420_to_rgb565_gen
                                       : pivra_rsz_csc_up_h_yuv420_to_rgb565_gen;
            convert(src[0], src[1], src[2], dst, stride.data(), height.data(), width.data());
          },
          level + text(pairs ? "pairs" : "rows", width[0], height[0], stride[0], 0));
    }
  });
}

TEST_F(ResizeConvert, InterpolatesToRgb888) {
  at_every_level([&](const std::string &level) {
    for (int round = 0; round < 200 && !HasFatalFailure(); ++round) {
      const int32_t w = small_or_large(60, 200), h = random_in(1, 40);
      int32_t dw = small_or_large(60, 200), dh = random_in(1, 40);
      Sizes size(w, h);
      Strides stride = {w + padding(), size.width[1] + padding(), size.width[2] + padding()};
      Strides dst_width = {dw}, dst_height = {dh}, dst_stride = {3 * dw + padding()};
      const auto sample = [&](size_t p) {
        return [&, p](int32_t x, int32_t y) { return in[p].read(ptrdiff_t{y} * stride[p] + x); };
      };
      const auto model = [&] {
        const ModelSteps lx(w, dw), ly(h, dh), cx(size.width[1], dw / 2),
            cy(size.height[1], (dh + 1) / 2);
        for (int32_t y = 0; y < dh; ++y)
          for (int32_t x = 0; x < dw; ++x) {
            const auto chroma = [&](size_t p) {
              return model_bilinear(sample(p), x / 2 * cx.step, y / 2 * cy.step, cx.shift,
                                    cy.shift);
            };
            const Colour rgb = model_matrix(
                model_bilinear(sample(0), x * lx.step, y * ly.step, lx.shift, ly.shift), chroma(1),
                chroma(2));
            for (int32_t c = 0; c < 3; ++c)
              out.write(ptrdiff_t{y} * dst_stride[0] + 3 * x + c, rgb[static_cast<size_t>(c)]);
          }
      };
      expect_equal(
          model,
          [&](uint8_t **src, uint8_t *dst) {
            std::array<uint8_t *, 4> planes = {dst};
            pivra_rsz_csc_yuv420_to_rgb888(src, size.width.data(), size.height.data(),
                                           stride.data(), dst_width.data(), dst_height.data(),
                                           dst_stride.data(), planes.data());
          },
          level + text("bilinear", w, h, dw, dh));
    }
  });
}

// --- The two passes ---

// A picture to be made rgb565, linear or tiled, at least one axis not shrinking.
struct RandomPair {
  bool tiled = random_in(0, 1) == 0, mode1 = random_in(0, 1) == 0;
  ImageDesc src{}, dst{};
  std::array<ModelPlane, 3> in;
  std::array<GuardedPlane, 3> memory;

  // Only even sizes, or all.
  explicit RandomPair(bool even) {
    const auto size = [=](int32_t most) {
      return random_in(1, most / 2) * 2 - (even ? 0 : random_in(0, 1));
    };
    do {
      src.width[0] = size(random_in(0, 5) == 0 ? 300 : 70);
      dst.width[0] = size(random_in(0, 5) == 0 ? 2500 : 70);
      src.height[0] = size(50);
      dst.height[0] = size(50);
    } while (dst.width[0] < src.width[0] && dst.height[0] < src.height[0]);
    src.format = tiled ? PIVRA_FORMAT_T64X32 : PIVRA_FORMAT_YUV420;
    dst.format = PIVRA_FORMAT_RGB565;
    dst.resize_mode = mode1 ? PIVRA_RSZ_MODE1 : uint32_t(random_in(0, 1));
    dst.stride[0] = 2 * ((dst.width[0] + 1) & ~1) + padding();
    const int32_t up = random_in(0, 1);
    for (size_t p = 0; p < (tiled ? 2 : 3); ++p) {
      if (p > 0) {
        src.width[p] = (src.width[0] + up) / 2;
        src.height[p] = (src.height[0] + up) / 2;
      }
      src.stride[p] = src.width[p] + padding();
      const int32_t bytes = tiled ? (src.width[0] + 127) / 128 * ((src.height[p] + 63) / 64) * 8192
                                  : src.stride[p] * std::max(src.height[p] - 1, 0) + src.width[p];
      in[p].bytes = random_bytes(size_t(bytes));
      src.plane[p] = memory[p].place(in[p].bytes, random_in(0, 1));
    }
  }
};

// What the kernels make of it.
struct TwoPasses : RandomPair {
  using RandomPair::RandomPair;

  // The planes in the scratch before and after the pass over columns, the known size of
  // that, and one that the conversion does not leave.
  int32_t w = dst.width[0], h = dst.height[0], stride = dst.stride[0];
  int32_t h1 = src.height[1], h2 = src.height[tiled ? 1 : 2], sh = src.height[0];
  std::array<ptrdiff_t, 3> pitch = {stride >> 1, stride >> 2, stride >> 2};
  std::array<ptrdiff_t, 3> rows = {0, w *sh, w *sh + (sh >> 1) * (w >> 1)};
  ptrdiff_t behind = sh * w + (h1 + h2) * (w >> 1);
  std::array<ptrdiff_t, 3> lines = {behind, behind + h *pitch[0],
                                    behind + h *pitch[0] + (h >> 1) * pitch[1]};
  size_t known = size_t((w >> 1) * (sh >> 1) * 2 + w * sh + h * pitch[0] + (h >> 1) * pitch[1] * 2);
  size_t enough = known + size_t(3 * w + stride);

  void model(std::vector<uint8_t> &scratch, ModelPlane &out) {
    ResizeModel m = {"8b", "", mode1, 1, 1, 1, 1, 0, 0};
    const auto taps = [&](int32_t from, int32_t to, int32_t luma_from, int32_t luma_to) {
      if (from == 0) return Taps();
      if (luma_to >= luma_from)
        return grow(to, from, uint32_t(luma_to / luma_from), to % from, mode1);
      const int32_t q = luma_from / luma_to, r = to == 0 ? 0 : from % to;
      return shrink(to, q, r, r == 0 && q > 1);
    };
    const auto into = [&](ptrdiff_t offset, const auto &write) {
      m.out.bytes.assign(scratch.begin() + offset, scratch.end());
      write();
      ASSERT_LE(m.out.bytes.size(), scratch.size() - size_t(offset));
      std::copy(m.out.bytes.begin(), m.out.bytes.end(), scratch.begin() + offset);
    };
    const auto row = [&](size_t p, int32_t y) {
      const size_t plane = tiled ? std::min<size_t>(p, 1) : p;
      const int32_t to = p == 0 ? w : w / 2;
      const auto fetch = [&](ptrdiff_t, ptrdiff_t x) {
        if (tiled && p > 0) x = 2 * x + ptrdiff_t(p) - 1;
        const ptrdiff_t at = tiled ? address_64x32(src.width[0], src.height[plane], int32_t(x), y)
                                   : ptrdiff_t{y} * src.stride[plane] + x;
        return ResizeModel::Sample{in[plane].read(at)};
      };
      into(rows[p] + y * to,
           [&] { m.to_rows(taps(src.width[plane], to, src.width[0], w), each(1), fetch); });
    };
    for (int32_t y = 0; y < sh; ++y) row(0, y);
    // The rows of both chromas may be at the same place: those of tiles come by turns.
    for (int32_t y = 0; y < h1; ++y) {
      row(1, y);
      if (tiled) row(2, y);
    }
    for (int32_t y = 0; y < h2 && !tiled; ++y) row(2, y);
    for (size_t p = 0; p < 3; ++p) {
      const int32_t columns = p == 0 ? w : w / 2;
      m.in.bytes.assign(scratch.begin() + rows[p], scratch.end());
      m.dst_stride = int32_t(pitch[p]);
      into(lines[p], [&] {
        m.to_plane(
            each(columns),
            rows_at(taps(src.height[tiled ? std::min<size_t>(p, 1) : p], p == 0 ? h : h / 2, sh, h),
                    columns),
            m.samples());
      });
    }
    const auto plane = [&](size_t p) {
      return [&, p](ptrdiff_t offset) { return scratch.at(size_t(lines[p] + offset)); };
    };
    model_convert_passes(plane(0), plane(1), plane(2), w, h, stride, h % 2 == 0, out);
  }
};

TEST_F(ResizeConvert, MakesTwoPasses) {
  at_every_level([&](const std::string &level) {
    for (int round = 0; round < 150 && !HasFatalFailure(); ++round) {
      TwoPasses call(round % 2 == 0);
      std::vector<uint8_t> scratch(call.enough);
      ModelPlane expected;
      call.model(scratch, expected);
      const std::vector<uint8_t> before = random_bytes(expected.bytes.size());
      const std::string what =
          level + text(call.tiled ? "tiles" : "planes", call.src.width[0], call.sh, call.w, call.h);
      // Of a scratch of its own and of the caller's, which is not cleared.
      for (const bool own : {true, false}) {
        GuardedPlane out, of_caller;
        call.dst.plane[0] = out.place(before, random_in(0, 1));
        expected.bytes = before;
        scratch = own ? std::vector<uint8_t>(call.enough) : noise(call.enough);
        uint8_t *const given = of_caller.place(scratch, true);
        call.model(scratch, expected);
        const Outcome outcome = watch([&] {
          if (own) return pivra_rsz_csc(&call.src, &call.dst);
          const auto kernel =
              call.tiled ? pivra_rsz_csc_t64x32_to_rgb565 : pivra_rsz_csc_yuv420_to_rgb565;
          return kernel(call.src.plane, call.src.width, call.src.height, call.src.stride,
                        call.dst.width, call.dst.height, call.dst.stride, call.dst.plane, given,
                        call.dst.resize_mode);
        });
        ASSERT_EQ(outcome.result, PIVRA_OK);
        ASSERT_EQ(outcome.calls, own);
        ASSERT_EQ(outcome.kept, 0u);
        ASSERT_GE(outcome.bytes, own ? call.known : 0u);
        ASSERT_EQ(out.content(), expected.bytes) << what;
        ASSERT_TRUE(own || of_caller.content() == scratch) << what;
      }
    }
  });
}

// --- The dispatcher ---

// Planes of a format and size, random unless `content` says otherwise.
struct Picture : GuardedPicture {
  Picture(int32_t format, int32_t w, int32_t h, int32_t padding = 0) {
    desc.format = format;
    const bool yuv = format == PIVRA_FORMAT_YUV420 || format == PIVRA_FORMAT_T64X32;
    const int32_t unit = format == PIVRA_FORMAT_RGB565 ? 2 : format == PIVRA_FORMAT_RGB888 ? 3 : 1;
    for (size_t p = 0; p < (yuv ? 3 : 1); ++p) {
      desc.width[p] = p == 0 ? w : (w + 1) / 2;
      desc.height[p] = p == 0 ? h : (h + 1) / 2;
      desc.stride[p] = desc.width[p] * unit + padding;
      before.push_back(noise(size_t(desc.stride[p]) * size_t(desc.height[p]) +
                             (format == PIVRA_FORMAT_T64X32 ? 1u << 17 : 0)));
      desc.plane[p] = memory[p].place(before[p], true);
    }
  }
  void fill(const std::function<uint8_t(size_t p, int32_t x, int32_t y)> &value) {
    for (size_t p = 0; p < before.size(); ++p)
      for (int32_t y = 0; y < desc.height[p]; ++y)
        for (int32_t x = 0; x < desc.stride[p]; ++x)
          desc.plane[p][y * desc.stride[p] + x] = value(p, x, y);
  }
};

constexpr int32_t kGrey = PIVRA_FORMAT_YUV400, kYuv = PIVRA_FORMAT_YUV420,
                  kTiles = PIVRA_FORMAT_T64X32, k565 = PIVRA_FORMAT_RGB565,
                  k888 = PIVRA_FORMAT_RGB888;

TEST_F(ResizeConvert, KnowsItsPairs) {
  const std::vector<std::pair<int32_t, int32_t>> known = {
      {kTiles, k565}, {kYuv, k565},  {kYuv, k888}, {kYuv, kGrey},
      {kGrey, kYuv},  {kGrey, k888}, {k888, kYuv}};
  for (int32_t from = -1; from < 510; ++from)
    for (const int32_t to : {-1, 0, 1, 4, 6, 11, 101, 200, 201, 400, 401, 500, from}) {
      const bool is_known =
          std::find(known.begin(), known.end(), std::pair(from, to)) != known.end();
      Picture src(from == kTiles || from == k888 ? from : kYuv, 20, 20),
          dst(to == k565 || to == k888 ? to : kYuv, 16, 10);
      src.desc.format = from;
      dst.desc.format = to;
      ASSERT_EQ(pivra_rsz_csc(&src.desc, &dst.desc), from == to ? PIVRA_REFUSED
                                                     : is_known ? PIVRA_OK
                                                                : PIVRA_UNSUPPORTED);
      ASSERT_EQ(dst.now() != dst.before, is_known) << from << " to " << to;
    }
}

TEST_F(ResizeConvert, KeepsItsScratchWhenAPictureIsEmpty) {
  for (const int32_t format : {kYuv, kTiles})
    for (int which = 0; which < 4; ++which)
      for (const int32_t size : {0, -1}) {
        Picture src(format, 20, 20), dst(k565, 30, 30);
        std::array{src.desc.width, src.desc.height, dst.desc.width, dst.desc.height}[which][0] =
            size;
        const Outcome outcome = watch([&] { return pivra_rsz_csc(&src.desc, &dst.desc); });
        EXPECT_EQ(outcome.result, PIVRA_REFUSED);
        EXPECT_EQ(outcome.kept, 1u);
        EXPECT_EQ(dst.now(), dst.before);
      }
}

TEST_F(ResizeConvert, NeedsMemoryUnlessBothAxesShrink) {
  for (const auto &[from, to] :
       {std::pair{kYuv, k565}, {kTiles, k565}, {kGrey, k888}, {k888, kYuv}})
    for (const bool grows : {true, false}) {
      Picture src(from, 20, 20), dst(to, grows ? 30 : 10, 10);
      const bool needed = grows || to != k565;
      EXPECT_EQ(watch([&] { return pivra_rsz_csc(&src.desc, &dst.desc); }, true).result,
                needed ? PIVRA_REFUSED : PIVRA_OK);
      EXPECT_EQ(dst.now() == dst.before, needed);
    }
}

TEST_F(ResizeConvert, ShrinksByWhatTheRatioAsks) {
  for (const bool whole : {true, false})
    for (const int32_t format : {kYuv, kTiles}) {
      const int32_t w = whole ? 48 : 50, h = 30, dw = 16, dh = 10;
      Picture src(format, w, h), dst(k565, dw, dh), expected(k565, dw, dh);
      ImageDesc &s = src.desc;
      uint8_t *const out = expected.desc.plane[0];
      if (format == kYuv && whole)
        pivra_8b_rsz_csc_down_mult_yuvtorgb565(s.plane, out, dw, dh, 3, 3, s.stride, 2 * dw);
      else if (format == kYuv)
        pivra_8b_rsz_csc_down_non_multyuvtorgb565(s.plane, out, dw, dh, s.width, s.height, s.stride,
                                                  2 * dw);
      else if (whole)
        pivra_8b_rsz_csc_down_mult_t64x32torgb565(s.plane, out, dw, dh, 3, 3, s.width, s.height,
                                                  2 * dw);
      else
        pivra_8b_rsz_csc_down_non_multt64x32torgb565(s.plane, out, dw, dh, s.width, s.height,
                                                     2 * dw);
      EXPECT_EQ(watch([&] { return pivra_rsz_csc(&s, &dst.desc); }).kept, 0u);
      EXPECT_EQ(dst.now(), expected.now());
    }
}

TEST_F(ResizeConvert, ResizesLumaAlone) {
  for (const int32_t padding : {0, 3})
    for (const bool grows : {true, false}) {
      const int32_t w = 70, h = 50, dw = grows ? 90 : 31, dh = 40;
      Picture src(kYuv, w, h, padding), grey(kGrey, dw, dh, padding), yuv(kYuv, dw, dh, padding);
      ResizeModel m = {"8b", "", false, w, h, dw, dh, w + padding, dw + padding};
      m.in.bytes = src.before[0];
      m.out.bytes = grey.before[0];
      const ModelSteps x(w, dw), y(h, dh);
      m.org(x.step << 3 | x.shift, y.step << 3 | y.shift);
      EXPECT_EQ(watch([&] { return pivra_rsz_csc(&src.desc, &grey.desc); }).calls, 0);
      EXPECT_EQ(grey.now()[0], m.out.bytes);

      // And over a fill without regard to the stride.
      std::vector<std::vector<uint8_t>> expected = yuv.before;
      for (size_t p = 0; p < 3; ++p)
        std::fill_n(expected[p].begin(), yuv.desc.width[p] * yuv.desc.height[p], p == 0 ? 16 : 128);
      m.out.bytes = expected[0];
      m.org(x.step << 3 | x.shift, y.step << 3 | y.shift);
      expected[0] = m.out.bytes;
      src.desc.format = kGrey;
      EXPECT_EQ(pivra_rsz_csc(&src.desc, &yuv.desc), PIVRA_OK);
      EXPECT_EQ(yuv.now(), expected);
    }
}

TEST_F(ResizeConvert, GoesThroughAPicture) {
  for (const auto &[from, to] : {std::pair{kGrey, k888}, {k888, kYuv}})
    for (const int32_t w : {30, 50, 64}) {
      Picture src(from, 50, 40, 1), dst(to, w, 24), expected(to, w, 24);
      expected.before = dst.before;
      for (size_t p = 0; p < dst.before.size(); ++p)
        expected.desc.plane[p] = expected.memory[p].place(dst.before[p], true);
      Picture between(from, w, 24);
      between.desc.stride[0] = from == kGrey ? dst.desc.stride[0] / 3 : dst.desc.stride[0] * 3;
      ASSERT_EQ(pivra_rsz(&src.desc, &between.desc), PIVRA_OK);
      ASSERT_EQ(pivra_csc(&between.desc, &expected.desc), PIVRA_OK);
      dst.desc.resize_mode = PIVRA_RSZ_MODE1;
      const Outcome outcome = watch([&] { return pivra_rsz_csc(&src.desc, &dst.desc); });
      EXPECT_EQ(outcome.result, PIVRA_OK);
      EXPECT_EQ(outcome.kept, 0u);
      EXPECT_EQ(dst.now(), expected.now());
      // Too small to be converted.
      Picture small(to, w, 7);
      EXPECT_EQ(pivra_rsz_csc(&src.desc, &small.desc), PIVRA_OK);
      EXPECT_EQ(small.now(), small.before);
    }
}

// A picture without edges comes out as if it were resized first, nearly.
TEST_F(ResizeConvert, StaysNearResizingThenConverting) {
  const int32_t sizes[][2] = {{320, 180}, {400, 226}, {214, 122}, {960, 540}, {320, 400}};
  for (const auto &[dw, dh] : sizes)
    for (const int32_t format : {k565, k888}) {
      Picture src(kYuv, 640, 360), yuv(kYuv, dw, dh), expected(format, dw, dh), dst(format, dw, dh);
      src.fill([&](size_t p, int32_t x, int32_t y) {
        const int32_t scale = p == 0 ? 1 : 2;
        return uint8_t(60 + 40 * p + scale * (x + y) / 10);
      });
      ASSERT_EQ(pivra_rsz(&src.desc, &yuv.desc), PIVRA_OK);
      ASSERT_EQ(pivra_csc(&yuv.desc, &expected.desc), PIVRA_OK);
      ASSERT_EQ(pivra_rsz_csc(&src.desc, &dst.desc), PIVRA_OK);
      const std::vector<uint8_t> a = dst.now()[0], b = expected.now()[0];
      double sum = 0;
      const size_t pixels = size_t(dw) * size_t(dh);
      for (size_t i = 0; i < pixels; ++i) {
        const auto colour = [&](const std::vector<uint8_t> &bytes) {
          if (format == k888) return Colour{bytes[3 * i], bytes[3 * i + 1], bytes[3 * i + 2]};
          const int32_t word = bytes[2 * i] | bytes[2 * i + 1] << 8;
          return Colour{word >> 11 << 3, (word >> 5 & 63) << 2, (word & 31) << 3};
        };
        for (size_t c = 0; c < 3; ++c) sum += std::abs(colour(a)[c] - colour(b)[c]);
      }
      EXPECT_LE(sum / double(3 * pixels), 6) << dw << "x" << dh;
    }
}

}  // namespace
}  // namespace pivra::test
