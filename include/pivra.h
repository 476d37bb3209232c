/**
 * @file pivra.h
 * @brief Bit-exact pixel processing for video pipelines.
 *
 * Every operation takes a picture in memory that the caller owns and writes a
 * picture into memory that the caller owns. Nothing is logged or remembered
 * between calls, no threads are started, and every result is the same to the bit
 * on every machine. Only resizing needs memory of its own during a call.
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

/**
 * @defgroup yuv_to_yuv YUV to YUV
 *
 * `pivra_csc_<source>_to_<destination>`, one kernel for each line below: samples
 * move between planes, none is changed. Planes have the sizes and strides that
 * the two descriptors give each of them, chroma the width[1], width[2],
 * height[1] and height[2] of the source.
 *
 * - Luma is copied by pivra_cpy_8b, whose rule for contiguous planes of a size
 *   that is no multiple of 16 applies.
 * - yuv420 to yuv422n writes each chroma row twice (pivra_csc_1x1_to_1x2);
 *   yuv422n and yv16 to yuv420 and yv12 drop every other one
 *   (pivra_csc_1x2_to_1x1).
 * - yuv420 to nv12 and nv21 pack both chroma planes, in the size of plane 1,
 *   into pairs (pivra_csc_8b8b_pck); nv12 and nv21 to yuv420 and yv12 unpack
 *   them (pivra_csc_8b8b_unpck).
 * - yuv420 to yv12 exchanges the chroma planes by pivra_cpy_8b, but steps
 *   through source plane 1 by stride[2] and through source plane 2 by
 *   stride[1].
 * - nv21 to nv12 takes all planes as contiguous and reads no strides: width[0] x
 *   height[0] bytes of luma, copied by the rule of pivra_cpy_8b for such
 *   planes, and width[0] x (height[0] / 2) bytes of chroma, in whole pairs.
 *
 * @{
 */
/** Every YUV to YUV kernel. */
#define PIVRA_YUV_TO_YUV(KERNEL)           \
  KERNEL(YUV420, yuv420, YV12, yv12)       \
  KERNEL(YUV420, yuv420, YUV422N, yuv422n) \
  KERNEL(YUV420, yuv420, NV12, nv12)       \
  KERNEL(YUV420, yuv420, NV21, nv21)       \
  KERNEL(YUV422N, yuv422n, YUV420, yuv420) \
  KERNEL(YUV422N, yuv422n, YV12, yv12)     \
  KERNEL(YV16, yv16, YUV420, yuv420)       \
  KERNEL(YV16, yv16, YV12, yv12)           \
  KERNEL(NV12, nv12, YUV420, yuv420)       \
  KERNEL(NV12, nv12, YV12, yv12)           \
  KERNEL(NV21, nv21, YUV420, yuv420)       \
  KERNEL(NV21, nv21, YV12, yv12)           \
  KERNEL(NV21, nv21, NV12, nv12)

PIVRA_YUV_TO_YUV(PIVRA_DECLARE_CSC)
/** @} */

/**
 * @defgroup rgb_to_yuv RGB to YUV
 *
 * `pivra_csc_<source>_to_<destination>`: each of the eight RGB formats to yuv420,
 * yv12, nv12 and nv21; rgba8888 and argb8888 to yuv444. The matrix is ITU-R
 * BT.601, video range:
 *
 *     Y = 16  + (( 66 R + 129 G +  25 B      ) >> 8)     truncated
 *     U = 128 + ((-38 R -  74 G + 112 B + 128) >> 8)     rounded
 *     V = 128 + ((112 R -  94 G -  18 B + 128) >> 8)
 *
 * The fields of 16-bit pixels are the upper bits of R, G and B, whose lower bits
 * are zero. Alpha is not read into the result.
 *
 * 4:2:0 chroma is that of one pixel, the first of two in a row: w/2 x h/2 samples,
 * rounded down. The last column of an odd width and the last row of an odd height
 * count for luma only. Every size from 1 x 1 up converts.
 *
 * Rows. Luma row y comes from y x stride. Chroma row j comes from
 * j x (stride + 2 x bytes per pixel x floor(w/2)): row 2j if the source is packed
 * and w even, and somewhere ahead of it if the source is padded. Each destination
 * plane steps by its own stride, but from 16-bit sources by row bytes
 * + 4 x (stride - row bytes), which is the stride of a packed plane only. Strides
 * may be odd. Luma is complete before the first sample of chroma is written.
 *
 * - rgba8888 to yuv444 writes plane 0 alone, with the strides of both sides.
 * - argb8888 to yuv444 writes all three planes and takes both sides as packed,
 *   whatever the strides say.
 *
 * @{
 */
/** One RGB format to every 4:2:0 layout. */
#define PIVRA_TO_EVERY_YUV420(KERNEL, SOURCE, source) \
  KERNEL(SOURCE, source, YUV420, yuv420)              \
  KERNEL(SOURCE, source, YV12, yv12)                  \
  KERNEL(SOURCE, source, NV12, nv12)                  \
  KERNEL(SOURCE, source, NV21, nv21)

/** Every RGB to YUV kernel. */
#define PIVRA_RGB_TO_YUV(KERNEL)                    \
  PIVRA_TO_EVERY_YUV420(KERNEL, RGB565, rgb565)     \
  PIVRA_TO_EVERY_YUV420(KERNEL, BGR565, bgr565)     \
  PIVRA_TO_EVERY_YUV420(KERNEL, RGB888, rgb888)     \
  PIVRA_TO_EVERY_YUV420(KERNEL, BGR888, bgr888)     \
  PIVRA_TO_EVERY_YUV420(KERNEL, RGBA8888, rgba8888) \
  PIVRA_TO_EVERY_YUV420(KERNEL, BGRA8888, bgra8888) \
  PIVRA_TO_EVERY_YUV420(KERNEL, ARGB8888, argb8888) \
  PIVRA_TO_EVERY_YUV420(KERNEL, ABGR8888, abgr8888) \
  KERNEL(RGBA8888, rgba8888, YUV444, yuv444)        \
  KERNEL(ARGB8888, argb8888, YUV444, yuv444)

PIVRA_RGB_TO_YUV(PIVRA_DECLARE_CSC)
/** @} */

/**
 * @defgroup rgb_to_rgb RGB to RGB
 *
 * To rgb565 each colour keeps its upper bits, without rounding; from rgb565 the
 * fields become the upper bits of R, G and B, the lower ones are zero and A is
 * 255. Strides of 16-bit rows are rounded down to a multiple of 2, those of
 * 32-bit rows to a multiple of 4.
 *
 * @{
 */
/** Every RGB to RGB kernel. */
#define PIVRA_RGB_TO_RGB(KERNEL)             \
  KERNEL(RGB888, rgb888, RGB565, rgb565)     \
  KERNEL(RGBA8888, rgba8888, RGB565, rgb565) \
  KERNEL(RGB565, rgb565, RGBA8888, rgba8888)

PIVRA_RGB_TO_RGB(PIVRA_DECLARE_CSC)
/** @} */

/**
 * @defgroup tiled Tiled layouts
 *
 * A tiled plane is cut into tiles; the rows of a tile follow one another without
 * gaps, and so do the tiles. Widths here are bytes of the plane; a tiled 4:2:0
 * picture is a luma plane (w x h) and an interleaved chroma plane, U first, of w
 * bytes x h/2 rows, each tiled by itself. Strides of a tiled side are not read.
 *
 *     layout   tile     bytes a tile     a band of tile rows holds
 *     64x32    64 x 32  2048             ceil(w / 128) groups of four tiles
 *     16x16    16 x 16  256              ceil(w / 16) tiles, left to right
 *     16x8     16 x 8   128              ceil(w / 16) tiles, left to right
 *     8x8       8 x 8   64               ceil(w / 8) tiles, left to right
 *     8x4       8 x 4   64, 32 of them   ceil(w / 8) tiles, left to right
 *                       read
 *     256x16  256 x 16  4096             8 tiles, left to right
 *
 * A band of the 64x32 layout is two tile rows, that is 64 rows of the plane, in
 * the order of tiles
 *
 *     upper row    0  1   6  7   8  9  14 15
 *     lower row    2  3   4  5  10 11  12 13
 *
 * but an upper row that has no lower one below it runs from left to right. A
 * plane of it takes ceil(h / 64) x ceil(w / 128) x 8192 bytes.
 *
 * t64x32 is the 64x32 layout for luma and chroma, t16x16 has luma in 16x16 and
 * chroma in 16x8, t256x16 has both in 256x16. t8x8 is a single block of memory,
 * plane 0: macroblocks of 256 bytes, ceil(w / 16) x ceil(h / 16) of them in
 * rows, each two strips of 8 x 16 samples, the left one first; then the chroma
 * of all macroblocks in the same order, 128 bytes each, two strips of 4 pairs x
 * 8 rows.
 *
 * To RGB. The matrix is that of YUV to RGB, the pixels are those of the nv12
 * picture in the tiles, and h rows are written. Pixels are written tile by tile,
 * and row by row in a tile.
 *
 * - t64x32: w is even. 16-bit formats round the stride down to an even one.
 * - t16x16: any size; written row by row as linear nv12 is.
 * - t256x16: pivra_csc takes widths from 1281. Columns from 2048 on are not
 *   converted. An odd width below that converts one pixel past the row, which
 *   stays where the next row begins in an earlier tile. Row y begins at
 *   16 (y / 16) x stride plus (y mod 16) x stride, each rounded down to a
 *   multiple of 4.
 * - t8x8: any size; the destination's stride is not read, its rows lie w x 4
 *   bytes apart. The matrix is another one, and the result is cut to the bits
 *   of rgb565:
 *
 *       R = clamp((298 Y         + 408 V - 57059) >> 8) & 0xF8
 *       G = clamp((298 Y - 100 U - 208 V + 34713) >> 8) & 0xFC
 *       B = clamp((298 Y + 516 U         - 70887) >> 8) & 0xF8
 *
 * To and from linear 4:2:0. The copies further down, of luma (w x h) and chroma
 * (w x h/2, rounded down), with what they say about small and odd sizes.
 *
 * - t64x32 to nv21: nv12, and then the first w x h/2 bytes of plane 1 are
 *   exchanged pair by pair, as if its rows had no padding.
 * - t64x32 to yuv420: both chroma planes use stride[2]; to yv12: stride[1].
 * - yuv420 to t64x32 writes the picture's samples and leaves the rest of the
 *   tiles as it is. For an odd width the last U, V is a whole pair.
 *
 * @{
 */

/** Tiled layouts to RGB. */
#define PIVRA_TILED_TO_RGB(KERNEL)             \
  PIVRA_TO_EVERY_RGB(KERNEL, T64X32, t64x32)   \
  KERNEL(T16X16, t16x16, RGBA8888, rgba8888)   \
  KERNEL(T256X16, t256x16, RGBA8888, rgba8888) \
  KERNEL(T8X8, t8x8, RGBA8888, rgba8888)

/** Tiled layouts to linear 4:2:0 and back. */
#define PIVRA_TILED_TO_LINEAR(KERNEL)    \
  KERNEL(T64X32, t64x32, YUV420, yuv420) \
  KERNEL(T64X32, t64x32, YV12, yv12)     \
  KERNEL(T64X32, t64x32, NV12, nv12)     \
  KERNEL(T64X32, t64x32, NV21, nv21)     \
  KERNEL(T16X16, t16x16, YUV420, yuv420) \
  KERNEL(T16X16, t16x16, NV12, nv12)     \
  KERNEL(YUV420, yuv420, T64X32, t64x32)

/** Every kernel of a tiled layout. */
#define PIVRA_TILED(KERNEL)  \
  PIVRA_TILED_TO_RGB(KERNEL) \
  PIVRA_TILED_TO_LINEAR(KERNEL)

PIVRA_TILED(PIVRA_DECLARE_CSC)
/** @} */

/** Every pair that pivra_csc converts: the families above. */
#define PIVRA_CSC_PAIRS(KERNEL) \
  PIVRA_YUV_TO_RGB(KERNEL)      \
  PIVRA_YUV_TO_YUV(KERNEL)      \
  PIVRA_RGB_TO_YUV(KERNEL)      \
  PIVRA_RGB_TO_RGB(KERNEL)      \
  PIVRA_TILED(KERNEL)

#undef PIVRA_DECLARE_CSC

/** @} */

/* ------------------------------------------------------------------------ */
/** @defgroup planes Single planes
 * @{ */
/* ------------------------------------------------------------------------ */

/* Strides are bytes; a width or height of zero or less moves nothing. */

/**
 * Doubles a plane of bytes vertically: row y of `height` goes to rows 2y and
 * 2y + 1.
 */
PIVRA_API pivra_cpy_kernel pivra_csc_1x1_to_1x2;

/**
 * Halves a plane of bytes vertically: of `height` rows of the source, an even
 * number, row 2y goes to row y, and those between are dropped. If the number
 * is odd, the last row goes too.
 */
PIVRA_API pivra_cpy_kernel pivra_csc_1x2_to_1x1;

/**
 * Packs two planes, `height` rows of `width` bytes each, into one of byte
 * pairs, those of `a` first.
 */
PIVRA_API void pivra_csc_8b8b_pck(const uint8_t *a, const uint8_t *b, int32_t width, int32_t height,
                                  int32_t a_stride, int32_t b_stride, int32_t dst_stride,
                                  uint8_t *dst);

/**
 * Unpacks a plane of byte pairs, `height` rows of `width` bytes (twice the
 * number of pairs): the first bytes to `a`, the second ones to `b`. The last
 * byte of an odd width goes to `a`.
 */
PIVRA_API void pivra_csc_8b8b_unpck(const uint8_t *src, int32_t width, int32_t height,
                                    int32_t src_stride, int32_t a_stride, int32_t b_stride,
                                    uint8_t *a, uint8_t *b);

/** @} */

/* ------------------------------------------------------------------------ */
/** @defgroup tiles Tiles
 * @{ */
/* ------------------------------------------------------------------------ */

/**
 * Where a byte of a plane in the 64x32 layout lies.
 *
 * @param width, height  of the plane, in bytes and rows.
 * @param x, y           column in bytes and row.
 * @return bytes from the start of the plane.
 */
PIVRA_API int32_t pivra_get_tile_offset(int32_t width, int32_t height, int32_t x, int32_t y);

/** Copies a tiled plane of `width` bytes x `height` rows to rows `dst_stride` bytes apart. */
typedef void pivra_tile_copy_kernel(const uint8_t *src, int32_t width, int32_t height,
                                    int32_t dst_stride, uint8_t *dst);

/**
 * Of the 64x32 layout. The first tile of a band and the first band are always
 * copied whole: at least 64 bytes of at least 32 rows, whatever the size. The
 * last byte of an odd width from 65 up is not copied. Strides are from -32768
 * to 32767, heights up to 32767.
 */
PIVRA_API pivra_tile_copy_kernel pivra_csc_copy_tiles_to_linear;

/** Of 16x16 tiles, which run from left to right; exact for every size, as are the next. */
PIVRA_API pivra_tile_copy_kernel pivra_csc_copy_16x16tiles_to_linear;
/** Of 16x8 tiles. */
PIVRA_API pivra_tile_copy_kernel pivra_csc_copy_16x8tiles_to_linear;
/** Of 8x8 tiles. */
PIVRA_API pivra_tile_copy_kernel pivra_csc_copy_8x8tiles_to_linear;
/** Of 8x4 tiles, each in a slot of twice its size. */
PIVRA_API pivra_tile_copy_kernel pivra_csc_copy_8x4tiles_to_linear;

/**
 * Splits a tiled plane of byte pairs, `width` bytes x `height` rows: the first
 * byte of each pair to plane a, the second one to plane b. The last byte of an
 * odd width is left out.
 */
typedef void pivra_tile_unpack_kernel(const uint8_t *src, int32_t width, int32_t height,
                                      int32_t stride_a, uint8_t *dst_a, int32_t stride_b,
                                      uint8_t *dst_b);

/** Of the 64x32 layout, each plane with its own stride. */
PIVRA_API pivra_tile_unpack_kernel pivra_csc_unpack_tiles_to_linear;

/**
 * Of the 16x8 layout. In tiles that lie wholly within the width both planes step
 * by stride_a from row to row; from band to band, and in the last tile of a
 * width that is no multiple of 16, each steps by its own.
 */
PIVRA_API pivra_tile_unpack_kernel pivra_csc_unpack_16x8tiles_to_linear;

/**
 * Exchanges the bytes of each pair in the first width x height bytes, at least
 * of one pair. Of both factors the low 16 bits count, as signed numbers.
 */
PIVRA_API void pivra_csc_swap_8byte8(uint8_t *buf, int32_t width, int32_t height);

/** @} */

#include "pivra/deblock.h"
#include "pivra/dither.h"
#include "pivra/filters.h"
#include "pivra/resize.h"
#include "pivra/resize_convert.h"
#include "pivra/rotate.h"
#include "pivra/transcode.h"

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
