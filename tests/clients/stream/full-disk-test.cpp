// A disk that fills: a device that is full, and files that may not get longer.

#include "clients/stream/orvlog-stream.h"
#include "reader/text/log-bytes.h"
#include "reader/text/log-files.h"
#include "tests/support/temp-folder.h"

#include <gtest/gtest.h>

#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <cstdarg>
#include <filesystem>
#include <iterator>
#include <string>

namespace
{

using orvlog::test::TempFolder;

constexpr int kPrints = 200000;
constexpr uint64_t kLongest = 300001;

int32_t print(GIO_Stream* stream, const char* format, ...)
{
    va_list args;
    va_start(args, format);
    const int32_t result = stream->ops->gio_VPrintf(stream->instance, format, args);
    va_end(args);
    return result;
}

// A text that is badly compressed.
std::string line_of(int number)
{
    uint64_t value = static_cast<uint64_t>(number) * 0x9E3779B97F4A7C15 + 1;
    std::string line = number == 0 ? "<ORV " : "";
    for (int i = 0; i < 40; ++i)
    {
        value ^= value << 13;
        value ^= value >> 7;
        value ^= value << 17;
        line += static_cast<char>('!' + value % 90);
    }
    return line + "\n";
}

// Prints in a process whose files may not get longer; gives the report of the stream, and the failed prints behind
// the first one that failed.
ORVLOG_StreamReport print_within_limit(GIO_Stream* (*open)(const char*))
{
    int ends[2];
    EXPECT_EQ(pipe(ends), 0);
    const pid_t child = fork();
    if (child == 0)
    {
        const rlimit limit = {kLongest, kLongest};
        setrlimit(RLIMIT_FSIZE, &limit);
        GIO_Stream* stream = open("a.xml");
        bool failed = false;
        for (int i = 0; stream != nullptr && i < kPrints; ++i)
        {
            const bool good =
                print(stream, "%s", line_of(i).c_str()) > 0 && stream->ops->gio_Flush(stream->instance) == 0;
            if (good && failed)
                _exit(2);
            failed = failed || !good;
        }
        ORVLOG_StreamReport report;
        orvlog_stream_close(stream, &report);
        const ssize_t count = write(ends[1], &report, sizeof report);
        _exit(failed && count == sizeof report ? 0 : 3);
    }
    close(ends[1]);
    ORVLOG_StreamReport report = {};
    EXPECT_EQ(read(ends[0], &report, sizeof report), static_cast<ssize_t>(sizeof report));
    close(ends[0]);
    int status = 0;
    waitpid(child, &status, 0);
    EXPECT_TRUE(WIFEXITED(status)) << "signal " << WTERMSIG(status);
    EXPECT_EQ(WEXITSTATUS(status), 0);
    return report;
}

std::string expected_text(size_t size)
{
    std::string text;
    for (int i = 0; text.size() < size; ++i)
        text += line_of(i);
    return text.substr(0, size);
}

std::string text_of_log(const char* name)
{
    const auto log = orvlog::reader::open_log(name);
    if (log == nullptr)
        return "(absent)";
    orvlog::reader::LogBytes bytes(*log);
    std::istream text(&bytes);
    return {std::istreambuf_iterator<char>(text), {}};
}

TEST(FullDisk, IsUsedToItsEndByAMappedStream)
{
    const TempFolder folder;
    const ORVLOG_StreamReport report = print_within_limit(orvlog_open_mapped_stream);
    EXPECT_EQ(report.error, EFBIG);
    EXPECT_GT(report.text_bytes, kLongest - 4096);
    EXPECT_LE(report.text_bytes, kLongest);
    EXPECT_TRUE(folder.read("a.xml") == expected_text(report.text_bytes));
}

TEST(FullDisk, IsUsedToItsEndByAFileStream)
{
    const TempFolder folder;
    const ORVLOG_StreamReport report = print_within_limit(orvlog_open_file_stream);
    EXPECT_EQ(report.error, EFBIG);
    EXPECT_EQ(report.text_bytes, kLongest);
    EXPECT_TRUE(folder.read("a.xml") == expected_text(kLongest));
}

// What was taken is in frames, or in the journal, which then stays.
TEST(FullDisk, LosesNothingThatAZstdStreamHasTaken)
{
    const TempFolder folder;
    const ORVLOG_StreamReport report = print_within_limit(orvlog_open_zstd_stream);
    EXPECT_EQ(report.error, EFBIG);
    EXPECT_GT(report.text_bytes, kLongest / 2);
    EXPECT_EQ(report.journal == 1, std::filesystem::exists("a.xml.journal"));
    EXPECT_LE(std::filesystem::file_size("a.xml"), kLongest);
    const std::string text = text_of_log("a.xml");
    EXPECT_EQ(text.size(), report.text_bytes);
    EXPECT_TRUE(text == expected_text(report.text_bytes));
}

TEST(FullDisk, IsRememberedAtOnce)
{
    for (const auto open : {orvlog_open_mapped_stream, orvlog_open_file_stream})
    {
        GIO_Stream* stream = open("/dev/full");
        ASSERT_NE(stream, nullptr);
        EXPECT_EQ(print(stream, "%s", "a"), 1);
        EXPECT_EQ(stream->ops->gio_Flush(stream->instance), -1);
        EXPECT_EQ(print(stream, "%s", "b"), -1);
        EXPECT_EQ(stream->ops->gio_Flush(stream->instance), -1);
        EXPECT_EQ(stream->ops->gio_LastError(stream->instance), GIO_ERR_NO_SPACE);
        EXPECT_EQ(orvlog_stream_error(stream), ENOSPC);
        stream->ops->gio_ClearErr(stream->instance);
        EXPECT_EQ(stream->ops->gio_Error(stream->instance), 1);
        ORVLOG_StreamReport report;
        EXPECT_EQ(orvlog_stream_close(stream, &report), GIO_ERR_NO_SPACE);
        EXPECT_EQ(report.error, ENOSPC);
        EXPECT_EQ(report.text_bytes, 0U);
    }
}

}  // namespace
