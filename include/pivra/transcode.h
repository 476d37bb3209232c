/**
 * @file pivra/transcode.h
 * @brief From a decoder's frame to a display or an encoder in one call.
 *
 * A chapter of pivra.h, which includes it.
 */
#ifndef PIVRA_TRANSCODE_H
#define PIVRA_TRANSCODE_H

#ifndef PIVRA_H
#error "include <pivra.h>"
#endif

/* ------------------------------------------------------------------------ */
/** @defgroup transcode Resizing with conversion, transcoding
 * @{ */
/* ------------------------------------------------------------------------ */

/**
 * @defgroup fixed_ratio Fixed ratios
 *
 * nv12 between common broadcast sizes, without filtering: of every few columns
 * and rows the first ones are kept and the others dropped. A column is a byte of
 * luma or a pair of chroma.
 *
 *                   from         to          kept    bytes   rows
 *     1080p_720p    1920 x 1080  1280 x 720  2 of 3  by 32   by 2
 *     1080p_qhd     1920 x 1080   960 x 540  1 of 2
 *     720p_qhd      1280 x  720   960 x 540  3 of 4  by 24   by 3
 *
 * Other sizes than these work alike. A row is written in steps of so many bytes
 * and rows are written in steps of so many: what is left of a width or a height,
 * short of a step, is not. Of the source all columns and rows of the groups are
 * read, but for dropped rows. Only 1080p_qhd has a fixed size, whatever the
 * descriptor says.
 *
 * @{
 */

/**
 * A resizer. Uses planes and strides of both pictures and the sizes of the
 * destination; checks neither format nor size. @return PIVRA_OK.
 */
typedef int32_t pivra_txc_resizer(const ImageDesc *src, ImageDesc *dst);
/** 3:2, luma and then chroma. */
PIVRA_API pivra_txc_resizer pivra_txc_rsz_1080p_720p;
/** 2:1 to 960 x 540. */
PIVRA_API pivra_txc_resizer pivra_txc_rsz_1080p_qhd;
/** 4:3. */
PIVRA_API pivra_txc_resizer pivra_txc_rsz_720p_qhd;

/**
 * Resizes a plane to `height` rows of `width` samples: bytes of luma, pairs of
 * chroma. Strides are bytes. Nothing is written if a size is zero or less.
 */
typedef void pivra_txc_plane_resizer(const uint8_t *src, uint8_t *dst, int32_t width,
                                     int32_t height, int32_t src_stride, int32_t dst_stride);
/** 3:2, luma. */
PIVRA_API pivra_txc_plane_resizer pivra_txc_rsz_1080p_720p_luma;
/** 3:2, chroma. */
PIVRA_API pivra_txc_plane_resizer pivra_txc_rsz_1080p_720p_chroma;
/** 4:3, luma. */
PIVRA_API pivra_txc_plane_resizer pivra_txc_rsz_720p_qhd_luma;
/** 4:3, chroma. */
PIVRA_API pivra_txc_plane_resizer pivra_txc_rsz_720p_qhd_chroma;

/** 2:1 to 540 rows of 960 bytes of luma. */
PIVRA_API void pivra_txc_rsz_1080p_qhd_luma(const uint8_t *src, uint8_t *dst, int32_t src_stride,
                                            int32_t dst_stride);
/** 2:1 to 270 rows of 480 pairs of chroma. */
PIVRA_API void pivra_txc_rsz_1080p_qhd_chroma(const uint8_t *src, uint8_t *dst, int32_t src_stride,
                                              int32_t dst_stride);

/** @} */

/** @} */

#endif
