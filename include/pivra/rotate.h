/**
 * @file pivra/rotate.h
 * @brief Quarter turns, half turns and mirrors, alone and with a conversion.
 *
 * A chapter of pivra.h, which includes it.
 */
#ifndef PIVRA_ROTATE_H
#define PIVRA_ROTATE_H

#ifndef PIVRA_H
#error "include <pivra.h>"
#endif

/* ------------------------------------------------------------------------ */
/** @defgroup rotate Turns and mirrors
 * @{ */
/* ------------------------------------------------------------------------ */

/**
 * Rotation codes, and where each sends the sample (x, y) of a plane of w x h:
 * to which column, which row. They index the tables below.
 */
enum {
  /** To (x, y): a copy, w x h. */
  PIVRA_ROT_COPY = 0,
  /** To (y, w - 1 - x): a quarter turn counter-clockwise, h x w. */
  PIVRA_ROT_90L = 1,
  /** To (h - 1 - y, x): a quarter turn clockwise, h x w. */
  PIVRA_ROT_90R = 2,
  /** To (w - 1 - x, h - 1 - y): a half turn, w x h. */
  PIVRA_ROT_180 = 3,
  /** To (w - 1 - x, y): left and right exchanged, w x h. */
  PIVRA_ROT_HORI = 4,
  /** To (x, h - 1 - y): top and bottom exchanged, w x h. */
  PIVRA_ROT_VERT = 5,
  /** How many codes there are. */
  PIVRA_ROT_CODES = 6
};

/**
 * Turns a picture into another of the same format, plane by plane.
 *
 * Widths, heights and strides are the source's, and the destination's strides;
 * its format and sizes are not read. A quarter turn writes planes of height x
 * width. The planes must not overlap.
 *
 * - nv12: luma by pivra_tbl_fn_rot_8b, chroma by pivra_tbl_fn_rot_16b, so that
 *   U and V stay together.
 * - yuv400: plane 0 by pivra_tbl_fn_rot_8b.
 * - every other code of 0-99 but t64x32: planes 0, 1 and 2 by
 *   pivra_tbl_fn_rot_8b. That holds for nv21, whose chroma is turned byte by
 *   byte, and for codes that name no format: give the planes that the picture
 *   does not have a height of 0.
 * - 200-299: plane 0 by pivra_tbl_fn_rot_16b.
 * - 400-499: plane 0 by pivra_tbl_fn_rot_24b.
 *
 * @param src       the picture to read.
 * @param rotation  one of PIVRA_ROT_...
 * @param dst       the picture to write.
 * @return PIVRA_OK; PIVRA_UNSUPPORTED for t64x32, packed YUV, 32-bit RGB and
 *         unknown groups, and for a rotation that is no code. Nothing is
 *         written then.
 */
PIVRA_API int32_t pivra_rot(const ImageDesc *src, int32_t rotation, ImageDesc *dst);

/**
 * A rotation kernel: `height` rows of `width` units, strides in bytes. Exact for
 * every size from 1 x 1; a width or height of zero or less turns nothing.
 * Source and destination must not overlap.
 */
typedef pivra_cpy_kernel pivra_rot_kernel;

/** The name of the kernel for units of some bits and a turn. */
#define PIVRA_ROT_NAME(bits, turn) pivra_rot_##bits##_##turn

/** The turns that have kernels: KERNEL(bits, turn, CODE). */
#define PIVRA_ROT_KERNELS(KERNEL, bits) \
  KERNEL(bits, 90l, 90L)                \
  KERNEL(bits, 90r, 90R)                \
  KERNEL(bits, 180, 180)                \
  KERNEL(bits, hori, HORI)              \
  KERNEL(bits, vert, VERT)

/** Declares the kernel for units of some bits and a turn. */
#define PIVRA_DECLARE_ROT(bits, turn, CODE)                                          \
  /** Moves units of that many bits by the code that it is named for; of 16 bits, */ \
  /** the quarter turns round both strides down to even. */                          \
  PIVRA_API pivra_rot_kernel PIVRA_ROT_NAME(bits, turn);

PIVRA_ROT_KERNELS(PIVRA_DECLARE_ROT, 8b)
PIVRA_ROT_KERNELS(PIVRA_DECLARE_ROT, 16b)
PIVRA_ROT_KERNELS(PIVRA_DECLARE_ROT, 24b)

/** The kernels for bytes by rotation code; a copy is pivra_cpy_8b. */
PIVRA_API extern pivra_rot_kernel *const pivra_tbl_fn_rot_8b[PIVRA_ROT_CODES];
/** The kernels for 16-bit units, RGB565 pixels or pairs; a copy is pivra_cpy_16b. */
PIVRA_API extern pivra_rot_kernel *const pivra_tbl_fn_rot_16b[PIVRA_ROT_CODES];
/** The kernels for 3-byte pixels by rotation code; a copy is pivra_cpy_24b. */
PIVRA_API extern pivra_rot_kernel *const pivra_tbl_fn_rot_24b[PIVRA_ROT_CODES];

/** @} */

/* ------------------------------------------------------------------------ */
/** @defgroup convert_and_rotate Conversion with rotation
 * @{ */
/* ------------------------------------------------------------------------ */

/**
 * Converts a picture and turns it in the same call.
 *
 * - yuv422n or yv16 to yuv420 or yv12: copied or turned by 90 degrees. Luma by
 *   pivra_tbl_fn_rot_8b, both chroma planes by pivra_tbl_fn_csc_1x2_to_1x1_rot,
 *   each with the width, height and stride of its own. U goes to U, V to V.
 * - yuyv to bgra8888: copied or turned by 90 or 180 degrees, by
 *   pivra_csc_rot_yuyv2bgra8888.
 *
 * @param src       the picture to read.
 * @param rotation  one of PIVRA_ROT_...
 * @param dst       the picture to write; its sizes are not read.
 * @return PIVRA_OK; PIVRA_REFUSED if the formats are equal; PIVRA_UNSUPPORTED
 *         for another pair or rotation. Nothing is written unless the result
 *         is PIVRA_OK.
 */
PIVRA_API int32_t pivra_csc_rot(const ImageDesc *src, int32_t rotation, ImageDesc *dst);

/**
 * A quarter turn to the left of the even rows of a plane of bytes; the others are
 * dropped, and so is the last row of an odd height. For every width from 1 and
 * every height from 2.
 */
PIVRA_API pivra_rot_kernel pivra_csc_1x2_to_1x1_rot_90l;
/** The same to the right. */
PIVRA_API pivra_rot_kernel pivra_csc_1x2_to_1x1_rot_90r;

/** Chroma of 4:2:2 to that of 4:2:0 by rotation code; null where there is no kernel. */
PIVRA_API extern pivra_rot_kernel *const pivra_tbl_fn_csc_1x2_to_1x1_rot[PIVRA_ROT_CODES];

/**
 * pivra_csc_yuyv_to_bgra8888, and then a quarter turn to the left: each pixel is
 * written where PIVRA_ROT_90L sends it. For even widths and any stride.
 */
PIVRA_API pivra_csc_kernel pivra_csc_yuyv_to_bgra8888_90l;
/** The same with a quarter turn to the right. */
PIVRA_API pivra_csc_kernel pivra_csc_yuyv_to_bgra8888_90r;
/** The same with a half turn. */
PIVRA_API pivra_csc_kernel pivra_csc_yuyv_to_bgra8888_180;

/** yuyv to bgra8888 by rotation code; null where there is no kernel. */
PIVRA_API extern pivra_csc_kernel *const pivra_csc_rot_yuyv2bgra8888[PIVRA_ROT_CODES];

/** @} */

#endif
