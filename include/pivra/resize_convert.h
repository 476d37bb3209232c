/**
 * @file pivra/resize_convert.h
 * @brief A frame of one size and format made of one of another in one call.
 *
 * A chapter of pivra.h, which includes it.
 */
#ifndef PIVRA_RESIZE_CONVERT_H
#define PIVRA_RESIZE_CONVERT_H

#ifndef PIVRA_H
#error "include <pivra.h>"
#endif

/* ------------------------------------------------------------------------ */
/** @defgroup resize_convert Resizing with conversion
 * @{ */
/* ------------------------------------------------------------------------ */

/**
 * Resizes a picture and converts its format.
 *
 *     yuv420, t64x32 to rgb565   averaged while it is converted if both axes shrink; else
 *                                resized through a scratch, plane by plane, then converted
 *     yuv420 to rgb888           bilinear, in one pass
 *     yuv420 to yuv400           the luma, bilinear
 *     yuv400 to yuv420           the same; before that the first width x height bytes of plane 0
 *                                are filled with 16, of planes 1 and 2 with 128, whatever the
 *                                strides
 *     yuv400 to rgb888           pivra_rsz(), then pivra_csc(), through a grey picture
 *     rgb888 to yuv420           the same through an RGB picture, its stride thrice that of dst
 *
 * resize_mode of dst chooses how pictures grow, as in pivra_rsz(). The scratch is one
 * allocation, released before the call ends.
 *
 * @param src  the picture to read.
 * @param dst  the picture to write. For rgb565 of an odd width the stride leaves room for one
 *             more pixel, which is written too, unless both axes shrink.
 * @return PIVRA_OK; PIVRA_REFUSED if the formats are equal, if a picture that is made rgb565
 *         or its source is empty (the scratch stays allocated then), or if there is no memory;
 *         PIVRA_UNSUPPORTED for other pairs. Nothing is written unless the result is PIVRA_OK.
 */
PIVRA_API int32_t pivra_rsz_csc(const ImageDesc *src, ImageDesc *dst);

/**
 * A kernel of pivra_rsz_csc() to rgb565. The arrays are those of the two descriptors.
 *
 * When both axes shrink, the scratch is not touched. Otherwise it holds, with w x h and
 * W x H the sizes of source and destination, S the destination's stride, and h1 and h2 the
 * heights of the source's chroma planes:
 *
 *     w' x h    luma in rows of W bytes, W / 2 x h1 and W / 2 x h2 chroma in rows of W / 2, the
 *               second plane W / 2 x (h / 2) bytes after the first one
 *     W  x H    luma in rows of S / 2 bytes, then chroma in rows of S / 4, H / 2 of each
 *
 * The second group starts W x h + (W / 2) x (h1 + h2) bytes into the scratch. For odd sizes
 * the conversion reads one column or chroma row further than the passes write: what the
 * caller left there.
 *
 * @return PIVRA_OK, or PIVRA_REFUSED if a size is below 1.
 */
typedef int32_t pivra_rsz_csc_kernel(uint8_t **src, int32_t *src_width, int32_t *src_height,
                                     int32_t *src_stride, int32_t *dst_width, int32_t *dst_height,
                                     int32_t *dst_stride, uint8_t **dst, uint8_t *scratch,
                                     uint32_t mode);

/** From planes. */
PIVRA_API pivra_rsz_csc_kernel pivra_rsz_csc_yuv420_to_rgb565;
/** From tiles. Both planes are as wide as the luma; the strides are not read. */
PIVRA_API pivra_rsz_csc_kernel pivra_rsz_csc_t64x32_to_rgb565;

/**
 * Resizes yuv420 bilinearly, with phases of 1/8, and converts it to rgb888 in one pass. Two by
 * two pixels share a chroma sample. Exact for every size from 1 up; the steps are those of
 * pivra_rsz_8b_org(), of chroma to (width / 2) x ((height + 1) / 2). Without a sample of chroma
 * the picture is grey.
 */
PIVRA_API void pivra_rsz_csc_yuv420_to_rgb888(uint8_t **src, int32_t *src_width,
                                              int32_t *src_height, int32_t *src_stride,
                                              int32_t *dst_width, int32_t *dst_height,
                                              int32_t *dst_stride, uint8_t **dst);

/**
 * Shrinks by whole factors and converts to rgb565, two by two pixels at a time: width / 2
 * pairs in a row, an odd last row by itself.
 *
 * The luma of a pixel is the truncated mean of the top left 2 x 2 samples of its cell, chroma
 * that of 2 x 2 samples for four pixels, and in an odd last row of two samples side by side.
 * The chroma rows step by their stride, but the lower row of a mean lies half the luma stride
 * under the upper one.
 *
 * @param src            planes Y, U and V.
 * @param width, height  of the result.
 * @param quotient_x, quotient_y  source samples for each pixel, 2 at least.
 * @param src_stride     of the three planes.
 * @param dst, dst_stride  the result, in bytes from row to row.
 */
PIVRA_API void pivra_8b_rsz_csc_down_mult_yuvtorgb565(uint8_t **src, uint8_t *dst, int32_t width,
                                                      int32_t height, int32_t quotient_x,
                                                      int32_t quotient_y, int32_t *src_stride,
                                                      int32_t dst_stride);

/** The same from the tiles of a picture; samples beyond its last row or column are those. */
PIVRA_API void pivra_8b_rsz_csc_down_mult_t64x32torgb565(uint8_t **src, uint8_t *dst, int32_t width,
                                                         int32_t height, int32_t quotient_x,
                                                         int32_t quotient_y, int32_t *src_width,
                                                         int32_t *src_height, int32_t dst_stride);

/**
 * Shrinks by other factors and converts to rgb565.
 *
 * Each axis walks as in pivra_8b_rsz_down_non_mult(), chroma by steps of its own over half the
 * pixels: a pixel is the truncated mean of 1, 2 or 4 samples, two by two pixels share chroma.
 * Chroma rows lie half the luma stride apart; every second row of pixels they advance by the
 * quotient of the luma, and one more where the remainder of the chroma carries. Samples beyond
 * the last row or column of a plane are those.
 *
 * @param src                     planes Y, U and V.
 * @param width, height           of the result.
 * @param src_width, src_height   of the planes; of chroma those of plane 1.
 * @param src_stride              of the luma.
 * @param dst, dst_stride         the result, in bytes from row to row.
 */
PIVRA_API void pivra_8b_rsz_csc_down_non_multyuvtorgb565(uint8_t **src, uint8_t *dst, int32_t width,
                                                         int32_t height, int32_t *src_width,
                                                         int32_t *src_height, int32_t *src_stride,
                                                         int32_t dst_stride);

/** The same from tiles. */
PIVRA_API void pivra_8b_rsz_csc_down_non_multt64x32torgb565(uint8_t **src, uint8_t *dst,
                                                            int32_t width, int32_t height,
                                                            int32_t *src_width, int32_t *src_height,
                                                            int32_t dst_stride);

/**
 * Converts planes that step by parts of the destination's stride S to rgb565, two rows and two
 * columns at a time: luma rows lie S / 2 apart, chroma rows S / 4. An odd width writes one
 * pixel past the row, an odd height a row past the last one; the second row of a pair lies at
 * an even distance.
 */
typedef void pivra_rsz_csc_up_kernel(const uint8_t *y, const uint8_t *u, const uint8_t *v,
                                     uint8_t *dst, int32_t *dst_stride, int32_t *dst_height,
                                     int32_t *dst_width);
/** For even heights. */
PIVRA_API pivra_rsz_csc_up_kernel pivra_rsz_csc_up_h2x_yuv420_to_rgb565_gen;
/** Row by row, for every height; all rows lie an even distance apart. */
PIVRA_API pivra_rsz_csc_up_kernel pivra_rsz_csc_up_h_yuv420_to_rgb565_gen;

/** @} */

#endif
