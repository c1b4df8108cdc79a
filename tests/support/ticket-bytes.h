// Serialised tickets for tests: put together field by field, and lent from a block that ends at an unmapped page.

#pragma once

#include "holv-core/gio/gio-stream.h"
#include "tests/support/guarded-block.h"

#include <cstdint>
#include <string>
#include <vector>

namespace orvlog::test
{

class TicketBytes
{
public:
    TicketBytes& u8(std::initializer_list<uint32_t> values);
    TicketBytes& u16(std::initializer_list<uint32_t> values);
    TicketBytes& u32(std::initializer_list<uint32_t> values);
    TicketBytes& f32(std::initializer_list<float> values);
    TicketBytes& text(const char* text);  // with its terminator
    TicketBytes& append(const TicketBytes& other);
    TicketBytes& repeat(uint8_t byte, size_t count);

    const std::vector<uint8_t>& bytes() const
    {
        return bytes_;
    }
    size_t size() const
    {
        return bytes_.size();
    }

private:
    std::vector<uint8_t> bytes_;
};

// 16 bytes of fixed data.
TicketBytes fixed_data();

// A definition of type 6: no channels, no extensions, 16 bytes.
TicketBytes plain_csd();

// A ticket with every kind of definition, extension and section.
TicketBytes rich_ticket();

// A stream that lends a block.
class LentStream
{
public:
    LentStream(const void* content, size_t size);
    explicit LentStream(const TicketBytes& bytes) : LentStream(bytes.bytes().data(), bytes.size()) {}
    LentStream(const LentStream&) = delete;
    LentStream& operator=(const LentStream&) = delete;

    GIO_Stream* get()
    {
        return &handle_;
    }
    uint8_t* data()
    {
        return block_.data();
    }

    bool refuses = false;      // does not lend
    int64_t position = -1;     // of the last seek
    int32_t last_errors = 0;   // calls of gio_LastError
    int32_t cleared = 0;       // calls of gio_ClearErr
    GIO_StreamOps operations;  // may be emptied

private:
    GuardedBlock block_;
    GIO_Stream handle_;
};

}  // namespace orvlog::test
