#include "reader/records/records.h"

#include <gtest/gtest.h>

#include <cstddef>
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

// A glyph of this form with these attributes and two bytes of payload.
std::string glyph_of(const std::string& form, const std::string& attributes)
{
    return "  <GFI_GlyphDescPointer>\n    <GFI_GlyphDescPointer.gdp_GlyphDesc>\n      <" + form + " " + attributes +
           ">\n        <GFI_GlyphDesc gd_Type=\"GFI_GDT_PATH\" gd_Offset=\"3 4 \"/>\n"
           "        <BufferUInt8 len=\"2\">\n0a 0b \n        </BufferUInt8>\n      </" +
           form + ">\n    </GFI_GlyphDescPointer.gdp_GlyphDesc>\n  </GFI_GlyphDescPointer>\n";
}

TEST(Records, EachFormOfAGlyphIsOfItsType)
{
    struct
    {
        const char* form;
        const char* attributes;
        uint32_t type;
    } const forms[] = {{"GFI_GlyphDescFBE", "gdf_Width=\"8\" gdf_Height=\"1\"", GFI_GDT_FBE},
                       {"GFI_GlyphDescBitmap", "gdb_Width=\"8\" gdb_Height=\"2\" gdb_Rowstep=\"1\"", GFI_GDT_BITMAP},
                       {"GFI_GlyphDescPath", "gdp_WindingRule=\"GPA_WINDING_ODD_EVEN\"", GFI_GDT_PATH},
                       {"GFI_GlyphDescTrueType", "gdt_TrueTypeSize=\"2\"", GFI_GDT_TRUETYPE},
                       {"GFI_GlyphDescRLE", "gdr_Width=\"8\" gdr_Height=\"1\" gdr_RleSize=\"2\"", GFI_GDT_RLE}};
    for (const auto& form : forms)
    {
        OneElement one(glyph_of(form.form, form.attributes));
        const GFI_GlyphDescPointer* glyph = one.records.glyph(one.element);
        ASSERT_NE(glyph, nullptr) << form.form;
        ASSERT_NE(glyph->gdp_GlyphDesc, nullptr) << form.form;
        // The form is the element's, whatever its head says.
        EXPECT_EQ(glyph->gdp_GlyphDesc->gd_Type, form.type) << form.form;
        EXPECT_EQ(glyph->gdp_GlyphDesc->gd_Offset.gvf_X, 3) << form.form;
        EXPECT_EQ(one.records.unknown(), 0U) << form.form;
    }
}

TEST(Records, AGlyphOfNoKnownFormIsCounted)
{
    OneElement one(glyph_of("GFI_GlyphDescOther", "a=\"1\""));
    const GFI_GlyphDescPointer* glyph = one.records.glyph(one.element);
    ASSERT_NE(glyph, nullptr);
    EXPECT_EQ(glyph->gdp_GlyphDesc, nullptr);
    EXPECT_EQ(one.records.unknown(), 1U);
}

// A path of one edge, whose member `segments` holds `segment`.
std::string path_of(const std::string& edge, const std::string& attributes, const std::string& segments,
                    const std::string& segment, const std::string& head = "<GPA_Edge ed_EdgeFlag=\"[0x1] X \"/>\n")
{
    const std::string member = edge + "." + segments;
    return "<GPA_PathPointer>\n<GPA_Path pa_PathHints=\"[0] \">\n<GPA_Path.pa_EdgeStart>\n"
           "<GGO_Point gpf_X=\"1\" gpf_Y=\"2\"/>\n</GPA_Path.pa_EdgeStart>\n</GPA_Path>\n"
           "<GPA_PathPointer.lpp_EdgePointer>\n<GPA_EdgePointer>\n<GPA_EdgePointer.ep_Pointer>\n<" +
           edge + attributes + ">\n" + head + "<" + member + ">\n" + segment + segment + "</" + member + ">\n</" +
           edge +
           ">\n</GPA_EdgePointer.ep_Pointer>\n</GPA_EdgePointer>\n</GPA_PathPointer.lpp_EdgePointer>\n"
           "</GPA_PathPointer>\n";
}

const GPA_Edge* edge_in(OneElement& one)
{
    const GPA_PathPointer* path = one.records.path(one.element);
    return path != nullptr && path->lpp_Path->pa_NumEdges == 1 ? path->lpp_EdgePointer[0].ep_Pointer : nullptr;
}

// The segment of this place, which lies at `offset` and those behind it.
template <typename Segment> Segment segment_of(const GPA_Edge* edge, size_t offset, size_t place)
{
    Segment segment;
    std::memcpy(&segment, reinterpret_cast<const std::byte*>(edge) + offset + place * sizeof segment, sizeof segment);
    return segment;
}

TEST(Records, EachKindOfEdgeHasItsSegments)
{
    {
        OneElement one(path_of("GPA_StraightEdge", "", "se_Segment", "<GGO_Vector gvf_X=\"5\" gvf_Y=\"6\"/>\n"));
        const GPA_Edge* edge = edge_in(one);
        ASSERT_NE(edge, nullptr);
        EXPECT_EQ(edge->ed_EdgeType, GPA_EDGE_STRAIGHT);
        EXPECT_EQ(edge->ed_EdgeFlag, 1);
        EXPECT_EQ(edge->ed_SegmentCount, 2);
        EXPECT_EQ(segment_of<GGO_Vector>(edge, offsetof(GPA_StraightEdge, se_Segment), 1).gvf_Y, 6);
    }
    {
        OneElement one(path_of("GPA_BezierEdge", "", "be_BezierSegment",
                               "<GPA_BezierSegment bs_StartTangent=\"1 2 \" bs_EndTangent=\"3 4 \" "
                               "bs_EndPoint=\"5 6 \"/>\n"));
        const GPA_Edge* edge = edge_in(one);
        ASSERT_NE(edge, nullptr);
        EXPECT_EQ(edge->ed_EdgeType, GPA_EDGE_BEZIER);
        const auto segment = segment_of<GPA_BezierSegment>(edge, offsetof(GPA_BezierEdge, be_BezierSegment), 1);
        EXPECT_EQ(segment.bs_EndTangent.gvf_X, 3);
        EXPECT_EQ(segment.bs_EndPoint.gvf_Y, 6);
    }
    {
        OneElement one(path_of("GPA_QuadBezierEdge", "", "qb_QuadBezierSegment",
                               "<GPA_QuadBezierSegment qs_ControlPoint=\"1 2 \" qs_EndPoint=\"3 4 \"/>\n"));
        const GPA_Edge* edge = edge_in(one);
        ASSERT_NE(edge, nullptr);
        EXPECT_EQ(edge->ed_EdgeType, GPA_EDGE_QUAD_BEZIER);
        const auto segment =
            segment_of<GPA_QuadBezierSegment>(edge, offsetof(GPA_QuadBezierEdge, qb_QuadBezierSegment), 1);
        EXPECT_EQ(segment.qs_ControlPoint.gvf_Y, 2);
        EXPECT_EQ(segment.qs_EndPoint.gvf_X, 3);
    }
    {
        OneElement one(path_of("GPA_StaircaseEdge", " sc_YPositive=\"TRUE\"", "sc_Field",
                               "<GPA_StaircaseSegment ss_YOffset=\"200\" ss_XOffset=\"-7\"/>\n"));
        const GPA_Edge* edge = edge_in(one);
        ASSERT_NE(edge, nullptr);
        EXPECT_EQ(edge->ed_EdgeType, GPA_EDGE_STAIRCASE);
        EXPECT_EQ(reinterpret_cast<const GPA_StaircaseEdge*>(edge)->sc_YPositive, 1U);
        const auto segment = segment_of<GPA_StaircaseSegment>(edge, offsetof(GPA_StaircaseEdge, sc_Field), 1);
        EXPECT_EQ(segment.ss_YOffset, 200);
        EXPECT_EQ(segment.ss_XOffset, -7);
    }
    {
        OneElement one(path_of("GPA_EllipticalEdge", "", "ee_EllipticalSegment",
                               "<GPA_EllipticalSegment es_XRadius=\"1\" es_YRadius=\"2\" es_AngleToXAxis=\"3\" "
                               "es_EndPoint=\"4 5 \"/>\n"));
        const GPA_Edge* edge = edge_in(one);
        ASSERT_NE(edge, nullptr);
        EXPECT_EQ(edge->ed_EdgeType, GPA_EDGE_ELLIPTICAL);
        const auto segment =
            segment_of<GPA_EllipticalSegment>(edge, offsetof(GPA_EllipticalEdge, ee_EllipticalSegment), 1);
        EXPECT_EQ(segment.es_AngleToXAxis, 3);
        EXPECT_EQ(segment.es_EndPoint.gvf_Y, 5);
    }
}

TEST(Records, AnEdgeOfNoKnownKindOrWithoutHeadIsCounted)
{
    OneElement other(path_of("GPA_OtherEdge", "", "se_Segment", "<GGO_Vector gvf_X=\"5\" gvf_Y=\"6\"/>\n"));
    EXPECT_EQ(edge_in(other), nullptr);
    EXPECT_EQ(other.records.unknown(), 1U);
    OneElement headless(path_of("GPA_StraightEdge", "", "se_Segment", "<GGO_Vector gvf_X=\"5\" gvf_Y=\"6\"/>\n", ""));
    EXPECT_EQ(edge_in(headless), nullptr);
    EXPECT_EQ(headless.records.unknown(), 1U);
}

TEST(Records, AShapeWhoseHeaderTellsAnotherKindIsCounted)
{
    const auto shape = [](const std::string& type)
    {
        return "<GSH_ShapePointer>\n<GSH_ShapePointer.sp_HeaderPtr>\n<GSH_ImageRectShape irs_ImageWidth=\"7\" "
               "irs_ImageHeight=\"8\">\n<GSH_Shape sh_ShapeType=\"" +
               type +
               "\" sh_Hints=\"[0] \" sh_Transform=\"1 0 0 1 0 0 \"/>\n</GSH_ImageRectShape>\n"
               "</GSH_ShapePointer.sp_HeaderPtr>\n</GSH_ShapePointer>\n";
    };
    OneElement right(shape("GSH_SHAPE_IMAGE_RECT"));
    const GSH_ShapePointer* made = right.records.shape(right.element);
    ASSERT_NE(made, nullptr);
    EXPECT_EQ(reinterpret_cast<const GSH_ImageRectShape*>(made->sp_HeaderPtr)->irs_ImageHeight, 8U);
    EXPECT_EQ(right.records.unknown(), 0U);
    OneElement wrong(shape("GSH_SHAPE_FILL"));
    EXPECT_EQ(wrong.records.shape(wrong.element), nullptr);
    EXPECT_EQ(wrong.records.unknown(), 1U);
}

}  // namespace
