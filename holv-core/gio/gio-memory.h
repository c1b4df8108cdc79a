// The memory stream: a GIO_Stream that reads and writes a block of memory of a fixed size.

#ifndef HOLV_CORE_GIO_MEMORY_H
#define HOLV_CORE_GIO_MEMORY_H

#include "holv-core/gio/gio-stream.h"
#include "holv-core/gmm/gmm-allocator.h"

#ifdef __cplusplus
extern "C" {
#endif

enum
{
    GIO_MEMORY_TAG = 3
};

typedef struct GIO_MemoryInstance
{
    uint32_t kind;             // GIO_MEMORY_TAG; each operation refuses any other value
    GMM_Allocator* allocator;  // owner of the block
    void* self;                // the block that holds handle, instance and table; released at close
    uint8_t* data;             // the caller's memory; not owned
    uint64_t size;             // bytes in `data`, a fixed limit
    uint64_t position;         // next byte
    uint32_t last_error;       // code of the latest failure
    uint32_t at_end;           // 1 after an attempt at the end
    uint32_t error_flag;       // 1 after an unsupported call
} GIO_MemoryInstance;

// Opens a stream over `size` bytes at `data`, which stay the caller's and must stand until the stream is closed.
// 0, GIO_ERR_INVALID for null arguments or a size of 0, or GIO_ERR_NO_MEMORY.
//
// Failures are kept in the stream: gio_LastError gives the code, gio_ClearErr clears it and the end, but not the
// flag of gio_Error. gio_Gets leaves the position at the line feed that ended the line.
int32_t GIO_OpenMemory(void* data, uint64_t size, GMM_Allocator* allocator, GIO_Stream** stream_out);

#ifdef __cplusplus
}
#endif

#endif
