#include "holv-core/gio/gio-format.h"

#include <cstdio>
#include <cstring>

int32_t GIO_FormatBounded(char* buffer, uint64_t size, const char* format, ...)
{
    va_list args;
    va_start(args, format);
    const int32_t length = GIO_VFormatBounded(buffer, size, format, args);
    va_end(args);
    return length;
}

int32_t GIO_VFormatBounded(char* buffer, uint64_t size, const char* format, va_list args)
{
    if (buffer == nullptr)
        return 0;
    buffer[0] = '\0';
    if (size == 0 || format == nullptr)
        return 0;
    const int length = std::vsnprintf(buffer, size, format, args);
    if (length >= 0 && static_cast<uint64_t>(length) < size - 1)
        return length;
    buffer[size - 1] = '\0';
    return static_cast<int32_t>(std::strlen(buffer));
}

void GIO_StreamPrint(GIO_Stream* stream, const char* format, ...)
{
    if (stream == nullptr || stream->ops == nullptr || stream->ops->gio_VPrintf == nullptr || format == nullptr)
        return;
    va_list args;
    va_start(args, format);
    stream->ops->gio_VPrintf(stream->instance, format, args);
    va_end(args);
}
