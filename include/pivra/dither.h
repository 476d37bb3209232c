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
 * @{ */
/* ------------------------------------------------------------------------ */

/** @} */

#endif
