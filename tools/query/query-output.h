// The rows of an answer on the standard output: as a table, as JSON, as comma-separated values.

#pragma once

#include "inspect/export/query.h"

#include <memory>
#include <span>
#include <string>
#include <vector>

namespace orvlog::tool
{

class QueryOutput
{
public:
    virtual ~QueryOutput() = default;

    virtual void begin(const std::vector<std::string>& columns) = 0;
    // False when nothing more can be written.
    virtual bool row(std::span<const orvlog::inspect::QueryValue> row) = 0;
    virtual void end() = 0;
};

// Columns as wide as the first thousand rows need them; later rows may be wider.
std::unique_ptr<QueryOutput> table_rows();
// An array of objects, one in a line.
std::unique_ptr<QueryOutput> json_rows();
// As RFC 4180 has it, with a header and line feeds; a null is an empty value, and an empty text is "".
std::unique_ptr<QueryOutput> csv_rows();

}  // namespace orvlog::tool
