// The manual pages that orvlog writes of itself.

#include "tests/tools/run-tool.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <map>
#include <regex>
#include <sstream>
#include <string>
#include <vector>

namespace
{

using namespace orvlog::test;
namespace fs = std::filesystem;

class Manual : public testing::Test
{
protected:
    void SetUp() override
    {
        const ToolResult result = run_tool({"help", "--man", folder.path("man/man1")});
        ASSERT_EQ(result.status, 0);
        ASSERT_EQ(result.out + result.err, "");
        for (const auto& entry : fs::directory_iterator(folder.path("man/man1")))
            pages[entry.path().filename()] = read_file(entry.path());
    }

    ScratchFolder folder;
    std::map<std::string, std::string> pages;
};

bool has(const std::string& text, const std::string& part)
{
    return text.find(part) != std::string::npos;
}

std::string in_troff(const std::string& name)
{
    return std::regex_replace(name, std::regex("-"), "\\-");
}

std::vector<std::string> listed_commands()
{
    std::vector<std::string> names;
    std::istringstream lines(run_tool({"help"}).out);
    for (std::string line; std::getline(lines, line);)
        if (line.rfind("  ", 0) == 0 && line[2] != ' ')
            names.push_back(line.substr(2, line.find(' ', 2) - 2));
    return names;
}

// The names that a source hands to the parser: "-o,--output", "FILE".
std::vector<std::string> declared_names(const std::string& source)
{
    static const std::regex declaration(R"re(add_(?:option|flag)\(\s*"([^"]+)")re");
    std::vector<std::string> names;
    for (auto found = std::sregex_iterator(source.begin(), source.end(), declaration); found != std::sregex_iterator();
         ++found)
    {
        std::istringstream list((*found)[1]);
        for (std::string name; std::getline(list, name, ',');)
            names.push_back(name);
    }
    return names;
}

TEST_F(Manual, HasAPageForEachCommand)
{
    const std::vector<std::string> names = listed_commands();
    EXPECT_GE(names.size(), 6U);
    EXPECT_EQ(pages.size(), names.size() + 1);
    for (const std::string& name : names)
    {
        const std::string printed = std::regex_replace(name, std::regex("-"), "\\-");
        EXPECT_TRUE(has(pages["orvlog-" + name + ".1"], ".SH EXIT STATUS\n.TP\n\\fB0\\fR\ndone\n")) << name;
        EXPECT_TRUE(has(pages["orvlog-" + name + ".1"], ".SH EXAMPLES\n.EX\norvlog " + printed + " ")) << name;
        EXPECT_TRUE(has(pages["orvlog.1"], "\n\\fBorvlog\\-" + printed + "\\fR(1)\n")) << name;
    }
}

TEST_F(Manual, NamesEachOptionOfTheSources)
{
    size_t options = 0;
    for (const auto& entry : fs::directory_iterator(ORVLOG_SOURCE_DIR "/tools/commands"))
    {
        const std::string file = entry.path().filename();
        if (entry.path().extension() != ".cpp")
            continue;
        const std::string page = pages["orvlog-" + file.substr(0, file.size() - 4) + ".1"];
        for (const std::string& name : declared_names(read_file(entry.path())))
        {
            const std::string style = name[0] == '-' ? "\\fB" : "\\fI";
            EXPECT_TRUE(has(page, style + in_troff(name) + "\\fR")) << file << ": " << name;
            ++options;
        }
    }
    EXPECT_GE(options, 26U);
}

TEST_F(Manual, TellsWhatAnOptionTakes)
{
    const std::string& record = pages["orvlog-record.1"];
    EXPECT_TRUE(has(record, ".TH ORVLOG\\-RECORD 1 "));
    EXPECT_TRUE(has(record, ".SH SYNOPSIS\n\\fBorvlog record\\fR [\\fIOPTION\\fR]... \\fIFILE\\fR\n"));
    EXPECT_TRUE(has(record, ".TP\n\\fB\\-o\\fR, \\fB\\-\\-output\\fR \\fILOG\\fR\n"));
    EXPECT_TRUE(has(record, ".TP\n\\fB\\-\\-mode\\fR \\fBtransparent|base\\fR\n"));
    EXPECT_TRUE(has(record, ".TP\n\\fB\\-\\-dpi\\fR \\fIN\\fR\nresolution of the page images, from 1 to 2400 (default "
                            "96)\n"));
    EXPECT_TRUE(has(pages["orvlog-pack.1"],
                    "\\fBorvlog pack\\fR [\\fIOPTION\\fR]... \\fIFILE\\fR \\fB\\-o\\fR \\fICODED\\fR\n"));
    EXPECT_TRUE(has(pages["orvlog-help.1"], "\\fBorvlog help\\fR [\\fIOPTION\\fR]... [\\fICOMMAND\\fR]\n"));
}

TEST_F(Manual, IsCleanForItsReaders)
{
    if (run_program({"sh", "-c", "command -v mandoc"}).status != 0)
        GTEST_SKIP() << "no mandoc here";
    for (const auto& [name, page] : pages)
    {
        const ToolResult lint = run_program({"mandoc", "-T", "lint", folder.path("man/man1/" + name)});
        EXPECT_EQ(lint.out, "") << name;
        EXPECT_EQ(lint.err, "") << name;
        EXPECT_EQ(lint.status, 0) << name;
    }
}

TEST(ManualFolder, ThatCannotBeIsToldInOneLine)
{
    const ScratchFolder folder;
    const std::string file = folder.write("file", "");
    const ToolResult result = run_tool({"help", "--man", file + "/man"});
    EXPECT_EQ(result.status, 1);
    EXPECT_EQ(result.err, "orvlog: " + file + "/man/orvlog.1: Not a directory\n");
}

}  // namespace
