// The transcode context: conversion to nv12, resizing and a turn, one after the
// other through pictures that the context owns.
#include <signal.h>
#include <tcor.h>

#include "pivra.h"

namespace {

bool refused(uint32_t rotation) { return rotation > PIVRA_ROT_180; }

uint32_t larger(uint32_t a, uint32_t b) { return a > b ? a : b; }

// Bytes from the first one to the last one that rows take.
uint32_t extent(uint32_t stride, uint32_t row_bytes, uint32_t rows) {
  return rows == 0 ? 0 : (rows - 1) * stride + row_bytes;
}

// An nv12 picture without padding, luma and chroma in one block.
uint32_t nv12_bytes(uint32_t width, uint32_t height) { return width * (height + (height >> 1)); }

// Conversions write more than the picture has of tiles, which they copy whole at
// first, of chroma that was rounded up, and of luma whose tail pivra_cpy_8b copies.
uint32_t converted_bytes(const ImageDesc &src) {
  const auto width = static_cast<uint32_t>(src.width[0]);
  const auto height = static_cast<uint32_t>(src.height[0]);
  const uint32_t luma = width * height;
  constexpr uint32_t kTileWidth = 64, kTileRows = 32, kTail = 256;
  switch (src.format) {
    case PIVRA_FORMAT_T64X32: {
      const uint32_t row_bytes = larger(width, kTileWidth);
      return larger(extent(width, row_bytes, larger(height, kTileRows)),
                    luma + extent(width, row_bytes, larger(height >> 1, kTileRows)));
    }
    case PIVRA_FORMAT_YUV420: {
      const auto chroma_width = static_cast<uint32_t>(src.width[1]);
      const auto chroma_height = static_cast<uint32_t>(src.height[1]);
      return larger(luma % 16 != 0 ? kTail : 0,
                    luma + extent(width, 2 * chroma_width, chroma_height));
    }
    default:
      return 0;
  }
}

void describe_nv12(ImageDesc &image, int32_t width, int32_t height) {
  image.format = PIVRA_FORMAT_NV12;
  for (int plane = 0; plane < 2; ++plane) {
    image.width[plane] = width >> plane;
    image.height[plane] = height >> plane;
    image.stride[plane] = width;
    image.reserved[plane] = static_cast<uint32_t>(image.height[plane]);
  }
}

void allocate_nv12(ImageDesc &image, uint32_t bytes) {
  const auto stride = static_cast<uint32_t>(image.stride[0]);
  image.plane[0] = static_cast<uint8_t *>(
      tcor_malloc_align32(larger(bytes, nv12_bytes(stride, image.reserved[0]))));
  image.plane[1] = image.plane[0] + stride * image.reserved[0];
}

// Lying or standing.
bool has_size(const ImageDesc &image, int32_t longer, int32_t shorter) {
  const int32_t width = image.width[0], height = image.height[0];
  return (width == longer && height == shorter) || (width == shorter && height == longer);
}

// The quotient rounded towards zero. Every machine tells of a division by zero by the
// signal, also those that divide in software.
int64_t divide(int32_t dividend, int32_t divisor) {
  if (divisor != 0) return int64_t{dividend} / divisor;
  raise(SIGFPE);
  return 0;
}

struct Broadcast {
  int32_t longer_from, shorter_from, longer_to, shorter_to;
  pivra_txc_resizer *resizer;
};
constexpr Broadcast kBroadcasts[] = {{1920, 1080, 960, 540, pivra_txc_rsz_1080p_qhd},
                                     {1280, 720, 960, 540, pivra_txc_rsz_720p_qhd},
                                     {1920, 1080, 1280, 720, pivra_txc_rsz_1080p_720p}};

pivra_txc_resizer *choose_resizer(const ImageDesc &src, const ImageDesc &dst) {
  for (const Broadcast &sizes : kBroadcasts)
    if (has_size(src, sizes.longer_from, sizes.shorter_from) &&
        has_size(dst, sizes.longer_to, sizes.shorter_to))
      return sizes.resizer;
  const int64_t columns = divide(src.width[0], dst.width[0]);
  const int64_t rows = divide(src.height[0], dst.height[0]);
  const float shrink = static_cast<float>(src.width[0]) / static_cast<float>(dst.width[0]);
  return columns == rows && shrink > 2.0f && shrink < 8.0f ? pivra_rsz_8b_down_special : pivra_rsz;
}

bool converts(int32_t format) {
  return format == PIVRA_FORMAT_YUV420 || format == PIVRA_FORMAT_NV12 ||
         format == PIVRA_FORMAT_T64X32 || format == PIVRA_FORMAT_T16X16;
}

}  // namespace

int32_t pivra_txc_csc_rsz_rot_init(const ImageDesc *src, const ImageDesc *dst, uint32_t rotation,
                                   ImageDesc *conv, ImageDesc *rot) {
  if (refused(rotation)) return PIVRA_REFUSED;
  describe_nv12(*conv, src->width[0], src->height[0]);
  allocate_nv12(*conv, converted_bytes(*src));
  if (rotation == PIVRA_ROT_COPY) return PIVRA_OK;
  const int32_t width = dst->width[0], height = dst->height[0];
  if (rotation == PIVRA_ROT_180)
    describe_nv12(*rot, width, height);
  else
    describe_nv12(*rot, height, width);
  allocate_nv12(*rot, 0);
  return PIVRA_OK;
}

int32_t pivra_txc_csc_rsz_rot(const ImageDesc *src, ImageDesc *dst, uint32_t rotation,
                              ImageDesc *conv, ImageDesc *rot) {
  if (!converts(src->format) || dst->format != PIVRA_FORMAT_NV12 || refused(rotation))
    return PIVRA_REFUSED;
  pivra_txc_resizer *resize = choose_resizer(*src, *dst);
  const ImageDesc *picture = src;
  if (src->format != PIVRA_FORMAT_NV12) {
    ImageDesc source = *src;
    pivra_csc(&source, conv);
    picture = conv;
  }
  if (rotation == PIVRA_ROT_COPY) {
    resize(picture, dst);
  } else {
    resize(picture, rot);
    pivra_rot(rot, static_cast<int32_t>(rotation), dst);
  }
  return PIVRA_OK;
}

int32_t pivra_txc_csc_rsz_rot_deinit(uint32_t rotation, ImageDesc *conv, ImageDesc *rot) {
  if (refused(rotation)) return PIVRA_REFUSED;
  tcor_mfree_align32(conv->plane[0]);
  if (rotation != PIVRA_ROT_COPY) tcor_mfree_align32(rot->plane[0]);
  return PIVRA_OK;
}

int32_t pivra_txc_csc(void) { return PIVRA_OK; }
int32_t pivra_txc_rot(void) { return PIVRA_OK; }
