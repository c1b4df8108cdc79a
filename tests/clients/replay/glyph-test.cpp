// Texts in logs of base mode: where they end, and the forms of their glyphs.

#include "clients/pdf/job.h"
#include "tests/clients/replay/documents.h"
#include "tests/clients/replay/jobs.h"

#include <gtest/gtest.h>

#include <set>
#include <string>

namespace
{

using namespace orvlog::test;

class EndPointsOf : public testing::TestWithParam<const char*>
{
};

// The pen's position that a paint hands back is the client's own.
TEST_P(EndPointsOf, AreTheClients)
{
    const std::string name = GetParam();
    const ScratchFolder scratch;
    const std::string document = name == "sample" ? sample() : scratch.write("made.pdf", made_document(name));
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

INSTANTIATE_TEST_SUITE_P(Documents, EndPointsOf, testing::Values("sample", "true-type-text"));

// Its font is embedded as TrueType, so that a glyph's entry in the font's file is there to be asked for.
TEST(GlyphForms, AllFiveOccurInALog)
{
    const ScratchFolder scratch;
    orvlog::pdf_client::JobOptions options;
    options.document = scratch.write("made.pdf", made_document("true-type-text"));
    options.log = scratch.path("log.xml");
    options.glyphs = orvlog::pdf_client::JobOptions::Glyphs::all;
    EXPECT_TRUE(orvlog::pdf_client::run_job(options).errors.empty());
    const std::string log = read_file(options.log);
    for (const char* form : {"<GFI_GlyphDescFBE ", "<GFI_GlyphDescBitmap ", "<GFI_GlyphDescPath ",
                             "<GFI_GlyphDescTrueType ", "<GFI_GlyphDescRLE "})
        EXPECT_NE(log.find(form), std::string::npos) << form;
}

}  // namespace
