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
 * @{ */
/* ------------------------------------------------------------------------ */

/** @} */

#endif
