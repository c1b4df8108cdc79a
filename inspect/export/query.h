// A question in SQL to a database of tables, which can neither be changed by it nor lead anywhere else.

#pragma once

#include "inspect/export/sqlite.h"

#include <cstdint>
#include <functional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace orvlog::inspect
{

struct QueryValue
{
    enum class Kind : uint8_t
    {
        null,
        integer,
        real,
        text,
        bytes
    };

    Kind kind = Kind::null;
    int64_t integer = 0;
    double real = 0;
    std::string_view text;  // or bytes; good until the next row
};

struct QueryPlan
{
    double seconds = 0;  // that it may take; 0: as many as it likes
    std::function<void(const std::vector<std::string>& columns)> on_columns;
    // False ends the question.
    std::function<bool(std::span<const QueryValue> row)> on_row;
};

// Throws DatabaseError with one line of reason: for a file that is no database of tables, for what isn't one question,
// for a question that would change something, and for one that takes too long.
void ask(const std::string& path, const std::string& sql, const QueryPlan& plan);

}  // namespace orvlog::inspect
