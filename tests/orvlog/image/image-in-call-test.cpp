// Image operands in the calls that carry them: the whole text of an element in both modes, with the bytes in the log
// and beside it; how files and elements are numbered; and what a failed read makes of each call.

#include "holv-core/ger/ger-error.h"
#include "tests/support/fake-image.h"
#include "tests/support/record-log.h"
#include "tests/support/temp-folder.h"
#include "tests/support/test-session.h"

#include <gtest/gtest.h>

namespace
{

using namespace orvlog::test;

constexpr const char* kPaint = R"(  <ORV_object_paint id="0" drawing_context="0" object_type_and_flag="8" )"
                               R"~(object_hints="[0] ORV_OBJ_HINT_NONE " path_pixel_placement="UNKNOWN_VALUE(9)">
    <ORV_object_paint.operand1>
)~";
constexpr const char* kPaintEnd = R"(    </ORV_object_paint.operand1>
  </ORV_object_paint>
)";

// The record as the call has it, and as the callbacks have it, from the id on.
constexpr const char* kOperandRest =
    R"( imp_RowStep="0" imp_CompressedStreamLength="0" imp_ImageResetFn="TRUE" imp_GrayscaleDetectStatus="GOP_GDS_OFF")";
constexpr const char* kOperandImage =
    R"(        <GOP_OperandImage im_ImageEncoding="0" im_QualitySetting="GOP_QUAL_HIGHEST_QUALITY" )"
    R"(im_NumNonalphaChans="1" im_Flags="[0x1] GOP_OP_FLAGS_HAS_COLOR_DATA " im_Alpha="1" im_ImageWidthPixels="2" )"
    R"(im_ImageHeightPixels="2" im_Transform="1 0 0 1 0 0 ">
          <GOP_Operand go_OpType="GOP_OPERAND_IMAGE" go_ColorInfo.GCM_ColorFlag="GCM_CF_BLACK" )"
    R"(go_ColorInfo.GOP_OperandColorSpace="GOP_OCS_INPUT" go_Count="3" go_Hints="[0] GOP_OPD_HINT_NONE " )"
    R"(go_ColorSpaceFamily="GCM_CSF_GRAY"/>
        </GOP_OperandImage>
      </GOP_OperandImagePointer>
)";
constexpr const char* kCallbackImage =
    R"( op_UniqueId="3" imp_DirectImage="FALSE" imp_RowStep="0" imp_CompressedStreamLength="0" )"
    R"(imp_ImageResetFn="TRUE" imp_GrayscaleDetectStatus="GOP_GDS_OFF">
      <GOP_OperandImage im_ImageEncoding="0" im_QualitySetting="GOP_QUAL_HIGHEST_QUALITY" )"
    R"(im_NumNonalphaChans="1" im_Flags="[0x1] GOP_OP_FLAGS_HAS_COLOR_DATA " im_Alpha="1" im_ImageWidthPixels="2" )"
    R"(im_ImageHeightPixels="2" im_Transform="1 0 0 1 0 0 ">
        <GOP_Operand go_OpType="GOP_OPERAND_IMAGE" go_ColorInfo.GCM_ColorFlag="GCM_CF_BLACK" )"
    R"(go_ColorInfo.GOP_OperandColorSpace="GOP_OCS_INPUT" go_Count="3" go_Hints="[0] GOP_OPD_HINT_NONE " )"
    R"(go_ColorSpaceFamily="GCM_CSF_GRAY"/>
      </GOP_OperandImage>
    </GOP_OperandImagePointer>
)";

// What the logger asks a prepare for.
constexpr const char* kReadThroughPrepare =
    R"(  <GOP_ImagePrepareFn Id="10" return="TRUE" operand_p_replaced="FALSE" object_type="[0x8] GCM_OBJ_IMAGE " )"
    R"(decompress="FALSE" rescale="FALSE" use_render_color_space="FALSE" req_bit_depth="GNC_BMP_DEPTH_8" )"
    R"(need_attr="FALSE">
    <GOP_OperandImagePointer Id="11")";
constexpr const char* kRendererPrepare =
    R"(  <GOP_ImagePrepareFn Id="10" return="TRUE" operand_p_replaced="FALSE" object_type="[0x4] GCM_OBJ_GRAPHICS " )"
    R"(decompress="FALSE" rescale="FALSE" use_render_color_space="TRUE" req_bit_depth="GNC_BMP_DEPTH_16" )"
    R"(need_attr="FALSE">
    <GOP_OperandImagePointer Id="11")";
constexpr const char* kReadsIntoTheLog =
    R"(  <GOP_ImageReadFn Id="11" return="TRUE" skip_pixels="0" img_row_step="2" img_returned="2">
    <img_buf>
      <BufferUInt8 len="2">
01 02 
      </BufferUInt8>
    </img_buf>
  </GOP_ImageReadFn>
  <GOP_ImageReadFn Id="11" return="TRUE" skip_pixels="0" img_row_step="2" img_returned="2">
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
)";
constexpr const char* kReadsIntoAFile =
    R"(  <GOP_ImageReadFn Id="11" return="TRUE" skip_pixels="0" img_row_step="2" img_returned="2" )"
    R"(ImageFileName="side-img-10.bin">
  </GOP_ImageReadFn>
  <GOP_ImageReadFn Id="11" return="TRUE" skip_pixels="0" img_row_step="2" img_returned="2" )"
    R"(ImageFileName="side-img-10.bin">
  </GOP_ImageReadFn>
  <GOP_ImageReadFn Id="11" return="TRUE" skip_pixels="0" img_row_step="2" img_returned="0" )"
    R"(ImageFileName="side-img-10.bin">
  </GOP_ImageReadFn>
)";
constexpr const char* kFinish = R"(  <GOP_ImageFinishFn Id="11" return="TRUE">
    <GOP_OperandImagePointer Id="11")";

std::string operand(const char* direct, const char* more = "")
{
    return std::string(R"(      <GOP_OperandImagePointer Id="10" op_UniqueId="3" imp_DirectImage=")") + direct + "\"" +
           kOperandRest + more + ">\n";
}

std::string callbacks(const char* prepare, const char* reads)
{
    return std::string(prepare) + kCallbackImage + "  </GOP_ImagePrepareFn>\n" + reads + kFinish + kCallbackImage +
           "  </GOP_ImageFinishFn>\n";
}

// Reads an image to its end, as a renderer does.
void pull(GOP_OperandImagePointer* record)
{
    ASSERT_EQ(record->imp_ImagePrepareFn(&record, GCM_OBJ_GRAPHICS, 0, 0, 0, 0, 0, 0, 1, GNC_BMP_DEPTH_16, 0), 1U);
    uint8_t row[2];
    int32_t returned = 1;
    while (returned != 0)
        ASSERT_EQ(record->imp_ImageReadFn(record, record->imp_Context, 0, row, 2, 2, &returned, nullptr, 0, 0, nullptr),
                  1U);
    ASSERT_EQ(record->imp_ImageFinishFn(record, record->imp_Context), 1U);
}

// A face in which images are painted.
class Job
{
public:
    Job(const char* prefix, bool base, void* error = nullptr) : client(Behind::kRenderer, prefix)
    {
        if (base)
            client.set_base_mode();
        client.start_document();
        const ORV_FaceProperties face = letter_face();
        client.orv.face_start.fn(error, &client.orv, client.document, &drawing, nullptr, 1, &face, nullptr, 0, 0);
        client.forget();
    }
    Job(const Job&) = delete;
    Job& operator=(const Job&) = delete;
    ~Job()
    {
        client.renderer.on_draw(nullptr);
        drawing.drawing_finish.fn(&drawing);
        client.finish_document();
        client.shut_down();
        EXPECT_EQ(client.allocator.outstanding(), 0U);
    }
    // The text of the paint, in which the renderer pulls the image if `pulls`.
    std::string paint(FakeImage* image, bool pulls)
    {
        client.forget();
        client.renderer.on_draw(
            [&](const char*)
            {
                if (pulls)
                    pull(reinterpret_cast<GOP_OperandImagePointer*>(client.renderer.last_operands[0]));
            });
        EXPECT_EQ(
            drawing.object_paint.fn(&drawing, 8, 0, nullptr, nullptr, 9, nullptr, image->operand(), nullptr, nullptr),
            1U);
        return client.log();
    }

    TempFolder folder;
    TestSession client;
    ORV_DrawingInterface drawing = {};
};

TEST(ImageInCall, TransparentModeHasWhatTheRendererPulls)
{
    Job job(nullptr, false);
    FakeImage image(2, 2);
    EXPECT_EQ(job.paint(&image, true), std::string(kPaint) + operand("FALSE") + kOperandImage +
                                           "    </ORV_object_paint.operand1>\n" +
                                           callbacks(kRendererPrepare, kReadsIntoTheLog) + "  </ORV_object_paint>\n");
    EXPECT_TRUE(job.folder.names().empty());
}

TEST(ImageInCall, TransparentModeWithoutAPullHasNoBytes)
{
    Job job("side", false);
    FakeImage image(2, 2);
    EXPECT_EQ(job.paint(&image, false), std::string(kPaint) + operand("FALSE") + kOperandImage + kPaintEnd);
    EXPECT_TRUE(job.folder.names().empty());
}

TEST(ImageInCall, TransparentModeWithFiles)
{
    Job job("side", false);
    FakeImage image(2, 2);
    EXPECT_EQ(job.paint(&image, true), std::string(kPaint) + operand("FALSE") + kOperandImage +
                                           "    </ORV_object_paint.operand1>\n" +
                                           callbacks(kRendererPrepare, kReadsIntoAFile) + "  </ORV_object_paint>\n");
    EXPECT_EQ(job.folder.names(), std::vector<std::string>{"side-img-10.bin"});
    EXPECT_EQ(job.folder.read("side-img-10.bin"), "\x01\x02\x03\x04");
}

TEST(ImageInCall, BaseModeReadsRightBehindTheOperand)
{
    Job job(nullptr, true);
    FakeImage image(2, 2);
    EXPECT_EQ(job.paint(&image, false), std::string(kPaint) + operand("FALSE") + kOperandImage +
                                            callbacks(kReadThroughPrepare, kReadsIntoTheLog) + kPaintEnd);
    EXPECT_EQ(image.take_calls(), "prepare(8,3,0) read read read finish ");
}

TEST(ImageInCall, BaseModeWithFiles)
{
    Job job("side", true);
    FakeImage image(2, 2);
    EXPECT_EQ(job.paint(&image, false), std::string(kPaint) + operand("FALSE") + kOperandImage +
                                            callbacks(kReadThroughPrepare, kReadsIntoAFile) + kPaintEnd);
    EXPECT_EQ(job.folder.names(), std::vector<std::string>{"side-img-10.bin"});
    EXPECT_EQ(job.folder.read("side-img-10.bin"), "\x01\x02\x03\x04");
}

// The files of the image are closed by then: what the renderer reads again is not written again.
TEST(ImageInCall, BaseModeAndARendererThatPulls)
{
    Job job("side", true);
    FakeImage image(2, 2);
    const std::string text = job.paint(&image, true);
    const std::string again =
        std::string(R"(  <GOP_ImagePrepareFn Id="11" return="TRUE" operand_p_replaced="FALSE" )") +
        R"(object_type="[0x4] GCM_OBJ_GRAPHICS " decompress="FALSE" rescale="FALSE" )" +
        R"(use_render_color_space="TRUE" req_bit_depth="GNC_BMP_DEPTH_16" need_attr="FALSE">
    <GOP_OperandImagePointer Id="12")" +
        kCallbackImage +
        R"(  </GOP_ImagePrepareFn>
  <GOP_ImageReadFn Id="12" return="TRUE" skip_pixels="0" img_row_step="2" img_returned="2">
  </GOP_ImageReadFn>
  <GOP_ImageReadFn Id="12" return="TRUE" skip_pixels="0" img_row_step="2" img_returned="2">
  </GOP_ImageReadFn>
  <GOP_ImageReadFn Id="12" return="TRUE" skip_pixels="0" img_row_step="2" img_returned="0">
  </GOP_ImageReadFn>
  <GOP_ImageFinishFn Id="12" return="TRUE">
    <GOP_OperandImagePointer Id="12")" +
        kCallbackImage + "  </GOP_ImageFinishFn>\n";
    EXPECT_EQ(text, std::string(kPaint) + operand("FALSE") + kOperandImage +
                        callbacks(kReadThroughPrepare, kReadsIntoAFile) + "    </ORV_object_paint.operand1>\n" + again +
                        "  </ORV_object_paint>\n");
    EXPECT_EQ(job.folder.read("side-img-10.bin"), "\x01\x02\x03\x04");
}

TEST(ImageInCall, DirectImageInBothModes)
{
    for (const bool base : {false, true})
    {
        Job job(nullptr, base);
        FakeImage image(2, 2);
        image.record.imp_DirectImage = image.bytes.data();
        EXPECT_EQ(job.paint(&image, false), std::string(kPaint) + operand("TRUE") +
                                                R"(        <imp_DirectImageData>
          <BufferUInt8 len="4">
01 02 03 04 
          </BufferUInt8>
        </imp_DirectImageData>
)" + kOperandImage + kPaintEnd);
        EXPECT_EQ(image.take_calls(), "");
    }
}

TEST(ImageInCall, DirectImageWithFilesInBothModes)
{
    for (const bool base : {false, true})
    {
        Job job("side", base);
        FakeImage image(2, 2);
        image.record.imp_DirectImage = image.bytes.data();
        EXPECT_EQ(job.paint(&image, false), std::string(kPaint) +
                                                operand("TRUE", R"( imp_DirectImageFileName="side-dir-10.bin")") +
                                                kOperandImage + kPaintEnd);
        EXPECT_EQ(job.folder.names(), std::vector<std::string>{"side-dir-10.bin"});
        EXPECT_EQ(job.folder.read("side-dir-10.bin"), "\x01\x02\x03\x04");
    }
}

TEST(ImageInCall, NoBytesArePutIntoTheElementsOfPrepareAndFinish)
{
    Job job("side", false);
    FakeImage image(2, 2);
    image.record.imp_DirectImage = image.bytes.data();
    const std::string text = job.paint(&image, true);
    EXPECT_EQ(text.find("imp_DirectImageFileName"), text.rfind("imp_DirectImageFileName"));
    EXPECT_EQ(text.find("imp_DirectImageData"), std::string::npos);
    EXPECT_EQ(job.folder.names(), (std::vector<std::string>{"side-dir-10.bin", "side-img-11.bin"}));
}

TEST(ImageInCall, EachImageHasTenNumbers)
{
    Job job("side", true);
    FakeImage image(2, 2);
    EXPECT_EQ(attribute_of(job.paint(&image, false), "ImageFileName"), "side-img-10.bin");
    image.record.imp_DirectImage = image.bytes.data();
    EXPECT_EQ(attribute_of(job.paint(&image, false), "imp_DirectImageFileName"), "side-dir-20.bin");
    image.record.imp_DirectImage = nullptr;
    const std::string text = job.paint(&image, false);
    EXPECT_EQ(attribute_of(text, "ImageFileName"), "side-img-30.bin");
    EXPECT_NE(text.find("<GOP_OperandImagePointer Id=\"30\" "), std::string::npos);
    EXPECT_NE(text.find("<GOP_ImagePrepareFn Id=\"30\" "), std::string::npos);
    EXPECT_NE(text.find("<GOP_OperandImagePointer Id=\"31\" "), std::string::npos);
    EXPECT_NE(text.find("<GOP_ImageReadFn Id=\"31\" "), std::string::npos);
    EXPECT_EQ(job.folder.names(), (std::vector<std::string>{"side-dir-20.bin", "side-img-10.bin", "side-img-30.bin"}));
}

// An image that needs more than ten numbers runs into those of the next, whose file then takes its place.
TEST(ImageInCall, MoreThanTenNumbersRunIntoThoseOfTheNextImage)
{
    Job job("side", false);
    FakeImage first(2, 2);
    job.client.renderer.on_draw(
        [&](const char*)
        {
            auto* record = reinterpret_cast<GOP_OperandImagePointer*>(job.client.renderer.last_operands[0]);
            FakeImage other(2, 2);
            for (int i = 0; i < 11; ++i)
            {
                uint8_t row[2];
                int32_t returned = 0;
                record->imp_ImageReadFn(record, nullptr, 0, row, 2, 2, &returned, nullptr, 0, 0, nullptr);
                first.replacement = other.replacement = i % 2 == 0 ? other.get() : first.get();
                record->imp_ImagePrepareFn(&record, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0);
            }
        });
    job.drawing.object_paint.fn(&job.drawing, 8, 0, nullptr, nullptr, 9, nullptr, first.operand(), nullptr, nullptr);
    EXPECT_EQ(job.folder.names().size(), 11U);
    EXPECT_EQ(job.folder.read("side-img-10.bin"), "\x01\x02");
    EXPECT_EQ(job.folder.read("side-img-20.bin"), "\x01\x02");
    FakeImage second(2, 1);
    second.bytes = {0x77, 0x78};
    job.paint(&second, true);
    EXPECT_EQ(job.folder.names().size(), 11U);
    EXPECT_EQ(job.folder.read("side-img-20.bin"), "\x77\x78");
}

struct ErrorRoom
{
    GER_Error error;
    char text[200];
};

// Runs a call in base mode whose image cannot be read, and gives "RESULT CODE TEXT".
template <typename Call> std::string failed_read(Call call)
{
    ErrorRoom room = {};
    room.error.ge_TextCapacity = 150;
    Job job(nullptr, true, &room.error);
    FakeImage image(2, 2);
    image.fail_read = 1;
    const GOP_Operator op = {GOP_ROP_ROP4, 0, 0, 0, GOP_MASK_IN, 0, nullptr, nullptr};
    const size_t before = job.client.renderer.calls().size();
    const uint32_t result = call(&job.drawing, &op, image.operand());
    EXPECT_EQ(job.client.renderer.calls().size(), before + 1) << "it is forwarded all the same";
    EXPECT_NE(job.client.log().find("<GOP_ImageReadFn Id=\"11\" return=\"FALSE\" "), std::string::npos);
    EXPECT_NE(job.client.log().find("<GOP_ImageFinishFn Id=\"11\" return=\"TRUE\">"), std::string::npos);
    EXPECT_EQ(room.error.ge_Severity, result == 0 ? 1 : 0);
    EXPECT_EQ(room.error.ge_Module, result == 0 ? 6 : 0);
    return std::to_string(result) + " " + std::to_string(room.error.ge_Code) + " " + room.error.ge_Text;
}

TEST(ImageInCall, FailedReadFailsEachCallUnderItsOwnNumber)
{
    EXPECT_EQ(failed_read(
                  [](ORV_DrawingInterface* drawing, const GOP_Operator* op, GOP_OperandPointer* image) {
                      return drawing->object_paint.fn(drawing, 8, 0, op, nullptr, 0, nullptr, image, nullptr, nullptr);
                  }),
              "0 33303786 ORVLOG: Image read failed.:orvlog-orv v$Revision: 1.114 $ L:3786 ");
    EXPECT_EQ(failed_read(
                  [](ORV_DrawingInterface* drawing, const GOP_Operator* op, GOP_OperandPointer* image)
                  {
                      return drawing->object_paint_and_stroke.fn(drawing, 8, 8, 0, nullptr, op, nullptr, nullptr,
                                                                 nullptr, 0, nullptr, ORV_PAINTFLAGS_STROKE, nullptr,
                                                                 nullptr, nullptr, nullptr, nullptr, nullptr, image);
                  }),
              "0 33304346 ORVLOG: Image read failed.:orvlog-orv v$Revision: 1.114 $ L:4346 ");
    EXPECT_EQ(failed_read(
                  [](ORV_DrawingInterface* drawing, const GOP_Operator* op, GOP_OperandPointer* image)
                  {
                      uint32_t group = 0;
                      return drawing->group_start.fn(drawing, 1, &group, nullptr, 0, 0, 0, 0, nullptr, 0, 0, 0, nullptr,
                                                     op, image, nullptr, 0, 0, 0, nullptr, nullptr, nullptr);
                  }),
              "0 33302523 ORVLOG: Image read failed.:orvlog-orv v$Revision: 1.114 $ L:2523 ");
}

TEST(ImageInCall, FailedReadFailsAResourcePaint)
{
    ErrorRoom room = {};
    room.error.ge_TextCapacity = 150;
    Job job(nullptr, true, &room.error);
    FakeImage image(2, 2);
    image.image.im_Operand.go_ColorSpaceFamily = GCM_CSF_NAMED;
    GOP_Operator op = {};
    op.op_MaskMode = GOP_MASK_OUT;
    ORV_DrawingInterface* drawing = &job.drawing;
    drawing->resource_paint.fn(drawing, 0, 0, 0, nullptr, &op, image.operand(), nullptr, 0, 0, 0, nullptr, nullptr, 0);
    EXPECT_EQ(room.error.ge_Code, 0) << "a resource that is not known ends the call before";
    // Without such a call of the renderer's nothing is looked up.
    TestSession alone(Behind::kNothing);
    alone.set_base_mode();
    alone.start_document();
    ORV_DrawingInterface face = {};
    const ORV_FaceProperties properties = letter_face();
    alone.orv.face_start.fn(&room.error, &alone.orv, alone.document, &face, nullptr, 1, &properties, nullptr, 0, 0);
    EXPECT_EQ(
        face.resource_paint.fn(&face, 0, 0, 0, nullptr, &op, image.operand(), nullptr, 0, 0, 0, nullptr, nullptr, 0),
        0U);
    EXPECT_EQ(room.error.ge_Code, 33303480);
    EXPECT_STREQ(room.error.ge_Text, "ORVLOG: Image read failed.:orvlog-orv v$Revision: 1.114 $ L:3480 ");
    face.drawing_finish.fn(&face);
    alone.finish_document();
    alone.shut_down();
    EXPECT_EQ(alone.allocator.outstanding(), 0U);
}

TEST(ImageInCall, DirectImageThatIsTooLarge)
{
    for (const bool base : {false, true})
        for (const char* prefix : {static_cast<const char*>(nullptr), "side"})
        {
            ErrorRoom room = {};
            room.error.ge_TextCapacity = 150;
            Job job(prefix, base, &room.error);
            FakeImage image(2, 2);
            image.record.imp_DirectImage = image.bytes.data();
            image.image.im_ImageWidthPixels = image.image.im_ImageHeightPixels = 0x10000;
            EXPECT_EQ(job.drawing.object_paint.fn(&job.drawing, 8, 0, nullptr, nullptr, 9, nullptr, image.operand(),
                                                  nullptr, nullptr),
                      base ? 0U : 1U);
            EXPECT_EQ(room.error.ge_Code, base ? 33303786 : 0);
            const std::string log = job.client.log();
            EXPECT_NE(log.find("/>\n\n<!--\nORVLOG: WARNING: Image is too large.\n-->\n"), std::string::npos) << log;
            EXPECT_EQ(log.find("imp_DirectImageData"), std::string::npos);
            EXPECT_TRUE(job.folder.names().empty());
            EXPECT_EQ(image.take_calls(), "");
        }
}

TEST(ImageInCall, TransparentModeGivesTheRenderersAnswerWhateverAReadSays)
{
    Job job(nullptr, false);
    FakeImage image(2, 2);
    image.read_result = 0;
    uint32_t answer = 1;
    job.client.renderer.on_draw(
        [&](const char*)
        {
            auto* record = reinterpret_cast<GOP_OperandImagePointer*>(job.client.renderer.last_operands[0]);
            uint8_t row[2];
            int32_t returned = 0;
            answer = record->imp_ImageReadFn(record, nullptr, 0, row, 2, 2, &returned, nullptr, 0, 0, nullptr);
        });
    EXPECT_EQ(job.drawing.object_paint.fn(&job.drawing, 8, 0, nullptr, nullptr, 9, nullptr, image.operand(), nullptr,
                                          nullptr),
              1U);
    EXPECT_EQ(answer, 0U);
}

}  // namespace
