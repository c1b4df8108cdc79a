// The file beside a log of Zstandard frames that holds what is in no frame yet. docs/compressed-logs.md has its form.

#ifndef CLIENTS_STREAM_ZSTD_JOURNAL_H
#define CLIENTS_STREAM_ZSTD_JOURNAL_H

#include "clients/stream/mapped-file.h"

#include <cstddef>
#include <cstdint>

namespace orvlog::log_stream
{

struct Journal
{
    HostFile file;
    char* path;
    char* bytes;  // the whole file, or where it can't be mapped a copy of it; null without a journal
    size_t size;
    size_t capacity;  // bytes of text that fit
    size_t written;   // of the text of a copy, what is in the file
    bool is_mapped;
};

// Opens `log_path`.journal and leaves it as it is. A file of that name which is no journal is not touched (EEXIST).
int open_journal(Journal* journal, const char* log_path);
// Makes it a journal without text, for a log without frames. Takes less than `capacity`, if the disk has no more.
int begin_journal(Journal* journal, size_t capacity);
char* journal_text(const Journal* journal);
// So much text stands in it. 0 or a value of errno.
int set_journal_length(Journal* journal, size_t length);
// All its text has gone into frames, which end at `frames_end` of the log with the `count` bytes at `last`.
int empty_journal(Journal* journal, uint64_t frames_end, uint64_t text_before, const void* last, size_t count);
// Removes it, or leaves it for the readers of the log.
void close_journal(Journal* journal, bool keep);

}  // namespace orvlog::log_stream

#endif
