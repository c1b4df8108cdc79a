// Smaller logs, and logs that may be handed on, by the command.

#include "tests/tools/run-tool.h"

#include <gtest/gtest.h>

#include <sys/stat.h>

#include <filesystem>
#include <string>

namespace
{

using namespace orvlog::test;

const std::string kSample = ORVLOG_SOURCE_DIR "/docs/sample.pdf";

bool has(const std::string& text, const std::string& part)
{
    return text.find(part) != std::string::npos;
}

TEST(ToolTrim, WritesALogWhoseReplayGivesTheSameLog)
{
    const ScratchFolder folder;
    const std::string log = folder.path("job.xml");
    ASSERT_EQ(run_tool({"record", kSample, "-o", log, "--png", folder.path("pages"), "--mode", "base"}).status, 0);
    const ToolResult all = run_tool({"trim", log, "--pages", "1-", "-o", folder.path("all.xml")});
    EXPECT_EQ(all.status, 0) << all.err;
    EXPECT_EQ(read_file(folder.path("all.xml")), read_file(log));
    const ToolResult page = run_tool({"trim", log, "--pages", "2", "-o", folder.path("page.xml")});
    EXPECT_EQ(page.status, 0) << page.err;
    EXPECT_EQ(run_tool({"check", folder.path("page.xml")}).status, 0);
    const ToolResult replay = run_tool({"replay", folder.path("page.xml"), "--log", folder.path("again.xml")});
    EXPECT_EQ(replay.status, 0) << replay.err;
    EXPECT_TRUE(has(replay.err, " 1 pages")) << replay.err;
    EXPECT_EQ(read_file(folder.path("again.xml")), read_file(folder.path("page.xml")));
}

TEST(ToolTrim, CopiesImageDataAndOverwritesNone)
{
    const ScratchFolder folder;
    const ScratchFolder other;
    const std::string log = folder.path("job.xml");
    ASSERT_EQ(run_tool({"record", kSample, "-o", log, "--png", folder.path("pages"), "--mode", "base",
                        "--images-beside", "job"})
                  .status,
              0);
    other.write("page-dir-30.bin", "mine");
    const ToolResult refused = run_tool({"trim", log, "--pages", "2", "-o", other.path("page.xml")});
    EXPECT_EQ(refused.status, 1);
    EXPECT_TRUE(has(refused.err, "page-dir-30.bin: File exists; nothing was written")) << refused.err;
    EXPECT_EQ(read_file(other.path("page-dir-30.bin")), "mine");
    EXPECT_FALSE(std::filesystem::exists(other.path("page.xml")));
    EXPECT_FALSE(std::filesystem::exists(other.path("page-img-10.bin")));
    std::filesystem::remove(other.path("page-dir-30.bin"));
    EXPECT_EQ(run_tool({"trim", log, "--pages", "2", "-o", other.path("page.xml")}).status, 0);
    EXPECT_EQ(run_tool({"check", other.path("page.xml")}).status, 0);
    EXPECT_EQ(run_tool({"replay", other.path("page.xml"), "--log", other.path("again.xml")}).status, 0);
}

TEST(ToolTrim, SaysWhatTheLogHasNot)
{
    const ScratchFolder folder;
    const std::string log = ORVLOG_SOURCE_DIR "/tests/expected/every-call-base.xml";
    const std::string out = folder.path("out.xml");
    const ToolResult page = run_tool({"trim", log, "--pages", "9", "-o", out});
    EXPECT_EQ(page.status, 1);
    EXPECT_EQ(page.err, "orvlog: " + log + ": has no page 9\n");
    EXPECT_EQ(run_tool({"trim", log, "--ids", "77", "-o", out}).err, "orvlog: " + log + ": has no paint 77\n");
    EXPECT_EQ(run_tool({"trim", log, "--calls", "line:1", "-o", out}).status, 1);
    EXPECT_EQ(run_tool({"trim", log, "--calls", "x", "-o", out}).status, 2);
    EXPECT_EQ(run_tool({"trim", log, "-o", out}).status, 2);
    EXPECT_FALSE(std::filesystem::exists(out));
    EXPECT_EQ(run_tool({"trim", log, "--ids", "4", "-o", log}).status, 1);
}

TEST(ToolRedact, LeavesNothingReadableAndReplays)
{
    const ScratchFolder folder;
    const std::string log = folder.path("job.xml");
    ASSERT_EQ(run_tool({"record", kSample, "-o", log, "--png", folder.path("pages"), "--images-beside", "job",
                        "--keep-images"})
                  .status,
              0);
    const std::string out = folder.path("red.xml");
    const ToolResult result = run_tool({"redact", log, "-o", out});
    EXPECT_EQ(result.status, 0) << result.err;
    EXPECT_TRUE(has(result.err, "27 texts\n")) << result.err;
    const std::string text = read_file(out);
    EXPECT_TRUE(has(read_file(log), "gsp_TextPtr=\"80 97 116 104 115 \""));
    EXPECT_FALSE(has(text, "80 97 116 104 115"));
    EXPECT_FALSE(has(text, "00 b0 ff 06 98 ff"));
    EXPECT_FALSE(has(text, "job-"));
    EXPECT_FALSE(has(text, "async_img_log_file_name"));
    EXPECT_EQ(run_tool({"check", out}).status, 0);
    std::filesystem::create_directory(folder.path("alone"));
    std::filesystem::rename(out, folder.path("alone/red.xml"));
    const ToolResult replay = run_tool({"replay", folder.path("alone/red.xml"), "--png", folder.path("alone")});
    EXPECT_EQ(replay.status, 0) << replay.err;
}

TEST(ToolRedact, WritesNoListOverTheLog)
{
    const ScratchFolder folder;
    const std::string log = ORVLOG_SOURCE_DIR "/tests/expected/every-call-base.xml";
    const std::string out = folder.path("out.xml");
    const ToolResult result = run_tool({"redact", log, "-o", out, "--list", folder.path("./out.xml")});
    EXPECT_EQ(result.status, 2);
    EXPECT_EQ(result.err,
              "orvlog redact: the list and the log can't go to the same place (see orvlog redact --help)\n");
    EXPECT_FALSE(std::filesystem::exists(out));
    EXPECT_EQ(run_tool({"redact", log, "-o", "-", "--list", "-"}).status, 2);
}

TEST(ToolMinimise, FindsTheCallAndGoesOnWhereItWas)
{
    const ScratchFolder folder;
    const std::string log = folder.path("job.xml");
    ASSERT_EQ(run_tool({"record", kSample, "-o", log, "--png", folder.path("pages")}).status, 0);
    const std::string command = "grep -q GOP_OPERAND_GRAD_RADIAL";
    const std::vector<std::string> words = {"minimise", log, "--while", command, "-o"};
    const auto run = [&words](const std::string& out, std::vector<std::string> more)
    {
        std::vector<std::string> all = words;
        all.push_back(out);
        all.insert(all.end(), more.begin(), more.end());
        return run_tool(all);
    };
    const ToolResult limited = run(folder.path("a.xml"), {"--limit", "4", "--jobs", "3"});
    EXPECT_EQ(limited.status, 0);
    EXPECT_TRUE(has(limited.err, "the limit of runs is reached")) << limited.err;
    EXPECT_TRUE(std::filesystem::exists(folder.path("a.xml.minimise")));
    EXPECT_EQ(run(folder.path("a.xml"), {"--jobs", "3"}).status, 0);
    EXPECT_FALSE(std::filesystem::exists(folder.path("a.xml.minimise")));
    const ToolResult whole = run(folder.path("b.xml"), {"--jobs", "1"});
    EXPECT_TRUE(has(whole.err, "5 of 262 calls, ")) << whole.err;
    EXPECT_EQ(read_file(folder.path("a.xml")), read_file(folder.path("b.xml")));
    EXPECT_EQ(run_tool({"check", folder.path("a.xml")}).status, 0);
}

TEST(ToolMinimise, SaysWhenTheCommandFailsOnTheLogItself)
{
    const ScratchFolder folder;
    const std::string log = ORVLOG_SOURCE_DIR "/tests/expected/every-call-base.xml";
    const ToolResult result = run_tool({"minimise", log, "--while", "exit 3; :", "-o", folder.path("out.xml")});
    EXPECT_EQ(result.status, 1);
    EXPECT_TRUE(has(result.err, "the command doesn't succeed on it, but ends with the status 3")) << result.err;
    EXPECT_FALSE(std::filesystem::exists(folder.path("out.xml")));
    EXPECT_FALSE(std::filesystem::exists(folder.path("out.xml.minimise")));
}

TEST(ToolMinimise, PutsThePathWhereItMayStandInQuotes)
{
    const ScratchFolder folder;
    const std::string log = ORVLOG_SOURCE_DIR "/tests/expected/every-call-base.xml";
    const ToolResult result = run_tool(
        {"minimise", log, "--while", "grep -q ORV_face_start \"{}\"", "--limit", "1", "-o", folder.path("out.xml")});
    EXPECT_EQ(result.status, 0) << result.err;
}

TEST(ToolTrim, CopiesAFileOnceThatManyCallsName)
{
    const ScratchFolder folder;
    const std::string log = folder.path("job.xml");
    ASSERT_EQ(run_tool({"record", kSample, "-o", log, "--png", folder.path("pages"), "--mode", "base",
                        "--images-beside", "job"})
                  .status,
              0);
    std::string text = read_file(log);
    const std::string first = "\"job-img-10.bin\"";
    for (size_t at = text.find("\"job-img-"); at != std::string::npos; at = text.find("\"job-img-", at + 1))
        text.replace(at, text.find('"', at + 1) + 1 - at, first);
    const std::string same = folder.write("same.xml", text);
    std::filesystem::create_directory(folder.path("new"));
    run_tool({"trim", same, "--pages", "1-", "-o", folder.path("new/all.xml")});
    int copies = 0;
    for (const auto& file : std::filesystem::directory_iterator(folder.path("new")))
        copies += has(file.path().filename().string(), "-img-") ? 1 : 0;
    EXPECT_EQ(copies, 1);
}

TEST(ToolMinimise, LeavesNoFileWhenItWritesToStandardOutput)
{
    const ScratchFolder folder;
    const std::string log = ORVLOG_SOURCE_DIR "/tests/expected/every-call-base.xml";
    const std::string tool = ORVLOG_TOOL;
    const std::string line = "cd " + folder.path("") + " && " + tool + " minimise " + log +
                             " --while 'grep -q ORV_face_start' --limit 3 -o - | { head -c 5; cat >/dev/null; }";
    const ToolResult result = run_program({"sh", "-c", line});
    EXPECT_EQ(result.out, "<ORV ");
    EXPECT_TRUE(has(result.err, "orvlog: the limit of runs is reached\n")) << result.err;
    EXPECT_TRUE(std::filesystem::is_empty(folder.path("")));
}

TEST(ToolMinimise, BelievesNoLineThatWasChanged)
{
    const ScratchFolder folder;
    const std::string log = ORVLOG_SOURCE_DIR "/tests/expected/every-call-base.xml";
    const std::string out = folder.path("out.xml");
    const std::string state = out + ".minimise";
    const auto run = [&](const std::string& limit) {
        return run_tool({"minimise", log, "--while", "grep -q ORV_resource_paint", "--limit", limit, "-o", out});
    };
    ASSERT_EQ(run("6").status, 0);
    std::string text = read_file(state);
    ASSERT_FALSE(text.empty());
    // Each result the other way round.
    size_t changed = 0;
    for (size_t at = text.find('\n') + 1; at < text.size(); at = text.find('\n', at) + 1)
        if (at + 33 < text.size() && text[at + 32] == ' ')
        {
            text[at + 33] = text[at + 33] == '1' ? '0' : '1';
            ++changed;
        }
    ASSERT_GE(changed, 6U);
    folder.write("out.xml.minimise", text);
    EXPECT_EQ(run("1000").status, 0);
    EXPECT_TRUE(has(read_file(out), "ORV_resource_paint"));
    EXPECT_FALSE(std::filesystem::exists(state));
}

TEST(ToolMinimise, WaitsForNoPipeInThePlaceOfItsMemory)
{
    const ScratchFolder folder;
    const std::string log = ORVLOG_SOURCE_DIR "/tests/expected/every-call-base.xml";
    const std::string state = folder.path("out.xml.minimise");
    ASSERT_EQ(mkfifo(state.c_str(), 0600), 0);
    const ToolResult result = run_tool({"minimise", log, "--while", "true", "-o", folder.path("out.xml")});
    EXPECT_EQ(result.status, 1);
    EXPECT_EQ(result.err, "orvlog: " + state + ": is no ordinary file\n");
    EXPECT_TRUE(std::filesystem::is_fifo(state));
}

}  // namespace
