// SPDX-License-Identifier: GPL-2.0-or-later

#include "clients/pdf/records/stroke-record.h"

#include <gtest/gtest.h>

namespace
{

using namespace orvlog::pdf_client;

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

}  // namespace
