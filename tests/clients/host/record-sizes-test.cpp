// Bytes of records that end in an array: as many as its entries take, and never fewer than the record's own.

#include "clients/host/orvlog-record-sizes.h"

#include <gtest/gtest.h>

namespace
{

TEST(RecordSizes, OfPaths)
{
    EXPECT_EQ(orvlog_path_size(0), 56U);
    EXPECT_EQ(orvlog_path_size(1), 56U);
    EXPECT_EQ(orvlog_path_size(2), 72U);
    EXPECT_EQ(orvlog_path_size(1000000000), 16000000040U);
    EXPECT_EQ(orvlog_path_pointer_size(1), 40U);
    EXPECT_EQ(orvlog_path_pointer_size(3), 72U);
    EXPECT_EQ(orvlog_straight_edge_size(1), 24U);
    EXPECT_EQ(orvlog_straight_edge_size(65535), 1048568U);
    EXPECT_EQ(orvlog_bezier_edge_size(2), 104U);
    EXPECT_EQ(orvlog_quad_bezier_edge_size(2), 72U);
    EXPECT_EQ(orvlog_staircase_edge_size(0), sizeof(GPA_StaircaseEdge));
    EXPECT_EQ(orvlog_staircase_edge_size(9), 26U);
    EXPECT_EQ(orvlog_elliptical_edge_size(2), 88U);
}

TEST(RecordSizes, OfStrokesAndRows)
{
    EXPECT_EQ(orvlog_stroking_params_size(0), 24U);
    EXPECT_EQ(orvlog_stroking_params_size(1), 24U);
    EXPECT_EQ(orvlog_stroking_params_size(4), 36U);
    EXPECT_EQ(orvlog_stroked_path_shape_size(1), sizeof(GSH_StrokedPathShape));
    EXPECT_EQ(orvlog_stroked_path_shape_size(5), offsetof(GSH_StrokedPathShape, sps_StrokingParams) +
                                                     offsetof(GPA_PathStrokingParams, psp_DashLength) + 20);
    EXPECT_EQ(orvlog_stroked_glyph_shape_size(5), offsetof(GSH_StrokedGlyphShape, sgs_StrokingParams) +
                                                      offsetof(GPA_PathStrokingParams, psp_DashLength) + 20);
    EXPECT_EQ(orvlog_multi_rect_shape_size(3), 108U);
    EXPECT_EQ(orvlog_scanline_shape_size(100), 480U);
}

TEST(RecordSizes, OfColoursAndGradients)
{
    EXPECT_EQ(orvlog_color_size(0, 32), 12U);
    EXPECT_EQ(orvlog_color_size(4, 32), 24U);
    EXPECT_EQ(orvlog_color_size(4, 16), 16U);
    EXPECT_EQ(orvlog_flat_operand_size(4, 32), 32U);
    EXPECT_EQ(orvlog_grad_stop_size(1, 32), sizeof(GOP_GradStop));
    EXPECT_GE(orvlog_grad_stop_size(5, 32), offsetof(GOP_GradStop, gs_StopColor) + 8 + 20);
    EXPECT_EQ(orvlog_multistop_pointer_size(4), sizeof(GOP_OperandGradMultistopPointer) + 24);
    EXPECT_EQ(orvlog_radial_pointer_size(0), sizeof(GOP_OperandGradRadialPointer));
}

TEST(RecordSizes, OfConstantRecordsAreThoseOfMadeOnes)
{
    static const ORVLOG_STRAIGHT_EDGE(3) straight = {{{GPA_EDGE_STRAIGHT, 0, 3}, 0, {{1, 0}, {0, 1}, {-1, 5}}}};
    EXPECT_EQ(sizeof straight, orvlog_straight_edge_size(3));
    EXPECT_EQ(straight.record.se_Edge.ed_SegmentCount, 3);
    const GGO_Vector* segments = straight.record.se_Segment;
    EXPECT_EQ(segments[2].gvf_Y, 5);
    using Path = ORVLOG_PATH(2);
    EXPECT_EQ(sizeof(Path), orvlog_path_size(2));
    EXPECT_EQ(offsetof(Path, of.pa_EdgeStart), offsetof(GPA_Path, pa_EdgeStart));
    using Pointer = ORVLOG_PATH_POINTER(2);
    EXPECT_EQ(sizeof(Pointer), orvlog_path_pointer_size(2));
    EXPECT_EQ(offsetof(Pointer, of.lpp_EdgePointer), offsetof(GPA_PathPointer, lpp_EdgePointer));
    using Bezier = ORVLOG_BEZIER_EDGE(2);
    EXPECT_EQ(sizeof(Bezier), orvlog_bezier_edge_size(2));
    EXPECT_EQ(offsetof(Bezier, of.be_BezierSegment), offsetof(GPA_BezierEdge, be_BezierSegment));
    using Flat = ORVLOG_FLAT_OPERAND(2);
    EXPECT_EQ(sizeof(Flat), orvlog_flat_operand_size(2, 32));
    EXPECT_EQ(offsetof(Flat, of.channels), offsetof(GOP_OperandFlat, fl_Color) + offsetof(GBC_Color, channels));
}

}  // namespace
