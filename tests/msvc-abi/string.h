// See stdio.h.

#ifndef MSVC_ABI_STRING_H
#define MSVC_ABI_STRING_H

#include <stddef.h>

#ifdef __cplusplus
extern "C" {
#endif

void* memcpy(void* to, const void* from, size_t size);
void* memset(void* to, int byte, size_t size);
size_t strlen(const char* text);

#ifdef __cplusplus
}
#endif

#endif
