#include "orvlog/font/orvlog-font-wrapper.h"

#include "orvlog/records/gsh-shape-dump.h"
#include "tests/support/record-log.h"
#include "tests/support/scripted-font-engine.h"

#include <gtest/gtest.h>

#include <array>

namespace
{

using orvlog::test::attribute_of;
using orvlog::test::RecordLog;
using orvlog::test::ScriptedFontEngine;

constexpr const char* kGlyph = R"(  <GFI_GlyphDescPointer>
    <GFI_GlyphDescPointer.gdp_GlyphDesc>
      <GFI_GlyphDescBitmap gdb_Width="8" gdb_Height="2" gdb_Rowstep="1" gdb_BlackIsOne="1">
        <GFI_GlyphDesc gd_Type="GFI_GDT_BITMAP" gd_Offset="0 0 "/>
        <BufferUInt8 len="2">
18 
81 
        </BufferUInt8>
      </GFI_GlyphDescBitmap>
    </GFI_GlyphDescPointer.gdp_GlyphDesc>
  </GFI_GlyphDescPointer>
)";

class FontWrapper : public testing::Test
{
protected:
    FontWrapper()
    {
        EXPECT_EQ(font_wrapper_create(&log.session, &table, engine.get()), 1U);
    }
    ~FontWrapper() override
    {
        font_wrapper_destroy(table);
    }
    uint32_t start()
    {
        return table->GFI_StringStartFn(table->fe_Context, &font, &to_pixel, 0x60, scaled, &string, &font_id, &matrix,
                                        &flags);
    }
    uint32_t index(bool with_box = true)
    {
        return table->GFI_GlyphIndexGetFn(table->fe_Context, &returned, &glyph_index, &variant, &advance,
                                          with_box ? &box : nullptr);
    }
    uint32_t get(uint32_t type)
    {
        return table->GFI_GlyphGetFn(table->fe_Context, type, &changed, &matrix, &flags, &glyph);
    }
    uint32_t get_fixed(uint32_t type)
    {
        return table->GFI_GlyphGetFixedFormatFn(table->fe_Context, type, &returned, &changed, &matrix, &flags, &glyph);
    }
    // Makes a node of the list for this font and string.
    void see(const GFI_FontSpecPointer* font_spec, const GFI_StringDescPointer* string_desc)
    {
        GSH_Shape shape = {};
        GSH_ShapePointer pointer = {};
        pointer.sp_HeaderPtr = &shape;
        pointer.sp_U.glyph.font_spec_ptr = font_spec;
        pointer.sp_U.glyph.string_desc = string_desc;
        dump_GSH_ShapePointer(&log.session, &pointer);
        log.take();
    }

    RecordLog log;
    ScriptedFontEngine engine;
    const GFI_FontEngineTable* table = nullptr;
    GFI_FontSpecPointer font = {};
    GFI_FontSpecPointer other_font = {};
    GFI_StringDesc desc = {};
    GFI_StringDescPointer string = {&desc, nullptr, nullptr};
    GFI_StringDescPointer other_string = {&desc, nullptr, nullptr};
    GGO_Matrix to_pixel = {{1, 2, 3, 4, 5, 6.5}};
    uint32_t scaled = 1;
    int32_t font_id = 0;
    GGO_Matrix matrix = {};
    uint32_t flags = 0;
    uint32_t returned = 9;
    uint32_t glyph_index = 0;
    uint16_t variant = 0;
    GGO_Vector advance = {};
    GGO_BoxFloat box = {1, 2, 3, 4};
    uint32_t changed = 9;
    GFI_GlyphDescPointer* glyph = nullptr;
};

TEST_F(FontWrapper, StringStartOfAKnownShape)
{
    see(&other_font, &other_string);
    see(&font, &string);
    EXPECT_EQ(start(), 1U);
    EXPECT_EQ(font_id, -7);
    EXPECT_EQ(matrix.m[4], 100);
    EXPECT_EQ(flags, 6U);
    EXPECT_EQ(log.take(), R"(<GFI_StringStartFn GfpId="0" result="TRUE" stringdesc_to_face_pixel="1 2 3 4 5 6.5 " )"
                          R"(stringdesc_transform_flags="[0x60] GGO_XFLAG_ROT_90 " scaled="TRUE" unique_font_id="-7" )"
                          R"(glyphdesc_to_face_pixel="2 0 0 3 100 100 " )"
                          R"(glyphdesc_transform_flags="[0x6] GGO_XFLAG_XLATE GGO_XFLAG_SCALE " )"
                          R"(orvlog_font_spec_id="1" orvlog_string_desc_id="1"/>
)");
}

TEST_F(FontWrapper, FailedStringStartHasNoAnswers)
{
    see(&font, &string);
    engine.start_result = 0;
    scaled = 0;
    EXPECT_EQ(start(), 0U);
    EXPECT_EQ(log.take(), R"(<GFI_StringStartFn GfpId="0" result="FALSE" stringdesc_to_face_pixel="1 2 3 4 5 6.5 " )"
                          R"(stringdesc_transform_flags="[0x60] GGO_XFLAG_ROT_90 " scaled="FALSE" )"
                          R"(orvlog_font_spec_id="0" orvlog_string_desc_id="0"/>
)");
}

TEST_F(FontWrapper, EachUnmatchedStartIsWarnedOf)
{
    constexpr const char* kWarning = "/>\n\n<!--\nORVLOG: WARNING: Could not match font_spec_ptr and string_desc in "
                                     "GFI_StringStartFn to a valid GSH_ShapePointer.\n-->\n";
    for (int i = 0; i < 2; ++i)
    {
        EXPECT_EQ(start(), 1U);
        const std::string text = log.take();
        EXPECT_TRUE(text.ends_with(kWarning)) << text;
        EXPECT_EQ(attribute_of(text, "orvlog_font_spec_id"), "(absent)");
        EXPECT_EQ(attribute_of(text, "orvlog_string_desc_id"), "(absent)");
    }
}

TEST_F(FontWrapper, FontAndStringMustStandInOneNode)
{
    see(&font, &other_string);
    see(&other_font, &string);
    // The shape gets the numbers of two nodes and adds none, so the start finds no match.
    see(&font, &string);
    start();
    EXPECT_NE(log.take().find("WARNING: Could not match"), std::string::npos);
}

TEST_F(FontWrapper, GlyphIndex)
{
    engine.advances = {{0.5, -1}};
    start();
    log.take();
    EXPECT_EQ(index(), 1U);
    EXPECT_EQ(log.take(), R"(<GFI_GlyphIndexGetFn GfpId="0" result="TRUE" glyph_returned="TRUE" glyph_index_out="40" )"
                          R"(glyph_sub_pixel_variant="3" advance_vector="0.5 -1 " quick_bounding_box="1 2 9 4 "/>
)");
    EXPECT_EQ(index(), 1U);
    EXPECT_EQ(log.take(), "<GFI_GlyphIndexGetFn GfpId=\"0\" result=\"TRUE\" glyph_returned=\"FALSE\"/>\n");
    engine.index_result = 0;
    EXPECT_EQ(index(), 0U);
    EXPECT_EQ(log.take(), "<GFI_GlyphIndexGetFn GfpId=\"0\" result=\"FALSE\"/>\n");
}

TEST_F(FontWrapper, BoxIsOptional)
{
    engine.advances = {{0, 0}};
    start();
    log.take();
    index(false);
    EXPECT_EQ(log.take_value("quick_bounding_box"), "(absent)");
}

TEST_F(FontWrapper, GlyphGet)
{
    EXPECT_EQ(get(GFI_GDT_BITMAP), 1U);
    ASSERT_NE(glyph, nullptr);
    EXPECT_EQ(glyph->gdp_GlyphDesc, engine.glyph);
    EXPECT_EQ(log.take(), std::string(R"(<GFI_GlyphGetFn GfpId="0" result="TRUE" requested_desc_type="GFI_GDT_BITMAP" )"
                                      R"(glyphdesc_transform_changed="FALSE">
)") + kGlyph + "</GFI_GlyphGetFn>\n");
    engine.changed = 1;
    EXPECT_EQ(get(9), 1U);
    EXPECT_EQ(log.take(),
              std::string(R"~(<GFI_GlyphGetFn GfpId="0" result="TRUE" requested_desc_type="UNKNOWN_VALUE(9)" )~"
                          R"(glyphdesc_transform_changed="TRUE" glyphdesc_to_face_pixel="5 0 0 5 0 0 " )"
                          R"(glyphdesc_transform_flags="[0x4] GGO_XFLAG_SCALE ">
)") + kGlyph + "</GFI_GlyphGetFn>\n");
    engine.glyph_result = 0;
    EXPECT_EQ(get(GFI_GDT_RLE), 0U);
    EXPECT_EQ(log.take(), "<GFI_GlyphGetFn GfpId=\"0\" result=\"FALSE\" requested_desc_type=\"GFI_GDT_RLE\"/>\n");
}

TEST_F(FontWrapper, GlyphGetFixedFormat)
{
    EXPECT_EQ(get_fixed(GFI_GDT_FBE), 1U);
    EXPECT_EQ(log.take(),
              std::string(R"(<GFI_GlyphGetFixedFormatFn GfpId="0" result="TRUE" required_desc_type="GFI_GDT_FBE" )"
                          R"(glyph_returned="TRUE" glyphdesc_transform_changed="FALSE">
)") + kGlyph + "</GFI_GlyphGetFixedFormatFn>\n");
    engine.changed = 1;
    get_fixed(GFI_GDT_PATH);
    EXPECT_TRUE(log.take().starts_with(
        R"(<GFI_GlyphGetFixedFormatFn GfpId="0" result="TRUE" required_desc_type="GFI_GDT_PATH" )"
        R"(glyph_returned="TRUE" glyphdesc_transform_changed="TRUE" glyphdesc_to_face_pixel="5 0 0 5 0 0 " )"
        R"(glyphdesc_transform_flags="[0x4] GGO_XFLAG_SCALE ">
)"));
    engine.fixed_returned[GFI_GDT_BITMAP] = 0;
    EXPECT_EQ(get_fixed(GFI_GDT_BITMAP), 1U);
    EXPECT_EQ(log.take(), "<GFI_GlyphGetFixedFormatFn GfpId=\"0\" result=\"TRUE\" "
                          "required_desc_type=\"GFI_GDT_BITMAP\" glyph_returned=\"FALSE\"/>\n");
    engine.fixed_results[GFI_GDT_TRUETYPE] = 0;
    EXPECT_EQ(get_fixed(GFI_GDT_TRUETYPE), 0U);
    EXPECT_EQ(log.take(), "<GFI_GlyphGetFixedFormatFn GfpId=\"0\" result=\"FALSE\" "
                          "required_desc_type=\"GFI_GDT_TRUETYPE\"/>\n");
    get_fixed(5);
    EXPECT_EQ(log.take_value("required_desc_type"), "UNKNOWN_VALUE(5)");
}

TEST_F(FontWrapper, MissingGlyphIsWarnedOf)
{
    engine.glyph = nullptr;
    EXPECT_EQ(get(GFI_GDT_BITMAP), 1U);
    const std::string text = log.take();
    EXPECT_NE(text.find("ORVLOG: WARNING: GFI_GlyphDescPointer without a glyph description.\n"), std::string::npos);
    EXPECT_TRUE(text.ends_with("  </GFI_GlyphDescPointer>\n</GFI_GlyphGetFn>\n"));
}

TEST_F(FontWrapper, OddResultsGoBackUnchanged)
{
    engine.start_result = 0x80000000;
    EXPECT_EQ(start(), 0x80000000);
    engine.glyph_result = 7;
    EXPECT_EQ(get(0), 7U);
}

TEST_F(FontWrapper, EngineWithoutFunctionsFails)
{
    engine.table.GFI_StringStartFn = nullptr;
    engine.table.GFI_GlyphIndexGetFn = nullptr;
    engine.table.GFI_GlyphGetFixedFormatFn = nullptr;
    engine.table.GFI_GlyphGetFn = nullptr;
    EXPECT_EQ(start() + index() + get(0) + get_fixed(0), 0U);
}

TEST_F(FontWrapper, CallsWithoutAContextFailAndLeaveNothing)
{
    EXPECT_EQ(table->GFI_StringStartFn(nullptr, &font, &to_pixel, 0, 1, &string, &font_id, &matrix, &flags), 0U);
    EXPECT_EQ(table->GFI_GlyphIndexGetFn(nullptr, &returned, &glyph_index, &variant, &advance, &box), 0U);
    EXPECT_EQ(table->GFI_GlyphGetFixedFormatFn(nullptr, 0, &returned, &changed, &matrix, &flags, &glyph), 0U);
    EXPECT_EQ(table->GFI_GlyphGetFn(nullptr, 0, &changed, &matrix, &flags, &glyph), 0U);
    EXPECT_EQ(table->fp_EngineIdGet(nullptr), nullptr);
    EXPECT_EQ(log.take(), "");
    EXPECT_EQ(returned, 9U);
}

// A renderer that has no use for an answer, and an engine that minds where it writes.
TEST_F(FontWrapper, AnswersWithoutAPlaceAreShownAsNothing)
{
    engine.table.GFI_StringStartFn = [](void*, const GFI_FontSpecPointer*, const GGO_Matrix*, uint32_t, uint32_t,
                                        const GFI_StringDescPointer*, int32_t*, GGO_Matrix*, uint32_t*) -> uint32_t
    { return 1; };
    engine.table.GFI_GlyphIndexGetFn = [](void*, uint32_t* returned_out, uint32_t*, uint16_t*, GGO_Vector*,
                                          GGO_BoxFloat*) -> uint32_t
    {
        if (returned_out != nullptr)
            *returned_out = 1;
        return 1;
    };
    engine.table.GFI_GlyphGetFixedFormatFn = [](void*, uint32_t, uint32_t*, uint32_t*, GGO_Matrix*, uint32_t*,
                                                GFI_GlyphDescPointer**) -> uint32_t { return 1; };
    engine.table.GFI_GlyphGetFn = [](void*, uint32_t, uint32_t*, GGO_Matrix*, uint32_t*,
                                     GFI_GlyphDescPointer**) -> uint32_t { return 1; };
    see(&font, &string);
    void* context = table->fe_Context;
    table->GFI_StringStartFn(context, &font, nullptr, 0, 0, &string, nullptr, nullptr, nullptr);
    EXPECT_EQ(log.take(), "<GFI_StringStartFn GfpId=\"0\" result=\"TRUE\" stringdesc_transform_flags=\"[0] "
                          "GGO_XFLAG_NONE \" scaled=\"FALSE\" unique_font_id=\"0\" glyphdesc_transform_flags=\"[0] "
                          "GGO_XFLAG_NONE \" orvlog_font_spec_id=\"0\" orvlog_string_desc_id=\"0\"/>\n");
    table->GFI_GlyphIndexGetFn(context, nullptr, nullptr, nullptr, nullptr, nullptr);
    EXPECT_EQ(log.take(), "<GFI_GlyphIndexGetFn GfpId=\"0\" result=\"TRUE\" glyph_returned=\"FALSE\"/>\n");
    table->GFI_GlyphIndexGetFn(context, &returned, nullptr, nullptr, nullptr, nullptr);
    EXPECT_EQ(log.take(), "<GFI_GlyphIndexGetFn GfpId=\"0\" result=\"TRUE\" glyph_returned=\"TRUE\" "
                          "glyph_index_out=\"0\" glyph_sub_pixel_variant=\"0\"/>\n");
    table->GFI_GlyphGetFixedFormatFn(context, 0, nullptr, nullptr, nullptr, nullptr, nullptr);
    EXPECT_EQ(log.take(), "<GFI_GlyphGetFixedFormatFn GfpId=\"0\" result=\"TRUE\" "
                          "required_desc_type=\"GFI_GDT_FBE\" glyph_returned=\"FALSE\"/>\n");
    table->GFI_GlyphGetFn(context, 0, nullptr, nullptr, nullptr, nullptr);
    EXPECT_EQ(log.take(), "<GFI_GlyphGetFn GfpId=\"0\" result=\"TRUE\" requested_desc_type=\"GFI_GDT_FBE\" "
                          "glyphdesc_transform_changed=\"FALSE\">\n</GFI_GlyphGetFn>\n");
}

TEST_F(FontWrapper, EngineThatGivesNoGlyphLeavesTheElementEmpty)
{
    engine.table.GFI_GlyphGetFn = [](void*, uint32_t, uint32_t* changed_out, GGO_Matrix*, uint32_t*,
                                     GFI_GlyphDescPointer** out) -> uint32_t
    {
        *changed_out = 0;
        *out = nullptr;
        return 1;
    };
    GFI_GlyphDescPointer before = {};
    glyph = &before;
    EXPECT_EQ(get(2), 1U);
    EXPECT_EQ(glyph, nullptr);
    EXPECT_EQ(log.take(), "<GFI_GlyphGetFn GfpId=\"0\" result=\"TRUE\" requested_desc_type=\"GFI_GDT_PATH\" "
                          "glyphdesc_transform_changed=\"FALSE\">\n</GFI_GlyphGetFn>\n");
}

TEST_F(FontWrapper, EachTableHasItsNumber)
{
    ScriptedFontEngine second;
    const GFI_FontEngineTable* second_table = nullptr;
    ASSERT_EQ(font_wrapper_create(&log.session, &second_table, second.get()), 1U);
    second_table->GFI_GlyphGetFn(second_table->fe_Context, 0, &changed, &matrix, &flags, &glyph);
    EXPECT_EQ(log.take_value("GfpId"), "1");
    get(0);
    EXPECT_EQ(log.take_value("GfpId"), "0");
    font_wrapper_destroy(second_table);
    ASSERT_EQ(font_wrapper_create(&log.session, &second_table, second.get()), 1U);
    EXPECT_EQ(font_wrapper_id(second_table), 2U);
    font_wrapper_destroy(second_table);
}

TEST_F(FontWrapper, DestroyOfNothingIsLetBe)
{
    font_wrapper_destroy(nullptr);
    const GFI_FontEngineTable no_wrapper = {};
    font_wrapper_destroy(&no_wrapper);
    get(0);
    EXPECT_EQ(log.take_value("GfpId"), "0");
}

TEST_F(FontWrapper, ElementsStandAtTheSessionsDepth)
{
    log.session.writer.depth = 2;
    engine.glyph_result = 0;
    get(0);
    EXPECT_TRUE(log.stream.text().starts_with("    <GFI_GlyphGetFn "));
    log.session.writer.depth = 0;
}

}  // namespace
