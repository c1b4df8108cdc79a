// The groups, resources and repeated cells that are open while a page is drawn, as a renderer tells of them.

#pragma once

#include "renderers/cairo/watch.h"

#include <cstdint>
#include <optional>
#include <vector>

namespace orvlog::inspect
{

// A group, or resource, that is open while something is painted.
struct Around
{
    uint64_t call = 0;                // the byte of the call that began it
    std::optional<uint32_t> outside;  // the group around it, in the list of groups
};

class OpenGroups
{
public:
    // A page begins: nothing is open. The list stays.
    void clear()
    {
        open_.clear();
    }
    void begin(const cairo_renderer::WatchStep& step);
    // Whether what ends has a surface of its own; nothing if nothing is open.
    std::optional<bool> end();

    // Whether the paint is a part of a call that makes a group of its parts: the group's end tells of them all.
    bool is_part(const cairo_renderer::WatchStep& paint) const
    {
        return !open_.empty() && open_.back().layer && open_.back().call == paint.call;
    }

    // The innermost group that is open, as its place in the list; it is put there when it is asked for first. Nothing
    // on the page itself.
    std::optional<uint32_t> innermost();
    const std::vector<Around>& list() const
    {
        return list_;
    }

private:
    struct Open
    {
        uint64_t call = 0;
        bool layer = false;
        std::optional<uint32_t> index;  // in list_
    };

    std::vector<Open> open_;
    std::vector<Around> list_;
};

}  // namespace orvlog::inspect
