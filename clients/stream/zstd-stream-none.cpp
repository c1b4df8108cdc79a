// Where there is no Zstandard, no such stream can be opened.

#include "clients/stream/orvlog-stream.h"

#include <cerrno>

extern "C" GIO_Stream* orvlog_open_zstd_stream(const char* /*path*/)
{
    errno = ENOTSUP;
    return nullptr;
}
