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

/** @} */

#endif
