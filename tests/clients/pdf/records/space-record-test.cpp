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

}  // namespace
