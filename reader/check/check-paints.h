// The part of a check that looks for calls that have no effect, as far as boxes and numbers tell for sure.

#pragma once

#include "reader/look/call-summary.h"
#include "reader/tree/element.h"

#include <cstdint>
#include <functional>
#include <map>
#include <string>
#include <vector>

namespace orvlog::reader
{

class CheckPaints
{
public:
    using Note = std::function<void(Place, std::string)>;
    explicit CheckPaints(Note note) : note_(std::move(note)) {}

    // Calls in the order of the log.
    void call(const Element& call);

private:
    struct Group
    {
        Place place;
        bool used = false;      // something is drawn into it
        bool knockout = false;  // what paints nothing still takes away what was there
        bool repeated = false;  // what is drawn beside the page may come to lie on it
    };
    struct Drawing
    {
        GGO_BoxFloat face{};
        bool has_face = false;
        std::vector<Group> groups;
        uint64_t deeper = 0;  // open groups beyond those that are followed
    };

    void finish_group(const Element& call, Drawing& drawing);
    void paint(const Element& call, const CallSummary& summary, const Drawing& drawing, const GGO_Matrix& space);
    void where(const Element& call, const GGO_BoxFloat& box, const Drawing& drawing, const GGO_Matrix& space);

    Note note_;
    CallSummaries summaries_;
    std::map<uint32_t, Drawing> drawings_;
};

}  // namespace orvlog::reader
