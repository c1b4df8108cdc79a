// Questions that are asked often, in SQL that SQLite and ClickHouse understand alike.

#pragma once

#include <span>
#include <string_view>

namespace orvlog::inspect
{

struct Question
{
    std::string_view name;
    std::string_view meaning;
    std::string_view sql;
};

std::span<const Question> questions();

}  // namespace orvlog::inspect
