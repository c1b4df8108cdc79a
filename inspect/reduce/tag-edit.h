// Changes to the attributes of a tag that leave all else of it as it stands.

#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace orvlog::inspect
{

class TagEdit
{
public:
    // `text` is the tag with its indent and its line end.
    explicit TagEdit(std::string_view text) : result_(text) {}

    // Nothing happens to an attribute that isn't there.
    void set(std::string_view name, std::string_view value);
    void set(std::string_view name, uint64_t value)
    {
        set(name, std::to_string(value));
    }
    // The blank in front stays if `keep_blank`.
    void remove(std::string_view name, bool keep_blank = false);

    const std::string& result() const
    {
        return result_;
    }

private:
    struct Range
    {
        size_t begin;  // of the blank in front
        size_t value;
        size_t end;  // behind the closing quote
    };
    std::optional<Range> find(std::string_view name) const;

    std::string result_;
};

// Blanks at the beginning of a line.
size_t indent_of(std::string_view line);

}  // namespace orvlog::inspect
