// The touches of pixels, kept.

#pragma once

#include "inspect/history/pixel-history.h"

#include <cstdint>
#include <set>
#include <span>
#include <vector>

namespace orvlog::inspect
{

class TouchList
{
public:
    // Takes the next touch. What one call paints in several steps one after the other becomes one touch. Beyond `most`
    // they are only counted.
    void add(const Touch& touch, std::span<const Around> groups);

    const std::vector<Touch>& touches() const
    {
        return touches_;
    }
    uint64_t left_out() const
    {
        return left_out_;
    }
    // The calls that began the groups around a touch, the innermost first.
    std::vector<uint64_t> around(const Touch& touch) const;
    // All calls that any of the touches names.
    std::set<uint64_t> calls() const;

    static constexpr size_t kMost = 100000;

private:
    bool join(const Touch& touch);

    std::vector<Touch> touches_;
    std::vector<Around> groups_;
    uint64_t left_out_ = 0;
};

}  // namespace orvlog::inspect
