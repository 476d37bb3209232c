/**
 * @file pivra/filters.h
 * @brief Deblocking, saturation, detail enhancement and frame packing.
 *
 * A chapter of pivra.h, which includes it.
 */
#ifndef PIVRA_FILTERS_H
#define PIVRA_FILTERS_H

#ifndef PIVRA_H
#error "include <pivra.h>"
#endif

/* ------------------------------------------------------------------------ */
/** @defgroup filters Filters
 * @{ */
/* ------------------------------------------------------------------------ */

/**
 * @defgroup saturation Saturation
 *
 * Chroma samples are mapped through a table of 256 bytes, built for a gain:
 *
 *     pivra_vqe_cs_init(1180);
 *     color_sat(lut, width * height, u, v, u, v);
 *
 * @{
 */

/**
 * The table that pivra_vqe_cs_init builds; all zero before. One for the whole
 * process: it must not be rebuilt while another thread reads it.
 */
extern PIVRA_API uint8_t lut[256];

/**
 * Builds the table `lut` by color_sat_lut.
 *
 * @param gain  in units of 1/1024; the low 16 bits count, as a signed number.
 *              0 and less stand for 1180, which is about 1.15.
 * @return 0.
 */
PIVRA_API int32_t pivra_vqe_cs_init(int32_t gain);

/**
 * Builds a table for a gain in units of 1/1024:
 *
 *     dst[2 k]     = clamp((((k - 128) * gain) >> 10) + 128)    k = 0..127
 *     dst[2 k + 1] = clamp(((     -128 * gain) >> 10) + 128)    clamp to 0..255
 *
 * Entry 2 k maps the sample k and every odd entry the sample 0: the samples are
 * the 16-bit halves of 32-bit words 0, 1, 2, ... Callers rely on this table.
 */
PIVRA_API void color_sat_lut(uint8_t *dst, int16_t gain);

/**
 * Maps `count` samples of both chroma planes through a table of 256 bytes:
 * dst[i] = table[src[i]]. A count of zero or less maps nothing. A destination
 * is its source, or does not overlap anything else.
 */
PIVRA_API void color_sat(const uint8_t *table, int32_t count, const uint8_t *src_u,
                         const uint8_t *src_v, uint8_t *dst_u, uint8_t *dst_v);

/** @} */

/**
 * @defgroup detail Detail
 * @{
 */

/**
 * Sharpens a plane of bytes, rows `width` bytes apart, by what each sample P
 * differs from the mean of its neighbours, weighed so:
 *
 *               1
 *            1  2  1
 *         1  2  P  2  1
 *            1  2  1
 *               1
 *
 *     dst = clamp(P + ((16 P - weighed sum) >> 4))     clamp to 0..255
 *
 * The shift rounds down. The two outermost rows and columns of each side have
 * not all of these neighbours and are copied; so is a plane of fewer than five
 * rows or columns. `src` and `dst` must not overlap.
 */
PIVRA_API void detail_enh(const uint8_t *src, int32_t width, int32_t height, uint8_t *dst);

/** @} */

/**
 * @defgroup frame_packing Frame packing
 * @{
 */

/**
 * Makes a red and cyan picture, for glasses of these colours, out of two views
 * that lie side by side: red of one view, green and blue of the other.
 *
 * @param src    rgb888, both views, rows without padding.
 * @param dst    rgb888, half as wide and equally high, rows without padding.
 * @param order  1: red of the left view, green and blue of the right one;
 *               2: the other way round.
 * @return PIVRA_OK; PIVRA_REFUSED, and nothing is written, unless both formats
 *         are rgb888, source width and stride twice those of the destination,
 *         heights equal, the source stride 3 x its width and `order` 1 or 2.
 */
PIVRA_API int32_t pivra_fpa(const ImageDesc *src, ImageDesc *dst, int32_t order);

/**
 * Packs rows of two rgb888 views: every third byte from the first on is of `a`,
 * the others are of `b`.
 *
 * @param a, b      the views; both go on by half of `src_step` with each row.
 * @param dst       goes on by half of `length` with each row, so that a row
 *                  overwrites the second half of the one before it.
 * @param rows      number of rows.
 * @param unused5, unused6, unused9  not read.
 * @param src_step  twice the bytes from one row of a view to the next.
 * @param length    bytes that are written of each row; zero or less: none.
 */
PIVRA_API void pivra_fpa_frm_pack(const uint8_t *a, const uint8_t *b, uint8_t *dst, int32_t rows,
                                  int32_t unused5, int32_t unused6, int32_t src_step,
                                  int32_t length, int32_t unused9);

/** @} */

/**
 * @defgroup reserved_filters Reserved
 *
 * Entry points that keep their names for filters of whole pictures. They do
 * nothing yet.
 *
 * @{
 */

/** Reserved: saturation. @return -1. */
PIVRA_API int32_t pivra_vqe_cs(void);
/** Reserved: detail enhancement. @return -1. */
PIVRA_API int32_t pivra_vqe_de(void);
/** Reserved: smoothing of slanted edges. @return -1. */
PIVRA_API int32_t pivra_vqe_dejagging(void);

/** @} */

/** The ramp 0, 1, ..., 255. The library itself does not read it. */
extern PIVRA_API const int16_t table[256];

/** @} */

#endif
