// orvlog record: its command line, what it hands to the program that reads PDF files, and real jobs.

#include "tests/tools/run-tool.h"

#include <gtest/gtest.h>
#include <libxml/parser.h>

#include <sys/stat.h>

#include <cstdlib>
#include <filesystem>
#include <string>

namespace
{

using namespace orvlog::test;

const char* const kSample = ORVLOG_SOURCE_DIR "/docs/sample.pdf";

// Stands in for orvlog-record: says with which words it was started, and leaves a summary.
class RecordStandIn : public testing::Test
{
protected:
    void SetUp() override
    {
        set_script("printf '%s\\n' \"$@\" | grep -v '^--progress$' | sed '/^--summary$/,$d'\n");
        setenv("ORVLOG_EXEC_PATH", folder.path("").c_str(), 1);
        document = folder.write("a.pdf", "%PDF-");
    }
    void TearDown() override
    {
        unsetenv("ORVLOG_EXEC_PATH");
    }
    void set_script(const std::string& body)
    {
        const std::string script = folder.write("orvlog-record", "#!/bin/sh\n" + body);
        ASSERT_EQ(chmod(script.c_str(), 0700), 0);
    }

    ScratchFolder folder;
    std::string document;
};

TEST_F(RecordStandIn, NamesLogAndPagesAfterTheDocument)
{
    const ToolResult result = run_tool({"record", document});
    EXPECT_EQ(result.status, 0);
    EXPECT_EQ(result.err, "");
    std::string here = folder.path("");
    here.pop_back();
    EXPECT_EQ(result.out, document + "\n-o\n" + folder.path("a.orvlog.xml") +
                              "\n--mode\ntransparent\n--glyphs\noutlines\n--png\n" + here + "\n--dpi\n96\n");
}

// In no list of processes and no environment.
TEST_F(RecordStandIn, HandsThePasswordOnInAPipe)
{
    set_script("tr '\\0' '\\n' < /proc/$$/cmdline > words; env > environment\n"
               "while [ $# -gt 0 ]; do test \"$1\" = --password-file && cat \"$2\"; shift; done; exit 0\n");
    const std::string here = folder.path("");
    const ToolResult result =
        run_program({"env", "-C", here, ORVLOG_TOOL, "record", document, "--password", "s3cret word"});
    EXPECT_EQ(result.status, 0);
    EXPECT_EQ(result.out, "s3cret word\n");
    EXPECT_NE(read_file(folder.path("words")).find("\n--password-file\n/dev/fd/"), std::string::npos);
    EXPECT_EQ(read_file(folder.path("words")).find("s3cret"), std::string::npos);
    EXPECT_EQ(read_file(folder.path("environment")).find("s3cret"), std::string::npos);
    set_script("while [ $# -gt 0 ]; do test \"$1\" = --password-file && echo \"$2\"; shift; done\n");
    EXPECT_EQ(run_tool({"record", document, "--password-file", "secret.txt"}).out, "secret.txt\n");
    EXPECT_EQ(run_tool({"record", document, "--password-file", "a", "--password", "b"}).status, 2);
    EXPECT_EQ(run_tool({"record", document, "--password", std::string(5000, 'a')}).err,
              "orvlog: the password can't be handed on: Message too long\n");
}

TEST_F(RecordStandIn, HandsEveryOptionOn)
{
    const ToolResult result = run_tool({"record",
                                        document,
                                        "-o",
                                        "x.xml",
                                        "--pages",
                                        "2-3",
                                        "--mode",
                                        "base",
                                        "--glyphs",
                                        "bitmaps",
                                        "--images-beside",
                                        "p",
                                        "--png",
                                        "d",
                                        "--dpi",
                                        "144",
                                        "--check",
                                        "--keep-images",
                                        "--compressed",
                                        "--via-temporary-log",
                                        "--page-timeout",
                                        "2.5",
                                        "--save-tickets",
                                        "t"});
    EXPECT_EQ(result.status, 0);
    EXPECT_EQ(
        result.out,
        document +
            "\n-o\nx.xml\n--mode\nbase\n--glyphs\nbitmaps\n--pages\n2-3\n--images-beside\np\n--png\nd\n--dpi\n144\n"
            "--check\n--keep-images\n--compressed\n--via-temporary-log\n--page-timeout\n2.5\n--save-tickets\nt\n");
    EXPECT_EQ(run_tool({"record", document, "-o", "x", "--no-renderer"}).out,
              document + "\n-o\nx\n--mode\ntransparent\n--glyphs\noutlines\n--no-renderer\n--dpi\n96\n");
    EXPECT_EQ(run_tool({"record", document, "-o", "x", "--no-renderer", "--compare"}).out,
              document + "\n-o\nx\n--mode\ntransparent\n--glyphs\noutlines\n--no-renderer\n--dpi\n96\n--compare\n");
    EXPECT_EQ(run_tool({"record", document, "--no-log", "--no-renderer"}).out,
              document + "\n--no-log\n--mode\ntransparent\n--glyphs\noutlines\n--no-renderer\n--dpi\n96\n");
}

TEST_F(RecordStandIn, AsksForProgressOnATerminalOnly)
{
    set_script("printf '%s\\n' \"$@\" | grep -c '^--progress$'\nexit 0\n");
    EXPECT_EQ(run_tool({"record", document}).out, "0\n");
    const ToolResult terminal =
        run_program({"script", "-qec", "'" ORVLOG_TOOL "' record '" + document + "'", folder.path("typescript")});
    if (terminal.err.find("pseudo-terminal") != std::string::npos)
        GTEST_SKIP() << "this machine has no terminals to be had";
    EXPECT_EQ(terminal.out, "1\r\n");
}

TEST_F(RecordStandIn, PassesTheStatusOn)
{
    set_script("exit 7\n");
    EXPECT_EQ(run_tool({"record", document}).status, 7);
    set_script("kill -TERM $$\n");
    EXPECT_EQ(run_tool({"record", document}).status, 128 + 15);
}

TEST_F(RecordStandIn, PrintsTheSummary)
{
    set_script("while [ \"$1\" != --summary ]; do shift; done\n"
               "echo '{\"calls\": {\"ORV_face_start\": 2, \"ORV_object_paint\": 31}, \"pages\": 2, \"log\": \"x.xml\", "
               "\"log_bytes\": 4711, \"seconds\": 1.5, \"seconds_without_logger\": 0.25, "
               "\"processor_seconds\": 1.125, \"processor_seconds_without_logger\": 0.125, "
               "\"page_images\": 2, \"check\": {\"same\": true, \"pages\": 2, \"pixels_different\": 0}}' "
               ">\"$2\"\n[ -z \"$FAILS\" ]\n");
    EXPECT_EQ(run_tool({"record", document, "--png", "d"}).out,
              "ORV_object_paint                         31\n"
              "ORV_face_start                            2\n"
              "calls in all                             33\n"
              "pages                                     2\n"
              "log                                    4711 bytes\n"
              "time                                  1.500 s\n"
              "processor time                        1.125 s\n"
              "time without the logger               0.250 s\n"
              "processor time without it             0.125 s\n"
              "pixels that differ without it             0 on 2 pages\n"
              "log written to x.xml\n"
              "page images in d\n");
    // What has failed is not told as if it were there.
    setenv("FAILS", "1", 1);
    const ToolResult failed = run_tool({"record", document, "--png", "d"});
    unsetenv("FAILS");
    EXPECT_EQ(failed.status, 1);
    EXPECT_NE(failed.out.find("calls in all"), std::string::npos);
    EXPECT_EQ(failed.out.find("written"), std::string::npos);
    EXPECT_EQ(failed.out.find("page images"), std::string::npos);
}

TEST_F(RecordStandIn, RefusesACommandLineThatMakesNoSense)
{
    for (const char* pages : {"0", "3-2", "a", "1,3-4", "-", "1-2-3", "99999999999"})
        EXPECT_EQ(run_tool({"record", document, "--pages", pages}).status, 2) << pages;
    EXPECT_EQ(run_tool({"record", document, "--pages", "3-2"}).err,
              "orvlog record: --pages: the last page comes before the first (see orvlog record --help)\n");
    EXPECT_EQ(run_tool({"record", document, "--mode", "other"}).status, 2);
    EXPECT_EQ(run_tool({"record", document, "--dpi", "0"}).status, 2);
    EXPECT_EQ(run_tool({"record", document, "--page-timeout", "0"}).status, 2);
    for (const char* needs_renderer : {"--png=q", "--check"})
    {
        const ToolResult result = run_tool({"record", document, "--no-renderer", needs_renderer});
        EXPECT_EQ(result.status, 2);
        EXPECT_NE(result.err.find("--no-renderer excludes --"), std::string::npos) << result.err;
    }
    const ToolResult both = run_tool({"record", "-", "--password-file", "-"});
    EXPECT_EQ(both.status, 2);
    EXPECT_EQ(both.err, "orvlog record: --password-file: standard input is the document already (see orvlog record "
                        "--help)\n");
    for (const char* needs_log :
         {"-ox", "--compare", "--check", "--stream=file", "--images-beside=p", "--compressed", "--via-temporary-log"})
    {
        const ToolResult result = run_tool({"record", document, "--no-log", needs_log});
        EXPECT_EQ(result.status, 2) << needs_log;
        EXPECT_NE(result.err.find(" excludes --"), std::string::npos) << result.err;
    }
    EXPECT_EQ(run_tool({"record"}).status, 2);
    EXPECT_EQ(run_tool({"record", document, "another.pdf"}).status, 2);
    EXPECT_EQ(run_tool({"recrd"}).err, "orvlog: no command 'recrd' (see orvlog help)\n");
    EXPECT_EQ(run_tool({}).status, 2);
}

TEST(ToolRecord, MissingFileGetsOneLine)
{
    const ToolResult result = run_tool({"record", "/nowhere/to/be.pdf"});
    EXPECT_EQ(result.status, 1);
    EXPECT_EQ(result.out, "");
    EXPECT_EQ(result.err, "orvlog: /nowhere/to/be.pdf: No such file or directory\n");
}

TEST(ToolRecord, DamagedFileGetsOneLine)
{
    const ScratchFolder folder;
    const ToolResult result = run_tool({"record", folder.write("bad.pdf", "this is no document")});
    EXPECT_EQ(result.status, 1);
    EXPECT_NE(result.err, "");
    EXPECT_EQ(result.err.find('\n'), result.err.size() - 1);
}

TEST(ToolRecord, FullDiskIsNoticed)
{
    const ScratchFolder folder;
    const ToolResult result = run_tool({"record", kSample, "-o", "/dev/full", "--png", folder.path("")});
    EXPECT_EQ(result.status, 1);
    EXPECT_NE(result.err.find("/dev/full"), std::string::npos) << result.err;
}

TEST(ToolRecord, AnXmlParserReadsTheLogOfTheSample)
{
    const ScratchFolder folder;
    const std::string log = folder.path("sample.orvlog.xml");
    const ToolResult result = run_tool({"record", kSample, "-o", log, "--png", folder.path(""), "--check"});
    EXPECT_EQ(result.status, 0) << result.err;
    EXPECT_NE(result.out.find("pixels that differ without it             0 on "), std::string::npos) << result.out;
    xmlDocPtr document = xmlReadFile(log.c_str(), nullptr, XML_PARSE_HUGE | XML_PARSE_NONET | XML_PARSE_PEDANTIC);
    ASSERT_NE(document, nullptr);
    EXPECT_EQ(xmlGetLastError(), nullptr);
    const xmlNode* root = xmlDocGetRootElement(document);
    ASSERT_NE(root, nullptr);
    EXPECT_STREQ(reinterpret_cast<const char*>(root->name), "ORV");
    EXPECT_NE(read_file(folder.path("sample-001.png")), "");
    xmlFreeDoc(document);
    xmlCleanupParser();
}

TEST(ToolRecord, TakesAUrl)
{
    const ScratchFolder folder;
    const std::string from_url = folder.path("url.xml");
    const std::string from_file = folder.path("file.xml");
    EXPECT_EQ(run_tool({"record", std::string("file://") + kSample, "-o", from_url, "--no-renderer"}).status, 0);
    EXPECT_EQ(run_tool({"record", kSample, "-o", from_file, "--no-renderer"}).status, 0);
    EXPECT_NE(read_file(from_url), "");
    EXPECT_EQ(read_file(from_url), read_file(from_file));
    const ToolResult missing = run_tool({"record", "file:///no/such/file.pdf", "-o", from_url});
    EXPECT_EQ(missing.status, 1);
    EXPECT_EQ(missing.err, "orvlog: file:///no/such/file.pdf: No such file or directory\n");
}

TEST(ToolRecord, TakesTheStandardInput)
{
    const ScratchFolder folder;
    const std::string log = folder.path("piped.xml");
    const std::string document = read_file(kSample);
    EXPECT_EQ(run_tool({"record", "-", "-o", log, "--no-renderer"}, document).status, 0);
    const ToolResult piped = run_tool({"record", "-", "-o", "-", "--no-renderer"}, document);
    EXPECT_EQ(piped.status, 0);
    EXPECT_NE(piped.err.find("calls in all"), std::string::npos);
    EXPECT_EQ(piped.err.find_first_of("\r\033"), std::string::npos);
    EXPECT_EQ(piped.out.substr(0, 5), "<ORV ");
    EXPECT_EQ(piped.out, read_file(log));
    const ToolResult nothing = run_tool({"record", "-", "-o", log});
    EXPECT_EQ(nothing.status, 1);
    EXPECT_EQ(nothing.err.find('\n'), nothing.err.size() - 1);
}

TEST_F(RecordStandIn, NamesWhatADocumentFromElsewhereLeaves)
{
    set_script("echo \"${1##*/}|$2|$3|$8|$9\"; cat \"$1\"\n");
    EXPECT_EQ(run_tool({"record", "file://" + document}).out, "a.pdf|-o|a.orvlog.xml|--png|.\n%PDF-");
    EXPECT_EQ(run_tool({"record", "-"}, "%PDF-1").out, "document.pdf|-o|document.orvlog.xml|--png|.\n%PDF-1");
}

TEST(ToolHelp, ListsCommandsAndShowsExamples)
{
    EXPECT_EQ(run_tool({"--version"}).out, "orvlog 1.0.0\n");
    EXPECT_NE(run_tool({"help"}).out.find("\n  record    log a PDF document's drawing calls"), std::string::npos);
    const ToolResult help = run_tool({"record", "--help"});
    EXPECT_EQ(help.status, 0);
    EXPECT_NE(help.out.find("\nExample: orvlog record letter.pdf\n"), std::string::npos);
    EXPECT_EQ(run_tool({"help", "record"}).out, help.out);
}

TEST(RecordScript, SaysThatItsTreeCannotBeWritten)
{
    const ScratchFolder folder;
    std::filesystem::create_directories(folder.path("scripts"));
    const std::string script = folder.write("scripts/record", read_file(ORVLOG_SOURCE_DIR "/scripts/record"));
    const std::string said = "scripts/record: " + folder.path("build/record") + " can't be written\n";
    folder.write("build", "");
    ToolResult result = run_program({"sh", script});
    EXPECT_EQ(result.status, 1);
    EXPECT_EQ(result.err, said);
    std::filesystem::remove(folder.path("build"));
    std::filesystem::create_directories(folder.path("build/record/build.log"));
    result = run_program({"sh", script});
    EXPECT_EQ(result.status, 1);
    EXPECT_EQ(result.err, said);
}

// What a job leaves that is killed, made by cutting what one leaves that is not.
TEST(RecordStreams, LeaveTheSameText)
{
    const ScratchFolder folder;
    const std::string mapped = folder.path("m.xml"), file = folder.path("f.xml"), frames = folder.path("z.xml.zst");
    EXPECT_EQ(run_tool({"record", kSample, "--no-renderer", "-o", mapped}).status, 0);
    EXPECT_EQ(run_tool({"record", kSample, "--no-renderer", "--stream", "file", "-o", file}).status, 0);
    EXPECT_EQ(run_tool({"record", kSample, "--no-renderer", "-o", frames}).status, 0);
    const std::string text = read_file(mapped);
    EXPECT_TRUE(text.starts_with("<ORV ") && text.ends_with("</ORV>\n"));
    EXPECT_TRUE(read_file(file) == text);
    EXPECT_EQ(read_file(frames).substr(0, 4), "\x28\xB5\x2F\xFD");
    EXPECT_TRUE(run_tool({"unpack", frames, "-o", "-"}).out == text);
    EXPECT_TRUE(run_program({"zstd", "-dqc", frames}).out == text);
    EXPECT_TRUE(run_tool({"unpack", "-", "-o", "-"}, read_file(frames)).out == text);
    EXPECT_EQ(run_tool({"check", frames}).out, "");
    EXPECT_EQ(run_tool({"ls", frames}).out, run_tool({"ls", mapped}).out);
    EXPECT_EQ(run_tool({"show", frames, "3"}).out, run_tool({"show", mapped, "3"}).out);
    const std::string coded = folder.path("c.xml");
    EXPECT_EQ(run_tool({"pack", frames, "-o", coded}).status, 0);
    EXPECT_TRUE(run_tool({"unpack", coded, "-o", "-"}).out == text);
    const std::string merged = folder.path("merged.xml");
    EXPECT_EQ(run_tool({"merge", frames, "-o", merged}).status, 1);
    EXPECT_FALSE(std::filesystem::exists(merged));
}

TEST(RecordStreams, ALogOfBeforeStaysWhenImageFilesHaveNoFolder)
{
    const ScratchFolder folder;
    const std::string log = folder.write("log.xml", "the log of before");
    const ToolResult result =
        run_tool({"record", kSample, "--no-renderer", "-o", log, "--images-beside", folder.path("none/p")});
    EXPECT_EQ(result.status, 1);
    EXPECT_EQ(result.err, "orvlog-record: " + folder.path("none") + ": No such file or directory\n");
    EXPECT_EQ(read_file(log), "the log of before");
}

TEST(RecordStreams, PagesHaveTheSameNamesInAReplay)
{
    const ScratchFolder folder;
    const std::string frames = folder.path("z.xml.zst");
    EXPECT_EQ(run_tool({"record", kSample, "--no-renderer", "--pages", "2", "-o", frames}).status, 0);
    EXPECT_EQ(run_tool({"replay", frames, "--renderer", "cairo", "--png", folder.path("pages")}).status, 0);
    EXPECT_TRUE(std::filesystem::exists(folder.path("pages/z-002.png")));
}

TEST(RecordStreams, DrawTheWholeJobOntoAFullDisk)
{
    for (const char* stream : {"mapped", "file", "zstd"})
    {
        const ToolResult result = run_tool({"record", kSample, "--no-renderer", "--stream", stream, "-o", "/dev/full"});
        EXPECT_EQ(result.status, 1) << stream;
        EXPECT_EQ(result.err, "orvlog-record: /dev/full: No space left on device; the log is incomplete\n") << stream;
        EXPECT_NE(result.out.find("pages                                     3\n"), std::string::npos) << result.out;
    }
}

}  // namespace
