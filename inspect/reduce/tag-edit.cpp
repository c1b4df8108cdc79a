#include "inspect/reduce/tag-edit.h"

#include <algorithm>

namespace orvlog::inspect
{

// Values hold no quotes, so that only an attribute has its name behind a blank and ahead of ="; a comment may stand
// between two.
std::optional<TagEdit::Range> TagEdit::find(std::string_view name) const
{
    const std::string sought = ' ' + std::string(name) + "=\"";
    size_t from = 0;
    while (true)
    {
        const size_t found = result_.find(sought, from);
        if (found == std::string::npos)
            return std::nullopt;
        const size_t comment = result_.find("<!--", from);
        if (comment < found)
        {
            const size_t end = result_.find("-->", comment);
            if (end == std::string::npos)
                return std::nullopt;
            from = end;
            continue;
        }
        const size_t value = found + sought.size();
        const size_t quote = result_.find('"', value);
        if (quote == std::string::npos)
            return std::nullopt;
        return Range{found, value, quote + 1};
    }
}

void TagEdit::set(std::string_view name, std::string_view value)
{
    if (const std::optional<Range> range = find(name); range)
        result_.replace(range->value, range->end - 1 - range->value, value);
}

void TagEdit::remove(std::string_view name, bool keep_blank)
{
    if (const std::optional<Range> range = find(name); range)
        result_.erase(range->begin + (keep_blank ? 1 : 0), range->end - range->begin - (keep_blank ? 1 : 0));
}

size_t indent_of(std::string_view line)
{
    return std::min(line.find_first_not_of(' '), line.size());
}

}  // namespace orvlog::inspect
