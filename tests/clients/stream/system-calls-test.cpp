// The writes that the system is asked for: one a print for a file, none for a print into a mapped file. For systems
// that count them.

#include "clients/stream/orvlog-stream.h"
#include "tests/support/temp-folder.h"

#include <gtest/gtest.h>

#include <cstdarg>
#include <filesystem>
#include <fstream>
#include <string>

namespace
{

using orvlog::test::TempFolder;

constexpr int kPrints = 100000;
constexpr char kText[] = " attribute=\"value\"";

int32_t print(GIO_Stream* stream, const char* format, ...)
{
    va_list args;
    va_start(args, format);
    const int32_t result = stream->ops->gio_VPrintf(stream->instance, format, args);
    va_end(args);
    return result;
}

// Writes that this process has asked for; -1 if they can't be read.
int64_t writes_so_far()
{
    std::ifstream counts("/proc/self/io");
    std::string name;
    int64_t count = 0;
    while (counts >> name >> count)
        if (name == "syscw:")
            return count;
    return -1;
}

int64_t writes_of(GIO_Stream* (*open)(const char*))
{
    const TempFolder folder;
    GIO_Stream* stream = open("a.xml");
    EXPECT_NE(stream, nullptr);
    const int64_t before = writes_so_far();
    EXPECT_GE(before, 0);
    for (int i = 0; i < kPrints; ++i)
    {
        EXPECT_GT(print(stream, "%s", kText), 0);
        EXPECT_EQ(stream->ops->gio_Flush(stream->instance), 0);
    }
    const int64_t after = writes_so_far();
    orvlog_stream_close(stream, nullptr);
    EXPECT_EQ(std::filesystem::file_size("a.xml"), kPrints * (sizeof kText - 1));
    return after - before;
}

TEST(SystemCalls, AreOneForEachPrintIntoAFile)
{
    EXPECT_EQ(writes_of(orvlog_open_file_stream), kPrints);
}

// 1.8 MB of text: what is written is zero bytes, many pages at a time.
TEST(SystemCalls, AreNoneForAPrintIntoAMappedFile)
{
    EXPECT_LT(writes_of(orvlog_open_mapped_stream), 20);
}

}  // namespace
