// ORV_face_start.

#include "orvlog/session/orvlog-frames.h"
#include "tests/orvlog/core/face-fixture.h"
#include "tests/support/fake-font-engine.h"

#include <gtest/gtest.h>

#include <string>

namespace
{

using namespace orvlog::test;

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

}  // namespace
