// The replay command as a program.

#include "tests/clients/replay/jobs.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <regex>
#include <string>

namespace
{

using namespace orvlog::test;

constexpr char kLog[] =
    "<ORV Endian=\"little\" LoggingMode=\"transparent\" GlyphLoggingMode=\"transparent\">\n"
    "  <ORV_document_start document_context=\"0\" document_id=\"1\" font_engine_functions=\"FALSE\">\n"
    "  </ORV_document_start>\n"
    "\n<!--\nthe client -->\nsays\n-->\n"
    "  <ORV_face_start document_context=\"0\" drawing_context=\"0\" font_engine_functions=\"FALSE\" "
    "face_seq_number=\"1\" pixel_placement_orientation=\"GPA_PP_ORIENTATION_0_DEG\" "
    "pixel_placement=\"GPA_PLACEMENT_PS\">\n"
    "    <ORV_FaceProperties fp_FaceHints=\"[0] ORV_FACE_HINT_NONE \" fp_FaceInchToPixels=\"96 0 0 96 0 0 \" "
    "fp_WidthInPixels=\"96\" fp_HeightInPixels=\"48\" fp_TrimBox=\"0 0 1 0.5 \" fp_ClipBox=\"0 0 1 0.5 \" "
    "fp_MediaSize=\"1 0.5 \">\n"
    "    </ORV_FaceProperties>\n"
    "  </ORV_face_start>\n"
    "  <ORV_object_paint id=\"0\" drawing_context=\"0\" object_type_and_flag=\"4\" "
    "object_hints=\"[0] ORV_OBJ_HINT_NONE \" path_pixel_placement=\"GPA_PLACEMENT_GDI\">\n"
    "  </ORV_object_paint>\n"
    "  <ORV_drawing_finish drawing_context=\"0\">\n"
    "  </ORV_drawing_finish>\n"
    "  <ORV_document_finish document_context=\"0\">\n"
    "  </ORV_document_finish>\n"
    "</ORV>\n";

// What follows the root's tag, which tells the versions of the interface.
std::string behind_root(const std::string& log)
{
    return log.substr(std::min(log.size(), log.find('\n')));
}

class ReplayCommand : public testing::Test
{
protected:
    ToolResult replay(Words words, const std::string& input = "") const
    {
        words.insert(words.begin(), {ORVLOG_TOOL, "replay"});
        return run_program(words, input);
    }

    ScratchFolder folder;
};

TEST_F(ReplayCommand, LogsTheCallsAndTheCommentsOfTheClient)
{
    const ToolResult result = replay({folder.write("a.xml", kLog), "--log", folder.path("b.xml")});
    EXPECT_EQ(result.status, 0);
    EXPECT_EQ(result.err, "5 calls, 1 pages\n");
    EXPECT_EQ(behind_root(read_file(folder.path("b.xml"))), behind_root(kLog));
}

TEST_F(ReplayCommand, MakesEveryCallAgain)
{
    for (const char* name : {"every-call-base.xml", "every-call-transparent.xml"})
    {
        const std::string log = std::string(ORVLOG_SOURCE_DIR "/tests/expected/") + name;
        const ToolResult result = replay({log, "--log", folder.path("b.xml")});
        EXPECT_EQ(result.status, 0);
        EXPECT_EQ(result.err, "32 calls, 2 pages, 1 not played\n");
        EXPECT_EQ(read_file(folder.path("b.xml")), read_file(log)) << name;
    }
}

// The log of a session that names tickets without a family is such a log again, and one that doesn't isn't.
TEST_F(ReplayCommand, KeepsHowTicketsWithoutAFamilyStand)
{
    const std::string page = read_file(ORVLOG_SOURCE_DIR "/tests/expected/examples/page.xml");
    const std::string end = "    </GCM_ColorTicket>\n  </ORV_face_start>\n";
    const size_t at = page.find(end);
    ASSERT_NE(at, std::string::npos);
    const std::string warned = page.substr(0, at) +
                               "    </GCM_ColorTicket>\n\n<!--\nORVLOG: WARNING: GCM_ColorTicket "
                               "of an unknown family.\n-->\n  </ORV_face_start>\n" +
                               page.substr(at + end.size());
    const std::string named = std::regex_replace(warned, std::regex("RGBRender"), "UnknownRender");
    const std::string plain = std::regex_replace(page, std::regex("RGBRenderColorSpace"), "(null)");
    for (const std::string& log : {named, plain})
    {
        const ToolResult result = replay({folder.write("a.xml", log), "--log", folder.path("b.xml")});
        EXPECT_EQ(result.status, 0) << result.err;
        EXPECT_EQ(read_file(folder.path("b.xml")), log);
    }
}

TEST_F(ReplayCommand, ReadsTheStandardInputAndWritesTheStandardOutput)
{
    const ToolResult result = replay({"-", "--log", "-"}, kLog);
    EXPECT_EQ(result.status, 0);
    EXPECT_EQ(behind_root(result.out), behind_root(kLog));
}

TEST_F(ReplayCommand, NamesVectorPagesByTheirNumbers)
{
    std::string log = kLog;
    const std::string first = "face_seq_number=\"1\"";
    folder.write("a.xml", log.replace(log.find(first), first.size(), "face_seq_number=\"3\""));
    EXPECT_EQ(run_in(folder.path(""), {ORVLOG_TOOL, "replay", "a.xml", "--svg", "vectors"}).status, 0);
    EXPECT_NE(read_file(folder.path("vectors/a-003.svg")).find("<svg "), std::string::npos);
    EXPECT_FALSE(std::filesystem::exists(folder.path("vectors/a-001.svg")));
}

TEST_F(ReplayCommand, DrawsInThreeForms)
{
    const std::string log = folder.write("a.xml", kLog);
    EXPECT_EQ(replay({log, "--png", folder.path("png")}).status, 0);
    EXPECT_EQ(read_file(folder.path("png/a-001.png")).substr(1, 3), "PNG");
    EXPECT_EQ(replay({log, "--pdf", folder.path("a.pdf")}).status, 0);
    const std::string pdf = read_file(folder.path("a.pdf"));
    EXPECT_EQ(pdf.substr(0, 5), "%PDF-");
    EXPECT_NE(pdf.find("/MediaBox [ 0 0 72 36 ]"), std::string::npos);
    EXPECT_EQ(replay({log, "--svg", folder.path("svg")}).status, 0);
    EXPECT_NE(read_file(folder.path("svg/a-001.svg")).find("<svg "), std::string::npos);
    EXPECT_EQ(run_in(folder.path(""), {ORVLOG_TOOL, "replay", "a.xml", "--svg"}).status, 0);
    EXPECT_EQ(read_file(folder.path("a-001.svg")), read_file(folder.path("svg/a-001.svg")));
    EXPECT_EQ(run_in(folder.path("png"), {ORVLOG_TOOL, "replay", "../a.xml", "--pdf"}).status, 0);
    EXPECT_EQ(read_file(folder.path("png/a.pdf")).substr(0, 5), "%PDF-");
    EXPECT_EQ(replay({log, "--pdf", "--svg"}).status, 2);
}

TEST_F(ReplayCommand, StopsBehindACallWithoutAnId)
{
    const std::string log = folder.write("a.xml", kLog);
    // The face begins in line 9; what is open then is finished: its drawing and the document.
    ToolResult result = replay({log, "--up-to", "line:9", "--log", folder.path("b.xml")});
    EXPECT_EQ(result.status, 0) << result.err;
    EXPECT_EQ(result.err, "4 calls, 1 pages\n");
    EXPECT_EQ(read_file(folder.path("b.xml")).find("ORV_object_paint"), std::string::npos);
    const size_t finish = std::string(kLog).find("<ORV_document_finish");
    EXPECT_EQ(replay({log, "--up-to", "byte:" + std::to_string(finish)}).err, "5 calls, 1 pages\n");
    result = replay({log, "--up-to", "line:10"});
    EXPECT_EQ(result.status, 1);
    EXPECT_EQ(result.err, "5 calls, 1 pages\norvlog: " + log + ": has no call that begins in line 10\n");
    EXPECT_EQ(replay({log, "--up-to", "0x1"}).status, 2);
}

TEST_F(ReplayCommand, SaysWhatIsWrong)
{
    const std::string log = folder.write("a.xml", kLog);
    const std::string other = folder.write("b.xml", "<HTML>\n");
    ToolResult result = replay({other});
    EXPECT_EQ(result.status, 1);
    EXPECT_EQ(result.err, "orvlog: " + other + ": is not a log\n");
    result = replay({log, "--up-to", "7"});
    EXPECT_EQ(result.status, 1);
    EXPECT_EQ(result.err, "5 calls, 1 pages\norvlog: " + log + ": has no paint 7\n");
    result = replay({log, "--pages", "0"});
    EXPECT_EQ(result.status, 2);
    EXPECT_EQ(result.err, "orvlog replay: --pages: pages are given as A, A-B, A- or -B, counting from 1 (see orvlog "
                          "replay --help)\n");
    EXPECT_EQ(replay({log, "--pages", "5-3"}).status, 2);
    for (const char* option : {"--log", "--pdf"})
    {
        result = replay({log, option, log});
        EXPECT_EQ(result.status, 1);
        EXPECT_EQ(result.err, "orvlog: " + log + ": is the log to be replayed\n");
        EXPECT_EQ(read_file(log), kLog);
    }
    EXPECT_EQ(replay({folder.path("none.xml")}).status, 1);
    EXPECT_EQ(replay({log, "--dpi", "0"}).status, 2);
}

TEST_F(ReplayCommand, PlaysACutLogAsFarAsItGoes)
{
    const std::string whole = kLog;
    const std::string cut = folder.write("cut.xml", whole.substr(0, whole.find("  <ORV_drawing_finish") + 10));
    const ToolResult result = replay({cut, "--png", folder.path("png")});
    EXPECT_EQ(result.status, 1);
    EXPECT_EQ(result.err, "orvlog: " + cut + ": line 15: the log ends here, before its end\n" +
                              "5 calls, 1 pages\norvlog: " + cut + ": is cut short; what it has is played\n");
    EXPECT_EQ(read_file(folder.path("png/cut-001.png")).substr(1, 3), "PNG");
}

TEST_F(ReplayCommand, SaysWhereALogIsDamaged)
{
    std::string log = kLog;
    log.insert(log.find("  <ORV_object_paint "), "garbage\n");
    const std::string bent = folder.write("bent.xml", log);
    const ToolResult result = replay({bent, "--png", folder.path("png")});
    EXPECT_EQ(result.status, 1);
    EXPECT_EQ(result.err, "orvlog: " + bent + ": line 13: text that is neither a tag nor a row of numbers\n" +
                              "5 calls, 1 pages\norvlog: " + bent +
                              ": is damaged in 1 places; what could be read is played\n");
}

}  // namespace
