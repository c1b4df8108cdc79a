// Commands that the user breaks off.

#include "tests/tools/run-tool.h"

#include <gtest/gtest.h>

#include <fcntl.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <csignal>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <string>
#include <thread>

namespace
{

namespace fs = std::filesystem;
using namespace orvlog::test;

// A page of so many lines that no machine draws them at once.
std::string long_document()
{
    std::string lines;
    for (int i = 0; i < 400000; ++i)
        lines += "0 " + std::to_string(i % 200) + " m 200 0 l S\n";
    return "%PDF-1.4\n1 0 obj\n<< /Type /Catalog /Pages 2 0 R >>\nendobj\n"
           "2 0 obj\n<< /Type /Pages /Count 1 /Kids [3 0 R] >>\nendobj\n"
           "3 0 obj\n<< /Type /Page /Parent 2 0 R /MediaBox [0 0 200 200] /Contents 4 0 R >>\nendobj\n"
           "4 0 obj\n<< /Length " +
           std::to_string(lines.size()) + " >>\nstream\n" + lines +
           "\nendstream\nendobj\ntrailer\n<< /Size 5 /Root 1 0 R >>\n%%EOF\n";
}

class BrokenOff : public testing::Test
{
protected:
    void SetUp() override
    {
        fs::create_directory(folder.path("temporary"));
        setenv("TMPDIR", folder.path("temporary").c_str(), 1);
    }
    void TearDown() override
    {
        unsetenv("TMPDIR");
        unsetenv("ORVLOG_EXEC_PATH");
    }

    // Starts the command with a pipe as its input, whose other end is kept.
    void start(const std::vector<std::string>& arguments)
    {
        ASSERT_EQ(pipe2(input, O_CLOEXEC), 0);
        child = fork();
        ASSERT_GE(child, 0);
        if (child > 0)
            return;
        dup2(input[0], STDIN_FILENO);
        const int out = open(folder.path("out").c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0600);
        dup2(out, STDOUT_FILENO);
        dup2(out, STDERR_FILENO);
        for (const int signal : {SIGINT, SIGTERM, SIGHUP})
            std::signal(signal, SIG_DFL);
        std::vector<std::string> words = {ORVLOG_TOOL};
        words.insert(words.end(), arguments.begin(), arguments.end());
        std::vector<char*> argv;
        for (std::string& word : words)
            argv.push_back(word.data());
        argv.push_back(nullptr);
        execv(argv[0], argv.data());
        _exit(127);
    }
    template <typename Condition> void wait_until(Condition met) const
    {
        for (int i = 0; i < 3000 && !met(); ++i)
            std::this_thread::sleep_for(std::chrono::milliseconds(10));
        ASSERT_TRUE(met());
    }
    int status_after(int signal)
    {
        kill(child, signal);
        int status = 0;
        waitpid(child, &status, 0);
        close(input[0]);
        close(input[1]);
        return WIFEXITED(status) ? WEXITSTATUS(status) : -WTERMSIG(status);
    }
    // The processes with these numbers, a line each, have ended.
    bool have_ended(const std::string& numbers) const
    {
        std::istringstream lines(read_file(folder.path(numbers)));
        for (std::string number; lines >> number;)
        {
            const std::string state = read_file("/proc/" + number + "/stat");
            if (!state.empty() && state.find(") Z ") == std::string::npos)
                return false;
        }
        return true;
    }
    bool no_temporary_folders() const
    {
        return fs::is_empty(folder.path("temporary"));
    }

    ScratchFolder folder;
    pid_t child = 0;
    int input[2] = {};
};

TEST_F(BrokenOff, PassesTheSignalOnAndWaits)
{
    const std::string script = folder.write(
        "orvlog-record", "#!/bin/sh\ncd '" + folder.path("") +
                             "'\ntrap 'sleep 0.3; echo ended >ended; exit 5' INT TERM HUP\necho $$ >started\n"
                             "while :; do sleep 0.05; done\n");
    ASSERT_EQ(chmod(script.c_str(), 0700), 0);
    setenv("ORVLOG_EXEC_PATH", folder.path("").c_str(), 1);
    const std::string document = folder.write("a.pdf", "%PDF-");
    for (const int signal : {SIGINT, SIGTERM, SIGHUP})
    {
        start({"record", document});
        wait_until([&] { return !read_file(folder.path("started")).empty(); });
        EXPECT_EQ(status_after(signal), 128 + signal);
        EXPECT_EQ(read_file(folder.path("ended")), "ended\n");
        EXPECT_TRUE(no_temporary_folders());
        fs::remove(folder.path("started"));
        fs::remove(folder.path("ended"));
    }
}

TEST_F(BrokenOff, ForgetsADocumentThatIsBeingBrought)
{
    start({"record", "-", "-o", folder.path("log.xml")});
    wait_until([this] { return !no_temporary_folders(); });
    EXPECT_EQ(status_after(SIGTERM), 128 + SIGTERM);
    EXPECT_TRUE(no_temporary_folders());
    EXPECT_FALSE(fs::exists(folder.path("log.xml")));
}

TEST_F(BrokenOff, LeavesALogThatIsWhole)
{
    const std::string document = folder.write("long.pdf", long_document());
    const std::string log = folder.path("long.xml");
    for (const int signal : {SIGINT, SIGTERM, SIGHUP})
    {
        fs::remove(log);
        start({"record", document, "-o", log, "--png", folder.path("pages")});
        wait_until([&] { return fs::exists(log) && fs::file_size(log) > 100000; });
        EXPECT_EQ(status_after(signal), 128 + signal);
        EXPECT_TRUE(no_temporary_folders());
        const std::string text = read_file(log);
        EXPECT_TRUE(text.ends_with("\n<!--\nThe job was interrupted on page 1.\n-->\n"
                                   "  <ORV_document_finish document_context=\"0\">\n  </ORV_document_finish>\n"
                                   "</ORV>\n"))
            << text.substr(text.size() - 300);
        const std::string said = read_file(folder.path("out"));
        EXPECT_NE(said.find("orvlog-record: interrupted on page 1; the log has what was drawn until then\n"),
                  std::string::npos)
            << said;
        EXPECT_EQ(said.find("log written"), std::string::npos) << said;
        EXPECT_EQ(run_tool({"replay", log, "--renderer", "none"}).status, 0);
    }
}

TEST_F(BrokenOff, MergesATemporaryLogFirst)
{
    const std::string document = folder.write("long.pdf", long_document());
    const std::string log = folder.path("long.xml");
    start({"record", document, "-o", log, "--no-renderer", "--via-temporary-log"});
    wait_until(
        [&]
        {
            for (const fs::directory_entry& entry : fs::directory_iterator(folder.path("")))
                if (entry.path().extension() == ".tmp" && entry.file_size() > 100000)
                    return true;
            return false;
        });
    EXPECT_EQ(status_after(SIGTERM), 128 + SIGTERM);
    const std::string text = read_file(log);
    EXPECT_TRUE(text.ends_with("</ORV>\n")) << text.size();
    for (const fs::directory_entry& entry : fs::directory_iterator(folder.path("")))
        EXPECT_NE(entry.path().extension(), ".tmp");
    EXPECT_TRUE(no_temporary_folders());
}

TEST_F(BrokenOff, APageMayTakeNoLongerThanItIsGiven)
{
    const std::string document = folder.write("long.pdf", long_document());
    const std::string log = folder.path("long.xml");
    const ToolResult result = run_tool({"record", document, "-o", log, "--no-renderer", "--page-timeout", "0.3"});
    EXPECT_EQ(result.status, 1);
    EXPECT_EQ(result.err, "orvlog-record: page 1 took too long and was broken off\n");
    EXPECT_EQ(result.out.find("log written"), std::string::npos);
    EXPECT_TRUE(read_file(log).ends_with("</ORV>\n"));
}

const std::string kLog = ORVLOG_SOURCE_DIR "/tests/expected/every-call-base.xml";

TEST_F(BrokenOff, EndsWhatTheCommandOfMinimiseHasStarted)
{
    const std::string out = folder.path("least.xml");
    const std::string pids = folder.path("pids");
    for (const int signal : {SIGINT, SIGTERM, SIGHUP})
    {
        const std::string command = "sleep 1000 & echo $! >'" + pids + "'; echo $$ >>'" + pids + "'; sleep 1000; :";
        start({"minimise", kLog, "--while", command, "-o", out});
        wait_until([&] { return std::ranges::count(read_file(pids), '\n') == 2; });
        EXPECT_EQ(status_after(signal), 128 + signal);
        wait_until([&] { return have_ended("pids"); });
        EXPECT_TRUE(no_temporary_folders());
        EXPECT_FALSE(fs::exists(out));
        EXPECT_FALSE(fs::exists(out + ".part"));
        EXPECT_EQ(read_file(folder.path("out")), "orvlog: broken off; the same command line goes on\n");
        fs::remove(pids);
    }
}

// The command's own input stays open, and nobody writes to it.
TEST_F(BrokenOff, MinimiseGivesItsCommandNoInputAndEndsWhatItLeavesRunning)
{
    const std::string out = folder.path("least.xml");
    const std::string pids = folder.path("pids");
    start({"minimise", kLog, "--while", "cat >/dev/null; sleep 1000 & echo $! >>'" + pids + "'; grep -q ORV_face_start",
           "--limit", "3", "--jobs", "1", "-o", out});
    EXPECT_EQ(status_after(0), 0) << read_file(folder.path("out"));
    EXPECT_EQ(std::ranges::count(read_file(pids), '\n'), 4);
    wait_until([this] { return have_ended("pids"); });
    EXPECT_TRUE(fs::exists(out));
}

TEST_F(BrokenOff, OfTwoThatMinimiseToOnePlaceTheSecondGivesWay)
{
    const std::string out = folder.path("least.xml");
    const std::string command = "echo >>'" + folder.path("started") + "'; while ! test -e '" + folder.path("go") +
                                "'; do sleep 0.02; done; grep -q ORV_face_start";
    start({"minimise", kLog, "--while", command, "--limit", "3", "-o", out});
    wait_until([this] { return fs::exists(folder.path("started")); });
    const ToolResult second = run_tool({"minimise", kLog, "--while", command, "--limit", "3", "-o", out});
    EXPECT_EQ(second.status, 1);
    EXPECT_EQ(second.err, "orvlog: " + out + ".minimise: another orvlog minimise is at work on it\n");
    EXPECT_TRUE(fs::exists(out + ".minimise"));
    folder.write("go", "");
    EXPECT_EQ(status_after(0), 0);
    EXPECT_TRUE(fs::exists(out));
    const ToolResult third = run_tool({"minimise", kLog, "--while", command, "-o", out});
    EXPECT_EQ(third.status, 0) << third.err;
    EXPECT_FALSE(fs::exists(out + ".minimise"));
}

// The log that came through a pipe, the part of the new one, and the image data that was copied to beside it.
TEST_F(BrokenOff, TakesAwayWhatTrimHasBegun)
{
    std::string log = "<ORV LoggingMode=\"transparent\">\n"
                      "  <ORV_document_start document_context=\"0\" document_id=\"1\">\n  </ORV_document_start>\n"
                      "  <ORV_face_start document_context=\"0\" drawing_context=\"0\">\n  </ORV_face_start>\n"
                      "  <ORV_object_paint id=\"0\" drawing_context=\"0\">\n"
                      "    <GOP_OperandImagePointer Id=\"10\" imp_DirectImageFileName=\"job-dir-10.bin\">\n"
                      "    </GOP_OperandImagePointer>\n  </ORV_object_paint>\n";
    for (int i = 1; i < 300000; ++i)
        log += "  <ORV_object_paint id=\"" + std::to_string(i) + "\" drawing_context=\"0\">\n  </ORV_object_paint>\n";
    folder.write("job-dir-10.bin", "bytes");
    start({"trim", "-", "--pages", "1", "-o", folder.path("new.xml"), "--files-from", folder.path("")});
    for (size_t at = 0; at < log.size();)
    {
        const ssize_t written = write(input[1], log.data() + at, log.size() - at);
        ASSERT_GT(written, 0);
        at += static_cast<size_t>(written);
    }
    close(input[1]);
    input[1] = open("/dev/null", O_RDONLY | O_CLOEXEC);
    wait_until([this] { return fs::exists(folder.path("new-dir-10.bin")); });
    EXPECT_EQ(status_after(SIGTERM), 128 + SIGTERM);
    EXPECT_TRUE(no_temporary_folders());
    EXPECT_FALSE(fs::exists(folder.path("new.xml")));
    EXPECT_FALSE(fs::exists(folder.path("new.xml.part")));
    EXPECT_FALSE(fs::exists(folder.path("new-dir-10.bin")));
}

}  // namespace
