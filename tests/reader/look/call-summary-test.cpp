// Where calls paint, and with what.

#include "reader/look/call-summary.h"

#include <gtest/gtest.h>

#include <sstream>
#include <string>
#include <vector>

namespace
{

using namespace orvlog::reader;

std::vector<CallSummary> summaries_of(const std::string& calls)
{
    std::istringstream source("<ORV>\n" + calls + "</ORV>\n");
    ElementReader elements(source);
    elements.split_nested = true;
    CallSummaries summaries;
    std::vector<CallSummary> all;
    while (const Element* element = elements.next())
        all.push_back(summaries.next(*element));
    return all;
}

const std::string kFace = "  <ORV_face_start drawing_context=\"0\">\n"
                          "    <ORV_FaceProperties fp_FaceInchToPixels=\"100 0 0 100 0 0 \" "
                          "fp_WidthInPixels=\"800\" fp_HeightInPixels=\"600\">\n"
                          "    </ORV_FaceProperties>\n"
                          "  </ORV_face_start>\n";

std::string paint(const std::string& members)
{
    return "  <ORV_object_paint id=\"0\" drawing_context=\"0\">\n" + members + "  </ORV_object_paint>\n";
}

std::string path(const std::string& head, const std::string& start, const std::string& edge)
{
    return "<ORV_object_paint.paint_path>\n<GSH_ShapePointer>\n<GSH_ShapePointer.sp_HeaderPtr>\n" + head +
           "</GSH_ShapePointer.sp_HeaderPtr>\n<GSH_ShapePointer.sp_U.filled_path>\n<GPA_PathPointer>\n<GPA_Path>\n"
           "<GPA_Path.pa_EdgeStart>\n" +
           start +
           "</GPA_Path.pa_EdgeStart>\n</GPA_Path>\n<GPA_PathPointer.lpp_EdgePointer>\n<GPA_EdgePointer>\n"
           "<GPA_EdgePointer.ep_Pointer>\n" +
           edge +
           "</GPA_EdgePointer.ep_Pointer>\n</GPA_EdgePointer>\n</GPA_PathPointer.lpp_EdgePointer>\n</GPA_PathPointer>\n"
           "</GSH_ShapePointer.sp_U.filled_path>\n</GSH_ShapePointer>\n</ORV_object_paint.paint_path>\n";
}

const std::string kFill = "<GSH_FilledPathShape>\n<GSH_Shape sh_Transform=\"1 0 0 1 1 2 \"/>\n</GSH_FilledPathShape>\n";

void expect_box(const CallSummary& summary, double min_x, double min_y, double max_x, double max_y)
{
    ASSERT_TRUE(summary.box.has_value());
    EXPECT_NEAR(summary.box->gbf_MinX, min_x, 1e-9);
    EXPECT_NEAR(summary.box->gbf_MinY, min_y, 1e-9);
    EXPECT_NEAR(summary.box->gbf_MaxX, max_x, 1e-9);
    EXPECT_NEAR(summary.box->gbf_MaxY, max_y, 1e-9);
}

TEST(CallBox, StraightEdgesThroughShapeAndFace)
{
    const auto all = summaries_of(
        kFace + paint(path(kFill, "<GGO_Point gpf_X=\"0.5\" gpf_Y=\"0\"/>\n",
                           "<GPA_StraightEdge>\n<GPA_StraightEdge.se_Segment>\n<GGO_Vector gvf_X=\"1\" gvf_Y=\"0\"/>\n"
                           "<GGO_Vector gvf_X=\"0\" gvf_Y=\"-0.5\"/>\n</GPA_StraightEdge.se_Segment>\n"
                           "</GPA_StraightEdge>\n")));
    ASSERT_EQ(all.size(), 2U);
    expect_box(all[0], 0, 0, 800, 600);
    expect_box(all[1], 150, 150, 250, 200);
    EXPECT_EQ(all[1].page, 1U);
    EXPECT_EQ(all[1].op, "source-over");
}

TEST(CallBox, CurvesByWhereTheyTurn)
{
    const auto all = summaries_of(
        kFace + paint(path(kFill, "<GGO_Point gpf_X=\"0\" gpf_Y=\"0\"/>\n",
                           "<GPA_BezierEdge>\n<GPA_BezierEdge.be_BezierSegment>\n<GPA_BezierSegment "
                           "bs_StartTangent=\"0 1 \" bs_EndTangent=\"1 1 \" bs_EndPoint=\"1 0 \">\n"
                           "</GPA_BezierSegment>\n</GPA_BezierEdge.be_BezierSegment>\n</GPA_BezierEdge>\n")));
    expect_box(all.at(1), 100, 200, 200, 275);
    const auto quadratic = summaries_of(
        kFace + paint(path(kFill, "<GGO_Point gpf_X=\"0\" gpf_Y=\"0\"/>\n",
                           "<GPA_QuadBezierEdge>\n<GPA_QuadBezierEdge.qb_QuadBezierSegment>\n<GPA_QuadBezierSegment "
                           "qs_ControlPoint=\"0.5 1 \" qs_EndPoint=\"1 0 \">\n</GPA_QuadBezierSegment>\n"
                           "</GPA_QuadBezierEdge.qb_QuadBezierSegment>\n</GPA_QuadBezierEdge>\n")));
    expect_box(quadratic.at(1), 100, 200, 200, 250);
}

TEST(CallBox, HalfACircleOnEitherSide)
{
    const std::string start = "<GGO_Point gpf_X=\"0\" gpf_Y=\"0\"/>\n";
    const auto arc = [](const char* x_radius)
    {
        return std::string("<GPA_EllipticalEdge>\n<GPA_EllipticalEdge.ee_EllipticalSegment>\n<GPA_EllipticalSegment "
                           "es_XRadius=\"") +
               x_radius +
               "\" es_YRadius=\"1\" es_AngleToXAxis=\"0\" es_EndPoint=\"2 0 \">\n</GPA_EllipticalSegment>\n"
               "</GPA_EllipticalEdge.ee_EllipticalSegment>\n</GPA_EllipticalEdge>\n";
    };
    // From the x axis towards the y axis the way from left to right leads through negative y.
    expect_box(summaries_of(kFace + paint(path(kFill, start, arc("1")))).at(1), 100, 100, 300, 200);
    expect_box(summaries_of(kFace + paint(path(kFill, start, arc("-1")))).at(1), 100, 200, 300, 300);
}

TEST(CallBox, StrokesHaveTheirWidth)
{
    const std::string stroked = "<GSH_StrokedPathShape>\n<GSH_Shape sh_Transform=\"1 0 0 1 1 2 \"/>\n"
                                "<GPA_PathStrokingParams psp_StrokeWidth=\"0.2\">\n</GPA_PathStrokingParams>\n"
                                "</GSH_StrokedPathShape>\n";
    const auto all = summaries_of(
        kFace + paint(path(stroked, "<GGO_Point gpf_X=\"0\" gpf_Y=\"0\"/>\n",
                           "<GPA_StraightEdge>\n<GPA_StraightEdge.se_Segment>\n<GGO_Vector gvf_X=\"1\" gvf_Y=\"0\"/>\n"
                           "</GPA_StraightEdge.se_Segment>\n</GPA_StraightEdge>\n")));
    expect_box(all.at(1), 90, 190, 210, 210);
}

std::string rectangles(const std::string& shape)
{
    return "<ORV_object_paint.paint_path>\n<GSH_ShapePointer>\n<GSH_ShapePointer.sp_HeaderPtr>\n" + shape +
           "</GSH_ShapePointer.sp_HeaderPtr>\n</GSH_ShapePointer>\n</ORV_object_paint.paint_path>\n";
}

TEST(CallBox, RectanglesAndRows)
{
    const std::string head = "<GSH_Shape sh_Transform=\"0.01 0 0 0.01 0 0 \"/>\n";
    expect_box(
        summaries_of(kFace + paint(rectangles("<GSH_ImageRectShape irs_ImageHeight=\"3\" irs_ImageWidth=\"5\">\n" +
                                              head + "</GSH_ImageRectShape>\n")))
            .at(1),
        0, 0, 5, 3);
    expect_box(summaries_of(kFace + paint(rectangles(
                                        "<GSH_MultiRectShape mrs_RectCount=\"2\">\n" + head +
                                        "<GGO_BoxInt gbi_MinX=\"1\" gbi_MinY=\"2\" gbi_MaxX=\"3\" gbi_MaxY=\"4\"/>\n"
                                        "<GGO_BoxInt gbi_MinX=\"9\" gbi_MinY=\"9\" gbi_MaxX=\"8\" gbi_MaxY=\"8\"/>\n"
                                        "</GSH_MultiRectShape>\n")))
                   .at(1),
               1, 2, 3, 4);
    expect_box(summaries_of(kFace + paint(rectangles("<GSH_ScanlineShape ss_StartY=\"7\">\n" + head +
                                                     "<GSH_XLimits xl_StartX=\"4\" xl_StopX=\"4\">\n</GSH_XLimits>\n"
                                                     "<GSH_XLimits xl_StartX=\"-2\" xl_StopX=\"6\">\n</GSH_XLimits>\n"
                                                     "</GSH_ScanlineShape>\n")))
                   .at(1),
               -2, 8, 6, 9);
}

TEST(CallBox, ImagesByTheirTransformWithinGroups)
{
    const std::string image =
        "<ORV_object_paint.operand1>\n<GOP_OperandImagePointer Id=\"10\">\n<GOP_OperandImage im_ImageEncoding=\"1\" "
        "im_Flags=\"[0x5] A B \" im_ImageWidthPixels=\"10\" im_ImageHeightPixels=\"20\" im_Transform=\"0.1 0 0 0.1 0 0 "
        "\">\n<GOP_Operand go_OpType=\"GOP_OPERAND_IMAGE\" go_ColorInfo.GOP_OperandColorSpace=\"GOP_OCS_INPUT\" "
        "go_Count=\"3\" go_ColorSpaceFamily=\"GCM_CSF_CMYK\"/>\n</GOP_OperandImage>\n</GOP_OperandImagePointer>\n"
        "</ORV_object_paint.operand1>\n";
    const std::string start = "  <ORV_group_start drawing_context=\"0\" retransform=\"2 0 0 2 1 0 \" "
                              "bounding_box_hint=\"0 0 1 1 \">\n  </ORV_group_start>\n";
    const std::string finish = "  <ORV_group_finish drawing_context=\"0\" replay_group=\"FALSE\">\n"
                               "  </ORV_group_finish>\n";
    const std::string again = "  <ORV_group_finish drawing_context=\"0\" replay_group=\"TRUE\">\n"
                              "  </ORV_group_finish>\n";
    const auto all = summaries_of(kFace + start + paint(image) + again + paint(image) + finish + paint(image));
    ASSERT_EQ(all.size(), 7U);
    expect_box(all[1], 100, 0, 300, 200);
    expect_box(all[2], 100, 0, 300, 400);
    expect_box(all[4], 100, 0, 300, 400);
    expect_box(all[6], 0, 0, 100, 200);
    EXPECT_EQ(all[6].colour, "image 10x20 cmyk 8 bits alpha planar");
}

TEST(CallBox, TextByItsGlyphs)
{
    const std::string shape =
        "<ORV_object_paint.paint_path>\n<GSH_ShapePointer>\n<GSH_ShapePointer.sp_HeaderPtr>\n<GSH_GlyphShape>\n"
        "<GSH_Shape sh_Transform=\"1 0 0 1 0 0 \"/>\n</GSH_GlyphShape>\n</GSH_ShapePointer.sp_HeaderPtr>\n"
        "<GSH_ShapePointer.sp_U.glyph orvlog_font_spec_id=\"3\" orvlog_string_desc_id=\"4\">\n"
        "</GSH_ShapePointer.sp_U.glyph>\n</GSH_ShapePointer>\n</ORV_object_paint.paint_path>\n";
    const auto string = [](const char* id)
    {
        return std::string("<GFI_StringStartFn GfpId=\"0\" result=\"TRUE\" stringdesc_to_face_pixel=\"1 0 0 1 50 60 \" "
                           "glyphdesc_to_face_pixel=\"10 0 0 -10 0 0 \" orvlog_font_spec_id=\"") +
               id + "\" orvlog_string_desc_id=\"4\"/>\n";
    };
    const std::string glyphs =
        "<GFI_GlyphIndexGetFn GfpId=\"0\" result=\"TRUE\" glyph_returned=\"TRUE\" advance_vector=\"2 0 \" "
        "quick_bounding_box=\"0 0 1 3 \"/>\n"
        "<GFI_GlyphIndexGetFn GfpId=\"0\" result=\"TRUE\" glyph_returned=\"TRUE\" advance_vector=\"2 0 \" "
        "quick_bounding_box=\"-9 -9 9 9 \"/>\n"
        "<GFI_GlyphGetFn GfpId=\"0\" result=\"TRUE\" glyphdesc_to_face_pixel=\"1 0 0 1 0 0 \">\n"
        "<GFI_GlyphDescPointer>\n<GFI_GlyphDescPointer.gdp_GlyphDesc>\n<GFI_GlyphDescBitmap gdb_Width=\"8\" "
        "gdb_Height=\"5\">\n<GFI_GlyphDesc gd_Type=\"GFI_GDT_BITMAP\" gd_Offset=\"1 -4 \"/>\n</GFI_GlyphDescBitmap>\n"
        "</GFI_GlyphDescPointer.gdp_GlyphDesc>\n</GFI_GlyphDescPointer>\n</GFI_GlyphGetFn>\n"
        "<GFI_GlyphIndexGetFn GfpId=\"0\" result=\"TRUE\" glyph_returned=\"FALSE\"/>\n";
    expect_box(summaries_of(kFace + paint(shape + string("3") + glyphs)).at(1), 50, 30, 79, 61);
    EXPECT_FALSE(summaries_of(kFace + paint(shape + string("2") + glyphs)).at(1).box.has_value());
}

TEST(CallSummary, OperatorsAndColours)
{
    const auto op = [](const char* attributes)
    {
        return "<ORV_object_paint.op>\n<GOP_Operator " + std::string(attributes) +
               ">\n</GOP_Operator>\n</ORV_object_paint.op>\n";
    };
    const auto flat = [](const char* member, const char* head, const char* color)
    {
        return "<ORV_object_paint." + std::string(member) +
               ">\n<GOP_OperandFlatPointer>\n<GOP_OperandFlat>\n<GOP_Operand " + head +
               "/>\n<GOP_OperandFlat.fl_Color>\n<GBC_Color " + color +
               "/>\n</GOP_OperandFlat.fl_Color>\n</GOP_OperandFlat>\n</GOP_OperandFlatPointer>\n</ORV_object_paint." +
               member + ">\n";
    };
    const char* const gray =
        "go_ColorInfo.GOP_OperandColorSpace=\"GOP_OCS_INPUT\" go_ColorSpaceFamily=\"GCM_CSF_GRAY\"";
    const auto all = summaries_of(
        kFace +
        paint(op("op_OperatorType=\"GOP_ROP_PDF_SEPARABLE\" op_Operator=\"1\" op_MaskMode=\"GOP_MASK_IN\"") +
              flat("operand1", gray, "bit_depth=\"8\" alpha=\"128\" base_n=\"7 \"") +
              flat("operand2", gray, "bit_depth=\"32\" base_n=\"0.25 \"")) +
        paint(op("op_OperatorType=\"GOP_ROP_ROP3\" op_Operator=\"204\" op_MaskMode=\"GOP_MASK_NONE\"")) +
        paint(op("op_OperatorType=\"GOP_ROP_PORTER_DUFF\" op_Operator=\"99\"")));
    ASSERT_EQ(all.size(), 4U);
    EXPECT_EQ(all[1].op, "multiply/mask-in");
    EXPECT_EQ(all[1].colour, "gray8(7) alpha 128, mask 0.25");
    EXPECT_EQ(all[2].op, "rop3(204)");
    EXPECT_EQ(all[2].colour, "");
    EXPECT_EQ(all[3].op, "porter-duff(99)");
    // Nothing but the clip limits what has no shape.
    expect_box(all[3], 0, 0, 800, 600);
}

TEST(ElementReader, GivesNestedCallsOneByOne)
{
    std::istringstream source("<ORV>\n  <ORV_a_paint id=\"1\">\n    <ORV_a_paint.op>\n    </ORV_a_paint.op>\n"
                              "    <ORV_b id=\"2\">\n    </ORV_b>\n    <GFI_Fn>\n    </GFI_Fn>\n  </ORV_a_paint>\n"
                              "  <ORV_c>\n  </ORV_c>\n</ORV>\n");
    ElementReader elements(source);
    elements.split_nested = true;
    std::string names;
    while (const Element* element = elements.next())
        names.append(element->name).append(element->implied_end ? "* " : " ");
    EXPECT_EQ(names, "ORV_a_paint* ORV_b GFI_Fn ORV_c ");
}

}  // namespace
