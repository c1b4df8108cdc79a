// Completion of orvlog's command lines in bash and zsh.

#include "tests/tools/run-tool.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace
{

using namespace orvlog::test;

// What bash offers for the last of the words behind "orvlog", and what it is told of files and folders.
std::string offered(const std::vector<std::string>& words)
{
    static const std::string script = run_tool({"help", "--completion", "bash"}).out +
                                      "compopt() { echo \"$*\"; }\n"
                                      "COMP_WORDS=(\"$@\") COMP_CWORD=$(($# - 1))\n_orvlog\n"
                                      "[ ${#COMPREPLY[@]} = 0 ] || echo \"${COMPREPLY[*]}\"\n";
    std::vector<std::string> command = {"bash", "--norc", "-c", script, "bash", "orvlog"};
    command.insert(command.end(), words.begin(), words.end());
    const ToolResult result = run_program(command);
    EXPECT_EQ(result.err, "");
    return result.out;
}

constexpr char kFiles[] = "-o default\n";
constexpr char kFolders[] = "-o dirnames\n";
constexpr char kNothing[] = "";

TEST(BashCompletion, OffersCommands)
{
    EXPECT_EQ(offered({"rec"}), "record\n");
    EXPECT_EQ(offered({"un"}), "unpack\n");
    EXPECT_EQ(offered({"--v"}), "--version\n");
    EXPECT_EQ(offered({"nothing-of-the-kind"}), kNothing);
    EXPECT_EQ(offered({""}).rfind("record ", 0), 0U);
}

TEST(BashCompletion, OffersOptionsOfTheCommand)
{
    EXPECT_EQ(offered({"record", "--p"}), "--pages --png --page-timeout --password --password-file\n");
    EXPECT_EQ(offered({"merge", "-"}), "-h --help -o --output --compressed --files-from\n");
    EXPECT_EQ(offered({"merge", "file", "--c"}), "--compressed\n");
    EXPECT_EQ(offered({"pack", "--c"}), kNothing);
    EXPECT_EQ(offered({"nothing", "--c"}), kNothing);
}

TEST(BashCompletion, OffersTheWordsOfAnOption)
{
    EXPECT_EQ(offered({"record", "--mode", ""}), "transparent base\n");
    EXPECT_EQ(offered({"record", "--mode", "b"}), "base\n");
    EXPECT_EQ(offered({"record", "--mode", "="}), "transparent base\n");
    EXPECT_EQ(offered({"record", "--mode", "=", "tr"}), "transparent\n");
    EXPECT_EQ(offered({"ticket", "x", "--family", "c"}), "cmyk\n");
    EXPECT_EQ(offered({"help", "--completion", ""}), "bash zsh\n");
    EXPECT_EQ(offered({"help", "me"}), "merge\n");
    EXPECT_EQ(offered({"ls", "x.xml", "--kind", "object"}), "object_paint object_paint_and_stroke\n");
}

TEST(BashCompletion, OffersFilesAndFolders)
{
    EXPECT_EQ(offered({"record", ""}), kFiles);
    EXPECT_EQ(offered({"record", "-o", "l"}), kFiles);
    EXPECT_EQ(offered({"record", "--output", "=", ""}), kFiles);
    EXPECT_EQ(offered({"record", "--png", ""}), kFolders);
    EXPECT_EQ(offered({"unpack", ""}), kFiles);
    EXPECT_EQ(offered({"record", "--dpi", ""}), kNothing);
    EXPECT_EQ(offered({"record", "--pages", "1"}), kNothing);
}

TEST(BashCompletion, PassesOverOptionsWithTheirValues)
{
    EXPECT_EQ(offered({"record", "--mode", "base", ""}), kFiles);
    EXPECT_EQ(offered({"record", "--mode", "=", "base", ""}), kFiles);
    EXPECT_EQ(offered({"record", "--check", ""}), kFiles);
    EXPECT_EQ(offered({"record", "letter.pdf", ""}), kNothing);
    EXPECT_EQ(offered({"record", "-", ""}), kNothing);
    EXPECT_EQ(offered({"record", "letter.pdf", "--mode", ""}), "transparent base\n");
}

TEST(ZshCompletion, IsWellFormed)
{
    const ScratchFolder folder;
    const ToolResult written = run_tool({"help", "--completion", "zsh"});
    EXPECT_EQ(written.status, 0);
    EXPECT_EQ(written.out.rfind("#compdef orvlog\n", 0), 0U);
    EXPECT_NE(written.out.find("\n        'pack:code a file as a log is coded on the fly'\n"), std::string::npos);
    EXPECT_NE(written.out.find("\n            '(-o --output)'{-o+,--output=}'[the coded file, or - for standard "
                               "output]:CODED:_files' \\\n            '1:FILE:_files'\n        ;;\n"),
              std::string::npos);
    EXPECT_NE(written.out.find(":(transparent base)' \\\n"), std::string::npos);
    EXPECT_NE(
        written.out.find("'(--png)'--png='[folder for the page images instead of the document'\\''s]:DIR:_files -/'"),
        std::string::npos);
    if (run_program({"sh", "-c", "command -v zsh"}).status != 0)
        GTEST_SKIP() << "no zsh here";
    const ToolResult read = run_program({"zsh", "-n", folder.write("_orvlog", written.out)});
    EXPECT_EQ(read.status, 0);
    EXPECT_EQ(read.err, "");
}

TEST(Completion, KnowsNoOtherShell)
{
    const ToolResult result = run_tool({"help", "--completion", "csh"});
    EXPECT_EQ(result.status, 2);
    EXPECT_EQ(result.out, "");
}

}  // namespace
