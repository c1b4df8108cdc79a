// Bytes that are written and then read: in memory while they are few, and in a file that nobody else sees beyond that.

#pragma once

#include "inspect/align/temporary-file.h"

#include <cstddef>
#include <cstdint>
#include <functional>
#include <string>
#include <string_view>

namespace orvlog::inspect
{

class Spill
{
public:
    // Throws std::runtime_error when there is no room.
    void add(std::string_view bytes);
    uint64_t size() const
    {
        return size_;
    }
    // Gives all of it, piece by piece.
    void read(const std::function<void(std::string_view)>& take);

private:
    void put_out();

    static constexpr size_t kMost = size_t{1} << 18;

    std::string bytes_;
    FilePtr file_;
    uint64_t size_ = 0;
};

}  // namespace orvlog::inspect
