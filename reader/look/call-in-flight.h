// The call in which a log that is cut short ends.

#pragma once

#include "reader/tree/element.h"

#include <string>

namespace orvlog::reader
{

class CallInFlight
{
public:
    // Elements in the order of the log.
    void next(const Element& element);

    // "ORV_object_paint 3, line 46", the id if it has one; empty if the log ends between two calls.
    const std::string& text() const
    {
        return text_;
    }
    Place place() const
    {
        return place_;
    }

private:
    std::string text_;
    Place place_;
};

}  // namespace orvlog::reader
