// What of the file stream differs between systems.

#ifndef HOLV_CORE_GIO_FILE_HOST_H
#define HOLV_CORE_GIO_FILE_HOST_H

#include "holv-core/gmm/gmm-allocator.h"

#include <stdint.h>
#include <stdio.h>

#ifdef __cplusplus
extern "C" {
#endif

// Opens a path that is known to be UTF-8. `mode_index` is the text flag plus twice the open mode; `units` the length
// of the path in UTF-16 units, `is_ascii` whether it holds nothing else. Null leaves the reason in the error variable;
// `no_memory` is set when a conversion found none.
FILE* gio_host_open(const char* path, uint32_t mode_index, uint64_t units, uint32_t is_ascii, GMM_Allocator* allocator,
                    uint32_t* no_memory);

int32_t gio_host_seek(FILE* file, int64_t offset, int32_t origin);
int64_t gio_host_tell(FILE* file);
// Size in bytes, whatever the position, or -1.
int64_t gio_host_size(FILE* file);
// Removes a file; non-zero leaves the reason in the error variable.
int32_t gio_host_remove(const char* path);

#ifdef __cplusplus
}
#endif

#endif
