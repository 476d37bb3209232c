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

/** @} */

#endif
