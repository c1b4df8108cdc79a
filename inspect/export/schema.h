// The tables that logs are exported to: one list, from which files, databases and pages are made.

#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <string>
#include <string_view>

namespace orvlog::inspect
{

// Rises with every change by which an earlier export can't be asked as before.
constexpr int kTablesVersion = 1;

enum class ColumnType : uint8_t
{
    text,     // UTF-8
    integer,  // signed, 64 bits
    real      // double
};

struct Column
{
    std::string_view name;
    ColumnType type;
    bool may_be_null;
    std::string_view meaning;  // with its unit
};

enum class Table : uint8_t
{
    jobs,
    pages,
    calls,
    operators,
    operands,
    colours,
    paths,
    shapes,
    clips,
    images,
    engines,
    fonts,
    texts,
    glyphs,
    tickets,
    warnings,
    damage,
    segments,  // these two only with the content
    bytes
};

constexpr size_t kTables = 19;

struct TableForm
{
    std::string_view name;
    std::string_view meaning;  // what a row is
    size_t key;                // so many columns from the first on tell a row from all others
    std::span<const Column> columns;
    bool of_content;  // filled only on demand
};

// In the order of the enumerators.
std::span<const TableForm> table_forms();

inline const TableForm& form_of(Table table)
{
    return table_forms()[static_cast<size_t>(table)];
}

// "text", "integer", "real".
std::string_view type_name(ColumnType type);

// All of it as an object of JSON.
std::string schema_json();

}  // namespace orvlog::inspect
