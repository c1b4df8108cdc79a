// ORV_document_start and ORV_document_finish, the second receiver, and calls without a renderer.

#include "tests/orvlog/core/face-fixture.h"
#include "tests/support/fake-font-engine.h"

#include <gtest/gtest.h>

#include <string>

namespace
{

using namespace orvlog::test;

TEST(DocumentStart, LogsAndForwards)
{
    TestSession test;
    EXPECT_EQ(test.orv.document_start.fn(&error_object, &test.orv, &test.document, 7, nullptr, &extra_object), 1U);
    EXPECT_EQ(test.log(), "  <ORV_document_start document_context=\"0\" document_id=\"7\" "
                          "font_engine_functions=\"FALSE\">\n"
                          "  </ORV_document_start>\n");
    EXPECT_EQ(test.renderer.last(),
              "document_start err=" + number(&error_object) + " id=7 extra=" + number(&extra_object));
    EXPECT_EQ(test.renderer.last_table, test.renderer.get());
    EXPECT_NE(test.document, nullptr);
    EXPECT_NE(test.document, &test.renderer);
    EXPECT_EQ(session_of(test)->document_handle, &test.renderer);
    test.forget();
    EXPECT_EQ(test.finish_document(), 1U);
    EXPECT_EQ(test.log(), "  <ORV_document_finish document_context=\"0\">\n  </ORV_document_finish>\n");
    EXPECT_EQ(test.renderer.last(), "document_finish own-document");
}

TEST(DocumentStart, TakesTheNextNumber)
{
    TestSession test;
    void* first = nullptr;
    void* second = nullptr;
    test.orv.document_start.fn(nullptr, &test.orv, &first, 7, nullptr, nullptr);
    test.forget();
    test.orv.document_start.fn(nullptr, &test.orv, &second, 7, nullptr, nullptr);
    EXPECT_EQ(test.log(), "  <ORV_document_start document_context=\"1\" document_id=\"7\" "
                          "font_engine_functions=\"FALSE\">\n"
                          "  </ORV_document_start>\n");
    test.orv.document_finish.fn(&test.orv, second);
    test.orv.document_finish.fn(&test.orv, first);
}

TEST(DocumentStart, ResultIsTheRenderers)
{
    TestSession test;
    test.renderer.set_result(42);
    EXPECT_EQ(test.start_document(), 42U);
    EXPECT_EQ(test.finish_document(), 42U);
    test.renderer.set_result(0);
    EXPECT_EQ(test.start_document(), 0U);
    EXPECT_EQ(test.finish_document(), 0U);
}

TEST(DocumentStart, WithoutRendererGivesOneAndLogs)
{
    TestSession test(Behind::kNothing);
    EXPECT_EQ(test.start_document(), 1U);
    EXPECT_EQ(test.finish_document(), 1U);
    EXPECT_EQ(test.log(), "  <ORV_document_start document_context=\"0\" document_id=\"7\" "
                          "font_engine_functions=\"FALSE\">\n"
                          "  </ORV_document_start>\n"
                          "  <ORV_document_finish document_context=\"0\">\n"
                          "  </ORV_document_finish>\n");
}

TEST(DocumentStart, RefusedRecordStoresNullAndLogsNothing)
{
    TestSession test;
    test.allocator.refuse(1);
    test.document = &test;
    EXPECT_EQ(test.start_document(), 0U);
    EXPECT_EQ(test.document, nullptr);
    EXPECT_EQ(test.log(), "");
    EXPECT_TRUE(test.renderer.calls().empty());
}

TEST(DocumentStart, WrapsTheFontEngine)
{
    TestSession test;
    FakeFontEngine engine("Fonts <1>");
    test.orv.document_start.fn(nullptr, &test.orv, &test.document, 7, engine.get(), nullptr);
    EXPECT_EQ(test.log(), "  <ORV_document_start document_context=\"0\" document_id=\"7\" "
                          "font_engine_functions=\"TRUE\" fp_EngineIdGet=\"Fonts \\x3c1\\x3e\" GfpId=\"0\">\n"
                          "  </ORV_document_start>\n");
    const GFI_FontEngineTable* wrapped = test.renderer.last_engine;
    ASSERT_NE(wrapped, nullptr);
    EXPECT_NE(wrapped, engine.get());
    EXPECT_EQ(session_of(test)->current_font_wrapper, wrapped);
    EXPECT_EQ(wrapped->fe_Reserved, engine.get()->fe_Reserved);
    EXPECT_NE(wrapped->GFI_GlyphGetFn, engine.get()->GFI_GlyphGetFn);
    EXPECT_STREQ(wrapped->fp_EngineIdGet(wrapped->fe_Context), "Fonts <1>");
    test.finish_document();
    EXPECT_EQ(session_of(test)->current_font_wrapper, nullptr);
    test.shut_down();
    EXPECT_EQ(test.allocator.outstanding(), 0U);
}

TEST(DocumentStart, EngineWithoutNameHasNoNameAttribute)
{
    TestSession test;
    FakeFontEngine engine;
    test.orv.document_start.fn(nullptr, &test.orv, &test.document, 7, engine.get(), nullptr);
    EXPECT_EQ(test.log(), "  <ORV_document_start document_context=\"0\" document_id=\"7\" "
                          "font_engine_functions=\"TRUE\" GfpId=\"0\">\n"
                          "  </ORV_document_start>\n");
    test.finish_document();
}

TEST(DocumentStart, FailedWrapLeavesTheTagOpenAndForwardsNothing)
{
    for (const uint64_t refused : {uint64_t{2}, uint64_t{3}})
    {
        TestSession test;
        FakeFontEngine engine("E");
        test.allocator.refuse(refused);
        EXPECT_EQ(test.orv.document_start.fn(nullptr, &test.orv, &test.document, 7, engine.get(), nullptr), 0U);
        EXPECT_EQ(test.log(), "  <ORV_document_start document_context=\"0\" document_id=\"7\" "
                              "font_engine_functions=\"TRUE\" fp_EngineIdGet=\"E\"");
        EXPECT_TRUE(test.renderer.calls().empty());
        EXPECT_EQ(session_of(test)->current_font_wrapper, nullptr);
        EXPECT_EQ(test.document, nullptr);
        EXPECT_EQ(test.allocator.outstanding(), 1U);  // the session alone
        test.shut_down();
        EXPECT_EQ(test.allocator.outstanding(), 0U);
    }
}

TEST(SecondReceiver, GetsDocumentAndFaceCallsFirst)
{
    TestSession test;
    FakeRenderer second("second");
    test.set_second(second.get());
    ORV_DrawingInterface face;
    second.set_result(0);
    size_t renderer_calls_before = 99;
    second.on_draw([&](const char*) { renderer_calls_before = test.renderer.calls().size(); });
    EXPECT_EQ(test.start_document(), 1U);
    EXPECT_EQ(renderer_calls_before, 0U);
    EXPECT_EQ(test.start_face(&face), 1U);
    EXPECT_EQ(renderer_calls_before, 1U);
    EXPECT_EQ(second.count("document_start"), 1U);
    EXPECT_EQ(second.count("face_start"), 1U);
    EXPECT_NE(second.last().find("own-document"), std::string::npos);
    EXPECT_EQ(session_of(test)->second_document_handle, &second);
    EXPECT_EQ(session_of(test)->second_drawing_table.drawing_finish.context, &second);
    face.drawing_finish.fn(&face);
    EXPECT_EQ(test.finish_document(), 1U);
    EXPECT_EQ(second.last(), "document_finish own-document");
}

TEST(SecondReceiver, SeesOnlyFacesAndTheEndOfEachOnce)
{
    TestSession test;
    FakeRenderer second("second");
    test.set_second(second.get());
    ORV_DrawingInterface face = {};
    ORV_DrawingInterface resource = {};
    uint32_t resource_id = 0;
    const auto draw_resource = [&]
    {
        EXPECT_EQ(test.orv.resource_start.fn(nullptr, &test.orv, test.document, &resource, nullptr, nullptr, nullptr,
                                             nullptr, &resource_id),
                  1U);
        EXPECT_EQ(resource.drawing_finish.fn(&resource), 1U);
    };
    test.start_document();
    draw_resource();
    test.start_face(&face);
    draw_resource();
    EXPECT_EQ(second.count("drawing_finish"), 0U);
    EXPECT_EQ(face.drawing_finish.fn(&face), 1U);
    EXPECT_EQ(second.count("drawing_finish"), 1U);
    draw_resource();
    test.start_face(&face);
    EXPECT_EQ(face.drawing_discard.fn(&face), 1U);
    test.finish_document();
    const char* expected[] = {"document_start", "face_start",      "drawing_finish",
                              "face_start",     "drawing_discard", "document_finish"};
    ASSERT_EQ(second.calls().size(), 6U);
    for (size_t i = 0; i < 6; ++i)
        EXPECT_EQ(second.calls()[i].find(expected[i]), 0U) << second.calls()[i];
}

TEST(SecondReceiver, ThatIsExchangedGetsNoEndOfTheOthersFace)
{
    TestSession test;
    FakeRenderer second("second");
    FakeRenderer third("third");
    test.set_second(second.get());
    ORV_DrawingInterface face = {};
    test.start_document();
    test.start_face(&face);
    test.set_second(third.get());
    EXPECT_EQ(face.drawing_finish.fn(&face), 1U);
    EXPECT_EQ(second.count("drawing_finish") + third.count("drawing_finish"), 0U);
    test.start_face(&face);
    test.set_second(third.get());
    EXPECT_EQ(face.drawing_finish.fn(&face), 1U);
    EXPECT_EQ(third.count("drawing_finish"), 1U);
}

TEST(SecondReceiver, WithoutFunctionsIsLetBe)
{
    TestSession test;
    const ORV_Interface empty = {};
    test.set_second(&empty);
    ORV_DrawingInterface face = {};
    EXPECT_EQ(test.start_document(), 1U);
    EXPECT_EQ(test.start_face(&face), 1U);
    EXPECT_EQ(face.drawing_finish.fn(&face), 1U);
    ORV_DrawingInterface memory = {};
    EXPECT_EQ(test.orv.memory_context_start.fn(nullptr, &test.orv, test.document, &memory, 1, 2, 3, 4, 5, nullptr,
                                               nullptr, 8, 9, 10, 11, 12, 13),
              0U);
    EXPECT_EQ(test.finish_document(), 1U);
}

// A second receiver may fill in a drawing without the calls that end it.
TEST(SecondReceiver, WithoutTheEndsOfADrawingIsLetBe)
{
    for (const bool finish : {true, false})
    {
        TestSession test;
        ORV_Interface second = {};
        second.face_start.fn = [](void*, const ORV_Interface*, void*, ORV_DrawingInterface* drawing,
                                  const GFI_FontEngineTable*, uint32_t, const ORV_FaceProperties*, void*, uint32_t,
                                  uint32_t) -> uint32_t
        {
            *drawing = {};
            return 1;
        };
        test.set_second(&second);
        ORV_DrawingInterface face = {};
        test.start_document();
        EXPECT_EQ(test.start_face(&face), 1U);
        test.renderer.set_result(7);
        EXPECT_EQ(finish ? face.drawing_finish.fn(&face) : face.drawing_discard.fn(&face), finish ? 1U : 7U);
        EXPECT_EQ(test.renderer.last(), finish ? "drawing_finish" : "drawing_discard");
        test.renderer.set_result(1);
        EXPECT_EQ(test.finish_document(), 1U);
        EXPECT_EQ(test.shut_down(), 1U);
    }
}

TEST(Unrendered, CallsGiveOne)
{
    TestSession test(Behind::kNothing);
    ORV_DrawingInterface face = {};
    ORV_DrawingInterface resource = {};
    ORV_DrawingInterface memory = {};
    uint32_t resource_id = 0;
    test.start_document();
    EXPECT_EQ(test.start_face(&face), 1U);
    EXPECT_EQ(test.orv.resource_start.fn(nullptr, &test.orv, test.document, &resource, nullptr, nullptr, nullptr,
                                         nullptr, &resource_id),
              1U);
    EXPECT_EQ(test.orv.resource_destroy.fn(nullptr, &test.orv, test.document, nullptr, 12345), 1U);
    EXPECT_EQ(test.orv.memory_context_start.fn(nullptr, &test.orv, test.document, &memory, 1, 2, 3, 4, 5, nullptr,
                                               nullptr, 8, 9, 10, 11, 12, 13),
              1U);
}

TEST(Scopes, EndInAnyOrder)
{
    TestSession test;
    FakeFontEngine document_engine;
    FakeFontEngine face_engine;
    FakeFontEngine group_engine;
    ORV_DrawingInterface face = {};
    const ORV_FaceProperties properties = letter_face();
    test.orv.document_start.fn(nullptr, &test.orv, &test.document, 1, document_engine.get(), nullptr);
    test.orv.face_start.fn(nullptr, &test.orv, test.document, &face, face_engine.get(), 1, &properties, nullptr, 0, 0);
    face.group_start.fn(&face, 1, nullptr, group_engine.get(), 0, 0, 0, 0, nullptr, 0, 0, 0, nullptr, nullptr, nullptr,
                        nullptr, 0, 0, 0, nullptr, nullptr, nullptr);
    EXPECT_EQ(test.finish_document(), 1U);
    EXPECT_EQ(session_of(test)->current_font_wrapper, nullptr);
    uint32_t replay = 9;
    EXPECT_EQ(face.group_finish.fn(&face, &replay), 1U);
    EXPECT_EQ(face.drawing_finish.fn(&face), 1U);
    EXPECT_EQ(session_of(test)->current_font_wrapper, nullptr);
    test.shut_down();
    EXPECT_EQ(test.allocator.outstanding(), 0U);
    EXPECT_EQ(test.allocator.bad_frees(), 0U);
}

}  // namespace
