// The text of a log on its way through a reader, kept for one who wants some of it as it stands.

#pragma once

#include "reader/text/coded-input.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <istream>
#include <optional>
#include <streambuf>
#include <string>
#include <string_view>
#include <vector>

namespace orvlog::inspect
{

// The text of a log, kept until it is dropped.
class PassingText : public std::streambuf
{
public:
    explicit PassingText(std::istream& source) : input_(source), block_(size_t{1} << 18) {}

    // What stands between two places, as far as it was read; it hasn't been dropped.
    std::string_view text(uint64_t begin, uint64_t end) const
    {
        const auto from = static_cast<size_t>(begin - begin_);
        return std::string_view(kept_).substr(from, static_cast<size_t>(std::min(end, begin_ + kept_.size()) - begin));
    }
    // The same; nothing if it was.
    std::optional<std::string_view> find(uint64_t begin, uint64_t end) const
    {
        return begin >= begin_ ? std::optional(text(begin, end)) : std::nullopt;
    }
    uint64_t end() const
    {
        return begin_ + kept_.size();
    }
    // What stands before `begin`. Text moves when much has come together, so that each byte moves but once or twice.
    void drop(uint64_t begin)
    {
        const auto count = static_cast<size_t>(begin - begin_);
        if (count < kept_.size() / 2 && count < kMostDropped)
            return;
        kept_.erase(0, count);
        begin_ = begin;
    }
    // What nobody has asked for yet.
    void read_rest()
    {
        while (underflow() != traits_type::eof())
        {
        }
    }
    const reader::CodedInput& input() const
    {
        return input_;
    }

private:
    static constexpr size_t kMostDropped = size_t{1} << 23;

    int_type underflow() override
    {
        const size_t count = input_.read(block_.data(), block_.size());
        kept_.append(block_.data(), count);
        setg(block_.data(), block_.data(), block_.data() + count);
        return count == 0 ? traits_type::eof() : traits_type::to_int_type(*gptr());
    }

    reader::CodedInput input_;
    std::vector<char> block_;
    std::string kept_;
    uint64_t begin_ = 0;
};

}  // namespace orvlog::inspect
