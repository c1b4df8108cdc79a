/// \file
/// A stream to log to over a FILE of the C library, opened for writing in binary.
///
/// It only goes forward. Each flush is one of the FILE's, so that what was logged has left the process. The first
/// failure is remembered, and every later print or write fails at once: a log is whole up to there.

#ifndef ORVLOG_HOST_STREAM_H
#define ORVLOG_HOST_STREAM_H

#include "holv-core/gio/gio-stream.h"

#include <errno.h>
#include <stdio.h>
#include <string.h>

#ifdef __cplusplus
extern "C" {
#endif

/// A log stream over a FILE of the client's or of its own.
typedef struct ORVLOG_FileStream
{
    GIO_Stream stream;    ///< what a session takes; must stay where it is
    GIO_StreamOps ops;    ///< its operations
    FILE* file;           ///< what is written to
    int32_t failure;      ///< 0, or errno of the first failure
    uint64_t text_bytes;  ///< that went to the file
} ORVLOG_FileStream;

/// \cond inner

static inline ORVLOG_FileStream* orvlog_file_of(void* c)
{
    return (ORVLOG_FileStream*)c;
}

// Remembers a failure; gives -1.
static inline int32_t orvlog_file_failed(void* c, int error)
{
    if (orvlog_file_of(c)->failure == 0)
        orvlog_file_of(c)->failure = error != 0 ? error : EIO;
    return -1;
}

static inline int32_t orvlog_file_print(void* c, const char* format, va_list args)
{
    if (orvlog_file_of(c)->failure != 0)
        return -1;
    errno = 0;
    const int length = vfprintf(orvlog_file_of(c)->file, format, args);
    if (length < 0)
        return orvlog_file_failed(c, errno);
    orvlog_file_of(c)->text_bytes += (uint64_t)length;
    return length;
}

static inline uint64_t orvlog_file_write(const void* buffer, uint64_t item_size, uint64_t item_count, void* c)
{
    if (orvlog_file_of(c)->failure != 0 || item_size == 0 || item_count == 0)
        return 0;
    errno = 0;
    const uint64_t written = fwrite(buffer, (size_t)item_size, (size_t)item_count, orvlog_file_of(c)->file);
    orvlog_file_of(c)->text_bytes += written * item_size;
    if (written != item_count)
        orvlog_file_failed(c, errno);
    return written;
}

static inline int32_t orvlog_file_flush(void* c)
{
    if (orvlog_file_of(c)->failure != 0)
        return -1;
    errno = 0;
    return fflush(orvlog_file_of(c)->file) == 0 ? 0 : orvlog_file_failed(c, errno);
}

static inline int32_t orvlog_file_puts(const char* text, void* c)
{
    const uint64_t length = strlen(text);
    return orvlog_file_write(text, 1, length, c) == length ? 0 : -1;
}

static inline int32_t orvlog_file_putc(int32_t byte, void* c)
{
    const uint8_t one = (uint8_t)byte;
    return orvlog_file_write(&one, 1, 1, c) == 1 ? one : -1;
}

static inline uint64_t orvlog_file_read(void* buffer, uint64_t item_size, uint64_t item_count, void* c)
{
    (void)buffer, (void)item_size, (void)item_count, (void)c;
    return 0;
}

static inline char* orvlog_file_gets(char* buffer, int32_t size, void* c)
{
    (void)buffer, (void)size, (void)c;
    return NULL;
}

static inline int32_t orvlog_file_getc(void* c)
{
    (void)c;
    return -1;
}

static inline int32_t orvlog_file_seek(void* c, int32_t offset, int32_t origin)
{
    (void)c, (void)offset, (void)origin;
    return -1;
}

static inline int32_t orvlog_file_seek64(void* c, int64_t offset, int32_t origin)
{
    (void)c, (void)offset, (void)origin;
    return -1;
}

static inline int64_t orvlog_file_tell64(void* c)
{
    return (int64_t)orvlog_file_of(c)->text_bytes;
}

static inline int32_t orvlog_file_tell(void* c)
{
    return orvlog_file_tell64(c) <= INT32_MAX ? (int32_t)orvlog_file_tell64(c) : -1;
}

static inline const char* orvlog_file_path(void* c, uint32_t* path_kind)
{
    (void)c;
    if (path_kind != NULL)
        *path_kind = 0;
    return NULL;
}

static inline int32_t orvlog_file_lend(void* c, void** data, uint64_t* length)
{
    (void)c, (void)data, (void)length;
    return 0;
}

// What has failed stays failed: text behind a gap would be no log.
static inline void orvlog_file_clear_error(void* c)
{
    (void)c;
}

static inline int32_t orvlog_file_eof(void* c)
{
    (void)c;
    return 0;
}

static inline int32_t orvlog_file_error(void* c)
{
    return orvlog_file_of(c)->failure != 0 ? 1 : 0;
}

static inline int32_t orvlog_file_last_error(void* c)
{
    switch (orvlog_file_of(c)->failure)
    {
    case 0:
        return GIO_OK;
    case EBADF:
        return GIO_ERR_BAD_HANDLE;
    case ENOMEM:
        return GIO_ERR_NO_MEMORY;
    case EACCES:
    case EPERM:
        return GIO_ERR_PERMISSION;
    case EFBIG:
        return GIO_ERR_TOO_LARGE;
    case ENOSPC:
        return GIO_ERR_NO_SPACE;
    default:
        return GIO_ERR_OTHER;
    }
}

// Closes the FILE and gives 0, or the result code of the first failure. The record is the caller's again.
static inline int32_t orvlog_file_close(void* c)
{
    FILE* file = orvlog_file_of(c)->file;
    if (file == NULL)
        return GIO_ERR_BAD_HANDLE;
    orvlog_file_flush(c);
    orvlog_file_of(c)->file = NULL;
    errno = 0;
    if (fclose(file) != 0)
        orvlog_file_failed(c, errno);
    return orvlog_file_last_error(c);
}

/// \endcond

/// Makes the caller's record a stream over an open FILE.
/// \param stream  the client's; must stay where it is until gio_Close. Its `failure` and `text_bytes` may be read
/// \param file    open for writing, in binary; the stream's from then on, closed by gio_Close
/// \return what a session takes, a part of the record; null for a null FILE
static inline GIO_Stream* orvlog_stream_over_file(ORVLOG_FileStream* stream, FILE* file)
{
    memset(stream, 0, sizeof *stream);
    stream->file = file;
    stream->ops.gio_Read = orvlog_file_read;
    stream->ops.gio_Write = orvlog_file_write;
    stream->ops.gio_Seek = orvlog_file_seek;
    stream->ops.gio_Tell = orvlog_file_tell;
    stream->ops.gio_Seek64 = orvlog_file_seek64;
    stream->ops.gio_Tell64 = orvlog_file_tell64;
    stream->ops.gio_Flush = orvlog_file_flush;
    stream->ops.gio_Gets = orvlog_file_gets;
    stream->ops.gio_Puts = orvlog_file_puts;
    stream->ops.gio_Getc = orvlog_file_getc;
    stream->ops.gio_Putc = orvlog_file_putc;
    stream->ops.gio_GetPath = orvlog_file_path;
    stream->ops.gio_ReadBuffer = orvlog_file_lend;
    stream->ops.gio_VPrintf = orvlog_file_print;
    stream->ops.gio_ClearErr = orvlog_file_clear_error;
    stream->ops.gio_Eof = orvlog_file_eof;
    stream->ops.gio_Error = orvlog_file_error;
    stream->ops.gio_LastError = orvlog_file_last_error;
    stream->ops.gio_Size = orvlog_file_tell64;
    stream->ops.gio_Close = orvlog_file_close;
    stream->stream.instance = stream;
    stream->stream.kind = GIO_KIND_FORWARD_ONLY;
    stream->stream.ops = &stream->ops;
    return file != NULL ? &stream->stream : NULL;
}

#ifdef __cplusplus
}
#endif

#endif
