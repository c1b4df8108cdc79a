// A stream that writes at each flush.

#include "clients/stream/log-stream.h"

#include <cerrno>
#include <cstdlib>

namespace orvlog::log_stream
{

namespace
{

constexpr size_t kBufferSize = size_t{1} << 16;

// What couldn't be written is not in the text.
bool write_out(LogStream* stream)
{
    const auto count = static_cast<size_t>(stream->next - stream->begin);
    size_t done = 0;
    const int error = count > 0 ? write_next(&stream->file, stream->begin, count, &done) : 0;
    stream->begin_place += done;
    stream->next = stream->begin;
    return error == 0 || note_failure(stream, error);
}

void close_plain(LogStream* stream, ORVLOG_StreamReport* report)
{
    if (stream->error == 0)
        write_out(stream);
    report->text_bytes = report->file_bytes = text_size(stream);
    std::free(stream->begin);
    if (const int error = close_file(&stream->file); error != 0)
        note_failure(stream, error);
}

constexpr Kind kPlainKind = {write_out, nullptr, write_out, close_plain};

}  // namespace

GIO_Stream* begin_plain_stream(LogStream* stream)
{
    stream->kind = &kPlainKind;
    const int error = stream->file.is_file ? cut_file(&stream->file, 0) : 0;
    if (error != 0)
        return destroy_stream(stream, error);
    stream->begin = static_cast<char*>(std::malloc(kBufferSize));
    if (stream->begin == nullptr)
        return destroy_stream(stream, ENOMEM);
    stream->next = stream->begin;
    stream->end = stream->begin + kBufferSize;
    return &stream->handle;
}

}  // namespace orvlog::log_stream

GIO_Stream* orvlog_open_file_stream(const char* path)
{
    using namespace orvlog::log_stream;
    LogStream* stream = create_stream(sizeof(LogStream), nullptr, path);
    return stream != nullptr ? begin_plain_stream(stream) : nullptr;
}
