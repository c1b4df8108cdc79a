#include "inspect/history/open-groups.h"

namespace orvlog::inspect
{

namespace
{

using cairo_renderer::WatchStep;

// Groups that hold something of interest; what stands in more of them is told as standing in the last one.
constexpr size_t kMostGroups = size_t{1} << 20;

}  // namespace

void OpenGroups::begin(const WatchStep& step)
{
    open_.push_back({step.call, step.kind == WatchStep::Kind::cell_begins || step.layer, std::nullopt});
}

std::optional<bool> OpenGroups::end()
{
    if (open_.empty())
        return std::nullopt;
    const bool layer = open_.back().layer;
    open_.pop_back();
    return layer;
}

std::optional<uint32_t> OpenGroups::innermost()
{
    std::optional<uint32_t> outside;
    for (Open& open : open_)
    {
        // Repeated content has a layer and a cell.
        if (!open.index && outside && list_[*outside].call == open.call)
            open.index = outside;
        if (!open.index && list_.size() < kMostGroups)
        {
            list_.push_back({open.call, outside});
            open.index = static_cast<uint32_t>(list_.size() - 1);
        }
        if (open.index)
            outside = open.index;
    }
    return outside;
}

}  // namespace orvlog::inspect
