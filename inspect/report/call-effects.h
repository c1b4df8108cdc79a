// What calls changed on a page, or why they changed nothing.

#pragma once

#include "inspect/report/call-places.h"
#include "renderers/cairo/watch.h"

#include <cstdint>
#include <map>
#include <string>

namespace orvlog::inspect
{

class CallEffects
{
public:
    // Reasons are the values of Unchanged, and behind them these.
    static constexpr int64_t kOutside = 10;   // nothing of it lies on the page and within the clips
    static constexpr int64_t kUnknown = 11;   // it wasn't looked for
    static constexpr int64_t kNoReason = -1;  // it changed something

    // `call` is the place of the call in the list.
    void changed(int64_t call, uint64_t pixels, const cairo_renderer::PixelBox& area);
    // A paint that left all pixels of its target as they were; `area` are those that it may reach. Of a call that did
    // so more than once, the first reason counts.
    void unchanged(int64_t call, const cairo_renderer::WatchStep& step, const cairo_renderer::PixelBox& area,
                   const CallPlaces& places);

    bool empty() const
    {
        return effects_.empty();
    }
    // In columns, as JSON.
    std::string json() const;

private:
    struct Effect
    {
        uint64_t pixels = 0;
        cairo_renderer::PixelBox area;
        int64_t why = kUnknown;
        int64_t of = -1;
    };

    void look(Effect& effect, const cairo_renderer::WatchStep& step, int x, int y, const CallPlaces& places);

    std::map<int64_t, Effect> effects_;
    uint64_t looks_left_ = 1 << 18;
};

}  // namespace orvlog::inspect
