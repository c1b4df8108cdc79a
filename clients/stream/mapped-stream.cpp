// A stream over a file that is mapped into memory, one window after the other.

#include "clients/stream/log-stream.h"

#include <algorithm>
#include <cerrno>

namespace orvlog::log_stream
{

namespace
{

constexpr size_t kWindowSize = size_t{256} << 10;
constexpr uint64_t kFirstStep = uint64_t{1} << 20;
constexpr uint64_t kLongestStep = uint64_t{32} << 20;
constexpr uint64_t kShortestStep = 4096;
// Zero bytes that always stand behind the text until the close, so that readers know them from the last bytes of a
// coded log.
constexpr uint64_t kRestKept = 16;

struct MappedStream
{
    LogStream base;
    void* window;
    size_t window_length;
    uint64_t reserved;  // bytes of the file that the disk has room for
    uint64_t warmed;    // of these, bytes that are in memory before they are mapped
};

MappedStream* mapped(LogStream* stream)
{
    return reinterpret_cast<MappedStream*>(stream);
}

// Steps grow with the file, and shrink before a full disk, so that it is used to its end.
bool reserve_more(LogStream* stream)
{
    MappedStream* own = mapped(stream);
    const uint64_t text = text_size(stream);
    uint64_t step = std::clamp(own->reserved / 4, kFirstStep, kLongestStep);
    const uint64_t longest = longest_file();
    if (own->reserved >= longest)
        return note_failure(stream, EFBIG);
    step = std::min(step, longest - own->reserved);
    while (true)
    {
        const int error = reserve_file(&stream->file, own->reserved, own->reserved + step, true);
        if (error == 0)
            break;
        if (!is_full(error) || step <= kShortestStep)
            return note_failure(stream, error);
        step = std::max(step / 2 & ~(kShortestStep - 1), kShortestStep);
    }
    own->reserved += step;
    return own->reserved > text + kRestKept || reserve_more(stream);
}

void drop_window(LogStream* stream)
{
    MappedStream* own = mapped(stream);
    unmap_file(own->window, own->window_length);
    own->window = nullptr;
    stream->begin_place = text_size(stream);
    stream->begin = stream->next = stream->end = nullptr;
}

bool map_window(LogStream* stream)
{
    MappedStream* own = mapped(stream);
    const uint64_t text = text_size(stream);
    drop_window(stream);
    const uint64_t start = text - text % map_granularity();
    const auto length = static_cast<size_t>(std::min<uint64_t>(kWindowSize, own->reserved - start));
    if (own->warmed < start + length)
    {
        warm_file(&stream->file, std::max(own->warmed, text), start + length);
        own->warmed = start + length;
    }
    char* window = static_cast<char*>(map_file(&stream->file, start, length));
    if (window == nullptr)
        return note_failure(stream, errno);
    own->window = window;
    own->window_length = length;
    stream->begin = stream->next = window + (text - start);
    stream->end = window + std::min<uint64_t>(length, own->reserved - kRestKept - start);
    return true;
}

bool make_room(LogStream* stream)
{
    if (text_size(stream) + kRestKept >= mapped(stream)->reserved && !reserve_more(stream))
        return false;
    return map_window(stream);
}

void close_mapped(LogStream* stream, ORVLOG_StreamReport* report)
{
    drop_window(stream);
    report->text_bytes = report->file_bytes = text_size(stream);
    for (const int error : {cut_file(&stream->file, report->text_bytes), close_file(&stream->file)})
        if (error != 0)
            note_failure(stream, error);
}

constexpr Kind kMappedKind = {make_room, nullptr, nullptr, close_mapped};

}  // namespace

}  // namespace orvlog::log_stream

GIO_Stream* orvlog_open_mapped_stream(const char* path)
{
    using namespace orvlog::log_stream;
    LogStream* stream = create_stream(sizeof(MappedStream), &kMappedKind, path);
    if (stream == nullptr)
        return nullptr;
    if (stream->file.can_map && cut_file(&stream->file, 0) == 0 && make_room(stream))
        return &stream->handle;
    // A disk that is full from the beginning says so at the first print.
    stream->error = 0;
    return begin_plain_stream(stream);
}
