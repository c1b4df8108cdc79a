// Processes that are killed while they print: what they printed is there, to the last whole print.

#include "clients/stream/orvlog-stream.h"
#include "reader/text/log-bytes.h"
#include "reader/text/log-files.h"
#include "tests/support/temp-folder.h"

#include <gtest/gtest.h>

#include <sys/mman.h>
#include <sys/wait.h>
#include <unistd.h>

#include <csignal>
#include <cstdarg>
#include <filesystem>
#include <iterator>
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

std::string line_of(unsigned number)
{
    return number == 0 ? "<ORV a=\"1\">\n"
                       : "  <element number=\"" + std::to_string(number * 2654435761U) + "\"" +
                             std::string(number % 40, 'x') + "/>\n";
}

// Lines that a process has printed for sure when it was killed.
unsigned print_and_kill(GIO_Stream* (*open)(const char*), useconds_t after)
{
    void* shared = mmap(nullptr, 4096, PROT_READ | PROT_WRITE, MAP_SHARED | MAP_ANONYMOUS, -1, 0);
    auto* printed = static_cast<volatile unsigned*>(shared);
    const pid_t child = fork();
    if (child == 0)
    {
        GIO_Stream* stream = open("a.xml");
        if (stream == nullptr)
            _exit(1);
        for (unsigned i = 0;; ++i)
        {
            print(stream, "%s", line_of(i).c_str());
            stream->ops->gio_Flush(stream->instance);
            *printed = i + 1;
        }
    }
    usleep(after);
    kill(child, SIGKILL);
    int status = 0;
    waitpid(child, &status, 0);
    EXPECT_TRUE(WIFSIGNALED(status));
    const unsigned count = *printed;
    munmap(shared, 4096);
    return count;
}

std::string text_of_log()
{
    bool foreign_journal = false;
    const auto log = orvlog::reader::open_log("a.xml", &foreign_journal);
    EXPECT_FALSE(foreign_journal);
    if (log == nullptr)
        return "";
    orvlog::reader::LogBytes bytes(*log);
    std::istream text(&bytes);
    return {std::istreambuf_iterator<char>(text), {}};
}

void hold_to_what_was_printed(GIO_Stream* (*open)(const char*))
{
    const TempFolder folder;
    for (useconds_t after = 500; after < 60000; after += 1 + after / 4)
    {
        std::filesystem::remove("a.xml");
        std::filesystem::remove("a.xml.journal");
        const unsigned printed = print_and_kill(open, after);
        const std::string text = text_of_log();
        std::string expected;
        for (unsigned i = 0; i < printed; ++i)
            expected += line_of(i);
        ASSERT_TRUE(text.starts_with(expected)) << after << ": " << text.size() << " of " << expected.size();
        // The line that was being printed may be there, whole or in part.
        const std::string rest = text.substr(expected.size());
        ASSERT_TRUE(line_of(printed).starts_with(rest)) << after << ": " << rest.substr(0, 200);
    }
}

TEST(KilledProcess, LeavesAllOfAMappedLog)
{
    hold_to_what_was_printed(orvlog_open_mapped_stream);
}

TEST(KilledProcess, LeavesAllOfALogInAFile)
{
    hold_to_what_was_printed(orvlog_open_file_stream);
}

TEST(KilledProcess, LeavesAllOfALogInFrames)
{
    hold_to_what_was_printed(orvlog_open_zstd_stream);
}

}  // namespace
