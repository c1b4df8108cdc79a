// The log writer: all of the XML log passes through it but the text of colour tickets, which their reader prints
// to the stream. It keeps the nesting depth, prints tags and comments, holds back warnings that arrive while an
// element is open, and sends the text either straight to the stream or through the adaptive Huffman coder.
//
// No text but that of warnings is held back in the writer: when a form returns, its text has been given to the stream
// and the stream has been flushed. No stream result is looked at; a failed write loses its text and nothing else. A
// writer belongs to one thread at a time.
//
// The fields of a writer are touched in this folder alone. Other rooms enter and leave elements by the forms below, or
// by the guards in orvlog-scope.h.

#pragma once

#include "holv-core/gio/gio-stream.h"
#include "holv-core/gmm/gmm-allocator.h"
#include "orvlog/log/ahc-coder.h"

#include <cstdarg>
#include <cstdint>
#include <string_view>

#if defined(__MINGW32__) && !defined(__clang__)
#define ORVLOG_PRINTF(text, first) __attribute__((format(gnu_printf, text, first)))
#else
#define ORVLOG_PRINTF(text, first) __attribute__((format(printf, text, first)))
#endif

// The form of the library's own warnings.
#define ORVLOG_WARNING_FORMAT "ORVLOG: WARNING: %s\n"

// A warning that waits for the next closing tag.
struct ORVLOG_Warning
{
    ORVLOG_Warning* next;
    char* text;  // a block of 501 bytes
};

struct ORVLOG_Writer
{
    GIO_Stream* stream;           // the log; not owned
    uint32_t depth;               // 0 at the root tag, 1 inside the root
    ORVLOG_Warning* warnings;     // newest first
    uint32_t element_open;        // 1 from any opening tag to the next closing tag; not a stack
    GMM_Allocator* allocator;     // for warnings; null drops them
    uint32_t compress;            // 1 asks for coded output
    AdaptiveHuffmanCoder* coder;  // null until the root element has made it
};

void orvlog_writer_init(ORVLOG_Writer* writer, GMM_Allocator* allocator, GIO_Stream* stream, uint64_t reserved,
                        uint32_t compress);

// A plain writer that drops its warnings.
constexpr ORVLOG_Writer orvlog_writer_without_warnings(GIO_Stream* stream)
{
    return {stream, 0, nullptr, 0, nullptr, 0, nullptr};
}

// A copy that prints where `writer` does, through the same coder, and drops its own warnings.
ORVLOG_Writer orvlog_writer_copy(const ORVLOG_Writer* writer);

// Puts `stream`, or null for none, in the place of the log's, and gives the one that stood there. What the coder holds
// back goes to the new one. ORVLOG_Redirect in orvlog-scope.h puts the old one back by itself.
GIO_Stream* orvlog_writer_redirect(ORVLOG_Writer* writer, GIO_Stream* stream);

// For what prints straight to the stream.
GIO_Stream* orvlog_writer_stream(const ORVLOG_Writer* writer);
uint32_t orvlog_writer_depth(const ORVLOG_Writer* writer);

// Two blanks for each level, 50 at most. A depth below zero has wrapped and gives 50, too.
const char* orvlog_writer_indent(uint32_t depth);

// The core: prints by the stream's gio_VPrintf, or through the coder when there is one, and flushes. Gives the
// length printed. Coded, a print of more than ORVLOG_CODED_PRINT_LIMIT bytes (orvlog-coding.h) loses its tail.
int32_t orvlog_writer_vprint(ORVLOG_Writer* writer, const char* format, va_list args);
int32_t orvlog_writer_print(ORVLOG_Writer* writer, const char* format, ...) ORVLOG_PRINTF(2, 3);

// Writes a text as it stands, of any length, coded or plain, with no flush: what is made of several pieces ends
// in orvlog_writer_flush. `text` is terminated behind its `length` bytes.
void orvlog_writer_put(ORVLOG_Writer* writer, const char* text, uint64_t length);
void orvlog_writer_flush(ORVLOG_Writer* writer);
// One print of a text as it stands: put, and flush.
void orvlog_writer_emit(ORVLOG_Writer* writer, const char* text, uint64_t length);

// No check at either end.
void orvlog_writer_depth_up(ORVLOG_Writer* writer);
void orvlog_writer_depth_down(ORVLOG_Writer* writer);

// The tag forms print at the indent of the present depth and do not change it. Opening forms set element_open;
// closing forms clear it and write the warnings that wait.
void orvlog_writer_open_element(ORVLOG_Writer* writer, std::string_view name);  // "%s<%s>\n"
void orvlog_writer_open_member(ORVLOG_Writer* writer, std::string_view element,
                               std::string_view member);                         // "%s<%s.%s>\n"
void orvlog_writer_begin_element(ORVLOG_Writer* writer, std::string_view name);  // "%s<%s"; attributes follow
void orvlog_writer_end_tag(ORVLOG_Writer* writer);                               // ">\n"
void orvlog_writer_close_element(ORVLOG_Writer* writer, std::string_view name);  // "%s</%s>\n"
void orvlog_writer_close_member(ORVLOG_Writer* writer, std::string_view element,
                                std::string_view member);  // "%s</%s.%s>\n"
void orvlog_writer_self_close(ORVLOG_Writer* writer);      // "/>\n"

// An element around others: the opening form, and one level deeper; one level up, and the closing form. enter ends
// the tag of an element with attributes, and leave_element closes it.
void orvlog_writer_enter(ORVLOG_Writer* writer);
void orvlog_writer_enter_element(ORVLOG_Writer* writer, std::string_view name);
void orvlog_writer_enter_member(ORVLOG_Writer* writer, std::string_view element, std::string_view member);
void orvlog_writer_leave_element(ORVLOG_Writer* writer, std::string_view name);
void orvlog_writer_leave_member(ORVLOG_Writer* writer, std::string_view element, std::string_view member);

// The end of an element that has attributes and no content: ">\n" and "%s</%s>\n".
void orvlog_writer_end_empty(ORVLOG_Writer* writer, std::string_view name);

// A comment: "\n<!--\n", the text as it stands, "-->\n". Not guarded: inside an unfinished tag it lands there.
void orvlog_writer_comment(ORVLOG_Writer* writer, const char* format, ...) ORVLOG_PRINTF(2, 3);
// As before; gives the length of the text. This is the function that clients get for comments of their own.
int32_t orvlog_writer_vcomment(ORVLOG_Writer* writer, const char* format, va_list args);

// Queues a warning of at most 500 bytes, which comes out as a comment behind the next closing tag, or at once
// when no element is open. Without memory it is lost.
void orvlog_writer_defer_warning(ORVLOG_Writer* writer, const char* format, ...) ORVLOG_PRINTF(2, 3);

// The library's own warnings, in the form of ORVLOG_WARNING_FORMAT. The second one warns only if `*warned` is 0, and
// sets it to 1.
void orvlog_writer_warn(ORVLOG_Writer* writer, const char* text);
void orvlog_writer_warn_once(ORVLOG_Writer* writer, uint32_t* warned, const char* text);

// Writes the warnings that wait, newest first, and empties the queue.
void orvlog_writer_flush_warnings(ORVLOG_Writer* writer);
