// Sums over surfaces: equal for equal pixels, whatever lies around them, and kept up to date.

#include "inspect/pixels/target-sum.h"

#include <gtest/gtest.h>

namespace
{

using orvlog::inspect::TargetSum;

struct Surface
{
    Surface(int width, int height, double dx, double dy)
        : surface(cairo_image_surface_create(CAIRO_FORMAT_ARGB32, width, height)), cr(cairo_create(surface))
    {
        cairo_surface_set_device_offset(surface, dx, dy);
        cairo_destroy(cr);
        cr = cairo_create(surface);
    }
    Surface(const Surface&) = delete;
    Surface& operator=(const Surface&) = delete;
    ~Surface()
    {
        cairo_destroy(cr);
        cairo_surface_destroy(surface);
    }
    void fill(double x, double y, double width, double height)
    {
        cairo_rectangle(cr, x, y, width, height);
        cairo_fill(cr);
    }

    cairo_surface_t* surface;
    cairo_t* cr;
};

TEST(TargetSum, SurfacesOfOtherSizesWithTheSamePixelsHaveTheSameSum)
{
    Surface one(100, 80, 0, 0);
    Surface other(20, 20, -30, -40);
    one.fill(35, 45, 5, 5);
    other.fill(35, 45, 5, 5);
    EXPECT_EQ(TargetSum(one.surface).value(), TargetSum(other.surface).value());
    other.fill(40, 45, 1, 1);
    EXPECT_NE(TargetSum(one.surface).value(), TargetSum(other.surface).value());
}

TEST(TargetSum, AnUpdateLooksAtItsAreaAlone)
{
    Surface one(50, 50, 0, 0);
    TargetSum sum(one.surface);
    const uint64_t empty = sum.value();
    one.fill(10, 10, 5, 5);
    sum.update(one.surface, {30, 30, 50, 50});
    EXPECT_EQ(sum.value(), empty);
    sum.update(one.surface, {-5, -5, 12, 200});
    EXPECT_NE(sum.value(), TargetSum(one.surface).value());
    sum.update(one.surface, {12, 0, 15, 50});
    EXPECT_EQ(sum.value(), TargetSum(one.surface).value());
}

TEST(TargetSum, WhatIsNoImageHasNoPixels)
{
    EXPECT_EQ(TargetSum(nullptr).value(), 0U);
    EXPECT_TRUE(orvlog::inspect::copy_pixels(nullptr).pixels.empty());
}

}  // namespace
