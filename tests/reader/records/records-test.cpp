#include "reader/records/records.h"

#include <gtest/gtest.h>

#include <cstring>
#include <sstream>
#include <string>
#include <vector>

namespace
{

using namespace orvlog::reader;

// The only element of a log, and what its records are made in.
class OneElement
{
public:
    explicit OneElement(const std::string& text) : source_("<ORV>\n" + text + "</ORV>\n"), elements_(source_)
    {
        element = elements_.next();
    }

    const Element* element = nullptr;
    Arena arena;
    RecordReader records{arena};

private:
    std::istringstream source_;
    ElementReader elements_;
};

TEST(Records, ABitmapWhoseRowsWereCutKeepsThemInPlace)
{
    OneElement one(
        "  <GFI_GlyphDescPointer>\n"
        "    <GFI_GlyphDescPointer.gdp_GlyphDesc>\n"
        "      <GFI_GlyphDescBitmap gdb_Width=\"32\" gdb_Height=\"2\" gdb_Rowstep=\"4\" gdb_BlackIsOne=\"1\">\n"
        "        <GFI_GlyphDesc gd_Type=\"GFI_GDT_BITMAP\" gd_Offset=\"1 -2 \"/>\n"
        "        <BufferUInt8 len=\"8\">\n"
        "01 02 03 \n"
        "05 06 07 \n"
        "        </BufferUInt8>\n"
        "      </GFI_GlyphDescBitmap>\n"
        "    </GFI_GlyphDescPointer.gdp_GlyphDesc>\n"
        "  </GFI_GlyphDescPointer>\n");
    const GFI_GlyphDescPointer* glyph = one.records.glyph(one.element);
    ASSERT_NE(glyph, nullptr);
    ASSERT_NE(glyph->gdp_GlyphDesc, nullptr);
    EXPECT_EQ(glyph->gdp_GlyphDesc->gd_Type, uint32_t{GFI_GDT_BITMAP});
    EXPECT_EQ(glyph->gdp_GlyphDesc->gd_Offset.gvf_Y, -2);
    uint8_t rows[8];
    std::memcpy(rows, reinterpret_cast<const uint8_t*>(glyph->gdp_GlyphDesc) + GFI_GLYPH_DESC_BITMAP_PAYLOAD, 8);
    EXPECT_EQ(std::vector<uint8_t>(rows, rows + 8), (std::vector<uint8_t>{1, 2, 3, 0, 5, 6, 7, 0}));
}

TEST(Records, AStrokeAndItsDashes)
{
    OneElement one("  <GPA_PathStrokingParams psp_Flags.S=\"GPA_CAP_ROUND\" psp_Flags.E=\"GPA_CAP_TRIANGLE\" "
                   "psp_Flags.J=\"GPA_JOIN_BEVEL\" psp_Flags.A=\"GPA_ADJUST_PS\" psp_Flags.Z=\"TRUE\" "
                   "psp_DashCount=\"2\" psp_DashCaps=\"GPA_CAP_PROJECT\" psp_StrokeWidth=\"0.5\" "
                   "psp_MiterLimit=\"4\" psp_DashStart=\"0.25\">\n"
                   "    <psp_DashLength>\n"
                   "      <BufferFloat len=\"2\">\n"
                   "1 2.5 \n"
                   "      </BufferFloat>\n"
                   "    </psp_DashLength>\n"
                   "  </GPA_PathStrokingParams>\n");
    const GPA_PathStrokingParams* stroke = one.records.stroke(one.element);
    ASSERT_NE(stroke, nullptr);
    EXPECT_EQ(stroke->psp_Flags, 0x9231);
    EXPECT_EQ(stroke->psp_DashCount, 2);
    EXPECT_EQ(stroke->psp_DashCaps, GPA_CAP_PROJECT);
    EXPECT_EQ(stroke->psp_StrokeWidth, 0.5F);
    EXPECT_EQ(stroke->psp_MiterLimit, 4.0F);
    EXPECT_EQ(stroke->psp_DashStart, 0.25F);
    EXPECT_EQ(stroke->psp_DashLength[0], 1.0F);
    EXPECT_EQ((&stroke->psp_DashLength[0])[1], 2.5F);
}

TEST(Records, AlternatesAreWholeAsDeepAsTheLogHasThem)
{
    const std::string definition =
        "<GCM_Csd csd_Type=\"GCM_CSDTYPE_NO_BASE_CHANS\" csd_HasAlternateDefn=\"TRUE\">\n</GCM_Csd>\n";
    std::string text;
    for (int i = 0; i < 1000; ++i)
        text += "<GCM_CsdPointer>\n" + definition + "<ORVLOG_WRAPPER name=\"cp_AlternateDefn\">\n";
    text += "<GCM_CsdPointer>\n" + definition + "</GCM_CsdPointer>\n";
    for (int i = 0; i < 1000; ++i)
        text += "</ORVLOG_WRAPPER>\n</GCM_CsdPointer>\n";
    OneElement one(text);
    int met = 0;
    for (const GCM_CsdPointer* csd = one.records.csd(one.element); csd != nullptr; csd = csd->cp_AlternateDefn)
        ++met;
    EXPECT_EQ(met, 1001);
}

TEST(Records, WhatIsOfAnotherKindGivesNothing)
{
    OneElement one("  <GGO_Point gpf_X=\"1\" gpf_Y=\"2\"/>\n");
    ASSERT_NE(one.element, nullptr);
    EXPECT_EQ(one.records.path(one.element), nullptr);
    EXPECT_EQ(one.records.shape(one.element), nullptr);
    EXPECT_EQ(one.records.op(one.element), nullptr);
    EXPECT_EQ(one.records.operand(one.element), nullptr);
    EXPECT_EQ(one.records.color(one.element), nullptr);
    EXPECT_EQ(one.records.csd(one.element), nullptr);
    EXPECT_EQ(one.records.glyph(one.element), nullptr);
    EXPECT_EQ(one.records.image(one.element), nullptr);
    EXPECT_EQ(one.records.path(nullptr), nullptr);
    EXPECT_EQ(one.records.unknown(), 1U);
}

}  // namespace
