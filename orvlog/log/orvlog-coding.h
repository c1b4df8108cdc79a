// The life of a writer's coder: it begins behind the plain first tag of a log that is to be coded and ends behind the
// root's closing tag. Between the two, all that the writer prints goes through it.

#pragma once

#include "orvlog/log/orvlog-writer.h"

#include <cstdarg>
#include <cstdint>

// The longest text that a single formatted print brings through the coder; the rest of it is lost. Readers
// of coded logs rely on it.
constexpr uint32_t ORVLOG_CODED_PRINT_LIMIT = 198;

// Makes the coder of a log that is to be coded, from the writer's allocator. Without memory for it, the log goes on
// plain.
void orvlog_writer_start_coding(ORVLOG_Writer* writer);

// Writes the coder's last byte and releases the coder; the writer is plain from here on. Copies of the writer must not
// be used afterwards unless they have been detached.
void orvlog_writer_end_coding(ORVLOG_Writer* writer);

// Parts a copy of a writer from the coder, which stays the other's: it prints plain text to `stream`, or nothing at
// all if that is null.
void orvlog_writer_detach(ORVLOG_Writer* writer, GIO_Stream* stream);

// Whether what is printed now goes through a coder.
inline bool orvlog_writer_is_coded(const ORVLOG_Writer* writer)
{
    return writer->coder != nullptr && writer->compress == 1;
}

// The most bytes of one print that reach the log.
inline uint64_t orvlog_writer_print_limit(const ORVLOG_Writer* writer)
{
    return orvlog_writer_is_coded(writer) ? ORVLOG_CODED_PRINT_LIMIT : UINT64_MAX;
}

// For the writer's own prints: text of any length, and a formatted print, whose length it gives. The writer is coded
// and its stream can write.
void orvlog_coding_put(const ORVLOG_Writer* writer, const char* text, uint32_t length);
int32_t orvlog_coding_vprint(const ORVLOG_Writer* writer, const char* format, va_list args);
