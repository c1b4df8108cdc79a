// What the log streams share: the record, the operations of GIO_Stream, and the ways to write into a window of
// memory, which each kind empties in its own way.

#ifndef CLIENTS_STREAM_LOG_STREAM_H
#define CLIENTS_STREAM_LOG_STREAM_H

#include "clients/stream/mapped-file.h"
#include "clients/stream/orvlog-stream.h"

#include <cstddef>
#include <cstdint>

namespace orvlog::log_stream
{

struct LogStream;

struct Kind
{
    // Makes room between `next` and `end`. False after a failure, which is noted.
    bool (*make_room)(LogStream* stream);
    // What stands up to `next` is a whole print; null if nothing is to be done.
    void (*printed)(LogStream* stream);
    // False after a failure, which is noted.
    bool (*flush)(LogStream* stream);
    // Brings what was printed to its place and lets go of everything but the record. Fills the report.
    void (*close)(LogStream* stream, ORVLOG_StreamReport* report);
};

struct LogStream
{
    uint32_t tag;
    int32_t error;  // first failure, a value of errno
    const Kind* kind;
    GIO_Stream handle;
    HostFile file;
    char* path;
    char* begin;           // of the window
    char* next;            // where the next byte goes
    char* end;             // behind the last byte that may be written
    uint64_t begin_place;  // of the window in the text
};

// Takes a record of `size` bytes, which begins with a LogStream, and opens its file. Null with errno set.
LogStream* create_stream(size_t size, const Kind* kind, const char* path);
// For an opening that fails. Gives null, with errno set.
GIO_Stream* destroy_stream(LogStream* stream, int error);
// The first failure counts.
bool note_failure(LogStream* stream, int error);

// Bytes of text so far.
inline uint64_t text_size(const LogStream* stream)
{
    return stream->begin_place + static_cast<uint64_t>(stream->next - stream->begin);
}

// Makes a stream that was opened as mapped one that writes at each flush.
GIO_Stream* begin_plain_stream(LogStream* stream);

}  // namespace orvlog::log_stream

#endif
