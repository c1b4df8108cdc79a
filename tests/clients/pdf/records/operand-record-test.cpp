// SPDX-License-Identifier: GPL-2.0-or-later

#include "clients/pdf/records/operand-record.h"

#include <gtest/gtest.h>

namespace
{

using namespace orvlog::pdf_client;

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

}  // namespace
