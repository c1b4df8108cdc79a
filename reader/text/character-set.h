// Sets of characters, to look for in texts. The standard library's find_first_of and find_first_not_of call a function
// for each character of the text, which costs a reader of logs a third of its time.

#pragma once

#include <array>
#include <cstddef>
#include <string_view>

namespace orvlog::reader
{

class CharacterSet
{
public:
    constexpr explicit CharacterSet(std::string_view characters)
    {
        for (const char c : characters)
            has_[static_cast<unsigned char>(c)] = true;
    }

    constexpr bool has(char c) const
    {
        return has_[static_cast<unsigned char>(c)];
    }
    // The place of the first character that is in the set, from `from` on; the text's size if there is none.
    constexpr size_t first_in(std::string_view text, size_t from = 0) const
    {
        while (from < text.size() && !has(text[from]))
            ++from;
        return from < text.size() ? from : text.size();
    }
    // Likewise of the first one that isn't.
    constexpr size_t first_not_in(std::string_view text, size_t from = 0) const
    {
        while (from < text.size() && has(text[from]))
            ++from;
        return from < text.size() ? from : text.size();
    }

private:
    std::array<bool, 256> has_{};
};

}  // namespace orvlog::reader
