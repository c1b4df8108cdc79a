// SPDX-License-Identifier: GPL-2.0-or-later

#include "clients/pdf/records/blend-operator.h"

#include <gtest/gtest.h>

namespace
{

using namespace orvlog::pdf_client;

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
