// Every command line that the pages show for the orvlog command works as it stands, pasted into a shell in a folder
// that has docs/sample.pdf.

#include "tests/tools/run-tool.h"

#include <gtest/gtest.h>

#include <unistd.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <regex>
#include <sstream>
#include <string>
#include <vector>

namespace
{

namespace fs = std::filesystem;
using namespace orvlog::test;

const fs::path kRoot = ORVLOG_SOURCE_DIR;

std::vector<fs::path> pages()
{
    std::vector<fs::path> found = {kRoot / "README.md"};
    for (const fs::directory_entry& entry : fs::directory_iterator(kRoot / "docs"))
        if (entry.path().extension() == ".md")
            found.push_back(entry.path());
    std::sort(found.begin(), found.end());
    return found;
}

// The blocks of shell commands in a page.
std::vector<std::string> shell_blocks(const fs::path& page)
{
    std::ifstream file(page);
    std::vector<std::string> blocks;
    bool inside = false;
    for (std::string line; std::getline(file, line);)
    {
        if (line.starts_with("```"))
        {
            inside = line == "```sh";
            if (inside)
                blocks.emplace_back();
        }
        else if (inside)
            blocks.back() += line + "\n";
    }
    return blocks;
}

ToolResult paste(const std::string& folder, const std::string& lines)
{
    const std::string tools = fs::path(ORVLOG_TOOL).parent_path();
    return run_program({"env", "-C", folder, "PATH=" + tools + ":/usr/bin:/bin", "sh", "-euc", lines});
}

// A folder as the project's is to whoever pastes.
void add_sample(const ScratchFolder& folder)
{
    fs::create_directories(folder.path("docs"));
    fs::copy_file(kRoot / "docs/sample.pdf", folder.path("docs/sample.pdf"));
    fs::create_directory_symlink(kRoot / "scripts", folder.path("scripts"));
}

// The tutorial, whose commands go on from one another.
const fs::path kTutorial = kRoot / "docs/finding-a-fault.md";

struct Step
{
    std::string commands;
    std::string shown;  // all that they write, if the page shows it
    bool shows = false;
};

// Where a call stands in the log depends on the outlines of the fonts that the machine has.
std::string without_places(const std::string& text)
{
    static const std::regex place(" *line:[0-9]+|line [0-9]+, byte [0-9]+");
    return std::regex_replace(text, place, " PLACE");
}

// The blocks of commands of a page, each with the plain block behind it.
std::vector<Step> steps(const fs::path& page)
{
    std::ifstream file(page);
    std::vector<Step> found;
    enum class In
    {
        prose,
        commands,
        output
    } in = In::prose;
    for (std::string line; std::getline(file, line);)
        if (line == "```sh")
        {
            in = In::commands;
            found.emplace_back();
        }
        else if (line == "```" && in == In::prose && !found.empty())
        {
            in = In::output;
            found.back().shows = true;
        }
        else if (line.starts_with("```"))
            in = In::prose;
        else if (in == In::commands)
            found.back().commands += line + "\n";
        else if (in == In::output)
            found.back().shown += line + "\n";
    return found;
}

TEST(Examples, OfThePagesWorkAsTheyStand)
{
    size_t run = 0;
    for (const fs::path& page : pages())
    {
        for (const std::string& block : shell_blocks(page))
        {
            if (page == kTutorial)
                break;
            if (block.find("orvlog ") != 0 && block.find("\norvlog ") == std::string::npos)
                continue;
            const ScratchFolder folder;
            add_sample(folder);
            const ToolResult result = paste(folder.path(""), block);
            EXPECT_EQ(result.status, 0) << page << "\n" << block << result.err;
            ++run;
        }
    }
    EXPECT_GE(run, 5U);
}

// One after another, and what they write is what the page shows. Logs that differ give the status 1.
TEST(Examples, OfTheTutorialWriteWhatItShows)
{
    const ScratchFolder folder;
    add_sample(folder);
    size_t shown = 0;
    for (const Step& step : steps(kTutorial))
    {
        const ToolResult result = paste(folder.path(""), step.commands);
        EXPECT_EQ(result.status, step.commands.starts_with("orvlog diff ") ? 1 : 0) << step.commands << result.err;
        if (!step.shows)
            continue;
        EXPECT_EQ(without_places(result.out + result.err), without_places(step.shown)) << step.commands;
        ++shown;
    }
    EXPECT_GE(shown, 12U);
}

TEST(Examples, NameScriptsThatAreThere)
{
    for (const fs::path& page : pages())
    {
        for (const std::string& block : shell_blocks(page))
        {
            std::istringstream lines(block);
            for (std::string line; std::getline(lines, line);)
            {
                const std::string script = line.substr(0, line.find(' '));
                const bool runs = !script.starts_with("scripts/") || access((kRoot / script).c_str(), X_OK) == 0;
                EXPECT_TRUE(runs) << page << ": " << line;
            }
        }
    }
}

// No page asks for the program behind the command.
TEST(Examples, AreOfOneProgram)
{
    for (const fs::path& page : pages())
    {
        const std::string text = read_file(page);
        EXPECT_EQ(text.find("orvlog-record -"), std::string::npos) << page;
        EXPECT_EQ(text.find("orvlog-record docs"), std::string::npos) << page;
    }
}

// What the examples of help and manual pages start from.
const char* const kBefore = "cp docs/sample.pdf letter.pdf\n"
                            "orvlog record letter.pdf --save-tickets .\n"
                            "mv ticket-1.bin job-1.ticket\n"
                            "cp letter.orvlog.xml good.orvlog.xml\n"
                            "cp letter.orvlog.xml bad.orvlog.xml\n"
                            "cp letter.orvlog.xml orvlog-0f0e0d0c-0b0a0908-07060504-03020100.tmp\n"
                            "mkdir logs old new\n"
                            "cp letter.orvlog.xml logs\n"
                            "cp -r logs spool\n"
                            "cp " ORVLOG_BLOCKS_RENDERER " driver.so\n"
                            "cp driver.so old\n"
                            "cp driver.so new\n";

TEST(Examples, OfHelpWorkOneAfterAnother)
{
    const ScratchFolder folder;
    add_sample(folder);
    const ToolResult before = paste(folder.path(""), kBefore);
    ASSERT_EQ(before.status, 0) << before.err;
    std::istringstream list(run_tool({"help"}).out);
    size_t run = 0;
    for (std::string line; std::getline(list, line);)
    {
        if (!line.starts_with("  ") || line.starts_with("    ") || line.find("orvlog") == 2)
            continue;
        const std::string command = line.substr(2, line.find(' ', 2) - 2);
#ifdef ORVLOG_INSTRUMENTED
        // The address sanitizer takes more address space than a run is allowed.
        if (command == "regress")
            continue;
#endif
        const std::string help = run_tool({command, "--help"}).out;
        const size_t at = help.find("\nExample: ");
        ASSERT_NE(at, std::string::npos) << command;
        const std::string example = help.substr(at + 10, help.find('\n', at + 10) - at - 10);
        const ToolResult result = paste(folder.path(""), example);
        EXPECT_EQ(result.status, 0) << example << "\n" << result.err;
        ++run;
    }
    EXPECT_GE(run, 12U);
}

}  // namespace
