// Which call began what another call stands in.

#pragma once

#include "reader/tree/element.h"

#include <cstdint>
#include <map>
#include <vector>

namespace orvlog::inspect
{

class CallTree
{
public:
    // Calls in the order of the log, with their places in a list. Gives the place of the call that began the document,
    // the drawing or the group that this one stands in, or that it ends; -1 for none. Memory goes with what is open,
    // of which 65536 at most are remembered.
    int64_t next(const reader::Element& call, int64_t place);

private:
    using Open = std::map<uint32_t, std::vector<int64_t>>;

    int64_t document_of(const reader::Element& call) const;
    int64_t drawing_of(const reader::Element& call) const;

    std::map<uint32_t, int64_t> documents_;
    int64_t last_document_ = -1;
    Open drawings_;  // of each the call that began it, and those of its open groups
};

}  // namespace orvlog::inspect
