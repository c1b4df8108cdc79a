// SPDX-License-Identifier: GPL-2.0-or-later

#include "clients/pdf/poppler/decoded-images.h"

#include "clients/pdf/poppler/images.h"

#include <gtest/gtest.h>

#include <cstring>

#include <Object.h>
#include <Stream.h>

namespace
{

using namespace orvlog::pdf_client;
using Bytes = DecodedImages::Bytes;

const ImageKey first = {1, 0, false};
const ImageKey second = {2, 0, false};
const ImageKey mask_of_first = {1, 0, true};

TEST(DecodedImages, HoldsWhatItIsGiven)
{
    DecodedImages images;
    EXPECT_EQ(images.find(first, 3), nullptr);
    images.keep(first, 3, {1, 2, 3});
    ASSERT_NE(images.find(first, 3), nullptr);
    EXPECT_EQ(*images.find(first, 3), (Bytes{1, 2, 3}));
    EXPECT_EQ(images.find(first, 4), nullptr);
    EXPECT_EQ(images.find(mask_of_first, 3), nullptr);
    EXPECT_EQ(images.find({1, 1, false}, 3), nullptr);
}

TEST(DecodedImages, ArePaintedAgainAfterTheFirstTime)
{
    DecodedImages images;
    EXPECT_FALSE(images.is_painted_again(first, 10));
    EXPECT_FALSE(images.is_painted_again(mask_of_first, 10));
    EXPECT_TRUE(images.is_painted_again(first, 10));
    EXPECT_TRUE(images.is_painted_again(first, DecodedImages::kMostBytes));
    EXPECT_FALSE(images.is_painted_again(first, DecodedImages::kMostBytes + 1));
}

TEST(DecodedImages, ForgetsWhatWasPaintedLongAgo)
{
    DecodedImages images;
    EXPECT_FALSE(images.is_painted_again(first, 10));
    for (int i = 0; i < 255; ++i)
        EXPECT_FALSE(images.is_painted_again({100 + i, 0, false}, 10));
    EXPECT_TRUE(images.is_painted_again(first, 10));
    for (int i = 0; i < 256; ++i)
        images.is_painted_again({1000 + i, 0, false}, 10);
    EXPECT_FALSE(images.is_painted_again(first, 10));
}

TEST(DecodedImages, GivesUpTheOneThatWasNotAskedForTheLongest)
{
    DecodedImages images;
    constexpr size_t kSize = DecodedImages::kMostBytes / 2;
    images.keep(first, kSize, Bytes(kSize));
    images.keep(second, kSize, Bytes(kSize));
    EXPECT_NE(images.find(first, kSize), nullptr);
    images.keep(mask_of_first, 1, Bytes(1));
    EXPECT_EQ(images.find(second, kSize), nullptr);
    EXPECT_NE(images.find(first, kSize), nullptr);
    EXPECT_EQ(images.bytes_held(), kSize + 1);
    images.keep(second, 2 * kSize + 1, Bytes(2 * kSize + 1));
    EXPECT_EQ(images.bytes_held(), kSize + 1);
}

// Counts how often it is read from its beginning.
class CountingStream : public MemStream
{
public:
    CountingStream(const char* bytes, size_t size, int& count)
        : MemStream(bytes, 0, static_cast<Goffset>(size), Object(objNull)), count_(count)
    {
    }

    void reset() override
    {
        ++count_;
        MemStream::reset();
    }

private:
    int& count_;
};

class PaintedImages : public testing::Test
{
protected:
    // A stencil of 16 by 4 pixels, and what is read of it: 8 bytes, if the data has as many.
    Bytes paint(const std::optional<ImageKey>& key, int readings = 1, bool inverted = true)
    {
        const Image image = stencil_of(stream(), 16, 4, inverted, {images, key});
        Bytes all;
        for (int i = 0; i < readings; ++i)
        {
            all.clear();
            EXPECT_TRUE(image.rows->restart());
            uint8_t row[2];
            for (size_t came = 2; came == 2 && all.size() < 8;)
            {
                came = image.rows->read_row(row, 2);
                all.insert(all.end(), row, row + came);
            }
        }
        return all;
    }

    void give(const char* data)
    {
        stream_ = Object(static_cast<Stream*>(new CountingStream(data, std::strlen(data), decoded)));
    }

    std::shared_ptr<DecodedImages> images = std::make_shared<DecodedImages>();
    int decoded = 0;

    Stream* stream()
    {
        return stream_.getStream();
    }

private:
    Object stream_;
};

TEST_F(PaintedImages, AreDecodedTwiceHoweverOftenTheyArePainted)
{
    give("abcdefgh");
    const Bytes expected = {'a', 'b', 'c', 'd', 'e', 'f', 'g', 'h'};
    for (int i = 0; i < 40; ++i)
        EXPECT_EQ(paint(first, 2), expected);
    // Two readings of the first painting, and one of the second.
    EXPECT_EQ(decoded, 3);
    EXPECT_EQ(paint(first, 1, false)[0], static_cast<uint8_t>(~'a'));
    EXPECT_EQ(decoded, 3);
}

TEST_F(PaintedImages, AreDecodedEachTimeWithoutAName)
{
    give("abcdefgh");
    for (int i = 0; i < 3; ++i)
        EXPECT_EQ(paint(std::nullopt).size(), 8U);
    EXPECT_EQ(decoded, 3);
}

TEST_F(PaintedImages, EndEarlyEachTimeAlike)
{
    give("abcde");
    for (int i = 0; i < 4; ++i)
        EXPECT_EQ(paint(first), (Bytes{'a', 'b', 'c', 'd', 'e'}));
    EXPECT_EQ(decoded, 2);
}

// A reading that is broken off leaves nothing behind.
TEST_F(PaintedImages, AreHeldWholeOrNotAtAll)
{
    give("abcdefgh");
    paint(first);
    const Image image = stencil_of(stream(), 16, 4, true, {images, first});
    EXPECT_TRUE(image.rows->restart());
    uint8_t row[2];
    EXPECT_EQ(image.rows->read_row(row, 2), 2U);
    EXPECT_EQ(images->bytes_held(), 0U);
    EXPECT_TRUE(image.rows->restart());
    for (int i = 0; i < 4; ++i)
        EXPECT_EQ(image.rows->read_row(row, 2), 2U);
    EXPECT_EQ(*images->find(first, 8), (Bytes{'a', 'b', 'c', 'd', 'e', 'f', 'g', 'h'}));
}

}  // namespace
