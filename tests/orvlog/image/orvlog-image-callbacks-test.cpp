#include "tests/orvlog/image/image-callbacks.h"

#include "orvlog/session/orvlog-frames.h"
#include "tests/support/decode-text.h"

#include <gtest/gtest.h>

#include <array>
#include <cstring>

namespace
{

using namespace orvlog::test;

constexpr const char* kChild =
    R"( imp_DirectImage="FALSE" imp_RowStep="0" imp_CompressedStreamLength="0" imp_ImageResetFn="TRUE" )"
    R"(imp_GrayscaleDetectStatus="GOP_GDS_OFF">
    <GOP_OperandImage im_ImageEncoding="0" im_QualitySetting="GOP_QUAL_HIGHEST_QUALITY" im_NumNonalphaChans="1" )"
    R"(im_Flags="[0x1] GOP_OP_FLAGS_HAS_COLOR_DATA " im_Alpha="1" im_ImageWidthPixels="2" im_ImageHeightPixels="2" )"
    R"(im_Transform="1 0 0 1 0 0 ">
      <GOP_Operand go_OpType="GOP_OPERAND_IMAGE" go_ColorInfo.GCM_ColorFlag="GCM_CF_BLACK" )"
    R"(go_ColorInfo.GOP_OperandColorSpace="GOP_OCS_INPUT" go_Count="3" go_Hints="[0] GOP_OPD_HINT_NONE " )"
    R"(go_ColorSpaceFamily="GCM_CSF_GRAY"/>
    </GOP_OperandImage>
  </GOP_OperandImagePointer>
)";

TEST_F(Callbacks, ReplacedRecordIsACopyWithCallbacksOfTheLogger)
{
    fake.image.im_Flags |= GOP_OP_FLAGS_ASYNCH_ACCESS;
    wrap();
    EXPECT_EQ(kept, 0U);
    EXPECT_NE(record->imp_Image, &fake.image);
    EXPECT_EQ(std::memcmp(record->imp_Image, &fake.image, sizeof fake.image), 0);
    EXPECT_EQ(record->op_UniqueId, 3U);
    EXPECT_EQ(record->imp_ImagePrepareFn, orvlog_image_prepare);
    EXPECT_EQ(record->imp_ImageReadFn, orvlog_image_read);
    EXPECT_EQ(record->imp_ImageFinishFn, orvlog_image_finish);
    EXPECT_EQ(record->imp_ImageResetFn, orvlog_image_reset);
    EXPECT_EQ(record->imp_ImageKeepFn, orvlog_image_keep);
    EXPECT_EQ(record->imp_ImageReleaseFn, orvlog_image_release);
    EXPECT_EQ(fake.record.imp_Context, &fake);
}

TEST_F(Callbacks, KeepAndReleaseNeedTheFlag)
{
    fake.record.imp_ImageResetFn = nullptr;
    wrap();
    EXPECT_EQ(record->imp_ImageResetFn, nullptr);
    EXPECT_EQ(record->imp_ImageKeepFn, nullptr);
    EXPECT_EQ(record->imp_ImageReleaseFn, nullptr);
}

TEST_F(Callbacks, FlagGivesKeepAndReleaseEvenWhereTheClientHasNone)
{
    fake.image.im_Flags |= GOP_OP_FLAGS_ASYNCH_ACCESS;
    fake.record.imp_ImageKeepFn = nullptr;
    fake.record.imp_ImageReleaseFn = nullptr;
    wrap();
    ASSERT_EQ(record->imp_ImageKeepFn, orvlog_image_keep);
    EXPECT_EQ(record->imp_ImageKeepFn(record), 0U);
    EXPECT_EQ(record->imp_ImageReleaseFn(record), nullptr);
}

TEST_F(Callbacks, OtherOperandsStayAsTheyAre)
{
    GOP_Operand flat = {GOP_OPERAND_FLAT, 0, 0, 0, 0};
    GOP_OperandPointer pointer = {};
    pointer.op_Operand = &flat;
    GOP_OperandPointer* operand = &pointer;
    ORVLOG_ReplaceImageOperand(&log.session, &operand, &kept);
    EXPECT_EQ(operand, &pointer);
    EXPECT_EQ(kept, 0U);
    operand = nullptr;
    ORVLOG_ReplaceImageOperand(&log.session, &operand, &kept);
    EXPECT_EQ(operand, nullptr);
    EXPECT_EQ(log.session.image_sequence[0], 0U);
    EXPECT_EQ(log.allocator.requests(), 0U);
}

TEST_F(Callbacks, EachImageRaisesTheSequenceByTen)
{
    wrap();
    EXPECT_EQ(log.session.image_sequence[0], 10U);
    EXPECT_EQ(log.session.image_sequence[1], 10U);
    EXPECT_EQ(orvlog_image_wrapper_of(record)->id, 10U);
    ORVLOG_EndImageCall(record, 0);
    EXPECT_EQ(log.allocator.outstanding(), 0U);
    fake.image.im_Operand.go_OpType = GOP_OPERAND_IMAGE_TILE;
    wrap();
    EXPECT_EQ(log.session.image_sequence[0], 20U);
    EXPECT_EQ(orvlog_image_wrapper_of(record)->id, 20U);
}

TEST_F(Callbacks, ContextHoldsWhatTheCallKnew)
{
    log.session.object_type = 8;
    ORVLOG_ColourFrame frame = {};
    for (uint32_t i = 0; i < 5; ++i)
        frame.ticket_space[i] = 100 + i;
    log.session.colour_frames = &frame;
    wrap();
    const ORVLOG_ImageContext* context = orvlog_image_wrapper_of(record)->context;
    EXPECT_EQ(context->object_type, 8U);
    EXPECT_EQ(context->render_description[3], 103U);
    EXPECT_EQ(context->session_id[15], 15);
    ORVLOG_EndImageCall(record, 0);
    log.session.colour_frames = nullptr;
    wrap();
    EXPECT_EQ(orvlog_image_wrapper_of(record)->context->render_description[3], 0U);
}

TEST_F(Callbacks, WithoutMemoryTheOperandStaysTheClients)
{
    GOP_OperandPointer* operand = fake.operand();
    log.allocator.refuse(1);
    ORVLOG_ReplaceImageOperand(&log.session, &operand, &kept);
    EXPECT_EQ(operand, fake.operand());
    EXPECT_EQ(log.take(), "");
    EXPECT_EQ(log.allocator.outstanding(), 0U);
    log.allocator.refuse(2);
    ORVLOG_ReplaceImageOperand(&log.session, &operand, &kept);
    EXPECT_EQ(operand, fake.operand());
    EXPECT_EQ(log.take(), "\n<!--\nORVLOG: WARNING: Image operand could not be replaced. Image callbacks will not be "
                          "logged.\n-->\n");
    EXPECT_EQ(log.allocator.outstanding(), 0U);
}

TEST_F(Callbacks, PrepareInPlace)
{
    wrap();
    EXPECT_EQ(prepare(5), 1U);
    EXPECT_EQ(fake.take_calls(), "prepare(5,3,0) ");
    EXPECT_EQ(log.take(),
              std::string(R"(<GOP_ImagePrepareFn Id="10" return="TRUE" operand_p_replaced="FALSE" object_type="[0x5] )"
                          R"(GCM_OBJ_TEXT GCM_OBJ_GRAPHICS " decompress="FALSE" rescale="FALSE" )"
                          R"(use_render_color_space="TRUE" req_bit_depth="GNC_BMP_DEPTH_8" need_attr="FALSE">
  <GOP_OperandImagePointer Id="11" op_UniqueId="3")") +
                  kChild + "</GOP_ImagePrepareFn>\n");
}

TEST_F(Callbacks, PrepareShowsWhatWasAskedFor)
{
    wrap();
    prepare(0, 0, 1, 6);
    EXPECT_TRUE(log.take().starts_with(
        R"(<GOP_ImagePrepareFn Id="10" return="TRUE" operand_p_replaced="FALSE" object_type="[0] " )"
        R"(decompress="FALSE" rescale="TRUE" max_width_rescale="1" min_width_rescale="0.5" )"
        R"(max_height_rescale="0.25" min_height_rescale="0.100000001" use_render_color_space="TRUE" )"
        R"~(req_bit_depth="UNKNOWN_VALUE(6)" need_attr="FALSE">
)~"));
    prepare(0xA, 1, 1);
    EXPECT_TRUE(log.take().starts_with(
        R"(<GOP_ImagePrepareFn Id="11" return="TRUE" operand_p_replaced="FALSE" object_type="[0xa] GCM_OBJ_LINE )"
        R"(GCM_OBJ_IMAGE " decompress="TRUE" max_width_rescale="1" min_width_rescale="0.5" )"
        R"(max_height_rescale="0.25" min_height_rescale="0.100000001">
)"));
    fake.prepare_result = 0;
    EXPECT_EQ(prepare(0, 2, 0), 0U);
    EXPECT_TRUE(log.take().starts_with(
        R"(<GOP_ImagePrepareFn Id="12" return="FALSE" operand_p_replaced="FALSE" object_type="[0] " )"
        R"(decompress="TRUE">
)"));
}

TEST_F(Callbacks, PrepareTakesOverWhatTheClientChangedInPlace)
{
    wrap();
    fake.changes_in_place = true;
    prepare();
    const std::string text = log.take();
    EXPECT_EQ(attribute_of(text, "op_UniqueId"), "99");
    EXPECT_EQ(attribute_of(text, "im_ImageHeightPixels"), "1");
    EXPECT_EQ(record->imp_ImagePrepareFn, orvlog_image_prepare);
    EXPECT_EQ(record->imp_Image->im_ImageHeightPixels, 1U);
    EXPECT_NE(record->imp_Image, &fake.image);
    // The client has no prepare any more.
    EXPECT_EQ(prepare(), 0U);
}

TEST_F(Callbacks, PrepareThatReplacesMakesAChain)
{
    FakeImage other(2, 2);
    other.record.op_UniqueId = 44;
    fake.replacement = other.get();
    wrap();
    GOP_OperandImagePointer* first = record;
    EXPECT_EQ(prepare(), 1U);
    EXPECT_NE(record, first);
    EXPECT_EQ(orvlog_image_wrapper_of(first)->next, record);
    EXPECT_EQ(log.take(),
              std::string(R"(<GOP_ImagePrepareFn Id="10" return="TRUE" operand_p_replaced="TRUE" object_type="[0] " )"
                          R"(decompress="FALSE" rescale="FALSE" use_render_color_space="TRUE" )"
                          R"(req_bit_depth="GNC_BMP_DEPTH_8" need_attr="FALSE">
  <GOP_OperandImagePointer Id="11" op_UniqueId="44")") +
                  kChild + "</GOP_ImagePrepareFn>\n");
    read();
    EXPECT_EQ(other.take_calls(), "read ");
    EXPECT_EQ(log.take_value("Id"), "11");
    FakeImage third(2, 2);
    fake.replacement = third.get();
    record = first;
    prepare();
    EXPECT_EQ(orvlog_image_wrapper_of(orvlog_image_wrapper_of(first)->next)->next, record);
    EXPECT_EQ(orvlog_image_wrapper_of(record)->id, 12U);
}

TEST_F(Callbacks, ReplacementThatCannotBeWrappedFails)
{
    GOP_OperandImagePointer empty = {};
    fake.replacement = &empty;
    wrap();
    GOP_OperandImagePointer* before = record;
    EXPECT_EQ(prepare(), 0U);
    EXPECT_EQ(record, before);
    EXPECT_EQ(log.take(), "");
}

TEST_F(Callbacks, ReplacementByNothingFails)
{
    wrap();
    GOP_OperandImagePointer* before = record;
    fake.record.imp_ImagePrepareFn = [](GOP_OperandImagePointer** operand_p, uint32_t, uint32_t, uint32_t, float, float,
                                        float, float, uint32_t, uint32_t, uint32_t) -> uint32_t
    {
        *operand_p = nullptr;
        return 1;
    };
    EXPECT_EQ(prepare(), 0U);
    EXPECT_EQ(record, before);
    EXPECT_EQ(log.take(), "");
}

TEST_F(Callbacks, ReplacementWithoutMemoryFails)
{
    FakeImage other(2, 2);
    other.image.im_Flags |= GOP_OP_FLAGS_ASYNCH_ACCESS;
    fake.replacement = other.get();
    wrap();
    log.allocator.refuse(1, true);
    // What lies in the pool already serves for some.
    GOP_OperandImagePointer* first = record;
    GOP_OperandImagePointer* before = record;
    for (uint32_t result = 1; result != 0;)
    {
        before = record = first;
        log.take();
        result = prepare();
    }
    EXPECT_EQ(log.allocator.refused(), 1U);
    EXPECT_EQ(record, before);
    EXPECT_EQ(log.take(), "");
    log.allocator.refuse(0);
    EXPECT_EQ(prepare(), 1U);
    EXPECT_NE(record, before);
    EXPECT_EQ(log.take_value("operand_p_replaced"), "TRUE");
}

// Even a prepare that fails may have exchanged the record.
TEST_F(Callbacks, FailedPrepareThatReplaces)
{
    FakeImage other(2, 2);
    fake.replacement = other.get();
    fake.prepare_result = 0;
    wrap();
    GOP_OperandImagePointer* before = record;
    EXPECT_EQ(prepare(), 0U);
    EXPECT_NE(record, before);
    EXPECT_TRUE(log.take().starts_with("<GOP_ImagePrepareFn Id=\"10\" return=\"FALSE\" operand_p_replaced=\"TRUE\" "));
}

TEST_F(Callbacks, ClientThatTakesItsImageAwayLeavesTheCopy)
{
    wrap();
    fake.record.imp_ImagePrepareFn = [](GOP_OperandImagePointer** operand_p, uint32_t, uint32_t, uint32_t, float, float,
                                        float, float, uint32_t, uint32_t, uint32_t) -> uint32_t
    {
        (*operand_p)->imp_Image = nullptr;
        return 1;
    };
    EXPECT_EQ(prepare(), 1U);
    ASSERT_NE(record->imp_Image, nullptr);
    EXPECT_EQ(log.take_value("im_ImageWidthPixels"), "2");
}

TEST_F(Callbacks, WrappedFilesOfAChainAreItsOwn)
{
    use_files("side");
    FakeImage other(2, 2);
    wrap();
    GOP_OperandImagePointer* first = record;
    read();
    fake.replacement = other.get();
    prepare();
    other.bytes = {9, 9, 9, 9};
    read();
    log.take();
    ORVLOG_EndImageCall(first, 0);
    record = nullptr;
    EXPECT_EQ(folder.names(), (std::vector<std::string>{"side-img-10.bin", "side-img-11.bin"}));
    EXPECT_EQ(folder.read("side-img-10.bin"), "\x01\x02");
    EXPECT_EQ(folder.read("side-img-11.bin"), "\x09\x09");
}

TEST_F(Callbacks, ReadIntoTheLog)
{
    wrap();
    EXPECT_EQ(read(), 1U);
    EXPECT_EQ(img_returned, 2);
    EXPECT_EQ(log.take(), R"(<GOP_ImageReadFn Id="10" return="TRUE" skip_pixels="0" img_row_step="2" img_returned="2">
  <img_buf>
    <BufferUInt8 len="2">
01 02 
    </BufferUInt8>
  </img_buf>
</GOP_ImageReadFn>
)");
    EXPECT_EQ(read(true), 1U);
    EXPECT_EQ(attr_returned, 2);
    EXPECT_EQ(log.take(), R"(<GOP_ImageReadFn Id="10" return="TRUE" skip_pixels="0" img_row_step="2" )"
                          R"(img_returned="2" attr_row_step="-2" attr_returned="2">
  <img_buf>
    <BufferUInt8 len="2">
03 04 
    </BufferUInt8>
  </img_buf>
  <attr_buf>
    <BufferUInt8 len="2">
a0 a1 
    </BufferUInt8>
  </attr_buf>
</GOP_ImageReadFn>
)");
    EXPECT_EQ(read(), 1U);
    EXPECT_EQ(log.take(), R"(<GOP_ImageReadFn Id="10" return="TRUE" skip_pixels="0" img_row_step="2" img_returned="0">
  <img_buf>
  </img_buf>
</GOP_ImageReadFn>
)");
}

TEST_F(Callbacks, FailedReadStillShowsWhatTheClientReturned)
{
    wrap();
    fake.read_result = 0;
    EXPECT_EQ(read(), 0U);
    EXPECT_EQ(log.take(), R"(<GOP_ImageReadFn Id="10" return="FALSE" skip_pixels="0" img_row_step="2" img_returned="2">
  <img_buf>
    <BufferUInt8 len="2">
01 02 
    </BufferUInt8>
  </img_buf>
</GOP_ImageReadFn>
)");
}

TEST_F(Callbacks, ClaimsBeyondTheBufferAreCutToIt)
{
    wrap();
    fake.claim = 1000000;
    EXPECT_EQ(read(true), 1U);
    const std::string text = log.take();
    EXPECT_EQ(attribute_of(text, "img_returned"), "1000000");
    EXPECT_EQ(attribute_of(text, "attr_returned"), "1000000");
    EXPECT_NE(text.find("<BufferUInt8 len=\"2\">\n01 02 \n"), std::string::npos);
    EXPECT_NE(text.find("<BufferUInt8 len=\"2\">\na0 a1 \n"), std::string::npos);
    fake.claim = -5;
    read();
    const std::string negative = log.take();
    EXPECT_EQ(attribute_of(negative, "img_returned"), "-5");
    EXPECT_EQ(negative.find("BufferUInt8"), std::string::npos);
}

TEST_F(Callbacks, ReadIntoFiles)
{
    use_files("side");
    wrap();
    EXPECT_EQ(read(true), 1U);
    EXPECT_EQ(log.take(), R"(<GOP_ImageReadFn Id="10" return="TRUE" skip_pixels="0" img_row_step="2" img_returned="2" )"
                          R"(attr_row_step="-2" attr_returned="2" ImageFileName="side-img-10.bin" )"
                          R"(AttrFileName="side-attr-11.bin">
</GOP_ImageReadFn>
)");
    read();
    EXPECT_EQ(log.take(), R"(<GOP_ImageReadFn Id="10" return="TRUE" skip_pixels="0" img_row_step="2" img_returned="2" )"
                          R"(ImageFileName="side-img-10.bin">
</GOP_ImageReadFn>
)");
    finish();
    EXPECT_EQ(folder.names(), (std::vector<std::string>{"side-attr-11.bin", "side-img-10.bin"}));
    EXPECT_EQ(folder.read("side-img-10.bin"), "\x01\x02\x03\x04");
    EXPECT_EQ(folder.read("side-attr-11.bin"), "\xA0\xA1");
}

TEST_F(Callbacks, FailedReadWritesNothingToItsFile)
{
    use_files("side");
    wrap();
    fake.read_result = 0;
    EXPECT_EQ(read(), 0U);
    EXPECT_EQ(log.take(), R"(<GOP_ImageReadFn Id="10" return="FALSE" skip_pixels="0" img_row_step="2" img_returned="2">
</GOP_ImageReadFn>
)");
    fake.read_result = 1;
    EXPECT_EQ(read(), 1U);
    finish();
    EXPECT_EQ(folder.read("side-img-10.bin"), "\x03\x04");
}

TEST_F(Callbacks, ReadFailsWhenTheFileCannotBeOpened)
{
    use_files("no-such-folder/side");
    wrap();
    EXPECT_EQ(read(), 0U);
    EXPECT_EQ(log.take(), R"(<GOP_ImageReadFn Id="10" return="TRUE" skip_pixels="0" img_row_step="2" img_returned="2">
</GOP_ImageReadFn>
)");
    // The files are tried once; from then on the client's word counts.
    EXPECT_EQ(read(), 1U);
    EXPECT_EQ(log.take_value("ImageFileName"), "(absent)");
    EXPECT_EQ(fake.take_calls(), "read read ");
}

TEST_F(Callbacks, AttrFileThatCannotBeOpenedTakesTheImageFileWithIt)
{
    use_files("side");
    wrap();
    std::filesystem::create_directory("side-attr-11.bin");
    EXPECT_EQ(read(true), 0U);
    EXPECT_EQ(log.take_value("ImageFileName"), "(absent)");
    EXPECT_EQ(folder.read("side-img-10.bin"), "");
    EXPECT_EQ(orvlog_image_wrapper_of(record)->image_file, nullptr);
}

TEST_F(Callbacks, FinishGivesOneWhateverTheClientSays)
{
    wrap();
    fake.finish_result = 0;
    EXPECT_EQ(finish(), 1U);
    EXPECT_EQ(log.take(), std::string(R"(<GOP_ImageFinishFn Id="10" return="FALSE">
  <GOP_OperandImagePointer Id="10" op_UniqueId="3")") +
                              kChild + "</GOP_ImageFinishFn>\n");
    fake.finish_result = 1;
    EXPECT_EQ(finish(), 1U);
    EXPECT_EQ(log.take_value("return"), "TRUE");
    EXPECT_EQ(fake.take_calls(), "finish finish ");
}

TEST_F(Callbacks, Reset)
{
    use_files("side");
    wrap();
    read();
    log.take();
    fake.reset_result = 0;
    EXPECT_EQ(record->imp_ImageResetFn(record, record->imp_Context), 0U);
    EXPECT_EQ(log.take(), "<GOP_ImageResetFn Id=\"10\" return=\"FALSE\">\n</GOP_ImageResetFn>\n");
    read();
    finish();
    EXPECT_EQ(folder.read("side-img-10.bin"), "\x01\x02\x01\x02");
}

TEST_F(Callbacks, ReadBehindAFinishFindsItsFilesClosed)
{
    use_files("side");
    wrap();
    read(true);
    finish();
    EXPECT_EQ(prepare(), 1U);
    log.take();
    EXPECT_EQ(read(true), 1U);
    const std::string text = log.take();
    EXPECT_EQ(attribute_of(text, "ImageFileName"), "(absent)");
    EXPECT_EQ(attribute_of(text, "AttrFileName"), "(absent)");
    finish();
    EXPECT_EQ(folder.read("side-img-10.bin"), "\x01\x02");
}

TEST_F(Callbacks, AttributesAfterAFirstReadWithoutThemHaveNoFile)
{
    use_files("side");
    wrap();
    read(false);
    log.take();
    EXPECT_EQ(read(true), 1U);
    EXPECT_EQ(log.take_value("AttrFileName"), "(absent)");
    EXPECT_EQ(folder.names(), (std::vector<std::string>{"side-img-10.bin"}));
}

TEST_F(Callbacks, FilesLeftOpenAreClosedWithTheImage)
{
    use_files("side");
    wrap();
    read(true);
    ORVLOG_EndImageCall(record, 0);
    record = nullptr;
    EXPECT_EQ(log.allocator.outstanding(), 0U);
    EXPECT_EQ(folder.read("side-img-10.bin"), "\x01\x02");
}

TEST_F(Callbacks, ElementsKeepTheDepthOfTheCall)
{
    wrap();
    log.session.writer.depth = 5;
    read();
    EXPECT_TRUE(log.stream.text().starts_with("<GOP_ImageReadFn"));
    log.session.writer.depth = 0;
}

TEST_F(Callbacks, WarningsOfTheSessionStayItsOwn)
{
    log.writer()->element_open = 1;
    orvlog_writer_defer_warning(log.writer(), "waits\n");
    wrap();
    read();
    EXPECT_EQ(log.take().find("waits"), std::string::npos);
    orvlog_writer_close_element(log.writer(), "a");
    EXPECT_EQ(log.take(), "</a>\n\n<!--\nwaits\n-->\n");
}

TEST_F(Callbacks, NoRecordFails)
{
    EXPECT_EQ(orvlog_image_prepare(nullptr, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0), 0U);
    GOP_OperandImagePointer* client = fake.get();
    EXPECT_EQ(orvlog_image_prepare(&client, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0), 0U);
    EXPECT_EQ(orvlog_image_read(client, nullptr, 0, nullptr, 0, 0, nullptr, nullptr, 0, 0, nullptr), 0U);
    EXPECT_EQ(orvlog_image_finish(nullptr, nullptr), 0U);
    EXPECT_EQ(orvlog_image_reset(client, nullptr), 0U);
    EXPECT_EQ(orvlog_image_keep(nullptr), 0U);
    EXPECT_EQ(orvlog_image_release(client), nullptr);
    EXPECT_EQ(ORVLOG_DeleteImagePool(client), nullptr);
    EXPECT_EQ(log.take(), "");
    EXPECT_EQ(fake.take_calls(), "");
}

TEST_F(Callbacks, ClientWithoutCallbacksFails)
{
    fake.record.imp_ImagePrepareFn = nullptr;
    fake.record.imp_ImageReadFn = nullptr;
    fake.record.imp_ImageFinishFn = nullptr;
    wrap();
    EXPECT_EQ(prepare(), 0U);
    EXPECT_EQ(record->imp_ImageReadFn(record, nullptr, 7, nullptr, 0, 0, nullptr, nullptr, 0, 0, nullptr), 0U);
    EXPECT_EQ(finish(), 1U);
    EXPECT_NE(log.take().find(R"(<GOP_ImageReadFn Id="11" return="FALSE" skip_pixels="7" img_row_step="0" )"
                              R"(img_returned="0">)"),
              std::string::npos);
}

}  // namespace
