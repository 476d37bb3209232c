#include <setjmp.h>
#include <signal.h>
#include <tcor.h>

#include <array>
#include <cstring>
#include <map>
#include <memory>

#include "compare.h"

using pivra::test::GuardedPlane;
using pivra::test::random_in;

// In place of libtcor's, so that what the context allocates can be looked at: the
// block ends at an inaccessible page, less what its alignment takes.
namespace {
std::map<void *, std::pair<uint32_t, std::unique_ptr<GuardedPlane>>> allocated;
}
void *tcor_malloc_align32(uint32_t size) {
  auto plane = std::make_unique<GuardedPlane>();
  void *block = plane->place(pivra::test::noise((size + 31) / 32 * 32), true);
  allocated[block] = {size, std::move(plane)};
  return block;
}
void tcor_mfree_align32(void *block) { EXPECT_EQ(allocated.erase(block), 1u); }

namespace {

// With slack for tiles and for what the tails of copies read.
struct Picture : pivra::test::NoisyPicture {
  Picture(int32_t format, int32_t width, int32_t height)
      : NoisyPicture(format, width, height, 0, size_t(128 * (width + height)) + 16384) {}
};

// The picture in between, told by its words.
ImageDesc in_between(int32_t width, int32_t height, uint8_t *block) {
  ImageDesc image;
  std::memset(&image, 0xA5, sizeof image);
  image.width[0] = image.stride[0] = image.stride[1] = width;
  image.width[1] = width >> 1;
  image.height[0] = height;
  image.height[1] = height >> 1;
  image.reserved[0] = static_cast<uint32_t>(height);
  image.reserved[1] = static_cast<uint32_t>(height >> 1);
  image.format = PIVRA_FORMAT_NV12;
  image.plane[0] = block;
  image.plane[1] = block + width * height;
  return image;
}

struct Stream {
  Stream() {
    std::memset(&conv, 0xA5, sizeof conv);
    std::memset(&rot, 0xA5, sizeof rot);
  }
  int32_t init(const ImageDesc &src, const ImageDesc &dst, uint32_t rotation) {
    return pivra_txc_csc_rsz_rot_init(&src, &dst, rotation, &conv, &rot);
  }
  int32_t run(const ImageDesc &src, ImageDesc &dst, uint32_t rotation) {
    return pivra_txc_csc_rsz_rot(&src, &dst, rotation, &conv, &rot);
  }
  int32_t deinit(uint32_t rotation) { return pivra_txc_csc_rsz_rot_deinit(rotation, &conv, &rot); }

  ImageDesc conv, rot;
};

bool same(const ImageDesc &a, const ImageDesc &b) { return std::memcmp(&a, &b, sizeof a) == 0; }

constexpr int32_t kSources[] = {PIVRA_FORMAT_YUV420, PIVRA_FORMAT_NV12, PIVRA_FORMAT_T64X32,
                                PIVRA_FORMAT_T16X16};

TEST(Transcode, RefusesRotationsAndFormats) {
  Picture src(PIVRA_FORMAT_NV12, 64, 64), dst(PIVRA_FORMAT_NV12, 32, 32);
  Stream stream, untouched;
  for (uint32_t rotation : {4u, 5u, ~0u}) {
    EXPECT_EQ(stream.init(src.desc, dst.desc, rotation), PIVRA_REFUSED);
    EXPECT_EQ(stream.deinit(rotation), PIVRA_REFUSED);
    EXPECT_EQ(stream.run(src.desc, dst.desc, rotation), PIVRA_REFUSED);
  }
  EXPECT_TRUE(same(stream.conv, untouched.conv) && same(stream.rot, untouched.rot));
  ASSERT_EQ(stream.init(src.desc, dst.desc, 0), PIVRA_OK);
  for (int32_t format = -1; format < 600; ++format) {
    ImageDesc other = src.desc;
    other.format = format;
    const bool source = std::ranges::count(kSources, format) != 0;
    ASSERT_TRUE(source || stream.run(other, dst.desc, 0) == PIVRA_REFUSED) << format;
    const bool destination = format == PIVRA_FORMAT_NV12;
    ASSERT_TRUE(destination || stream.run(src.desc, other, 0) == PIVRA_REFUSED) << format;
  }
  EXPECT_EQ(dst.now(), dst.before);
  stream.deinit(0);
}

TEST(Transcode, ReservedNamesDoNothing) {
  EXPECT_EQ(pivra_txc_csc(), 0);
  EXPECT_EQ(pivra_txc_rot(), 0);
}

// --- The stages, called one by one ---

struct Job {
  int32_t src_width, src_height, dst_width, dst_height;
  pivra_txc_resizer *resizer;
};

void expect_stages(const Job &job, int32_t format, uint32_t rotation) {
  const auto &[sw, sh, dw, dh, resizer] = job;
  SCOPED_TRACE(testing::Message() << sw << "x" << sh << " to " << dw << "x" << dh << ", format "
                                  << format << ", rotation " << rotation);
  const bool converts = format != PIVRA_FORMAT_NV12, turns = rotation != 0;
  Picture src(format, sw, sh), dst(PIVRA_FORMAT_NV12, dw, dh), expected(PIVRA_FORMAT_NV12, dw, dh);
  expected.become(dst);
  Stream stream;
  const ImageDesc untouched = stream.rot;
  ASSERT_EQ(stream.init(src.desc, dst.desc, rotation), PIVRA_OK);

  // The same memory in between, so that what no stage writes is alike.
  ASSERT_EQ(allocated.size(), turns ? 2u : 1u);
  std::array<std::vector<uint8_t>, 2> blocks;
  const auto same_as = [&](const ImageDesc &image, int32_t width, int32_t height) {
    EXPECT_TRUE(same(image, in_between(width, height, image.plane[0])));
    const auto &[size, plane] = allocated.at(image.plane[0]);
    const auto needed = static_cast<uint32_t>(width * (height + (height >> 1)));
    EXPECT_TRUE(size == needed || (converts && &image == &stream.conv && size > needed));
    std::vector<uint8_t> &block = blocks[&image == &stream.rot];
    block = plane->content();
    return in_between(width, height, block.data());
  };
  ImageDesc conv = same_as(stream.conv, sw, sh), rot = untouched;
  if (turns) rot = rotation == 3 ? same_as(stream.rot, dw, dh) : same_as(stream.rot, dh, dw);
  EXPECT_TRUE(turns || same(stream.rot, untouched));

  ASSERT_EQ(stream.run(src.desc, dst.desc, rotation), PIVRA_OK);
  if (converts) pivra_csc(&src.desc, &conv);
  resizer(converts ? &conv : &src.desc, turns ? &rot : &expected.desc);
  if (turns) pivra_rot(&rot, static_cast<int32_t>(rotation), &expected.desc);
  EXPECT_EQ(dst.now(), expected.now());
  EXPECT_EQ(stream.deinit(rotation), PIVRA_OK);
  EXPECT_TRUE(allocated.empty());
}

TEST(Transcode, ChoosesTheResizerByTheSizes) {
  // As they lie; where the picture that is resized stands, so does the source.
  const Job jobs[] = {
      {1920, 1080, 960, 540, pivra_txc_rsz_1080p_qhd},
      {1280, 720, 960, 540, pivra_txc_rsz_720p_qhd},
      {1920, 1080, 1280, 720, pivra_txc_rsz_1080p_720p},
      {720, 1280, 540, 960, pivra_txc_rsz_720p_qhd},
      {1080, 1920, 720, 1280, pivra_txc_rsz_1080p_720p},
      {1920, 1088, 960, 544, pivra_rsz},
      {1280, 720, 1280, 720, pivra_rsz},
      {640, 480, 960, 540, pivra_rsz},
      {640, 480, 1280, 720, pivra_rsz},
      {1920, 1080, 640, 360, pivra_rsz_8b_down_special},
      {1280, 720, 320, 180, pivra_rsz_8b_down_special},
      {640, 360, 300, 170, pivra_rsz_8b_down_special},
      {640, 360, 300, 100, pivra_rsz},
      {640, 360, 80, 45, pivra_rsz},
  };
  for (const Job &job : jobs) {
    expect_stages(job, PIVRA_FORMAT_NV12, 0);
    expect_stages(job, PIVRA_FORMAT_NV12, 3);
  }
  expect_stages({1080, 1920, 960, 540, pivra_txc_rsz_1080p_qhd}, PIVRA_FORMAT_NV12, 1);
  expect_stages({1920, 1080, 540, 960, pivra_txc_rsz_1080p_qhd}, PIVRA_FORMAT_NV12, 2);
  expect_stages({1920, 1080, 720, 1280, pivra_txc_rsz_1080p_720p}, PIVRA_FORMAT_NV12, 1);
}

// Without chroma a frame is refused by the resizer, which keeps its scratch then.
TEST(Transcode, RunsEveryStageAtRandomSizes) {
  for (int round = 0; round < 300 && !testing::Test::HasFailure(); ++round) {
    const Job job = {2 * random_in(4, 80), 2 * random_in(4, 80), random_in(2, 160),
                     random_in(2, 160), nullptr};
    const int32_t rows = job.src_height / job.dst_height, columns = job.src_width / job.dst_width;
    const float shrink = float(job.src_width) / float(job.dst_width);
    const bool special = rows == columns && shrink > 2 && shrink < 8;
    expect_stages({job.src_width, job.src_height, job.dst_width, job.dst_height,
                   special ? pivra_rsz_8b_down_special : pivra_rsz},
                  kSources[random_in(0, 3)], static_cast<uint32_t>(random_in(0, 3)));
  }
}

// --- Division by zero ---

sigjmp_buf after_signal;
void leave(int) { siglongjmp(after_signal, 1); }

bool raises_sigfpe(Stream &stream, const ImageDesc &src, ImageDesc &dst) {
  if (sigsetjmp(after_signal, 1) != 0) return true;
  signal(SIGFPE, leave);
  stream.run(src, dst, 0);
  return false;
}

TEST(Transcode, DividesByZeroBeforeAnythingIsConverted) {
  Picture src(PIVRA_FORMAT_YUV420, 64, 64), dst(PIVRA_FORMAT_NV12, 32, 32);
  Stream stream;
  ASSERT_EQ(stream.init(src.desc, dst.desc, 0), PIVRA_OK);
  const GuardedPlane &block = *allocated.at(stream.conv.plane[0]).second;
  const std::vector<uint8_t> before = block.content();
  for (const auto &[w, h] : {std::pair{0, 32}, {32, 0}, {0, 0}}) {
    dst.desc.width[0] = w;
    dst.desc.height[0] = h;
    EXPECT_EXIT((signal(SIGFPE, SIG_DFL), stream.run(src.desc, dst.desc, 0)),
                testing::KilledBySignal(SIGFPE), "");
    EXPECT_TRUE(raises_sigfpe(stream, src.desc, dst.desc));
    signal(SIGFPE, SIG_DFL);
    EXPECT_EQ(block.content(), before);
  }
  dst.desc.format = PIVRA_FORMAT_NV21;
  EXPECT_EQ(stream.run(src.desc, dst.desc, 0), PIVRA_REFUSED);
  stream.deinit(0);
}

}  // namespace
