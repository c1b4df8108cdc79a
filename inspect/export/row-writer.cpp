#include "inspect/export/row-writer.h"

#include <algorithm>
#include <cmath>
#include <stdexcept>
#include <string>

namespace orvlog::inspect
{

namespace
{

// Bytes of the character at the beginning of a text; 0 if it is none.
size_t character_size(std::string_view text)
{
    const auto byte = [text](size_t at) { return static_cast<unsigned char>(text[at]); };
    const unsigned first = byte(0);
    if (first < 0x80)
        return first != 0 ? 1 : 0;
    const size_t size = first >= 0xF0 ? 4 : first >= 0xE0 ? 3 : 2;
    if (first < 0xC2 || first > 0xF4 || text.size() < size)
        return 0;
    for (size_t i = 1; i < size; ++i)
        if ((byte(i) & 0xC0) != 0x80)
            return 0;
    const unsigned second = byte(1);
    const bool bad = (first == 0xE0 && second < 0xA0) || (first == 0xED && second > 0x9F) ||
                     (first == 0xF0 && second < 0x90) || (first == 0xF4 && second > 0x8F);
    return bad ? 0 : size;
}

}  // namespace

std::string_view as_utf8(std::string_view text, std::string& room)
{
    const bool plain = std::ranges::all_of(text, [](char c) { return c > 0; });
    if (plain)
        return text;
    room.clear();
    while (!text.empty())
    {
        const size_t size = character_size(text);
        if (size == 0)
            room += "\xEF\xBF\xBD";
        else
            room.append(text.substr(0, size));
        text.remove_prefix(std::max<size_t>(size, 1));
    }
    return room;
}

void RowWriter::begin(Table table)
{
    table_ = table;
    columns_ = form_of(table).columns;
    at_ = 0;
    begin_row(table);
}

void RowWriter::end()
{
    if (at_ != columns_.size())
        throw std::logic_error("a row of " + std::string(form_of(table_).name) + " is too short");
    end_row(table_);
}

const Column& RowWriter::next(ColumnType type, bool null)
{
    if (at_ >= columns_.size() || (null ? !columns_[at_].may_be_null : columns_[at_].type != type))
        throw std::logic_error("a value that a row of " + std::string(form_of(table_).name) + " hasn't");
    return columns_[at_++];
}

RowWriter& RowWriter::null()
{
    put_null(next(ColumnType::text, true));
    return *this;
}

RowWriter& RowWriter::integer(std::optional<int64_t> value)
{
    if (!value)
        return null();
    put_integer(next(ColumnType::integer, false), *value);
    return *this;
}

RowWriter& RowWriter::real(std::optional<double> value)
{
    if (!value || !std::isfinite(*value))
        return null();
    put_real(next(ColumnType::real, false), *value);
    return *this;
}

RowWriter& RowWriter::text(std::optional<std::string_view> value)
{
    if (!value)
        return null();
    std::string room;
    put_text(next(ColumnType::text, false), as_utf8(*value, room));
    return *this;
}

}  // namespace orvlog::inspect
