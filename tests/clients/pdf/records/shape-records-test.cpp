// SPDX-License-Identifier: GPL-2.0-or-later

#include "clients/pdf/records/shape-records.h"

#include <gtest/gtest.h>

namespace
{

using namespace orvlog::pdf_client;

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

}  // namespace
