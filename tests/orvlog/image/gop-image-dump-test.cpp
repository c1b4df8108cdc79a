#include "orvlog/image/gop-image-dump.h"

#include "orvlog/image/orvlog-image-wrapper.h"
#include "tests/support/fake-image.h"
#include "tests/support/record-log.h"
#include "tests/support/temp-folder.h"

#include <gtest/gtest.h>

#include <array>
#include <cstring>

namespace
{

using orvlog::test::attribute_of;
using orvlog::test::FakeImage;
using orvlog::test::Guarded;
using orvlog::test::RecordLog;
using orvlog::test::TempFolder;

constexpr const char* kImageText =
    R"(  <GOP_OperandImage im_ImageEncoding="0" im_QualitySetting="GOP_QUAL_HIGHEST_QUALITY" im_NumNonalphaChans="1" )"
    R"(im_Flags="[0x1] GOP_OP_FLAGS_HAS_COLOR_DATA " im_Alpha="1" im_ImageWidthPixels="2" im_ImageHeightPixels="2" )"
    R"(im_Transform="1 0 0 1 0 0 ">
    <GOP_Operand go_OpType="GOP_OPERAND_IMAGE" go_ColorInfo.GCM_ColorFlag="GCM_CF_BLACK" )"
    R"(go_ColorInfo.GOP_OperandColorSpace="GOP_OCS_INPUT" go_Count="3" go_Hints="[0] GOP_OPD_HINT_NONE " )"
    R"(go_ColorSpaceFamily="GCM_CSF_GRAY"/>
  </GOP_OperandImage>
)";

constexpr const char* kPlainAttributes =
    R"( imp_RowStep="0" imp_CompressedStreamLength="0" imp_ImageResetFn="TRUE" imp_GrayscaleDetectStatus="GOP_GDS_OFF")";

class ImageDump : public testing::Test
{
protected:
    ~ImageDump() override
    {
        ORVLOG_DeleteImagePool(wrapped);
    }
    void wrap()
    {
        GOP_OperandPointer* operand = fake.operand();
        ORVLOG_ReplaceImageOperand(&log.session, &operand, &kept);
        ASSERT_NE(operand, fake.operand());
        wrapped = reinterpret_cast<GOP_OperandImagePointer*>(operand);
    }
    std::string dump(uint32_t with_data)
    {
        if (wrapped == nullptr)
            wrap();
        ORVLOG_DumpImagePointer(log.writer(), wrapped, with_data);
        return log.take();
    }
    void use_files(const char* prefix)
    {
        log.session.image.has_file_prefix = 1;
        std::strcpy(log.session.image.file_prefix, prefix);
    }

    TempFolder folder;
    RecordLog log;
    FakeImage fake{2, 2};
    uint32_t kept = 7;
    GOP_OperandImagePointer* wrapped = nullptr;
};

TEST_F(ImageDump, Image)
{
    Guarded<GOP_OperandImage> image(fake.image);
    ORVLOG_DumpImageOperand(log.writer(), image.get());
    EXPECT_EQ(log.take(),
              R"(<GOP_OperandImage im_ImageEncoding="0" im_QualitySetting="GOP_QUAL_HIGHEST_QUALITY" )"
              R"(im_NumNonalphaChans="1" im_Flags="[0x1] GOP_OP_FLAGS_HAS_COLOR_DATA " im_Alpha="1" )"
              R"(im_ImageWidthPixels="2" im_ImageHeightPixels="2" im_Transform="1 0 0 1 0 0 ">
  <GOP_Operand go_OpType="GOP_OPERAND_IMAGE" go_ColorInfo.GCM_ColorFlag="GCM_CF_BLACK" )"
              R"(go_ColorInfo.GOP_OperandColorSpace="GOP_OCS_INPUT" go_Count="3" go_Hints="[0] GOP_OPD_HINT_NONE " )"
              R"(go_ColorSpaceFamily="GCM_CSF_GRAY"/>
</GOP_OperandImage>
)");
    ORVLOG_DumpImageOperand(log.writer(), nullptr);
    ORVLOG_DumpImagePointer(log.writer(), nullptr, 1);
    EXPECT_EQ(log.take(), "");
}

TEST_F(ImageDump, ImageFields)
{
    GOP_OperandImage image = fake.image;
    image.im_ImageEncoding = 255;
    image.im_IndexColorDepth = 254;
    image.im_NumNonalphaChans = 253;
    image.im_Alpha = 0.1F;
    image.im_ImageWidthPixels = UINT32_MAX;
    image.im_ImageHeightPixels = 0;
    image.im_Flags = GOP_OP_FLAGS_IS_INDEXED_COLOR;
    ORVLOG_DumpImageOperand(log.writer(), &image);
    EXPECT_TRUE(log.take().starts_with(
        R"(<GOP_OperandImage im_ImageEncoding="255" im_IndexColorDepth="254" )"
        R"(im_QualitySetting="GOP_QUAL_HIGHEST_QUALITY" im_NumNonalphaChans="253" )"
        R"(im_Flags="[0x2] GOP_OP_FLAGS_IS_INDEXED_COLOR " im_Alpha="0.100000001" im_ImageWidthPixels="4294967295" )"
        R"(im_ImageHeightPixels="0" im_Transform=)"));
}

TEST_F(ImageDump, Qualities)
{
    const std::array<std::string, 9> names = {"GOP_QUAL_HIGHEST_QUALITY",  "GOP_QUAL_COMPRESS_OK",
                                              "GOP_QUAL_RESAMPLE_OK",      "GOP_QUAL_COMPRESS_AND_RESAMPLE_OK",
                                              "GOP_QUAL_SAME_AS_PREVIOUS", "GOP_QUAL_AVOID_LOSSY",
                                              "GOP_QUAL_DEFAULT",          "GOP_QUAL_LOSSY_OK",
                                              "UNKNOWN_VALUE(8)"};
    for (uint8_t quality = 0; quality < names.size(); ++quality)
    {
        fake.image.im_QualitySetting = quality;
        ORVLOG_DumpImageOperand(log.writer(), &fake.image);
        EXPECT_EQ(log.take_value("im_QualitySetting"), names[quality]);
    }
}

TEST_F(ImageDump, Flags)
{
    const std::array<std::pair<uint32_t, std::string>, 19> cases = {{
        {0x0U, "[0] "},
        {0x1U, "[0x1] GOP_OP_FLAGS_HAS_COLOR_DATA "},
        {0x2U, "[0x2] GOP_OP_FLAGS_IS_INDEXED_COLOR "},
        {0x4U, "[0x4] GOP_OP_FLAGS_HAS_ALPHA "},
        {0x8U, "[0x8] GOP_OP_FLAGS_HAS_STANDARD_ATTRIBUTES "},
        {0x10U, "[0x10] GOP_OP_FLAGS_IS_PREMULTIPLIED "},
        {0x20U, "[0x20] "},
        {0x40U, "[0x40] GOP_OP_FLAGS_HAS_CONSTANT_ALPHA "},
        {0x80U, "[0x80] "},
        {0x100U, "[0x100] GOP_OP_FLAGS_TRANSFORM_FROM_UNIT_SQUARE "},
        {0x200U, "[0x200] GOP_OP_FLAGS_HAS_ATTRIBUTE_DATA "},
        {0x400U, "[0x400] GOP_OP_FLAGS_SMOOTH "},
        {0x800U, "[0x800] GOP_OP_FLAGS_HALFTONED "},
        {0x1000U, "[0x1000] GOP_OP_FLAGS_REPLICATE_ALL_CHANS "},
        {0x2000U, "[0x2000] GOP_OP_FLAGS_ASYNCH_ACCESS "},
        {0x4000U, "[0x4000] GOP_OP_FLAGS_ENDIAN_LITTLE "},
        {0x8000U, "[0x8000] GOP_OP_FLAGS_ENDIAN_BIG "},
        {0x10000U, "[0x10000] "},
        {0xC001U, "[0xc001] GOP_OP_FLAGS_HAS_COLOR_DATA GOP_OP_FLAGS_ENDIAN_LITTLE GOP_OP_FLAGS_ENDIAN_BIG "},
    }};
    for (const auto& [flags, expected] : cases)
    {
        fake.image.im_Flags = flags;
        ORVLOG_DumpImageOperand(log.writer(), &fake.image);
        EXPECT_EQ(log.take_value("im_Flags"), expected);
    }
}

TEST_F(ImageDump, PointerWithoutData)
{
    EXPECT_EQ(dump(1), std::string(R"(<GOP_OperandImagePointer Id="10" op_UniqueId="3" imp_DirectImage="FALSE")") +
                           kPlainAttributes + ">\n" + kImageText + "</GOP_OperandImagePointer>\n");
}

TEST_F(ImageDump, DirectDataGoesIntoTheLog)
{
    fake.record.imp_DirectImage = fake.bytes.data();
    EXPECT_EQ(dump(1), std::string(R"(<GOP_OperandImagePointer Id="10" op_UniqueId="3" imp_DirectImage="TRUE")") +
                           kPlainAttributes + R"(>
  <imp_DirectImageData>
    <BufferUInt8 len="4">
01 02 03 04 
    </BufferUInt8>
  </imp_DirectImageData>
)" + kImageText + "</GOP_OperandImagePointer>\n");
    EXPECT_EQ(dump(0).find("imp_DirectImageData"), std::string::npos);
    EXPECT_TRUE(folder.names().empty());
}

TEST_F(ImageDump, DirectDataGoesIntoAFile)
{
    use_files("side");
    fake.record.imp_DirectImage = fake.bytes.data();
    EXPECT_EQ(dump(1), std::string(R"(<GOP_OperandImagePointer Id="10" op_UniqueId="3" imp_DirectImage="TRUE")") +
                           kPlainAttributes + R"( imp_DirectImageFileName="side-dir-10.bin">
)" + kImageText + "</GOP_OperandImagePointer>\n");
    EXPECT_EQ(folder.read("side-dir-10.bin"), "\x01\x02\x03\x04");
    EXPECT_EQ(attribute_of(dump(1), "imp_DirectImageFileName"), "side-dir-11.bin");
    EXPECT_EQ(dump(0).find("imp_DirectImageFileName"), std::string::npos);
    EXPECT_EQ(folder.names(), (std::vector<std::string>{"side-dir-10.bin", "side-dir-11.bin"}));
}

TEST_F(ImageDump, FileThatCannotBeOpenedIsWarnedOf)
{
    use_files("no-such-folder/side");
    fake.record.imp_DirectImage = fake.bytes.data();
    EXPECT_EQ(
        dump(1),
        std::string(R"(<GOP_OperandImagePointer Id="10" op_UniqueId="3" imp_DirectImage="TRUE")") + kPlainAttributes +
            R"(>
  <GOP_OperandImage im_ImageEncoding="0" im_QualitySetting="GOP_QUAL_HIGHEST_QUALITY" im_NumNonalphaChans="1" )"
            R"(im_Flags="[0x1] GOP_OP_FLAGS_HAS_COLOR_DATA " im_Alpha="1" im_ImageWidthPixels="2" )"
            R"(im_ImageHeightPixels="2" im_Transform="1 0 0 1 0 0 ">
    <GOP_Operand go_OpType="GOP_OPERAND_IMAGE" go_ColorInfo.GCM_ColorFlag="GCM_CF_BLACK" )"
            R"(go_ColorInfo.GOP_OperandColorSpace="GOP_OCS_INPUT" go_Count="3" go_Hints="[0] GOP_OPD_HINT_NONE " )"
            R"(go_ColorSpaceFamily="GCM_CSF_GRAY"/>

<!--
ORVLOG: WARNING: Could not open new image file
-->
  </GOP_OperandImage>
</GOP_OperandImagePointer>
)");
}

TEST_F(ImageDump, CompressedDirectImageHasNoBytes)
{
    fake.record.imp_DirectImage = fake.bytes.data();
    fake.image.im_ImageEncoding = 2;
    EXPECT_NE(dump(1).find("  <imp_DirectImageData>\n  </imp_DirectImageData>\n"), std::string::npos);
    ORVLOG_DeleteImagePool(wrapped);
    wrapped = nullptr;
    use_files("side");
    EXPECT_EQ(attribute_of(dump(1), "imp_DirectImageFileName"), "side-dir-20.bin");
    EXPECT_EQ(folder.read("side-dir-20.bin"), "");
}

TEST_F(ImageDump, CompressedIndexedImageHasAnEmptyTable)
{
    const uint8_t table[2] = {1, 2};
    fake.image.im_ImageEncoding = 2;
    fake.image.im_Flags = GOP_OP_FLAGS_IS_INDEXED_COLOR;
    fake.record.imp_IndexColorTable = table;
    fake.record.imp_CompressedStreamLength = 77;
    const std::string text = dump(1);
    EXPECT_EQ(attribute_of(text, "imp_IndexColorTable"), "");
    EXPECT_EQ(attribute_of(text, "imp_CompressedStreamLength"), "77");
    EXPECT_EQ(attribute_of(text, "im_ImageEncoding"), "2");
}

TEST_F(ImageDump, LongDataHasFiftyBytesInALine)
{
    FakeImage wide(51, 1);
    wide.record.imp_DirectImage = wide.bytes.data();
    ORVLOG_DumpImagePointer(log.writer(), wide.get(), 1);
    EXPECT_NE(log.take().find(R"(    <BufferUInt8 len="51">
01 02 03 04 05 06 07 08 09 0a 0b 0c 0d 0e 0f 10 11 12 13 14 15 16 17 18 19 1a 1b 1c 1d 1e 1f 20 21 22 23 24 25 26 27 )"
                              R"(28 29 2a 2b 2c 2d 2e 2f 30 31 32 
33 
    </BufferUInt8>
)"),
              std::string::npos);
}

// The row step has no part in what is dumped: the bytes are taken as they stand.
TEST_F(ImageDump, RowStepOfADirectImageIsNotFollowed)
{
    fake.record.imp_DirectImage = fake.bytes.data();
    fake.record.imp_RowStep = 4096;
    const std::string text = dump(1);
    EXPECT_EQ(attribute_of(text, "imp_RowStep"), "4096");
    EXPECT_NE(text.find("01 02 03 04 \n"), std::string::npos);
}

TEST_F(ImageDump, SpaceOfItsOwnComesLast)
{
    GCM_Csd csd = {};
    csd.csd_NumBaseChans = 1;
    fake.record.imp_Csd.cp_Csd = &csd;
    fake.image.im_Operand.go_ColorInfo = GOP_COLOR_INFO(GOP_OCS_OTHER, GCM_CF_GREY);
    const std::string text = dump(0);
    const size_t image_end = text.find("  </GOP_OperandImage>\n");
    ASSERT_NE(image_end, std::string::npos);
    EXPECT_TRUE(text.substr(image_end).starts_with("  </GOP_OperandImage>\n  <GCM_CsdPointer")) << text;
    EXPECT_TRUE(text.ends_with("  </GCM_CsdPointer>\n</GOP_OperandImagePointer>\n")) << text;
    EXPECT_EQ(text.find("go_ColorSpaceFamily"), std::string::npos);
}

TEST_F(ImageDump, DataOfUnknownSizeIsLeftOut)
{
    fake.record.imp_DirectImage = fake.bytes.data();
    fake.image.im_Operand.go_ColorSpaceFamily = GCM_CSF_NAMED;
    EXPECT_EQ(dump(1).find("imp_DirectImageData"), std::string::npos);
    fake.image.im_Operand.go_ColorSpaceFamily = GCM_CSF_GRAY;
    fake.image.im_ImageWidthPixels = 0x40000000;
    fake.image.im_ImageHeightPixels = 0x40000000;
    ORVLOG_DeleteImagePool(wrapped);
    wrapped = nullptr;
    const std::string text = dump(1);
    EXPECT_EQ(text.find("imp_DirectImageData"), std::string::npos);
    EXPECT_NE(text.find("\n<!--\nORVLOG: WARNING: Image is too large.\n-->\n"), std::string::npos);
    EXPECT_EQ(dump(0).find("WARNING"), std::string::npos) << "a callback's record has no bytes";
}

TEST_F(ImageDump, ColorTable)
{
    const std::array<uint8_t, 6> table = {0, 1, 2, 253, 254, 255};
    fake.image.im_Flags = GOP_OP_FLAGS_IS_INDEXED_COLOR;
    fake.image.im_IndexColorDepth = GNC_BMP_DEPTH_8;
    fake.image.im_Operand.go_Count = GNC_BMP_DEPTH_1;
    fake.image.im_Operand.go_ColorSpaceFamily = GCM_CSF_RGB;
    orvlog::test::GuardedBlock block(table.data(), table.size());
    fake.record.imp_IndexColorTable = block.data();
    EXPECT_TRUE(dump(0).starts_with(
        R"(<GOP_OperandImagePointer Id="10" op_UniqueId="3" imp_DirectImage="FALSE" imp_RowStep="0" )"
        R"(imp_CompressedStreamLength="0" imp_ImageResetFn="TRUE" imp_GrayscaleDetectStatus="GOP_GDS_OFF" )"
        R"(imp_IndexColorTable="0 1 2 253 254 255 ">)"));
    const_cast<GOP_OperandImage*>(wrapped->imp_Image)->im_Operand.go_ColorSpaceFamily = GCM_CSF_NAMED;
    EXPECT_EQ(attribute_of(dump(0), "imp_IndexColorTable"), "(absent)");
}

TEST_F(ImageDump, PointerFields)
{
    fake.record.imp_RowStep = UINT32_MAX;
    fake.record.imp_CompressedStreamLength = 4000000000U;
    fake.record.op_UniqueId = UINT32_MAX;
    fake.record.imp_ImageResetFn = nullptr;
    fake.image.im_Flags |= GOP_OP_FLAGS_ASYNCH_ACCESS;
    EXPECT_TRUE(dump(0).starts_with(
        R"(<GOP_OperandImagePointer Id="10" op_UniqueId="4294967295" imp_DirectImage="FALSE" )"
        R"(imp_RowStep="4294967295" imp_CompressedStreamLength="4000000000" imp_ImageResetFn="FALSE" )"
        R"(imp_ImageKeepFn="TRUE" imp_ImageReleaseFn="TRUE" imp_GrayscaleDetectStatus="GOP_GDS_OFF">)"));
    const std::array<std::string, 5> names = {"GOP_GDS_OFF", "GOP_GDS_ON_UNKNOWN", "GOP_GDS_ON_IS_GRAY",
                                              "GOP_GDS_ON_IS_COLOR", "UNKNOWN_VALUE(4)"};
    for (uint32_t status = 0; status < names.size(); ++status)
    {
        wrapped->imp_GrayscaleDetectStatus = status;
        EXPECT_EQ(attribute_of(dump(0), "imp_GrayscaleDetectStatus"), names[status]);
    }
}

TEST_F(ImageDump, TilesHaveTheirParameters)
{
    const GOP_TilingParameters tiling = {2, 3, 1, 0};
    fake.record.imp_TilingParameters = &tiling;
    EXPECT_EQ(dump(0).find("GOP_TilingParameters"), std::string::npos);
    const_cast<GOP_OperandImage*>(wrapped->imp_Image)->im_Operand.go_OpType = GOP_OPERAND_IMAGE_TILE;
    EXPECT_NE(dump(0).find(R"(">
  <GOP_TilingParameters it_XRepetitionInterval="2" it_YRepetitionInterval="3" it_XFlip="1" it_YFlip="0">
  </GOP_TilingParameters>
  <GOP_OperandImage )"),
              std::string::npos);
    wrapped->imp_TilingParameters = nullptr;
    EXPECT_EQ(dump(0).find("GOP_TilingParameters"), std::string::npos);
}

TEST_F(ImageDump, ClientsOwnRecordIsNotTakenForAWrapper)
{
    // The context is no address at all.
    fake.record.imp_Context = reinterpret_cast<void*>(uintptr_t{1});
    fake.record.imp_DirectImage = fake.bytes.data();
    use_files("side");
    ORVLOG_DumpImagePointer(log.writer(), fake.get(), 1);
    const std::string text = log.take();
    EXPECT_TRUE(text.starts_with("<GOP_OperandImagePointer Id=\"0\" op_UniqueId=\"3\" "));
    EXPECT_NE(text.find("  <imp_DirectImageData>\n    <BufferUInt8 len=\"4\">\n01 02 03 04 \n"), std::string::npos);
    EXPECT_TRUE(folder.names().empty());
}

TEST_F(ImageDump, BitDepths)
{
    const std::array<std::string, 7> names = {"GNC_BMP_DEPTH_1", "GNC_BMP_DEPTH_2",  "GNC_BMP_DEPTH_4",
                                              "GNC_BMP_DEPTH_8", "GNC_BMP_DEPTH_16", "GNC_BMP_DEPTH_32_FL",
                                              "UNKNOWN_VALUE(6)"};
    for (uint32_t depth = 0; depth < names.size(); ++depth)
    {
        orvlog_attr_bit_depth(log.writer(), "req_bit_depth", depth);
        EXPECT_EQ(log.take(), " req_bit_depth=\"" + names[depth] + "\"");
    }
}

}  // namespace
