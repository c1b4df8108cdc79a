// A block of memory whose last byte is the last of a page, with an unmapped page behind: one byte read too
// far is a fault.

#pragma once

#include <cstddef>
#include <cstdint>
#include <cstring>

namespace orvlog::test
{

class GuardedBlock
{
public:
    // The block starts as near its end allows: `size` bytes that end at the unmapped page.
    explicit GuardedBlock(size_t size);
    GuardedBlock(const void* content, size_t size) : GuardedBlock(size)
    {
        std::memcpy(data(), content, size);
    }
    GuardedBlock(const GuardedBlock&) = delete;
    GuardedBlock& operator=(const GuardedBlock&) = delete;
    ~GuardedBlock();

    uint8_t* data()
    {
        return data_;
    }
    size_t size() const
    {
        return size_;
    }
    // From now on the block's own bytes are a fault too. Its addresses stay taken for as long as this lives.
    void close();

    template <typename Record> Record* as()
    {
        return reinterpret_cast<Record*>(data_);
    }

private:
    void* mapping_;
    size_t mapped_;
    uint8_t* data_;
    size_t size_;
};

// Whether a byte can be read, without reading it.
bool is_readable(const void* byte);

}  // namespace orvlog::test
