#include "clients/stream/log-stream.h"

#include "clients/stream/stream-operations.h"

#include <algorithm>
#include <atomic>
#include <cerrno>
#include <cstdarg>
#include <cstdio>
#include <cstdlib>
#include <cstring>

namespace orvlog::log_stream
{

namespace
{

constexpr uint32_t kStreamTag = 0x4D52544F;

LogStream* self(void* c)
{
    auto* stream = static_cast<LogStream*>(c);
    if (stream != nullptr && stream->tag == kStreamTag)
        return stream;
    errno = EBADF;
    return nullptr;
}

template <size_t Size> void store(char* to, const char* from)
{
    std::memcpy(to, from, Size);
    std::atomic_signal_fence(std::memory_order_seq_cst);
}

// From the first byte to the last, so that a process that is killed leaves the beginning of a text and not its end.
void copy_forward(char* to, const char* from, size_t count)
{
    constexpr size_t kStep = 16;
    if (count >= kStep)
    {
        for (size_t at = 0; at + kStep <= count; at += kStep)
            store<kStep>(to + at, from + at);
        store<kStep>(to + count - kStep, from + count - kStep);
    }
    else if (count >= 8)
    {
        store<8>(to, from);
        store<8>(to + count - 8, from + count - 8);
    }
    else
    {
        for (size_t at = 0; at < count; ++at)
            store<1>(to + at, from + at);
    }
}

bool append(LogStream* stream, const char* text, size_t count)
{
    if (stream->error != 0)
        return false;
    bool good = true;
    while (good && count > 0)
    {
        const size_t room = static_cast<size_t>(stream->end - stream->next);
        const size_t part = std::min(room, count);
        copy_forward(stream->next, text, part);
        stream->next += part;
        text += part;
        count -= part;
        good = count == 0 || stream->kind->make_room(stream);
    }
    if (stream->kind->printed != nullptr)
        stream->kind->printed(stream);
    return stream->error == 0;
}

int32_t append_formatted(LogStream* stream, const char* format, va_list args)
{
    char block[1024];
    va_list again;
    va_copy(again, args);
    const int length = std::vsnprintf(block, sizeof block, format, args);
    char* text = block;
    if (length >= static_cast<int>(sizeof block))
    {
        text = static_cast<char*>(std::malloc(static_cast<size_t>(length) + 1));
        if (text != nullptr)
            std::vsnprintf(text, static_cast<size_t>(length) + 1, format, again);
        else
            note_failure(stream, ENOMEM);
    }
    va_end(again);
    const bool good = length >= 0 && text != nullptr && append(stream, text, static_cast<size_t>(length));
    if (text != block)
        std::free(text);
    return good ? length : -1;
}

struct Operations
{
    static uint64_t read(void*, uint64_t, uint64_t, void*)
    {
        return 0;
    }

    static uint64_t write(const void* buffer, uint64_t item_size, uint64_t item_count, void* c)
    {
        LogStream* stream = self(c);
        if (stream == nullptr || buffer == nullptr || item_size == 0 || item_count == 0)
            return 0;
        if (item_count > SIZE_MAX / item_size)
        {
            note_failure(stream, EINVAL);
            return 0;
        }
        const uint64_t before = text_size(stream);
        if (append(stream, static_cast<const char*>(buffer), static_cast<size_t>(item_size * item_count)))
            return item_count;
        return (std::max(text_size(stream), before) - before) / item_size;
    }

    static int32_t seek64(void* c, int64_t offset, int32_t origin)
    {
        const LogStream* stream = self(c);
        if (stream == nullptr)
            return -1;
        const auto here = static_cast<int64_t>(text_size(stream));
        if (origin == GIO_SEEK_SET ? offset == here : offset == 0)
            return 0;
        errno = EINVAL;
        return -1;
    }

    static int64_t tell64(void* c)
    {
        const LogStream* stream = self(c);
        return stream != nullptr ? static_cast<int64_t>(text_size(stream)) : -1;
    }

    static int32_t flush(void* c)
    {
        LogStream* stream = self(c);
        if (stream == nullptr || stream->error != 0)
            return -1;
        return stream->kind->flush == nullptr || stream->kind->flush(stream) ? 0 : -1;
    }

    static char* gets(char*, int32_t, void*)
    {
        return nullptr;
    }

    static int32_t puts(const char* text, void* c)
    {
        LogStream* stream = self(c);
        return stream != nullptr && text != nullptr && append(stream, text, std::strlen(text)) ? 0 : -1;
    }

    static int32_t getc(void*)
    {
        return -1;
    }

    static int32_t putc(int32_t byte, void* c)
    {
        LogStream* stream = self(c);
        const char one = static_cast<char>(byte);
        return stream != nullptr && append(stream, &one, 1) ? byte & 0xFF : -1;
    }

    static const char* name(void* c)
    {
        const LogStream* stream = self(c);
        return stream != nullptr ? stream->path : nullptr;
    }

    static int32_t print(void* c, const char* format, va_list args)
    {
        LogStream* stream = self(c);
        if (stream == nullptr || format == nullptr)
            return -1;
        if (stream->error != 0)
            return -1;
        if (std::strcmp(format, "%s") != 0)
            return append_formatted(stream, format, args);
        const char* text = va_arg(args, const char*);
        if (text == nullptr)
            text = "(null)";
        const size_t length = std::strlen(text);
        return append(stream, text, length) ? static_cast<int32_t>(std::min<size_t>(length, INT32_MAX)) : -1;
    }

    // A failure stays.
    static void clear_error(void*) {}

    static int32_t eof(void* c)
    {
        return self(c) != nullptr ? 0 : -1;
    }

    static int32_t error(void* c)
    {
        const LogStream* stream = self(c);
        return stream != nullptr ? (stream->error != 0 ? 1 : 0) : -1;
    }

    static int32_t last_error(void* c)
    {
        const LogStream* stream = self(c);
        return stream != nullptr ? stream_operations::code_of(stream->error) : GIO_ERR_BAD_HANDLE;
    }

    static int32_t close(void* c)
    {
        LogStream* stream = self(c);
        return stream != nullptr ? orvlog_stream_close(&stream->handle, nullptr) : GIO_ERR_BAD_HANDLE;
    }

    static int64_t size(void* c)
    {
        return tell64(c);
    }
};

}  // namespace

bool note_failure(LogStream* stream, int error)
{
    if (stream->error == 0)
        stream->error = error != 0 ? error : EIO;
    return false;
}

LogStream* create_stream(size_t size, const Kind* kind, const char* path)
{
    if (path == nullptr)
    {
        errno = EINVAL;
        return nullptr;
    }
    auto* stream = static_cast<LogStream*>(std::calloc(1, size));
    char* own_path = static_cast<char*>(std::malloc(std::strlen(path) + 1));
    if (stream == nullptr || own_path == nullptr)
    {
        std::free(stream);
        std::free(own_path);
        errno = ENOMEM;
        return nullptr;
    }
    stream->tag = kStreamTag;
    stream->kind = kind;
    stream->path = std::strcpy(own_path, path);
    stream->handle = {stream, GIO_KIND_FORWARD_ONLY, &stream_operations::kTable<Operations>};
    const int error = open_file(&stream->file, path);
    if (error == 0)
        return stream;
    destroy_stream(stream, error);
    return nullptr;
}

GIO_Stream* destroy_stream(LogStream* stream, int error)
{
    close_file(&stream->file);
    std::free(stream->path);
    stream->tag = 0;
    std::free(stream);
    errno = error;
    return nullptr;
}

}  // namespace orvlog::log_stream

using orvlog::log_stream::LogStream;

int32_t orvlog_stream_close(GIO_Stream* handle, ORVLOG_StreamReport* report)
{
    LogStream* stream = handle != nullptr ? orvlog::log_stream::self(handle->instance) : nullptr;
    ORVLOG_StreamReport own = {};
    if (stream != nullptr)
    {
        stream->kind->close(stream, &own);
        own.error = stream->error;
        orvlog::log_stream::destroy_stream(stream, 0);
    }
    else
    {
        own.error = EBADF;
    }
    if (report != nullptr)
        *report = own;
    return orvlog::stream_operations::code_of(own.error);
}

int32_t orvlog_stream_error(const GIO_Stream* handle)
{
    const LogStream* stream = handle != nullptr ? orvlog::log_stream::self(handle->instance) : nullptr;
    return stream != nullptr ? stream->error : EBADF;
}
