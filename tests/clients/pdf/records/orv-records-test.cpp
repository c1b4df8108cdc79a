// SPDX-License-Identifier: GPL-2.0-or-later

#include "clients/pdf/records/orv-records.h"

#include <gtest/gtest.h>

namespace
{

using namespace pdf_client;

Segment line(double x, double y)
{
    return {false, {}, {}, {x, y}};
}

Colour rgb(float red, float green, float blue)
{
    Colour colour;
    colour.space.channels = 3;
    colour.value[0] = red;
    colour.value[1] = green;
    colour.value[2] = blue;
    return colour;
}

Colour gray(float value)
{
    Colour colour;
    colour.value[0] = value;
    return colour;
}

TEST(PathRecord, HoldsARunOfEachKindAsAnEdge)
{
    const Path path{{{{1, 2}, {line(3, 2), line(3, 5), {true, {3, 6}, {2, 7}, {1, 7}}}, true}}};
    const PathRecord record(path);
    const GPA_PathPointer* pointer = record.get();
    ASSERT_EQ(pointer->lpp_Path->pa_NumEdges, 2U);
    EXPECT_EQ(pointer->lpp_Path->pa_PathHints, 0x10);  // one subpath
    EXPECT_EQ(pointer->lpp_Path->pa_EnclosingBox.gbf_MinX, 1);
    EXPECT_EQ(pointer->lpp_Path->pa_EnclosingBox.gbf_MinY, 2);
    EXPECT_EQ(pointer->lpp_Path->pa_EnclosingBox.gbf_MaxX, 3);
    EXPECT_EQ(pointer->lpp_Path->pa_EnclosingBox.gbf_MaxY, 7);
    EXPECT_EQ(pointer->lpp_Path->pa_EdgeStart[0].gpf_X, 1);
    EXPECT_EQ(pointer->lpp_Path->pa_EdgeStart[0].gpf_Y, 2);
    EXPECT_EQ(pointer->lpp_Path->pa_EdgeStart[1].gpf_X, 3);
    EXPECT_EQ(pointer->lpp_Path->pa_EdgeStart[1].gpf_Y, 5);

    const GPA_Edge* straight = pointer->lpp_EdgePointer[0].ep_Pointer;
    EXPECT_EQ(straight->ed_EdgeType, 0);
    EXPECT_EQ(straight->ed_EdgeFlag, 1);  // goes on
    ASSERT_EQ(straight->ed_SegmentCount, 2);
    const GGO_Vector* vectors = reinterpret_cast<const GPA_StraightEdge*>(straight)->se_Segment;
    EXPECT_EQ(vectors[0].gvf_X, 2);
    EXPECT_EQ(vectors[0].gvf_Y, 0);
    EXPECT_EQ(vectors[1].gvf_X, 0);
    EXPECT_EQ(vectors[1].gvf_Y, 3);

    const GPA_Edge* curved = pointer->lpp_EdgePointer[1].ep_Pointer;
    EXPECT_EQ(curved->ed_EdgeType, 1);
    EXPECT_EQ(curved->ed_EdgeFlag, 0);  // ends closed
    ASSERT_EQ(curved->ed_SegmentCount, 1);
    // All three vectors are measured from the start of the segment, (3, 5).
    const GPA_BezierSegment& bezier = reinterpret_cast<const GPA_BezierEdge*>(curved)->be_BezierSegment[0];
    EXPECT_EQ(bezier.bs_StartTangent.gvf_X, 0);
    EXPECT_EQ(bezier.bs_StartTangent.gvf_Y, 1);
    EXPECT_EQ(bezier.bs_EndTangent.gvf_X, -1);
    EXPECT_EQ(bezier.bs_EndTangent.gvf_Y, 2);
    EXPECT_EQ(bezier.bs_EndPoint.gvf_X, -2);
    EXPECT_EQ(bezier.bs_EndPoint.gvf_Y, 2);
}

TEST(PathRecord, KnowsARectangle)
{
    const PathRecord record(rectangle({0, 0, 4, 3}));
    EXPECT_EQ(record.get()->lpp_Path->pa_PathHints, 0x39);
    ASSERT_EQ(record.get()->lpp_Path->pa_NumEdges, 1U);
    EXPECT_EQ(record.get()->lpp_EdgePointer[0].ep_Pointer->ed_SegmentCount, 3);
    const Path slanted{{{{0, 0}, {line(4, 1), line(4, 3), line(0, 3)}, true}}};
    EXPECT_EQ(PathRecord(slanted).get()->lpp_Path->pa_PathHints, 0x38);
}

TEST(PathRecord, EndsOpenSubpathsOpen)
{
    const Path path{{{{0, 0}, {line(1, 0)}, false}, {{5, 5}, {}, false}}};
    const PathRecord record(path);
    ASSERT_EQ(record.get()->lpp_Path->pa_NumEdges, 2U);
    EXPECT_EQ(record.get()->lpp_EdgePointer[0].ep_Pointer->ed_EdgeFlag, 2);
    EXPECT_EQ(record.get()->lpp_EdgePointer[1].ep_Pointer->ed_EdgeFlag, 2);
    EXPECT_EQ(record.get()->lpp_EdgePointer[1].ep_Pointer->ed_SegmentCount, 0);
}

TEST(PathRecord, CutsRunsThatAreTooLongForAnEdge)
{
    Subpath subpath;
    for (int i = 1; i <= 65536; i++)
    {
        subpath.segments.push_back(line(i, 0));
    }
    const PathRecord record(Path{{subpath}});
    ASSERT_EQ(record.get()->lpp_Path->pa_NumEdges, 2U);
    EXPECT_EQ(record.get()->lpp_EdgePointer[0].ep_Pointer->ed_SegmentCount, 65535);
    EXPECT_EQ(record.get()->lpp_EdgePointer[0].ep_Pointer->ed_EdgeFlag, 1);
    EXPECT_EQ(record.get()->lpp_EdgePointer[1].ep_Pointer->ed_SegmentCount, 1);
    EXPECT_EQ(record.get()->lpp_Path->pa_EdgeStart[1].gpf_X, 65535);
}

TEST(PathRecord, OfNothingHasNoEdges)
{
    const PathRecord record(Path{});
    EXPECT_EQ(record.get()->lpp_Path->pa_NumEdges, 0U);
    EXPECT_EQ(record.get()->lpp_Path->pa_EnclosingBox.gbf_MinX, 1);
    EXPECT_EQ(record.get()->lpp_Path->pa_EnclosingBox.gbf_MaxX, -1);
}

TEST(StrokeRecord, PacksCapsJoinAndAdjustment)
{
    StrokeStyle style;
    style.width = 0.125;
    style.cap = GPA_CAP_PROJECT;
    style.join = GPA_JOIN_BEVEL;
    style.miter_limit = 4;
    style.dash_start = 0.5;
    style.dashes = {1, 2, 3};
    const StrokeRecord record(style);
    EXPECT_EQ(record.get()->psp_Flags, 0x1222);
    EXPECT_EQ(record.get()->psp_DashCaps, 2);
    EXPECT_EQ(record.get()->psp_StrokeWidth, 0.125F);
    EXPECT_EQ(record.get()->psp_MiterLimit, 4.0F);
    EXPECT_EQ(record.get()->psp_DashStart, 0.5F);
    ASSERT_EQ(record.get()->psp_DashCount, 3);
    EXPECT_EQ(record.get()->psp_DashLength[0], 1.0F);
    EXPECT_EQ(record.get()->psp_DashLength[1], 2.0F);
    EXPECT_EQ(record.get()->psp_DashLength[2], 3.0F);
    style.adjust = false;
    EXPECT_EQ(StrokeRecord(style).get()->psp_Flags, 0x0222);
}

TEST(Shapes, CarryTheirHeaders)
{
    const FilledShape filled(rectangle({0, 0, 1, 1}), Winding::odd_even);
    EXPECT_EQ(filled.get()->sp_HeaderPtr->sh_ShapeType, 1);
    EXPECT_EQ(reinterpret_cast<const GSH_FilledPathShape*>(filled.get()->sp_HeaderPtr)->fps_WindingRule, 0U);
    StrokeStyle style;
    style.dashes = {4, 5};
    const StrokedShape stroked(rectangle({0, 0, 1, 1}), scaling(2, 3), style);
    EXPECT_EQ(stroked.get()->sp_HeaderPtr->sh_ShapeType, 2);
    EXPECT_EQ(stroked.get()->sp_HeaderPtr->sh_Transform.m[3], 3);
    const GSH_StrokedPathShape* header = reinterpret_cast<const GSH_StrokedPathShape*>(stroked.get()->sp_HeaderPtr);
    EXPECT_EQ(header->sps_StrokingParams.psp_DashCount, 2);
    EXPECT_EQ(header->sps_StrokingParams.psp_DashLength[1], 5.0F);
    const ImageShape image(30, 20, translation(5, 6));
    EXPECT_EQ(image.get()->sp_HeaderPtr->sh_ShapeType, 3);
    EXPECT_EQ(reinterpret_cast<const GSH_ImageRectShape*>(image.get()->sp_HeaderPtr)->irs_ImageWidth, 30U);
    EXPECT_EQ(image.get()->sp_HeaderPtr->sh_Transform.m[5], 6);
}

Clip narrowed(const Clip& clip, uint32_t id)
{
    return std::make_shared<const ClipNode>(
        std::make_shared<const FilledShape>(rectangle({0, 0, 1, 1}), Winding::non_zero), id, clip);
}

TEST(Clips, ChainFromTheNewestToTheOldest)
{
    const Clip outer = narrowed(nullptr, 4);
    const Clip inner = narrowed(outer, 9);
    const GSH_ShapeList* list = clip_list(inner);
    EXPECT_EQ(list->sl_UniqueId, 9U);
    EXPECT_EQ(list->sl_ClipIn, 1U);
    ASSERT_NE(list->sl_Next, nullptr);
    EXPECT_EQ(list->sl_Next->sl_UniqueId, 4U);
    EXPECT_EQ(list->sl_Next->sl_Next, nullptr);
    EXPECT_EQ(clip_list(nullptr), nullptr);
}

TEST(Clips, AboveABaseStandAlone)
{
    const Clip base = narrowed(narrowed(nullptr, 1), 2);
    const Clip above = clips_above(narrowed(narrowed(base, 3), 4), base);
    ASSERT_NE(above, nullptr);
    EXPECT_EQ(above->record.sl_UniqueId, 4U);
    ASSERT_NE(above->record.sl_Next, nullptr);
    EXPECT_EQ(above->record.sl_Next->sl_UniqueId, 3U);
    EXPECT_EQ(above->record.sl_Next->sl_Next, nullptr);
    EXPECT_EQ(clips_above(base, base), nullptr);
}

TEST(Clips, AreBoundedByTheirIntersection)
{
    const auto box = [](const GGO_BoxFloat& bounds, Clip parent)
    {
        const auto shape = std::make_shared<const FilledShape>(rectangle(bounds), Winding::non_zero);
        return std::make_shared<const ClipNode>(shape, 1, std::move(parent));
    };
    const GGO_BoxFloat both = clip_bounds(box({2, 1, 9, 4}, box({0, 3, 5, 8}, nullptr)));
    EXPECT_EQ(both.gbf_MinX, 2);
    EXPECT_EQ(both.gbf_MinY, 3);
    EXPECT_EQ(both.gbf_MaxX, 5);
    EXPECT_EQ(both.gbf_MaxY, 4);
    const GGO_BoxFloat nothing = clip_bounds(box({6, 6, 9, 9}, box({0, 3, 5, 8}, nullptr)));
    EXPECT_GT(nothing.gbf_MinX, nothing.gbf_MaxX);
    EXPECT_GT(clip_bounds(nullptr).gbf_MaxX, 1e300);
}

TEST(Clips, OfAGreatDepthComeApart)
{
    Clip clip;
    for (uint32_t i = 0; i < 200000; i++)
    {
        clip = narrowed(clip, i);
    }
    EXPECT_EQ(clip->record.sl_UniqueId, 199999U);
    clip = nullptr;
}

TEST(OperandRecord, HoldsFlatColours)
{
    OperandRecord record = OperandRecord::flat(rgb(1, 0.5F, 0.25F), 1);
    const GOP_OperandPointer* pointer = record.get(12);
    EXPECT_EQ(pointer->op_UniqueId, 12U);
    EXPECT_EQ(pointer->op_Csd.cp_Csd, nullptr);
    const GOP_OperandFlat* flat = reinterpret_cast<const GOP_OperandFlat*>(pointer->op_Operand);
    EXPECT_EQ(flat->fl_Operand.go_OpType, 0);
    EXPECT_EQ(flat->fl_Operand.go_ColorInfo, 0x80);
    EXPECT_EQ(flat->fl_Operand.go_Hints, 1);
    EXPECT_EQ(flat->fl_Operand.go_ColorSpaceFamily, 1);
    EXPECT_EQ(flat->fl_Color.num_chans, 3);
    EXPECT_EQ(flat->fl_Color.bit_depth, 32);
    EXPECT_EQ(flat->fl_Color.has_alpha, 0);
    EXPECT_EQ(flat->fl_Color.channels.as_float[0], 1.0F);
    EXPECT_EQ((flat->fl_Color.channels.as_float + 0)[1], 0.5F);
    EXPECT_EQ((flat->fl_Color.channels.as_float + 0)[2], 0.25F);
}

TEST(OperandRecord, TellsBlackAndGrayFromOtherColours)
{
    const auto info = [](const Colour& colour)
    { return OperandRecord::flat(colour, 1).get(0)->op_Operand->go_ColorInfo; };
    EXPECT_EQ(info(gray(0)), 0x00);
    EXPECT_EQ(info(gray(0.5F)), 0x40);
    EXPECT_EQ(info(rgb(0, 0, 0)), 0x00);
    EXPECT_EQ(info(rgb(0.5F, 0.5F, 0.5F)), 0x40);
    Colour ink;
    ink.space.channels = 4;
    ink.value[3] = 1;
    EXPECT_EQ(info(ink), 0x00);
    ink.value[0] = 0.1F;
    EXPECT_EQ(info(ink), 0x80);
}

TEST(OperandRecord, PutsAlphaInFrontOfTheChannels)
{
    OperandRecord record = OperandRecord::flat(gray(0.5F), 0.25);
    const GOP_OperandFlat* flat = reinterpret_cast<const GOP_OperandFlat*>(record.get(0)->op_Operand);
    EXPECT_EQ(flat->fl_Operand.go_Hints, 0);
    EXPECT_EQ(flat->fl_Color.num_chans, 2);
    EXPECT_EQ(flat->fl_Color.has_alpha, 1);
    EXPECT_EQ(flat->fl_Color.channels.as_float[0], 0.25F);
    EXPECT_EQ((flat->fl_Color.channels.as_float + 0)[1], 0.5F);
    OperandRecord mask = OperandRecord::constant_mask(0.75);
    const GOP_OperandFlat* constant = reinterpret_cast<const GOP_OperandFlat*>(mask.get(0)->op_Operand);
    EXPECT_EQ(constant->fl_Color.num_chans, 1);
    EXPECT_EQ(constant->fl_Color.channels.as_float[0], 0.75F);
}

TEST(OperandRecord, MakesATwoPointGradientOfTwoStops)
{
    AxialGradient gradient;
    gradient.transform = scaling(2, 2);
    gradient.start = {1, 2};
    gradient.end = {3, 4};
    gradient.extend_end = true;
    gradient.stops = {{0, gray(0)}, {1, gray(1)}};
    OperandRecord record = OperandRecord::gradient(gradient, 1);
    const GOP_OperandGrad2PtPointer* pointer = reinterpret_cast<const GOP_OperandGrad2PtPointer*>(record.get(3));
    const GOP_OperandGrad2Pt* operand = reinterpret_cast<const GOP_OperandGrad2Pt*>(pointer->g2p_Pointer.op_Operand);
    EXPECT_EQ(operand->g2_Operand.go_OpType, 1);
    EXPECT_EQ(operand->g2_Operand.go_Count, 2);
    EXPECT_EQ(operand->g2_Transform.m[0], 2);
    EXPECT_EQ(operand->g2_Pt1.gpf_Y, 2);
    EXPECT_EQ(operand->g2_Pt2.gpf_X, 3);
    EXPECT_EQ(operand->g2_GradientExtendMode, 2);
    EXPECT_EQ(pointer->g2p_Color2->channels.as_float[0], 1.0F);
}

TEST(OperandRecord, MakesMultistopAndRadialGradients)
{
    AxialGradient axial;
    axial.extend_start = true;
    axial.stops = {{0, gray(0)}, {0.25, gray(1)}, {1, gray(0.5F)}};
    OperandRecord multistop = OperandRecord::gradient(axial, 0.5);
    const GOP_OperandGradMultistopPointer* pointer =
        reinterpret_cast<const GOP_OperandGradMultistopPointer*>(multistop.get(0));
    EXPECT_EQ(pointer->gmp_Pointer.op_Operand->go_OpType, 2);
    EXPECT_EQ(pointer->gmp_Pointer.op_Operand->go_Count, 3);
    const GOP_GradStop* const* stops = pointer->gmp_GradStop;
    EXPECT_EQ(stops[1]->gs_StopPosn, 0.25);
    EXPECT_EQ(stops[2]->gs_StopColor.has_alpha, 1);
    EXPECT_EQ(stops[2]->gs_StopColor.channels.as_float[0], 0.5F);

    RadialGradient radial;
    radial.centre1 = {1, 2};
    radial.radius1 = 3;
    radial.centre2 = {4, 5};
    radial.radius2 = 6;
    radial.extend_start = true;
    radial.extend_end = true;
    radial.stops = {{0, gray(0)}, {1, gray(1)}};
    OperandRecord record = OperandRecord::gradient(radial, 1);
    const GOP_OperandGradRadial* operand = reinterpret_cast<const GOP_OperandGradRadial*>(record.get(0)->op_Operand);
    EXPECT_EQ(operand->gr_Operand.go_OpType, 4);
    EXPECT_EQ(operand->gr_Operand.go_Count, 2);
    EXPECT_EQ(operand->gr_Radius1, 3);
    EXPECT_EQ(operand->gr_Center2.gpf_Y, 5);
    EXPECT_EQ(operand->gr_GradientExtendMode, 3);
}

TEST(SpaceRecord, CarriesAProfileWithItsFamilyAsAlternate)
{
    auto definition = std::make_shared<SpaceDefinition>();
    definition->profile = {1, 2, 3};
    Colour colour = rgb(0, 0, 0);
    colour.space.definition = definition;
    OperandRecord record = OperandRecord::flat(colour, 1);
    const GOP_OperandPointer* pointer = record.get(0);
    EXPECT_EQ(pointer->op_Operand->go_ColorInfo, 2);
    ASSERT_NE(pointer->op_Csd.cp_Csd, nullptr);
    EXPECT_EQ(pointer->op_Csd.cp_Csd->csd_Type, 2U);
    EXPECT_EQ(pointer->op_Csd.cp_Csd->csd_NumBaseChans, 3);
    EXPECT_EQ(pointer->op_Csd.cp_Csd->csd_Defn.ProfileBufferSize, 3U);
    EXPECT_EQ(pointer->op_Csd.cp_ProfileBuffer[2], 3);
    EXPECT_EQ(pointer->op_Csd.cp_Csd->csd_HasAlternateDefn, 1);
    EXPECT_EQ(pointer->op_Csd.cp_AlternateDefn->cp_Csd->csd_Type, 4U);
    EXPECT_EQ(pointer->op_Csd.cp_AlternateDefn->cp_Csd->csd_Defn.NonColorimetric, 0U);
}

TEST(SpaceRecord, CarriesCalibratedSpacesAsTables)
{
    auto definition = std::make_shared<SpaceDefinition>();
    definition->kind = SpaceDefinition::Kind::calibrated_gray;
    definition->gamma[0] = 2;
    definition->white[0] = 0.9505;
    Colour colour = gray(0.5F);
    colour.space.definition = definition;
    OperandRecord record = OperandRecord::flat(colour, 1);
    const GCM_CsdPointer& csd = record.get(0)->op_Csd;
    EXPECT_EQ(csd.cp_Csd->csd_Type, 5U);
    EXPECT_EQ(csd.cp_Csd->csd_Defn.CieBased, 5U);
    EXPECT_EQ(csd.cp_CieLuts->clp_CieLuts->cl_DecodeBitDepth, 8U);
    EXPECT_EQ(csd.cp_CieLuts->clp_CieLuts->cl_WhitePoint[0], 0.9505F);
    EXPECT_EQ(csd.cp_CieLuts->clp_DecodeABC_A[0], 0.0F);
    EXPECT_EQ(csd.cp_CieLuts->clp_DecodeABC_A[51], 0.04F);
    EXPECT_EQ(csd.cp_CieLuts->clp_DecodeABC_A[255], 1.0F);
}

TEST(BlendOperator, NumbersTheModes)
{
    struct Row
    {
        Blend blend;
        uint32_t family;
        uint16_t number;
    };
    const Row rows[] = {
        {Blend::normal, 3, 3},     {Blend::multiply, 4, 1},   {Blend::screen, 4, 2},      {Blend::overlay, 4, 3},
        {Blend::darken, 4, 4},     {Blend::lighten, 4, 5},    {Blend::color_dodge, 4, 6}, {Blend::color_burn, 4, 7},
        {Blend::hard_light, 4, 8}, {Blend::soft_light, 4, 9}, {Blend::difference, 4, 10}, {Blend::exclusion, 4, 11},
        {Blend::hue, 5, 0},        {Blend::saturation, 5, 1}, {Blend::color, 5, 2},       {Blend::luminosity, 5, 3},
    };
    for (const Row& row : rows)
    {
        const GOP_Operator op = blend_operator(row.blend, GOP_MASK_IN);
        EXPECT_EQ(op.op_OperatorType, row.family);
        EXPECT_EQ(op.op_Operator, row.number);
        EXPECT_EQ(op.op_MaskMode, 1U);
    }
}

}  // namespace
