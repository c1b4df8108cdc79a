#include "inspect/history/call-descriptions.h"

#include "reader/look/call-address.h"
#include "reader/look/call-summary.h"

namespace orvlog::inspect
{

namespace
{

// Groups and resources clip in the space around them.
CallDescription describe(const reader::Element& call, reader::CallSummaries& summaries)
{
    const GGO_Matrix identity{{1, 0, 0, 1, 0, 0}};
    const GGO_Matrix* outside = summaries.to_pixels(call);
    const GGO_Matrix to_pixels = outside != nullptr ? *outside : identity;
    const reader::CallSummary summary = summaries.next(call);
    CallDescription description;
    description.address = reader::call_address_text(call);
    description.line = call.place.line;
    description.kind = summary.kind;
    description.page = summary.page;
    description.op = summary.op;
    description.operand = summary.colour;
    description.box = summary.box;
    description.clips = clip_entries(call, to_pixels);
    return description;
}

}  // namespace

std::map<uint64_t, CallDescription> describe_calls(std::istream& log, const std::set<uint64_t>& bytes,
                                                   const std::function<void(uint64_t)>& progress)
{
    std::map<uint64_t, CallDescription> found;
    reader::CallSummaries summaries;
    reader::ElementReader elements(log, reader::LogForm::log, reader::Data::skip);
    while (const reader::Element* call = found.size() < bytes.size() ? elements.next() : nullptr)
    {
        if (progress)
            progress(elements.events().bytes_used());
        if (!reader::is_call_name(call->name))
            continue;
        if (bytes.contains(call->place.byte))
            found[call->place.byte] = describe(*call, summaries);
        else
            summaries.next(*call);
    }
    return found;
}

}  // namespace orvlog::inspect
