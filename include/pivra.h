/**
 * @file pivra.h
 * @brief Bit-exact pixel processing for video pipelines.
 *
 * Every operation takes a picture in memory that the caller owns and writes a
 * picture into memory that the caller owns. Nothing is allocated, logged or
 * remembered between calls, no threads are started, and every result is the
 * same to the bit on every machine.
 *
 * A picture is an `ImageDesc`. The entry points `pivra_cpy` and `pivra_csc`
 * look at the formats of two descriptors, choose a kernel and report by a
 * result code. The kernels are exported too: they trust their caller, check
 * nothing and return nothing.
 *
 * Two threads may run any of these functions at once as long as they do not
 * share a destination picture or a descriptor that is written to (see
 * "The yv12 kernels" below).
 *
 * The header is valid C99 and C++.
 */
#ifndef PIVRA_H
#define PIVRA_H

#include <stddef.h>
#include <stdint.h>

/** Marks what the library exports. */
#if defined(__GNUC__)
#define PIVRA_API __attribute__((visibility("default")))
#else
#define PIVRA_API
#endif

#ifdef __cplusplus
extern "C" {
#endif

/* ------------------------------------------------------------------------ */
/** @defgroup results Result codes
 * @{ */
/* ------------------------------------------------------------------------ */

enum {
  /** The destination holds the result. */
  PIVRA_OK = 0,
  /** Refused: formats that must differ are equal, or the other way round. */
  PIVRA_REFUSED = -1,
  /** The format, the pair of formats or the size is not supported. */
  PIVRA_UNSUPPORTED = -3
};

/** @} */

/* ------------------------------------------------------------------------ */
/** @defgroup formats Pixel formats
 * @{ */
/* ------------------------------------------------------------------------ */

/**
 * Layouts of the samples in memory. Y is luma, U and V are the chroma samples
 * (Cb and Cr), all in video range: luma 16..235, chroma centred on 128.
 *
 * The codes come in groups of a hundred: 0-99 planar, semi-planar and tiled
 * YUV; 100-199 packed YUV 4:2:2; 200-299 16-bit RGB; 400-499 24-bit RGB;
 * 500-599 32-bit RGB. A code outside this list names no format.
 *
 * Widths count the samples of a plane: bytes in a plane of single samples,
 * pairs in the interleaved chroma plane of nv12 and nv21, pixels in packed YUV
 * and RGB. Strides are always bytes.
 */
enum {
  /** Grey: one plane of Y. Converted to RGB as R = G = B = Y, no expansion. */
  PIVRA_FORMAT_YUV400 = 0,
  /** 4:2:0, planes Y (w x h), U and V (w/2 x h/2 each). I420. */
  PIVRA_FORMAT_YUV420 = 1,
  /** 4:2:2, planes Y (w x h), U and V (w/2 x h each). */
  PIVRA_FORMAT_YUV422N = 2,
  /** 4:4:4, planes Y, U and V (w x h each). */
  PIVRA_FORMAT_YUV444 = 3,
  /** As yuv420, but plane 1 is V and plane 2 is U. */
  PIVRA_FORMAT_YV12 = 4,
  /** As yuv422n, but plane 1 is V and plane 2 is U. */
  PIVRA_FORMAT_YV16 = 5,
  /** 4:2:0, plane 0 Y (w x h), plane 1 h/2 rows of w/2 byte pairs U, V. */
  PIVRA_FORMAT_NV12 = 6,
  /** As nv12, with the pairs V, U. */
  PIVRA_FORMAT_NV21 = 7,
  /** 4:4:0, planes Y (w x h), U and V (w x h/2 each). */
  PIVRA_FORMAT_YUV422W = 8,
  /** nv12 samples in tiles of 64 x 32 bytes, as hardware decoders write them. */
  PIVRA_FORMAT_T64X32 = 11,
  /** 4:2:0 in tiles of 16 x 16. */
  PIVRA_FORMAT_T16X16 = 12,
  /** YUV in tiles of 8 x 8. */
  PIVRA_FORMAT_T8X8 = 13,
  /** YUV in tiles of 256 x 16. */
  PIVRA_FORMAT_T256X16 = 14,

  /** Packed 4:2:2: per two pixels the bytes U, Y0, V, Y1. */
  PIVRA_FORMAT_UYVY = 100,
  /** Packed 4:2:2: per two pixels the bytes Y0, U, Y1, V. */
  PIVRA_FORMAT_YUYV = 101,

  /** Little-endian word: red in bits 15-11, green in 10-5, blue in 4-0. */
  PIVRA_FORMAT_RGB565 = 200,
  /** Little-endian word: blue in bits 15-11, green in 10-5, red in 4-0. */
  PIVRA_FORMAT_BGR565 = 201,

  /** Bytes R, G, B at increasing addresses. */
  PIVRA_FORMAT_RGB888 = 400,
  /** Bytes B, G, R. */
  PIVRA_FORMAT_BGR888 = 401,

  /** Bytes R, G, B, A. Conversions from YUV write A = 255. */
  PIVRA_FORMAT_RGBA8888 = 500,
  /** Bytes B, G, R, A. */
  PIVRA_FORMAT_BGRA8888 = 501,
  /** Bytes A, R, G, B. */
  PIVRA_FORMAT_ARGB8888 = 502,
  /** Bytes A, B, G, R. */
  PIVRA_FORMAT_ABGR8888 = 503
};

/** @} */

/* ------------------------------------------------------------------------ */
/** @defgroup pictures Pictures
 * @{ */
/* ------------------------------------------------------------------------ */

/**
 * One picture: up to four planes, how large each is, where it lies and how its
 * rows are laid out.
 *
 * Entries of planes that the format does not use are not read. Planes and
 * strides need no alignment; stride[p] is at least the bytes of a row. The
 * luma size is the size of the picture; for odd luma sizes fill in the chroma
 * sizes rounded up.
 */
typedef struct ImageDesc {
  int32_t width[4];      /**< Samples in a row of the plane. */
  int32_t height[4];     /**< Rows of the plane. */
  int32_t stride[4];     /**< Bytes from one row to the next. */
  uint32_t reserved[4];  /**< Not read; keeps the layout fixed. */
  uint8_t *plane[4];     /**< First byte of row 0. */
  uint32_t reserved2[4]; /**< Not read. */
  int32_t format;        /**< One of PIVRA_FORMAT_... */
  uint32_t reserved3[3]; /**< Not read. */
  uint32_t resize_mode;  /**< Read by resizing only; 0 is the ordinary mode. */
} ImageDesc;

/** @} */

/* ------------------------------------------------------------------------ */
/** @defgroup copy Copy
 * @{ */
/* ------------------------------------------------------------------------ */

/**
 * Copies a picture into another of the same format, plane by plane, each side
 * with its own strides. Sizes are the source's; the destination's are not read.
 *
 * - nv12: luma with pivra_cpy_8b, chroma with pivra_cpy_16b.
 * - yuv400: plane 0 with pivra_cpy_8b.
 * - every other code of 0-99 but t64x32: planes 0, 1 and 2 with pivra_cpy_8b.
 *   That holds for nv21 and for codes that name no format as well: give the
 *   planes that the picture does not have a height of 0.
 * - 16-bit RGB: plane 0 with pivra_cpy_16b.
 *
 * @return PIVRA_OK; PIVRA_REFUSED if the formats differ; PIVRA_UNSUPPORTED for
 *         t64x32, packed YUV, 24- and 32-bit RGB and unknown groups.
 */
PIVRA_API int32_t pivra_cpy(const ImageDesc *src, ImageDesc *dst);

/**
 * A copy kernel: `height` rows of `width` samples, strides in bytes. A width or
 * height of zero or less copies nothing.
 */
typedef void pivra_cpy_kernel(const uint8_t *src, int32_t width, int32_t height, int32_t src_stride,
                              int32_t dst_stride, uint8_t *dst);

/**
 * Copies rows of bytes.
 *
 * Exact when a row is shorter than one of the strides, and when it is not
 * (width equals both strides) for sizes whose width x height is a multiple of
 * 16. For other contiguous sizes the last width x height mod 16 bytes follow a
 * rule that callers depend on: a byte is copied and its value becomes the new
 * bound of the byte index. From 256 bytes on that copies exactly one of them;
 * below, it may stop early or go on past the plane, up to index 255.
 */
PIVRA_API pivra_cpy_kernel pivra_cpy_8b;

/**
 * Copies rows of 16-bit samples; exact only when both strides are 2 x width
 * and width x height is a multiple of 16.
 *
 * Otherwise: both strides are halved before use, so rows lie stride / 2 bytes
 * apart; and the n samples (n below 16) after the last whole block of a row
 * advance by one byte each, copying n + 1 bytes. In a contiguous picture the
 * tail's bound is replaced by the 16-bit value just copied, as in
 * pivra_cpy_8b.
 */
PIVRA_API pivra_cpy_kernel pivra_cpy_16b;

/** Copies rows of 3-byte pixels, exact for every size and stride. */
PIVRA_API pivra_cpy_kernel pivra_cpy_24b;

/** Copies rows of 4-byte pixels, exact for every size and stride. */
PIVRA_API pivra_cpy_kernel pivra_cpy_32b;

/** @} */

/* ------------------------------------------------------------------------ */
/** @defgroup conversion Colour conversion
 * @{ */
/* ------------------------------------------------------------------------ */

/**
 * Converts a picture into another format at the same size.
 *
 * Looks the pair (source format, destination format) up and calls the one
 * kernel that serves it. The size is the source's.
 *
 * @param src  the picture to read. Converting from yv12 writes into this
 *             descriptor, see "The yv12 kernels".
 * @param dst  the picture to write; its width[0] and height[0] are only
 *             checked, its strides and planes are used.
 * @return PIVRA_OK; PIVRA_REFUSED if the formats are equal, whatever the
 *         sizes; PIVRA_UNSUPPORTED if width[0] or height[0] of either picture
 *         is below 8, or if the pair does not convert. Nothing is written
 *         unless the result is PIVRA_OK.
 */
PIVRA_API int32_t pivra_csc(ImageDesc *src, ImageDesc *dst);

/**
 * A conversion kernel. The six arrays are those of the two descriptors, four
 * entries each; the picture is src_width[0] x src_height[0] pixels.
 */
typedef void pivra_csc_kernel(uint8_t **src, int32_t *src_width, int32_t *src_height,
                              int32_t *src_stride, int32_t *dst_stride, uint8_t **dst);

/** The name of the kernel for a pair. */
#define PIVRA_CSC_NAME(source, destination) pivra_csc_##source##_to_##destination

/** Declares the kernel for a pair. */
#define PIVRA_DECLARE_CSC(SOURCE, source, DESTINATION, destination)           \
  /** Converts a picture, see the head of its family and pivra_csc_kernel. */ \
  PIVRA_API pivra_csc_kernel PIVRA_CSC_NAME(source, destination);

/**
 * @defgroup yuv_to_rgb YUV to RGB
 *
 * `pivra_csc_<source>_to_<destination>`, one kernel for each line of
 * PIVRA_YUV_TO_RGB below: yuv420, yv12, yuv422n, yuv444, nv12, nv21, uyvy and
 * yuyv to each of the eight RGB formats; yuv400 to rgb565 and rgb888; yuv422w
 * to rgb565 and bgr565.
 *
 * The matrix is ITU-R BT.601, video range, in 8-bit fixed point:
 *
 *     y = 298 (Y - 16) + 128,  u = U - 128,  v = V - 128
 *     R = clamp((y         + 409 v) >> 8)
 *     G = clamp((y - 100 u - 208 v) >> 8)
 *     B = clamp((y + 516 u        ) >> 8)      clamp to 0..255
 *
 * 16-bit formats keep the top bits of each, 32-bit formats store A = 255.
 * Chroma is repeated, not interpolated. Grey is stored as R = G = B = Y.
 *
 * Sizes. Even widths and heights from 2 up are exact in every kernel. Odd sizes:
 *
 * - yuv444, yuv400 and yuv422w are exact for every width.
 * - yuv420, yuv422n, nv12, nv21 to rgb888: width mod 8 = 1 converts one pixel
 *   past the row (and reads one luma sample past it); 3, 5 and 7 leave the last
 *   pixel of the row unwritten.
 * - yuv420 to rgb565: an odd width converts one pixel past the row, and each
 *   destination row starts 2 bytes further on than the stride says: row y lies
 *   at y x (stride + 2).
 * - yuv420 to rgba8888, bgra8888, argb8888, bgr565 and nv21 to rgb565, bgr565:
 *   odd widths are out of contract; the row is converted as it is.
 * - all others: an odd width converts one pixel past the row. Where rows follow
 *   each other without padding the next row overwrites it.
 * - yuv420 to rgb565, rgba8888, bgra8888, argb8888 with a width that is no
 *   multiple of 4: an odd height gives row 0 a chroma row of its own; rows 1
 *   and 2, 3 and 4, ... share the following ones. In all other kernels rows 2r
 *   and 2r + 1 share chroma row r, the last row alone if the height is odd.
 *
 * Strides of the chroma planes. Each plane uses its own, except in yuv420 to
 * rgb565, bgr565, rgba8888, bgra8888 and argb8888: there both planes step by
 * stride[1], unless the width is no multiple of 4 and the destination is one of
 * the two 16-bit formats.
 *
 * The yv12 kernels
 * ----------------
 * They exchange entries 1 and 2 of the caller's plane and stride arrays, call
 * the yuv420 kernel, and do not exchange them back: afterwards the descriptor
 * lists U first. Fill the descriptor in anew before converting from it again.
 *
 * @{
 */
/** A format that converts to every RGB format, see PIVRA_YUV_TO_RGB. */
#define PIVRA_TO_EVERY_RGB(KERNEL, SOURCE, source) \
  KERNEL(SOURCE, source, RGB565, rgb565)           \
  KERNEL(SOURCE, source, BGR565, bgr565)           \
  KERNEL(SOURCE, source, RGB888, rgb888)           \
  KERNEL(SOURCE, source, BGR888, bgr888)           \
  KERNEL(SOURCE, source, RGBA8888, rgba8888)       \
  KERNEL(SOURCE, source, BGRA8888, bgra8888)       \
  KERNEL(SOURCE, source, ARGB8888, argb8888)       \
  KERNEL(SOURCE, source, ABGR8888, abgr8888)

/** The YUV to RGB kernels but for yv12: KERNEL(SOURCE, source, DESTINATION, destination). */
#define PIVRA_YUV_TO_RGB_DIRECT(KERNEL)        \
  PIVRA_TO_EVERY_RGB(KERNEL, YUV420, yuv420)   \
  PIVRA_TO_EVERY_RGB(KERNEL, YUV422N, yuv422n) \
  PIVRA_TO_EVERY_RGB(KERNEL, YUV444, yuv444)   \
  PIVRA_TO_EVERY_RGB(KERNEL, NV12, nv12)       \
  PIVRA_TO_EVERY_RGB(KERNEL, NV21, nv21)       \
  PIVRA_TO_EVERY_RGB(KERNEL, UYVY, uyvy)       \
  PIVRA_TO_EVERY_RGB(KERNEL, YUYV, yuyv)       \
  KERNEL(YUV400, yuv400, RGB565, rgb565)       \
  KERNEL(YUV400, yuv400, RGB888, rgb888)       \
  KERNEL(YUV422W, yuv422w, RGB565, rgb565)     \
  KERNEL(YUV422W, yuv422w, BGR565, bgr565)

/** The yv12 kernels, which hand on to those of yuv420. */
#define PIVRA_YV12_TO_RGB(KERNEL) PIVRA_TO_EVERY_RGB(KERNEL, YV12, yv12)

/** Every YUV to RGB kernel. */
#define PIVRA_YUV_TO_RGB(KERNEL)  \
  PIVRA_YUV_TO_RGB_DIRECT(KERNEL) \
  PIVRA_YV12_TO_RGB(KERNEL)

PIVRA_YUV_TO_RGB(PIVRA_DECLARE_CSC)
/** @} */

/** Every pair that pivra_csc converts: the families above. */
#define PIVRA_CSC_PAIRS(KERNEL) PIVRA_YUV_TO_RGB(KERNEL)

#undef PIVRA_DECLARE_CSC

/** @} */

/* ------------------------------------------------------------------------ */
/* The promise                                                              */
/* ------------------------------------------------------------------------ */

/*
 * A library whose results are defined to the bit exports the symbol BITEXACT:
 * absolute, of value 0. Only its presence says something (look for it with nm
 * or dlsym); there is nothing behind it to read, so it is not declared here.
 */

/* ------------------------------------------------------------------------ */
/* The layout of the descriptor is part of the interface                    */
/* ------------------------------------------------------------------------ */

#if UINTPTR_MAX == 0xFFFFFFFFu
#define PIVRA_PIN(field, word) \
  typedef char pivra_pin_##field[offsetof(ImageDesc, field) == 4 * (word) ? 1 : -1]
PIVRA_PIN(width, 0);
PIVRA_PIN(height, 4);
PIVRA_PIN(stride, 8);
PIVRA_PIN(reserved, 12);
PIVRA_PIN(plane, 16);
PIVRA_PIN(reserved2, 20);
PIVRA_PIN(format, 24);
PIVRA_PIN(reserved3, 25);
PIVRA_PIN(resize_mode, 28);
#undef PIVRA_PIN
#endif

#ifdef __cplusplus
}
#endif

#endif /* PIVRA_H */
