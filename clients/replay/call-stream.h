// The elements of a log, one after the other, with a look at the next one, and the comments that stand in each.

#pragma once

#include "clients/replay/replay.h"
#include "reader/tree/element.h"

#include <cstdint>
#include <istream>
#include <vector>

namespace orvlog::replay
{

class CallStream
{
public:
    CallStream(std::istream& log, const Options& options);
    CallStream(const CallStream&) = delete;
    CallStream& operator=(const CallStream&) = delete;

    // The next element, which stays the next one. Null at the end of the log. The one before is gone then.
    const reader::Element* peek();
    // The same, and goes on.
    const reader::Element* take();
    // The client's comments in the element that was given last.
    const std::vector<reader::Comment>& comments() const
    {
        return comments_;
    }

    uint64_t damage() const
    {
        return damage_;
    }
    uint64_t bytes_used() const
    {
        return elements_.events().bytes_used();
    }
    bool is_log() const
    {
        return elements_.events().is_log();
    }
    bool is_cut() const
    {
        return elements_.events().is_cut();
    }

private:
    reader::ElementReader elements_;
    std::vector<reader::Comment> comments_;
    const reader::Element* next_ = nullptr;
    uint64_t damage_ = 0;
};

}  // namespace orvlog::replay
