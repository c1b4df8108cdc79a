// Font engines of a document, a face, a resource and a group at once, and scopes that end in any order.

#include "orvlog/font/orvlog-font-wrapper.h"
#include "orvlog/session/orvlog-frames.h"
#include "tests/support/scripted-font-engine.h"
#include "tests/support/test-session.h"

#include <gtest/gtest.h>

#include <string>

namespace
{

using namespace orvlog::test;

class FontScopes : public testing::Test
{
protected:
    void TearDown() override
    {
        test.shut_down();
        EXPECT_EQ(test.allocator.bad_frees(), 0U);
        EXPECT_EQ(test.allocator.outstanding(), 0U);
    }
    ORVLOG_Session* session()
    {
        return static_cast<ORVLOG_Session*>(test.session());
    }
    // Each gives the wrapped table that the renderer got.
    const GFI_FontEngineTable* start_document(void** document, const GFI_FontEngineTable* engine)
    {
        test.orv.document_start.fn(nullptr, &test.orv, document, 1, engine, nullptr);
        return test.renderer.last_engine;
    }
    const GFI_FontEngineTable* start_face(ORV_DrawingInterface* face, const GFI_FontEngineTable* engine)
    {
        const ORV_FaceProperties properties = letter_face();
        test.orv.face_start.fn(nullptr, &test.orv, test.document, face, engine, 1, &properties, nullptr, 0, 0);
        return test.renderer.last_engine;
    }
    const GFI_FontEngineTable* start_resource(ORV_DrawingInterface* resource, const GFI_FontEngineTable* engine)
    {
        uint32_t id = 0;
        test.orv.resource_start.fn(nullptr, &test.orv, test.document, resource, nullptr, engine, nullptr, nullptr, &id);
        return test.renderer.last_engine;
    }
    const GFI_FontEngineTable* start_memory(ORV_DrawingInterface* memory, const GFI_FontEngineTable* engine)
    {
        test.orv.memory_context_start.fn(nullptr, &test.orv, test.document, memory, 0, 0, 0, 0, 0, engine, nullptr, 0,
                                         0, 0, 0, 0, 0);
        return test.renderer.last_engine;
    }
    const GFI_FontEngineTable* start_group(const ORV_DrawingInterface& drawing, const GFI_FontEngineTable* engine)
    {
        drawing.group_start.fn(&drawing, 1, nullptr, engine, 0, 0, 0, 0, nullptr, 0, 0, 0, nullptr, nullptr, nullptr,
                               nullptr, 0, 0, 0, nullptr, nullptr, nullptr);
        return test.renderer.last_engine;
    }
    void finish_group(const ORV_DrawingInterface& drawing)
    {
        uint32_t replay = 0;
        drawing.group_finish.fn(&drawing, &replay);
    }
    // Pulls by a wrapped table as a renderer does, and gives what was logged.
    std::string pull(const GFI_FontEngineTable* table)
    {
        test.forget();
        uint32_t returned = 0;
        uint32_t index = 0;
        uint16_t variant = 0;
        GGO_Vector advance = {};
        table->GFI_GlyphIndexGetFn(table->fe_Context, &returned, &index, &variant, &advance, nullptr);
        return test.log();
    }
    // The number of the engine that a text in base mode is pulled by; "none" without one.
    std::string in_force(const ORV_DrawingInterface& drawing)
    {
        GSH_Shape shape = {GSH_SHAPE_GLYPHS, 0, {{1, 0, 0, 1, 0, 0}}};
        GFI_FontSpecPointer font = {};
        GFI_StringDesc desc = {};
        GFI_StringDescPointer string = {&desc, nullptr, nullptr};
        GSH_ShapePointer text = {};
        text.sp_HeaderPtr = &shape;
        text.sp_U.glyph.font_spec_ptr = &font;
        text.sp_U.glyph.string_desc = &string;
        test.set_base_mode();
        test.forget();
        drawing.object_paint.fn(&drawing, 1, 0, nullptr, &text, 0, nullptr, nullptr, nullptr, nullptr);
        const std::string log = test.log();
        const size_t at = log.find("<GFI_StringStartFn GfpId=\"");
        return at == std::string::npos ? "none" : log.substr(at + 26, 1);
    }

    TestSession test;
    ScriptedFontEngine engines[4];
};

constexpr char kNothingBy0[] = "<GFI_GlyphIndexGetFn GfpId=\"0\" result=\"TRUE\" glyph_returned=\"FALSE\"/>\n";
constexpr char kNothingBy1[] = "<GFI_GlyphIndexGetFn GfpId=\"1\" result=\"TRUE\" glyph_returned=\"FALSE\"/>\n";
constexpr char kNothingBy2[] = "<GFI_GlyphIndexGetFn GfpId=\"2\" result=\"TRUE\" glyph_returned=\"FALSE\"/>\n";

TEST_F(FontScopes, EachScopeHasItsEngineAndGivesTheOuterOneBack)
{
    ORV_DrawingInterface face = {};
    ORV_DrawingInterface resource = {};
    ORV_DrawingInterface memory = {};
    start_document(&test.document, engines[0].get());
    start_face(&face, engines[1].get());
    EXPECT_EQ(in_force(face), "1");
    start_resource(&resource, engines[2].get());
    EXPECT_EQ(in_force(resource), "2");
    start_group(resource, engines[3].get());
    EXPECT_EQ(in_force(resource), "3");
    start_group(resource, nullptr);
    EXPECT_EQ(in_force(resource), "3");
    start_memory(&memory, engines[0].get());
    EXPECT_EQ(font_wrapper_id(session()->current_font_wrapper), 4U);
    EXPECT_EQ(memory.drawing_finish.fn(&memory), 1U);
    finish_group(resource);
    EXPECT_EQ(in_force(resource), "3");
    finish_group(resource);
    EXPECT_EQ(in_force(resource), "2");
    EXPECT_EQ(resource.drawing_finish.fn(&resource), 1U);
    EXPECT_EQ(in_force(face), "1");
    EXPECT_EQ(face.drawing_discard.fn(&face), 1U);
    start_face(&face, nullptr);
    EXPECT_EQ(in_force(face), "0");
    EXPECT_EQ(face.drawing_finish.fn(&face), 1U);
    EXPECT_EQ(test.finish_document(), 1U);
    EXPECT_EQ(session()->live_font_wrappers, nullptr);
    start_document(&test.document, nullptr);
    start_face(&face, nullptr);
    EXPECT_EQ(in_force(face), "none");
}

TEST_F(FontScopes, DocumentThatEndsLeavesTheEnginesOfOpenDrawings)
{
    ORV_DrawingInterface face = {};
    start_document(&test.document, engines[0].get());
    const GFI_FontEngineTable* of_face = start_face(&face, engines[1].get());
    const GFI_FontEngineTable* of_group = start_group(face, engines[2].get());
    EXPECT_EQ(test.finish_document(), 1U);
    EXPECT_EQ(session()->current_font_wrapper, nullptr);
    EXPECT_EQ(pull(of_group), std::string("  ") + kNothingBy2);
    EXPECT_EQ(pull(of_face), std::string("  ") + kNothingBy1);
    finish_group(face);
    EXPECT_EQ(in_force(face), "1");
    EXPECT_EQ(face.drawing_finish.fn(&face), 1U);
    EXPECT_EQ(session()->current_font_wrapper, nullptr);
    EXPECT_EQ(session()->live_font_wrappers, nullptr);
}

TEST_F(FontScopes, DocumentThatEndsLeavesTheEngineOfAnother)
{
    void* first = nullptr;
    void* second = nullptr;
    start_document(&first, engines[0].get());
    const GFI_FontEngineTable* of_second = start_document(&second, engines[1].get());
    EXPECT_EQ(test.orv.document_finish.fn(&test.orv, first), 1U);
    EXPECT_EQ(session()->current_font_wrapper, nullptr);
    EXPECT_EQ(pull(of_second), std::string("  ") + kNothingBy1);
    EXPECT_EQ(test.orv.document_finish.fn(&test.orv, second), 1U);
    EXPECT_EQ(session()->live_font_wrappers, nullptr);
}

TEST_F(FontScopes, DrawingThatEndsEarlyIsPassedOverWhenTheInnerOneEnds)
{
    ORV_DrawingInterface face = {};
    ORV_DrawingInterface resource = {};
    const GFI_FontEngineTable* of_document = start_document(&test.document, engines[0].get());
    start_face(&face, engines[1].get());
    const GFI_FontEngineTable* of_resource = start_resource(&resource, engines[2].get());
    EXPECT_EQ(face.drawing_finish.fn(&face), 1U);
    EXPECT_EQ(session()->current_font_wrapper, of_document);
    EXPECT_EQ(pull(of_resource), std::string("  ") + kNothingBy2);
    EXPECT_EQ(resource.drawing_finish.fn(&resource), 1U);
    EXPECT_EQ(session()->current_font_wrapper, of_document);
    EXPECT_EQ(pull(of_document), std::string("  ") + kNothingBy0);
    EXPECT_EQ(test.finish_document(), 1U);
}

TEST_F(FontScopes, GroupsOfTwoDrawingsMayCross)
{
    ORV_DrawingInterface face = {};
    ORV_DrawingInterface resource = {};
    start_document(&test.document, nullptr);
    start_face(&face, nullptr);
    start_resource(&resource, nullptr);
    const GFI_FontEngineTable* of_first = start_group(face, engines[0].get());
    const GFI_FontEngineTable* of_second = start_group(resource, engines[1].get());
    EXPECT_EQ(pull(of_first), std::string("  ") + kNothingBy0);
    finish_group(face);
    EXPECT_EQ(session()->current_font_wrapper, nullptr);
    EXPECT_EQ(pull(of_second), std::string("  ") + kNothingBy1);
    finish_group(resource);
    EXPECT_EQ(session()->current_font_wrapper, nullptr);
    EXPECT_EQ(session()->live_font_wrappers, nullptr);
}

// A new table may lie where an ended one lay.
TEST_F(FontScopes, EndedEngineIsNotTakenForANewOneInItsPlace)
{
    ORV_DrawingInterface stale = {};
    ORV_DrawingInterface faces[4] = {};
    const GFI_FontEngineTable* tables[4] = {};
    start_document(&test.document, engines[0].get());
    start_face(&stale, engines[1].get());
    start_group(stale, engines[2].get());
    test.finish_document();
    start_document(&test.document, engines[0].get());
    for (int i = 0; i < 4; ++i)
        tables[i] = start_face(&faces[i], engines[3].get());
    EXPECT_EQ(stale.drawing_finish.fn(&stale), 1U);
    for (int i = 0; i < 4; ++i)
    {
        EXPECT_NE(pull(tables[i]).find(" GfpId=\"" + std::to_string(4 + i) + "\" result=\"TRUE\""), std::string::npos);
        EXPECT_EQ(faces[i].drawing_finish.fn(&faces[i]), 1U);
    }
    EXPECT_EQ(test.finish_document(), 1U);
    EXPECT_EQ(session()->live_font_wrappers, nullptr);
}

TEST_F(FontScopes, EverythingLeftOpenIsGivenBackAtTheEnd)
{
    ORV_DrawingInterface drawings[3] = {};
    start_document(&test.document, engines[0].get());
    start_face(&drawings[0], engines[0].get());
    start_group(drawings[0], engines[0].get());
    start_resource(&drawings[1], engines[0].get());
    start_group(drawings[1], engines[0].get());
    start_group(drawings[1], nullptr);
    start_memory(&drawings[2], engines[0].get());
    test.forget();
    EXPECT_EQ(test.shut_down(), 1U);
    EXPECT_EQ(test.log(), "</ORV>\n");
}

}  // namespace
