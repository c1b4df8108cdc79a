// The streams of orvlog-stream.h over ordinary files, on each system.

#include "clients/stream/orvlog-stream.h"
#include "tests/support/temp-folder.h"

#include <gtest/gtest.h>

#include <cerrno>
#include <cstdarg>
#include <string>

namespace
{

using orvlog::test::TempFolder;

int32_t print(GIO_Stream* stream, const char* format, ...)
{
    va_list args;
    va_start(args, format);
    const int32_t result = stream->ops->gio_VPrintf(stream->instance, format, args);
    va_end(args);
    return result;
}

struct Opener
{
    const char* name;
    GIO_Stream* (*open)(const char* path);
};

class LogStreams : public testing::TestWithParam<Opener>
{
protected:
    GIO_Stream* open(const char* path)
    {
        return GetParam().open(path);
    }

    TempFolder folder_;
};

TEST_P(LogStreams, WriteWhatIsPrinted)
{
    GIO_Stream* stream = open("a.xml");
    ASSERT_NE(stream, nullptr);
    const GIO_StreamOps* ops = stream->ops;
    void* c = stream->instance;
    EXPECT_EQ(print(stream, "%s", "<a"), 2);
    EXPECT_EQ(print(stream, "%s", ""), 0);
    EXPECT_EQ(print(stream, " %s=\"%u\"", "n", 17U), 7);
    EXPECT_EQ(ops->gio_Write("/>\n\n", 2, 2, c), 2U);
    EXPECT_GE(ops->gio_Puts("seven b", c), 0);
    EXPECT_EQ(ops->gio_Putc('!', c), '!');
    EXPECT_EQ(print(stream, "%s", static_cast<const char*>(nullptr)), 6);
    EXPECT_EQ(ops->gio_Flush(c), 0);
    EXPECT_EQ(ops->gio_Tell(c), 27);
    EXPECT_EQ(ops->gio_Tell64(c), 27);
    EXPECT_EQ(ops->gio_Size(c), 27);
    EXPECT_EQ(ops->gio_Error(c), 0);
    EXPECT_EQ(ops->gio_LastError(c), GIO_OK);
    EXPECT_EQ(orvlog_stream_error(stream), 0);
    ORVLOG_StreamReport report;
    EXPECT_EQ(orvlog_stream_close(stream, &report), GIO_OK);
    EXPECT_EQ(report.error, 0);
    EXPECT_EQ(report.journal, 0U);
    EXPECT_EQ(report.text_bytes, 27U);
    EXPECT_EQ(report.file_bytes, 27U);
    EXPECT_EQ(folder_.read("a.xml"), "<a n=\"17\"/>\n\nseven b!(null)");
}

TEST_P(LogStreams, TakeTextsOfAnyLength)
{
    GIO_Stream* stream = open("a.xml");
    ASSERT_NE(stream, nullptr);
    std::string expected;
    for (size_t length = 0; length < 70; ++length)
    {
        std::string text;
        for (size_t i = 0; i < length; ++i)
            text += static_cast<char>('a' + (length + i) % 26);
        EXPECT_EQ(print(stream, "%s", text.c_str()), static_cast<int32_t>(length));
        expected += text;
    }
    for (const size_t length : {1023U, 1024U, 1025U, 70000U, 1048560U, 1048576U, 3500001U})
    {
        const std::string text(length, static_cast<char>('A' + length % 26));
        EXPECT_EQ(print(stream, "%s", text.c_str()), static_cast<int32_t>(length));
        EXPECT_EQ(print(stream, "%s;", text.c_str()), static_cast<int32_t>(length + 1));
        expected += text + text + ";";
    }
    EXPECT_EQ(stream->ops->gio_Size(stream->instance), static_cast<int64_t>(expected.size()));
    EXPECT_EQ(stream->ops->gio_Close(stream->instance), GIO_OK);
    EXPECT_TRUE(folder_.read("a.xml") == expected);
}

TEST_P(LogStreams, GoForwardOnly)
{
    GIO_Stream* stream = open("a.xml");
    ASSERT_NE(stream, nullptr);
    const GIO_StreamOps* ops = stream->ops;
    void* c = stream->instance;
    EXPECT_EQ(stream->kind, static_cast<uint32_t>(GIO_KIND_FORWARD_ONLY));
    ops->gio_Write("abc", 1, 3, c);
    EXPECT_EQ(ops->gio_Seek(c, 3, GIO_SEEK_SET), 0);
    EXPECT_EQ(ops->gio_Seek64(c, 0, GIO_SEEK_END), 0);
    EXPECT_EQ(ops->gio_Seek(c, 0, GIO_SEEK_SET), -1);
    EXPECT_EQ(ops->gio_Seek64(c, -1, GIO_SEEK_CUR), -1);
    char bytes[4] = "xyz";
    EXPECT_EQ(ops->gio_Read(bytes, 1, 3, c), 0U);
    EXPECT_EQ(ops->gio_Getc(c), -1);
    EXPECT_EQ(ops->gio_Gets(bytes, 4, c), nullptr);
    EXPECT_EQ(ops->gio_Write("d", 1, 1, c), 1U);
    EXPECT_EQ(ops->gio_Write("d", 1, 0, c), 0U);
    EXPECT_EQ(ops->gio_Write(nullptr, 1, 1, c), 0U);
    uint32_t kind = 9;
    EXPECT_STREQ(ops->gio_GetPath(c, &kind), "a.xml");
    EXPECT_EQ(kind, 0U);
    ops->gio_Close(c);
    EXPECT_EQ(folder_.read("a.xml"), "abcd");
}

TEST_P(LogStreams, BeginTheFileAnew)
{
    GIO_Stream* stream = open("a.xml");
    ASSERT_NE(stream, nullptr);
    print(stream, "%s", "a text that is longer");
    stream->ops->gio_Close(stream->instance);
    stream = open("a.xml");
    ASSERT_NE(stream, nullptr);
    print(stream, "%s", "short");
    stream->ops->gio_Close(stream->instance);
    EXPECT_EQ(folder_.read("a.xml"), "short");
}

TEST_P(LogStreams, LeaveAnEmptyFileWhereNothingIsPrinted)
{
    GIO_Stream* stream = open("a.xml");
    ASSERT_NE(stream, nullptr);
    EXPECT_EQ(orvlog_stream_close(stream, nullptr), GIO_OK);
    EXPECT_EQ(folder_.read("a.xml"), "");
}

TEST_P(LogStreams, AreNotOpenedWhereThereIsNoFolder)
{
    EXPECT_EQ(open("no/such/a.xml"), nullptr);
    EXPECT_EQ(errno, ENOENT);
    EXPECT_EQ(open(nullptr), nullptr);
    EXPECT_EQ(errno, EINVAL);
}

TEST_P(LogStreams, HaveTheFileForThemselves)
{
    GIO_Stream* stream = open("a.xml");
    ASSERT_NE(stream, nullptr);
    print(stream, "%s", "first");
    EXPECT_EQ(open("a.xml"), nullptr);
    EXPECT_EQ(errno, EBUSY);
    print(stream, "%s", " and last");
    stream->ops->gio_Close(stream->instance);
    EXPECT_EQ(folder_.read("a.xml"), "first and last");
}

TEST_P(LogStreams, AnswerToABadInstance)
{
    GIO_Stream* stream = open("a.xml");
    ASSERT_NE(stream, nullptr);
    const GIO_StreamOps* ops = stream->ops;
    EXPECT_EQ(ops->gio_Write("a", 1, 1, nullptr), 0U);
    EXPECT_EQ(ops->gio_Flush(nullptr), -1);
    EXPECT_EQ(ops->gio_Tell64(nullptr), -1);
    EXPECT_EQ(ops->gio_Error(nullptr), -1);
    EXPECT_EQ(ops->gio_Close(nullptr), GIO_ERR_BAD_HANDLE);
    EXPECT_EQ(orvlog_stream_close(nullptr, nullptr), GIO_ERR_BAD_HANDLE);
    EXPECT_EQ(ops->gio_Close(stream->instance), GIO_OK);
}

INSTANTIATE_TEST_SUITE_P(, LogStreams,
                         testing::Values(Opener{"mapped", orvlog_open_mapped_stream},
                                         Opener{"file", orvlog_open_file_stream}),
                         [](const auto& opener) { return std::string(opener.param.name); });

// What another process sees, and what a crash leaves.
TEST(MappedStream, HasWhatIsPrintedInTheFileAtOnce)
{
    const TempFolder folder;
    GIO_Stream* stream = orvlog_open_mapped_stream("a.xml");
    ASSERT_NE(stream, nullptr);
    print(stream, "%s", "<ORV a=\"1\"");
    const std::string content = folder.read("a.xml");
    EXPECT_EQ(content.substr(0, 10), "<ORV a=\"1\"");
    EXPECT_GE(content.size(), 26U);
    EXPECT_EQ(content.find_first_not_of('\0', 10), std::string::npos);
    stream->ops->gio_Close(stream->instance);
    EXPECT_EQ(folder.read("a.xml"), "<ORV a=\"1\"");
}

}  // namespace
