/**
 * @file pivra/resize.h
 * @brief Pictures and planes of one size made of those of another.
 *
 * A chapter of pivra.h, which includes it.
 */
#ifndef PIVRA_RESIZE_H
#define PIVRA_RESIZE_H

#ifndef PIVRA_H
#error "include <pivra.h>"
#endif

/* ------------------------------------------------------------------------ */
/** @defgroup resize Resizing
 *
 * A picture is resized plane by plane, a plane in one pass if it shrinks in both
 * directions and in two otherwise: first its rows, into a scratch buffer, then
 * its columns. Two samples at most meet in each direction, and everything
 * truncates. Whatever a sample has several of, the bytes of pairs and pixels and
 * the fields of 5-6-5 words, is computed each by itself.
 *
 * Sample shapes, as the names of functions spell them:
 *
 *     8b         a byte: luma, planar chroma, grey
 *     8b8b       a pair of bytes: interleaved chroma
 *     5b6b5b     a little-endian 16-bit word of fields of 5, 6 and 5 bits
 *     8b8b8b     three bytes
 *     8b8b8b8b   four bytes; alpha is filtered as the colours are
 *
 * Shrinking
 * ---------
 * From s samples to d the step is q = s / d with a remainder r = s % d. A counter
 * starts at 0 and gains r with every output. Output i is made at the position p
 * in the source:
 *
 *     counter < d:    the sample p alone;                p moves on by q
 *     counter >= d:   the mean of samples p and p + 1;   p moves on by q + 1,
 *                     (a + b) >> 1                       the counter loses d
 *
 * So r of the d outputs are means, never the first one and, unless r = 0, always
 * the last one. An integer ratio (r = 0, q > 1) is an exception: there every
 * output is the mean of the first two of its q samples. In both directions at
 * once an output is the mean of one, two or four samples, truncated once; two
 * integer ratios average the first two by two samples of each block, and of an
 * integer ratio beside another one only the first sample or row counts.
 *
 * Growing
 * -------
 * From s samples to d there are u = d / s outputs for each sample c, and r = d % s
 * times one more: a counter starts at 0 and gains r with every sample, and where
 * it reaches s it loses s and the group has g = u + 1 outputs, elsewhere g = u.
 * The next sample is n, for the last one the sample itself. Output 0 of a group is
 * c, and the others are
 *
 *     mode 0   outputs 1 .. u - 1 are all ((g - 1) c + n) / g;
 *              output u, if g = u + 1, is (c + u n) / (u + 1)
 *     mode 1   output m is ((64 - m w) c + m w n) >> 6 with w = scale[min(g, 33)]
 *
 * Mode 0 repeats one value where mode 1 has a ramp. From ratios of 64 up weights
 * of mode 1 pass 64: sums are unsigned 32-bit numbers that wrap, and of the result
 * the low byte is kept, of 5-6-5 words the low bits of each field.
 *
 * Rows and columns grow by the same rule. What asks for more than the rule gives,
 * as chroma of an odd size can, repeats the last sample or row.
 *
 * @{
 */
/* ------------------------------------------------------------------------ */

/**
 * The value of ImageDesc::resize_mode, of the destination, that selects mode 1:
 * the characters "mod1", m in the most significant byte. Any other value is mode
 * 0. Shrinking does not depend on the mode.
 */
#define PIVRA_RSZ_MODE1 0x6D6F6431u

/**
 * The weight, in 64ths, by which mode 1 goes from each output of a group to the
 * next, by the number of outputs in the group; of 33 and more it is the last.
 */
extern PIVRA_API const uint32_t scale[34];

/**
 * Bilinear weights at steps of 1/8 in each direction. For i and j of 0..7 the four
 * bytes from 4 (8 i + j) on are (8 - i)(8 - j), i (8 - j), (8 - i) j and i j,
 * which add up to 64.
 */
extern PIVRA_API const uint8_t pivra_tbl_rsz_weight[256];

/** @} */

/* ------------------------------------------------------------------------ */
/** @defgroup resize_pictures Resizing pictures
 * @ingroup resize
 *
 * Memory. A call that resizes allocates one scratch buffer for all planes and
 * frees it before it returns PIVRA_OK. If a plane is refused the planes before it
 * are written and the buffer stays allocated. If there is no memory and a plane
 * needs it, the call returns PIVRA_REFUSED and writes nothing.
 *
 * @{
 */
/* ------------------------------------------------------------------------ */

/**
 * Resizes a picture to the size of another of the same format.
 *
 * yuv400, the planar formats, nv12, nv21 and every RGB format resize; codes of
 * 0-99 that name no format, and the tiled ones but t64x32, are resized as three
 * byte planes. Each plane goes from its own size to its own size, by
 * dst->resize_mode.
 *
 * If width[0] and height[0] of both agree the picture is copied with the source's
 * sizes, whatever those of the other planes: planes with pivra_cpy_8b, the chroma
 * of nv12 and nv21 too, as rows of 2 x width[1] bytes, RGB with pivra_cpy_16b,
 * pivra_cpy_24b or pivra_cpy_32b.
 *
 * @return PIVRA_OK; PIVRA_REFUSED if the formats differ, or if the sizes of plane
 *         0 do and a width or height is zero or less; PIVRA_UNSUPPORTED for
 *         t64x32, packed YUV and unknown groups.
 */
PIVRA_API int32_t pivra_rsz(const ImageDesc *src, ImageDesc *dst);

/**
 * Resizes a YUV picture and turns it on the way.
 *
 * For rotations 1 and 2 the width of the source becomes the height of the
 * destination, and its height the width. If plane 0 keeps its size the call is
 * pivra_rot(src, rotation, dst), whatever the format. Otherwise:
 *
 * - 1, 2 and 3 are quarter turns to the left and to the right and the half turn;
 * - 0 and the mirrors, 4 and 5, resize without a turn: nothing is mirrored.
 *
 * @return PIVRA_OK; PIVRA_REFUSED as of pivra_rsz; PIVRA_UNSUPPORTED for t64x32,
 *         packed YUV, RGB that is to be resized, and rotations outside 0..5.
 */
PIVRA_API int32_t pivra_rsz_rot(const ImageDesc *src, int32_t rotation, ImageDesc *dst);

/**
 * Shrinks an nv12 or nv21 picture by cells of 2 x 2 samples: with
 * pivra_8b_rsz_down_2xplus and its counterpart for pairs if width[0] shrinks by
 * a factor of 2 or 3, rounded down, with those of 4xplus from 4 to 7. By any other
 * factor nothing is written. Formats are not looked at, and what the source is too
 * small for is not written.
 *
 * @return PIVRA_OK, unless there is no memory for the halves of 4xplus.
 */
PIVRA_API int32_t pivra_rsz_8b_down_special(const ImageDesc *src, ImageDesc *dst);

/** Returns its argument. */
PIVRA_API intptr_t pivra_rsz_8b_rot_90r_quarter(intptr_t x);

/** @} */

/* ------------------------------------------------------------------------ */
/** @defgroup resize_planes Resizing planes
 * @ingroup resize
 *
 * They choose the kernels for the sizes of a plane.
 *
 * @{
 */
/* ------------------------------------------------------------------------ */

/**
 * Resizes a plane of sw x sh samples to dw x dh; strides are bytes.
 *
 * If both directions shrink `scratch` is not touched and may be null. Otherwise
 * it receives all sh rows as they are after the pass over rows, without padding
 * between them: rows of dw samples or, for quarter turns, of dh. `mode` is
 * PIVRA_RSZ_MODE1, or any other value for mode 0.
 *
 * @return PIVRA_OK; PIVRA_REFUSED if a width or height is zero or less.
 */
typedef int32_t pivra_rsz_plane(const uint8_t *src, int32_t sw, int32_t sh, int32_t dw, int32_t dh,
                                uint8_t *dst, uint8_t *scratch, int32_t src_stride,
                                int32_t dst_stride, uint32_t mode);

/** Every shape that resizes: SHAPE(shape). */
#define PIVRA_RSZ_SHAPES(SHAPE) \
  SHAPE(8b)                     \
  SHAPE(8b8b)                   \
  SHAPE(5b6b5b)                 \
  SHAPE(8b8b8b)                 \
  SHAPE(8b8b8b8b)

/** Every shape and turn that resize in one: TURN(shape, turn). */
#define PIVRA_RSZ_TURNS(TURN) \
  TURN(8b, 90l)               \
  TURN(8b, 90r)               \
  TURN(8b, 180)               \
  TURN(8b8b, 90l)             \
  TURN(8b8b, 90r)             \
  TURN(8b8b, 180)

/** Declares `pivra_rsz_<shape>`. */
#define PIVRA_DECLARE_PLANE(shape)                                                  \
  /** Resizes a plane, see pivra_rsz_plane. Of 5b6b5b odd strides lose a byte, that \
   * is both are rounded down to whole words. */                                    \
  PIVRA_API pivra_rsz_plane pivra_rsz_##shape;

/** Declares `pivra_rsz_<shape>_rot_<turn>`. */
#define PIVRA_DECLARE_PLANE_TURN(shape, turn)                                             \
  /** Resizes a plane and turns it, see pivra_rsz_plane: sw x sh is the size before, dw x \
   * dh the size after the turn. */                                                       \
  PIVRA_API pivra_rsz_plane pivra_rsz_##shape##_rot_##turn;

PIVRA_RSZ_SHAPES(PIVRA_DECLARE_PLANE)
PIVRA_RSZ_TURNS(PIVRA_DECLARE_PLANE_TURN)

#undef PIVRA_DECLARE_PLANE
#undef PIVRA_DECLARE_PLANE_TURN

/**
 * Resamples a plane of bytes bilinearly, at steps of 1/8.
 *
 * A step, one for each direction, is 8 n + s: the source is seen at every 2^s-th column (row), s of
 * 0..4, and outputs are n / 2^18 of those apart. From a position its whole part and the next three
 * bits count, the latter for pivra_tbl_rsz_weight. Nothing is clamped: the steps keep the samples
 * inside the source. A sample of weight 0 is not read. For dw or dh of zero or less nothing is
 * done.
 */
PIVRA_API void pivra_rsz_8b_org(const uint8_t *src, int32_t src_stride, int32_t dw, int32_t dh,
                                int32_t dst_stride, uint8_t *dst, int32_t step_x, int32_t step_y);

/** @} */

/* ------------------------------------------------------------------------ */
/** @defgroup resize_kernels Kernels
 * @ingroup resize
 *
 * `pivra_<shape>_rsz_<kind>`, one for each line of PIVRA_RSZ_KERNELS, and
 * `pivra_<shape>_rsz_rot_<turn>_<kind>` for those of PIVRA_RSZ_ROT_KERNELS.
 *
 *     down_mult       both directions by integer ratios
 *     down_non_mult   both directions, one at least by another ratio
 *     down_w          shrinks rows into the scratch
 *     up, up_mode1    grow rows into the scratch, by mode 0 and 1
 *     down_h          shrinks columns of the scratch
 *     up_h, up_h_mode1  grow columns of the scratch
 *
 * Widths count samples, strides and steps bytes; of 5b6b5b strides and steps count
 * words. The columns of 8b8b8b and 8b8b8b8b are done by the kernels of 8b, with
 * three or four times the width.
 *
 * Turned kernels read as their counterparts do and write sample i of line t of
 * what those would write to
 *
 *     90l   column t, row dh - 1 - i
 *     90r   column dw - 1 - t, row i
 *     180   column dw - 1 - i, row dh - 1 - t
 *
 * where dw and dh are the size after the turn. down_w, up and up_mode1 write the
 * scratch and do not turn.
 *
 * @{
 */
/* ------------------------------------------------------------------------ */

/**
 * Output (x, y) is the mean of samples qx x and qx x + 1 of the row at y x row_step
 * and of the one src_stride further. qx is 2 or more, row_step is qy x src_stride.
 */
typedef void pivra_rsz_down_mult_kernel(const uint8_t *src, uint8_t *dst, int32_t dw, int32_t dh,
                                        int32_t qx, int32_t src_stride, int32_t row_step,
                                        int32_t dst_stride);

/** Shrinks both directions; qx, rx, qy and ry as above, row_step is qy x src_stride. */
typedef void pivra_rsz_down_non_mult_kernel(const uint8_t *src, uint8_t *dst, int32_t dw,
                                            int32_t dh, int32_t qx, int32_t src_stride,
                                            int32_t row_step, int32_t rx, int32_t ry,
                                            int32_t dst_stride);

/** Shrinks `rows` rows to dw samples each; qx = 1 with rx = 0 copies them. */
typedef void pivra_rsz_down_w_kernel(const uint8_t *src, uint8_t *scratch, int32_t src_stride,
                                     int32_t dw, int32_t rows, int32_t qx, int32_t rx);

/** Grows `rows` rows of sw samples to dw; ux = 1 with rx = 0 copies them. */
typedef void pivra_rsz_up_kernel(const uint8_t *src, uint8_t *scratch, int32_t dw, int32_t sw,
                                 int32_t rows, int32_t ux, int32_t rx, int32_t src_stride);

/**
 * Shrinks columns to dh rows; `width` is that of the destination, or dh by a
 * quarter turn, whose rows are dw.
 */
typedef void pivra_rsz_down_h_kernel(const uint8_t *scratch, uint8_t *dst, int32_t width,
                                     int32_t dst_stride, int32_t dh, int32_t qy, int32_t ry);

/** Grows columns of sh rows; `width` and dh as above. */
typedef void pivra_rsz_up_h_kernel(const uint8_t *scratch, uint8_t *dst, int32_t width, int32_t sh,
                                   int32_t dh, int32_t uy, int32_t ry, int32_t dst_stride);

/** The kinds that every shape has: KERNEL(kind, arguments, ...). */
#define PIVRA_RSZ_ROW_KINDS(KERNEL, ...)            \
  KERNEL(down_mult, down_mult, __VA_ARGS__)         \
  KERNEL(down_non_mult, down_non_mult, __VA_ARGS__) \
  KERNEL(down_w, down_w, __VA_ARGS__)               \
  KERNEL(up, up, __VA_ARGS__)                       \
  KERNEL(up_mode1, up, __VA_ARGS__)

/** And those for columns: KERNEL(kind, arguments, ...). */
#define PIVRA_RSZ_COLUMN_KINDS(KERNEL, ...) \
  KERNEL(down_h, down_h, __VA_ARGS__)       \
  KERNEL(up_h, up_h, __VA_ARGS__)           \
  KERNEL(up_h_mode1, up_h, __VA_ARGS__)

/** Both. */
#define PIVRA_RSZ_KINDS(KERNEL, ...)       \
  PIVRA_RSZ_ROW_KINDS(KERNEL, __VA_ARGS__) \
  PIVRA_RSZ_COLUMN_KINDS(KERNEL, __VA_ARGS__)

/** The kernels that do not turn: KERNEL(kind, arguments, shape). */
#define PIVRA_RSZ_KERNELS(KERNEL)     \
  PIVRA_RSZ_KINDS(KERNEL, 8b)         \
  PIVRA_RSZ_KINDS(KERNEL, 8b8b)       \
  PIVRA_RSZ_KINDS(KERNEL, 5b6b5b)     \
  PIVRA_RSZ_ROW_KINDS(KERNEL, 8b8b8b) \
  PIVRA_RSZ_ROW_KINDS(KERNEL, 8b8b8b8b)

/** The kernels that turn: KERNEL(kind, arguments, shape, turn). */
#define PIVRA_RSZ_ROT_KERNELS(KERNEL) \
  PIVRA_RSZ_KINDS(KERNEL, 8b, 90l)    \
  PIVRA_RSZ_KINDS(KERNEL, 8b, 90r)    \
  PIVRA_RSZ_KINDS(KERNEL, 8b, 180)    \
  PIVRA_RSZ_KINDS(KERNEL, 8b8b, 90l)  \
  PIVRA_RSZ_KINDS(KERNEL, 8b8b, 90r)  \
  PIVRA_RSZ_KINDS(KERNEL, 8b8b, 180)

/** Declares `pivra_<shape>_rsz_<kind>`. */
#define PIVRA_DECLARE_RSZ(kind, arguments, shape)                       \
  /** Resizes samples, see the head of the group and the type of it. */ \
  PIVRA_API pivra_rsz_##arguments##_kernel pivra_##shape##_rsz_##kind;

/** Declares `pivra_<shape>_rsz_rot_<turn>_<kind>`. */
#define PIVRA_DECLARE_RSZ_ROT(kind, arguments, shape, turn)                       \
  /** Resizes samples and turns, see the head of the group and the type of it. */ \
  PIVRA_API pivra_rsz_##arguments##_kernel pivra_##shape##_rsz_rot_##turn##_##kind;

PIVRA_RSZ_KERNELS(PIVRA_DECLARE_RSZ)
PIVRA_RSZ_ROT_KERNELS(PIVRA_DECLARE_RSZ_ROT)

#undef PIVRA_DECLARE_RSZ
#undef PIVRA_DECLARE_RSZ_ROT

/**
 * 1280x720 to 720x404, for which pivra_rsz_8b takes it, with the bytes of
 * pivra_8b_rsz_down_non_mult; qx, row_step and rx are not looked at.
 */
PIVRA_API pivra_rsz_down_non_mult_kernel pivra_8b_rsz_down_non_mult_720p_720x404;

/** 640x360 pairs to 360x202, the chroma of such a picture, for pivra_rsz_8b8b. */
PIVRA_API pivra_rsz_down_non_mult_kernel pivra_8b8b_rsz_down_non_mult_720p_720x404;

/**
 * Shrinks by a ratio of 2 to 4 in both directions: the rule of down_non_mult over
 * cells, the means of 2 x 2 samples. Both means truncate. A cell is a sample of
 * that rule, so q is 1 and rx and ry are the remainders of half the sizes.
 */
typedef void pivra_rsz_down_2xplus_kernel(const uint8_t *src, uint8_t *dst, int32_t dw, int32_t dh,
                                          int32_t rx, int32_t ry, int32_t src_stride,
                                          int32_t dst_stride);

/** Of bytes. */
PIVRA_API pivra_rsz_down_2xplus_kernel pivra_8b_rsz_down_2xplus;
/** Of pairs. */
PIVRA_API pivra_rsz_down_2xplus_kernel pivra_8b8b_rsz_down_2xplus;

/**
 * Shrinks sw x sh samples by a ratio of 4 to 8 in both directions: halves them
 * into `scratch`, sh / 2 rows of src_stride / 2 bytes, and shrinks those by
 * down_2xplus. Three means truncate.
 */
typedef void pivra_rsz_down_4xplus_kernel(const uint8_t *src, uint8_t *dst, int32_t dw, int32_t dh,
                                          int32_t sw, int32_t sh, int32_t src_stride,
                                          int32_t dst_stride, uint8_t *scratch);

/**
 * Of bytes. The lower samples that are halved lie sw bytes behind the upper ones,
 * which is the next row of a plane without padding only.
 */
PIVRA_API pivra_rsz_down_4xplus_kernel pivra_8b_rsz_down_4xplus;
/** Of pairs; here the lower ones are those of the next row. */
PIVRA_API pivra_rsz_down_4xplus_kernel pivra_8b8b_rsz_down_4xplus;

/** @} */

/* ------------------------------------------------------------------------ */
/** @defgroup resize_tiles Rows of tiles
 * @ingroup resize
 *
 * Passes over the rows of planes in the 64x32 layout. The byte at column x of row
 * y lies at pivra_get_tile_offset(tw, rows, x, y). `rows` rows are written, without
 * padding between them. A pair c of chroma is the bytes at columns 2 c and 2 c + 1;
 * its first bytes go to one plane and the second ones to another, each of dw
 * samples a row.
 *
 * @{
 */
/* ------------------------------------------------------------------------ */

/** Shrinks rows as pivra_8b_rsz_down_w does; a qx below 1 counts as 1. */
PIVRA_API void pivra_nv12t_rsz_down_w(const uint8_t *src, uint8_t *dst, int32_t tw, int32_t dw,
                                      int32_t rows, int32_t qx, int32_t rx);

/** Shrinks rows of pairs and parts them. */
PIVRA_API void pivra_nv12t_rsz_down_w_c(const uint8_t *src, uint8_t *dst_first, uint8_t *dst_second,
                                        int32_t tw, int32_t dw, int32_t rows, int32_t qx,
                                        int32_t rx);

/** Grows rows of sw samples. */
typedef void pivra_nv12t_rsz_up_kernel(const uint8_t *src, uint8_t *dst, int32_t dw, int32_t sw,
                                       int32_t rows, int32_t u, int32_t r, int32_t tw);

/** As pivra_8b_rsz_up. */
PIVRA_API pivra_nv12t_rsz_up_kernel pivra_nv12t_rsz_up;
/** As pivra_8b_rsz_up_mode1. */
PIVRA_API pivra_nv12t_rsz_up_kernel pivra_nv12t_rsz_up_mode1;

/** Grows rows of sw_luma / 2 pairs and parts them. */
typedef void pivra_nv12t_rsz_up_c_kernel(const uint8_t *src, uint8_t *dst_first,
                                         uint8_t *dst_second, int32_t dw, int32_t sw_luma,
                                         int32_t rows, int32_t u, int32_t r, int32_t tw);

/** By mode 0. */
PIVRA_API pivra_nv12t_rsz_up_c_kernel pivra_nv12t_rsz_up_c;
/** By mode 1. */
PIVRA_API pivra_nv12t_rsz_up_c_kernel pivra_nv12t_rsz_up_c_mode1;

/** @} */

#endif
