/**
 * @file pivra/deblock.h
 * @brief Smoothing the edges of the blocks that a decoder leaves.
 *
 * A chapter of pivra.h, which includes it.
 */
#ifndef PIVRA_DEBLOCK_H
#define PIVRA_DEBLOCK_H

#ifndef PIVRA_H
#error "include <pivra.h>"
#endif

/* ------------------------------------------------------------------------ */
/** @defgroup deblock Deblocking
 *
 * The edge filter of ITU-T H.263, Annex J, on decoded pictures, in place. It works on
 * the edges of 8 x 8 blocks: between rows or columns 8k - 1 and 8k, where a whole
 * block lies on either side. With A, B | C, D across an edge:
 *
 *     d  = (A - 4 B + 4 C - D) >> 3
 *     m  = max(|d| - max(2 (|d| - strength), 0), 0)    d1 = m with the sign of d
 *     d2 = clamp((A - D) >> 2, -(m >> 1), m >> 1)
 *
 *     A - d2,  clamp(B + d1),  clamp(C - d1),  D + d2      clamp to 0..255
 *
 * Shifts round down. A step of up to `strength` is smoothed, a larger one less and
 * less, and one of twice as much or more is taken for an edge of the picture. A
 * strength of zero or less changes nothing.
 *
 * @{ */
/* ------------------------------------------------------------------------ */

/**
 * Filters the horizontal edges of a plane. The strength is taken as a signed
 * 16-bit number. Rows do not overlap.
 */
PIVRA_API void pivra_dbf8x8_h263_hor(uint8_t *plane, int32_t strength, int32_t stride,
                                     int32_t width, int32_t height);

/** Filters the vertical edges of a plane, as pivra_dbf8x8_h263_hor does the horizontal ones. */
PIVRA_API void pivra_dbf8x8_h263_ver(uint8_t *plane, int32_t strength, int32_t stride,
                                     int32_t width, int32_t height);

/** Filters the horizontal and then the vertical edges of a plane with a strength of qp, 12 at most.
 */
PIVRA_API void pivra_dbf8x8(uint8_t *plane, int32_t qp, int32_t stride, int32_t width,
                            int32_t height);

/**
 * Filters the planes 0, 1 and 2 of a picture that are not null, each with its own
 * size and stride, horizontal edges and then vertical ones. Here the strength is
 * qp itself.
 *
 * @return PIVRA_OK, or PIVRA_REFUSED for a qp above 15: then nothing is changed.
 */
PIVRA_API int32_t pivra_dbf8x8_yuv(ImageDesc *picture, uint32_t qp);

/** @} */

#endif
