// A stream of Zstandard frames, each closed when the journal is full.

#include "clients/stream/log-stream.h"
#include "clients/stream/zstd-frames.h"
#include "clients/stream/zstd-journal.h"

#include <zstd.h>

#include <cerrno>
#include <cstdlib>

namespace orvlog::log_stream
{

namespace
{

constexpr size_t kFrameText = size_t{1} << 20;
constexpr int kLevel = 1;

struct ZstdStream
{
    LogStream base;
    Journal journal;
    ZSTD_CCtx* coder;
    char* frame;  // room for a whole frame
    size_t frame_room;
    uint64_t frames_end;
};

ZstdStream* zstd(LogStream* stream)
{
    return reinterpret_cast<ZstdStream*>(stream);
}

// So that the text of a full journal has its place whatever else fills the disk. Not all file systems can; and a disk
// without room for the longest frame may have it for the next one. If it hasn't, the text stays in the journal.
void reserve_next_frame(LogStream* stream)
{
    const ZstdStream* own = zstd(stream);
    if (stream->file.is_file)
        reserve_file(&stream->file, own->frames_end, own->frames_end + own->frame_room, false);
}

int write_frame(LogStream* stream, size_t size)
{
    ZstdStream* own = zstd(stream);
    size_t done = 0;
    const int error = stream->file.is_file ? write_at(&stream->file, own->frame, size, own->frames_end)
                                           : write_next(&stream->file, own->frame, size, &done);
    if (error == 0)
        own->frames_end += size;
    return error;
}

// What was printed becomes a frame. When that fails, it stays in the journal.
bool end_frame(LogStream* stream)
{
    ZstdStream* own = zstd(stream);
    const auto count = static_cast<size_t>(stream->next - stream->begin);
    if (count == 0)
        return true;
    const size_t size = ZSTD_compress2(own->coder, own->frame, own->frame_room, stream->begin, count);
    if (ZSTD_isError(size))
        return note_failure(stream, ENOMEM);
    int error = write_frame(stream, size);
    if (error != 0)
        return note_failure(stream, error);
    stream->begin_place += count;
    stream->next = stream->begin;
    if (own->journal.bytes != nullptr)
        error = empty_journal(&own->journal, own->frames_end, stream->begin_place, own->frame, size);
    return error == 0 || note_failure(stream, error);
}

bool make_room(LogStream* stream)
{
    if (!end_frame(stream))
        return false;
    reserve_next_frame(stream);
    return true;
}

void printed(LogStream* stream)
{
    ZstdStream* own = zstd(stream);
    if (own->journal.bytes == nullptr)
        return;
    const int error = set_journal_length(&own->journal, static_cast<size_t>(stream->next - stream->begin));
    if (error != 0)
        note_failure(stream, error);
}

void free_parts(LogStream* stream)
{
    ZstdStream* own = zstd(stream);
    ZSTD_freeCCtx(own->coder);
    std::free(own->frame);
    if (own->journal.bytes == nullptr)
        std::free(stream->begin);
}

// Frames, table, and nothing behind them. The journal goes when all its text is in frames.
void close_zstd(LogStream* stream, ORVLOG_StreamReport* report)
{
    ZstdStream* own = zstd(stream);
    const bool in_frames = stream->begin == nullptr || end_frame(stream);
    report->text_bytes = text_size(stream);
    report->file_bytes = own->frames_end;
    int error = 0;
    if (stream->file.is_file && in_frames && own->frames_end > 0)
        error = write_seek_table(&stream->file, own->frames_end, static_cast<uint64_t>(stream->end - stream->begin),
                                 stream->begin_place, &report->file_bytes);
    if (error != 0)
        note_failure(stream, error);
    if (stream->file.is_file)
        error = cut_file(&stream->file, report->file_bytes);
    if (error != 0)
        note_failure(stream, error);
    free_parts(stream);
    report->journal = own->journal.path != nullptr && !in_frames ? 1 : 0;
    if (own->journal.path != nullptr)
        close_journal(&own->journal, !in_frames);
    if (error = close_file(&stream->file); error != 0)
        note_failure(stream, error);
}

constexpr Kind kZstdKind = {make_room, printed, nullptr, close_zstd};

int make_coder(ZstdStream* own)
{
    own->frame_room = ZSTD_compressBound(kFrameText);
    own->frame = static_cast<char*>(std::malloc(own->frame_room));
    own->coder = ZSTD_createCCtx();
    if (own->frame == nullptr || own->coder == nullptr)
        return ENOMEM;
    ZSTD_CCtx_setParameter(own->coder, ZSTD_c_compressionLevel, kLevel);
    ZSTD_CCtx_setParameter(own->coder, ZSTD_c_checksumFlag, 1);
    return 0;
}

// A pipe has no journal beside it.
int make_window(LogStream* stream)
{
    ZstdStream* own = zstd(stream);
    size_t size = kFrameText;
    if (stream->file.is_file)
    {
        const int error = begin_journal(&own->journal, kFrameText);
        if (error != 0)
            return error;
        stream->begin = journal_text(&own->journal);
        size = own->journal.capacity;
    }
    else
    {
        stream->begin = static_cast<char*>(std::malloc(size));
        if (stream->begin == nullptr)
            return ENOMEM;
    }
    stream->next = stream->begin;
    stream->end = stream->begin + size;
    return 0;
}

GIO_Stream* begin_zstd_stream(LogStream* stream)
{
    ZstdStream* own = zstd(stream);
    int error = make_coder(own);
    if (error == 0 && stream->file.is_file)
        error = open_journal(&own->journal, stream->path);
    if (error == 0 && stream->file.is_file)
        error = cut_file(&stream->file, 0);
    if (error == 0)
        error = make_window(stream);
    // A disk that is full from the beginning is no reason not to print.
    if (is_full(error))
    {
        note_failure(stream, error);
        error = 0;
    }
    if (error != 0)
    {
        free_parts(stream);
        if (own->journal.path != nullptr)
            close_journal(&own->journal, true);
        return destroy_stream(stream, error);
    }
    if (stream->error == 0)
        reserve_next_frame(stream);
    return &stream->handle;
}

}  // namespace

}  // namespace orvlog::log_stream

GIO_Stream* orvlog_open_zstd_stream(const char* path)
{
    using namespace orvlog::log_stream;
    LogStream* stream = create_stream(sizeof(ZstdStream), &kZstdKind, path);
    return stream != nullptr ? begin_zstd_stream(stream) : nullptr;
}
