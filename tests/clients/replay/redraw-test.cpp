// A page drawn from its log alone is the page of the job, pixel by pixel, and the log of that is the log.

#include "clients/replay/replay.h"
#include "renderers/cairo/cairo-renderer.h"
#include "tests/support/fake-identity.h"
#include "tests/support/memory-stream.h"
#include "tests/support/test-allocator.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <string>

namespace
{

namespace fs = std::filesystem;
using namespace orvlog;
using namespace orvlog::test;

// Paths with all segments, both winding rules, clips, dashes, joins, groups with alpha, gradients and a pattern.
constexpr char kContent[] =
    "q 0.9 0.2 0.1 rg 20 20 m 180 30 150 170 60 180 c h f Q\n"
    "q 0 0.4 0.8 rg 100 100 m 180 100 l 180 180 l 100 180 l h 120 120 m 160 120 l 160 160 l 120 160 l h f* Q\n"
    "q 4 w 1 J 1 j [12 6 2] 3 d 0.1 0.5 0.2 RG 10 190 m 60 110 l 110 190 l 160 110 l S Q\n"
    "q 7.25 w 0 J 0 j 3 M 0.3 g 0.7 G 20 60 m 50 90 l 80 60 l B Q\n"
    "q 100 20 m 190 20 l 145 95 l h W n /A gs 0 1 1 0 k 90 10 100 100 re f 0.2 0.3 0 0.1 K 3 w 90 10 m 190 90 l S Q\n"
    "q 10 100 60 60 re W n /Axial sh Q\n"
    "q 130 130 60 60 re W* n /Radial sh Q\n"
    "/G Do\n"
    "q /Pattern cs /P scn 10 10 50 30 re f Q\n";

constexpr char kGroup[] = "0.5 0.1 0.6 rg 30 130 50 40 re f 0 0.6 0 rg 50 140 50 40 re f";
constexpr char kTile[] = "1 0.5 0 rg 1 1 4 4 re f 0 0 1 RG 0.5 w 0 0 m 8 8 l S";

std::string stream_object(int number, const std::string& dictionary, const std::string& content)
{
    return std::to_string(number) + " 0 obj\n<< " + dictionary + " /Length " + std::to_string(content.size()) +
           " >>\nstream\n" + content + "\nendstream\nendobj\n";
}

std::string vector_document()
{
    const std::string function = "/Function << /FunctionType 2 /Domain [0 1] /C0 [1 0 0] /C1 [0 0 1] /N 1.5 >>";
    return "%PDF-1.7\n1 0 obj\n<< /Type /Catalog /Pages 2 0 R >>\nendobj\n"
           "2 0 obj\n<< /Type /Pages /Kids [3 0 R] /Count 1 >>\nendobj\n"
           "3 0 obj\n<< /Type /Page /Parent 2 0 R /MediaBox [0 0 200 200] /Contents 4 0 R /Resources << "
           "/ExtGState << /A << /ca 0.5 /CA 0.75 >> >> /XObject << /G 5 0 R >> /Pattern << /P 6 0 R >> "
           "/Shading << /Axial << /ShadingType 2 /ColorSpace /DeviceRGB /Coords [10 100 70 160] /Extend [true true] " +
           function +
           " >> /Radial << /ShadingType 3 /ColorSpace /DeviceRGB /Coords [160 160 2 165 160 28] /Extend [true false] " +
           function + " >> >> >> >>\nendobj\n" + stream_object(4, "", kContent) +
           stream_object(5, "/Type /XObject /Subtype /Form /BBox [0 0 200 200] /Group << /S /Transparency /I true >>",
                         kGroup) +
           stream_object(6,
                         "/Type /Pattern /PatternType 1 /PaintType 1 /TilingType 1 /BBox [0 0 8 8] /XStep 8 /YStep 8 "
                         "/Resources << >>",
                         kTile) +
           "trailer\n<< /Root 1 0 R >>\n%%EOF\n";
}

std::string read_text(const fs::path& path)
{
    std::ostringstream text;
    text << std::ifstream(path, std::ios::binary).rdbuf();
    return text.str();
}

class Redraw : public testing::Test
{
protected:
    Redraw()
    {
        char name[] = "/tmp/orvlog-redraw-XXXXXX";
        folder = mkdtemp(name);
        std::ofstream(folder / "page.pdf", std::ios::binary) << vector_document();
        const std::string command = std::string(ORVLOG_RECORD_PROGRAM) + " " + (folder / "page.pdf").string() + " -o " +
                                    (folder / "page.xml").string() + " --png " + folder.string() + " --dpi 144 2> " +
                                    (folder / "errors").string();
        status = std::system(command.c_str());
        log = read_text(folder / "page.xml");
    }
    ~Redraw() override
    {
        fs::remove_all(folder);
    }

    fs::path folder;
    int status = -1;
    std::string log;
};

TEST_F(Redraw, FromTheLogAloneGivesTheSamePixels)
{
    ASSERT_EQ(status, 0) << read_text(folder / "errors");
    orvlog::cairo_renderer::PageCollector collector;
    orvlog::cairo_renderer::Options options;
    options.page_sink = collector.sink();
    orvlog::cairo_renderer::Renderer renderer(options);
    replay::ReplayTickets tickets;
    std::istringstream source(log);
    const replay::Outcome outcome = replay::play(source, renderer.interface(), tickets, {});
    EXPECT_GT(outcome.calls, 15U);
    EXPECT_EQ(outcome.failed, 0U);
    EXPECT_EQ(outcome.unknown, 0U);
    EXPECT_EQ(outcome.damage, 0U);
    ASSERT_EQ(collector.pages().size(), 1U);
    const orvlog::cairo_renderer::PagePixels page =
        orvlog::cairo_renderer::read_png((folder / "page-001.png").string());
    ASSERT_EQ(page.width, 400U);
    EXPECT_EQ(page, collector.pages()[0]);
}

TEST_F(Redraw, LoggedAgainGivesTheSameLog)
{
    ASSERT_EQ(status, 0);
    TestAllocator allocator;
    MemoryStream stream;
    FakeIdentity identity;
    ORV_Interface orv = {};
    ASSERT_NE(ORVLOG_DLL_initialise(&orv, nullptr, allocator.get(), identity.get(), 0, stream.get(), nullptr, 0,
                                    replay::ReplayTickets::functions(), replay::ReplayTickets::serial_functions(), 0,
                                    nullptr, nullptr),
              0U);
    replay::ReplayTickets tickets;
    std::istringstream source(log);
    EXPECT_EQ(replay::play(source, &orv, tickets, {}).not_played, 0U);
    ORVLOG_DLL_shutdown(orv.document_start.context);
    EXPECT_NE(log.find("<GPA_BezierSegment "), std::string::npos);
    EXPECT_NE(log.find(" parent_drawing=\""), std::string::npos);
    EXPECT_EQ(stream.text(), log);
}

}  // namespace
