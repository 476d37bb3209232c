/**
 * @file pivra.hpp
 * @brief C++20 layer over pivra.h: formats by name, pictures, checked operations.
 *
 * Header-only; needs the standard library and libpivra. Where the C entry points
 * trust their caller, these functions check first and throw std::invalid_argument
 * with one sentence that says what is wrong.
 *
 * @code
 * pivra::Picture frame(PIVRA_FORMAT_NV12, 1280, 720), shown(PIVRA_FORMAT_RGB565, 1280, 720);
 * std::ranges::copy(decoded, frame.bytes().begin());
 * pivra::convert(frame.desc(), shown.desc());
 * @endcode
 */
#ifndef PIVRA_HPP
#define PIVRA_HPP

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <limits>
#include <new>
#include <optional>
#include <span>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

#include "pivra.h"

/** The C++ layer. */
namespace pivra {

/** The smallest width and height that convert() takes, in pixels. */
inline constexpr std::int32_t kMinimumSize = 8;

/* ------------------------------------------------------------------------ */
/* Formats                                                                  */
/* ------------------------------------------------------------------------ */

/**
 * How one plane follows from the size of the picture: ceil(w / 2^width_shift) x
 * ceil(h / 2^height_shift) elements. An element is a sample, a pair of interleaved
 * chroma, a pixel, or two packed pixels.
 *
 * Memory holds whole blocks of block_columns x block_rows elements, `bytes` bytes
 * each: an element by itself in linear formats, and what tiles make necessary in
 * tiled ones.
 */
struct PlaneShape {
  std::int32_t width_shift;       /**< Halvings of the width. */
  std::int32_t height_shift;      /**< Halvings of the height. */
  std::int32_t bytes;             /**< Of a block. */
  std::int32_t block_columns = 1; /**< Elements side by side in a block. */
  std::int32_t block_rows = 1;    /**< Rows of elements in a block. */

  /** Elements in a row of a picture `width` pixels wide. */
  constexpr std::int32_t columns(std::int32_t width) const {
    return quotient(width, 1 << width_shift);
  }
  /** Rows of the plane in a picture `height` pixels high. */
  constexpr std::int32_t rows(std::int32_t height) const {
    return quotient(height, 1 << height_shift);
  }
  /** Bytes in a row of blocks, without padding. */
  constexpr std::int64_t row_bytes(std::int32_t width) const {
    return std::int64_t{quotient(columns(width), block_columns)} * bytes;
  }
  /** Rows of blocks: those of the plane, in linear formats. */
  constexpr std::int32_t block_count(std::int32_t height) const {
    return quotient(rows(height), block_rows);
  }

 private:
  static constexpr std::int32_t quotient(std::int32_t size, std::int32_t divisor) {
    return static_cast<std::int32_t>((std::int64_t{size} + divisor - 1) / divisor);
  }
};

/** What is known about a format. */
struct FormatInfo {
  std::int32_t code;                  /**< One of PIVRA_FORMAT_... */
  std::string_view name;              /**< As in pivra.h, in lower case. */
  std::span<const PlaneShape> planes; /**< How they follow from the size. */
  // The same layout elsewhere, empty if it has no name there: layout only, not range or matrix.
  std::string_view ffmpeg;    /**< In FFmpeg. */
  std::string_view gstreamer; /**< In GStreamer. */
  std::string_view v4l2;      /**< In V4L2, behind V4L2_PIX_FMT_. */
  std::string_view drm;       /**< In DRM, behind DRM_FORMAT_; bytes of RGB from last to first. */
  // The largest size that the layout holds.
  std::int32_t max_width = std::numeric_limits<std::int32_t>::max();  /**< In pixels. */
  std::int32_t max_height = std::numeric_limits<std::int32_t>::max(); /**< In rows. */

  /** Whether the samples lie in rows, which have strides, and not in tiles. */
  constexpr bool linear() const { return planes[0].block_rows == 1; }
  /** Whether the samples are red, green and blue. */
  constexpr bool rgb() const { return code >= 200; }
};

namespace detail {

inline constexpr PlaneShape kGrey[] = {{0, 0, 1}};
inline constexpr PlaneShape kPlanar420[] = {{0, 0, 1}, {1, 1, 1}, {1, 1, 1}};
inline constexpr PlaneShape kPlanar422[] = {{0, 0, 1}, {1, 0, 1}, {1, 0, 1}};
inline constexpr PlaneShape kPlanar440[] = {{0, 0, 1}, {0, 1, 1}, {0, 1, 1}};
inline constexpr PlaneShape kPlanar444[] = {{0, 0, 1}, {0, 0, 1}, {0, 0, 1}};
inline constexpr PlaneShape kSemiPlanar420[] = {{0, 0, 1}, {1, 1, 2}};
inline constexpr PlaneShape kPacked422[] = {{1, 0, 4}};
inline constexpr PlaneShape kPixels16[] = {{0, 0, 2}};
inline constexpr PlaneShape kPixels24[] = {{0, 0, 3}};
inline constexpr PlaneShape kPixels32[] = {{0, 0, 4}};
// A tile, two of them where tiles come in groups, or a row of them as long as it always is.
inline constexpr PlaneShape kTiles64x32[] = {{0, 0, 4096, 128, 32}, {1, 1, 4096, 64, 32}};
inline constexpr PlaneShape kTiles16x16[] = {{0, 0, 256, 16, 16}, {1, 1, 128, 8, 8}};
inline constexpr PlaneShape kTiles256x16[] = {{0, 0, 32768, 2048, 16}, {1, 1, 32768, 1024, 16}};
// The chroma of all tiles follows their luma in the one plane.
inline constexpr PlaneShape kTiles8x8[] = {{0, 0, 256 + 128, 16, 16}};

// Sizes and strides of the 64x32 layout are 16-bit numbers, and even.
inline constexpr std::int32_t kMax64x32 = 32766;

inline constexpr FormatInfo kFormats[] = {
    {PIVRA_FORMAT_YUV400, "yuv400", kGrey, "gray", "GRAY8", "GREY", ""},
    {PIVRA_FORMAT_YUV420, "yuv420", kPlanar420, "yuv420p", "I420", "YUV420", "YUV420"},
    {PIVRA_FORMAT_YUV422N, "yuv422n", kPlanar422, "yuv422p", "Y42B", "YUV422P", "YUV422"},
    {PIVRA_FORMAT_YUV444, "yuv444", kPlanar444, "yuv444p", "Y444", "YUV444M", "YUV444"},
    {PIVRA_FORMAT_YV12, "yv12", kPlanar420, "", "YV12", "YVU420", "YVU420"},
    {PIVRA_FORMAT_YV16, "yv16", kPlanar422, "", "", "YVU422M", "YVU422"},
    {PIVRA_FORMAT_NV12, "nv12", kSemiPlanar420, "nv12", "NV12", "NV12", "NV12"},
    {PIVRA_FORMAT_NV21, "nv21", kSemiPlanar420, "nv21", "NV21", "NV21", "NV21"},
    {PIVRA_FORMAT_YUV422W, "yuv422w", kPlanar440, "yuv440p", "", "", ""},
    {PIVRA_FORMAT_T64X32, "t64x32", kTiles64x32, "", "NV12_64Z32", "NV12MT", "", kMax64x32,
     kMax64x32},
    {PIVRA_FORMAT_T16X16, "t16x16", kTiles16x16, "", "", "", ""},
    {PIVRA_FORMAT_T8X8, "t8x8", kTiles8x8, "", "", "", ""},
    {PIVRA_FORMAT_T256X16, "t256x16", kTiles256x16, "", "", "", "", 2048},
    {PIVRA_FORMAT_UYVY, "uyvy", kPacked422, "uyvy422", "UYVY", "UYVY", "UYVY"},
    {PIVRA_FORMAT_YUYV, "yuyv", kPacked422, "yuyv422", "YUY2", "YUYV", "YUYV"},
    {PIVRA_FORMAT_RGB565, "rgb565", kPixels16, "rgb565le", "RGB16", "RGB565", "RGB565"},
    {PIVRA_FORMAT_BGR565, "bgr565", kPixels16, "bgr565le", "BGR16", "", "BGR565"},
    {PIVRA_FORMAT_RGB888, "rgb888", kPixels24, "rgb24", "RGB", "RGB24", "BGR888"},
    {PIVRA_FORMAT_BGR888, "bgr888", kPixels24, "bgr24", "BGR", "BGR24", "RGB888"},
    {PIVRA_FORMAT_RGBA8888, "rgba8888", kPixels32, "rgba", "RGBA", "RGBA32", "ABGR8888"},
    {PIVRA_FORMAT_BGRA8888, "bgra8888", kPixels32, "bgra", "BGRA", "ABGR32", "ARGB8888"},
    {PIVRA_FORMAT_ARGB8888, "argb8888", kPixels32, "argb", "ARGB", "ARGB32", "BGRA8888"},
    {PIVRA_FORMAT_ABGR8888, "abgr8888", kPixels32, "abgr", "ABGR", "BGRA32", "RGBA8888"},
};

struct FormatPair {
  std::int32_t from, to;
  constexpr bool operator==(const FormatPair &) const = default;
};

#define PIVRA_FORMAT_PAIR(SOURCE, source, DESTINATION, destination) \
  {PIVRA_FORMAT_##SOURCE, PIVRA_FORMAT_##DESTINATION},
inline constexpr FormatPair kPairs[] = {PIVRA_CSC_PAIRS(PIVRA_FORMAT_PAIR)};
#undef PIVRA_FORMAT_PAIR

constexpr bool equal_but_for_case(std::string_view a, std::string_view b) {
  constexpr auto lower = [](char c) {
    return 'A' <= c && c <= 'Z' ? static_cast<char>(c + 'a' - 'A') : c;
  };
  return std::ranges::equal(a, b, {}, lower, lower);
}

// The one format that `matches` one of its names, or null if there is none or several.
template <class Matches>
constexpr const FormatInfo *find_unique(Matches matches) {
  const FormatInfo *found = nullptr;
  for (const FormatInfo &info : kFormats) {
    if (!matches(info.name) && !matches(info.ffmpeg) && !matches(info.gstreamer)) continue;
    if (found) return nullptr;
    found = &info;
  }
  return found;
}

}  // namespace detail

/** Every format of pivra.h, in the order of the codes. */
constexpr std::span<const FormatInfo> formats() { return detail::kFormats; }

/** The format of a code, or null. */
constexpr const FormatInfo *find_format(std::int32_t code) {
  const auto *found = std::ranges::find(detail::kFormats, code, &FormatInfo::code);
  return found == std::end(detail::kFormats) ? nullptr : found;
}

/**
 * The format of a name, of this library or elsewhere, or null. Upper and lower
 * case count, unless only one format answers to the name without them.
 */
constexpr const FormatInfo *find_format(std::string_view name_or_alias) {
  if (name_or_alias.empty()) return nullptr;
  const auto *found =
      detail::find_unique([&](std::string_view name) { return name == name_or_alias; });
  return found ? found : detail::find_unique([&](std::string_view name) {
    return detail::equal_but_for_case(name, name_or_alias);
  });
}

/** Whether convert() takes pictures of the one format to the other. */
constexpr bool converts(std::int32_t from, std::int32_t to) {
  return std::ranges::count(detail::kPairs, detail::FormatPair{from, to}) != 0;
}

/* ------------------------------------------------------------------------ */
/* Sizes and descriptors                                                    */
/* ------------------------------------------------------------------------ */

namespace detail {

[[noreturn]] inline void refuse(const std::string &why) { throw std::invalid_argument(why); }

inline std::string size_text(std::int32_t width, std::int32_t height) {
  return std::to_string(width) + "x" + std::to_string(height);
}

inline void require_size(std::int32_t width, std::int32_t height, std::int32_t minimum) {
  if (width >= minimum && height >= minimum) return;
  refuse("the size " + size_text(width, height) + " is below " + size_text(minimum, minimum));
}

// The format of a picture, which must be able to have that size.
inline const FormatInfo &format_of(std::int32_t code, std::int32_t width, std::int32_t height) {
  const FormatInfo *info = find_format(code);
  if (!info) refuse("unknown format code " + std::to_string(code));
  require_size(width, height, 1);
  if (width > info->max_width || height > info->max_height) {
    refuse("the size " + size_text(width, height) + " is too large for " + std::string(info->name));
  }
  return *info;
}

// Bytes from a row to the next, or in tiled formats from a row of blocks to the next.
inline std::int64_t pitch(const PlaneShape &shape, std::int32_t width, std::int32_t alignment) {
  if (shape.block_rows > 1) return shape.row_bytes(width);
  return (shape.row_bytes(width) + alignment - 1) / alignment * alignment;
}

}  // namespace detail

/**
 * A descriptor of a picture whose planes lie one behind the other.
 *
 * @param format         one of PIVRA_FORMAT_..., but no tiled one.
 * @param width, height  of the picture in pixels, from 1 up; chroma sizes are
 *                       rounded up.
 * @param pixels         size_in_bytes() of the same arguments, or null to learn
 *                       the strides only.
 * @param alignment      every stride is rounded up to a multiple of it, in bytes.
 *                       Tiled planes have no strides.
 * @throws std::invalid_argument  if the format is unknown, the size or the
 *                       alignment is not positive, the format does not hold
 *                       the size, or a stride exceeds 2^31 - 1.
 */
inline ImageDesc describe(std::int32_t format, std::int32_t width, std::int32_t height,
                          std::uint8_t *pixels, std::int32_t alignment = 1) {
  const FormatInfo &info = detail::format_of(format, width, height);
  if (alignment < 1) detail::refuse("the alignment " + std::to_string(alignment) + " is below 1");

  ImageDesc desc = {};
  desc.format = format;
  for (std::size_t p = 0; p < info.planes.size(); ++p) {
    const PlaneShape &shape = info.planes[p];
    const std::int64_t pitch = detail::pitch(shape, width, alignment);
    if (pitch > std::numeric_limits<std::int32_t>::max()) {
      detail::refuse("the width " + std::to_string(width) + " is too large for " +
                     std::string(info.name));
    }
    // Plane 0 counts pixels, also where two of them are packed in one element.
    desc.width[p] = p == 0 ? width : shape.columns(width);
    desc.height[p] = shape.rows(height);
    desc.stride[p] = info.linear() ? static_cast<std::int32_t>(pitch) : 0;
    desc.plane[p] = pixels;
    if (pixels) pixels += static_cast<std::ptrdiff_t>(pitch) * shape.block_count(height);
  }
  return desc;
}

/**
 * Bytes of a picture as describe() lays it out.
 * @throws std::invalid_argument  as describe(), and if memory cannot hold the picture.
 */
inline std::size_t size_in_bytes(std::int32_t format, std::int32_t width, std::int32_t height,
                                 std::int32_t alignment = 1) {
  describe(format, width, height, nullptr, alignment);
  std::uint64_t size = 0;  // at most three products of two 31-bit numbers
  for (const PlaneShape &shape : find_format(format)->planes) {
    size += std::uint64_t(detail::pitch(shape, width, alignment)) *
            std::uint64_t(shape.block_count(height));
  }
  if (size > std::uint64_t(std::numeric_limits<std::ptrdiff_t>::max())) {
    detail::refuse("the size " + detail::size_text(width, height) + " is too large for memory");
  }
  return static_cast<std::size_t>(size);
}

/**
 * Checks that a descriptor describes a picture: a known format, a size that it
 * holds, and for each plane a pointer, a size of at least what the luma size asks
 * for and, if it is linear, a stride of at least a row. Padding and odd strides
 * are fine.
 * @throws std::invalid_argument  with a sentence that names the first fault.
 */
inline void check(const ImageDesc &desc) {
  const std::int32_t width = desc.width[0], height = desc.height[0];
  const FormatInfo &info = detail::format_of(desc.format, width, height);
  for (std::size_t p = 0; p < info.planes.size(); ++p) {
    const PlaneShape &shape = info.planes[p];
    const std::string plane = "plane " + std::to_string(p) + " of " + std::string(info.name);
    if (!desc.plane[p]) detail::refuse(plane + " is null");
    if (p > 0 && (desc.width[p] < shape.columns(width) || desc.height[p] < shape.rows(height))) {
      detail::refuse(plane + " is " + detail::size_text(desc.width[p], desc.height[p]) + ", but " +
                     detail::size_text(width, height) + " pixels take " +
                     detail::size_text(shape.columns(width), shape.rows(height)));
    }
    if (info.linear() && desc.stride[p] < shape.row_bytes(width)) {
      detail::refuse(plane + " has a stride of " + std::to_string(desc.stride[p]) +
                     " bytes, but a row takes " + std::to_string(shape.row_bytes(width)));
    }
  }
}

namespace detail {

/** Starts memory at a cache line, where stores of whole lines are fastest. */
template <class T>
struct CacheLineAllocator {
  using value_type = T;
  static constexpr std::align_val_t kLine{64};

  CacheLineAllocator() = default;
  template <class U>
  CacheLineAllocator(const CacheLineAllocator<U> &) {}

  T *allocate(std::size_t n) { return static_cast<T *>(::operator new(n * sizeof(T), kLine)); }
  void deallocate(T *p, std::size_t) { ::operator delete(p, kLine); }
  bool operator==(const CacheLineAllocator &) const = default;
};

}  // namespace detail

/**
 * A picture that owns its bytes, zero at first, laid out as by describe(). The
 * first byte lies at a multiple of 64.
 */
class Picture {
 public:
  /** @throws std::invalid_argument  as size_in_bytes(). */
  Picture(std::int32_t format, std::int32_t width, std::int32_t height, std::int32_t alignment = 1)
      : format_(format),
        width_(width),
        height_(height),
        alignment_(alignment),
        bytes_(size_in_bytes(format, width, height, alignment)) {}

  std::int32_t format() const { return format_; } /**< One of PIVRA_FORMAT_... */
  std::int32_t width() const { return width_; }   /**< In pixels. */
  std::int32_t height() const { return height_; } /**< In pixels. */

  /** All planes with their padding. */
  std::span<std::uint8_t> bytes() { return bytes_; }
  /** All planes with their padding. */
  std::span<const std::uint8_t> bytes() const { return bytes_; }

  /** A new descriptor of the bytes, valid as long as the picture lives and is not moved. */
  ImageDesc desc() { return describe(format_, width_, height_, bytes_.data(), alignment_); }

 private:
  std::int32_t format_, width_, height_, alignment_;
  std::vector<std::uint8_t, detail::CacheLineAllocator<std::uint8_t>> bytes_;
};

/* ------------------------------------------------------------------------ */
/* Conversion                                                               */
/* ------------------------------------------------------------------------ */

namespace detail {

// Format codes from `first` to `last`.
struct Codes {
  std::int32_t first, last;
  constexpr Codes(std::int32_t code) : first(code), last(code) {}
  constexpr Codes(std::int32_t a, std::int32_t b) : first(a), last(b) {}
  constexpr bool hold(std::int32_t code) const { return first <= code && code <= last; }
};
inline constexpr Codes kYuv(0, 199), kRgb(200, 599), kRgb16(200, 299);

// What a kernel asks of the strides of a picture.
enum Strides : unsigned {
  kAny = 0,
  kWords = 1,  // whole 16-bit or 32-bit samples
  kAlike = 2,  // the same for both chroma planes
  kShort = 4,  // below 32768
  kTight = 8,  // no padding
};

// When kernels give the whole picture and nothing else, as far as pivra.h restricts it.
struct Rule {
  Codes from, to;
  std::int32_t columns, rows;  // the size is a multiple of these
  unsigned source = kAny, destination = kAny;
  std::int32_t min_columns = 1, min_rows = 1;  // pixels that are written in any case
};

// The first that holds both formats of a pair is its rule.
inline constexpr Rule kRules[] = {
    {PIVRA_FORMAT_YUV400, kRgb, 1, 1},
    {PIVRA_FORMAT_YUV444, kRgb, 1, 1},
    {PIVRA_FORMAT_YUV422W, kRgb, 1, 1},
    {PIVRA_FORMAT_YUV420, kRgb, 2, 2, kAlike},
    {PIVRA_FORMAT_YV12, kRgb, 2, 2, kAlike},
    {PIVRA_FORMAT_T64X32, kRgb, 2, 2, kAny, kWords},
    {PIVRA_FORMAT_T64X32, PIVRA_FORMAT_NV21, 2, 2, kAny, kTight, 64, 64},
    {PIVRA_FORMAT_T64X32, kYuv, 2, 2, kAny, kAlike | kShort, 64, 64},
    {PIVRA_FORMAT_T16X16, kRgb, 1, 1},
    {PIVRA_FORMAT_T16X16, kYuv, 2, 2, kAny, kAlike},
    {PIVRA_FORMAT_T8X8, kRgb, 1, 1, kAny, kTight},
    {PIVRA_FORMAT_T256X16, kRgb, 2, 1, kAny, kWords, 1282},
    {kYuv, kRgb, 2, 1},
    {kYuv, PIVRA_FORMAT_T64X32, 2, 2},
    // The ends of planes that are no multiple of 16 bytes long: see rule_for().
    {PIVRA_FORMAT_NV21, PIVRA_FORMAT_NV12, 8, 8, kTight, kTight},
    {kYuv, kYuv, 8, 8, kAlike},
    {kRgb, PIVRA_FORMAT_YUV444, 1, 1, kTight, kTight},
    {kRgb16, kYuv, 2, 2, kTight, kTight},
    {kRgb, kYuv, 2, 2, kTight},
    {kRgb, kRgb, 1, 1, kWords, kWords},
};

constexpr const Rule *find_rule(std::int32_t from, std::int32_t to) {
  return std::ranges::find_if(kRules,
                              [=](const Rule &r) { return r.from.hold(from) && r.to.hold(to); });
}
static_assert(std::ranges::all_of(kPairs, [](FormatPair pair) {
  return find_rule(pair.from, pair.to) != std::end(kRules);
}));

inline bool strides_suit(const ImageDesc &desc, unsigned asked) {
  const std::span<const PlaneShape> planes = find_format(desc.format)->planes;
  for (std::size_t p = 0; p < planes.size(); ++p) {
    const std::int32_t stride = desc.stride[p];
    const std::int32_t word = planes[p].bytes & -planes[p].bytes;  // 1 for 3-byte pixels
    if ((asked & kTight && stride != planes[p].row_bytes(desc.width[0])) ||
        (asked & kShort && stride > std::numeric_limits<std::int16_t>::max()) ||
        (asked & kWords && stride % word != 0)) {
      return false;
    }
  }
  return !(asked & kAlike) || planes.size() < 3 || desc.stride[1] == desc.stride[2];
}

// The descriptor with the sizes of another picture.
inline ImageDesc resized(ImageDesc desc, std::int32_t width, std::int32_t height) {
  const ImageDesc sizes = describe(desc.format, width, height, nullptr);
  std::ranges::copy(sizes.width, desc.width);
  std::ranges::copy(sizes.height, desc.height);
  return desc;
}

// A picture as a kernel asks for it: the caller's own, or a copy that suits.
// Tiles always suit, for they hold the pixels that even sizes add.
class Suited {
 public:
  Suited(const ImageDesc &own, const Rule &rule, unsigned strides)
      : desc_(resized(own, std::max(multiple(own.width[0], rule.columns), rule.min_columns),
                      multiple(own.height[0], rule.rows))) {
    // The height stays, tiles are in another order if it grows much. Rows that are
    // written all the same need memory only.
    const std::int32_t width = desc_.width[0], height = desc_.height[0];
    if (!find_format(own.format)->linear() ||
        (width == own.width[0] && height == own.height[0] && height >= rule.min_rows &&
         strides_suit(own, strides))) {
      return;
    }
    copy_.emplace(own.format, width, std::max(height, rule.min_rows));
    desc_ = resized(copy_->desc(), width, height);
  }

  const ImageDesc &desc() const { return desc_; }
  bool copied() const { return copy_.has_value(); }

 private:
  static constexpr std::int32_t multiple(std::int32_t size, std::int32_t of) {
    return (size + of - 1) / of * of;
  }

  ImageDesc desc_;
  std::optional<Picture> copy_;
};

// Copies the rows of width x height pixels between two descriptors of one linear format.
inline void copy_rows(const ImageDesc &src, const ImageDesc &dst, std::int32_t width,
                      std::int32_t height) {
  const FormatInfo &info = *find_format(src.format);
  for (std::size_t p = 0; p < info.planes.size(); ++p) {
    const auto bytes = static_cast<std::size_t>(info.planes[p].row_bytes(width));
    const std::uint8_t *from = src.plane[p];
    std::uint8_t *to = dst.plane[p];
    for (std::int32_t y = info.planes[p].rows(height); y > 0; --y) {
      std::memcpy(to, from, bytes);
      from += src.stride[p];
      to += dst.stride[p];
    }
  }
}

// By value: converting from yv12 changes the source's descriptor.
inline void convert_in_place(ImageDesc src, ImageDesc dst) {
  if (pivra_csc(&src, &dst) != PIVRA_OK) throw std::runtime_error("libpivra refused the pictures");
}

// Of planes that are multiples of 16 bytes long even sizes do.
inline Rule rule_for(const ImageDesc &src, const ImageDesc &dst) {
  const std::int32_t width = src.width[0], height = src.height[0];
  Rule rule = *find_rule(src.format, dst.format);
  const bool even = width % 2 == 0 && height % 2 == 0;
  if (rule.rows == 8 && even &&
      std::ranges::all_of(find_format(src.format)->planes, [=](const PlaneShape &plane) {
        return std::int64_t{plane.row_bytes(width)} * plane.rows(height) % 16 == 0;
      })) {
    rule.columns = rule.rows = 2;
  }
  return rule;
}

inline void convert_checked(const ImageDesc &src, const ImageDesc &dst) {
  const std::int32_t width = src.width[0], height = src.height[0];
  const Rule rule = rule_for(src, dst);
  const Suited source(src, rule, rule.source), result(dst, rule, rule.destination);
  if (source.copied()) copy_rows(src, source.desc(), width, height);
  convert_in_place(source.desc(), result.desc());
  if (result.copied()) copy_rows(result.desc(), dst, width, height);
}

// The same picture with alpha first.
inline Picture argb_from_rgba(const ImageDesc &rgba) {
  Picture argb(PIVRA_FORMAT_ARGB8888, rgba.width[0], rgba.height[0]);
  ImageDesc desc = argb.desc();
  copy_rows(rgba, desc, rgba.width[0], rgba.height[0]);
  for (auto pixel = argb.bytes().begin(); pixel != argb.bytes().end(); pixel += 4)
    std::rotate(pixel, pixel + 3, pixel + 4);
  return argb;
}

}  // namespace detail

/**
 * Converts a picture into another format at the same size, exactly as pivra.h
 * says for every pixel, at every size from 8 x 8 up and with any strides; chroma
 * is repeated, or taken from the first pixel of those that share it. Bytes
 * outside the destination's rows keep their values; in a tiled destination those
 * of the pixels that make an odd size even do not.
 *
 * Chroma planes of odd sizes are rounded up in tiled formats, too: their tiles
 * are those of the next even size.
 *
 * Sizes and strides for which pivra.h restricts a kernel, such as odd widths, go
 * through a copy of the source, the destination or both that suits it. That takes
 * memory for one more picture each; everything else is converted where it lies.
 *
 * @param src, dst  pictures that do not overlap. The descriptors are left as they are.
 * @throws std::invalid_argument  if check() refuses one of them, their sizes
 *                  differ or are below 8 x 8, or converts() is false.
 */
inline void convert(const ImageDesc &src, const ImageDesc &dst) {
  check(src);
  check(dst);
  const std::int32_t width = src.width[0], height = src.height[0];
  if (dst.width[0] != width || dst.height[0] != height) {
    detail::refuse("the source is " + detail::size_text(width, height) +
                   ", but the destination is " + detail::size_text(dst.width[0], dst.height[0]));
  }
  detail::require_size(width, height, kMinimumSize);
  if (!converts(src.format, dst.format)) {
    detail::refuse(std::string(find_format(src.format)->name) + " does not convert to " +
                   std::string(find_format(dst.format)->name));
  }

  if (src.format == PIVRA_FORMAT_RGBA8888 && dst.format == PIVRA_FORMAT_YUV444) {
    Picture argb = detail::argb_from_rgba(src);  // whose kernel writes chroma, too
    return detail::convert_checked(argb.desc(), dst);
  }
  detail::convert_checked(src, dst);
}

}  // namespace pivra

#include "pivra/operations.hpp"

#endif  // PIVRA_HPP
