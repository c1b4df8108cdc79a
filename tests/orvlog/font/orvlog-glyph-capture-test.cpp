#include "orvlog/font/orvlog-glyph-capture.h"

#include "orvlog/font/orvlog-font-wrapper.h"
#include "orvlog/records/gsh-shape-dump.h"
#include "tests/support/record-log.h"
#include "tests/support/scripted-font-engine.h"
#include "tests/support/test-session.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>

namespace
{

using orvlog::test::attribute_of;
using orvlog::test::RecordLog;
using orvlog::test::ScriptedFontEngine;
using orvlog::test::TestSession;

size_t count(const std::string& text, const std::string& what)
{
    size_t result = 0;
    for (size_t at = text.find(what); at != std::string::npos; at = text.find(what, at + 1))
        ++result;
    return result;
}

class Capture : public testing::Test
{
protected:
    Capture()
    {
        log.session.logging_mode = ORVLOG_MODE_BASE;
        log.session.object_transform = {{10, 0, 0, -10, 200, 300}};
        log.session.glyph_get_format = GFI_GDT_BITMAP;
        log.session.glyph_end_point = {-1, -2};
        EXPECT_EQ(font_wrapper_create(&log.session, &log.session.current_font_wrapper, engine.get()), 1U);
        pointer.sp_HeaderPtr = &shape;
        pointer.sp_U.glyph.font_spec_ptr = &font;
        pointer.sp_U.glyph.string_desc = &string;
    }
    ~Capture() override
    {
        font_wrapper_release_all(&log.session);
    }
    std::string dump()
    {
        dump_GSH_ShapePointer(&log.session, &pointer);
        return log.take();
    }
    GGO_Point end() const
    {
        return log.session.glyph_end_point;
    }

    RecordLog log;
    ScriptedFontEngine engine;
    GSH_Shape shape = {};
    GFI_FontSpecPointer font = {};
    GFI_StringDesc desc = {};
    GFI_StringDescPointer string = {&desc, nullptr, nullptr};
    GSH_ShapePointer pointer = {};
};

TEST_F(Capture, OneGlyph)
{
    engine.advances = {{5, 7}};
    const std::string text = dump();
    EXPECT_EQ(text.substr(text.find("</GSH_ShapePointer>")), R"(</GSH_ShapePointer>
<GFI_StringStartFn GfpId="0" result="TRUE" stringdesc_to_face_pixel="10 0 0 -10 200 300 " )"
                                                             R"(stringdesc_transform_flags="[0xe] GGO_XFLAG_XLATE )"
                                                             R"(GGO_XFLAG_SCALE GGO_XFLAG_FLIP_HORZ " scaled="TRUE" )"
                                                             R"(unique_font_id="-7" )"
                                                             R"(glyphdesc_to_face_pixel="2 0 0 3 100 100 " )"
                                                             R"(glyphdesc_transform_flags="[0x6] GGO_XFLAG_XLATE )"
                                                             R"(GGO_XFLAG_SCALE " orvlog_font_spec_id="0" )"
                                                             R"(orvlog_string_desc_id="0"/>
<GFI_GlyphIndexGetFn GfpId="0" result="TRUE" glyph_returned="TRUE" glyph_index_out="40" glyph_sub_pixel_variant="3" )"
                                                             R"(advance_vector="5 7 " quick_bounding_box="1 1 9 -1 "/>
<GFI_GlyphGetFn GfpId="0" result="TRUE" requested_desc_type="GFI_GDT_BITMAP" glyphdesc_transform_changed="FALSE">
  <GFI_GlyphDescPointer>
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
</GFI_GlyphGetFn>
<GFI_GlyphIndexGetFn GfpId="0" result="TRUE" glyph_returned="FALSE"/>
)");
    EXPECT_EQ(engine.take_calls(), "start index glyph1 index ");
    EXPECT_EQ(engine.start_flags, 0xEU);
    EXPECT_EQ(engine.start_scaled, 1U);
    EXPECT_EQ(engine.start_matrix.m[5], 300);
    // The advance goes through the linear part of the engine's matrix, and back through the object's.
    EXPECT_DOUBLE_EQ(end().gpf_X, 1);
    EXPECT_DOUBLE_EQ(end().gpf_Y, -2.1);
}

TEST_F(Capture, StrokedGlyphsAreCapturedToo)
{
    GSH_StrokedGlyphShape stroked = {};
    stroked.sgs_Shape.sh_ShapeType = GSH_SHAPE_STROKE_GLYPHS;
    pointer.sp_HeaderPtr = &stroked.sgs_Shape;
    dump();
    EXPECT_EQ(engine.take_calls(), "start index ");
}

TEST_F(Capture, OtherShapesAreNot)
{
    shape.sh_ShapeType = 7;
    dump();
    pointer.sp_HeaderPtr = nullptr;
    dump();
    EXPECT_EQ(engine.take_calls(), "");
}

TEST_F(Capture, TransparentModeCapturesNothing)
{
    log.session.logging_mode = ORVLOG_MODE_TRANSPARENT;
    engine.advances = {{5, 7}};
    EXPECT_EQ(dump().find("GFI_StringStartFn"), std::string::npos);
    EXPECT_EQ(engine.take_calls(), "");
}

TEST_F(Capture, EmptyStringEndsAtItsOrigin)
{
    EXPECT_EQ(count(dump(), "<GFI_GlyphIndexGetFn"), 1U);
    EXPECT_EQ(engine.take_calls(), "start index ");
    EXPECT_EQ(end().gpf_X, 0);
    EXPECT_EQ(end().gpf_Y, 0);
}

TEST_F(Capture, SingularTransformStandsInForItsInverse)
{
    log.session.object_transform = {{1, 0, 0, 0, 20, 30}};
    engine.advances = {{5, 7}};
    dump();
    // Pen at (20 + 10, 30 + 21), mapped forwards once more.
    EXPECT_EQ(end().gpf_X, 30 + 20);
    EXPECT_EQ(end().gpf_Y, 30);
}

TEST_F(Capture, LaterMatricesDoNotMoveThePen)
{
    engine.changed = 1;
    engine.advances = {{5, 0}, {5, 0}};
    dump();
    EXPECT_EQ(end().gpf_X, 2);
}

TEST_F(Capture, FailedStartLeavesTheEndPoint)
{
    engine.start_result = 0;
    const std::string text = dump();
    EXPECT_EQ(engine.take_calls(), "start ");
    EXPECT_EQ(end().gpf_X, -1);
    EXPECT_EQ(end().gpf_Y, -2);
    EXPECT_EQ(text.find("WARNING"), std::string::npos);
}

TEST_F(Capture, FailedIndexEndsTheStringAndIsWarnedOfOnce)
{
    engine.index_result = 0;
    EXPECT_NE(dump().find("\n<!--\nORVLOG: WARNING: GFI_GlyphIndexGetFn call returned failure. This msg logged once "
                          "only.\n-->\n"),
              std::string::npos);
    EXPECT_EQ(log.session.glyph_warned_index_get, 1U);
    EXPECT_EQ(end().gpf_X, -1);
    const std::string second = dump();
    EXPECT_EQ(second.find("WARNING"), std::string::npos);
    EXPECT_EQ(count(second, "<GFI_StringStartFn"), 1U);
    EXPECT_EQ(engine.take_calls(), "start index start index ");
}

TEST_F(Capture, FiveFailedGlyphsGiveOneWarning)
{
    engine.glyph_result = 0;
    engine.advances = std::vector<GGO_Vector>(5, {1, 0});
    const std::string text = dump();
    EXPECT_EQ(count(text, "<GFI_GlyphGetFn GfpId=\"0\" result=\"FALSE\" requested_desc_type=\"GFI_GDT_BITMAP\"/>\n"),
              5U);
    EXPECT_EQ(count(text, "ORVLOG: WARNING: GFI_GlyphGetFn returned failure. This msg logged once only.\n"), 1U);
    EXPECT_EQ(count(text, "WARNING"), 1U);
    EXPECT_EQ(end().gpf_X, 1);
}

TEST_F(Capture, FormatAskedForIsTheSessions)
{
    log.session.glyph_get_format = GFI_GDT_PATH;
    engine.advances = {{1, 0}};
    EXPECT_EQ(attribute_of(dump(), "requested_desc_type"), "GFI_GDT_PATH");
}

TEST_F(Capture, FixedFormatsAreAllThreeAskedFor)
{
    log.session.glyph_fixed_format = 1;
    engine.advances = {{1, 0}, {1, 0}};
    dump();
    EXPECT_EQ(engine.take_calls(), "start index fixed0 fixed1 fixed2 index fixed0 fixed1 fixed2 index ");
}

TEST_F(Capture, OneFixedFormatIsEnough)
{
    log.session.glyph_fixed_format = 1;
    engine.advances = {{1, 0}, {1, 0}};
    for (uint32_t& returned : engine.fixed_returned)
        returned = 0;
    engine.fixed_returned[GFI_GDT_BITMAP] = 1;
    dump();
    EXPECT_EQ(engine.take_calls(), "start index fixed0 fixed1 fixed2 index fixed0 fixed1 fixed2 index ");
}

TEST_F(Capture, WithoutAnyFixedFormatTheGlyphIsAskedForAsUsual)
{
    log.session.glyph_fixed_format = 1;
    engine.advances = {{1, 0}, {1, 0}};
    for (uint32_t& returned : engine.fixed_returned)
        returned = 0;
    dump();
    EXPECT_EQ(engine.take_calls(), "start index fixed0 fixed1 fixed2 glyph1 index fixed0 fixed1 fixed2 glyph1 index ");
}

TEST_F(Capture, FailedFixedFormatsAreWarnedOfOnceEach)
{
    log.session.glyph_fixed_format = 1;
    engine.advances = {{1, 0}, {1, 0}};
    for (uint32_t type = 0; type < 5; ++type)
        engine.fixed_results[type] = engine.fixed_returned[type] = 0;
    const std::string text = dump() + dump();
    EXPECT_EQ(count(text, "ORVLOG: WARNING: GFI_GlyphGetFixedFormatFn FBE call returned failure. This msg logged once "
                          "only.\n"),
              1U);
    EXPECT_EQ(count(text, "ORVLOG: WARNING: GFI_GlyphGetFixedFormatFn BITMAP call returned failure. This msg logged "
                          "once only.\n"),
              1U);
    EXPECT_EQ(count(text, "ORVLOG: WARNING: GFI_GlyphGetFixedFormatFn PATH call returned failure. This msg logged "
                          "once only.\n"),
              1U);
    EXPECT_EQ(count(text, "WARNING"), 3U);
    EXPECT_EQ(log.session.glyph_warned_fixed_fbe, 1U);
    EXPECT_EQ(log.session.glyph_warned_fixed_bitmap, 1U);
    EXPECT_EQ(log.session.glyph_warned_fixed_path, 1U);
    EXPECT_EQ(log.session.glyph_warned_glyph_get, 0U);
}

TEST_F(Capture, WithoutAnEngineItIsSkippedWithAWarning)
{
    font_wrapper_release_all(&log.session);
    log.session.current_font_wrapper = nullptr;
    const std::string text = dump();
    EXPECT_EQ(text.substr(text.find("</GSH_ShapePointer>")),
              "</GSH_ShapePointer>\n\n<!--\nORVLOG: WARNING: Text without a font engine. Its glyphs will not be "
              "logged.\n-->\n");
    EXPECT_EQ(end().gpf_X, -1);
}

TEST_F(Capture, EndlessStringIsGivenUp)
{
    engine.endless = true;
    engine.glyph_result = 0;
    log.session.writer.stream = nullptr;
    dump_GSH_ShapePointer(&log.session, &pointer);
    EXPECT_EQ(count(engine.take_calls(), "glyph1 "), 262144U);
    EXPECT_EQ(end().gpf_X, -1);
    log.session.writer.stream = log.stream.get();
}

// The log is taken up again with the last glyph.
TEST_F(Capture, EndlessStringIsWarnedOf)
{
    static uint32_t left;
    static RecordLog* resumed;
    left = 262144;
    resumed = &log;
    engine.table.GFI_GlyphIndexGetFn = [](void*, uint32_t* returned, uint32_t*, uint16_t*, GGO_Vector*,
                                          GGO_BoxFloat*) -> uint32_t
    {
        *returned = 1;
        if (--left == 0)
            resumed->session.writer.stream = resumed->stream.get();
        return 1;
    };
    engine.glyph_result = 0;
    log.session.glyph_warned_glyph_get = 1;
    log.session.writer.stream = nullptr;
    const std::string text = dump();
    EXPECT_EQ(left, 0U);
    EXPECT_EQ(count(text, "<GFI_GlyphIndexGetFn "), 1U);
    EXPECT_EQ(count(text, "\n<!--\nORVLOG: WARNING: String of glyphs does not end.\n-->\n"), 1U);
}

// What an engine leaves alone stands in the log as it was asked with.
TEST_F(Capture, WordsLeftAloneAreTheDefaults)
{
    engine.table.GFI_StringStartFn = [](void*, const GFI_FontSpecPointer*, const GGO_Matrix*, uint32_t, uint32_t,
                                        const GFI_StringDescPointer*, int32_t*, GGO_Matrix*, uint32_t*) -> uint32_t
    { return 1; };
    engine.table.GFI_GlyphGetFn = [](void*, uint32_t, uint32_t* changed, GGO_Matrix*, uint32_t*,
                                     GFI_GlyphDescPointer**) -> uint32_t
    {
        *changed = 1;
        return 1;
    };
    engine.advances = {{1, 0}};
    const std::string text = dump();
    EXPECT_EQ(count(text, " unique_font_id=\"0\" glyphdesc_to_face_pixel=\"1 0 0 1 0 0 \" "
                          "glyphdesc_transform_flags=\"[0] GGO_XFLAG_NONE \" "),
              1U)
        << text;
    EXPECT_EQ(count(text, " glyphdesc_transform_changed=\"TRUE\" glyphdesc_to_face_pixel=\"0 0 0 0 0 0 \" "
                          "glyphdesc_transform_flags=\"[0] GGO_XFLAG_NONE \">"),
              1U)
        << text;
}

TEST_F(Capture, LongTextIsNotTakenForAnEndlessString)
{
    const std::vector<uint8_t> text(1000, 'a');
    string.gsp_TextPtr = text.data();
    desc.gsd_TextLen = 1000;
    engine.advances = std::vector<GGO_Vector>(262144 + 999, {0, 0});
    engine.glyph_result = 0;
    log.session.writer.stream = nullptr;
    dump_GSH_ShapePointer(&log.session, &pointer);
    EXPECT_EQ(end().gpf_X, 0);
    engine.take_calls();
    engine.endless = true;
    log.session.glyph_end_point = {-1, -2};
    dump_GSH_ShapePointer(&log.session, &pointer);
    EXPECT_EQ(count(engine.take_calls(), "glyph1 "), 262144U + 1000U);
    EXPECT_EQ(end().gpf_X, -1);
    log.session.writer.stream = log.stream.get();
}

TEST_F(Capture, GlyphsInAClipAreCaptured)
{
    GSH_ShapeList list = {};
    list.sl_Shape = pointer;
    dump_shape_list_member(&log.session, "ORV_object_paint", "clip", &list);
    const std::string text = log.take();
    EXPECT_LT(text.find("      </GSH_ShapePointer>\n      <GFI_StringStartFn "),
              text.find("\n    </GSH_ShapeList.sl_Shape>\n"));
}

// An engine that leaves `glyph_returned` alone until the string is done.
TEST_F(Capture, WordLeftAloneMeansAGlyph)
{
    static int left = 0;
    left = 2;
    engine.table.GFI_GlyphIndexGetFn = [](void*, uint32_t* returned, uint32_t*, uint16_t*, GGO_Vector* advance,
                                          GGO_BoxFloat*) -> uint32_t
    {
        *advance = {5, 0};
        if (left-- == 0)
            *returned = 0;
        return 1;
    };
    const std::string text = dump();
    EXPECT_EQ(count(text, "<GFI_GlyphIndexGetFn GfpId=\"0\" result=\"TRUE\" glyph_returned=\"TRUE\" "), 2U);
    EXPECT_EQ(count(text, "<GFI_GlyphIndexGetFn GfpId=\"0\" result=\"TRUE\" glyph_returned=\"FALSE\"/>\n"), 1U);
    EXPECT_EQ(engine.take_calls(), "start glyph1 glyph1 ");
    EXPECT_EQ(end().gpf_X, 2);
}

TEST_F(Capture, WarningsStandDirectlyBehindTheirElements)
{
    log.session.glyph_fixed_format = 7;
    engine.advances = {{1, 0}};
    engine.glyph_result = 0;
    engine.fixed_results[GFI_GDT_FBE] = 0;
    engine.fixed_results[GFI_GDT_PATH] = 0;
    for (uint32_t& returned : engine.fixed_returned)
        returned = 0;
    const std::string text = dump();
    EXPECT_EQ(text.substr(text.find("<GFI_GlyphGetFixedFormatFn")),
              R"(<GFI_GlyphGetFixedFormatFn GfpId="0" result="FALSE" required_desc_type="GFI_GDT_FBE"/>

<!--
ORVLOG: WARNING: GFI_GlyphGetFixedFormatFn FBE call returned failure. This msg logged once only.
-->
<GFI_GlyphGetFixedFormatFn GfpId="0" result="TRUE" required_desc_type="GFI_GDT_BITMAP" glyph_returned="FALSE"/>
<GFI_GlyphGetFixedFormatFn GfpId="0" result="FALSE" required_desc_type="GFI_GDT_PATH"/>

<!--
ORVLOG: WARNING: GFI_GlyphGetFixedFormatFn PATH call returned failure. This msg logged once only.
-->
<GFI_GlyphGetFn GfpId="0" result="FALSE" requested_desc_type="GFI_GDT_BITMAP"/>

<!--
ORVLOG: WARNING: GFI_GlyphGetFn returned failure. This msg logged once only.
-->
<GFI_GlyphIndexGetFn GfpId="0" result="TRUE" glyph_returned="FALSE"/>
)");
}

// Transforms that no pen survives: the text says what it says.
TEST_F(Capture, OriginGoesThroughTheWholeMapping)
{
    const double infinite = std::numeric_limits<double>::infinity();
    log.session.object_transform = {{infinite, 0, 0, 1, 20, 30}};
    dump();
    EXPECT_TRUE(std::isnan(end().gpf_X));
    EXPECT_EQ(engine.start_matrix.m[0], infinite);
}

class CaptureInCalls : public testing::Test
{
protected:
    CaptureInCalls()
    {
        pointer.sp_HeaderPtr = &shape;
        pointer.sp_U.glyph.font_spec_ptr = &font;
        pointer.sp_U.glyph.string_desc = &string;
        engine.advances = {{5, 0}};
        engine.matrix = {{10, 0, 0, 10, 0, 0}};
        client.set_base_mode();
        client.orv.document_start.fn(nullptr, &client.orv, &client.document, 7, engine.get(), nullptr);
        client.start_face(&drawing);
    }
    ORVLOG_Session* session()
    {
        return static_cast<ORVLOG_Session*>(client.session());
    }
    void paint()
    {
        drawing.object_paint.fn(&drawing, 1, 0, nullptr, &pointer, 0, nullptr, nullptr, nullptr, nullptr);
    }

    TestSession client;
    ScriptedFontEngine engine;
    ORV_DrawingInterface drawing = {};
    GSH_Shape shape = {GSH_SHAPE_GLYPHS, 0, {{1, 0, 0, 1, 2, 3}}};
    GFI_FontSpecPointer font = {};
    GFI_StringDesc desc = {};
    GFI_StringDescPointer string = {&desc, nullptr, nullptr};
    GSH_ShapePointer pointer = {};
};

TEST_F(CaptureInCalls, EndPointIsKeptWithoutAPlaceForIt)
{
    session()->glyph_end_point = {8, 9};
    EXPECT_EQ(drawing.object_paint_and_stroke.fn(&drawing, 1, 1, 0, nullptr, nullptr, &pointer, nullptr, nullptr, 0,
                                                 nullptr, ORV_PAINTFLAGS_FILL, nullptr, nullptr, nullptr, nullptr,
                                                 nullptr, nullptr, nullptr),
              1U);
    EXPECT_NEAR(session()->glyph_end_point.gpf_X, 0.5, 1e-12);
    EXPECT_NEAR(session()->glyph_end_point.gpf_Y, 0, 1e-12);
}

TEST_F(CaptureInCalls, EndPointIsThatOfThePathAndNotOfTheClip)
{
    GSH_Shape clip_shape = {GSH_SHAPE_GLYPHS, 0, {{1, 0, 0, 1, 7, 7}}};
    GSH_ShapeList clip = {};
    clip.sl_Shape = pointer;
    clip.sl_Shape.sp_HeaderPtr = &clip_shape;
    GSH_Shape fill = {GSH_SHAPE_IMAGE_RECT, 0, {{1, 0, 0, 1, 0, 0}}};
    GSH_ImageRectShape image_rect = {};
    image_rect.irs_Shape = fill;
    GSH_ShapePointer rect = {};
    rect.sp_HeaderPtr = &image_rect.irs_Shape;
    GGO_Point end = {6, 6};
    drawing.object_paint_and_stroke.fn(&drawing, 1, 1, 0, nullptr, nullptr, &rect, nullptr, nullptr, 0, &clip,
                                       ORV_PAINTFLAGS_FILL, &end, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr);
    EXPECT_EQ(end.gpf_X, 0);
    EXPECT_EQ(end.gpf_Y, 0);
    EXPECT_NE(session()->glyph_end_point.gpf_X, 0) << "the clip has moved it since";
}

TEST_F(CaptureInCalls, ListOfSightingsIsEmptiedByFacesPaintsAndEndsOfGroups)
{
    uint32_t replay = 0;
    ORV_DrawingInterface other = {};
    paint();
    EXPECT_NE(session()->object_scratch, nullptr);
    EXPECT_EQ(session()->object_scratch->next, nullptr);
    paint();
    EXPECT_EQ(session()->object_scratch->next, nullptr) << "of one paint alone";
    drawing.group_start.fn(&drawing, 1, nullptr, nullptr, 0, 0, 0, 0, nullptr, 0, 0, 0, nullptr, nullptr, nullptr,
                           nullptr, 0, 0, 0, nullptr, nullptr, nullptr);
    EXPECT_NE(session()->object_scratch, nullptr);
    drawing.group_finish.fn(&drawing, &replay);
    EXPECT_EQ(session()->object_scratch, nullptr);
    paint();
    drawing.resource_paint.fn(&drawing, 9, 0, 0, nullptr, nullptr, nullptr, nullptr, 0, 0, 0, nullptr, nullptr, 0);
    EXPECT_EQ(session()->object_scratch, nullptr);
    paint();
    client.start_face(&other);
    EXPECT_EQ(session()->object_scratch, nullptr);
    paint();
    drawing.object_paint_and_stroke.fn(&drawing, 1, 1, 0, nullptr, nullptr, nullptr, nullptr, nullptr, 0, nullptr, 0,
                                       nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr);
    EXPECT_EQ(session()->object_scratch, nullptr);
    other.drawing_finish.fn(&other);
}

TEST(CaptureOfADocument, EndPointGoesBackToTheClient)
{
    TestSession client;
    ASSERT_TRUE(client.set_base_mode());
    ScriptedFontEngine engine;
    engine.advances = {{5, 0}, {5, 0}};
    engine.matrix = {{10, 0, 0, 10, 0, 0}};
    ASSERT_EQ(client.orv.document_start.fn(nullptr, &client.orv, &client.document, 7, engine.get(), nullptr), 1U);
    ORV_DrawingInterface drawing = {};
    ASSERT_EQ(client.start_face(&drawing), 1U);
    GSH_Shape shape = {GSH_SHAPE_GLYPHS, 0, {{1, 0, 0, 1, 2, 3}}};
    GFI_FontSpecPointer font = {};
    GFI_StringDesc desc = {};
    GFI_StringDescPointer string = {&desc, nullptr, nullptr};
    GSH_ShapePointer pointer = {};
    pointer.sp_HeaderPtr = &shape;
    pointer.sp_U.glyph.font_spec_ptr = &font;
    pointer.sp_U.glyph.string_desc = &string;
    const GOP_Operator op = {};
    GGO_Point end = {7, 7};
    EXPECT_EQ(drawing.object_paint_and_stroke.fn(&drawing, 1, 1, 0, &op, nullptr, &pointer, nullptr, nullptr, 0,
                                                 nullptr, ORV_PAINTFLAGS_FILL, &end, nullptr, nullptr, nullptr, nullptr,
                                                 nullptr, nullptr),
              1U);
    // 100 pixels at 100 to the inch.
    EXPECT_NEAR(end.gpf_X, 1, 1e-12);
    EXPECT_NEAR(end.gpf_Y, 0, 1e-12);
    EXPECT_EQ(engine.take_calls(), "start index glyph1 index glyph1 index ");
    drawing.drawing_finish.fn(&drawing);
    client.finish_document();
    client.shut_down();
    EXPECT_EQ(client.allocator.bad_frees(), 0U);
}

}  // namespace
