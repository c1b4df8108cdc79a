// What all rows of one log have in common while they are made.

#pragma once

#include "holv-core/ggo/ggo-geometry.h"
#include "inspect/export/row-writer.h"
#include "reader/tree/element.h"

#include <array>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace orvlog::inspect
{

struct ExportOptions
{
    bool texts = false;    // what texts say, which glyphs they take, and words of the log that may tell of its job
    bool content = false;  // segments of paths, and bytes
};

struct ExportJob
{
    RowWriter& rows;
    ExportOptions options;
    std::string key;
    uint64_t call = 0;  // that rows belong to
    std::array<int64_t, kTables> items{};

    // Begins a row with the columns job, call and item; gives its item.
    int64_t begin(Table table)
    {
        rows.begin(table);
        const int64_t item = ++items[static_cast<size_t>(table)];
        rows.text(key).integer(static_cast<int64_t>(call)).integer(item);
        return item;
    }
};

// Attributes as values of rows; nothing where there is none.
std::optional<int64_t> number_of(const orvlog::reader::Element* element, std::string_view name);
std::optional<int64_t> flags_of(const orvlog::reader::Element* element, std::string_view name);
std::optional<double> real_of(const orvlog::reader::Element* element, std::string_view name);
// An enumerator, or "UNKNOWN_VALUE(9)"; nothing for any other text.
std::optional<std::string_view> name_of(const orvlog::reader::Element* element, std::string_view name);
void put_matrix(RowWriter& rows, const orvlog::reader::Element* element, std::string_view name);
void put_box(RowWriter& rows, const std::optional<GGO_BoxFloat>& box);

}  // namespace orvlog::inspect
