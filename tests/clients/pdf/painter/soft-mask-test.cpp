// SPDX-License-Identifier: GPL-2.0-or-later

#include "clients/pdf/painter/soft-mask.h"

#include <gtest/gtest.h>

#include <limits>

namespace
{

using namespace orvlog::pdf_client;

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

// Ten by ten, tenths of an inch, each sample its number.
std::shared_ptr<const MaskImage> numbered_mask()
{
    auto mask = std::make_shared<MaskImage>();
    mask->width = 10;
    mask->height = 10;
    for (uint8_t i = 0; i < 100; ++i)
        mask->samples.push_back(i);
    mask->pixels_to_content = {{0.1, 0, 0, 0.1, 1, 2}};
    return mask;
}

TEST(SoftMask, IsCutToABoxWithTwoPixelsAround)
{
    const auto part = cut_to(numbered_mask(), {1.51, 2.01, 1.59, 2.18});
    EXPECT_EQ(part->width, 5U);
    EXPECT_EQ(part->height, 4U);
    EXPECT_EQ(part->samples,
              (std::vector<uint8_t>{3, 4, 5, 6, 7, 13, 14, 15, 16, 17, 23, 24, 25, 26, 27, 33, 34, 35, 36, 37}));
    EXPECT_DOUBLE_EQ(part->pixels_to_content.m[4], 1.3);
    EXPECT_DOUBLE_EQ(part->pixels_to_content.m[5], 2.0);
    EXPECT_DOUBLE_EQ(part->pixels_to_content.m[0], 0.1);
}

TEST(SoftMask, StaysWholeWhereCuttingGainsLittleOrTheBoxSaysNothing)
{
    constexpr double kFar = std::numeric_limits<double>::max();
    constexpr double kNan = std::numeric_limits<double>::quiet_NaN();
    const auto mask = numbered_mask();
    EXPECT_EQ(cut_to(mask, {1, 2, 2, 2.7}), mask);
    EXPECT_EQ(cut_to(mask, {-kFar, -kFar, kFar, kFar}), mask);
    EXPECT_EQ(cut_to(mask, {1, 1, -1, -1}), mask);
    EXPECT_EQ(cut_to(mask, {kNan, 2, 1.5, 2.5}), mask);
    EXPECT_EQ(cut_to(mask, {5, 5, 6, 6}), mask);
}

}  // namespace
