#include "inspect/export/staged-rows.h"

#include <charconv>
#include <cstring>
#include <numeric>

namespace orvlog::inspect
{

namespace
{

void append_json(std::string& line, std::string_view text)
{
    constexpr char kDigits[] = "0123456789abcdef";
    for (const char c : text)
    {
        if (c == '"' || c == '\\')
            line += '\\';
        if (static_cast<unsigned char>(c) >= 0x20)
        {
            line += c;
            continue;
        }
        line += "\\u00";
        line += kDigits[static_cast<unsigned char>(c) >> 4];
        line += kDigits[c & 15];
    }
}

template <typename Number> void append_number(std::string& line, Number value)
{
    char text[40];
    line.append(text, std::to_chars(text, text + sizeof text, value).ptr);
}

}  // namespace

uint64_t StagedRows::count() const
{
    return std::accumulate(counts.begin(), counts.end(), uint64_t{0});
}

void JsonRows::begin_row(Table)
{
    line_.assign(1, '{');
}

void JsonRows::name(const Column& column)
{
    line_ += line_.size() > 1 ? ",\"" : "\"";
    line_ += column.name;
    line_ += "\":";
}

void JsonRows::put_null(const Column& column)
{
    name(column);
    line_ += "null";
}

void JsonRows::put_integer(const Column& column, int64_t value)
{
    name(column);
    append_number(line_, value);
}

// Whoever guesses a column's type from its values shall find no whole number in it.
void JsonRows::put_real(const Column& column, double value)
{
    name(column);
    const size_t begin = line_.size();
    append_number(line_, value);
    if (line_.find_first_of(".e", begin) == std::string::npos)
        line_.append(".0");
}

void JsonRows::put_text(const Column& column, std::string_view value)
{
    name(column);
    line_ += '"';
    append_json(line_, value);
    line_ += '"';
}

void JsonRows::end_row(Table table)
{
    line_ += "}\n";
    staged_.tables[static_cast<size_t>(table)].add(line_);
    ++staged_.counts[static_cast<size_t>(table)];
}

void PackedRows::begin_row(Table)
{
    row_.clear();
}

void PackedRows::number(char tag, const void* value)
{
    row_ += tag;
    row_.append(static_cast<const char*>(value), 8);
}

void PackedRows::put_null(const Column&)
{
    row_ += 'n';
}

void PackedRows::put_integer(const Column&, int64_t value)
{
    number('i', &value);
}

void PackedRows::put_real(const Column&, double value)
{
    number('r', &value);
}

void PackedRows::put_text(const Column&, std::string_view value)
{
    const uint64_t size = value.size();
    number('t', &size);
    row_ += value;
}

void PackedRows::end_row(Table table)
{
    const uint64_t size = row_.size();
    Spill& spill = staged_.tables[static_cast<size_t>(table)];
    spill.add({reinterpret_cast<const char*>(&size), sizeof size});
    spill.add(row_);
    ++staged_.counts[static_cast<size_t>(table)];
}

namespace
{

template <typename Number> Number take_number(std::string_view& row)
{
    Number number{};
    std::memcpy(&number, row.data(), sizeof number);
    row.remove_prefix(sizeof number);
    return number;
}

PackedValue take_value(std::string_view& row)
{
    PackedValue value;
    const char tag = row.front();
    row.remove_prefix(1);
    if (tag == 'i')
        value = {PackedValue::Kind::integer, take_number<int64_t>(row), 0, {}};
    else if (tag == 'r')
        value = {PackedValue::Kind::real, 0, take_number<double>(row), {}};
    else if (tag == 't')
    {
        const auto size = take_number<uint64_t>(row);
        value = {PackedValue::Kind::text, 0, 0, row.substr(0, size)};
        row.remove_prefix(size);
    }
    return value;
}

}  // namespace

void read_packed(StagedRows& staged, Table table, const std::function<void(std::span<const PackedValue>)>& take)
{
    std::string held;
    std::vector<PackedValue> values;
    staged.tables[static_cast<size_t>(table)].read(
        [&](std::string_view piece)
        {
            held += piece;
            std::string_view rest = held;
            while (rest.size() >= sizeof(uint64_t))
            {
                std::string_view row = rest;
                const auto size = take_number<uint64_t>(row);
                if (row.size() < size)
                    break;
                rest = row.substr(size);
                row = row.substr(0, size);
                values.clear();
                while (!row.empty())
                    values.push_back(take_value(row));
                take(values);
            }
            held.erase(0, held.size() - rest.size());
        });
}

}  // namespace orvlog::inspect
