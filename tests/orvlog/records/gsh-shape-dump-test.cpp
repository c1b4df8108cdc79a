#include "orvlog/records/gsh-shape-dump.h"

#include "tests/support/record-log.h"

#include <gtest/gtest.h>

#include <array>

namespace
{

using orvlog::test::attribute_of;
using orvlog::test::Guarded;
using orvlog::test::Parts;
using orvlog::test::RecordLog;

GSH_Shape shape_of(uint16_t type)
{
    return {type, 0, {{1, 0, 0, 1, 0, 0}}};
}

// As many dashes as bring the record around them to a size that suits its doubles.
Parts stroke_parts(uint16_t dashes)
{
    GPA_PathStrokingParams params = {};
    params.psp_DashCount = dashes;
    Parts parts;
    parts.add_head(params, offsetof(GPA_PathStrokingParams, psp_DashLength));
    for (uint16_t i = 0; i < dashes; ++i)
        parts.add(2.5F);
    return parts;
}

std::string header_text(const GSH_Shape* shape)
{
    RecordLog log;
    dump_shape_header(log.writer(), shape);
    return log.take();
}

std::string pointer_text(const GSH_ShapePointer& pointer)
{
    RecordLog log;
    dump_GSH_ShapePointer(&log.session, &pointer);
    return log.take();
}

TEST(GshShapeDump, Head)
{
    RecordLog log;
    Guarded<GSH_Shape> shape(shape_of(GSH_SHAPE_FILL));
    dump_GSH_Shape(log.writer(), shape.get());
    EXPECT_EQ(log.take(), "<GSH_Shape sh_ShapeType=\"GSH_SHAPE_FILL\" sh_Hints=\"[0] GSH_SH_NO_HINT \" "
                          "sh_Transform=\"1 0 0 1 0 0 \"/>\n");
    const std::array<std::string, 8> types = {"GSH_SHAPE_GLYPHS",        "GSH_SHAPE_FILL",       "GSH_SHAPE_STROKE",
                                              "GSH_SHAPE_IMAGE_RECT",    "GSH_SHAPE_MULTI_RECT", "GSH_SHAPE_SCANLINE",
                                              "GSH_SHAPE_STROKE_GLYPHS", "UNKNOWN_VALUE(7)"};
    for (uint16_t type = 0; type < types.size(); ++type)
    {
        shape.edit()->sh_ShapeType = type;
        dump_GSH_Shape(log.writer(), shape.get());
        EXPECT_EQ(log.take_value("sh_ShapeType"), types[type]);
    }
    shape.edit()->sh_ShapeType = 6;
    shape.edit()->sh_Transform = {{1, 2, 3, 4, 5.5, -6}};
    dump_GSH_Shape(log.writer(), shape.get());
    EXPECT_EQ(log.take_value("sh_Transform"), "1 2 3 4 5.5 -6 ");
    shape.edit()->sh_ShapeType = 65535;
    dump_GSH_Shape(log.writer(), shape.get());
    EXPECT_EQ(log.take_value("sh_ShapeType"), "UNKNOWN_VALUE(65535)");
}

TEST(GshShapeDump, Hints)
{
    RecordLog log;
    const std::array<std::pair<uint16_t, std::string>, 9> cases = {{
        {uint16_t{0x1}, "[0x1] GSH_SH_FONT_HAS_FACE_SCOPE "},
        {uint16_t{0x2}, "[0x2] GSH_SH_FONT_HAS_DOC_SCOPE "},
        {uint16_t{0x4}, "[0x4] GSH_SH_NO_ROTATION "},
        {uint16_t{0x8}, "[0x8] GSH_SH_NO_SKEW "},
        {uint16_t{0x10}, "[0x10] GSH_SH_NO_SCALE "},
        {uint16_t{0x20}, "[0x20] GSH_SH_NO_SHIFT "},
        {uint16_t{0x40}, "[0x40] GSH_SH_REUSED_AS_STROKE "},
        {uint16_t{0x80}, "[0x80] "},
        {uint16_t{0x45}, "[0x45] GSH_SH_FONT_HAS_FACE_SCOPE GSH_SH_NO_ROTATION GSH_SH_REUSED_AS_STROKE "},
    }};
    for (const auto& [hints, expected] : cases)
    {
        GSH_Shape shape = shape_of(0);
        shape.sh_Hints = hints;
        dump_GSH_Shape(log.writer(), &shape);
        EXPECT_EQ(log.take_value("sh_Hints"), expected);
    }
}

TEST(GshShapeDump, GlyphShape)
{
    Guarded<GSH_Shape> shape(shape_of(GSH_SHAPE_GLYPHS));
    EXPECT_EQ(header_text(shape.get()), R"(<GSH_GlyphShape>
  <GSH_Shape sh_ShapeType="GSH_SHAPE_GLYPHS" sh_Hints="[0] GSH_SH_NO_HINT " sh_Transform="1 0 0 1 0 0 "/>
</GSH_GlyphShape>
)");
}

TEST(GshShapeDump, FilledPathShape)
{
    const std::array<std::string, 3> rules = {"GPA_WINDING_ODD_EVEN", "GPA_WINDING_NON_ZERO", "UNKNOWN_VALUE(2)"};
    for (uint32_t rule = 0; rule < rules.size(); ++rule)
    {
        // Four bytes that do not belong to the record fill it up to its alignment.
        Guarded<GSH_Shape> shape(Parts().add(shape_of(GSH_SHAPE_FILL)).add(rule).add(uint32_t{9}));
        EXPECT_EQ(header_text(shape.get()), "<GSH_FilledPathShape fps_WindingRule=\"" + rules[rule] + R"(">
  <GSH_Shape sh_ShapeType="GSH_SHAPE_FILL" sh_Hints="[0] GSH_SH_NO_HINT " sh_Transform="1 0 0 1 0 0 "/>
</GSH_FilledPathShape>
)");
    }
}

TEST(GshShapeDump, StrokedPathShape)
{
    Guarded<GSH_Shape> shape(Parts().add(shape_of(GSH_SHAPE_STROKE)).add(uint32_t{1}).add_parts(stroke_parts(2)));
    EXPECT_EQ(header_text(shape.get()), R"(<GSH_StrokedPathShape sps_WindingRule="GPA_WINDING_NON_ZERO">
  <GSH_Shape sh_ShapeType="GSH_SHAPE_STROKE" sh_Hints="[0] GSH_SH_NO_HINT " sh_Transform="1 0 0 1 0 0 "/>
  <GPA_PathStrokingParams psp_Flags.S="GPA_CAP_BUTT" psp_Flags.E="GPA_CAP_BUTT" psp_Flags.J="GPA_JOIN_MITER" )"
                                        R"(psp_Flags.A="GPA_ADJUST_NONE" psp_Flags.Z="FALSE" psp_DashCount="2" )"
                                        R"(psp_DashCaps="GPA_CAP_BUTT" psp_StrokeWidth="0" psp_MiterLimit="0" )"
                                        R"(psp_DashStart="0">
    <psp_DashLength>
      <BufferFloat len="2">
2.5 2.5 
      </BufferFloat>
    </psp_DashLength>
  </GPA_PathStrokingParams>
</GSH_StrokedPathShape>
)");
}

TEST(GshShapeDump, ImageRectWritesHeightAheadOfWidth)
{
    Guarded<GSH_Shape> shape(Parts().add(shape_of(GSH_SHAPE_IMAGE_RECT)).add(uint32_t{640}).add(UINT32_MAX));
    EXPECT_EQ(header_text(shape.get()), R"(<GSH_ImageRectShape irs_ImageHeight="4294967295" irs_ImageWidth="640">
  <GSH_Shape sh_ShapeType="GSH_SHAPE_IMAGE_RECT" sh_Hints="[0] GSH_SH_NO_HINT " sh_Transform="1 0 0 1 0 0 "/>
</GSH_ImageRectShape>
)");
}

TEST(GshShapeDump, MultiRect)
{
    // The rectangles stand at an offset of four: the record is as long as 60 and 16 for each.
    Parts parts;
    parts.add(shape_of(GSH_SHAPE_MULTI_RECT)).add(uint32_t{2}).add(GGO_BoxInt{1, 2, 3, 4});
    Guarded<GSH_Shape> shape(parts.add(GGO_BoxInt{-5, -6, -7, -8}).add(uint32_t{0}));
    EXPECT_EQ(header_text(shape.get()), R"(<GSH_MultiRectShape mrs_RectCount="2">
  <GSH_Shape sh_ShapeType="GSH_SHAPE_MULTI_RECT" sh_Hints="[0] GSH_SH_NO_HINT " sh_Transform="1 0 0 1 0 0 "/>
  <GGO_BoxInt gbi_MinX="1" gbi_MinY="2" gbi_MaxX="3" gbi_MaxY="4"/>
  <GGO_BoxInt gbi_MinX="-5" gbi_MinY="-6" gbi_MaxX="-7" gbi_MaxY="-8"/>
</GSH_MultiRectShape>
)");
}

TEST(GshShapeDump, Scanline)
{
    GSH_ScanlineShape head = {};
    head.ss_Shape = shape_of(GSH_SHAPE_SCANLINE);
    head.ss_BoundingBox = {-1, 2, -3, 4};
    head.ss_StartY = -5;
    head.ss_Height = 2;
    Parts parts;
    parts.add_head(head, offsetof(GSH_ScanlineShape, ss_XLimits));
    Guarded<GSH_Shape> shape(parts.add(GSH_XLimits{-32768, 32767}).add(GSH_XLimits{0, 1}));
    EXPECT_EQ(header_text(shape.get()),
              R"(<GSH_ScanlineShape ss_BoundingBox="-1 2 -3 4 " ss_StartY="-5" ss_Height="2">
  <GSH_Shape sh_ShapeType="GSH_SHAPE_SCANLINE" sh_Hints="[0] GSH_SH_NO_HINT " sh_Transform="1 0 0 1 0 0 "/>
  <GSH_XLimits xl_StartX="-32768" xl_StopX="32767">
  </GSH_XLimits>
  <GSH_XLimits xl_StartX="0" xl_StopX="1">
  </GSH_XLimits>
</GSH_ScanlineShape>
)");
}

TEST(GshShapeDump, EmptyArraysLeaveTheHeadAlone)
{
    Guarded<GSH_Shape> rects(Parts().add(shape_of(GSH_SHAPE_MULTI_RECT)).add(uint32_t{0}).add(uint32_t{0}));
    EXPECT_EQ(header_text(rects.get()), R"(<GSH_MultiRectShape mrs_RectCount="0">
  <GSH_Shape sh_ShapeType="GSH_SHAPE_MULTI_RECT" sh_Hints="[0] GSH_SH_NO_HINT " sh_Transform="1 0 0 1 0 0 "/>
</GSH_MultiRectShape>
)");
    Guarded<GSH_Shape> rows(
        Parts().add(shape_of(GSH_SHAPE_SCANLINE)).add(GGO_BoxInt{0, 0, 0, 0}).add(int32_t{7}).add(uint32_t{0}));
    EXPECT_EQ(header_text(rows.get()), R"(<GSH_ScanlineShape ss_BoundingBox="0 0 0 0 " ss_StartY="7" ss_Height="0">
  <GSH_Shape sh_ShapeType="GSH_SHAPE_SCANLINE" sh_Hints="[0] GSH_SH_NO_HINT " sh_Transform="1 0 0 1 0 0 "/>
</GSH_ScanlineShape>
)");
}

TEST(GshShapeDump, StrokedGlyphShape)
{
    Guarded<GSH_Shape> shape(
        Parts().add(shape_of(GSH_SHAPE_STROKE_GLYPHS)).add(GGO_Matrix{{2, 0, 0, 2, 5, 6}}).add_parts(stroke_parts(1)));
    EXPECT_EQ(header_text(shape.get()), R"(<GSH_StrokedGlyphShape sgs_StrokingTransform="2 0 0 2 5 6 ">
  <GSH_Shape sh_ShapeType="GSH_SHAPE_STROKE_GLYPHS" sh_Hints="[0] GSH_SH_NO_HINT " sh_Transform="1 0 0 1 0 0 "/>
  <GPA_PathStrokingParams psp_Flags.S="GPA_CAP_BUTT" psp_Flags.E="GPA_CAP_BUTT" psp_Flags.J="GPA_JOIN_MITER" )"
                                        R"(psp_Flags.A="GPA_ADJUST_NONE" psp_Flags.Z="FALSE" psp_DashCount="1" )"
                                        R"(psp_DashCaps="GPA_CAP_BUTT" psp_StrokeWidth="0" psp_MiterLimit="0" )"
                                        R"(psp_DashStart="0">
    <psp_DashLength>
      <BufferFloat len="1">
2.5 
      </BufferFloat>
    </psp_DashLength>
  </GPA_PathStrokingParams>
</GSH_StrokedGlyphShape>
)");
}

TEST(GshShapeDump, FillPointer)
{
    GPA_Path path = {};
    GPA_PathPointer path_pointer = {};
    path_pointer.lpp_Path = &path;
    Guarded<GSH_Shape> shape(Parts().add(shape_of(GSH_SHAPE_FILL)).add(uint32_t{0}).add(uint32_t{0}));
    GSH_ShapePointer pointer = {};
    pointer.sp_HeaderPtr = shape.get();
    pointer.sp_U.filled_path = &path_pointer;
    EXPECT_EQ(pointer_text(pointer), R"(<GSH_ShapePointer>
  <GSH_ShapePointer.sp_HeaderPtr>
    <GSH_FilledPathShape fps_WindingRule="GPA_WINDING_ODD_EVEN">
      <GSH_Shape sh_ShapeType="GSH_SHAPE_FILL" sh_Hints="[0] GSH_SH_NO_HINT " sh_Transform="1 0 0 1 0 0 "/>
    </GSH_FilledPathShape>
  </GSH_ShapePointer.sp_HeaderPtr>
  <GSH_ShapePointer.sp_U.filled_path>
    <GPA_PathPointer lpp_EnablePixelPlacement="FALSE" lpp_PathOwned="FALSE">
      <GPA_Path pa_NumEdges="0" pa_PathHints="[0] GPA_HINT_NONE " pa_EnclosingBox="0 0 0 0 ">
        <GPA_Path.pa_EdgeStart>
        </GPA_Path.pa_EdgeStart>
      </GPA_Path>
      <GPA_PathPointer.lpp_EdgePointer>
      </GPA_PathPointer.lpp_EdgePointer>
    </GPA_PathPointer>
  </GSH_ShapePointer.sp_U.filled_path>
</GSH_ShapePointer>
)");
    pointer.sp_U.filled_path = nullptr;
    EXPECT_EQ(pointer_text(pointer).find("sp_U"), std::string::npos);
}

TEST(GshShapeDump, StrokePointer)
{
    GPA_Path path = {};
    GPA_PathPointer path_pointer = {};
    path_pointer.lpp_Path = &path;
    GSH_StrokedPathShape shape = {};
    shape.sps_Shape = shape_of(GSH_SHAPE_STROKE);
    GSH_ShapePointer pointer = {};
    pointer.sp_HeaderPtr = &shape.sps_Shape;
    pointer.sp_U.stroked_path = &path_pointer;
    const std::string text = pointer_text(pointer);
    EXPECT_NE(text.find("  </GSH_ShapePointer.sp_HeaderPtr>\n  <GSH_ShapePointer.sp_U.stroked_path>\n    "
                        "<GPA_PathPointer "),
              std::string::npos);
    EXPECT_NE(text.find("    </GPA_PathPointer>\n  </GSH_ShapePointer.sp_U.stroked_path>\n</GSH_ShapePointer>\n"),
              std::string::npos);
}

TEST(GshShapeDump, ImageRectPointerHasNoUnionMember)
{
    Guarded<GSH_Shape> shape(Parts().add(shape_of(GSH_SHAPE_IMAGE_RECT)).add(uint32_t{1}).add(uint32_t{2}));
    Guarded<GSH_ShapePointer> pointer(Parts().add(shape.get()).add(uint64_t{0xDEAD}).add(uint64_t{0xDEAD}));
    EXPECT_EQ(pointer_text(*pointer.get()), R"(<GSH_ShapePointer>
  <GSH_ShapePointer.sp_HeaderPtr>
    <GSH_ImageRectShape irs_ImageHeight="2" irs_ImageWidth="1">
      <GSH_Shape sh_ShapeType="GSH_SHAPE_IMAGE_RECT" sh_Hints="[0] GSH_SH_NO_HINT " sh_Transform="1 0 0 1 0 0 "/>
    </GSH_ImageRectShape>
  </GSH_ShapePointer.sp_HeaderPtr>
</GSH_ShapePointer>
)");
}

TEST(GshShapeDump, UnknownKindLeavesTheMemberEmpty)
{
    for (const uint16_t type : std::array<uint16_t, 3>{7, 255, 65535})
    {
        Guarded<GSH_Shape> shape(shape_of(type));
        Guarded<GSH_ShapePointer> pointer(Parts().add(shape.get()).add(uint64_t{0xDEAD}).add(uint64_t{0xDEAD}));
        EXPECT_EQ(pointer_text(*pointer.get()), R"(<GSH_ShapePointer>
  <GSH_ShapePointer.sp_HeaderPtr>
  </GSH_ShapePointer.sp_HeaderPtr>
</GSH_ShapePointer>
)");
    }
}

TEST(GshShapeDump, MissingHeaderIsWarnedOf)
{
    EXPECT_EQ(pointer_text({}), R"(<GSH_ShapePointer>
  <GSH_ShapePointer.sp_HeaderPtr>
  </GSH_ShapePointer.sp_HeaderPtr>

<!--
ORVLOG: WARNING: GSH_ShapePointer without a shape.
-->
</GSH_ShapePointer>
)");
}

class Glyphs : public testing::Test
{
protected:
    // The two numbers that a text shape of this font and string shows.
    std::string ids(int font, int string)
    {
        GSH_ShapePointer pointer = {};
        pointer.sp_HeaderPtr = &shape;
        pointer.sp_U.glyph.font_spec_ptr = &fonts[font];
        pointer.sp_U.glyph.string_desc = &strings[string];
        dump_GSH_ShapePointer(&log.session, &pointer);
        const std::string text = log.take();
        return attribute_of(text, "orvlog_font_spec_id") + " " + attribute_of(text, "orvlog_string_desc_id");
    }

    RecordLog log;
    GSH_Shape shape = shape_of(GSH_SHAPE_GLYPHS);
    GFI_StringDesc desc = {};
    GFI_FontSpecPointer fonts[3] = {};
    GFI_StringDescPointer strings[3] = {
        {&desc, nullptr, nullptr}, {&desc, nullptr, nullptr}, {&desc, nullptr, nullptr}};
};

TEST_F(Glyphs, Member)
{
    log.session.next_font_spec_id = 5;
    log.session.next_string_desc_id = 9;
    const GFI_FontSpec spec = {12, 0, 2};
    fonts[0].fsp_FontSpec = &spec;
    GSH_ShapePointer pointer = {};
    pointer.sp_HeaderPtr = &shape;
    pointer.sp_U.glyph.font_spec_ptr = &fonts[0];
    pointer.sp_U.glyph.string_desc = &strings[0];
    dump_GSH_ShapePointer(&log.session, &pointer);
    EXPECT_EQ(log.take(), R"(<GSH_ShapePointer>
  <GSH_ShapePointer.sp_HeaderPtr>
    <GSH_GlyphShape>
      <GSH_Shape sh_ShapeType="GSH_SHAPE_GLYPHS" sh_Hints="[0] GSH_SH_NO_HINT " sh_Transform="1 0 0 1 0 0 "/>
    </GSH_GlyphShape>
  </GSH_ShapePointer.sp_HeaderPtr>
  <GSH_ShapePointer.sp_U.glyph orvlog_font_spec_id="5" orvlog_string_desc_id="9">
    <GFI_FontSpecPointer>
      <GFI_FontSpec ufs_FontSize="12" ufs_Direction="GFI_TD_LEFT_TO_RIGHT" ufs_FontVolatility="GFI_FV_STATIC">
      </GFI_FontSpec>
    </GFI_FontSpecPointer>
    <GFI_StringDescPointer gsp_StringDesc.gsd_TextLen="0" gsp_StringDesc.gsd_GlyphMappingLen="0" )"
                          R"(gsp_StringDesc.gsd_StyleSimulation="0">
    </GFI_StringDescPointer>
  </GSH_ShapePointer.sp_U.glyph>
</GSH_ShapePointer>
)");
    EXPECT_EQ(log.session.next_font_spec_id, 6U);
    EXPECT_EQ(log.session.next_string_desc_id, 10U);
}

TEST_F(Glyphs, StrokedGlyphsHaveTheMemberToo)
{
    GSH_StrokedGlyphShape stroked = {};
    stroked.sgs_Shape = shape_of(GSH_SHAPE_STROKE_GLYPHS);
    GSH_ShapePointer pointer = {};
    pointer.sp_HeaderPtr = &stroked.sgs_Shape;
    dump_GSH_ShapePointer(&log.session, &pointer);
    const std::string text = log.take();
    EXPECT_NE(text.find("  <GSH_ShapePointer.sp_U.glyph orvlog_font_spec_id=\"0\" orvlog_string_desc_id=\"0\">\n"
                        "  </GSH_ShapePointer.sp_U.glyph>\n</GSH_ShapePointer>\n"),
              std::string::npos);
}

TEST_F(Glyphs, SamePointersInOnePaintHaveTheSameNumbers)
{
    EXPECT_EQ(ids(0, 0), "0 0");
    EXPECT_EQ(ids(0, 0), "0 0");
    EXPECT_EQ(log.allocator.outstanding(), 1U);
    EXPECT_EQ(log.session.next_font_spec_id, 1U);
    orvlog_session_clear_scratch(&log.session);
    EXPECT_EQ(ids(0, 0), "1 1");
    EXPECT_EQ(log.allocator.outstanding(), 1U);
}

TEST_F(Glyphs, KnownFontWithANewStringKeepsItsNumber)
{
    EXPECT_EQ(ids(0, 0), "0 0");
    EXPECT_EQ(ids(0, 1), "0 1");
    EXPECT_EQ(log.allocator.outstanding(), 2U);
    EXPECT_EQ(ids(1, 1), "1 1");
    EXPECT_EQ(log.allocator.outstanding(), 3U);
    EXPECT_EQ(log.session.next_font_spec_id, 2U);
    EXPECT_EQ(log.session.next_string_desc_id, 2U);
}

TEST_F(Glyphs, FontAndStringSeenInDifferentNodesAddNone)
{
    EXPECT_EQ(ids(0, 0), "0 0");
    EXPECT_EQ(ids(1, 1), "1 1");
    EXPECT_EQ(log.allocator.outstanding(), 2U);
    EXPECT_EQ(ids(0, 1), "0 1");
    EXPECT_EQ(ids(1, 0), "1 0");
    EXPECT_EQ(log.allocator.outstanding(), 2U);
    EXPECT_EQ(log.session.next_font_spec_id, 2U);
    EXPECT_EQ(log.session.next_string_desc_id, 2U);
    // No node holds the crossed pair.
    for (const font_id_pair* pair = log.session.object_scratch; pair != nullptr; pair = pair->next)
        EXPECT_FALSE(pair->font_spec == &fonts[0] && pair->string_desc == &strings[1]);
}

TEST_F(Glyphs, WithoutMemoryNoNumbersAreWritten)
{
    log.allocator.refuse(1);
    EXPECT_EQ(ids(0, 0), "(absent) (absent)");
    EXPECT_EQ(log.session.next_font_spec_id, 0U);
    EXPECT_EQ(log.session.next_string_desc_id, 0U);
    EXPECT_EQ(ids(0, 0), "0 0");
}

// The session for dumps without a log has no allocator.
TEST_F(Glyphs, WithoutAnAllocatorNoNumbersAreWritten)
{
    log.session.side_allocator = nullptr;
    EXPECT_EQ(ids(0, 0), "(absent) (absent)");
    EXPECT_EQ(log.session.object_scratch, nullptr);
    EXPECT_EQ(log.session.next_font_spec_id, 0U);
    log.session.side_allocator = log.allocator.get();
    EXPECT_EQ(ids(0, 0), "0 0");
}

class Lists : public testing::Test
{
protected:
    Lists()
    {
        for (uint32_t i = 0; i < lists.size(); ++i)
        {
            lists[i].sl_Shape.sp_HeaderPtr = &shape;
            lists[i].sl_UniqueId = i;
        }
    }

    // The numbers of the lists in the text, and their indents.
    static std::string outline(const std::string& text)
    {
        std::string result;
        for (size_t at = text.find("<GSH_ShapeList "); at != std::string::npos;
             at = text.find("<GSH_ShapeList ", at + 1))
        {
            const size_t line = at == 0 ? 0 : text.rfind('\n', at) + 1;
            result += std::to_string(at - line) + ":" + attribute_of(text.substr(at), "sl_UniqueId") + " ";
        }
        return result;
    }
    static size_t count(const std::string& text, const std::string& what)
    {
        size_t result = 0;
        for (size_t at = text.find(what); at != std::string::npos; at = text.find(what, at + 1))
            ++result;
        return result;
    }

    RecordLog log;
    GSH_Shape shape = shape_of(99);
    std::array<GSH_ShapeList, 6> lists = {};
};

TEST_F(Lists, List)
{
    Guarded<GSH_ShapeList> list(lists[0]);
    dump_GSH_ShapeList(&log.session, list.get());
    EXPECT_EQ(log.take(), R"(<GSH_ShapeList sl_Hints="[0] GSH_SLH_NONE " sl_ClipIn="FALSE" sl_UniqueId="0">
  <GSH_ShapeList.sl_Shape>
    <GSH_ShapePointer>
      <GSH_ShapePointer.sp_HeaderPtr>
      </GSH_ShapePointer.sp_HeaderPtr>
    </GSH_ShapePointer>
  </GSH_ShapeList.sl_Shape>
</GSH_ShapeList>
)");
}

TEST_F(Lists, CollectionHasAFrame)
{
    lists[0].sl_Collection = &lists[1];
    lists[0].sl_Hints = 3;
    lists[0].sl_ClipIn = 4;
    lists[0].sl_UniqueId = UINT32_MAX;
    dump_GSH_ShapeList(&log.session, &lists[0]);
    EXPECT_EQ(log.take(),
              R"(<GSH_ShapeList sl_Hints="[0x3] GSH_SLH_IGNORE_REST_OF_LIST " sl_ClipIn="TRUE" sl_UniqueId="4294967295">
  <GSH_ShapeList.sl_Shape>
    <GSH_ShapePointer>
      <GSH_ShapePointer.sp_HeaderPtr>
      </GSH_ShapePointer.sp_HeaderPtr>
    </GSH_ShapePointer>
  </GSH_ShapeList.sl_Shape>
  <GSH_ShapeListCollection>
    <GSH_ShapeList sl_Hints="[0] GSH_SLH_NONE " sl_ClipIn="FALSE" sl_UniqueId="1">
      <GSH_ShapeList.sl_Shape>
        <GSH_ShapePointer>
          <GSH_ShapePointer.sp_HeaderPtr>
          </GSH_ShapePointer.sp_HeaderPtr>
        </GSH_ShapePointer>
      </GSH_ShapeList.sl_Shape>
    </GSH_ShapeList>
  </GSH_ShapeListCollection>
</GSH_ShapeList>
)");
}

TEST_F(Lists, ChainStandsAsSiblingsInItsFrame)
{
    lists[0].sl_Next = &lists[1];
    lists[1].sl_Next = &lists[2];
    dump_shape_list_member(&log.session, "ORV_object_paint", "clip", &lists[0]);
    const std::string text = log.take();
    EXPECT_EQ(outline(text), "2:0 2:1 2:2 ");
    EXPECT_TRUE(text.starts_with("<ORV_object_paint.clip>\n  <GSH_ShapeList "));
    EXPECT_TRUE(text.ends_with("  </GSH_ShapeList>\n</ORV_object_paint.clip>\n"));
}

TEST_F(Lists, ChainOfACollectionShowsItsHeadAlone)
{
    lists[0].sl_Collection = &lists[1];
    lists[1].sl_Next = &lists[2];
    lists[0].sl_Next = &lists[3];
    dump_shape_list_member(&log.session, "ORV_group_start", "group_clip", &lists[0]);
    EXPECT_EQ(outline(log.take()), "2:0 6:1 2:3 ");
}

TEST_F(Lists, NextOfASingleListIsNotFollowed)
{
    lists[0].sl_Next = &lists[1];
    dump_GSH_ShapeList(&log.session, &lists[0]);
    EXPECT_EQ(outline(log.take()), "0:0 ");
}

// Chains of each form of loop: `length` lists, of which the last leads back to number `back`.
TEST_F(Lists, ChainsThatLeadBackEndThere)
{
    for (uint32_t length = 1; length <= lists.size(); ++length)
    {
        for (uint32_t back = 0; back < length; ++back)
        {
            std::string expected;
            for (uint32_t i = 0; i < length; ++i)
            {
                lists[i].sl_Next = &lists[i + 1 < length ? i + 1 : back];
                expected += "2:" + std::to_string(i) + " ";
            }
            dump_shape_list_member(&log.session, "ORV_object_paint", "clip", &lists[0]);
            const std::string text = log.take();
            EXPECT_EQ(outline(text), expected);
            EXPECT_EQ(count(text, "ORVLOG: WARNING: GSH_ShapeList leads back to itself.\n"), 1U);
            EXPECT_TRUE(text.ends_with("</ORV_object_paint.clip>\n"));
        }
    }
}

TEST_F(Lists, CollectionsThatLeadBackEndThere)
{
    for (uint32_t length = 1; length <= lists.size(); ++length)
    {
        for (uint32_t back = 0; back < length; ++back)
        {
            std::string expected;
            for (uint32_t i = 0; i < length; ++i)
            {
                lists[i].sl_Collection = &lists[i + 1 < length ? i + 1 : back];
                expected += std::to_string(4 * i) + ":" + std::to_string(i) + " ";
            }
            dump_GSH_ShapeList(&log.session, &lists[0]);
            const std::string text = log.take();
            EXPECT_EQ(outline(text), expected);
            EXPECT_EQ(count(text, "ORVLOG: WARNING: GSH_ShapeListCollection leads back to itself.\n"), 1U);
            EXPECT_EQ(count(text, "</GSH_ShapeList>\n"), length);
            EXPECT_EQ(count(text, "</GSH_ShapeListCollection>\n"), length - 1);
            EXPECT_TRUE(text.ends_with("</GSH_ShapeList>\n"));
        }
    }
}

TEST_F(Lists, CollectionsNestAThousandDeepAtMost)
{
    std::vector<GSH_ShapeList> deep(1000000, lists[0]);
    for (size_t i = 0; i + 1 < deep.size(); ++i)
        deep[i].sl_Collection = &deep[i + 1];
    dump_GSH_ShapeList(&log.session, deep.data());
    const std::string text = log.take();
    EXPECT_EQ(count(text, "<GSH_ShapeList "), 1000U);
    EXPECT_EQ(count(text, "</GSH_ShapeList>\n"), 1000U);
    EXPECT_EQ(count(text, "ORVLOG: WARNING: GSH_ShapeListCollection nested too deep.\n"), 1U);
    deep[999].sl_Collection = nullptr;
    dump_GSH_ShapeList(&log.session, deep.data());
    const std::string whole = log.take();
    EXPECT_EQ(count(whole, "<GSH_ShapeList "), 1000U);
    EXPECT_EQ(count(whole, "WARNING"), 0U);
}

TEST_F(Lists, NullWritesNothing)
{
    dump_GSH_Shape(log.writer(), nullptr);
    dump_shape_header(log.writer(), nullptr);
    dump_GSH_ShapePointer(&log.session, nullptr);
    dump_GSH_ShapeList(&log.session, nullptr);
    dump_shape_member(&log.session, "a", "b", nullptr);
    dump_shape_list_member(&log.session, "a", "b", nullptr);
    EXPECT_EQ(log.take(), "");
}

TEST_F(Lists, ShapeFrame)
{
    dump_shape_member(&log.session, "ORV_object_paint", "paint_path", &lists[0].sl_Shape);
    EXPECT_EQ(log.take(), R"(<ORV_object_paint.paint_path>
  <GSH_ShapePointer>
    <GSH_ShapePointer.sp_HeaderPtr>
    </GSH_ShapePointer.sp_HeaderPtr>
  </GSH_ShapePointer>
</ORV_object_paint.paint_path>
)");
}

}  // namespace
