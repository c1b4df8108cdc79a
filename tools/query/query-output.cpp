#include "tools/query/query-output.h"

#include "tools/shared/look.h"

#include <algorithm>

namespace orvlog::tool
{

namespace
{

using orvlog::inspect::QueryValue;

constexpr size_t kRowsToMeasure = 1000;
constexpr size_t kWidestColumn = 60;

std::string hex_of(std::string_view bytes)
{
    constexpr char kDigits[] = "0123456789abcdef";
    std::string text;
    for (const char c : bytes)
    {
        text += kDigits[static_cast<unsigned char>(c) >> 4];
        text += kDigits[c & 15];
    }
    return text;
}

std::string text_of(const QueryValue& value)
{
    switch (value.kind)
    {
    case QueryValue::Kind::integer:
        return std::to_string(value.integer);
    case QueryValue::Kind::real:
        return number_text(value.real);
    case QueryValue::Kind::text:
        return std::string(value.text);
    case QueryValue::Kind::bytes:
        return hex_of(value.text);
    case QueryValue::Kind::null:
        break;
    }
    return {};
}

bool is_number(const QueryValue& value)
{
    return value.kind == QueryValue::Kind::integer || value.kind == QueryValue::Kind::real;
}

size_t width_of(std::string_view text)
{
    return static_cast<size_t>(std::ranges::count_if(text, [](char c) { return (c & 0xC0) != 0x80; }));
}

class TableRows : public QueryOutput
{
public:
    void begin(const std::vector<std::string>& columns) override
    {
        std::vector<Cell> header;
        for (const std::string& column : columns)
            header.push_back({printable(column), false});
        held_.push_back(std::move(header));
    }

    bool row(std::span<const QueryValue> row) override
    {
        std::vector<Cell> cells;
        for (const QueryValue& value : row)
            cells.push_back({value.kind == QueryValue::Kind::null ? "-" : printable(text_of(value)), is_number(value)});
        if (!measured_)
        {
            held_.push_back(std::move(cells));
            return held_.size() <= kRowsToMeasure || put_held();
        }
        return put_line(cells);
    }

    void end() override
    {
        if (!measured_)
            put_held();
    }

private:
    struct Cell
    {
        std::string text;
        bool right;
    };

    bool put_held()
    {
        measured_ = true;
        widths_.assign(held_.empty() ? 0 : held_.front().size(), 0);
        for (const std::vector<Cell>& line : held_)
            for (size_t i = 0; i < line.size(); ++i)
                widths_[i] = std::max(widths_[i], std::min(kWidestColumn, width_of(line[i].text)));
        // A heading stands where its numbers do.
        if (held_.size() > 1)
            for (size_t i = 0; i < widths_.size(); ++i)
                held_[0][i].right = held_[1][i].right;
        bool good = true;
        for (const std::vector<Cell>& line : held_)
            good = good && put_line(line);
        held_.clear();
        return good;
    }

    bool put_line(const std::vector<Cell>& cells) const
    {
        std::string line;
        for (size_t i = 0; i < cells.size(); ++i)
        {
            const size_t width = width_of(cells[i].text);
            const std::string blanks(widths_[i] > width ? widths_[i] - width : 0, ' ');
            line.append(i > 0 ? "  " : "").append(cells[i].right ? blanks : "").append(cells[i].text);
            if (!cells[i].right && i + 1 < cells.size())
                line += blanks;
        }
        return put(line + "\n");
    }

    std::vector<std::vector<Cell>> held_;
    std::vector<size_t> widths_;
    bool measured_ = false;
};

class JsonRows : public QueryOutput
{
public:
    void begin(const std::vector<std::string>& columns) override
    {
        columns_ = columns;
        put("[");
    }

    bool row(std::span<const QueryValue> row) override
    {
        nlohmann::ordered_json object = nlohmann::ordered_json::object();
        for (size_t i = 0; i < row.size(); ++i)
        {
            nlohmann::ordered_json value;
            if (row[i].kind == QueryValue::Kind::integer)
                value = row[i].integer;
            else if (row[i].kind == QueryValue::Kind::real)
                value = row[i].real;
            else if (row[i].kind != QueryValue::Kind::null)
                value = text_of(row[i]);
            object[columns_[i]] = std::move(value);
        }
        const bool good = put((any_ ? ",\n" : "\n") + json_text(object));
        any_ = true;
        return good;
    }

    void end() override
    {
        // An answer that never began has no end.
        if (!columns_.empty())
            put(any_ ? "\n]\n" : "]\n");
    }

private:
    std::vector<std::string> columns_;
    bool any_ = false;
};

class CsvRows : public QueryOutput
{
public:
    void begin(const std::vector<std::string>& columns) override
    {
        std::string line;
        for (const std::string& column : columns)
            line.append(line.empty() ? "" : ",").append(quoted(column));
        put(line + "\n");
    }

    bool row(std::span<const QueryValue> row) override
    {
        std::string line;
        for (size_t i = 0; i < row.size(); ++i)
        {
            if (i > 0)
                line += ',';
            line += row[i].kind == QueryValue::Kind::text ? quoted(std::string(row[i].text)) : text_of(row[i]);
        }
        return put(line + "\n");
    }

    void end() override {}

private:
    static std::string quoted(const std::string& text)
    {
        if (!text.empty() && text.find_first_of(",\"\r\n") == std::string::npos)
            return text;
        std::string value = "\"";
        for (const char c : text)
            value.append(c == '"' ? 2 : 1, c);
        return value + "\"";
    }
};

}  // namespace

std::unique_ptr<QueryOutput> table_rows()
{
    return std::make_unique<TableRows>();
}

std::unique_ptr<QueryOutput> json_rows()
{
    return std::make_unique<JsonRows>();
}

std::unique_ptr<QueryOutput> csv_rows()
{
    return std::make_unique<CsvRows>();
}

}  // namespace orvlog::tool
