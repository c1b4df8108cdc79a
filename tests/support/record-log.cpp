#include "tests/support/record-log.h"

#include "orvlog/image/orvlog-image-wrapper.h"

#include <gtest/gtest.h>

namespace orvlog::test
{

RecordLog::RecordLog(uint32_t depth) : session{}, depth_(depth)
{
    orvlog_writer_init(&session.writer, allocator.get(), stream.get(), 0, 0);
    session.writer.depth = depth;
    session.allocator = allocator.get();
    session.side_allocator = allocator.get();
}

RecordLog::~RecordLog()
{
    orvlog_detach_images(&session);
    orvlog_session_clear_scratch(&session);
    EXPECT_EQ(allocator.outstanding(), 0U);
    EXPECT_EQ(allocator.bad_frees(), 0U);
}

std::string RecordLog::take()
{
    EXPECT_EQ(stream.unflushed(), 0U);
    EXPECT_EQ(session.writer.depth, depth_);
    std::string text = stream.text();
    stream.clear();
    return text;
}

std::string RecordLog::take_value(const std::string& name)
{
    return attribute_of(take(), name);
}

Parts& Parts::append(const void* part, size_t size)
{
    const size_t before = bytes_.size();
    bytes_.resize(before + size);
    if (size != 0)
        std::memcpy(bytes_.data() + before, part, size);
    return *this;
}

std::string attribute_of(const std::string& text, const std::string& name)
{
    const std::string opening = " " + name + "=\"";
    const size_t at = text.find(opening);
    if (at == std::string::npos)
        return "(absent)";
    const size_t start = at + opening.size();
    return text.substr(start, text.find('"', start) - start);
}

}  // namespace orvlog::test
