// See stdio.h.

#ifndef MSVC_ABI_STDLIB_H
#define MSVC_ABI_STDLIB_H

#include <stddef.h>

#ifdef __cplusplus
extern "C" {
#endif

void* malloc(size_t size);
void* calloc(size_t count, size_t size);
void* realloc(void* block, size_t size);
void free(void* block);

#ifdef __cplusplus
}
#endif

#endif
