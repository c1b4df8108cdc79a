#include "inspect/report/call-effects.h"

#include "inspect/report/columns.h"

#include <algorithm>

namespace orvlog::inspect
{

using cairo_renderer::PixelBox;
using cairo_renderer::Unchanged;
using cairo_renderer::WatchStep;

namespace
{

// Places on each side of the middle at which a reason is looked for.
constexpr int kPlaces = 5;

PixelBox both(const PixelBox& one, const PixelBox& other)
{
    if (one.empty())
        return other;
    return {std::min(one.x0, other.x0), std::min(one.y0, other.y0), std::max(one.x1, other.x1),
            std::max(one.y1, other.y1)};
}

// The middle of part `i` of `kPlaces` parts.
int part(int from, int to, int i)
{
    return from + static_cast<int>((static_cast<int64_t>(to) - from) * (2 * i + 1) / (2 * kPlaces));
}

}  // namespace

void CallEffects::changed(int64_t call, uint64_t pixels, const PixelBox& area)
{
    Effect& effect = effects_[call];
    effect.pixels += pixels;
    effect.area = both(effect.area, area);
    effect.why = kNoReason;
    effect.of = -1;
}

void CallEffects::look(Effect& effect, const WatchStep& step, int x, int y, const CallPlaces& places)
{
    if (looks_left_ == 0)
        return;
    --looks_left_;
    const cairo_renderer::WhyUnchanged why = step.why(x, y);
    effect.why = static_cast<int64_t>(why.reason);
    effect.of = why.group != 0 ? places.of(why.group) : -1;
}

void CallEffects::unchanged(int64_t call, const WatchStep& step, const PixelBox& area, const CallPlaces& places)
{
    const auto [known, fresh] = effects_.try_emplace(call);
    Effect& effect = known->second;
    if (!fresh)
        return;
    if (area.empty())
    {
        effect.why = kOutside;
        return;
    }
    constexpr auto kNotCovered = static_cast<int64_t>(Unchanged::not_covered);
    look(effect, step, part(area.x0, area.x1, kPlaces / 2), part(area.y0, area.y1, kPlaces / 2), places);
    for (int i = 0; i < kPlaces * kPlaces && effect.why == kNotCovered; ++i)
        look(effect, step, part(area.x0, area.x1, i % kPlaces), part(area.y0, area.y1, i / kPlaces), places);
}

std::string CallEffects::json() const
{
    Columns columns({"call", "pixels", "area", "why", "of"});
    for (const auto& [call, effect] : effects_)
    {
        columns.add(call);
        columns.add(static_cast<int64_t>(effect.pixels));
        if (effect.area.empty())
            columns.add_null();
        else
            columns.add_box(effect.area.x0, effect.area.y0, effect.area.x1, effect.area.y1);
        columns.add(effect.why);
        columns.add(effect.of);
    }
    return columns.json();
}

}  // namespace orvlog::inspect
