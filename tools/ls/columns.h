// The columns of a list of calls.

#pragma once

#include "reader/look/call-summary.h"

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace orvlog::tool
{

struct CallRow
{
    const orvlog::reader::CallSummary& call;
    std::string address;
    std::optional<GGO_BoxFloat> clip;  // the box that its clips leave, in pixels
    std::string text;                  // what its text says, bytes as they stand
};

enum class Column
{
    byte,
    line,
    call,
    page,
    kind,
    box,
    clip,
    op,
    colour,
    text
};

// "call,page,kind"; empty for a list with a name that is no column's, or without any.
std::vector<Column> read_columns(std::string_view list);
// "byte, line, call, ...": all there are.
std::string column_names();
// Lines of `width` characters, 0 for any, that would end ahead of the operator go without the box of the clip.
std::vector<Column> default_columns(bool places, size_t width);

// Where and how lines are written.
struct LineForm
{
    std::vector<Column> columns;
    size_t width = 0;  // in characters; longer lines end in "…". 0: as long as they are
    bool colour = false;
};

// Lines with their line feed.
std::string header_line(const LineForm& form);
std::string row_line(const CallRow& row, const LineForm& form);

// In double quotes; controls, marks that turn the direction of text, quotes, backslashes and what is no UTF-8 come out
// as \x and two digits a byte.
std::string quoted(std::string_view text);

}  // namespace orvlog::tool
