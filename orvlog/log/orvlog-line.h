// The text of one print, put together on the stack and given to the writer in one piece. Only what is longer than
// the line goes in several; the flush comes at the end. These few functions are what a logged call spends its time
// in, so they stand in a header and copy short texts without a call.

#pragma once

#include "orvlog/log/orvlog-number.h"
#include "orvlog/log/orvlog-writer.h"

#include <cstdint>
#include <cstring>
#include <string_view>

struct ORVLOG_Line
{
    ORVLOG_Writer* writer;
    uint32_t length;
    char text[2048];
};

// Copies by two blocks that may overlap, which for short texts of any length is less than a call. Nothing is read
// or written outside the `size` bytes.
inline void orvlog_copy_text(char* to, const char* from, size_t size)
{
    const auto both_ends = [=](auto block)
    {
        std::memcpy(&block, from + size - sizeof block, sizeof block);
        auto first = block;
        std::memcpy(&first, from, sizeof first);
        std::memcpy(to, &first, sizeof first);
        std::memcpy(to + size - sizeof block, &block, sizeof block);
    };
    struct Block
    {
        uint64_t words[2];
    };
    struct WideBlock
    {
        uint64_t words[4];
    };
    if (size > sizeof(WideBlock) * 2)
        std::memcpy(to, from, size);
    else if (size > sizeof(Block) * 2)
        both_ends(WideBlock{});
    else if (size >= sizeof(Block))
        both_ends(Block{});
    else if (size >= sizeof(uint64_t))
        both_ends(uint64_t{0});
    else if (size >= sizeof(uint32_t))
        both_ends(uint32_t{0});
    else if (size >= sizeof(uint16_t))
        both_ends(uint16_t{0});
    else if (size == 1)
        *to = *from;
}

inline void orvlog_line_start(ORVLOG_Line* line, ORVLOG_Writer* writer)
{
    line->writer = writer;
    line->length = 0;
}

[[gnu::noinline, gnu::cold]] inline void orvlog_line_put(ORVLOG_Line* line)
{
    line->text[line->length] = '\0';
    orvlog_writer_put(line->writer, line->text, line->length);
    line->length = 0;
}

// Room for `size` more bytes and a terminator; `size` is below that of a line.
inline char* orvlog_line_room(ORVLOG_Line* line, size_t size)
{
    if (line->length + size >= sizeof line->text)
        orvlog_line_put(line);
    return line->text + line->length;
}

inline void orvlog_line_char(ORVLOG_Line* line, char c)
{
    *orvlog_line_room(line, 1) = c;
    ++line->length;
}

[[gnu::noinline, gnu::cold]] inline void orvlog_line_long_text(ORVLOG_Line* line, std::string_view text)
{
    while (!text.empty())
    {
        const std::string_view piece(text.data(), text.size() < 512 ? text.size() : 512);
        orvlog_copy_text(orvlog_line_room(line, piece.size()), piece.data(), piece.size());
        line->length += static_cast<uint32_t>(piece.size());
        text.remove_prefix(piece.size());
    }
}

inline void orvlog_line_text(ORVLOG_Line* line, std::string_view text)
{
    if (line->length + text.size() >= sizeof line->text)
        return orvlog_line_long_text(line, text);
    orvlog_copy_text(line->text + line->length, text.data(), text.size());
    line->length += static_cast<uint32_t>(text.size());
}

// " %s=\""
inline void orvlog_line_name(ORVLOG_Line* line, std::string_view name)
{
    if (line->length + name.size() + 3 >= sizeof line->text)
    {
        orvlog_line_char(line, ' ');
        orvlog_line_text(line, name);
        orvlog_line_text(line, "=\"");
        return;
    }
    char* to = line->text + line->length;
    *to = ' ';
    orvlog_copy_text(to + 1, name.data(), name.size());
    std::memcpy(to + 1 + name.size(), "=\"", 2);
    line->length += static_cast<uint32_t>(name.size()) + 3;
}

inline void orvlog_line_uint(ORVLOG_Line* line, uint32_t value)
{
    line->length += orvlog_format_uint(orvlog_line_room(line, ORVLOG_NUMBER_SIZE), value);
}

inline void orvlog_line_int(ORVLOG_Line* line, int32_t value)
{
    line->length += orvlog_format_int(orvlog_line_room(line, ORVLOG_NUMBER_SIZE), value);
}

inline void orvlog_line_hex(ORVLOG_Line* line, uint32_t value)
{
    line->length += orvlog_format_hex(orvlog_line_room(line, ORVLOG_NUMBER_SIZE), value);
}

inline void orvlog_line_double(ORVLOG_Line* line, double value)
{
    line->length += orvlog_format_double(orvlog_line_room(line, ORVLOG_NUMBER_SIZE), value);
}

inline void orvlog_line_float(ORVLOG_Line* line, float value)
{
    line->length += orvlog_format_float(orvlog_line_room(line, ORVLOG_NUMBER_SIZE), value);
}

// Gives the text to the stream and flushes.
inline void orvlog_line_finish(ORVLOG_Line* line)
{
    line->text[line->length] = '\0';
    orvlog_writer_emit(line->writer, line->text, line->length);
}

// The closing quote, and the end.
inline void orvlog_line_finish_value(ORVLOG_Line* line)
{
    orvlog_line_char(line, '"');
    orvlog_line_finish(line);
}
