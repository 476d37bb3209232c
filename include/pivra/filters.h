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

/** @} */

#endif
