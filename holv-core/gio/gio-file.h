// The file stream: a GIO_Stream over a file of the standard library, opened by a UTF-8 path.

#ifndef HOLV_CORE_GIO_FILE_H
#define HOLV_CORE_GIO_FILE_H

#include "holv-core/gio/gio-stream.h"
#include "holv-core/gmm/gmm-allocator.h"

#include <stdio.h>

#ifdef __cplusplus
extern "C" {
#endif

enum
{
    GIO_OPEN_READ,
    GIO_OPEN_WRITE,
    GIO_OPEN_APPEND,
    GIO_OPEN_READ_UPDATE,
    GIO_OPEN_WRITE_UPDATE,
    GIO_OPEN_APPEND_UPDATE
};

// Values of GIO_FileInstance.tag.
enum
{
    GIO_FILE_OPENED = 0,
    GIO_FILE_STANDARD = 1  // never closed
};

// What gio_GetPath stores as the kind of a file's path.
enum
{
    GIO_FILE_PATH_KIND = 4
};

typedef struct GIO_FileInstance
{
    uint32_t tag;
    GMM_Allocator* allocator;  // where this stream's blocks came from
    GIO_Stream* handle;        // back pointer, read by the seek operations for `kind`
    FILE* file;
    char* path;  // owned; as it was given
    uint32_t path_kind;
    uint32_t open_mode;  // GIO_OPEN_*
} GIO_FileInstance;

// Opens a file. `text` 1 opens it in the host's text mode. The handle lives until gio_Close. Gives 0 or a code:
// GIO_ERR_INVALID for null arguments or values out of range, GIO_ERR_NO_MEMORY, GIO_ERR_BAD_NAME for a path that is
// not UTF-8, or the host's reason.
int32_t gio_OpenFile(const char* path, uint32_t mode, uint32_t text, GMM_Allocator* allocator, GIO_Stream** handle_out);

// The part of it that opens the file and fills the instance, but for its `handle`.
int32_t gio_file_open_instance(const char* path, uint32_t mode, uint32_t text, GIO_FileInstance* instance,
                               GMM_Allocator* allocator);

// Removes a file; 0 or a code.
int32_t GIO_FileDelete(const char* path);

// The standard streams of the process. To be set up once before they are used; again does nothing new, and several
// threads may do it at once.
void gio_setup_standard_streams(void);
GIO_Stream* gio_stdout(void);
extern GIO_Stream gio_standard_output;  // what gio_stdout gives, for what is initialised before any program runs
GIO_Stream* gio_stderr(void);
GIO_FileInstance* gio_stdin_instance(void);

#ifdef __cplusplus
}
#endif

#endif
