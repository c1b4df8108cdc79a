// SPDX-License-Identifier: GPL-2.0-or-later

#include "clients/pdf/soft-mask.h"

#include <gtest/gtest.h>

namespace
{

using namespace pdf_client;

// Four pixels in a row: nothing; opaque red; half transparent white; opaque white.
MaskPictures pictures()
{
    MaskPictures result;
    result.on_white = {4, 1, {0xFFFFFF, 0xFF0000, 0xFFFFFF, 0xFFFFFF}};
    result.on_black = {4, 1, {0x000000, 0xFF0000, 0x808080, 0xFFFFFF}};
    result.content_to_pixels = scaling(10, 10);
    return result;
}

TEST(SoftMask, TakesTheAlphaOfTheGroup)
{
    const auto mask = make_mask(pictures(), MaskRule{});
    EXPECT_EQ(mask->width, 3U);
    EXPECT_EQ(mask->height, 1U);
    EXPECT_EQ(mask->samples, (std::vector<uint8_t>{255, 128, 255}));
    EXPECT_DOUBLE_EQ(mask->pixels_to_content.m[0], 0.1);
    EXPECT_DOUBLE_EQ(mask->pixels_to_content.m[4], 0.1);
}

TEST(SoftMask, TakesTheLuminosityOverTheBackdrop)
{
    MaskRule rule;
    rule.luminosity = true;
    EXPECT_EQ(make_mask(pictures(), rule)->samples, (std::vector<uint8_t>{77, 128, 255}));
    rule.backdrop[0] = rule.backdrop[1] = rule.backdrop[2] = 1;
    EXPECT_EQ(make_mask(pictures(), rule)->samples, (std::vector<uint8_t>{255, 77, 255, 255}));
}

TEST(SoftMask, AppliesTheTransferFunction)
{
    MaskRule rule;
    rule.transfer = [](double value) { return 1 - value; };
    EXPECT_EQ(make_mask(pictures(), rule)->samples, (std::vector<uint8_t>{255, 0, 127}));
}

TEST(SoftMask, OfNothingIsZeroEverywhere)
{
    const auto mask = make_mask(MaskPictures{}, MaskRule{});
    EXPECT_EQ(mask->width, 1U);
    EXPECT_EQ(mask->samples, (std::vector<uint8_t>{0}));
}

}  // namespace
