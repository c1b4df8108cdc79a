// SPDX-License-Identifier: GPL-2.0-or-later

#include "clients/pdf/records/image-operand.h"

#include <gtest/gtest.h>

#include <algorithm>

namespace
{

using namespace orvlog::pdf_client;

// Rows whose bytes are all the number of the row; the data may end early.
class CountedRows : public ImageRows
{
public:
    explicit CountedRows(int rows) : rows_(rows) {}

    bool restart() override
    {
        ++restarts;
        next_ = 0;
        return true;
    }

    size_t read_row(uint8_t* row, size_t size) override
    {
        if (next_ >= rows_)
        {
            const size_t count = next_++ == rows_ ? std::min(size, rest) : 0;
            std::fill_n(row, count, uint8_t{0xEE});
            return count;
        }
        std::fill_n(row, size, static_cast<uint8_t>(next_++));
        ++read;
        return size;
    }

    int restarts = 0;
    int read = 0;
    size_t rest = 0;  // bytes of a last row that isn't whole

private:
    int rows_;
    int next_ = 0;
};

Image large_image(const std::shared_ptr<CountedRows>& rows)
{
    Image image;
    image.width = 100;
    image.height = 30;
    image.space.channels = 3;
    image.rows = rows;
    return image;
}

GOP_OperandImagePointer* image_of(const std::shared_ptr<ImageOperand>& operand)
{
    return reinterpret_cast<GOP_OperandImagePointer*>(operand->get());
}

uint32_t prepare(GOP_OperandImagePointer* image)
{
    return image->imp_ImagePrepareFn(&image, GCM_OBJ_IMAGE, 0, 0, 0, 0, 0, 0, 0, GNC_BMP_DEPTH_8, 0);
}

TEST(ImageOperand, DescribesTheImage)
{
    Image image = large_image(std::make_shared<CountedRows>(30));
    image.bits = 16;
    image.interpolate = true;
    const auto operand = ImageOperand::make(image, translation(7, 8), 0.5, 21);
    const GOP_OperandImagePointer* pointer = image_of(operand);
    EXPECT_EQ(pointer->op_UniqueId, 21U);
    EXPECT_EQ(pointer->imp_DirectImage, nullptr);
    EXPECT_EQ(pointer->imp_RowStep, 600U);
    const GOP_OperandImage* record = pointer->imp_Image;
    EXPECT_EQ(record->im_Operand.go_OpType, 5);
    EXPECT_EQ(record->im_Operand.go_Count, 4);
    EXPECT_EQ(record->im_Operand.go_ColorSpaceFamily, 1);
    EXPECT_EQ(record->im_ImageEncoding, 0);
    EXPECT_EQ(record->im_NumNonalphaChans, 3);
    // Colour data, constant alpha, smooth, asynchronous, the high byte first.
    EXPECT_EQ(record->im_Flags, 0x1U | 0x40U | 0x400U | 0x2000U | 0x8000U);
    EXPECT_EQ(record->im_Alpha, 0.5F);
    EXPECT_EQ(record->im_ImageWidthPixels, 100U);
    EXPECT_EQ(record->im_ImageHeightPixels, 30U);
    EXPECT_EQ(record->im_Transform.m[4], 7);
}

TEST(ImageOperand, PullsARowAtATime)
{
    const auto rows = std::make_shared<CountedRows>(30);
    const auto operand = ImageOperand::make(large_image(rows), identity(), 1, 1);
    GOP_OperandImagePointer* image = image_of(operand);
    ASSERT_EQ(prepare(image), 1U);
    EXPECT_EQ(rows->read, 0);
    std::vector<uint8_t> row(300);
    int32_t returned = -1;
    for (int y = 0; y < 30; ++y)
    {
        ASSERT_EQ(image->imp_ImageReadFn(image, image->imp_Context, 0, row.data(), 300, 300, &returned, nullptr, 0, 0,
                                         nullptr),
                  1U);
        EXPECT_EQ(returned, 300);
        EXPECT_EQ(row[299], y);
        EXPECT_EQ(rows->read, y + 1);
    }
    EXPECT_EQ(
        image->imp_ImageReadFn(image, image->imp_Context, 0, row.data(), 300, 300, &returned, nullptr, 0, 0, nullptr),
        1U);
    EXPECT_EQ(returned, 0);
    EXPECT_EQ(image->imp_ImageFinishFn(image, image->imp_Context), 1U);
    EXPECT_EQ(image->imp_ImageResetFn(image, image->imp_Context), 1U);
    EXPECT_EQ(rows->restarts, 2);
}

TEST(ImageOperand, GivesSeveralRowsWithTheStepThatIsAskedFor)
{
    const auto operand = ImageOperand::make(large_image(std::make_shared<CountedRows>(30)), identity(), 1, 1);
    GOP_OperandImagePointer* image = image_of(operand);
    prepare(image);
    std::vector<uint8_t> buffer(1000, 255);
    int32_t returned = 0;
    image->imp_ImageReadFn(image, image->imp_Context, 0, buffer.data(), 1000, 320, &returned, nullptr, 0, 0, nullptr);
    EXPECT_EQ(returned, 960);
    EXPECT_EQ(buffer[0], 0);
    EXPECT_EQ(buffer[320], 1);
    EXPECT_EQ(buffer[640], 2);
    EXPECT_EQ(buffer[960], 255);
}

TEST(ImageOperand, RefusesABufferBelowARow)
{
    const auto operand = ImageOperand::make(large_image(std::make_shared<CountedRows>(30)), identity(), 1, 1);
    GOP_OperandImagePointer* image = image_of(operand);
    prepare(image);
    uint8_t buffer[299];
    int32_t returned = 7;
    EXPECT_EQ(image->imp_ImageReadFn(image, image->imp_Context, 0, buffer, 299, 299, &returned, nullptr, 0, 0, nullptr),
              0U);
    EXPECT_EQ(returned, 0);
}

TEST(ImageOperand, EndsWhereTheDataEnds)
{
    const auto rows = std::make_shared<CountedRows>(2);
    rows->rest = 5;
    for (const bool restartable : {true, false})
    {
        Image source = large_image(rows);
        source.restartable = restartable;
        const auto operand = ImageOperand::make(source, identity(), 1, 1);
        EXPECT_FALSE(operand->is_direct());
        GOP_OperandImagePointer* image = image_of(operand);
        for (int pass = 0; pass < 2; ++pass)
        {
            ASSERT_EQ(prepare(image), 1U);
            std::vector<uint8_t> buffer(9000, 255);
            int32_t returned = 0;
            const auto read = [&]
            {
                return image->imp_ImageReadFn(image, image->imp_Context, 0, buffer.data(), 9000, 320, &returned,
                                              nullptr, 0, 0, nullptr);
            };
            EXPECT_EQ(read(), 1U);
            EXPECT_EQ(returned, 645);
            EXPECT_EQ(buffer[320], 1);
            EXPECT_EQ(buffer[644], 0xEE);
            EXPECT_EQ(buffer[645], 255);
            EXPECT_EQ(read(), 1U);
            EXPECT_EQ(returned, 0);
        }
    }
}

TEST(ImageOperand, IsNotDirectWithoutAllItsBytes)
{
    Image image = large_image(std::make_shared<CountedRows>(1));
    image.width = 4;
    image.height = 2;
    EXPECT_FALSE(ImageOperand::make(image, identity(), 1, 1)->is_direct());
}

TEST(ImageOperand, HoldsSmallImagesInMemory)
{
    Image image = large_image(std::make_shared<CountedRows>(2));
    image.width = 4;
    image.height = 2;
    image.index_table = {0, 0, 0, 255, 255, 255};
    image.bits = 1;
    const auto operand = ImageOperand::make(image, identity(), 1, 1);
    const GOP_OperandImagePointer* pointer = image_of(operand);
    EXPECT_TRUE(operand->is_direct());
    ASSERT_NE(pointer->imp_DirectImage, nullptr);
    EXPECT_EQ(pointer->imp_RowStep, 1U);
    EXPECT_EQ(pointer->imp_DirectImage[1], 1);
    EXPECT_EQ(pointer->imp_Image->im_Flags & 2U, 2U);
    EXPECT_EQ(pointer->imp_Image->im_IndexColorDepth, 3);
    EXPECT_EQ(pointer->imp_IndexColorTable[5], 255);
}

TEST(ImageOperand, LivesUntilItIsReleased)
{
    auto operand = ImageOperand::make(large_image(std::make_shared<CountedRows>(30)), identity(), 1, 1);
    GOP_OperandImagePointer* image = image_of(operand);
    const std::weak_ptr<ImageOperand> watch = operand;
    EXPECT_EQ(image->imp_ImageKeepFn(image), 1U);
    operand = nullptr;
    EXPECT_FALSE(watch.expired());
    EXPECT_EQ(prepare(image), 1U);
    image->imp_ImageReleaseFn(image);
    EXPECT_TRUE(watch.expired());
}

TEST(ImageOperand, DoesWithoutImagesOfAbsurdSizes)
{
    Image image = large_image(std::make_shared<CountedRows>(1));
    image.width = UINT32_MAX;
    EXPECT_EQ(ImageOperand::make(image, identity(), 1, 1), nullptr);
    image.width = 60000000;
    image.space.channels = 1;
    image.height = 100;
    image.restartable = false;
    EXPECT_EQ(ImageOperand::make(image, identity(), 1, 1), nullptr);
    image.height = 0;
    EXPECT_EQ(ImageOperand::make(image, identity(), 1, 1), nullptr);
}

TEST(ImageOperand, PassesAMask)
{
    auto mask = std::make_shared<MaskImage>();
    mask->width = 2;
    mask->height = 2;
    mask->samples = {1, 2, 3, 4};
    mask->pixels_to_content = scaling(0.5, 0.5);
    const auto operand = ImageOperand::make(mask, 1, 5);
    const GOP_OperandImagePointer* pointer = image_of(operand);
    EXPECT_EQ(pointer->imp_Image->im_Operand.go_ColorSpaceFamily, 0);
    EXPECT_EQ(pointer->imp_Image->im_Transform.m[0], 0.5);
    ASSERT_NE(pointer->imp_DirectImage, nullptr);
    EXPECT_EQ(pointer->imp_DirectImage[3], 4);
}

}  // namespace
