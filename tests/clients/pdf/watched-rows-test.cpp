// SPDX-License-Identifier: GPL-2.0-or-later

#include "clients/pdf/watched-rows.h"

#include <gtest/gtest.h>

#include <algorithm>

namespace
{

using namespace orvlog::pdf_client;
using Lines = std::vector<std::string>;

// Rows of 10 bytes, all alike but for one reading.
class ChangingRows : public ImageRows
{
public:
    bool restart() override
    {
        ++reading;
        next_ = 0;
        return true;
    }

    size_t read_row(uint8_t* row, size_t size) override
    {
        std::fill_n(row, size, uint8_t{7});
        if (reading == odd_reading && next_ == odd_row)
            row[9] = 8;
        return next_++ < rows ? size : 0;
    }

    int reading = 0;
    int odd_reading = 0;
    int odd_row = 0;
    int rows = 10000;

private:
    int next_ = 0;
};

class WatchedRows : public testing::Test
{
protected:
    WatchedRows()
    {
        image.width = 10;
        image.height = 10000;
        image.rows = source;
        watch(image, "image 1 0 R", [this](const std::string& line) { said.push_back(line); });
    }

    void read(int rows)
    {
        ASSERT_TRUE(image.rows->restart());
        uint8_t row[10];
        for (int i = 0; i < rows && image.rows->read_row(row, 10) == 10; ++i)
        {
        }
    }

    std::shared_ptr<ChangingRows> source = std::make_shared<ChangingRows>();
    Image image;
    Lines said;
};

TEST_F(WatchedRows, SayNothingOfReadingsThatAgree)
{
    read(10000);
    read(5000);
    read(10000);
    EXPECT_EQ(said, Lines());
}

TEST_F(WatchedRows, SayOnceThatAReadingDiffers)
{
    source->odd_reading = 2;
    source->odd_row = 9999;
    read(10000);
    read(9999);
    EXPECT_EQ(said, Lines());
    source->odd_reading = 3;
    read(10000);
    source->odd_reading = 4;
    read(10000);
    EXPECT_EQ(said, Lines{"image 1 0 R gave other bytes when it was read again"});
}

TEST_F(WatchedRows, HoldAReadingAgainstAFirstOneThatWasBrokenOff)
{
    source->odd_reading = 2;
    source->odd_row = 100;
    read(200);
    read(10000);
    EXPECT_EQ(said, Lines{"image 1 0 R gave other bytes when it was read again"});
}

TEST_F(WatchedRows, SayOnceThatTheRowsEndEarly)
{
    source->rows = 3;
    read(10000);
    read(10000);
    EXPECT_EQ(said, Lines{"image 1 0 R ends early: 30 of its 100000 bytes"});
}

TEST_F(WatchedRows, MayBeReadOnBehindTheirEnd)
{
    source->rows = 30;
    read(10000);
    ASSERT_TRUE(image.rows->restart());
    uint8_t row[10];
    for (int i = 0; i < 10000; ++i)
        EXPECT_EQ(image.rows->read_row(row, 10), i < 30 ? 10U : 0U);
    EXPECT_EQ(said, Lines{"image 1 0 R ends early: 300 of its 100000 bytes"});
}

TEST_F(WatchedRows, SayThatALaterReadingEndsBeforeTheFirst)
{
    read(10000);
    source->rows = 0;
    read(10000);
    EXPECT_EQ(said, (Lines{"image 1 0 R gave other bytes when it was read again",
                           "image 1 0 R ends early: 0 of its 100000 bytes"}));
}

}  // namespace
