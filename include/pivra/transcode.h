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

/**
 * @defgroup transcode_context Transcoding
 *
 * A decoded picture becomes an nv12 picture of another size and orientation: it
 * is converted if it is not nv12, resized, and turned if that is asked for. Two
 * pictures in between, conv and rot, belong to the stream:
 *
 *     ImageDesc conv, rot;
 *     pivra_txc_csc_rsz_rot_init(&src, &dst, rotation, &conv, &rot);
 *     for (each frame) pivra_txc_csc_rsz_rot(&src, &dst, rotation, &conv, &rot);
 *     pivra_txc_csc_rsz_rot_deinit(rotation, &conv, &rot);
 *
 * All three calls take the same rotation: PIVRA_ROT_COPY, PIVRA_ROT_90L,
 * PIVRA_ROT_90R or PIVRA_ROT_180. Streams with pictures of their own may run at
 * once.
 *
 * @{
 */

/**
 * Describes the pictures in between and allocates their planes, by
 * tcor_malloc_align32 of libtcor. Whether there was memory is not looked at.
 *
 * @param src, dst  a frame of the stream and what becomes of it: width[0] and
 *                  height[0] are read, and of src what the conversion goes by.
 * @param rotation  see above.
 * @param conv      becomes nv12 of the source's size, for an nv12 source too.
 * @param rot       becomes nv12 of the destination's size, width and height
 *                  exchanged for a quarter turn; left alone for no turn.
 *
 * Of either picture width, height, stride and plane of the planes 0 and 1, the
 * format, and reserved[0] and reserved[1], which count the rows of the planes,
 * are written and nothing else.
 *
 * @return PIVRA_OK; PIVRA_REFUSED, and nothing is written, for another rotation.
 */
PIVRA_API int32_t pivra_txc_csc_rsz_rot_init(const ImageDesc *src, const ImageDesc *dst,
                                             uint32_t rotation, ImageDesc *conv, ImageDesc *rot);

/**
 * Transcodes a frame.
 *
 * The resizer is chosen by width[0] and height[0] of src and of dst:
 *
 * - pivra_txc_rsz_1080p_qhd, pivra_txc_rsz_720p_qhd or pivra_txc_rsz_1080p_720p
 *   between two of the sizes 1920 x 1080, 1280 x 720 and 960 x 540, each lying or
 *   standing, whether or not the two lie alike. It resizes by its ratio to the
 *   picture that comes next, rot or dst: where these do not lie as it shrinks
 *   them, the source must have the rows that it asks for.
 * - pivra_rsz_8b_down_special if both quotients of the sizes, rounded down, are
 *   equal and the widths' quotient, as a float, is above 2 and below 8.
 * - pivra_rsz otherwise.
 *
 * A destination of width or height 0 raises SIGFPE, where quotients are asked
 * for, before anything is written. If the process goes on such a quotient is 0.
 *
 * What the stages report is ignored: what one of them refuses keeps its pixels.
 *
 * @param src        yuv420, nv12, t64x32 or t16x16.
 * @param dst        nv12.
 * @param rotation   see above.
 * @param conv, rot  the pictures in between.
 * @return PIVRA_OK; PIVRA_REFUSED, and nothing is written, for other formats and
 *         another rotation.
 */
PIVRA_API int32_t pivra_txc_csc_rsz_rot(const ImageDesc *src, ImageDesc *dst, uint32_t rotation,
                                        ImageDesc *conv, ImageDesc *rot);

/**
 * Frees the planes of conv and, for a turn, of rot.
 * @return PIVRA_OK; PIVRA_REFUSED, and nothing is freed, for another rotation.
 */
PIVRA_API int32_t pivra_txc_csc_rsz_rot_deinit(uint32_t rotation, ImageDesc *conv, ImageDesc *rot);

/** Reserved, does nothing. @return 0. */
PIVRA_API int32_t pivra_txc_csc(void);
/** Reserved, does nothing. @return 0. */
PIVRA_API int32_t pivra_txc_rot(void);

/** @} */

/** @} */

#endif
