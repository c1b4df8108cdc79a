// Texts in logs of base mode: where they end, and the forms of their glyphs.

#include "clients/pdf/job.h"
#include "tests/clients/replay/jobs.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <set>
#include <string>

namespace
{

namespace fs = std::filesystem;
using namespace orvlog::test;

class EndPointsOf : public testing::TestWithParam<const char*>
{
};

// The pen's position that a paint hands back is the client's own.
TEST_P(EndPointsOf, AreTheClients)
{
    const std::string name = GetParam();
    const std::string document = name == "sample.pdf" ? sample() : shared_document(name);
    if (!fs::exists(document))
        GTEST_SKIP() << document << " is not here";
    const ScratchFolder scratch;
    orvlog::pdf_client::JobOptions options;
    options.document = document;
    options.log = scratch.path("log.xml");
    options.base_mode = true;
    options.renderer = false;
    options.last_page = 1;
    const orvlog::pdf_client::JobResult result = orvlog::pdf_client::run_job(options);
    EXPECT_TRUE(result.errors.empty());
    EXPECT_GT(result.summary.calls.end_points, 0U);
    EXPECT_LE(result.summary.calls.worst_end_point, 1e-9);
}

INSTANTIATE_TEST_SUITE_P(Documents, EndPointsOf,
                         testing::Values("sample.pdf", "XiaoBiaoSong.pdf", "blendmode.pdf", "issue12810.pdf",
                                         "issue918.pdf", "knockout_groups_test.pdf", "radial_gradients.pdf",
                                         "tracemonkey.pdf", "vertical.pdf"));

// Its fonts are embedded as TrueType, so that a glyph's entry in the font's file is there to be asked for.
TEST(GlyphForms, AllFiveOccurInALog)
{
    if (!fs::exists(shared_document("vertical.pdf")))
        GTEST_SKIP() << "vertical.pdf is not here";
    const ScratchFolder scratch;
    orvlog::pdf_client::JobOptions options;
    options.document = shared_document("vertical.pdf");
    options.log = scratch.path("log.xml");
    options.glyphs = orvlog::pdf_client::JobOptions::Glyphs::all;
    EXPECT_TRUE(orvlog::pdf_client::run_job(options).errors.empty());
    const std::string log = read_file(options.log);
    for (const char* form : {"<GFI_GlyphDescFBE ", "<GFI_GlyphDescBitmap ", "<GFI_GlyphDescPath ",
                             "<GFI_GlyphDescTrueType ", "<GFI_GlyphDescRLE "})
        EXPECT_NE(log.find(form), std::string::npos) << form;
}

}  // namespace
