/**
 * @file pivra/dither.h
 * @brief Conversion to 16-bit RGB with less banding.
 *
 * A chapter of pivra.h, which includes it.
 */
#ifndef PIVRA_DITHER_H
#define PIVRA_DITHER_H

#ifndef PIVRA_H
#error "include <pivra.h>"
#endif

/* ------------------------------------------------------------------------ */
/** @defgroup dither Dithering
 *
 * Luma is stirred a little before it is cut to 5 and 6 bits, so that slopes do
 * not become bands. There is nothing random in it: a picture always gives the
 * same result.
 *
 * @{ */
/* ------------------------------------------------------------------------ */

/**
 * Converts a picture to 16-bit RGB with dithered luma, or copies a yuv420
 * picture so.
 *
 * | from               | to             | by                                      |
 * |--------------------|----------------|-----------------------------------------|
 * | yuv400             | rgb565         | pivra_csc_yuv400_to_rgb565_dither       |
 * | yuv420, yv12       | rgb565, bgr565 | pivra_csc_yuv420_to_..._dither          |
 * | yuv422n            | rgb565, bgr565 | pivra_csc_yuv422n_to_rgb565_dither both |
 * | yuv422w            | rgb565, bgr565 | pivra_csc_yuv422w_to_rgb565_dither both |
 * | yuv444             | rgb565, bgr565 | pivra_csc_yuv444_to_..._dither          |
 * | yuv420             | yuv420         | pivra_dit_8b luma, pivra_cpy_8b chroma  |
 *
 * So yuv422n and yuv422w to bgr565 are written in the order of rgb565. From
 * yv12 the planes of U and V change places, but not their strides, and nothing
 * is written to the source's descriptor.
 *
 * Sizes are those of the source and are not checked.
 *
 * @return PIVRA_OK, or PIVRA_UNSUPPORTED for any other pair of formats: then
 *         nothing is written.
 */
PIVRA_API int32_t pivra_csc_dither(const ImageDesc *src, ImageDesc *dst);

/**
 * Every dithering kernel: KERNEL(source, destination).
 *
 * Sizes, strides and what else is peculiar to a pair are those of the ordinary
 * kernel, `pivra_csc_<source>_to_<destination>`, which does the conversion.
 *
 * The destination is its own scratch memory: luma perturbed by pivra_dit_8b is
 * put into its lower half, from byte height x stride / 2 on in rows of
 * stride / 2, and is converted from there, top down. Nothing is allocated, but
 * the stride of the destination has to be 2 x width at least, and what lies
 * between its rows is not kept.
 *
 * The last four rows are converted from the source as it is, but for yuv400,
 * which is dithered to the end. With a height of four or less that is the whole
 * picture.
 *
 * Exceptions, which callers rely on:
 *
 * - yuv422n and yuv422w are not dithered. The rows above the last four come of
 *   the source's own luma, read in rows of half the destination's stride: an
 *   ordinary conversion if that is the stride of the source.
 * - yuv444 to rgb565 converts its last four rows by pivra_csc_yuv420_to_bgr565,
 *   which takes the chroma planes for those of 4:2:0.
 *
 * Below these four rows are the last two chroma rows of yuv420 and yuv422w and the
 * last four of yuv422n and yuv444, counted from the end of each chroma plane as
 * height[1] and height[2] give it.
 */
#define PIVRA_DITHER(KERNEL) \
  KERNEL(yuv400, rgb565)     \
  KERNEL(yuv420, rgb565)     \
  KERNEL(yuv420, bgr565)     \
  KERNEL(yuv422n, rgb565)    \
  KERNEL(yuv422n, bgr565)    \
  KERNEL(yuv422w, rgb565)    \
  KERNEL(yuv422w, bgr565)    \
  KERNEL(yuv444, rgb565)     \
  KERNEL(yuv444, bgr565)

/** The name of the dithering kernel for a pair. */
#define PIVRA_DITHER_NAME(source, destination) pivra_csc_##source##_to_##destination##_dither

/** Declares the dithering kernel for a pair. */
#define PIVRA_DECLARE_DITHER(source, destination) \
  /** Converts a picture, see PIVRA_DITHER. */    \
  PIVRA_API pivra_csc_kernel PIVRA_DITHER_NAME(source, destination);

PIVRA_DITHER(PIVRA_DECLARE_DITHER)

#undef PIVRA_DECLARE_DITHER

/**
 * Copies a plane of bytes and perturbs the copy.
 *
 * Steps are made in the rows 1 to height - 2 from the top down, in each from the
 * columns x = 2, 4, ... up to width - 3 from left to right. A step compares
 * samples as the steps before have left them, and changes saturate:
 *
 *     (x + 2, y)                  + 2 if (x - 1, y) > (x, y), else - 2
 *     (x, y + 1), (x + 1, y + 1)  + 1 if (x, y - 1) > (x, y), else - 1
 *
 * A width of 4 or less or a height of 2 or less is copied as it is. `dst` may be
 * `src` with the same stride; strides are `width` at least.
 */
PIVRA_API pivra_cpy_kernel pivra_dit_8b;

/** @} */

#endif
