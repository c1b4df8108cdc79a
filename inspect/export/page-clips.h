// What the clips of a call and of the groups around it leave of its page.

#pragma once

#include "holv-core/ggo/ggo-geometry.h"
#include "reader/look/call-summary.h"
#include "reader/tree/element.h"

#include <cstdint>
#include <map>
#include <optional>
#include <vector>

namespace orvlog::inspect
{

struct ClipView
{
    std::optional<GGO_BoxFloat> box;  // in pixels; nothing without clips that tell
    std::optional<bool> shut;         // nothing of a paint is left; nothing for what paints nothing
    uint64_t depth = 0;               // groups around it
    double dpi_x = 0;                 // of the page, 0 if it is on none
    double dpi_y = 0;
};

// Memory goes with the drawings that are open, of which 65536 are followed.
class PageClips
{
public:
    // Calls in the order of the log. `around` leads from the call's space to pixels and is null without a page.
    ClipView next(const orvlog::reader::Element& call, const GGO_Matrix* around,
                  const orvlog::reader::CallSummary& summary);

private:
    struct Drawing
    {
        std::optional<GGO_BoxFloat> face;
        double dpi_x = 0;
        double dpi_y = 0;
        std::vector<std::optional<GGO_BoxFloat>> groups;  // what is left within each
        uint64_t deeper = 0;
    };

    void start_face(const orvlog::reader::Element& call);

    std::map<uint32_t, Drawing> drawings_;
};

}  // namespace orvlog::inspect
