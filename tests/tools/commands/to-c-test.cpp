// Logs as programs in C, by the command: compiled by the system's compiler, and run.

#include "tests/tools/run-tool.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <string>
#include <utility>
#include <vector>

namespace
{

using namespace orvlog::test;

const std::string kSample = ORVLOG_SOURCE_DIR "/docs/sample.pdf";

int record(const ScratchFolder& folder, const std::string& log, const std::vector<std::string>& options = {})
{
    std::vector<std::string> words = {"record", kSample, "-o", folder.path(log), "--png", folder.path("pages")};
    words.insert(words.end(), options.begin(), options.end());
    return run_tool(words).status;
}

bool has(const std::string& text, const std::string& part)
{
    return text.find(part) != std::string::npos;
}

// Compiles FOLDER/job.c and runs it in FOLDER/run. Empty, or what went wrong.
std::string make_and_run(const ScratchFolder& folder, const std::string& library, const std::string& options = "")
{
    std::filesystem::create_directory(folder.path("run"));
    const std::string compile = std::string(ORVLOG_C_COMPILER) + " -std=c11 -Wall -Wextra -Werror " + options + " -I" +
                                ORVLOG_SOURCE_DIR + " " + folder.path("job.c") + " " + library + " -lm " +
                                ORVLOG_C_FLAGS + " -o " + folder.path("job");
    const ToolResult compiled = run_program({"sh", "-c", compile});
    if (compiled.status != 0)
        return compiled.err;
    const ToolResult ran = run_program({"sh", "-c", "cd " + folder.path("run") + " && ../job job.xml .."});
    return ran.status == 0 ? ran.err : "the program ended with " + std::to_string(ran.status) + ": " + ran.err;
}

const std::string kShared = std::string(ORVLOG_SHARED_LIBRARY) + " -Wl,-rpath," +
                            std::filesystem::path(ORVLOG_SHARED_LIBRARY).parent_path().string();
const std::string kStatic = std::string(ORVLOG_STATIC_LIBRARY) + " -lstdc++";

void expect_same_log(const std::vector<std::string>& recorded, const std::string& library)
{
    const ScratchFolder folder;
    ASSERT_EQ(record(folder, "job.xml", recorded), 0);
    const ToolResult made = run_tool({"to-c", folder.path("job.xml"), "-o", folder.path("job.c")});
    EXPECT_EQ(made.status, 0);
    EXPECT_EQ(made.err, "262 calls\n");
    EXPECT_EQ(make_and_run(folder, library), "");
    EXPECT_TRUE(read_file(folder.path("run/job.xml")) == read_file(folder.path("job.xml")));
}

TEST(ToolToC, GivesAProgramThatWritesTheSameLog)
{
    expect_same_log({}, kShared);
}

TEST(ToolToC, AnswersWhatTheLoggerAsksInBaseMode)
{
    expect_same_log({"--mode", "base"}, kStatic);
}

TEST(ToolToC, MakesCodedLogsAndMergedOnes)
{
    expect_same_log({"--keep-images", "--via-temporary-log", "--compressed"}, kStatic);
}

TEST(ToolToC, MakesTheFilesBesideALog)
{
    const ScratchFolder folder;
    ASSERT_EQ(record(folder, "job.xml", {"--images-beside", "pre", "--pages", "2", "--keep-images"}), 0);
    const ToolResult made = run_tool({"to-c", folder.path("job.xml"), "-o", folder.path("job.c")});
    EXPECT_EQ(made.status, 0) << made.err;
    EXPECT_EQ(make_and_run(folder, kShared), "");
    size_t beside = 0;
    for (const auto& entry : std::filesystem::directory_iterator(folder.path("run")))
    {
        const std::string name = entry.path().filename().string();
        beside += name == "job.xml" ? 0 : 1;
        EXPECT_TRUE(read_file(entry.path().string()) == read_file(folder.path(name))) << name;
    }
    EXPECT_GE(beside, 8U);
}

TEST(ToolToC, MakesAPartAsTrimDoes)
{
    const ScratchFolder folder;
    ASSERT_EQ(record(folder, "job.xml"), 0);
    ASSERT_EQ(run_tool({"trim", folder.path("job.xml"), "--ids", "143", "-o", folder.path("small.xml")}).status, 0);
    const ToolResult made = run_tool({"to-c", folder.path("job.xml"), "--ids", "143", "-o", folder.path("job.c")});
    EXPECT_EQ(made.status, 0) << made.err;
    EXPECT_EQ(make_and_run(folder, kShared), "");
    EXPECT_EQ(read_file(folder.path("run/job.xml")), read_file(folder.path("small.xml")));
    const std::string source = read_file(folder.path("job.c"));
    EXPECT_TRUE(has(source, "/* id 0, line ")) << source;
    EXPECT_TRUE(has(source, ": ORV_object_paint */"));
    const ToolResult none = run_tool({"to-c", folder.path("job.xml"), "--ids", "999", "-o", folder.path("none.c")});
    EXPECT_EQ(none.status, 1);
    EXPECT_TRUE(has(none.err, "has no paint 999")) << none.err;
    EXPECT_FALSE(std::filesystem::exists(folder.path("none.c")));
}

// A mask that is read behind its group's start, and comments behind calls from within callbacks.
TEST(ToolToC, MakesWhatComesBehindItsCall)
{
    for (const char* name : {"late-mask.xml", "comments-within.xml"})
    {
        const std::string log = std::string(ORVLOG_SOURCE_DIR "/tests/expected/c-programs/") + name;
        const ScratchFolder folder;
        const ToolResult made = run_tool({"to-c", log, "-o", folder.path("job.c")});
        EXPECT_EQ(made.status, 0) << made.err;
        EXPECT_EQ(make_and_run(folder, kStatic), "") << name;
        EXPECT_TRUE(read_file(folder.path("run/job.xml")) == read_file(log)) << name;
    }
}

// The program as it is handed on. Its first comment has the version.
TEST(ToolToC, MakesTheProgramsThatAreCompiledOnEachSystem)
{
    const std::string expected = ORVLOG_SOURCE_DIR "/tests/expected/";
    const std::pair<const char*, const char*> programs[] = {{"every-call", "every-call-transparent.xml"},
                                                            {"page", "examples/page.xml"}};
    for (const auto& [name, log] : programs)
    {
        const ScratchFolder folder;
        ASSERT_EQ(run_tool({"to-c", expected + log, "-o", folder.path(std::string(name) + ".c")}).status, 0);
        for (const auto& entry : std::filesystem::directory_iterator(folder.path("")))
        {
            const std::string file = entry.path().filename().string();
            const std::string made = read_file(entry.path().string());
            const bool source = file.ends_with(".c");
            const std::string wanted = read_file(expected + "c-programs/" + file + (source ? ".txt" : ""));
            const size_t from = source ? made.find("#include") : 0;
            const size_t wanted_from = source ? wanted.find("#include") : 0;
            EXPECT_TRUE(made.substr(from) == wanted.substr(wanted_from)) << file;
        }
    }
}

TEST(ToolToC, OverwritesNoFileBeside)
{
    const ScratchFolder folder;
    ASSERT_EQ(record(folder, "job.xml", {"--pages", "2"}), 0);
    folder.write("job-images.bin", "mine");
    const ToolResult made = run_tool({"to-c", folder.path("job.xml"), "-o", folder.path("job.c")});
    EXPECT_EQ(made.status, 1);
    EXPECT_TRUE(has(made.err, "job-images.bin: File exists; nothing was written")) << made.err;
    EXPECT_EQ(read_file(folder.path("job-images.bin")), "mine");
    EXPECT_FALSE(std::filesystem::exists(folder.path("job.c")));
    EXPECT_FALSE(std::filesystem::exists(folder.path("job-profiles.bin")));
    EXPECT_EQ(run_tool({"to-c", folder.path("job.xml"), "-o", "-"}).status, 2);
}

// Comments, trigraphs, line splices, escapes, quotes and a name of a megabyte: a log from a stranger.
TEST(ToolToC, LetsNothingOfALogOutOfItsLiteral)
{
    const ScratchFolder folder;
    ASSERT_EQ(record(folder, "sample.xml", {"--pages", "1"}), 0);
    std::string log = read_file(folder.path("sample.xml"));
    const size_t first = log.find('\n') + 1;
    const std::string comment = "*/ system(\"x\"); /* ?\?/\" \\\n?\?=error \\\n\" %s %n \\x22; \x01\xff 77\n";
    const std::string call = "  <ORV_document_start document_context=\"0\" document_id=\"1\" "
                             "font_engine_functions=\"TRUE\" fp_EngineIdGet=\"";
    ASSERT_EQ(log.compare(first, call.size(), call), 0) << log.substr(first, 200);
    const size_t name = first + call.size();
    const size_t end = log.find('"', name);
    log.replace(name, end - name, "?\?/\\x22;exit(3);*/\\\\x0a" + std::string(1U << 20, 'n') + "?\?/");
    log.insert(first, "\n<!--\n" + comment + "-->\n");
    folder.write("job.xml", log);
    const ToolResult made = run_tool({"to-c", folder.path("job.xml"), "-o", folder.path("job.c")});
    EXPECT_EQ(made.status, 0) << made.err.substr(0, 500);
    EXPECT_EQ(make_and_run(folder, kShared, "-Wtrigraphs").substr(0, 500), "");
    EXPECT_TRUE(read_file(folder.path("run/job.xml")) == read_file(folder.path("job.xml")));
}

TEST(ToolToC, SaysWhatIsDamaged)
{
    const ScratchFolder folder;
    ASSERT_EQ(record(folder, "whole.xml", {"--pages", "1"}), 0);
    const std::string log = read_file(folder.path("whole.xml"));
    folder.write("cut.xml", log.substr(0, log.size() / 2));
    const ToolResult cut = run_tool({"to-c", folder.path("cut.xml"), "-o", folder.path("job.c")});
    EXPECT_EQ(cut.status, 1);
    EXPECT_TRUE(has(cut.err, "is cut short; the program makes the calls that it has")) << cut.err;
    EXPECT_EQ(make_and_run(folder, kShared), "");
    folder.write("none.xml", "no log\n");
    const ToolResult none = run_tool({"to-c", folder.path("none.xml"), "-o", folder.path("none.c")});
    EXPECT_EQ(none.status, 1);
    EXPECT_TRUE(has(none.err, "none.xml: not a log")) << none.err;
}

}  // namespace
