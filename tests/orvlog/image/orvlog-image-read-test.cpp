#include "orvlog/image/orvlog-image-read.h"

#include "orvlog/image/gop-operand-pointer.h"
#include "orvlog/image/orvlog-image-wrapper.h"
#include "tests/support/failure-sweep.h"
#include "tests/support/fake-image.h"
#include "tests/support/record-log.h"
#include "tests/support/temp-folder.h"
#include "tests/support/test-session.h"

#include <gtest/gtest.h>

#include <cstring>

namespace
{

using orvlog::test::attribute_of;
using orvlog::test::FakeImage;
using orvlog::test::RecordLog;
using orvlog::test::sweep_failures;
using orvlog::test::TempFolder;
using orvlog::test::TestSession;

std::vector<std::string> elements_of(const std::string& text)
{
    std::vector<std::string> result;
    for (size_t at = text.find('<'); at != std::string::npos; at = text.find('<', at + 1))
    {
        if (text[at + 1] == '/' || text[at + 1] == '!')
            continue;
        result.push_back(text.substr(at + 1, text.find_first_of(" >", at) - at - 1));
    }
    return result;
}

class ReadThrough : public testing::Test
{
protected:
    ReadThrough()
    {
        log.session.image.image_logging_mode = ORVLOG_MODE_BASE;
        log.session.object_type = 8;
    }
    // Replaces, dumps, ends the call.
    std::string capture(uint32_t expected)
    {
        GOP_OperandPointer* operand = fake.operand();
        ORVLOG_ReplaceImageOperand(&log.session, &operand, &kept);
        EXPECT_EQ(ORVLOG_DumpOperandPointer(&log.session, operand), expected);
        ORVLOG_EndImageCall(reinterpret_cast<GOP_OperandImagePointer*>(operand), kept);
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
    uint32_t kept = 0;
};

TEST_F(ReadThrough, WholeImage)
{
    const std::string text = capture(1);
    const std::vector<std::string> expected = {
        "GOP_OperandImagePointer",
        "GOP_OperandImage",
        "GOP_Operand",
        "GOP_ImagePrepareFn",
        "GOP_OperandImagePointer",
        "GOP_OperandImage",
        "GOP_Operand",
        "GOP_ImageReadFn",
        "img_buf",
        "BufferUInt8",
        "GOP_ImageReadFn",
        "img_buf",
        "BufferUInt8",
        "GOP_ImageReadFn",
        "img_buf",
        "GOP_ImageFinishFn",
        "GOP_OperandImagePointer",
        "GOP_OperandImage",
        "GOP_Operand",
    };
    EXPECT_EQ(elements_of(text), expected);
    EXPECT_EQ(fake.take_calls(), "prepare(8,3,0) read read read finish ");
    EXPECT_NE(text.find(R"(</GOP_OperandImagePointer>
<GOP_ImagePrepareFn Id="10" return="TRUE" operand_p_replaced="FALSE" object_type="[0x8] GCM_OBJ_IMAGE " )"
                        R"(decompress="FALSE" rescale="FALSE" use_render_color_space="FALSE" )"
                        R"(req_bit_depth="GNC_BMP_DEPTH_8" need_attr="FALSE">)"),
              std::string::npos);
    EXPECT_NE(text.find(R"(<GOP_ImageReadFn Id="11" return="TRUE" skip_pixels="0" img_row_step="2" img_returned="2">
  <img_buf>
    <BufferUInt8 len="2">
03 04 
    </BufferUInt8>
  </img_buf>
</GOP_ImageReadFn>
<GOP_ImageReadFn Id="11" return="TRUE" skip_pixels="0" img_row_step="2" img_returned="0">
  <img_buf>
  </img_buf>
</GOP_ImageReadFn>
<GOP_ImageFinishFn Id="11" return="TRUE">)"),
              std::string::npos);
    EXPECT_EQ(log.allocator.outstanding(), 0U);
}

TEST_F(ReadThrough, TransparentModeReadsNothing)
{
    log.session.image.image_logging_mode = ORVLOG_MODE_TRANSPARENT;
    EXPECT_EQ(elements_of(capture(1)),
              (std::vector<std::string>{"GOP_OperandImagePointer", "GOP_OperandImage", "GOP_Operand"}));
    EXPECT_EQ(fake.take_calls(), "");
}

TEST_F(ReadThrough, IntoFiles)
{
    use_files("side");
    capture(1);
    EXPECT_EQ(folder.names(), (std::vector<std::string>{"side-img-10.bin"}));
    EXPECT_EQ(folder.read("side-img-10.bin"), "\x01\x02\x03\x04");
    capture(1);
    EXPECT_EQ(folder.names(), (std::vector<std::string>{"side-img-10.bin", "side-img-20.bin"}));
}

TEST_F(ReadThrough, AttributesAreReadWhenAskedFor)
{
    log.session.image.image_dump_flag = 1;
    fake.image.im_Flags |= GOP_OP_FLAGS_HAS_ATTRIBUTE_DATA;
    const std::string text = capture(1);
    EXPECT_EQ(fake.take_calls(), "prepare(8,3,1) read read read finish ");
    EXPECT_NE(text.find(R"( img_row_step="2" img_returned="2" attr_row_step="2" attr_returned="2">)"),
              std::string::npos);
    EXPECT_NE(text.find("a2 a3 "), std::string::npos);
}

TEST_F(ReadThrough, DirectImageIsReadForItsAttributesAlone)
{
    fake.record.imp_DirectImage = fake.bytes.data();
    capture(1);
    EXPECT_EQ(fake.take_calls(), "");
    fake.image.im_Flags |= GOP_OP_FLAGS_HAS_ATTRIBUTE_DATA;
    capture(1);
    EXPECT_EQ(fake.take_calls(), "");
    log.session.image.image_dump_flag = 1;
    capture(1);
    EXPECT_EQ(fake.take_calls(), "prepare(8,3,1) read read read finish ");
}

TEST_F(ReadThrough, UnknownSizeFails)
{
    fake.image.im_Operand.go_ColorSpaceFamily = GCM_CSF_NAMED;
    capture(0);
    EXPECT_EQ(fake.take_calls(), "");
}

TEST_F(ReadThrough, FailedPrepareHasNoFinish)
{
    fake.prepare_result = 0;
    capture(0);
    EXPECT_EQ(fake.take_calls(), "prepare(8,3,0) ");
}

TEST_F(ReadThrough, FailedReadEndsInAFinish)
{
    fake.fail_read = 1;
    capture(0);
    EXPECT_EQ(fake.take_calls(), "prepare(8,3,0) read read finish ");
}

TEST_F(ReadThrough, FailedFileFailsTheRead)
{
    use_files("no-such-folder/side");
    capture(0);
    EXPECT_EQ(fake.take_calls(), "prepare(8,3,0) read finish ");
}

TEST_F(ReadThrough, CompressedImageIsAskedForInPieces)
{
    fake.image.im_ImageEncoding = 2;
    fake.bytes.assign(1500, 7);
    const std::string text = capture(1);
    EXPECT_EQ(fake.take_calls(), "prepare(8,3,0) read read read finish ");
    EXPECT_NE(text.find(R"( img_row_step="0" img_returned="1024">)"), std::string::npos);
    EXPECT_NE(text.find(R"( img_row_step="0" img_returned="476">)"), std::string::npos);
}

TEST_F(ReadThrough, ReplacementIsReadInsteadOfTheImage)
{
    FakeImage other(3, 1);
    fake.replacement = other.get();
    capture(1);
    EXPECT_EQ(fake.take_calls(), "prepare(8,3,0) ");
    EXPECT_EQ(other.take_calls(), "read read finish ");
}

TEST_F(ReadThrough, GrayscaleStatusIsClearedInTheCopyAlone)
{
    fake.record.imp_GrayscaleDetectStatus = GOP_GDS_ON_UNKNOWN;
    GOP_OperandPointer* operand = fake.operand();
    ORVLOG_ReplaceImageOperand(&log.session, &operand, &kept);
    fake.prepare_result = 0;
    fake.record.imp_ImagePrepareFn = [](GOP_OperandImagePointer**, uint32_t, uint32_t, uint32_t, float, float, float,
                                        float, uint32_t, uint32_t, uint32_t) -> uint32_t { return 0; };
    auto* record = reinterpret_cast<GOP_OperandImagePointer*>(operand);
    EXPECT_EQ(orvlog_capture_image(record), 0U);
    EXPECT_EQ(fake.record.imp_GrayscaleDetectStatus, uint32_t{GOP_GDS_ON_UNKNOWN});
    ORVLOG_EndImageCall(record, kept);
    log.take();
}

TEST_F(ReadThrough, EndlessImageIsCutOff)
{
    fake.endless = true;
    const std::string text = capture(0);
    EXPECT_NE(text.find("\n<!--\nORVLOG: WARNING: Image goes on beyond its size.\n-->\n"), std::string::npos);
    EXPECT_TRUE(fake.take_calls().ends_with("read finish "));
    EXPECT_EQ(text.substr(0, 30), "<GOP_OperandImagePointer Id=\"1");
}

TEST_F(ReadThrough, NegativeCountsEndTheRead)
{
    fake.claim = -1;
    capture(0);
    EXPECT_EQ(fake.take_calls(), "prepare(8,3,0) read finish ");
}

TEST_F(ReadThrough, CountsBeyondTheBufferEndIt)
{
    fake.claim = 3;
    fake.endless = true;
    const std::string text = capture(0);
    EXPECT_NE(text.find("img_returned=\"3\""), std::string::npos);
    EXPECT_EQ(text.find("<BufferUInt8 len=\"3\">"), std::string::npos);
    EXPECT_NE(text.find("Image goes on beyond its size."), std::string::npos);
    EXPECT_TRUE(fake.take_calls().ends_with("read finish "));
}

TEST_F(ReadThrough, BytesThatWereClaimedAndNotWrittenAreZero)
{
    fake.bytes = {7};
    fake.claim = 2;
    fake.fail_read = 1;
    const std::string text = capture(0);
    EXPECT_NE(text.find("img_returned=\"2\">\n  <img_buf>\n    <BufferUInt8 len=\"2\">\n07 00 \n    </BufferUInt8>\n"),
              std::string::npos)
        << text;
}

TEST_F(ReadThrough, EmptyImageIsPreparedAndFinished)
{
    fake.image.im_ImageHeightPixels = 0;
    fake.bytes.clear();
    capture(1);
    EXPECT_EQ(fake.take_calls(), "prepare(8,3,0) read finish ");
}

TEST_F(ReadThrough, AttributeBufferHasABytePerPixel)
{
    log.session.image.image_dump_flag = 5;
    fake.image.im_Flags |= GOP_OP_FLAGS_HAS_ATTRIBUTE_DATA;
    fake.image.im_Operand.go_ColorSpaceFamily = GCM_CSF_RGB;
    fake.bytes.assign(12, 9);
    use_files("side");
    const std::string text = capture(1);
    EXPECT_NE(text.find(R"( skip_pixels="0" img_row_step="6" img_returned="6" attr_row_step="2" attr_returned="2" )"
                        R"(ImageFileName="side-img-10.bin" AttrFileName="side-attr-11.bin">)"),
              std::string::npos);
    EXPECT_NE(text.find(" need_attr=\"TRUE\">"), std::string::npos);
    EXPECT_EQ(folder.read("side-img-10.bin"), std::string(12, '\x09'));
    EXPECT_EQ(folder.read("side-attr-11.bin"), "\xA0\xA1\xA2\xA3");
}

// The record that prepare has left decides, not the one before it.
TEST_F(ReadThrough, PrepareDecidesOnTheAttributes)
{
    log.session.image.image_dump_flag = 1;
    FakeImage other(2, 2);
    other.image.im_Flags |= GOP_OP_FLAGS_HAS_ATTRIBUTE_DATA;
    fake.replacement = other.get();
    const std::string text = capture(1);
    EXPECT_NE(text.find(" need_attr=\"FALSE\">"), std::string::npos);
    EXPECT_NE(text.find(" attr_row_step=\"2\" attr_returned=\"2\">"), std::string::npos);
    EXPECT_EQ(fake.take_calls(), "prepare(8,3,0) ");
    EXPECT_EQ(other.take_calls(), "read read read finish ");
}

TEST_F(ReadThrough, SizeThatIsUnknownAfterThePrepareEndsInAFinish)
{
    FakeImage other(2, 2);
    other.image.im_Operand.go_ColorSpaceFamily = GCM_CSF_NAMED;
    fake.replacement = other.get();
    capture(0);
    EXPECT_EQ(fake.take_calls(), "prepare(8,3,0) ");
    EXPECT_EQ(other.take_calls(), "finish ");
}

TEST_F(ReadThrough, DepthOfTheTableIsAskedForWhereThePixelsAreIndices)
{
    fake.image.im_Flags |= GOP_OP_FLAGS_IS_INDEXED_COLOR;
    fake.image.im_IndexColorDepth = GNC_BMP_DEPTH_16;
    const std::vector<uint8_t> table(512);
    fake.record.imp_IndexColorTable = table.data();
    const std::string text = capture(1);
    EXPECT_EQ(attribute_of(text, "req_bit_depth"), "GNC_BMP_DEPTH_16");
    EXPECT_NE(text.find(" img_row_step=\"2\" img_returned=\"2\">"), std::string::npos);
}

TEST_F(ReadThrough, ReadThatFailsHasItsBytesInTheLogAllTheSame)
{
    fake.fail_read = 1;
    const std::string text = capture(0);
    EXPECT_NE(text.find(R"(<GOP_ImageReadFn Id="11" return="FALSE" skip_pixels="0" img_row_step="2" img_returned="2">
  <img_buf>
    <BufferUInt8 len="2">
03 04 
    </BufferUInt8>
  </img_buf>
</GOP_ImageReadFn>
<GOP_ImageFinishFn Id="11" return="TRUE">)"),
              std::string::npos);
}

TEST_F(ReadThrough, ClientsOwnRecordIsNotRead)
{
    fake.record.imp_Context = reinterpret_cast<void*>(uintptr_t{1});
    EXPECT_EQ(ORVLOG_DumpOperandPointer(&log.session, fake.operand()), 1U);
    EXPECT_EQ(log.take_value("Id"), "0");
}

TEST_F(ReadThrough, EachRefusedAllocationIsSurvived)
{
    log.session.image.image_dump_flag = 1;
    fake.image.im_Flags |= GOP_OP_FLAGS_HAS_ATTRIBUTE_DATA;
    use_files("side");
    const auto refused = [&](uint64_t n)
    {
        log.allocator.refuse(n);
        const uint64_t before = log.allocator.refused();
        GOP_OperandPointer* operand = fake.operand();
        ORVLOG_ReplaceImageOperand(&log.session, &operand, &kept);
        ORVLOG_DumpOperandPointer(&log.session, operand);
        if (operand != fake.operand())
            ORVLOG_EndImageCall(reinterpret_cast<GOP_OperandImagePointer*>(operand), kept);
        log.take();
        EXPECT_EQ(log.allocator.outstanding(), 0U) << n;
        return log.allocator.refused() != before;
    };
    EXPECT_GT(sweep_failures(refused), 0U);
    log.allocator.refuse(0);
}

TEST(ImagesInCalls, FailedReadFailsTheCallBehindTheForward)
{
    TestSession client;
    ASSERT_TRUE(client.set_base_mode());
    ASSERT_EQ(client.start_document(), 1U);
    ORV_DrawingInterface drawing = {};
    ASSERT_EQ(client.start_face(&drawing), 1U);
    FakeImage fake(2, 2);
    const GOP_Operator op = {};
    fake.fail_read = 0;
    client.forget();
    EXPECT_EQ(drawing.object_paint.fn(&drawing, 8, 0, &op, nullptr, 0, nullptr, fake.operand(), nullptr, nullptr), 0U);
    EXPECT_EQ(client.renderer.count("object_paint"), 1U);
    EXPECT_NE(client.renderer.last_operands[0], fake.operand());
    const std::string text = client.log();
    EXPECT_NE(text.find("<ORV_object_paint.operand1>\n"), std::string::npos);
    EXPECT_TRUE(text.ends_with("</ORV_object_paint>\n"));
    fake.fail_read = -1;
    EXPECT_EQ(drawing.object_paint.fn(&drawing, 8, 0, &op, nullptr, 0, nullptr, fake.operand(), nullptr, nullptr), 1U);
    drawing.drawing_finish.fn(&drawing);
    client.finish_document();
    client.shut_down();
    EXPECT_EQ(client.allocator.outstanding(), 0U);
}

TEST(ImagesInCalls, RendererPullsInsideTheElement)
{
    TestSession client;
    client.start_document();
    ORV_DrawingInterface drawing = {};
    client.start_face(&drawing);
    FakeImage fake(2, 1);
    const GOP_Operator op = {};
    client.renderer.on_draw(
        [&](const char*)
        {
            auto* record = reinterpret_cast<GOP_OperandImagePointer*>(client.renderer.last_operands[0]);
            uint8_t buffer[2];
            int32_t returned = 0;
            record->imp_ImageReadFn(record, record->imp_Context, 0, buffer, 2, 2, &returned, nullptr, 0, 0, nullptr);
        });
    client.forget();
    EXPECT_EQ(drawing.object_paint.fn(&drawing, 8, 0, &op, nullptr, 0, nullptr, fake.operand(), nullptr, nullptr), 1U);
    // Callbacks stand at the indent of the call itself.
    EXPECT_TRUE(client.log().ends_with(R"(  <GOP_ImageReadFn Id="10" return="TRUE" skip_pixels="0" img_row_step="2" )"
                                       R"(img_returned="2">
    <img_buf>
      <BufferUInt8 len="2">
01 02 
      </BufferUInt8>
    </img_buf>
  </GOP_ImageReadFn>
  </ORV_object_paint>
)")) << client.log();
    client.renderer.on_draw(nullptr);
    drawing.drawing_finish.fn(&drawing);
    client.finish_document();
    client.shut_down();
    EXPECT_EQ(client.allocator.outstanding(), 0U);
}

TEST(ImagesInCalls, GroupFreesItsMaskWhenItFinishes)
{
    TestSession client;
    client.start_document();
    ORV_DrawingInterface drawing = {};
    client.start_face(&drawing);
    FakeImage fake(2, 1);
    GOP_Operator op = {};
    op.op_MaskMode = GOP_MASK_IN;
    uint32_t group = 0;
    const uint64_t before = client.allocator.outstanding();
    EXPECT_EQ(drawing.group_start.fn(&drawing, 1, &group, nullptr, 0, 0, 0, 0, nullptr, 0, 0, 0, nullptr, &op,
                                     fake.operand(), nullptr, 0, 0, 0, nullptr, nullptr, nullptr),
              1U);
    EXPECT_GT(client.allocator.outstanding(), before);
    uint32_t replay = 0;
    drawing.group_finish.fn(&drawing, &replay);
    EXPECT_EQ(client.allocator.outstanding(), before);
    drawing.drawing_finish.fn(&drawing);
    client.finish_document();
    client.shut_down();
    EXPECT_EQ(client.allocator.outstanding(), 0U);
}

}  // namespace
