#include "orvlog/interface/orvlog-session-options.h"

#include "orvlog/session/orvlog-session.h"
#include "tests/support/fake-identity.h"
#include "tests/support/fake-renderer.h"
#include "tests/support/memory-stream.h"
#include "tests/support/scripted-font-engine.h"
#include "tests/support/test-allocator.h"
#include "tests/support/test-session.h"

#include <gtest/gtest.h>

#include <cstring>
#include <string>

namespace
{

using namespace orvlog::test;

class SessionOptions : public testing::Test
{
protected:
    SessionOptions()
    {
        options.interface_out = &orv;
        options.allocator = allocator.get();
        options.identity = identity.get();
        options.log_stream = stream.get();
    }
    ~SessionOptions() override
    {
        EXPECT_EQ(allocator.outstanding(), 0U);
    }
    // Paints one glyph, and gives what the font engine was asked for.
    std::string calls_for_a_glyph()
    {
        ScriptedFontEngine engine;
        engine.advances = {{5, 7}};
        EXPECT_EQ(orvlog_create_session_with(&options), 1U);
        void* document = nullptr;
        ORV_DrawingInterface face = {};
        const ORV_FaceProperties letter = letter_face();
        orv.document_start.fn(nullptr, &orv, &document, 7, engine.get(), nullptr);
        orv.face_start.fn(nullptr, &orv, document, &face, nullptr, 1, &letter, nullptr, 0, 0);
        GSH_Shape head = {};
        GFI_FontSpecPointer font = {};
        GFI_StringDesc desc = {};
        GFI_StringDescPointer string = {&desc, nullptr, nullptr};
        GSH_ShapePointer shape = {};
        shape.sp_HeaderPtr = &head;
        shape.sp_U.glyph.font_spec_ptr = &font;
        shape.sp_U.glyph.string_desc = &string;
        engine.take_calls();
        face.object_paint.fn(&face, 4, 0, nullptr, &shape, 0, nullptr, nullptr, nullptr, nullptr);
        std::string calls = engine.take_calls();
        face.drawing_finish.fn(&face);
        orv.document_finish.fn(&orv, document);
        ORVLOG_DLL_shutdown(orv.document_start.context);
        return calls;
    }
    std::string root() const
    {
        return stream.text().substr(0, stream.text().find('\n'));
    }

    TestAllocator allocator;
    MemoryStream stream;
    FakeIdentity identity;
    ORV_Interface orv = {};
    ORVLOG_SessionOptions options = {};
};

constexpr char kTransparent[] = " LoggingMode=\"transparent\" GlyphLoggingMode=\"transparent\" ";
constexpr char kBase[] = " LoggingMode=\"base\" GlyphLoggingMode=\"transparent\" ";

TEST_F(SessionOptions, ThatAreZeroMakeTheSessionOfTheExport)
{
    EXPECT_EQ(calls_for_a_glyph(), "");
    EXPECT_NE(root().find(kTransparent), std::string::npos);
}

TEST_F(SessionOptions, BaseModeIsToldByTheRoot)
{
    options.mode = ORVLOG_MODE_BASE;
    options.glyph_get_format = GFI_GDT_PATH;
    EXPECT_EQ(calls_for_a_glyph(), "start index glyph2 index ");
    EXPECT_NE(root().find(kBase), std::string::npos);
}

TEST_F(SessionOptions, BaseContentIsNotToldByTheRoot)
{
    options.base_content = 1;
    options.glyph_get_format = GFI_GDT_BITMAP;
    EXPECT_EQ(calls_for_a_glyph(), "start index glyph1 index ");
    EXPECT_NE(root().find(kTransparent), std::string::npos);
}

TEST_F(SessionOptions, FixedFormatsAreAskedForFirst)
{
    options.base_content = 1;
    options.glyph_fixed_format = 1;
    EXPECT_EQ(calls_for_a_glyph(), "start index fixed0 fixed1 fixed2 index ");
}

TEST_F(SessionOptions, ASecondReceiverHearsOfTheDocumentFirst)
{
    FakeRenderer second;
    options.second_interface = second.get();
    calls_for_a_glyph();
    EXPECT_EQ(second.count("document_start"), 1U);
    EXPECT_EQ(second.count("face_start"), 1U);
    EXPECT_EQ(second.count("object_paint"), 0U);
}

TEST_F(SessionOptions, ImageAttributesAreAskedForByImages)
{
    options.image_dump_flag = 1;
    ASSERT_EQ(orvlog_create_session_with(&options), 1U);
    EXPECT_EQ(static_cast<ORVLOG_Session*>(orv.document_start.context)->image.image_dump_flag, 1U);
    const ORVLOG_Params params = {};
    ORVLOG_DLL_set_parameters(orv.document_start.context, &params);
    EXPECT_EQ(static_cast<ORVLOG_Session*>(orv.document_start.context)->image.image_dump_flag, 0U);
    ORVLOG_DLL_shutdown(orv.document_start.context);
}

TEST_F(SessionOptions, ThatAreMissingOpenNothing)
{
    EXPECT_EQ(orvlog_create_session_with(nullptr), 0U);
    const ORVLOG_SessionOptions zeros = {};
    EXPECT_EQ(orvlog_create_session_with(&zeros), 0U);
    FakeRenderer renderer;
    options.interface_in = renderer.get();
    options.allocator = nullptr;
    EXPECT_EQ(orvlog_create_session_with(&options), 0U);
    EXPECT_EQ(std::memcmp(&orv, renderer.get(), sizeof orv), 0);
    EXPECT_EQ(stream.text(), "");
}

}  // namespace
