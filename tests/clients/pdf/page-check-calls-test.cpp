// SPDX-License-Identifier: GPL-2.0-or-later

#include "clients/pdf/page-check.h"

#include "clients/pdf/watched-rows.h"

#include <gtest/gtest.h>

#include <algorithm>

namespace
{

using namespace orvlog::pdf_client;
using Lines = std::vector<std::string>;

// An image of 100 rows of 10 bytes, of which some have been read.
class GivenRows : public ImageRows
{
public:
    explicit GivenRows(int odd_row) : odd_row_(odd_row) {}

    bool restart() override
    {
        next_ = 0;
        return true;
    }

    size_t read_row(uint8_t* row, size_t size) override
    {
        std::fill_n(row, size, static_cast<uint8_t>(next_++ == odd_row_ ? 8 : 7));
        return size;
    }

private:
    int odd_row_;
    int next_ = 0;
};

Image image_read(int rows, int odd_row)
{
    Image image;
    image.width = 10;
    image.height = 100;
    image.rows = std::make_shared<GivenRows>(odd_row);
    watch(image, "image", [](const std::string&) {});
    EXPECT_TRUE(image.rows->restart());
    uint8_t row[10];
    for (int i = 0; i < rows; ++i)
        EXPECT_EQ(image.rows->read_row(row, 10), 10U);
    return image;
}

class PageCheckCallsTest : public testing::Test
{
protected:
    // A page of one pixel in each run.
    void draw(uint32_t logged_pixel, uint32_t plain_pixel)
    {
        const auto give = [](const orvlog::cairo_renderer::PageSink& sink, uint32_t pixel)
        {
            cairo_surface_t* surface = cairo_image_surface_create(CAIRO_FORMAT_RGB24, 1, 1);
            cairo_surface_flush(surface);
            *reinterpret_cast<uint32_t*>(cairo_image_surface_get_data(surface)) = pixel;
            cairo_surface_mark_dirty(surface);
            sink({1, 1, 1, 1, surface, 0, 1});
            cairo_surface_destroy(surface);
        };
        give(check.first(), logged_pixel);
        give(check.second(), plain_pixel);
    }

    PageCheck check;
    CallDigest logged;
    CallDigest plain;
};

TEST_F(PageCheckCallsTest, TakesPagesThatAreAlike)
{
    draw(5, 5);
    check.end_page(1, logged, plain);
    EXPECT_EQ(check.pages_compared(), 1U);
    EXPECT_FALSE(check.differ());
    EXPECT_EQ(check.differing_by_document(), Lines());
    EXPECT_EQ(check.other_calls(), Lines());
}

TEST_F(PageCheckCallsTest, BlamesTheLoggerWhereTheCallsAreTheSame)
{
    logged.add(uint64_t{3});
    plain.add(uint64_t{3});
    draw(5, 6);
    check.end_page(1, logged, plain);
    EXPECT_TRUE(check.differ());
    EXPECT_EQ(check.pixels_different(), 1U);
    EXPECT_EQ(check.differing_by_document(), Lines());
}

TEST_F(PageCheckCallsTest, BlamesTheDocumentWhereItsCallsDiffer)
{
    logged.add(uint64_t{3});
    plain.add(uint64_t{4});
    draw(5, 6);
    check.end_page(7, logged, plain);
    EXPECT_FALSE(check.differ());
    EXPECT_EQ(check.pixels_different(), 1U);
    EXPECT_EQ(
        check.differing_by_document(),
        Lines{"page 7 differs from the one drawn without the logger, and the logger isn't the cause: the document "
              "asks for other calls each time it is read"});
    logged.clear();
    plain.clear();
    draw(5, 5);
    check.end_page(8, logged, plain);
    draw(5, 6);
    check.end_page(9, logged, plain);
    EXPECT_TRUE(check.differ());
    EXPECT_EQ(check.differing_by_document().size(), 1U);
}

TEST_F(PageCheckCallsTest, TellsOfOtherCallsThatComeOutTheSame)
{
    logged.add(0.5);
    plain.add(0.25);
    draw(5, 5);
    check.end_page(2, logged, plain);
    EXPECT_FALSE(check.differ());
    EXPECT_EQ(check.other_calls(),
              Lines{"page 2 asks for other calls each time it is read, so that two logs of it differ"});
}

TEST_F(PageCheckCallsTest, BlamesTheLoggerForAnAnswerOrAPageThatWasBrokenOff)
{
    logged.add_answer(false);
    plain.add_answer(true);
    plain.add(uint64_t{4});
    draw(5, 6);
    check.end_page(1, logged, plain);
    EXPECT_TRUE(check.differ());
    EXPECT_EQ(check.differing_by_document(), Lines());
    logged.clear();
    plain.clear();
    plain.add(uint64_t{4});
    logged.break_off();
    EXPECT_FALSE(logged.differs_by_itself(plain));
    EXPECT_FALSE(plain.differs_by_itself(logged));
}

TEST_F(PageCheckCallsTest, ComparesOfAnImageWhatBothRunsRead)
{
    constexpr int kNone = -1;
    logged.add(image_read(100, kNone));
    plain.add(image_read(0, kNone));
    EXPECT_FALSE(logged.differs_by_itself(plain));
    plain.clear();
    plain.add(image_read(50, kNone));
    EXPECT_FALSE(logged.differs_by_itself(plain));
    plain.clear();
    plain.add(image_read(50, 60));
    EXPECT_FALSE(logged.differs_by_itself(plain));
    plain.clear();
    plain.add(image_read(50, 20));
    EXPECT_TRUE(logged.differs_by_itself(plain));
    plain.add(image_read(50, kNone));
    EXPECT_TRUE(logged.differs_by_itself(plain));
}

}  // namespace
