// Storing an error in the record of ger-error-record.h. These functions are the library's own: it doesn't export
// them, so clients are given the record alone.

#ifndef HOLV_CORE_GER_ERROR_H
#define HOLV_CORE_GER_ERROR_H

#include "holv-core/ger/ger-error-record.h"

#include <stdarg.h>
#include <stddef.h>
#include <stdint.h>

#ifdef __cplusplus
extern "C" {
#endif

// Stores an error unless the record holds one already: the first stays. A severity of 0 does nothing,
// nor does a null record. The change, or that it was refused, goes out through `ge_Log`.
void GER_ErrorSet(GER_Error* error, int32_t severity, int32_t module, int32_t code, const char* format, ...);

// As GER_ErrorSet, but a higher severity replaces the stored error: the worst stays, and of equals the first.
void GER_ErrorRaise(GER_Error* error, int32_t severity, int32_t module, int32_t code, const char* format, ...);

#ifdef __cplusplus
}
#endif

#endif
