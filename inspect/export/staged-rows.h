// The rows of one log, all of them, before they go where they are wanted: as lines of JSON or packed.

#pragma once

#include "inspect/export/row-writer.h"
#include "inspect/export/spill.h"

#include <array>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace orvlog::inspect
{

struct StagedRows
{
    std::array<Spill, kTables> tables;
    std::array<uint64_t, kTables> counts{};

    uint64_t count() const;
};

// An object of JSON in a line for each row, with all columns, in their order.
class JsonRows : public RowWriter
{
public:
    explicit JsonRows(StagedRows& staged) : staged_(staged) {}

private:
    void begin_row(Table table) override;
    void put_null(const Column& column) override;
    void put_integer(const Column& column, int64_t value) override;
    void put_real(const Column& column, double value) override;
    void put_text(const Column& column, std::string_view value) override;
    void end_row(Table table) override;

    void name(const Column& column);

    StagedRows& staged_;
    std::string line_;
};

// Values one behind the other, for PackedReader.
class PackedRows : public RowWriter
{
public:
    explicit PackedRows(StagedRows& staged) : staged_(staged) {}

private:
    void begin_row(Table table) override;
    void put_null(const Column& column) override;
    void put_integer(const Column& column, int64_t value) override;
    void put_real(const Column& column, double value) override;
    void put_text(const Column& column, std::string_view value) override;
    void end_row(Table table) override;

    void number(char tag, const void* value);

    StagedRows& staged_;
    std::string row_;
};

// A value of a packed row; the text is good as long as the row.
struct PackedValue
{
    enum class Kind : uint8_t
    {
        null,
        integer,
        real,
        text
    };

    Kind kind = Kind::null;
    int64_t integer = 0;
    double real = 0;
    std::string_view text;
};

// Gives each packed row of a table.
void read_packed(StagedRows& staged, Table table, const std::function<void(std::span<const PackedValue>)>& take);

}  // namespace orvlog::inspect
