// Formatted prints into buffers of a fixed size, and to streams.

#ifndef HOLV_CORE_GIO_FORMAT_H
#define HOLV_CORE_GIO_FORMAT_H

#include "holv-core/gio/gio-stream.h"

#ifdef __cplusplus
extern "C" {
#endif

// Both print into `buffer` of `size` bytes and give the length of what stands there. The text is always
// terminated; one that does not fit is cut. A size of 0 is not for callers: a terminator is written all the same.
// A null format is an empty text.
int32_t GIO_FormatBounded(char* buffer, uint64_t size, const char* format, ...);
int32_t GIO_VFormatBounded(char* buffer, uint64_t size, const char* format, va_list args);

// Prints by the stream's gio_VPrintf; nothing for a null stream or format, or a stream that isn't set up.
void GIO_StreamPrint(GIO_Stream* stream, const char* format, ...);

#ifdef __cplusplus
}
#endif

#endif
