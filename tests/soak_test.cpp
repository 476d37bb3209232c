// Every entry point, over and over, on frames of random sizes and formats: memory stays
// flat, and eight threads at once make the same bytes as one.
#include <gtest/gtest.h>
#include <malloc.h>

#include <pivra.hpp>
#include <random>
#include <thread>

#if defined(__SANITIZE_ADDRESS__)
// From the runtime itself: GCC does not install the header that has this.
extern "C" size_t __sanitizer_get_current_allocated_bytes();
#define PIVRA_ALLOCATED_BYTES __sanitizer_get_current_allocated_bytes()
#else
#define PIVRA_ALLOCATED_BYTES mallinfo2().uordblks
#endif

namespace pivra::test {
namespace {

// The emulator is a hundred times as slow.
#if defined(__x86_64__)
constexpr uint32_t kFrames = 10000;
#else
constexpr uint32_t kFrames = 1000;
#endif

// What an allocator keeps at hand. A leak would be a scratch buffer for every tenth frame,
// which is several times as much.
constexpr size_t kAtHand = 512 << 10;

class Frame {
 public:
  explicit Frame(uint32_t seed) : random_(seed) {}

  // One call, chosen at random. A digest of the result and of all that was written.
  uint64_t run() {
    constexpr void (Frame::*kCalls[])() = {
        &Frame::copy,   &Frame::convert_format,     &Frame::turn,
        &Frame::turn,   &Frame::turn_and_convert,   &Frame::resize,
        &Frame::shrink, &Frame::resize_and_convert, &Frame::dither,
        &Frame::filter, &Frame::transcode,          &Frame::pack};
    (this->*kCalls[pick(0, std::size(kCalls) - 1)])();
    return digest_;
  }

 private:
  int32_t pick(size_t low, size_t high) {
    return static_cast<int32_t>(low + random_() % (high - low + 1));
  }
  template <class List>
  auto any(const List &list) {
    return list[static_cast<size_t>(pick(0, std::size(list) - 1))];
  }
  int32_t side() { return pick(0, 9) ? pick(1, 90) : pick(1, 300); }

  // Pictures that keep their size are copied, by kernels that are not exact for every one.
  int32_t other(int32_t than) {
    const int32_t one = side();
    return one == than ? one + 1 : one;
  }

  struct Size {
    int32_t width, height;
  };
  static Size turned(Turn turn, Size size) {
    return is_quarter(turn) ? Size{size.height, size.width} : size;
  }

  Picture noisy(int32_t format, Size size) {
    Picture picture(format, size.width, size.height);
    for (uint8_t &byte : picture.bytes()) byte = static_cast<uint8_t>(random_() >> 11);
    return picture;
  }
  void keep(int32_t result, Picture &picture) {
    digest_ = digest_ * 31 + static_cast<uint32_t>(result);
    for (const uint8_t byte : picture.bytes()) digest_ = (digest_ ^ byte) * 0x100000001B3;
  }

  template <class Function>
  void call(detail::FormatPair pair, Size from, Size to, Function function) {
    Picture src = noisy(pair.from, from), dst(pair.to, to.width, to.height);
    ImageDesc given = src.desc(), made = dst.desc();
    made.resize_mode = pick(0, 1) ? PIVRA_RSZ_MODE1 : 0;
    keep(function(&given, &made), dst);
  }

  void copy() {
    const FormatInfo info = any(formats());
    const int32_t format = info.linear() ? info.code : PIVRA_FORMAT_YUV420;
    const Size size = {32 * pick(1, 8), 32 * pick(1, 8)};
    call({format, format}, size, size, pivra_cpy);
  }

  void convert_format() {
    const detail::FormatPair pair = any(detail::kPairs);
    const bool wide = pair.from == PIVRA_FORMAT_T256X16;  // tiles of 256 x 16, eight to a row
    const Size size = {wide ? 1282 : 64 * pick(1, 3), 64 * pick(1, 2)};
    call(pair, size, size, pivra_csc);
  }

  // Resized at the same time, or not.
  void turn() {
    const int32_t format = any(detail::kTurning).format;
    const bool resized = pick(0, 1);
    const auto turn = static_cast<Turn>(resized ? pick(0, 3) : pick(1, 5));
    const FormatInfo *to = turned_format(format, turn);
    if (!to || (resized && !resizes_turned(format, turn))) return;
    const Size size = {side(), side()};
    const Size upright = resized ? Size{other(size.width), side()} : size;
    call({format, to->code}, size, turned(turn, upright),
         [=](const ImageDesc *src, ImageDesc *dst) {
           const ImageDesc units = detail::pairs_as_units(*src);
           const auto rotation = static_cast<int32_t>(turn);
           if (!resized) return pivra_rot(&units, rotation, dst);
           dst->format = units.format;
           return pivra_rsz_rot(&units, rotation, dst);
         });
  }

  void turn_and_convert() {
    constexpr detail::FormatPair kPlanes = {PIVRA_FORMAT_YUV422N, PIVRA_FORMAT_YUV420},
                                 kPacked = {PIVRA_FORMAT_YUYV, PIVRA_FORMAT_BGRA8888};
    const bool planes = pick(0, 1) == 0;
    const auto turn = static_cast<Turn>(pick(0, planes ? 2 : 3));
    const Size size = {2 * pick(8, 50), 2 * pick(4, 50)};
    call(planes ? kPlanes : kPacked, size, turned(turn, size),
         [=](const ImageDesc *src, ImageDesc *dst) {
           return pivra_csc_rot(src, static_cast<int32_t>(turn), dst);
         });
  }

  void resize() {
    const int32_t format = any(formats()).code;
    if (!resizes(format)) return;
    const Size size = {side(), side()};
    call({format, format}, size, {other(size.width), side()}, pivra_rsz);
  }

  void shrink() {
    const int32_t factor = pick(2, 7), width = 2 * pick(2, 30), height = 2 * pick(2, 30);
    call({PIVRA_FORMAT_NV12, PIVRA_FORMAT_NV12}, {width * factor, height * factor}, {width, height},
         pivra_rsz_8b_down_special);
  }

  void resize_and_convert() {
    constexpr detail::FormatPair kPairs[] = {{PIVRA_FORMAT_YUV420, PIVRA_FORMAT_RGB565},
                                             {PIVRA_FORMAT_T64X32, PIVRA_FORMAT_RGB565},
                                             {PIVRA_FORMAT_YUV420, PIVRA_FORMAT_RGB888},
                                             {PIVRA_FORMAT_YUV420, PIVRA_FORMAT_YUV400},
                                             {PIVRA_FORMAT_YUV400, PIVRA_FORMAT_YUV420}};
    call(any(kPairs), {2 * pick(1, 60), 2 * pick(1, 60)}, {2 * pick(1, 60), 2 * pick(1, 60)},
         pivra_rsz_csc);
  }

  void dither() {
    const Size size = {8 * pick(1, 20), 8 * pick(1, 20)};
    call(any(detail::kDithered), size, size, pivra_csc_dither);
  }

  void filter() {
    Picture src = noisy(PIVRA_FORMAT_YUV420, {8 + side(), side()}), dst(src);
    ImageDesc picture = src.desc();
    keep(pivra_dbf8x8_yuv(&picture, static_cast<uint32_t>(pick(0, 16))), src);
    detail_enh(picture.plane[0], picture.width[0], picture.height[0], dst.bytes().data());
    keep(0, dst);
  }

  void transcode() {
    constexpr int32_t kFormats[] = {PIVRA_FORMAT_YUV420, PIVRA_FORMAT_NV12, PIVRA_FORMAT_T64X32};
    const auto turn = static_cast<Turn>(pick(0, 3));
    call({any(kFormats), PIVRA_FORMAT_NV12}, {8 * pick(1, 30), 8 * pick(1, 30)},
         {2 * pick(4, 60), 2 * pick(4, 60)}, [=](const ImageDesc *src, ImageDesc *dst) {
           Transcoder(*src, turn, *dst).run(*src, *dst);
           return 0;
         });
  }

  void pack() {
    const Size half = {side(), side()};
    const int32_t layout = pick(0, 3);
    call({PIVRA_FORMAT_RGB888, PIVRA_FORMAT_RGB888}, {2 * half.width, half.height}, half,
         [=](const ImageDesc *src, ImageDesc *dst) { return pivra_fpa(src, dst, layout); });
  }

  std::minstd_rand random_;
  uint64_t digest_ = 0;
};

TEST(Soak, MemoryStaysFlat) {
  const auto frames = [](uint32_t count) {
    for (uint32_t i = 0; i < count; ++i) Frame(i).run();
  };
  frames(kFrames / 10);
  const size_t before = PIVRA_ALLOCATED_BYTES;
  frames(kFrames);
  EXPECT_LT(PIVRA_ALLOCATED_BYTES, before + kAtHand);
}

TEST(Soak, EightThreadsMakeTheSameBytesAsOne) {
  constexpr uint32_t kThreads = 8, kEach = kFrames / 20;
  std::vector<uint64_t> alone(kThreads * kEach), together(alone);
  for (uint32_t i = 0; i < alone.size(); ++i) alone[i] = Frame(i).run();
  std::vector<std::thread> threads;
  for (uint32_t t = 0; t < kThreads; ++t)
    threads.emplace_back([&, t] {
      for (uint32_t i = t * kEach; i < (t + 1) * kEach; ++i) together[i] = Frame(i).run();
    });
  for (std::thread &thread : threads) thread.join();
  EXPECT_EQ(alone, together);
}

}  // namespace
}  // namespace pivra::test
