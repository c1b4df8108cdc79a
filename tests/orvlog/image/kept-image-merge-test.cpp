#include "orvlog/session/orvlog-creators.h"
#include "tests/support/decode-text.h"
#include "tests/support/fake-identity.h"
#include "tests/support/fake-image.h"
#include "tests/support/fake-renderer.h"
#include "tests/support/memory-stream.h"
#include "tests/support/temp-folder.h"
#include "tests/support/test-allocator.h"
#include "tests/support/test-session.h"

#include <gtest/gtest.h>

namespace
{

using namespace orvlog::test;

void pull(GOP_OperandImagePointer* record)
{
    record->imp_ImagePrepareFn(&record, GCM_OBJ_IMAGE, 0, 0, 0, 0, 0, 0, 0, GNC_BMP_DEPTH_8, 0);
    uint8_t row[4];
    int32_t returned = 1;
    while (returned > 0)
        record->imp_ImageReadFn(record, record->imp_Context, 0, row, sizeof row, sizeof row, &returned, nullptr, 0, 0,
                                nullptr);
    record->imp_ImageFinishFn(record, record->imp_Context);
}

// A job of two images, pulled in their paints or, where they are kept, in the other order behind them.
std::string run_job(bool keeps, uint32_t compress, uint32_t via_temporary_log, bool releases = true)
{
    TempFolder folder;
    TestAllocator allocator;
    MemoryStream stream;
    FakeIdentity identity;
    FakeRenderer renderer;
    ORV_Interface orv = {};
    ORVLOG_SessionOptions options = {};
    options.interface_out = &orv;
    options.interface_in = renderer.get();
    options.allocator = allocator.get();
    options.identity = identity.get();
    options.log_stream = stream.get();
    options.compress = compress;
    options.via_temporary_log = via_temporary_log;
    EXPECT_EQ(orvlog_create_session_with(&options), 1U);
    void* document = nullptr;
    orv.document_start.fn(nullptr, &orv, &document, 7, nullptr, nullptr);
    ORV_DrawingInterface drawing = {};
    const ORV_FaceProperties face = letter_face();
    orv.face_start.fn(nullptr, &orv, document, &drawing, nullptr, 1, &face, nullptr, 0, 0);
    FakeImage first(4, 3);
    FakeImage second(4, 1);
    std::vector<GOP_OperandImagePointer*> kept;
    renderer.on_draw(
        [&](const char*)
        {
            auto* record = reinterpret_cast<GOP_OperandImagePointer*>(renderer.last_operands[0]);
            if (!keeps)
                return pull(record);
            EXPECT_EQ(record->imp_ImageKeepFn(record), 1U);
            kept.push_back(record);
        });
    const GOP_Operator op = {};
    for (FakeImage* image : {&first, &second})
    {
        image->image.im_Flags |= GOP_OP_FLAGS_ASYNCH_ACCESS;
        drawing.object_paint.fn(&drawing, 8, 0, &op, nullptr, 0, nullptr, image->operand(), nullptr, nullptr);
    }
    renderer.on_draw(nullptr);
    for (auto record = kept.rbegin(); record != kept.rend(); ++record)
    {
        pull(*record);
        if (releases)
            (*record)->imp_ImageReleaseFn(*record);
    }
    drawing.drawing_finish.fn(&drawing);
    orv.document_finish.fn(&orv, document);
    EXPECT_EQ(ORVLOG_DLL_shutdown(orv.document_start.context), 1U);
    const std::string text = stream.text();
    // A log that is still open is merged as it is; Windows leaves its file.
    for (GOP_OperandImagePointer* record : kept)
        if (!releases)
            record->imp_ImageReleaseFn(record);
    EXPECT_EQ(stream.text(), text);
    EXPECT_EQ(allocator.outstanding(), 0U);
#if !defined(_WIN32)
    EXPECT_TRUE(folder.names().empty());
#endif
    return text;
}

// The text without the elements that tell of keeping, and without what text files put at the ends of lines.
std::string without_keeping(std::string text)
{
    std::erase(text, '\r');
    for (const std::string name : {"GOP_ImageKeepFn", "GOP_ImageReleaseFn"})
    {
        for (size_t at = text.find("<" + name); at != std::string::npos; at = text.find("<" + name))
        {
            const size_t line = text.rfind('\n', at) + 1;
            const size_t end = text.find("</" + name + ">\n", at) + name.size() + 4;
            text.erase(line, end - line);
        }
    }
    return text;
}

TEST(KeptImageMerge, MergedLogEqualsThatOfTheSameJobWithoutKeeps)
{
    const std::string plain = run_job(false, 0, 0);
    const std::string merged = run_job(true, 0, 1);
    EXPECT_EQ(plain.find("GOP_ImageKeepFn"), std::string::npos);
    EXPECT_NE(merged.find("<GOP_ImageKeepFn Id=\"10\"  return=\"TRUE\">"), std::string::npos);
    EXPECT_EQ(without_keeping(merged), plain);
}

TEST(KeptImageMerge, ImagesThatAreNeverReleasedAreMergedAsTheyAre)
{
    const std::string merged = run_job(true, 0, 1, false);
    EXPECT_EQ(merged.find("GOP_ImageReleaseFn"), std::string::npos);
    EXPECT_EQ(without_keeping(merged), run_job(false, 0, 0));
}

TEST(KeptImageMerge, CodedMergedLogHoldsTheSame)
{
    const std::string coded = run_job(true, 1, 1);
    ASSERT_TRUE(coded.starts_with("<ORV compression=\"Adaptive Huffman\""));
    EXPECT_EQ(without_keeping(decode_lines(coded.substr(35))), run_job(false, 0, 0));
}

// Coded as it is written, an image's own log takes bytes of the one stream of bits: the session's log has a hole where
// the image spoke. Behind the shutdown there is no coder: what the image says then is plain.
TEST(KeptImageInCodedLog, SharesTheCoderOfTheSession)
{
    TempFolder folder;
    TestAllocator allocator;
    MemoryStream stream;
    FakeIdentity identity;
    FakeRenderer renderer;
    ORV_Interface orv = {};
    ASSERT_EQ(orvlog_create_session(&orv, renderer.get(), allocator.get(), identity.get(), stream.get(), nullptr,
                                    nullptr, nullptr, nullptr, nullptr, nullptr, 1, 0),
              1U);
    void* document = nullptr;
    orv.document_start.fn(nullptr, &orv, &document, 7, nullptr, nullptr);
    ORV_DrawingInterface drawing = {};
    const ORV_FaceProperties face = letter_face();
    orv.face_start.fn(nullptr, &orv, document, &drawing, nullptr, 1, &face, nullptr, 0, 0);
    FakeImage image(4, 3);
    image.image.im_Flags |= GOP_OP_FLAGS_ASYNCH_ACCESS;
    GOP_OperandImagePointer* kept = nullptr;
    renderer.on_draw(
        [&](const char*)
        {
            kept = reinterpret_cast<GOP_OperandImagePointer*>(renderer.last_operands[0]);
            EXPECT_EQ(kept->imp_ImageKeepFn(kept), 1U);
        });
    const GOP_Operator op = {};
    drawing.object_paint.fn(&drawing, 8, 0, &op, nullptr, 0, nullptr, image.operand(), nullptr, nullptr);
    renderer.on_draw(nullptr);
    drawing.drawing_finish.fn(&drawing);
    orv.document_finish.fn(&orv, document);
    ASSERT_NE(kept, nullptr);
    const std::string before = stream.text();
    const GOP_ImageFinishFn finish = kept->imp_ImageFinishFn;
    EXPECT_EQ(finish(kept, kept->imp_Context), 1U);
    EXPECT_EQ(stream.text(), before);
    EXPECT_EQ(ORVLOG_DLL_shutdown(orv.document_start.context), 1U);
    const std::string after = stream.text().substr(before.size());
    ASSERT_EQ(folder.names().size(), 1U);
    std::string side = folder.read(folder.names()[0]);
    EXPECT_EQ(kept->imp_ImageReleaseFn(kept), allocator.get());
    EXPECT_EQ(allocator.outstanding(), 0U);
    std::string plain = folder.read(folder.names()[0]).substr(side.size());
    std::erase(plain, '\r');
    EXPECT_EQ(plain, "  <GOP_ImageReleaseFn Id=\"10\">\n  </GOP_ImageReleaseFn>\n");
    // A text file may have put this in front of a coded byte.
    for (size_t at = side.find("\r\n"); at != std::string::npos; at = side.find("\r\n"))
        side.erase(at, 1);
    const std::string text = decode_lines(before.substr(35) + side + after);
    EXPECT_NE(text.find("<GOP_ImageKeepFn Id=\"10\" async_img_log_file_name=\""), std::string::npos);
    EXPECT_NE(text.find("<GOP_ImageFinishFn Id=\"10\" return=\"TRUE\">"), std::string::npos);
    EXPECT_TRUE(text.ends_with("\n  </GOP_ImageFinishFn>\n</ORV>\n")) << text;
}

}  // namespace
