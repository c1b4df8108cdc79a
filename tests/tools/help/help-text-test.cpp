// What --help shows.

#include "tests/tools/run-tool.h"

#include <gtest/gtest.h>

namespace
{

using namespace orvlog::test;

TEST(ToolHelp, ShowsWhatACommandTakes)
{
    const ToolResult help = run_tool({"merge", "--help"});
    EXPECT_EQ(help.status, 0);
    EXPECT_EQ(help.err, "");
    EXPECT_EQ(help.out.rfind("Usage: orvlog merge [OPTION]... TEMPLOG -o FILE\n\n"
                             "make one log of a temporary log and the logs of its kept images\n\n",
                             0),
              0U);
    const size_t arguments = help.out.find("\nArguments:\n");
    ASSERT_NE(arguments, std::string::npos);
    EXPECT_EQ(help.out.substr(arguments),
              "\nArguments:\n"
              "  TEMPLOG               a temporary log: a path, a URL, or - for standard input\n"
              "\nOptions:\n"
              "  -h, --help            show this text\n"
              "  -o, --output FILE     the merged log, or - for standard output\n"
              "  --compressed          code the merged log\n"
              "  --files-from DIR      look for the files that the log names in DIR, too,\n"
              "                        before the log's folder; may be given again\n"
              "\nExample: orvlog merge orvlog-0f0e0d0c-0b0a0908-07060504-03020100.tmp -o letter.orvlog.xml\n"
              "\nExit status:\n"
              "  0  done\n"
              "  1  failed, with one line on standard error\n"
              "  2  bad command line\n");
}

TEST(ToolHelp, TellsWordsRangesAndDefaults)
{
    const std::string record = run_tool({"record", "-h"}).out;
    EXPECT_NE(record.find("\n  --mode transparent|base\n                        base: log all images"),
              std::string::npos);
    EXPECT_NE(record.find("\n  --dpi N               resolution of the page images, from 1 to 2400 (default\n"
                          "                        96)\n"),
              std::string::npos);
    EXPECT_NE(run_tool({"help", "help"}).out.find("\n  COMMAND               the command to tell about: record, pack"),
              std::string::npos);
}

TEST(ToolHelp, FailsWhereItCannotBePrinted)
{
    for (const char* word : {"--version", "--help", "help"})
    {
        const ToolResult result = run_program({"sh", "-c", "exec \"$1\" \"$2\" > /dev/full", "sh", ORVLOG_TOOL, word});
        EXPECT_EQ(result.status, 1) << word;
        EXPECT_EQ(result.err, "orvlog: standard output: No space left on device\n") << word;
    }
    const ToolResult one = run_program({"sh", "-c", "exec \"$1\" ls --help > /dev/full", "sh", ORVLOG_TOOL});
    EXPECT_EQ(one.status, 1);
    EXPECT_EQ(one.err, "orvlog: standard output: No space left on device\n");
}

TEST(ToolHelp, OfNoSuchCommandIsABadCommandLine)
{
    const ToolResult result = run_tool({"help", "nothing"});
    EXPECT_EQ(result.status, 2);
    EXPECT_EQ(result.err.rfind("orvlog help: COMMAND: nothing not in {record,", 0), 0U);
    EXPECT_EQ(result.out, "");
}

}  // namespace
