// Which place a call has in a report's list, by the byte at which it stands in the log.

#pragma once

#include <algorithm>
#include <cstdint>
#include <vector>

namespace orvlog::inspect
{

class CallPlaces
{
public:
    // In the order of the log.
    void add(uint64_t byte)
    {
        bytes_.push_back(byte);
    }
    // -1 for a call that isn't listed.
    int64_t of(uint64_t byte) const
    {
        const auto found = std::ranges::lower_bound(bytes_, byte);
        return found != bytes_.end() && *found == byte ? found - bytes_.begin() : -1;
    }
    uint64_t count() const
    {
        return bytes_.size();
    }

private:
    std::vector<uint64_t> bytes_;
};

}  // namespace orvlog::inspect
