#include "reader/look/call-in-flight.h"

#include "reader/tree/values.h"

namespace orvlog::reader
{

void CallInFlight::next(const Element& element)
{
    text_.clear();
    if (!element.implied_end || !is_call_name(element.name))
        return;
    text_ = element.name;
    if (element.has("id"))
        text_.append(" ").append(to_text(element.value("id")));
    text_.append(", line ").append(std::to_string(element.place.line));
    place_ = element.place;
}

}  // namespace orvlog::reader
