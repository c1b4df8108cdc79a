/// \file
/// GIO_Stream: the one door for input and output, and the result codes of the base library.
///
/// A stream is a handle of three words: the instance of its kind, kind bits, and a table of twenty
/// operations. To call one, take `ops` from the handle and pass `instance`, never the handle. The
/// operations modelled on the standard input and output functions take the instance last, the others
/// take it first. No operation promises a lock.

#ifndef HOLV_CORE_GIO_STREAM_H
#define HOLV_CORE_GIO_STREAM_H

#include <stdarg.h>
#include <stddef.h>
#include <stdint.h>

#ifdef __cplusplus
extern "C" {
#endif

/// Result codes. They are the library's own numbers on every system, whatever the host's numbering.
enum
{
    GIO_OK = 0,                     ///< success
    GIO_ERR_NOT_FOUND = 2,          ///< no such file or directory
    GIO_ERR_BAD_HANDLE = 9,         ///< bad stream or handle
    GIO_ERR_NO_MEMORY = 12,         ///< out of memory, or a buffer that is too small
    GIO_ERR_PERMISSION = 13,        ///< permission denied, or the target exists and may not be overwritten
    GIO_ERR_BAD_ADDRESS = 14,       ///< bad address
    GIO_ERR_INVALID = 22,           ///< invalid argument
    GIO_ERR_TOO_MANY_SYSTEM = 23,   ///< too many open files in the system
    GIO_ERR_TOO_MANY_OPEN = 24,     ///< too many open files
    GIO_ERR_TOO_LARGE = 27,         ///< file too large
    GIO_ERR_NO_SPACE = 28,          ///< no space left on the device; too many channels of an error log
    GIO_ERR_RANGE = 34,             ///< result out of range
    GIO_ERR_BAD_NAME = 38,          ///< name too long, not valid, or not UTF-8
    GIO_ERR_UNSUPPORTED = 40,       ///< operation not supported
    GIO_ERR_LOCK_OR_OUTPUT = 1000,  ///< failure of a lock or of an output channel
    GIO_ERR_PLATFORM = 1001,        ///< failure of the HTTP client, of a file move, of the release of a lock
    GIO_ERR_OTHER = 1002            ///< any other error
};

/// Bits of GIO_Stream.kind. Only GIO_KIND_FORWARD_ONLY is ever tested, by the seek operations.
enum
{
    GIO_KIND_FILE = 0,          ///< a file
    GIO_KIND_FORWARD_ONLY = 2,  ///< URL streams and the standard output
    GIO_KIND_MEMORY = 4         ///< memory
};

/// Origins of a seek, with the values of the standard library.
enum
{
    GIO_SEEK_SET = 0,  ///< from the start
    GIO_SEEK_CUR = 1,  ///< from the present position
    GIO_SEEK_END = 2   ///< from the end
};

/// The operations of a stream. `c` is the stream's `instance`. An entry may be null if nobody calls it.
typedef struct GIO_StreamOps
{
    uint64_t (*gio_Read)(void* buffer, uint64_t item_size, uint64_t item_count, void* c);         ///< items read
    uint64_t (*gio_Write)(const void* buffer, uint64_t item_size, uint64_t item_count, void* c);  ///< items written
    int32_t (*gio_Seek)(void* c, int32_t offset, int32_t origin);                                 ///< 0 or -1
    int32_t (*gio_Tell)(void* c);                                                                 ///< position or -1
    int32_t (*gio_Seek64)(void* c, int64_t offset, int32_t origin);                               ///< 0 or -1
    int64_t (*gio_Tell64)(void* c);                                                               ///< position or -1
    int32_t (*gio_Flush)(void* c);                                                                ///< 0 or -1
    char* (*gio_Gets)(char* buffer, int32_t size, void* c);                                       ///< buffer or null
    int32_t (*gio_Puts)(const char* text, void* c);                     ///< non-negative or -1
    int32_t (*gio_Getc)(void* c);                                       ///< byte or -1
    int32_t (*gio_Putc)(int32_t byte, void* c);                         ///< byte or -1
    const char* (*gio_GetPath)(void* c, uint32_t* path_kind);           ///< path or null; owned by the stream
    int32_t (*gio_ReadBuffer)(void* c, void** data, uint64_t* length);  ///< non-zero if data was lent
    int32_t (*gio_VPrintf)(void* c, const char* format, va_list args);  ///< printed length or -1
    /// forgets an error and the end of the file
    void (*gio_ClearErr)(void* c);
    int32_t (*gio_Eof)(void* c);        ///< non-zero at the end, -1 on a bad instance
    int32_t (*gio_Error)(void* c);      ///< non-zero on error, -1 on a bad instance
    int32_t (*gio_LastError)(void* c);  ///< a result code
    int64_t (*gio_Size)(void* c);       ///< bytes, or -1
    int32_t (*gio_Close)(void* c);      ///< 0 or a result code; the handle is gone
} GIO_StreamOps;

/// The handle of a stream.
typedef struct GIO_Stream
{
    void* instance;            ///< the kind's own record; its first word is a tag that each operation checks
    uint32_t kind;             ///< GIO_KIND_*
    const GIO_StreamOps* ops;  ///< the twenty operations
} GIO_Stream;

#ifdef __cplusplus
}
#endif

#endif
