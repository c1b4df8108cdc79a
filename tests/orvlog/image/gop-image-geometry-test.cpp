#include "orvlog/image/gop-image-geometry.h"

#include "tests/support/fake-image.h"

#include <gtest/gtest.h>

namespace
{

using orvlog::test::FakeImage;

constexpr uint32_t kRender[5] = {1, 2, 3, 7, 5};

class ImageGeometry : public testing::Test
{
protected:
    // "rows x row bytes, table bytes", or "none".
    std::string measure(const uint32_t* render = nullptr)
    {
        if (ORVLOG_ImageGeometry(fake.get(), render, &size) == 0)
            return "none";
        return std::to_string(size.rows) + "x" + std::to_string(size.row_bytes) + "," +
               std::to_string(size.color_table_bytes);
    }
    void space(uint32_t value)
    {
        fake.image.im_Operand.go_ColorInfo = GOP_COLOR_INFO(value, 0);
    }

    FakeImage fake{10, 4};
    GOP_OperandImage& image = fake.image;
    GOP_Operand& head = fake.image.im_Operand;
    ORVLOG_ImageSize size = {};
};

TEST_F(ImageGeometry, HandsOverTheRecord)
{
    fake.record.imp_RowStep = 12;
    EXPECT_EQ(measure(), "4x10,0");
    EXPECT_EQ(size.prepare, fake.record.imp_ImagePrepareFn);
    EXPECT_EQ(size.read, fake.record.imp_ImageReadFn);
    EXPECT_EQ(size.finish, fake.record.imp_ImageFinishFn);
    EXPECT_EQ(size.context, &fake);
    EXPECT_EQ(size.direct_image, nullptr);
    EXPECT_EQ(size.row_step, 0U);
    EXPECT_EQ(size.depth, uint32_t{GNC_BMP_DEPTH_8});
    fake.record.imp_DirectImage = fake.bytes.data();
    EXPECT_EQ(measure(), "4x10,0");
    EXPECT_EQ(size.direct_image, fake.bytes.data());
    EXPECT_EQ(size.row_step, 12U);
}

TEST_F(ImageGeometry, InputFamilies)
{
    head.go_ColorSpaceFamily = GCM_CSF_RGB;
    EXPECT_EQ(measure(), "4x30,0");
    head.go_ColorSpaceFamily = GCM_CSF_CMYK;
    EXPECT_EQ(measure(), "4x40,0");
    image.im_Flags |= GOP_OP_FLAGS_HAS_ALPHA;
    EXPECT_EQ(measure(), "4x50,0");
    head.go_ColorSpaceFamily = GCM_CSF_NAMED;
    EXPECT_EQ(measure(), "none");
    head.go_ColorSpaceFamily = 4;
    EXPECT_EQ(measure(), "none");
}

TEST_F(ImageGeometry, RenderSpace)
{
    space(GOP_OCS_RENDER);
    image.im_NumNonalphaChans = 5;
    EXPECT_EQ(measure(kRender), "4x50,0");
    image.im_NumNonalphaChans = 0;
    EXPECT_EQ(measure(kRender), "4x0,0");
    image.im_Flags |= GOP_OP_FLAGS_HAS_ALPHA;
    EXPECT_EQ(measure(kRender), "4x80,0");
    EXPECT_EQ(measure(nullptr), "4x10,0");
    image.im_NumNonalphaChans = 1;
    EXPECT_EQ(measure(kRender), "4x20,0");
}

TEST_F(ImageGeometry, OtherSpaceCountsBothKindsOfChannels)
{
    space(GOP_OCS_OTHER);
    EXPECT_EQ(measure(), "none");
    GCM_Csd csd = {};
    csd.csd_NumBaseChans = 3;
    csd.csd_NumNamedChans = 2;
    fake.record.imp_Csd.cp_Csd = &csd;
    EXPECT_EQ(measure(), "4x50,0");
    space(3);
    EXPECT_EQ(measure(), "none");
}

TEST_F(ImageGeometry, DepthsRoundRowsUpToBytes)
{
    image.im_ImageWidthPixels = 9;
    const std::string expected[] = {"4x2,0", "4x3,0", "4x5,0", "4x9,0", "4x18,0", "4x36,0", "4x0,0"};
    for (uint16_t code = 0; code < 7; ++code)
    {
        head.go_Count = code;
        EXPECT_EQ(measure(), expected[code]);
        EXPECT_EQ(size.depth, code);
    }
    head.go_Count = 65535;
    EXPECT_EQ(measure(), "4x0,0");
}

TEST_F(ImageGeometry, PlanarHasARowForEachChannel)
{
    image.im_ImageEncoding = GOP_ENCODING_PLANAR;
    head.go_ColorSpaceFamily = GCM_CSF_RGB;
    EXPECT_EQ(measure(), "12x10,0");
    image.im_Flags |= GOP_OP_FLAGS_HAS_ALPHA;
    EXPECT_EQ(measure(), "16x10,0");
}

TEST_F(ImageGeometry, CompressedHasNoSize)
{
    image.im_ImageEncoding = 2;
    head.go_ColorSpaceFamily = GCM_CSF_NAMED;
    EXPECT_EQ(measure(), "0x0,0");
    EXPECT_EQ(size.encoding, 2U);
}

TEST_F(ImageGeometry, IndexedCountsIndicesInARow)
{
    image.im_Flags |= GOP_OP_FLAGS_IS_INDEXED_COLOR;
    image.im_IndexColorDepth = GNC_BMP_DEPTH_16;
    head.go_Count = GNC_BMP_DEPTH_4;
    head.go_ColorSpaceFamily = GCM_CSF_RGB;
    fake.record.imp_IndexColorTable = fake.bytes.data();
    EXPECT_EQ(measure(), "4x5,96");
    EXPECT_EQ(size.depth, uint32_t{GNC_BMP_DEPTH_16});
    EXPECT_EQ(size.color_table, fake.bytes.data());
    image.im_Flags |= GOP_OP_FLAGS_HAS_ALPHA;
    EXPECT_EQ(measure(), "4x5,128");
    image.im_ImageEncoding = GOP_ENCODING_PLANAR;
    EXPECT_EQ(measure(), "4x5,128");
}

TEST_F(ImageGeometry, TableEntriesFollowTheDepthOfThePixels)
{
    image.im_Flags |= GOP_OP_FLAGS_IS_INDEXED_COLOR;
    image.im_IndexColorDepth = GNC_BMP_DEPTH_1;
    const std::string expected[] = {"4x2,1", "4x3,1", "4x5,2", "4x10,32", "4x20,8192", "4x40,0", "4x0,0"};
    for (uint16_t code = 0; code < 7; ++code)
    {
        head.go_Count = code;
        EXPECT_EQ(measure(), expected[code]);
    }
}

TEST_F(ImageGeometry, SizesBeyondTheirRangeFail)
{
    image.im_ImageWidthPixels = UINT32_MAX;
    EXPECT_EQ(measure(), "none");
    image.im_ImageWidthPixels = INT32_MAX;
    EXPECT_EQ(measure(), "4x2147483647,0");
    head.go_Count = GNC_BMP_DEPTH_16;
    EXPECT_EQ(measure(), "none");
    image.im_ImageWidthPixels = 1;
    space(GOP_OCS_RENDER);
    image.im_NumNonalphaChans = 0;
    image.im_Flags |= GOP_OP_FLAGS_HAS_ALPHA;
    const uint32_t many[5] = {0, 0, 0, UINT32_MAX, 0};
    EXPECT_EQ(measure(many), "none");
    image.im_ImageEncoding = GOP_ENCODING_PLANAR;
    EXPECT_EQ(measure(many), "none");
    image.im_ImageHeightPixels = 0;
    EXPECT_EQ(measure(many), "0x2,0");
    image.im_Flags |= GOP_OP_FLAGS_IS_INDEXED_COLOR;
    image.im_IndexColorDepth = GNC_BMP_DEPTH_32_FL;
    head.go_Count = GNC_BMP_DEPTH_16;
    EXPECT_EQ(measure(many), "none");
}

// A renderer reads an image a row at a time, but the bytes of a direct one are counted in 32 bits.
TEST_F(ImageGeometry, DirectImageOfMoreThan32BitsFails)
{
    image.im_ImageWidthPixels = image.im_ImageHeightPixels = 0x10000;
    EXPECT_EQ(measure(), "65536x65536,0");
    fake.record.imp_DirectImage = fake.bytes.data();
    EXPECT_EQ(measure(), "none");
    EXPECT_EQ(size.too_large, 1U);
    image.im_ImageHeightPixels = 0xFFFF;
    EXPECT_EQ(measure(), "65535x65536,0");
    EXPECT_EQ(size.too_large, 0U);
}

TEST_F(ImageGeometry, TellsTooLargeFromUnknown)
{
    image.im_ImageWidthPixels = UINT32_MAX;
    EXPECT_EQ(measure(), "none");
    EXPECT_EQ(size.too_large, 1U);
    head.go_ColorSpaceFamily = GCM_CSF_NAMED;
    EXPECT_EQ(measure(), "none");
    EXPECT_EQ(size.too_large, 0U);
}

TEST_F(ImageGeometry, RecordWithoutAnImageFails)
{
    fake.record.imp_Image = nullptr;
    EXPECT_EQ(measure(), "none");
}

}  // namespace
