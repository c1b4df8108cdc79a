// What the examples use of the C library of Windows, for a compiler without any headers of it.

#ifndef MSVC_ABI_STDIO_H
#define MSVC_ABI_STDIO_H

#include <stdarg.h>
#include <stddef.h>

#ifdef __cplusplus
extern "C" {
#endif

typedef struct _iobuf FILE;

FILE* fopen(const char* path, const char* mode);
int fclose(FILE* file);
int fflush(FILE* file);
size_t fread(void* items, size_t size, size_t count, FILE* file);
size_t fwrite(const void* items, size_t size, size_t count, FILE* file);
int vfprintf(FILE* file, const char* format, va_list args);

#ifdef __cplusplus
}
#endif

#endif
