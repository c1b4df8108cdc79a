// SPDX-License-Identifier: GPL-2.0-or-later

#include "clients/pdf/painter/pixel-box.h"

#include "clients/pdf/painter/layer.h"
#include "clients/pdf/painter/soft-mask.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>

namespace
{

using namespace orvlog::pdf_client;

constexpr double kFar = std::numeric_limits<double>::max();

void expect_box(const std::optional<PixelBox>& box, uint32_t left, uint32_t top, uint32_t right, uint32_t bottom)
{
    ASSERT_TRUE(box.has_value());
    EXPECT_EQ(box->left, left);
    EXPECT_EQ(box->top, top);
    EXPECT_EQ(box->right, right);
    EXPECT_EQ(box->bottom, bottom);
}

TEST(PixelBox, HoldsTouchedPixelsAndTwoMoreOnEachSide)
{
    expect_box(pixels_showing({1, 2, 1.5, 2.05}, scaling(10, 10), 100, 100), 8, 18, 17, 23);
}

TEST(PixelBox, EndsWhereThePictureEnds)
{
    expect_box(pixels_showing({-5, 9.9, 1, 50}, scaling(10, 10), 100, 100), 0, 97, 12, 100);
}

TEST(PixelBox, IsEmptyBesideThePicture)
{
    const std::optional<PixelBox> box = pixels_showing({20, 0, 30, 1}, scaling(10, 10), 100, 100);
    ASSERT_TRUE(box.has_value());
    EXPECT_TRUE(box->empty());
}

TEST(PixelBox, CannotBeToldWithoutFinitePlaces)
{
    const double nan = std::nan("");
    EXPECT_FALSE(pixels_showing({-kFar, -kFar, kFar, kFar}, scaling(1, 1), 9, 9).has_value());
    EXPECT_FALSE(pixels_showing({0, 0, nan, 1}, scaling(1, 1), 9, 9).has_value());
    // Large, but of a size that is a number: what it comes to among the pixels is none.
    EXPECT_FALSE(pixels_showing({kFar / 2, kFar / 2, kFar / 2, kFar / 2}, {{8, 8, -8, -8, 0, 0}}, 9, 9).has_value());
}

Layer page_of(uint32_t width, uint32_t height)
{
    Layer page;
    page.content_to_pixels = scaling(10, 10);
    page.width = width;
    page.height = height;
    return page;
}

TEST(MaskLayer, IsThePartThatIsSeen)
{
    const Layer mask = mask_layer(page_of(100, 80), {1, 2, 1.5, 2.05});
    EXPECT_TRUE(mask.is_mask);
    EXPECT_EQ(mask.width, 9U);
    EXPECT_EQ(mask.height, 5U);
    EXPECT_EQ(mask.content_to_pixels.m[4], -8);
    EXPECT_EQ(mask.content_to_pixels.m[5], -18);
}

TEST(MaskLayer, BesideThePageIsOnePixel)
{
    const Layer right = mask_layer(page_of(100, 80), {20, 0, 30, 1});
    EXPECT_EQ(right.width, 1U);
    EXPECT_EQ(right.height, 12U);
    EXPECT_EQ(right.content_to_pixels.m[4], -99);
    const Layer left = mask_layer(page_of(100, 80), {-30, 0, -20, 1});
    EXPECT_EQ(left.width, 1U);
    EXPECT_EQ(left.content_to_pixels.m[4], 0);
}

TEST(MaskLayer, OfAllIsThePage)
{
    const Layer mask = mask_layer(page_of(100, 80), {-kFar, -kFar, kFar, kFar});
    EXPECT_EQ(mask.width, 100U);
    EXPECT_EQ(mask.height, 80U);
    EXPECT_EQ(mask.content_to_pixels.m[0], 10);
    EXPECT_EQ(mask.content_to_pixels.m[4], 0);
}

TEST(CutMask, StaysWholeWhereTheBoxLiesNowhere)
{
    auto mask = std::make_shared<MaskImage>();
    mask->width = 40;
    mask->height = 40;
    mask->samples.assign(1600, 9);
    mask->pixels_to_content = {{1e-300, 1e-300, -1e-300, 1e-300, 0, 0}};
    EXPECT_EQ(cut_to(mask, {1e300, 1e300, 1e300, 1e300}), mask);
}

}  // namespace
