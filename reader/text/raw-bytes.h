// The bytes of a file, with a look at what comes next. Memory: one block.

#pragma once

#include <cstddef>
#include <cstdint>
#include <istream>
#include <string_view>
#include <vector>

namespace orvlog::reader
{

class RawBytes
{
public:
    explicit RawBytes(std::istream& source);

    // What can be seen from here: at least `wanted` bytes unless the file ends before. `wanted` is at most
    // `farthest`. The view stands until the next call.
    std::string_view look(size_t wanted);
    // Steps over bytes that have been seen.
    void skip(size_t count);

    // Bytes stepped over so far.
    uint64_t position() const
    {
        return position_;
    }

    static constexpr size_t kFarthest = 4096;

private:
    static constexpr size_t kBlockSize = 65536;

    std::istream& source_;
    std::vector<char> block_;
    size_t next_ = 0;
    size_t end_ = 0;
    uint64_t position_ = 0;
};

}  // namespace orvlog::reader
