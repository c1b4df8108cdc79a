#include "tools/ls/columns.h"

#include "tools/shared/look.h"

#include <algorithm>
#include <array>
#include <cstdint>

namespace orvlog::tool
{

namespace
{

struct ColumnForm
{
    std::string_view name;
    size_t width;
    bool right;
    std::string_view colour;  // of a terminal; empty for none
};

// In the order of Column.
constexpr std::array<ColumnForm, 10> kForms = {{
    {"byte", 12, true, ""},
    {"line", 9, true, ""},
    {"call", 12, true, "\x1b[33m"},
    {"page", 5, true, ""},
    {"kind", 23, false, "\x1b[36m"},
    {"box", 18, false, ""},
    {"clip", 18, false, ""},
    {"operator", 14, false, ""},
    {"colour", 30, false, ""},
    {"text", 24, false, "\x1b[32m"},
}};
constexpr std::string_view kBold = "\x1b[1m";
constexpr std::string_view kPlain = "\x1b[0m";
constexpr size_t kLongestKind = 60;
constexpr size_t kLongestText = 200;

const ColumnForm& form_of(Column column)
{
    return kForms[static_cast<size_t>(column)];
}

// Characters, not bytes.
size_t length_of(std::string_view text)
{
    return static_cast<size_t>(
        std::count_if(text.begin(), text.end(), [](char c) { return (static_cast<unsigned char>(c) & 0xC0) != 0x80; }));
}

std::string cut_to(std::string_view text, size_t length)
{
    if (length_of(text) <= length)
        return std::string(text);
    size_t bytes = 0;
    for (size_t left = length; bytes < text.size(); ++bytes)
        if ((static_cast<unsigned char>(text[bytes]) & 0xC0) != 0x80 && left-- <= 1)
            break;
    return std::string(text.substr(0, bytes)) + "…";
}

std::string padded(const std::string& text, const ColumnForm& form, bool last)
{
    const size_t length = length_of(text);
    const std::string blanks(length < form.width ? form.width - length : 0, ' ');
    if (form.right)
        return blanks + text;
    return last ? text : text + blanks;
}

std::string clip_text(const std::optional<GGO_BoxFloat>& clip)
{
    const bool empty = clip && (clip->gbf_MinX > clip->gbf_MaxX || clip->gbf_MinY > clip->gbf_MaxY);
    return empty ? "nothing" : box_text(clip);
}

std::string cell(const CallRow& row, Column column)
{
    const orvlog::reader::CallSummary& call = row.call;
    switch (column)
    {
    case Column::byte:
        return std::to_string(call.place.byte);
    case Column::line:
        return std::to_string(call.place.line);
    case Column::call:
        return row.address;
    case Column::page:
        return call.page != 0 ? std::to_string(call.page) : "-";
    case Column::kind:
        return printable(call.kind.substr(0, kLongestKind));
    case Column::box:
        return box_text(call.box);
    case Column::clip:
        return clip_text(row.clip);
    case Column::op:
        return call.op.empty() ? "-" : printable(call.op);
    case Column::colour:
        return call.colour.empty() ? "-" : printable(call.colour);
    case Column::text:
        break;
    }
    const bool cut = row.text.size() > kLongestText;
    return row.text.empty() ? "-" : quoted(std::string_view(row.text).substr(0, kLongestText)) + (cut ? "…" : "");
}

template <typename CellOf> std::string line_of(const LineForm& form, std::string_view whole_colour, CellOf cell_of)
{
    std::string line;
    size_t room = form.width != 0 ? form.width : SIZE_MAX;
    for (size_t i = 0; i < form.columns.size() && room > 0; ++i)
    {
        const ColumnForm& column = form_of(form.columns[i]);
        const bool last = i + 1 == form.columns.size();
        std::string text(i > 0 ? 1 : 0, ' ');
        text += padded(cell_of(form.columns[i]), column, last);
        text = cut_to(text, room);
        room -= std::min(room, length_of(text));
        const std::string_view colour = whole_colour.empty() ? column.colour : whole_colour;
        const bool coloured = form.colour && !colour.empty();
        line.append(coloured ? colour : "").append(text).append(coloured ? kPlain : "");
    }
    return line + "\n";
}

struct Character
{
    uint32_t code = 0;
    size_t bytes = 0;  // 0: no UTF-8
};

Character next_character(std::string_view text)
{
    const auto byte = [&text](size_t at) { return static_cast<uint32_t>(static_cast<unsigned char>(text[at])); };
    const uint32_t first = byte(0);
    const size_t count = first < 0x80   ? 1
                         : first < 0xC2 ? 0
                         : first < 0xE0 ? 2
                         : first < 0xF0 ? 3
                         : first < 0xF5 ? 4
                                        : 0;
    if (count == 0 || count > text.size())
        return {};
    uint32_t code = count == 1 ? first : first & (0x7FU >> count);
    for (size_t i = 1; i < count; ++i)
    {
        if ((byte(i) & 0xC0) != 0x80)
            return {};
        code = code << 6 | (byte(i) & 0x3F);
    }
    constexpr std::array<uint32_t, 5> kLeast = {0, 0, 0x80, 0x800, 0x10000};
    const bool good = code >= kLeast[count] && code <= 0x10FFFF && (code < 0xD800 || code > 0xDFFF);
    return good ? Character{code, count} : Character{};
}

// What can't be seen, or turns what stands around it.
bool is_hidden(uint32_t code)
{
    constexpr std::array<std::array<uint32_t, 2>, 13> kRanges = {{{0x00, 0x1F},
                                                                  {0x7F, 0x9F},
                                                                  {0xAD, 0xAD},
                                                                  {0x61C, 0x61C},
                                                                  {0x180B, 0x180F},
                                                                  {0x200B, 0x200F},
                                                                  {0x2028, 0x202E},
                                                                  {0x2060, 0x206F},
                                                                  {0xE000, 0xF8FF},
                                                                  {0xFE00, 0xFE0F},
                                                                  {0xFEFF, 0xFEFF},
                                                                  {0xFFF0, 0xFFFF},
                                                                  {0xE0000, 0x10FFFF}}};
    return std::ranges::any_of(kRanges, [code](const auto& range) { return code >= range[0] && code <= range[1]; });
}

}  // namespace

std::vector<Column> read_columns(std::string_view list)
{
    std::vector<Column> columns;
    while (true)
    {
        const size_t comma = list.find(',');
        const std::string_view name = list.substr(0, comma);
        const auto found = std::ranges::find(kForms, name, &ColumnForm::name);
        if (found == kForms.end())
            return {};
        columns.push_back(static_cast<Column>(found - kForms.begin()));
        if (comma == std::string_view::npos)
            return columns;
        list.remove_prefix(comma + 1);
    }
}

std::string column_names()
{
    std::string names;
    for (const ColumnForm& form : kForms)
        names.append(names.empty() ? "" : ", ").append(form.name);
    return names;
}

std::vector<Column> default_columns(bool places, size_t width)
{
    std::vector<Column> columns;
    if (places)
        columns = {Column::byte, Column::line};
    columns.insert(columns.end(), {Column::call, Column::page, Column::kind, Column::box, Column::clip, Column::op,
                                   Column::colour, Column::text});
    size_t ahead = 0;
    for (const Column column : columns)
        ahead += column <= Column::op ? form_of(column).width + 1 : 0;
    if (width != 0 && width < ahead)
        std::erase(columns, Column::clip);
    return columns;
}

std::string header_line(const LineForm& form)
{
    return line_of(form, kBold, [](Column column) { return std::string(form_of(column).name); });
}

std::string row_line(const CallRow& row, const LineForm& form)
{
    return line_of(form, "", [&row](Column column) { return cell(row, column); });
}

std::string quoted(std::string_view text)
{
    constexpr char kDigits[] = "0123456789abcdef";
    std::string shown = "\"";
    while (!text.empty())
    {
        const Character next = next_character(text);
        const std::string_view bytes = text.substr(0, std::max<size_t>(next.bytes, 1));
        text.remove_prefix(bytes.size());
        if (next.bytes != 0 && !is_hidden(next.code) && next.code != '"' && next.code != '\\')
        {
            shown += bytes;
            continue;
        }
        for (const char c : bytes)
        {
            shown += "\\x";
            shown += kDigits[static_cast<unsigned char>(c) >> 4];
            shown += kDigits[static_cast<unsigned char>(c) & 15];
        }
    }
    return shown + "\"";
}

}  // namespace orvlog::tool
