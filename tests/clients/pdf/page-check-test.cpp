// SPDX-License-Identifier: GPL-2.0-or-later

#include "clients/pdf/page-check.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

namespace
{

using orvlog::cairo_renderer::Page;
using orvlog::cairo_renderer::PageSink;
using orvlog::pdf_client::PageCheck;

class PageCheckTest : public testing::Test
{
protected:
    static constexpr int kWide = 3;

    // Gives `sink` a page of one row for each colour, in bands of so many rows.
    static void give(const PageSink& sink, const std::vector<uint32_t>& rows, uint32_t band)
    {
        const auto height = static_cast<uint32_t>(rows.size());
        for (uint32_t first = 0; first < height; first += band)
            give_band(sink, rows, first, std::min(band, height - first));
    }

    static void give_band(const PageSink& sink, const std::vector<uint32_t>& rows, uint32_t first, uint32_t count)
    {
        cairo_surface_t* surface = cairo_image_surface_create(CAIRO_FORMAT_RGB24, kWide, static_cast<int>(count));
        auto* pixels = reinterpret_cast<uint32_t*>(cairo_image_surface_get_data(surface));
        const int stride = cairo_image_surface_get_stride(surface) / 4;
        for (uint32_t row = 0; row < count; ++row)
            std::fill_n(pixels + static_cast<std::ptrdiff_t>(row) * stride, kWide, rows[first + row]);
        cairo_surface_mark_dirty(surface);
        Page page;
        page.number = 1;
        page.width = kWide;
        page.height = static_cast<uint32_t>(rows.size());
        page.surface = surface;
        page.first_row = first;
        page.rows = count;
        sink(page);
        cairo_surface_destroy(surface);
    }

    PageCheck check_;
    PageSink first_ = check_.first();
    PageSink second_ = check_.second();
};

using Texts = std::vector<std::string>;

TEST_F(PageCheckTest, SamePages)
{
    for (int number = 1; number <= 3; ++number)
    {
        give(first_, {0x102030, 0x405060}, 2);
        give(second_, {0x102030, 0x405060}, 2);
        check_.end_page(number, {}, {});
    }
    EXPECT_EQ(check_.pages_compared(), 3U);
    EXPECT_EQ(check_.pixels_different(), 0U);
    EXPECT_FALSE(check_.differ());
    EXPECT_EQ(check_.not_compared(), Texts{});
}

TEST_F(PageCheckTest, CountsPixelsOfAllPages)
{
    give(first_, {1, 2, 3, 4}, 4);
    give(second_, {1, 2, 9, 4}, 4);
    check_.end_page(1, {}, {});
    give(first_, {1}, 1);
    give(second_, {2}, 1);
    check_.end_page(2, {}, {});
    EXPECT_EQ(check_.pages_compared(), 2U);
    EXPECT_EQ(check_.pixels_different(), 6U);
    EXPECT_TRUE(check_.differ());
}

TEST_F(PageCheckTest, PagesInBands)
{
    give(first_, {1, 2, 3, 4, 5}, 2);
    give(second_, {1, 2, 3, 4, 5}, 2);
    check_.end_page(1, {}, {});
    EXPECT_EQ(check_.pages_compared(), 1U);
    EXPECT_FALSE(check_.differ());
    EXPECT_EQ(check_.not_compared(), Texts{});
}

TEST_F(PageCheckTest, DifferenceInTheLastBand)
{
    give(first_, {1, 2, 3, 4, 5}, 2);
    give(second_, {1, 2, 3, 4, 6}, 2);
    check_.end_page(1, {}, {});
    EXPECT_EQ(check_.pages_compared(), 1U);
    EXPECT_EQ(check_.pixels_different(), 3U);
    EXPECT_EQ(check_.not_compared(), Texts{});
}

// What is held of one page isn't taken for the next one.
TEST_F(PageCheckTest, PagesInBandsFollowEachOther)
{
    for (const uint32_t shade : {1U, 7U})
    {
        give(first_, {shade, shade, shade}, 1);
        give(second_, {shade, shade, shade}, 1);
        check_.end_page(1, {}, {});
    }
    give(first_, {1, 2}, 2);
    give(second_, {1, 2}, 2);
    check_.end_page(3, {}, {});
    EXPECT_EQ(check_.pages_compared(), 3U);
    EXPECT_FALSE(check_.differ());
}

TEST_F(PageCheckTest, PagesThatOnlyOneRunHas)
{
    give(first_, {1, 2}, 2);
    check_.end_page(4, {}, {});
    give(second_, {1, 2}, 2);
    check_.end_page(5, {}, {});
    EXPECT_EQ(check_.pages_compared(), 0U);
    EXPECT_FALSE(check_.differ());
    EXPECT_EQ(check_.not_compared(), (Texts{"page 4 can't be compared: only one of its two drawings could be made",
                                            "page 5 can't be compared: only one of its two drawings could be made"}));
}

TEST_F(PageCheckTest, PagesOfOtherHeight)
{
    give(first_, {1, 2}, 2);
    give(second_, {1, 2, 3}, 3);
    check_.end_page(1, {}, {});
    EXPECT_EQ(check_.pages_compared(), 0U);
    EXPECT_EQ(check_.not_compared(), (Texts{"page 1 can't be compared: only one of its two drawings could be made"}));
}

// A run that is broken off within a page.
TEST_F(PageCheckTest, BandsThatAreMissing)
{
    give(first_, {1, 2, 3}, 1);
    give_band(second_, {1, 2, 3}, 0, 1);
    check_.end_page(1, {}, {});
    EXPECT_EQ(check_.pages_compared(), 0U);
    EXPECT_EQ(check_.not_compared(), (Texts{"page 1 can't be compared: only one of its two drawings could be made"}));
}

// A page that neither run has, as one that is left out.
TEST_F(PageCheckTest, PagesThatNeitherRunHas)
{
    check_.end_page(1, {}, {});
    EXPECT_EQ(check_.pages_compared(), 0U);
    EXPECT_EQ(check_.not_compared(), Texts{});
}

}  // namespace
