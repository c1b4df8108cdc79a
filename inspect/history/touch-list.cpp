#include "inspect/history/touch-list.h"

#include <algorithm>

namespace orvlog::inspect
{

namespace
{

PixelBox both(const PixelBox& one, const PixelBox& other)
{
    if (one.empty() || other.empty())
        return one.empty() ? other : one;
    return {std::min(one.x0, other.x0), std::min(one.y0, other.y0), std::max(one.x1, other.x1),
            std::max(one.y1, other.y1)};
}

}  // namespace

bool TouchList::join(const Touch& touch)
{
    if (touches_.empty())
        return false;
    Touch& last = touches_.back();
    if (last.kind != Touch::Kind::paint || touch.kind != Touch::Kind::paint || last.call != touch.call ||
        last.around != touch.around)
        return false;
    last.changed = last.changed || touch.changed;
    last.after = touch.after;
    last.pixels = std::max(last.pixels, touch.pixels);
    last.area = both(last.area, touch.area);
    return true;
}

void TouchList::add(const Touch& touch, std::span<const Around> groups)
{
    if (join(touch))
        return;
    if (touches_.size() == kMost)
    {
        ++left_out_;
        return;
    }
    touches_.push_back(touch);
    groups_.insert(groups_.end(), groups.begin() + static_cast<std::ptrdiff_t>(groups_.size()), groups.end());
}

std::vector<uint64_t> TouchList::around(const Touch& touch) const
{
    std::vector<uint64_t> calls;
    for (std::optional<uint32_t> at = touch.around; at && *at < groups_.size(); at = groups_[*at].outside)
        calls.push_back(groups_[*at].call);
    return calls;
}

std::set<uint64_t> TouchList::calls() const
{
    std::set<uint64_t> calls;
    for (const Touch& touch : touches_)
    {
        calls.insert(touch.call);
        if (touch.kind != Touch::Kind::paint)
            calls.insert(touch.begun_by);
        if (touch.why.group != 0)
            calls.insert(touch.why.group);
    }
    for (const Around& group : groups_)
        calls.insert(group.call);
    return calls;
}

}  // namespace orvlog::inspect
