// What the tests of record dumpers need: a session with nothing around it, and records that end at an unmapped page.

#pragma once

#include "orvlog/session/orvlog-session.h"
#include "tests/support/guarded-block.h"
#include "tests/support/memory-stream.h"
#include "tests/support/test-allocator.h"

#include <cstring>
#include <string>
#include <vector>

namespace orvlog::test
{

class RecordLog
{
public:
    explicit RecordLog(uint32_t depth = 0);
    RecordLog(const RecordLog&) = delete;
    RecordLog& operator=(const RecordLog&) = delete;
    ~RecordLog();

    ORVLOG_Writer* writer()
    {
        return &session.writer;
    }
    // The text since the last call. All of it has been flushed, and the depth is where it was.
    std::string take();
    // The value of the first attribute of that name in the text since the last call.
    std::string take_value(const std::string& name);

    TestAllocator allocator;
    MemoryStream stream;
    ORVLOG_Session session;

private:
    uint32_t depth_;
};

// The value of the first attribute of that name; "(absent)" if there is none.
std::string attribute_of(const std::string& text, const std::string& name);

// A record of several parts, one behind the other as they stand in memory.
class Parts
{
public:
    template <typename Part> Parts& add(const Part& part)
    {
        return append(&part, sizeof part);
    }
    // The first `size` bytes of a record whose last part is left open.
    template <typename Part> Parts& add_head(const Part& part, size_t size)
    {
        return append(&part, size);
    }
    Parts& add_parts(const Parts& parts)
    {
        return append(parts.bytes_.data(), parts.bytes_.size());
    }
    const std::vector<uint8_t>& bytes() const
    {
        return bytes_;
    }

private:
    Parts& append(const void* part, size_t size);

    std::vector<uint8_t> bytes_;
};

// The record that these parts make, with nothing behind it.
template <typename Record> class Guarded
{
public:
    explicit Guarded(const Parts& parts) : block_(parts.bytes().data(), parts.bytes().size()) {}
    explicit Guarded(const Record& record) : block_(&record, sizeof record) {}

    const Record* get()
    {
        return block_.template as<Record>();
    }
    Record* edit()
    {
        return block_.template as<Record>();
    }

private:
    GuardedBlock block_;
};

}  // namespace orvlog::test
