// UTF-8 paths for the wide entries of the host.

#ifndef HOLV_CORE_GIO_WIDE_PATH_WINDOWS_H
#define HOLV_CORE_GIO_WIDE_PATH_WINDOWS_H

#include <stdint.h>
#include <wchar.h>

#ifdef __cplusplus
extern "C" {
#endif

// Units of the longest path that gio_wide_path takes, terminator not included.
enum
{
    GIO_WIDE_PATH_LIMIT = 1024
};

// Writes a path that is known to be UTF-8 as UTF-16, terminated. `wide` has room for it.
void gio_wide_convert(const char* path, wchar_t* wide);

// Writes a path of any kind to `wide`, of GIO_WIDE_PATH_LIMIT + 1 units. 0 when it is not UTF-8 or does not fit.
uint32_t gio_wide_path(const char* path, wchar_t* wide);

#ifdef __cplusplus
}
#endif

#endif
