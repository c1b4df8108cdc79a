// Document-level calls: documents, faces, resources, memory contexts.

#include "orvlog/session/orvlog-frames.h"
#include "orvlog/session/orvlog-session.h"
#include "tests/support/fake-font-engine.h"
#include "tests/support/fake-tickets.h"
#include "tests/support/test-session.h"

#include <gtest/gtest.h>

#include <limits>
#include <string>

namespace
{

using namespace orvlog::test;

int error_object;
int extra_object;
int ticket_object;

ORVLOG_Session* session_of(TestSession& test)
{
    return static_cast<ORVLOG_Session*>(test.session());
}

ORVLOG_DrawingContext* drawing_of(const ORV_DrawingInterface& table)
{
    return static_cast<ORVLOG_DrawingContext*>(table.object_paint.context);
}

std::string number(const void* pointer)
{
    return std::to_string(reinterpret_cast<uintptr_t>(pointer));
}

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

class Face : public testing::Test
{
protected:
    Face()
    {
        test.start_document();
        test.forget();
    }

    TestSession test;
    ORV_DrawingInterface face = {};
    ORV_FaceProperties properties = letter_face();
};

TEST_F(Face, LogsItsPropertiesAndForwards)
{
    properties.fp_FaceHints = 0x1A;
    EXPECT_EQ(test.orv.face_start.fn(&error_object, &test.orv, test.document, &face, nullptr, 3, &properties,
                                     &ticket_object, 2, 8),
              1U);
    EXPECT_EQ(test.log(),
              "  <ORV_face_start document_context=\"0\" drawing_context=\"0\" font_engine_functions=\"FALSE\" "
              "face_seq_number=\"3\" pixel_placement_orientation=\"GPA_PP_ORIENTATION_180_DEG\" "
              "pixel_placement=\"GPA_PLACEMENT_CENTER_INTERSECT\">\n"
              "    <ORV_FaceProperties fp_FaceHints=\"[0x1a] ORV_FACE_HINT_NO_PDF_BLENDS "
              "ORV_FACE_HINT_NO_COMPOSITING ORV_FACE_HINT_NO_OVERPRINTING \" fp_FaceInchToPixels=\"100 0 0 100 0 0 \" "
              "fp_WidthInPixels=\"850\" fp_HeightInPixels=\"1100\" fp_TrimBox=\"0 0 8.5 11 \" "
              "fp_ClipBox=\"0 0 8.5 11 \" fp_MediaSize=\"8.5 11 \">\n"
              "    </ORV_FaceProperties>\n"
              "  </ORV_face_start>\n");
    EXPECT_EQ(test.renderer.last(), "face_start err=" + number(&error_object) + " sequence=3 properties=" +
                                        number(&properties) + " orientation=2 placement=8 own-document");
    EXPECT_EQ(test.renderer.last_ticket, &ticket_object);
}

TEST_F(Face, EveryHintHasItsName)
{
    const std::pair<uint32_t, const char*> hints[] = {
        {0x0, "[0] ORV_FACE_HINT_NONE "},
        {0x2, "[0x2] ORV_FACE_HINT_NO_PDF_BLENDS "},
        {0x8, "[0x8] ORV_FACE_HINT_NO_COMPOSITING "},
        {0x10, "[0x10] ORV_FACE_HINT_NO_OVERPRINTING "},
        {0x20, "[0x20] ORV_FACE_HINT_EXPECTED_GRAD3PT_MESH "},
        {0x1, "[0x1] "},
    };
    for (const auto& [value, text] : hints)
    {
        test.forget();
        properties.fp_FaceHints = value;
        test.start_face(&face);
        test.orv.face_start.fn(nullptr, &test.orv, test.document, &face, nullptr, 1, &properties, nullptr, 0, 0);
        EXPECT_NE(test.log().find("fp_FaceHints=\"" + std::string(text) + "\""), std::string::npos) << text;
    }
}

TEST_F(Face, EveryPlacementAndOrientationHasItsName)
{
    const char* placements[] = {"GPA_PLACEMENT_GDI",
                                "GPA_PLACEMENT_PS",
                                "GPA_PLACEMENT_PCL",
                                "GPA_PLACEMENT_GDI_MQP",
                                "GPA_PLACEMENT_PATH_PCL_IMAGE_GDI",
                                "GPA_PLACEMENT_PATH_PS_IMAGE_GDI",
                                "GPA_PLACEMENT_PATH_GDI_IMAGE_PS",
                                "GPA_PLACEMENT_AREA_INTERSECT",
                                "GPA_PLACEMENT_CENTER_INTERSECT",
                                "UNKNOWN_VALUE(9)"};
    const char* orientations[] = {"GPA_PP_ORIENTATION_0_DEG",
                                  "GPA_PP_ORIENTATION_90_DEG",
                                  "GPA_PP_ORIENTATION_180_DEG",
                                  "GPA_PP_ORIENTATION_270_DEG",
                                  "GPA_PP_ORIENTATION_Y_FLIP_0_DEG",
                                  "GPA_PP_ORIENTATION_Y_FLIP_90_DEG",
                                  "GPA_PP_ORIENTATION_Y_FLIP_180_DEG",
                                  "GPA_PP_ORIENTATION_Y_FLIP_270_DEG",
                                  "UNKNOWN_VALUE(8)",
                                  "UNKNOWN_VALUE(9)"};
    for (uint32_t i = 0; i < 10; ++i)
    {
        test.forget();
        test.orv.face_start.fn(nullptr, &test.orv, test.document, &face, nullptr, 1, &properties, nullptr, i, i);
        EXPECT_NE(test.log().find(std::string(" pixel_placement_orientation=\"") + orientations[i] +
                                  "\" pixel_placement=\"" + placements[i] + "\">"),
                  std::string::npos)
            << i;
    }
}

TEST_F(Face, OpensADrawing)
{
    test.start_face(&face);
    ORVLOG_DrawingContext* drawing = drawing_of(face);
    ASSERT_NE(drawing, nullptr);
    EXPECT_EQ(face.object_paint_and_stroke.context, drawing);
    EXPECT_EQ(face.group_start.context, drawing);
    EXPECT_EQ(face.group_finish.context, drawing);
    EXPECT_EQ(face.resource_paint.context, drawing);
    EXPECT_EQ(face.drawing_error_context.context, drawing);
    EXPECT_EQ(face.drawing_finish.context, drawing);
    EXPECT_EQ(face.drawing_discard.context, drawing);
    EXPECT_EQ(drawing->session, test.session());
    EXPECT_EQ(drawing->kind, 1U);
    EXPECT_EQ(drawing->base_transform.m[0], 100);
    EXPECT_EQ(drawing->base_transform.m[3], 100);
    EXPECT_EQ(drawing->renderer_table.object_paint.context, &test.renderer);
    ASSERT_NE(session_of(test)->colour_frames, nullptr);
    EXPECT_EQ(session_of(test)->colour_frames->ticket, nullptr);
    EXPECT_EQ(session_of(test)->colour_frames->retained, 0U);
}

TEST_F(Face, ErrorContextIsTheFirstArgumentAndIsNeitherLoggedNorForwarded)
{
    test.orv.face_start.fn(&error_object, &test.orv, test.document, &face, nullptr, 1, &properties, nullptr, 0, 0);
    test.forget();
    EXPECT_EQ(face.drawing_error_context.fn(&face), &error_object);
    EXPECT_EQ(test.log(), "");
    EXPECT_EQ(test.renderer.count("drawing_error_context"), 0U);
}

TEST_F(Face, FontEngineIsWrappedForTheTimeOfTheDrawing)
{
    FakeFontEngine engine("E");
    test.orv.face_start.fn(nullptr, &test.orv, test.document, &face, engine.get(), 1, &properties, nullptr, 0, 0);
    EXPECT_EQ(test.log().substr(0, test.log().find('\n') + 1),
              "  <ORV_face_start document_context=\"0\" drawing_context=\"0\" font_engine_functions=\"TRUE\" "
              "fp_EngineIdGet=\"E\" GfpId=\"0\" face_seq_number=\"1\" "
              "pixel_placement_orientation=\"GPA_PP_ORIENTATION_0_DEG\" pixel_placement=\"GPA_PLACEMENT_GDI\">\n");
    EXPECT_NE(test.renderer.last_engine, engine.get());
    EXPECT_EQ(session_of(test)->current_font_wrapper, test.renderer.last_engine);
    EXPECT_EQ(drawing_of(face)->font_wrapper, test.renderer.last_engine);
    face.drawing_finish.fn(&face);
    EXPECT_EQ(session_of(test)->current_font_wrapper, nullptr);
}

TEST_F(Face, FailedWrapKeepsTheCallGoingWithTheClientsEngine)
{
    for (const uint64_t refused : {uint64_t{2}, uint64_t{3}})
    {
        FakeFontEngine engine("E");
        test.forget();
        test.allocator.refuse(refused);
        EXPECT_EQ(test.orv.face_start.fn(nullptr, &test.orv, test.document, &face, engine.get(), 1, &properties,
                                         nullptr, 0, 0),
                  1U);
        EXPECT_NE(test.log().find(" font_engine_functions=\"FALSE\" face_seq_number=\"1\" "), std::string::npos);
        EXPECT_EQ(test.renderer.last_engine, engine.get());
        EXPECT_EQ(session_of(test)->current_font_wrapper, nullptr);
        face.drawing_finish.fn(&face);
    }
}

TEST_F(Face, RefusedDrawingLogsAndForwardsNothing)
{
    test.allocator.refuse(1);
    face.object_paint.context = &error_object;
    EXPECT_EQ(test.start_face(&face), 0U);
    EXPECT_EQ(test.log(), "");
    EXPECT_EQ(test.renderer.count("face_start"), 0U);
    EXPECT_EQ(face.object_paint.context, &error_object);
    EXPECT_EQ(
        test.orv.face_start.fn(nullptr, &test.orv, test.document, nullptr, nullptr, 1, &properties, nullptr, 0, 0), 0U);
}

TEST_F(Face, NullRecordsAreLetBe)
{
    EXPECT_EQ(test.orv.face_start.fn(nullptr, &test.orv, nullptr, &face, nullptr, 1, nullptr, nullptr, 0, 0), 1U);
    EXPECT_EQ(test.log(), "  <ORV_face_start drawing_context=\"0\" font_engine_functions=\"FALSE\" "
                          "face_seq_number=\"1\" pixel_placement_orientation=\"GPA_PP_ORIENTATION_0_DEG\" "
                          "pixel_placement=\"GPA_PLACEMENT_GDI\">\n"
                          "  </ORV_face_start>\n");
}

class Resource : public Face
{
protected:
    uint32_t start(ORV_DrawingInterface* out, const ORV_DrawingInterface* parent = nullptr)
    {
        return test.orv.resource_start.fn(&error_object, &test.orv, test.document, out, parent, nullptr, &resource,
                                          nullptr, &resource_id);
    }

    ORV_DrawingInterface drawing = {};
    ORV_ResourceProperties resource = {0, 0, 0, 0, 0, {0, 0, 1, 2}};
    uint32_t resource_id = 99;
};

TEST_F(Resource, LogsItsPropertiesAndForwards)
{
    resource = {0x85, 0.1F, 1, 1, 3, {0.5, 0, 1, 2}};
    EXPECT_EQ(start(&drawing), 1U);
    EXPECT_EQ(test.log(), "  <ORV_resource_start document_context=\"0\" drawing_context=\"0\" "
                          "font_engine_functions=\"FALSE\" resource_id=\"0\">\n"
                          "    <ORV_ResourceProperties rp_ResourceHints=\"[0x85] ORV_RES_HINT_NO_PDF_BLENDS "
                          "ORV_RES_HINT_ONE_TIME_USE ORV_RES_HINT_WILL_BE_TILED \" rp_MaxRescale=\"0.100000001\" "
                          "rp_IsKnockout=\"TRUE\" rp_PixelPlacementRule=\"GPA_PLACEMENT_GDI_MQP\" "
                          "rp_Enclosing_box=\"0.5 0 1 2 \">\n"
                          "    </ORV_ResourceProperties>\n"
                          "  </ORV_resource_start>\n");
    EXPECT_EQ(resource_id, 0U);
    EXPECT_EQ(test.renderer.last(),
              "resource_start err=" + number(&error_object) + " properties=" + number(&resource) + " own-document");
    EXPECT_EQ(drawing_of(drawing)->kind, 2U);
    const double scale = 0.1F;
    const double expected[] = {scale, 0, 0, scale, 0, 0};
    for (int i = 0; i < 6; ++i)
        EXPECT_EQ(drawing_of(drawing)->base_transform.m[i], expected[i]);
}

TEST_F(Resource, EveryHintHasItsName)
{
    const std::pair<uint32_t, const char*> hints[] = {
        {0x0, "[0] ORV_RES_HINT_NONE "},
        {0x1, "[0x1] ORV_RES_HINT_NO_PDF_BLENDS "},
        {0x4, "[0x4] ORV_RES_HINT_ONE_TIME_USE "},
        {0x8, "[0x8] ORV_RES_HINT_NO_ROTATION "},
        {0x10, "[0x10] ORV_RES_HINT_NO_SCALE "},
        {0x20, "[0x20] ORV_RES_HINT_NO_SKEW "},
        {0x40, "[0x40] ORV_RES_HINT_NO_TILING "},
        {0x80, "[0x80] ORV_RES_HINT_WILL_BE_TILED "},
        {0x200, "[0x200] ORV_RES_HINT_NEVER_NON_ISOLATED "},
        {0x400, "[0x400] ORV_RES_SHARE_OUTSIDE_RESOURCE "},
        {0x800, "[0x800] ORV_RES_HINT_NO_COMPOSITING "},
        {0x1000, "[0x1000] ORV_RES_HINT_NO_OVERPRINTING "},
        {0x2000, "[0x2000] "},
    };
    for (const auto& [value, text] : hints)
    {
        test.forget();
        resource.rp_ResourceHints = value;
        start(&drawing);
        EXPECT_NE(test.log().find("rp_ResourceHints=\"" + std::string(text) + "\""), std::string::npos) << text;
    }
}

TEST_F(Resource, PlacementRuleIsGated)
{
    resource.rp_PixelPlacementRule = 2;
    start(&drawing);
    EXPECT_EQ(test.log().find("rp_PixelPlacementRule"), std::string::npos);
    resource.rp_HasPixelPlacementRule = 0x80;
    resource.rp_PixelPlacementRule = 9;
    test.forget();
    start(&drawing);
    EXPECT_NE(test.log().find(" rp_PixelPlacementRule=\"UNKNOWN_VALUE(9)\" "), std::string::npos);
}

TEST_F(Resource, MaxRescaleOfZeroOrLessLeavesTheIdentity)
{
    for (const float rescale : {0.0F, -0.0F, -2.0F, std::numeric_limits<float>::quiet_NaN()})
    {
        resource.rp_MaxRescale = rescale;
        start(&drawing);
        EXPECT_EQ(drawing_of(drawing)->base_transform.m[0], 1);
        EXPECT_EQ(drawing_of(drawing)->base_transform.m[3], 1);
    }
}

TEST_F(Resource, NumbersRunOnWhateverTheRendererAnswers)
{
    test.renderer.set_result(0);
    EXPECT_EQ(start(&drawing), 0U);
    EXPECT_EQ(resource_id, 0U);
    EXPECT_EQ(session_of(test)->resource_map, nullptr);
    test.renderer.set_result(5);
    EXPECT_EQ(start(&drawing), 5U);
    EXPECT_EQ(resource_id, 1U);
    ASSERT_NE(session_of(test)->resource_map, nullptr);
    EXPECT_EQ(session_of(test)->resource_map->resource_id, 1U);
    EXPECT_EQ(session_of(test)->resource_map->renderer_resource_id, 501U);
}

TEST_F(Resource, ParentIsShownByItsDrawingAndForwardedAsItCame)
{
    test.start_face(&face);
    start(&drawing, &face);
    test.forget();
    ORV_DrawingInterface inner = {};
    start(&inner, &drawing);
    EXPECT_EQ(test.log().substr(0, test.log().find('\n')),
              "  <ORV_resource_start document_context=\"0\" drawing_context=\"2\" parent_drawing=\"1\" "
              "font_engine_functions=\"FALSE\" resource_id=\"1\">");
    EXPECT_EQ(test.renderer.last_parent, &drawing);
}

TEST_F(Resource, FontEngineIsNamedAndNumbered)
{
    FakeFontEngine engine("E");
    test.orv.resource_start.fn(nullptr, &test.orv, test.document, &drawing, nullptr, engine.get(), &resource, nullptr,
                               &resource_id);
    EXPECT_EQ(test.log().substr(0, test.log().find('\n')),
              "  <ORV_resource_start document_context=\"0\" drawing_context=\"0\" font_engine_functions=\"TRUE\" "
              "fp_EngineIdGet=\"E\" GfpId=\"0\" resource_id=\"0\">");
}

TEST_F(Resource, RefusedMapRowGivesZero)
{
    test.allocator.refuse(3);
    EXPECT_EQ(start(&drawing), 0U);
    EXPECT_EQ(test.renderer.count("resource_start"), 1U);
    EXPECT_EQ(session_of(test)->resource_map, nullptr);
}

TEST_F(Resource, SecondReceiverSeesNone)
{
    FakeRenderer second("second");
    test.set_second(second.get());
    start(&drawing);
    EXPECT_TRUE(second.calls().empty());
}

TEST_F(Resource, NullRecordsAreLetBe)
{
    EXPECT_EQ(test.orv.resource_start.fn(nullptr, &test.orv, test.document, &drawing, nullptr, nullptr, nullptr,
                                         nullptr, nullptr),
              1U);
    EXPECT_EQ(test.log(), "  <ORV_resource_start document_context=\"0\" drawing_context=\"0\" "
                          "font_engine_functions=\"FALSE\" resource_id=\"0\">\n"
                          "  </ORV_resource_start>\n");
}

TEST_F(Resource, DestroyTranslatesTheNumberAndForgetsIt)
{
    start(&drawing);
    start(&drawing);
    test.forget();
    EXPECT_EQ(test.orv.resource_destroy.fn(&error_object, &test.orv, test.document, &drawing, 1), 1U);
    EXPECT_EQ(test.log(), "  <ORV_resource_destroy document_context=\"0\" parent_drawing=\"1\" resource_id=\"1\">\n"
                          "  </ORV_resource_destroy>\n");
    EXPECT_EQ(test.renderer.last(), "resource_destroy err=" + number(&error_object) + " resource=501 own-document");
    EXPECT_EQ(test.renderer.last_parent, &drawing);
    ASSERT_NE(session_of(test)->resource_map, nullptr);
    EXPECT_EQ(session_of(test)->resource_map->resource_id, 0U);
    EXPECT_EQ(session_of(test)->resource_map->next, nullptr);
    EXPECT_EQ(test.orv.resource_destroy.fn(nullptr, &test.orv, test.document, nullptr, 1), 0U);
}

TEST_F(Resource, DestroyOfAnOlderOneLeavesTheOthers)
{
    start(&drawing);
    start(&drawing);
    start(&drawing);
    const auto destroy = [&](uint32_t id)
    { return test.orv.resource_destroy.fn(nullptr, &test.orv, test.document, nullptr, id); };
    EXPECT_EQ(destroy(0), 1U);
    EXPECT_EQ(test.renderer.last(), "resource_destroy err=0 resource=500 own-document");
    EXPECT_EQ(destroy(0), 0U);
    EXPECT_EQ(destroy(1), 1U);
    EXPECT_EQ(test.renderer.last(), "resource_destroy err=0 resource=501 own-document");
    EXPECT_EQ(destroy(2), 1U);
    EXPECT_EQ(test.renderer.last(), "resource_destroy err=0 resource=502 own-document");
    EXPECT_EQ(session_of(test)->resource_map, nullptr);
    EXPECT_EQ(test.renderer.count("resource_destroy"), 3U);
}

TEST_F(Resource, DestroyOfAnUnknownNumberIsLoggedAndGivesZero)
{
    EXPECT_EQ(test.orv.resource_destroy.fn(nullptr, &test.orv, test.document, nullptr, 4), 0U);
    EXPECT_EQ(test.log(), "  <ORV_resource_destroy document_context=\"0\" resource_id=\"4\">\n"
                          "  </ORV_resource_destroy>\n");
    EXPECT_EQ(test.renderer.count("resource_destroy"), 0U);
}

TEST_F(Resource, DestroyGivesTheRenderersResultAndForgetsAllTheSame)
{
    start(&drawing);
    test.renderer.set_result(0);
    EXPECT_EQ(test.orv.resource_destroy.fn(nullptr, &test.orv, test.document, nullptr, 0), 0U);
    EXPECT_EQ(session_of(test)->resource_map, nullptr);
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

class MemoryContext : public Face
{
protected:
    uint32_t start(void* document)
    {
        return test.orv.memory_context_start.fn(&error_object, &test.orv, document, &face, 1, 2, 3, 4, 5, nullptr,
                                                &ticket_object, 8, 9, 10, 11, 12, 13);
    }
};

TEST_F(MemoryContext, LogsOnlyThatItBeganWithAWarningAheadOfTheElement)
{
    EXPECT_EQ(start(test.document), 1U);
    EXPECT_EQ(test.log(), "\n<!--\nORVLOG: WARNING: ORV_memory_context_start parameters are not logged\n-->\n"
                          "  <ORV_memory_context_start document_context=\"0\" drawing_context=\"0\">\n"
                          "  </ORV_memory_context_start>\n");
    EXPECT_EQ(drawing_of(face)->kind, 3U);
    for (const double value : drawing_of(face)->base_transform.m)
        EXPECT_EQ(value, 0);
    test.forget();
    start(test.document);
    EXPECT_EQ(test.log(), "\n<!--\nORVLOG: WARNING: ORV_memory_context_start parameters are not logged\n-->\n"
                          "  <ORV_memory_context_start document_context=\"0\" drawing_context=\"1\">\n"
                          "  </ORV_memory_context_start>\n");
}

TEST_F(MemoryContext, ForwardsItsWords)
{
    start(test.document);
    EXPECT_EQ(test.renderer.last(), "memory_context_start err=" + number(&error_object) + " own-document");
    const uintptr_t words[] = {1, 2, 3, 4, 5, 0, 0, 8, 9, 10, 11, 12, 13};
    for (int i = 0; i < 13; ++i)
        EXPECT_EQ(test.renderer.last_words[i], words[i]) << i;
    EXPECT_EQ(test.renderer.last_ticket, &ticket_object);
}

TEST_F(MemoryContext, WithoutDocumentHasNoDocumentAttribute)
{
    start(nullptr);
    EXPECT_NE(test.log().find("  <ORV_memory_context_start drawing_context=\"0\">\n"), std::string::npos);
}

TEST_F(MemoryContext, WrapsTheFontEngine)
{
    FakeFontEngine engine;
    test.orv.memory_context_start.fn(nullptr, &test.orv, test.document, &face, 1, 2, 3, 4, 5, engine.get(), nullptr, 8,
                                     9, 10, 11, 12, 13);
    EXPECT_NE(test.renderer.last_engine, engine.get());
    EXPECT_EQ(session_of(test)->current_font_wrapper, test.renderer.last_engine);
}

TEST(MemoryContextColour, ItsTicketIsHeldInAFrameUntilItsEnd)
{
    FakeTickets tickets;
    FakeTickets::Ticket ticket = {&tickets, 9, "", 0};
    TestSession test(Behind::kRenderer, nullptr, tickets.functions());
    ORV_DrawingInterface memory = {};
    test.start_document();
    EXPECT_EQ(test.orv.memory_context_start.fn(nullptr, &test.orv, test.document, &memory, 1, 2, 3, 4, 5, nullptr,
                                               &ticket, 8, 9, 10, 11, 12, 13),
              1U);
    const ORVLOG_ColourFrame* frame = session_of(test)->colour_frames;
    ASSERT_NE(frame, nullptr);
    EXPECT_EQ(frame->ticket, &ticket);
    EXPECT_EQ(frame->next, nullptr);
    EXPECT_EQ(ticket.references, 1);
    EXPECT_EQ(memory.drawing_finish.fn(&memory), 1U);
    EXPECT_EQ(session_of(test)->colour_frames, nullptr);
    EXPECT_EQ(ticket.references, 0);
}

// A colour manager that lacks an operation of a frame is asked for none of them, and the page is drawn.
TEST(TicketTables, ThatLackAnOperationGiveNoFrame)
{
    for (const int lacking : {0, 1, 2})
    {
        FakeTickets tickets;
        FakeTickets::Ticket ticket = {&tickets, 9, "", 0};
        ORVLOG_TicketFunctions functions = *tickets.functions();
        if (lacking == 0)
            functions.retain = nullptr;
        else if (lacking == 1)
            functions.release = nullptr;
        else
            functions.query = nullptr;
        TestSession test(Behind::kRenderer, nullptr, &functions);
        const ORV_FaceProperties properties = letter_face();
        ORV_DrawingInterface face = {};
        test.start_document();
        EXPECT_EQ(
            test.orv.face_start.fn(nullptr, &test.orv, test.document, &face, nullptr, 1, &properties, &ticket, 0, 0),
            1U);
        EXPECT_EQ(session_of(test)->colour_frames, nullptr) << lacking;
        EXPECT_EQ(face.drawing_finish.fn(&face), 1U);
        EXPECT_EQ(test.finish_document(), 1U);
        EXPECT_EQ(test.shut_down(), 1U);
        EXPECT_EQ(test.renderer.calls().size(), 4U);
        EXPECT_EQ(tickets.retains, 0U) << lacking;
        EXPECT_EQ(tickets.releases, 0U) << lacking;
        EXPECT_EQ(tickets.queries, 0U) << lacking;
    }
}

TEST_F(MemoryContext, GoesToTheSecondReceiverWhole)
{
    FakeRenderer second("second");
    test.set_second(second.get());
    second.set_result(31);
    EXPECT_EQ(start(test.document), 31U);
    EXPECT_EQ(test.log(), "");
    EXPECT_EQ(test.renderer.count("memory_context_start"), 0U);
    EXPECT_EQ(second.count("memory_context_start"), 1U);
    EXPECT_EQ(face.drawing_finish.context, &second);
    EXPECT_EQ(second.last_words[12], 13U);
    EXPECT_EQ(second.last_ticket, &ticket_object);
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
