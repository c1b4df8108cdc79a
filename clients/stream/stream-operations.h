// What the streams of this folder have in common: the table of operations, and the codes that failures get.

#ifndef CLIENTS_STREAM_STREAM_OPERATIONS_H
#define CLIENTS_STREAM_STREAM_OPERATIONS_H

#include "holv-core/gio/gio-stream.h"

#include <cerrno>
#include <cstdint>

namespace orvlog::stream_operations
{

// The result code of GIO_Stream for a value of errno.
constexpr int32_t code_of(int error)
{
    switch (error)
    {
    case 0:
        return GIO_OK;
    case ENOENT:
        return GIO_ERR_NOT_FOUND;
    case EBADF:
        return GIO_ERR_BAD_HANDLE;
    case ENOMEM:
        return GIO_ERR_NO_MEMORY;
    case EACCES:
    case EPERM:
        return GIO_ERR_PERMISSION;
    case EINVAL:
        return GIO_ERR_INVALID;
    case EFBIG:
        return GIO_ERR_TOO_LARGE;
    case ENOSPC:
        return GIO_ERR_NO_SPACE;
    default:
        return GIO_ERR_OTHER;
    }
}

// The operations that say the same for every stream, in terms of those that differ.
template <typename Operations> struct Common
{
    static int32_t seek(void* c, int32_t offset, int32_t origin)
    {
        return Operations::seek64(c, offset, origin);
    }

    static int32_t tell(void* c)
    {
        const int64_t place = Operations::tell64(c);
        return place <= INT32_MAX ? static_cast<int32_t>(place) : -1;
    }

    // `name` may be null.
    static const char* path(void* c, uint32_t* path_kind)
    {
        if (path_kind != nullptr)
            *path_kind = 0;
        return Operations::name(c);
    }

    static int32_t read_buffer(void*, void**, uint64_t*)
    {
        return 0;
    }
};

// The table of a stream whose operations are the static members of `Operations`.
template <typename Operations>
constexpr GIO_StreamOps kTable = {
    .gio_Read = Operations::read,
    .gio_Write = Operations::write,
    .gio_Seek = Common<Operations>::seek,
    .gio_Tell = Common<Operations>::tell,
    .gio_Seek64 = Operations::seek64,
    .gio_Tell64 = Operations::tell64,
    .gio_Flush = Operations::flush,
    .gio_Gets = Operations::gets,
    .gio_Puts = Operations::puts,
    .gio_Getc = Operations::getc,
    .gio_Putc = Operations::putc,
    .gio_GetPath = Common<Operations>::path,
    .gio_ReadBuffer = Common<Operations>::read_buffer,
    .gio_VPrintf = Operations::print,
    .gio_ClearErr = Operations::clear_error,
    .gio_Eof = Operations::eof,
    .gio_Error = Operations::error,
    .gio_LastError = Operations::last_error,
    .gio_Size = Operations::size,
    .gio_Close = Operations::close,
};

}  // namespace orvlog::stream_operations

#endif
