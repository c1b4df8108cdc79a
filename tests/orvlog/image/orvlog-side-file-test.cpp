#include "orvlog/image/orvlog-side-file.h"

#include "orvlog/image/gop-image-dump.h"
#include "orvlog/image/orvlog-image-wrapper.h"
#include "tests/support/fake-image.h"
#include "tests/support/record-log.h"
#include "tests/support/temp-folder.h"

#include <gtest/gtest.h>

#include <cstring>

namespace
{

using namespace orvlog::test;

class SideFile : public testing::Test
{
protected:
    ~SideFile() override
    {
        ORVLOG_EndImageCall(record, kept);
    }
    ORVLOG_ImageContext* wrap(const std::string& prefix)
    {
        log.session.image.has_file_prefix = 1;
        std::strcpy(log.session.image.file_prefix, prefix.c_str());
        GOP_OperandPointer* operand = fake.operand();
        ORVLOG_ReplaceImageOperand(&log.session, &operand, &kept);
        record = reinterpret_cast<GOP_OperandImagePointer*>(operand);
        return orvlog_image_wrapper_of(record)->context;
    }
    std::string read()
    {
        uint8_t row[2];
        int32_t returned = 0;
        result = record->imp_ImageReadFn(record, record->imp_Context, 0, row, 2, 2, &returned, nullptr, 0, 0, nullptr);
        return log.take();
    }

    TempFolder folder;
    RecordLog log;
    FakeImage fake{2, 2};
    uint32_t kept = 0;
    uint32_t result = 0;
    GOP_OperandImagePointer* record = nullptr;
};

TEST_F(SideFile, NamesOfAllKindsCountOn)
{
    ORVLOG_ImageContext* context = wrap("pre fix");
    for (const char* expected : {"pre fix-dir-10.bin", "pre fix-img-11.bin", "pre fix-attr-12.bin"})
    {
        const std::string text = expected;
        const std::string kind = text.substr(8, text.rfind('-') - 8);
        GIO_Stream* stream = nullptr;
        char* name = nullptr;
        ASSERT_EQ(ORVLOG_OpenSideFile(context, &stream, &name, kind.c_str()), 1U);
        EXPECT_STREQ(name, expected);
        orvlog_side_file_write(stream, reinterpret_cast<const uint8_t*>("ab\n\0c"), 5);
        orvlog_close_stream(&stream);
        EXPECT_EQ(stream, nullptr);
        EXPECT_EQ(folder.read(expected), std::string("ab\n\0c", 5)) << "as it stands, on each system";
    }
    EXPECT_EQ(context->counters[0], 13U);
    EXPECT_EQ(log.session.image_sequence[0], 10U) << "the image has numbers of its own";
}

TEST_F(SideFile, NumbersBeyondTheSignedOnesAreNegative)
{
    ORVLOG_ImageContext* context = wrap("s");
    context->counters[0] = UINT32_MAX;
    EXPECT_EQ(attribute_of(read(), "ImageFileName"), "s-img--1.bin");
    EXPECT_EQ(context->counters[0], 0U);
}

TEST_F(SideFile, GivenNameIsUsed)
{
    ORVLOG_ImageContext* context = wrap("s");
    char room[29];
    char* name = room;
    GIO_Stream* stream = nullptr;
    const uint64_t before = log.allocator.requests();
    context->counters[0] = 0x80000000;
    ASSERT_EQ(ORVLOG_OpenSideFile(context, &stream, &name, "d"), 1U);
    EXPECT_EQ(name, room);
    EXPECT_STREQ(room, "s-d--2147483648.bin");
    orvlog_close_stream(&stream);
    EXPECT_GT(log.allocator.requests(), before) << "the stream";
}

// 999 characters: the longest prefix that a session takes.
TEST_F(SideFile, LongestPrefix)
{
    std::string prefix = "s";
    while (prefix.size() < 999)
        prefix = "./" + prefix;
    ORVLOG_ImageContext* context = wrap(prefix);
    context->counters[0] = 0x80000000;
    const std::string text = read();
    EXPECT_EQ(result, 1U);
    EXPECT_EQ(attribute_of(text, "ImageFileName"), prefix + "-img--2147483648.bin");
    record->imp_ImageFinishFn(record, record->imp_Context);
    log.take();
    EXPECT_EQ(folder.read("s-img--2147483648.bin"), "\x01\x02");
}

TEST_F(SideFile, NameIsEscapedInTheLog)
{
    wrap("a&b '\xC3\xA9'");
    EXPECT_NE(read().find(R"( ImageFileName="a\x26b '\xc3\xa9'-img-10.bin">)"), std::string::npos);
}

TEST_F(SideFile, NameWithoutMemoryTakesNoNumber)
{
    fake.record.imp_DirectImage = fake.bytes.data();
    ORVLOG_ImageContext* context = wrap("s");
    GMM_Allocator* pool = context->allocator;
    log.allocator.refuse(1, true);
    while (pool->gmm_Alloc(pool, 1, 0) != nullptr)
    {
    }
    GIO_Stream* stream = nullptr;
    char* name = nullptr;
    EXPECT_EQ(ORVLOG_OpenSideFile(context, &stream, &name, "img"), 0U);
    EXPECT_EQ(name, nullptr);
    EXPECT_EQ(stream, nullptr);
    EXPECT_EQ(context->counters[0], 10U);
    EXPECT_EQ(attribute_of(read(), "ImageFileName"), "(absent)");
    EXPECT_EQ(result, 0U);
    log.allocator.refuse(1);
    ORVLOG_DumpImagePointer(log.writer(), record, 1);
    const std::string text = log.take();
    EXPECT_EQ(attribute_of(text, "imp_DirectImage"), "TRUE");
    EXPECT_EQ(attribute_of(text, "imp_DirectImageFileName"), "(absent)");
    EXPECT_NE(text.find("\n<!--\nORVLOG: WARNING: Could not open new image file\n-->\n"), std::string::npos);
    EXPECT_TRUE(folder.names().empty());
}

TEST_F(SideFile, WritesToNothingAreSkipped)
{
    const uint8_t byte = 1;
    orvlog_side_file_write(nullptr, &byte, 1);
    GIO_Stream* none = nullptr;
    orvlog_close_stream(&none);
    EXPECT_EQ(none, nullptr);
}

}  // namespace
