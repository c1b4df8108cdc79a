// Rows on their way out of a log: their values are given one after the other, in the order of the table's columns.

#pragma once

#include "inspect/export/schema.h"

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace orvlog::inspect
{

class RowWriter
{
public:
    virtual ~RowWriter() = default;

    // A row is begun, given a value for each column, and ended. Throws std::logic_error for too few or too many, and
    // for a null where there is none.
    void begin(Table table);
    void end();
    RowWriter& null();
    RowWriter& integer(std::optional<int64_t> value);
    // What isn't finite is a null.
    RowWriter& real(std::optional<double> value);
    // Comes out as UTF-8, without the byte 0, whatever it is.
    RowWriter& text(std::optional<std::string_view> value);

protected:
    virtual void begin_row(Table table) = 0;
    virtual void put_null(const Column& column) = 0;
    virtual void put_integer(const Column& column, int64_t value) = 0;
    virtual void put_real(const Column& column, double value) = 0;
    virtual void put_text(const Column& column, std::string_view value) = 0;
    virtual void end_row(Table table) = 0;

private:
    const Column& next(ColumnType type, bool null);

    Table table_{};
    std::span<const Column> columns_;
    size_t at_ = 0;
};

// Text as UTF-8: what is none, and the byte 0, is U+FFFD.
std::string_view as_utf8(std::string_view text, std::string& room);

}  // namespace orvlog::inspect
