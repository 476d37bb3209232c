#include "peers.h"

#include <libyuv/convert.h>
#include <libyuv/convert_argb.h>
#include <libyuv/convert_from.h>
#include <libyuv/convert_from_argb.h>
#include <libyuv/planar_functions.h>
#include <libyuv/rotate.h>
#include <libyuv/rotate_argb.h>
#include <libyuv/scale.h>
#include <libyuv/scale_argb.h>
#include <libyuv/scale_rgb.h>

#include <algorithm>
#include <cstring>
#include <map>
#include <memory>
#include <optional>

#include "operations.h"

namespace {

using Byte = std::uint8_t;
using Planar = int(const Byte *, int, const Byte *, int, const Byte *, int, Byte *, int, int, int);
using SemiPlanar = int(const Byte *, int, const Byte *, int, Byte *, int, int, int);
using PlanarToPlanar = int(const Byte *, int, const Byte *, int, const Byte *, int, Byte *, int,
                           Byte *, int, Byte *, int, int, int);
using PlanarToSemiPlanar = int(const Byte *, int, const Byte *, int, const Byte *, int, Byte *, int,
                               Byte *, int, int, int);
using SemiPlanarToPlanar = int(const Byte *, int, const Byte *, int, Byte *, int, Byte *, int,
                               Byte *, int, int, int);
using SemiPlanarToSemiPlanar = int(const Byte *, int, const Byte *, int, Byte *, int, Byte *, int,
                                   int, int);
using Packed = int(const Byte *, int, Byte *, int, int, int);
using ToPlanar = int(const Byte *, int, Byte *, int, Byte *, int, Byte *, int, int, int);
using ToSemiPlanar = int(const Byte *, int, Byte *, int, Byte *, int, int, int);
using PlanarMatrix = int(const Byte *, int, const Byte *, int, const Byte *, int, Byte *, int,
                         const libyuv::YuvConstants *, int, int);
using SemiPlanarMatrix = int(const Byte *, int, const Byte *, int, Byte *, int,
                             const libyuv::YuvConstants *, int, int);

// `first` is the plane that the function takes for U.
Peer with(Planar *convert, int first = 1) {
  return {[=](const ImageDesc &s, const ImageDesc &d) {
    const int second = 3 - first;
    convert(s.plane[0], s.stride[0], s.plane[first], s.stride[first], s.plane[second],
            s.stride[second], d.plane[0], d.stride[0], s.width[0], s.height[0]);
  }};
}
Peer with(SemiPlanar *convert) {
  return {[=](const ImageDesc &s, const ImageDesc &d) {
    convert(s.plane[0], s.stride[0], s.plane[1], s.stride[1], d.plane[0], d.stride[0], s.width[0],
            s.height[0]);
  }};
}
Peer with(Packed *convert) {
  return {[=](const ImageDesc &s, const ImageDesc &d) {
    convert(s.plane[0], s.stride[0], d.plane[0], d.stride[0], s.width[0], s.height[0]);
  }};
}
// `first` is the plane that the function takes for U.
Peer with(ToPlanar *convert, int first = 1) {
  return {[=](const ImageDesc &s, const ImageDesc &d) {
    const int second = 3 - first;
    convert(s.plane[0], s.stride[0], d.plane[0], d.stride[0], d.plane[first], d.stride[first],
            d.plane[second], d.stride[second], s.width[0], s.height[0]);
  }};
}
Peer with(ToSemiPlanar *convert) {
  return {[=](const ImageDesc &s, const ImageDesc &d) {
    convert(s.plane[0], s.stride[0], d.plane[0], d.stride[0], d.plane[1], d.stride[1], s.width[0],
            s.height[0]);
  }};
}

// Between YUV layouts `first` is the plane of the result that the function takes for U.
Peer with(PlanarToPlanar *convert, int first = 1) {
  return {[=](const ImageDesc &s, const ImageDesc &d) {
    const int second = 3 - first;
    convert(s.plane[0], s.stride[0], s.plane[1], s.stride[1], s.plane[2], s.stride[2], d.plane[0],
            d.stride[0], d.plane[first], d.stride[first], d.plane[second], d.stride[second],
            s.width[0], s.height[0]);
  }};
}
Peer with(PlanarToSemiPlanar *convert) {
  return {[=](const ImageDesc &s, const ImageDesc &d) {
    convert(s.plane[0], s.stride[0], s.plane[1], s.stride[1], s.plane[2], s.stride[2], d.plane[0],
            d.stride[0], d.plane[1], d.stride[1], s.width[0], s.height[0]);
  }};
}
Peer with(SemiPlanarToPlanar *convert, int first = 1) {
  return {[=](const ImageDesc &s, const ImageDesc &d) {
    const int second = 3 - first;
    convert(s.plane[0], s.stride[0], s.plane[1], s.stride[1], d.plane[0], d.stride[0],
            d.plane[first], d.stride[first], d.plane[second], d.stride[second], s.width[0],
            s.height[0]);
  }};
}
Peer with(SemiPlanarToSemiPlanar *convert) {
  return {[=](const ImageDesc &s, const ImageDesc &d) {
    convert(s.plane[0], s.stride[0], s.plane[1], s.stride[1], d.plane[0], d.stride[0], d.plane[1],
            d.stride[1], s.width[0], s.height[0]);
  }};
}

// Red and blue change places with U and V exchanged and the matrix for that.
Peer with_red_and_blue_exchanged(PlanarMatrix *convert, int first = 2) {
  return {[=](const ImageDesc &s, const ImageDesc &d) {
    const int second = 3 - first;
    convert(s.plane[0], s.stride[0], s.plane[first], s.stride[first], s.plane[second],
            s.stride[second], d.plane[0], d.stride[0], &libyuv::kYvuI601Constants, s.width[0],
            s.height[0]);
  }};
}
// The pairs of the source are V, U already.
Peer with_red_and_blue_exchanged(SemiPlanarMatrix *convert) {
  return {[=](const ImageDesc &s, const ImageDesc &d) {
    convert(s.plane[0], s.stride[0], s.plane[1], s.stride[1], d.plane[0], d.stride[0],
            &libyuv::kYvuI601Constants, s.width[0], s.height[0]);
  }};
}

Peer turned(libyuv::RotationMode mode) {
  return {[=](const ImageDesc &s, const ImageDesc &d) {
    libyuv::I420Rotate(s.plane[0], s.stride[0], s.plane[1], s.stride[1], s.plane[2], s.stride[2],
                       d.plane[0], d.stride[0], d.plane[1], d.stride[1], d.plane[2], d.stride[2],
                       s.width[0], s.height[0], mode);
  }};
}
Peer turned_16(libyuv::RotationMode mode) {
  return {[=](const ImageDesc &s, const ImageDesc &d) {
    libyuv::RotatePlane_16(reinterpret_cast<const std::uint16_t *>(s.plane[0]), s.stride[0] / 2,
                           reinterpret_cast<std::uint16_t *>(d.plane[0]), d.stride[0] / 2,
                           s.width[0], s.height[0], mode);
  }};
}
Peer turned_32(libyuv::RotationMode mode) {
  return {[=](const ImageDesc &s, const ImageDesc &d) {
    libyuv::ARGBRotate(s.plane[0], s.stride[0], d.plane[0], d.stride[0], s.width[0], s.height[0],
                       mode);
  }};
}

// The box filter gives way to the bilinear one where sizes are less than halved.
constexpr libyuv::FilterMode kFilter = libyuv::kFilterBox;

void scale_yuv400(const ImageDesc &s, const ImageDesc &d) {
  libyuv::ScalePlane(s.plane[0], s.stride[0], s.width[0], s.height[0], d.plane[0], d.stride[0],
                     d.width[0], d.height[0], kFilter);
}
void scale_yuv420(const ImageDesc &s, const ImageDesc &d) {
  libyuv::I420Scale(s.plane[0], s.stride[0], s.plane[1], s.stride[1], s.plane[2], s.stride[2],
                    s.width[0], s.height[0], d.plane[0], d.stride[0], d.plane[1], d.stride[1],
                    d.plane[2], d.stride[2], d.width[0], d.height[0], kFilter);
}
void scale_rgb888(const ImageDesc &s, const ImageDesc &d) {
  libyuv::RGBScale(s.plane[0], s.stride[0], s.width[0], s.height[0], d.plane[0], d.stride[0],
                   d.width[0], d.height[0], kFilter);
}
void scale_rgba8888(const ImageDesc &s, const ImageDesc &d) {
  libyuv::ARGBScale(s.plane[0], s.stride[0], s.width[0], s.height[0], d.plane[0], d.stride[0],
                    d.width[0], d.height[0], kFilter);
}

Peer scaled_nv12(libyuv::FilterMode filter) {
  return {[=](const ImageDesc &s, const ImageDesc &d) {
    libyuv::NV12Scale(s.plane[0], s.stride[0], s.plane[1], s.stride[1], s.width[0], s.height[0],
                      d.plane[0], d.stride[0], d.plane[1], d.stride[1], d.width[0], d.height[0],
                      filter);
  }};
}

// To libyuv a picture of negative height is upside down.
Peer upside_down(const Peer &peer) {
  return {[=](ImageDesc s, const ImageDesc &d) {
    for (std::int32_t &height : s.height) height = -height;
    peer.run(s, d);
  }};
}

// The bytes of the rows of plane 0, as they are.
void copy_plane(const ImageDesc &s, const ImageDesc &d) {
  libyuv::CopyPlane(s.plane[0], s.stride[0], d.plane[0], d.stride[0], s.stride[0], s.height[0]);
}
void mirror_pairs(const ImageDesc &s, const ImageDesc &d) {
  libyuv::MirrorUVPlane(s.plane[0], s.stride[0], d.plane[0], d.stride[0], s.width[0], s.height[0]);
}

// What takes libyuv two steps, with a picture of `format` and some size between them.
Size of_result(const ImageDesc &, const ImageDesc &d) { return {d.width[0], d.height[0]}; }
Size of_result_turned(const ImageDesc &, const ImageDesc &d) { return {d.height[0], d.width[0]}; }
Size of_source(const ImageDesc &s, const ImageDesc &) { return {s.width[0], s.height[0]}; }

Peer by_way_of(std::int32_t format, Size size_of(const ImageDesc &s, const ImageDesc &d),
               const Peer &first, const Peer &second) {
  const auto between = std::make_shared<std::optional<pivra::Picture>>();
  return {[=](const ImageDesc &s, const ImageDesc &d) {
    const auto [width, height] = size_of(s, d);
    if (!*between || (*between)->width() != width || (*between)->height() != height)
      between->emplace(format, width, height);
    const ImageDesc picture = (*between)->desc();
    first.run(s, picture);
    second.run(picture, d);
  }};
}

// The rule of pivra_dit_8b, sample by sample.
void dither(const ImageDesc &s, const ImageDesc &d) {
  copy_plane(s, d);
  const std::ptrdiff_t width = s.width[0], height = s.height[0], stride = d.stride[0];
  const auto change = [](Byte &sample, int by) {
    sample = static_cast<Byte>(std::clamp(sample + by, 0, 255));
  };
  for (std::ptrdiff_t y = 1; y < height - 1; ++y) {
    Byte *row = d.plane[0] + y * stride;
    for (std::ptrdiff_t x = 2; x + 2 < width; x += 2) {
      const Byte here = row[x];
      change(row[x + 2], row[x - 1] > here ? 2 : -2);
      const int below = row[x - stride] > here ? 1 : -1;
      change(row[x + stride + 1], below);
      change(row[x + stride], below);
    }
  }
}

// The library itself, from a planar picture.
Peer from_planar() {
  const auto planar = std::make_shared<std::optional<pivra::Picture>>();
  return {[=](const ImageDesc &s, ImageDesc d) {
            if (!*planar) planar->emplace(noise({PIVRA_FORMAT_YUV420, of_source(s, d)}));
            const ImageDesc src = (*planar)->desc();
            pivra_rsz_csc(&src, &d);
          },
          "yuv420"};
}

void copy_rows(const ImageDesc &s, const ImageDesc &d) {
  const std::size_t bytes = pivra::describe(s.format, s.width[0], 1, nullptr).stride[0];
  for (std::ptrdiff_t y = 0; y < s.height[0]; ++y)
    std::memcpy(d.plane[0] + y * d.stride[0], s.plane[0] + y * s.stride[0], bytes);
}

}  // namespace

const Peer &find_peer(std::string_view kind) {
  using namespace libyuv;
  static const std::map<std::string_view, Peer> peers = {
      {"cpy_padded", {copy_rows, "memcpy"}},

      {"rot_yuv420_90l", turned(kRotate270)},
      {"rot_yuv420_90r", turned(kRotate90)},
      {"rot_yuv420_180", turned(kRotate180)},
      {"rot_yuv420_hori", with(I420Mirror)},
      {"rot_yuv420_vert", upside_down(with(I420Copy))},
      {"rot_nv12_180", upside_down(with(NV12Mirror))},
      {"rot_nv12_hori", with(NV12Mirror)},
      {"rot_nv12_vert", upside_down(with(NV12Copy))},
      {"rot_rgb565_90l", turned_16(kRotate270)},
      {"rot_rgb565_90r", turned_16(kRotate90)},
      {"rot_rgb565_180", turned_16(kRotate180)},
      {"rot_rgb565_hori", {mirror_pairs}},
      {"rot_rgb565_vert", upside_down({copy_plane})},
      {"rot_rgb888_180", upside_down(with(RGB24Mirror))},
      {"rot_rgb888_hori", with(RGB24Mirror)},
      {"rot_rgb888_vert", upside_down({copy_plane})},
      {"csc_rot_yuv422n_to_yuv420_90l",
       by_way_of(PIVRA_FORMAT_YUV420, of_source, with(I422ToI420), turned(kRotate270))},
      {"csc_rot_yuv422n_to_yuv420_90r",
       by_way_of(PIVRA_FORMAT_YUV420, of_source, with(I422ToI420), turned(kRotate90))},
      {"csc_rot_yuyv_to_bgra8888_90l",
       by_way_of(PIVRA_FORMAT_BGRA8888, of_source, with(YUY2ToARGB), turned_32(kRotate270))},
      {"csc_rot_yuyv_to_bgra8888_90r",
       by_way_of(PIVRA_FORMAT_BGRA8888, of_source, with(YUY2ToARGB), turned_32(kRotate90))},
      {"csc_rot_yuyv_to_bgra8888_180",
       by_way_of(PIVRA_FORMAT_BGRA8888, of_source, with(YUY2ToARGB), turned_32(kRotate180))},

      {"txc", scaled_nv12(kFilterNone)},

      {"dit_8b", {dither, "scalar"}},

      {"rsz_yuv400", {scale_yuv400}},
      {"rsz_yuv420", {scale_yuv420}},
      {"rsz_nv12", scaled_nv12(kFilter)},
      {"rsz_rgb888", {scale_rgb888}},
      {"rsz_rgba8888", {scale_rgba8888}},
      {"rsz_special_nv12", scaled_nv12(kFilter)},
      {"rsz_rot_yuv420_90l",
       by_way_of(PIVRA_FORMAT_YUV420, of_result_turned, {scale_yuv420}, turned(kRotate270))},
      {"rsz_rot_yuv420_90r",
       by_way_of(PIVRA_FORMAT_YUV420, of_result_turned, {scale_yuv420}, turned(kRotate90))},
      {"rsz_rot_yuv420_180",
       by_way_of(PIVRA_FORMAT_YUV420, of_result, {scale_yuv420}, turned(kRotate180))},

      {"transcode_yuv420_90l",
       by_way_of(PIVRA_FORMAT_YUV420, of_result_turned, {scale_yuv420},
                 by_way_of(PIVRA_FORMAT_YUV420, of_result, turned(kRotate270), with(I420ToNV12)))},

      {"rsz_csc_yuv420_to_rgb565",
       by_way_of(PIVRA_FORMAT_YUV420, of_result, {scale_yuv420}, with(I420ToRGB565))},
      {"rsz_csc_yuv420_to_rgb888",
       by_way_of(PIVRA_FORMAT_YUV420, of_result, {scale_yuv420}, with(I420ToRAW))},
      {"rsz_csc_t64x32_to_rgb565", from_planar()},

      {"yuv420_to_rgb565", with(I420ToRGB565)},
      {"yuv420_to_bgr565", with_red_and_blue_exchanged(I420ToRGB565Matrix)},
      {"yuv420_to_rgb888", with(I420ToRAW)},
      {"yuv420_to_bgr888", with(I420ToRGB24)},
      {"yuv420_to_rgba8888", with(I420ToABGR)},
      {"yuv420_to_bgra8888", with(I420ToARGB)},
      {"yuv420_to_argb8888", with(I420ToBGRA)},
      {"yuv420_to_abgr8888", with(I420ToRGBA)},
      {"yv12_to_rgb565", with(I420ToRGB565, 2)},
      {"yv12_to_bgr565", with_red_and_blue_exchanged(I420ToRGB565Matrix, 1)},
      {"yv12_to_rgb888", with(I420ToRAW, 2)},
      {"yv12_to_bgr888", with(I420ToRGB24, 2)},
      {"yv12_to_rgba8888", with(I420ToABGR, 2)},
      {"yv12_to_bgra8888", with(I420ToARGB, 2)},
      {"yv12_to_argb8888", with(I420ToBGRA, 2)},
      {"yv12_to_abgr8888", with(I420ToRGBA, 2)},
      {"yuv422n_to_rgb565", with(I422ToRGB565)},
      {"yuv422n_to_bgr565", with_red_and_blue_exchanged(I422ToRGB565Matrix)},
      {"yuv422n_to_rgb888", with(I422ToRAW)},
      {"yuv422n_to_bgr888", with(I422ToRGB24)},
      {"yuv422n_to_rgba8888", with(I422ToABGR)},
      {"yuv422n_to_bgra8888", with(I422ToARGB)},
      {"yuv422n_to_argb8888", with(I422ToBGRA)},
      {"yuv422n_to_abgr8888", with(I422ToRGBA)},
      {"yuv444_to_rgb888", with(I444ToRAW)},
      {"yuv444_to_bgr888", with(I444ToRGB24)},
      {"yuv444_to_rgba8888", with(I444ToABGR)},
      {"yuv444_to_bgra8888", with(I444ToARGB)},
      {"nv12_to_rgb565", with(NV12ToRGB565)},
      {"nv12_to_rgb888", with(NV12ToRAW)},
      {"nv12_to_bgr888", with(NV12ToRGB24)},
      {"nv12_to_rgba8888", with(NV12ToABGR)},
      {"nv12_to_bgra8888", with(NV12ToARGB)},
      {"nv21_to_bgr565", with_red_and_blue_exchanged(NV12ToRGB565Matrix)},
      {"nv21_to_rgb888", with(NV21ToRAW)},
      {"nv21_to_bgr888", with(NV21ToRGB24)},
      {"nv21_to_rgba8888", with(NV21ToABGR)},
      {"nv21_to_bgra8888", with(NV21ToARGB)},
      {"yuyv_to_bgra8888", with(YUY2ToARGB)},
      {"uyvy_to_bgra8888", with(UYVYToARGB)},
      {"yuv420_to_yv12", with(I420Copy, 2)},
      {"yuv420_to_yuv422n", with(I420ToI422)},
      {"yuv420_to_nv12", with(I420ToNV12)},
      {"yuv420_to_nv21", with(I420ToNV21)},
      {"yuv422n_to_yuv420", with(I422ToI420)},
      {"yuv422n_to_yv12", with(I422ToI420, 2)},
      {"yv16_to_yuv420", with(I422ToI420, 2)},
      {"yv16_to_yv12", with(I422ToI420)},
      {"nv12_to_yuv420", with(NV12ToI420)},
      {"nv12_to_yv12", with(NV12ToI420, 2)},
      {"nv21_to_yuv420", with(NV21ToI420)},
      {"nv21_to_yv12", with(NV21ToI420, 2)},
      {"nv21_to_nv12", with(NV21ToNV12)},
      {"rgb565_to_yuv420", with(RGB565ToI420)},
      {"rgb888_to_yuv420", with(RAWToI420)},
      {"bgr888_to_yuv420", with(RGB24ToI420)},
      {"rgba8888_to_yuv420", with(ABGRToI420)},
      {"bgra8888_to_yuv420", with(ARGBToI420)},
      {"argb8888_to_yuv420", with(BGRAToI420)},
      {"abgr8888_to_yuv420", with(RGBAToI420)},
      {"rgb565_to_yv12", with(RGB565ToI420, 2)},
      {"rgb888_to_yv12", with(RAWToI420, 2)},
      {"bgr888_to_yv12", with(RGB24ToI420, 2)},
      {"rgba8888_to_yv12", with(ABGRToI420, 2)},
      {"bgra8888_to_yv12", with(ARGBToI420, 2)},
      {"argb8888_to_yv12", with(BGRAToI420, 2)},
      {"abgr8888_to_yv12", with(RGBAToI420, 2)},
      {"bgra8888_to_nv12", with(ARGBToNV12)},
      {"rgba8888_to_nv12", with(ABGRToNV12)},
      {"bgra8888_to_nv21", with(ARGBToNV21)},
      {"rgba8888_to_nv21", with(ABGRToNV21)},
  };
  static const Peer none;
  const auto found = peers.find(kind);
  return found == peers.end() ? none : found->second;
}
