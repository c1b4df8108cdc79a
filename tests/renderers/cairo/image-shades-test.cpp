// Images whose pixels have a palette, and images larger than a surface may be, of which several pixels become one.

#include "tests/renderers/cairo/image-records.h"
#include "tests/renderers/cairo/page-fixture.h"

#include <algorithm>
#include <ctime>
#include <limits>
#include <vector>

using namespace orvlog::records;

namespace
{

// An image one pixel of whose surface is one of the page, `reduced` pixels to one, that ends at the page's right edge.
class ShadesTest : public PageTest
{
protected:
    ImageSource& at_the_end(ImageSource& source, double reduced) const
    {
        const double pixel = 0.1 / reduced;
        const double columns = source.image.im_ImageWidthPixels;
        return source.place(4.0 - columns * pixel, 0.0, pixel);
    }
    void draw(ImageSource& source)
    {
        paint_record(nullptr, source.record(), {});
    }
    void draw_masked(ImageSource& mask)
    {
        const Operand black = Operand::gray(0);
        const GOP_Operator op = operation(GOP_ROP_PORTER_DUFF, 3, GOP_MASK_IN);
        Extra extra;
        extra.op = &op;
        extra.operand2 = mask.record();
        paint_record(Shape::box(0, 0, 4, 4).record(), black.record(), extra);
    }
    std::vector<uint32_t> row(uint32_t y, uint32_t first, uint32_t count)
    {
        std::vector<uint32_t> result;
        for (uint32_t x = first; x < first + count; ++x)
            result.push_back(at(x, y));
        return result;
    }
};

using Bytes = std::vector<uint8_t>;
using Pixels = std::vector<uint32_t>;

// So many rows of bytes, all `fill` but for the last ones.
Bytes rows_ending(size_t row_bytes, uint8_t fill, const std::vector<Bytes>& ends)
{
    Bytes bytes;
    for (const Bytes& end : ends)
    {
        bytes.resize(bytes.size() + row_bytes - end.size(), fill);
        bytes.insert(bytes.end(), end.begin(), end.end());
    }
    return bytes;
}

TEST_F(ShadesTest, ThreeBitsInARow)
{
    ImageSource mask(GCM_CSF_GRAY, 72024, 3,
                     rows_ending(9003, 0, {{0xE1, 0x00, 0x07}, {0xE0, 0x80, 0x03}, {0xE0, 0x00, 0x01}}));
    draw_masked(at_the_end(mask.depth(GNC_BMP_DEPTH_1), 3));
    EXPECT_EQ(row(0, 32, 8), (Pixels{0x000000, 0xFFFFFF, 0xC6C6C6, 0xFFFFFF, 0xFFFFFF, 0xFFFFFF, 0xFFFFFF, 0x555555}));
}

// What came of a last row that isn't whole counts, the rest of it is clear.
TEST_F(ShadesTest, RowThatCameInPart)
{
    Bytes bytes = rows_ending(4358, 0xFF, {{0xFF}, {0xFF}});
    bytes.resize(bytes.size() - 1);
    ImageSource mask(GCM_CSF_GRAY, 34864, 2, bytes);
    mask.bytes_a_read = 4358;
    draw_masked(at_the_end(mask.depth(GNC_BMP_DEPTH_1), 2));
    EXPECT_EQ(row(0, 34, 6), (Pixels{0x000000, 0x000000, 0x808080, 0x808080, 0x808080, 0x808080}));
    EXPECT_EQ(said_.size(), 1U);
}

// Both rows of pairs, then one row alone.
TEST_F(ShadesTest, PairsOfBits)
{
    ImageSource mask(GCM_CSF_GRAY, 34864, 3, rows_ending(4358, 0, {{0xF4, 0x00}, {0xE4, 0x01}, {0x80, 0x0B}}));
    draw_masked(at_the_end(mask.depth(GNC_BMP_DEPTH_1), 2));
    EXPECT_EQ(row(0, 30, 10), (Pixels{0xFFFFFF, 0xFFFFFF, 0x000000, 0x404040, 0x808080, 0xFFFFFF, 0xFFFFFF, 0xFFFFFF,
                                      0xFFFFFF, 0xBFBFBF}));
    EXPECT_EQ(row(1, 30, 10), (Pixels{0xFFFFFF, 0xFFFFFF, 0x808080, 0xFFFFFF, 0xFFFFFF, 0xFFFFFF, 0xFFFFFF, 0xFFFFFF,
                                      0x808080, 0x000000}));
}

// What lies behind the last column of a row isn't looked at.
TEST_F(ShadesTest, BitsBehindTheLastColumn)
{
    ImageSource mask(GCM_CSF_GRAY, 34861, 2, rows_ending(4358, 0, {{0x07}, {0x0F}}));
    draw_masked(at_the_end(mask.depth(GNC_BMP_DEPTH_1), 2));
    EXPECT_EQ(row(0, 38, 2), (Pixels{0xFFFFFF, 0xC0C0C0}));
}

// Bits are counted up to 16 to a pixel, and added up above.
TEST_F(ShadesTest, SixteenBitsAndMoreInARow)
{
    const Bytes end{0xFF, 0xFF, 0xFF, 0x0F};
    ImageSource sixteen(GCM_CSF_GRAY, 480000, 1, rows_ending(60000, 0, {end}));
    draw_masked(at_the_end(sixteen.depth(GNC_BMP_DEPTH_1), 16));
    ImageSource more(GCM_CSF_GRAY, 510000, 1, rows_ending(63750, 0, {end}));
    at_the_end(more.depth(GNC_BMP_DEPTH_1), 17).image.im_Transform.m[5] = 1;
    draw_masked(more);
    EXPECT_EQ(row(0, 36, 4), (Pixels{0xFFFFFF, 0xFFFFFF, 0x000000, 0x404040}));
    EXPECT_EQ(row(10, 36, 4), (Pixels{0xFFFFFF, 0xFFFFFF, 0x1E1E1E, 0x3C3C3C}));
}

TEST_F(ShadesTest, TwoColours)
{
    const Bytes table{255, 0, 0, 0, 0, 255};
    ImageSource source(GCM_CSF_RGB, 34864, 2, rows_ending(4358, 0, {{0xF4, 0x00}, {0xE4, 0x01}}));
    source.depth(GNC_BMP_DEPTH_1).flags(GOP_OP_FLAGS_IS_INDEXED_COLOR);
    source.image.im_IndexColorDepth = GNC_BMP_DEPTH_8;
    source.pointer.imp_IndexColorTable = table.data();
    draw(at_the_end(source, 2));
    EXPECT_EQ(row(0, 31, 5), (Pixels{0xFF0000, 0x0000FF, 0x4000BF, 0x800080, 0xFF0000}));
    EXPECT_EQ(at(39, 0), 0xBF0040U);
}

TEST_F(ShadesTest, ShadesOfManyBits)
{
    ImageSource source(GCM_CSF_GRAY, 34864, 2, rows_ending(34864, 255, {{0, 0, 51, 255}, {0, 100, 51, 0}}));
    draw(at_the_end(source, 2));
    EXPECT_EQ(row(0, 37, 3), (Pixels{0xFFFFFF, 0x191919, 0x595959}));
}

// A colour table may end with the last colour that is used.
TEST_F(ShadesTest, OnlyColoursInUseAreLookedUp)
{
    const Bytes table{0, 102, 204};
    for (const uint16_t depth : {GNC_BMP_DEPTH_1, GNC_BMP_DEPTH_8})
    {
        ImageSource source(GCM_CSF_RGB, 2, 1, Bytes(2, 0));
        source.depth(depth).flags(GOP_OP_FLAGS_IS_INDEXED_COLOR).place(0, depth == GNC_BMP_DEPTH_1 ? 0 : 1, 1);
        source.image.im_IndexColorDepth = GNC_BMP_DEPTH_8;
        source.pointer.imp_IndexColorTable = table.data();
        draw(source);
    }
    EXPECT_EQ(at(5, 5), 0x0066CCU);
    EXPECT_EQ(at(5, 15), 0x0066CCU);
}

// Colours that come later than the first row count as well.
TEST_F(ShadesTest, ColoursOfLaterRows)
{
    const Bytes table{255, 0, 0, 0, 0, 255};
    ImageSource source(GCM_CSF_RGB, 8, 2, {0x00, 0x01});
    source.depth(GNC_BMP_DEPTH_1).flags(GOP_OP_FLAGS_IS_INDEXED_COLOR).place(0, 0, 0.5);
    source.image.im_IndexColorDepth = GNC_BMP_DEPTH_8;
    source.pointer.imp_IndexColorTable = table.data();
    draw(source);
    EXPECT_EQ(at(37, 2), 0xFF0000U);
    EXPECT_EQ(at(32, 7), 0xFF0000U);
    EXPECT_EQ(at(37, 7), 0x0000FFU);
}

// Processor time is compared with that of another image in the same process, as machines differ.
TEST_F(ShadesTest, SingleBitsCostLittle)
{
    constexpr uint32_t kSide = 1024;
    constexpr uint32_t kMaskWidth = 34862;
    constexpr uint32_t kMaskHeight = 432;
    Bytes colours(kSide * kSide * 3);
    for (size_t i = 0; i < colours.size(); ++i)
        colours[i] = static_cast<uint8_t>(i * 7 + i / kSide);
    const Bytes bits((kMaskWidth + 7) / 8 * kMaskHeight, 0x5A);
    const auto seconds_for_each = [&](ImageSource& source, double samples, bool masked)
    {
        double best = std::numeric_limits<double>::infinity();
        for (int round = 0; round < 3; ++round)
        {
            source.place(0, 0, 0.0001);
            const std::clock_t begin = std::clock();
            masked ? draw_masked(source) : draw(source);
            best = std::min(best, static_cast<double>(std::clock() - begin));
        }
        return best / samples;
    };
    ImageSource picture(GCM_CSF_RGB, kSide, kSide, colours);
    ImageSource mask(GCM_CSF_GRAY, kMaskWidth, kMaskHeight, bits);
    const double of_pixels = seconds_for_each(picture.direct(), kSide * kSide, false);
    const double of_bits = seconds_for_each(mask.direct().depth(GNC_BMP_DEPTH_1), kMaskWidth * kMaskHeight, true);
    EXPECT_LT(of_bits * 5, of_pixels);
}

}  // namespace
