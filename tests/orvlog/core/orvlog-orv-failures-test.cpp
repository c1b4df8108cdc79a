// What a failure makes of a drawing call: images that cannot be read, engines and frames that get no memory,
// resources that nobody knows.

#include "holv-core/ger/ger-error.h"
#include "orvlog/font/orvlog-font-wrapper.h"
#include "orvlog/session/orvlog-frames.h"
#include "tests/support/fake-font-engine.h"
#include "tests/support/fake-image.h"
#include "tests/support/test-session.h"

#include <gtest/gtest.h>

#include <string>

namespace
{

using namespace orvlog::test;

struct ErrorRoom
{
    GER_Error error;
    char text[200];
};

class Failures : public testing::Test
{
protected:
    Failures()
    {
        room.error.ge_TextCapacity = 150;
        op.op_MaskMode = GOP_MASK_IN;
        image.read_result = 0;
        const ORV_FaceProperties properties = letter_face();
        test.start_document();
        test.orv.resource_start.fn(nullptr, &test.orv, test.document, &resource, nullptr, nullptr, nullptr, nullptr,
                                   &resource_id);
        resource.drawing_finish.fn(&resource);
        test.orv.face_start.fn(&room.error, &test.orv, test.document, &face, nullptr, 1, &properties, nullptr, 0, 0);
        outstanding = test.allocator.outstanding();
        test.forget();
    }
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
    ORVLOG_DrawingContext* drawing()
    {
        return static_cast<ORVLOG_DrawingContext*>(face.object_paint.context);
    }
    uint32_t paint(GOP_OperandPointer* operand)
    {
        return face.object_paint.fn(&face, 8, 0, nullptr, nullptr, 0, nullptr, operand, nullptr, nullptr);
    }
    uint32_t stroke(GOP_OperandPointer* operand)
    {
        return face.object_paint_and_stroke.fn(&face, 8, 8, 0, nullptr, nullptr, nullptr, nullptr, nullptr, 0, nullptr,
                                               ORV_PAINTFLAGS_STROKE, nullptr, nullptr, nullptr, nullptr, operand,
                                               nullptr, nullptr);
    }
    uint32_t paint_resource(GOP_OperandPointer* operand, uint32_t id)
    {
        return face.resource_paint.fn(&face, id, 0, 0, nullptr, &op, operand, nullptr, 0, 0, 0, nullptr, nullptr, 0);
    }
    uint32_t start_group(GOP_OperandPointer* operand, const GFI_FontEngineTable* engine = nullptr)
    {
        return face.group_start.fn(&face, 1, nullptr, engine, 0, 0, 0, 0, nullptr, 0, 0, 0, nullptr, &op, operand,
                                   nullptr, 0, 0, 0, nullptr, nullptr, nullptr);
    }
    void expect_report(int32_t code, const char* text)
    {
        EXPECT_EQ(room.error.ge_Severity, 1);
        EXPECT_EQ(room.error.ge_Module, 6);
        EXPECT_EQ(room.error.ge_Code, code);
        EXPECT_STREQ(room.error.ge_Text, text);
    }
    void expect_no_report()
    {
        EXPECT_EQ(room.error.ge_Severity, 0);
        EXPECT_STREQ(room.error.ge_Text, "");
    }

    TestSession test;
    ErrorRoom room = {};
    FakeImage image{2, 2};
    GOP_Operator op = {};
    ORV_DrawingInterface resource = {};
    ORV_DrawingInterface face = {};
    uint32_t resource_id = 99;
    uint64_t outstanding = 0;
};

TEST_F(Failures, ReadOfAPaintIsReportedOnceItIsPassedOnAndClosed)
{
    test.set_base_mode();
    int32_t severity_seen = 9;
    test.renderer.on_draw([&](const char*) { severity_seen = room.error.ge_Severity; });
    EXPECT_EQ(paint(image.operand()), 0U);
    EXPECT_EQ(severity_seen, 0);
    EXPECT_TRUE(test.log().ends_with("  </ORV_object_paint>\n"));
    expect_report(33303786, "ORVLOG: Image read failed.:orvlog-orv v$Revision: 1.114 $ L:3786 ");
    EXPECT_EQ(test.allocator.outstanding(), outstanding);
}

TEST_F(Failures, ReadOfAPaintAndStroke)
{
    test.set_base_mode();
    EXPECT_EQ(stroke(image.operand()), 0U);
    EXPECT_EQ(test.renderer.count("object_paint_and_stroke"), 1U);
    EXPECT_TRUE(test.log().ends_with("  </ORV_object_paint_and_stroke>\n"));
    expect_report(33304346, "ORVLOG: Image read failed.:orvlog-orv v$Revision: 1.114 $ L:4346 ");
    EXPECT_EQ(test.allocator.outstanding(), outstanding);
}

TEST_F(Failures, ReadOfAResourcePaint)
{
    test.set_base_mode();
    EXPECT_EQ(paint_resource(image.operand(), resource_id), 0U);
    EXPECT_EQ(test.renderer.count("resource_paint"), 1U);
    EXPECT_TRUE(test.log().ends_with("  </ORV_resource_paint>\n"));
    expect_report(33303480, "ORVLOG: Image read failed.:orvlog-orv v$Revision: 1.114 $ L:3480 ");
    EXPECT_EQ(test.allocator.outstanding(), outstanding);
}

TEST_F(Failures, ReadOfAGroupLeavesTheGroupOpen)
{
    test.set_base_mode();
    EXPECT_EQ(start_group(image.operand()), 0U);
    EXPECT_EQ(test.renderer.count("group_start"), 1U);
    EXPECT_TRUE(test.log().ends_with("  </ORV_group_start>\n"));
    expect_report(33302523, "ORVLOG: Image read failed.:orvlog-orv v$Revision: 1.114 $ L:2523 ");
    EXPECT_NE(drawing()->group_frames, nullptr);
    uint32_t replay = 0;
    EXPECT_EQ(face.group_finish.fn(&face, &replay), 1U);
    EXPECT_EQ(test.allocator.outstanding(), outstanding);
}

TEST_F(Failures, OfReadingsAreNoneInTransparentMode)
{
    EXPECT_EQ(paint(image.operand()), 1U);
    EXPECT_EQ(stroke(image.operand()), 1U);
    EXPECT_EQ(paint_resource(image.operand(), resource_id), 1U);
    EXPECT_EQ(start_group(image.operand()), 1U);
    EXPECT_EQ(image.take_calls(), "");
    expect_no_report();
}

TEST_F(Failures, FirstReportStays)
{
    test.set_base_mode();
    stroke(image.operand());
    EXPECT_EQ(paint(image.operand()), 0U);
    EXPECT_EQ(room.error.ge_Code, 33304346);
}

TEST_F(Failures, WithoutAnErrorContextNothingIsReported)
{
    test.set_base_mode();
    drawing()->error_context = nullptr;
    EXPECT_EQ(paint(image.operand()), 0U);
    expect_no_report();
}

TEST_F(Failures, UnknownResourceGivesItsImageBackAndReportsNothing)
{
    test.set_base_mode();
    EXPECT_EQ(paint_resource(image.operand(), 7), 0U);
    EXPECT_EQ(test.renderer.count("resource_paint"), 0U);
    EXPECT_EQ(test.log().find("</ORV_resource_paint>"), std::string::npos);
    EXPECT_EQ(session()->writer.depth, 2U);
    expect_no_report();
    EXPECT_EQ(test.allocator.outstanding(), outstanding);
}

TEST_F(Failures, ImagesInAMemoryContextAreNeitherReplacedNorRead)
{
    ORV_DrawingInterface memory = {};
    test.orv.memory_context_start.fn(&room.error, &test.orv, test.document, &memory, 0, 0, 0, 0, 0, nullptr, nullptr, 0,
                                     0, 0, 0, 0, 0);
    test.set_base_mode();
    test.forget();
    EXPECT_EQ(memory.object_paint.fn(&memory, 8, 0, nullptr, nullptr, 0, nullptr, image.operand(), nullptr, nullptr),
              1U);
    EXPECT_EQ(test.renderer.last_operands[0], image.operand());
    EXPECT_EQ(memory.resource_paint.fn(&memory, resource_id, 0, 0, nullptr, &op, image.operand(), nullptr, 0, 0, 0,
                                       nullptr, nullptr, 0),
              1U);
    EXPECT_EQ(test.renderer.last_operands[1], image.operand());
    EXPECT_EQ(memory.group_start.fn(&memory, 1, nullptr, nullptr, 0, 0, 0, 0, nullptr, 0, 0, 0, nullptr, &op,
                                    image.operand(), nullptr, 0, 0, 0, nullptr, nullptr, nullptr),
              1U);
    EXPECT_EQ(test.renderer.last_operands[1], image.operand());
    EXPECT_EQ(image.take_calls(), "");
    EXPECT_EQ(test.log(), "");
    expect_no_report();
}

TEST_F(Failures, EngineOfAGroupThatGetsNoMemoryIsForwardedAsItCame)
{
    // The group's frame, the colour's frame, then the table and the wrapper.
    for (const uint64_t refused : {uint64_t{3}, uint64_t{4}})
    {
        FakeFontEngine engine("E");
        test.forget();
        test.allocator.refuse(refused);
        EXPECT_EQ(start_group(nullptr, engine.get()), 1U);
        EXPECT_NE(test.log().find(" font_engine_functions=\"FALSE\" hints=\"[0] ORV_GRP_HINT_NONE \" "),
                  std::string::npos);
        EXPECT_EQ(test.renderer.last_engine, engine.get());
        EXPECT_EQ(session()->current_font_wrapper, nullptr);
        ASSERT_NE(drawing()->group_frames, nullptr);
        EXPECT_EQ(drawing()->group_frames->owns_font_wrapper, 0U);
        uint32_t replay = 0;
        face.group_finish.fn(&face, &replay);
        EXPECT_EQ(test.allocator.outstanding(), outstanding);
    }
}

TEST_F(Failures, EngineOfAResourceOrMemoryContextThatGetsNoMemoryIsForwardedAsItCame)
{
    for (const uint64_t refused : {uint64_t{2}, uint64_t{3}})
    {
        FakeFontEngine engine("E");
        ORV_DrawingInterface inner = {};
        test.forget();
        test.allocator.refuse(refused);
        test.orv.resource_start.fn(nullptr, &test.orv, test.document, &inner, nullptr, engine.get(), nullptr, nullptr,
                                   &resource_id);
        EXPECT_NE(test.log().find(" font_engine_functions=\"FALSE\" resource_id=\""), std::string::npos);
        EXPECT_EQ(test.renderer.last_engine, engine.get());
        EXPECT_EQ(inner.drawing_finish.fn(&inner), 1U);
        test.allocator.refuse(refused);
        EXPECT_EQ(test.orv.memory_context_start.fn(nullptr, &test.orv, test.document, &inner, 0, 0, 0, 0, 0,
                                                   engine.get(), nullptr, 0, 0, 0, 0, 0, 0),
                  1U);
        EXPECT_EQ(test.renderer.last_engine, engine.get());
        EXPECT_EQ(session()->current_font_wrapper, nullptr);
        EXPECT_EQ(inner.drawing_finish.fn(&inner), 1U);
    }
}

TEST_F(Failures, GroupWithoutAFrameIsNotTakenForTheOneAroundIt)
{
    const GGO_Matrix retransform = {{2, 0, 0, 2, 0, 0}};
    face.group_start.fn(&face, 1, nullptr, nullptr, 0, 0, 0, 0, nullptr, 0, 0, 0, &retransform, nullptr, nullptr,
                        nullptr, 0, 0, 0, nullptr, nullptr, nullptr);
    test.allocator.refuse(1);
    test.forget();
    EXPECT_EQ(start_group(image.operand()), 1U);
    EXPECT_NE(test.log().find("    <ORV_group_start.operand2>\n"), std::string::npos);
    EXPECT_EQ(test.renderer.last_operands[1], image.operand()) << "no frame holds a replaced one";
    EXPECT_EQ(session()->group_depth, 1U);
    EXPECT_EQ(drawing()->group_frames->group_transform.m[0], 2);
    EXPECT_EQ(drawing()->group_frames->replaced_operand, nullptr);
}

TEST_F(Failures, DepthOfGroupsCountsAllDrawings)
{
    ORV_DrawingInterface inner = {};
    uint32_t replay = 0;
    start_group(nullptr);
    test.orv.resource_start.fn(nullptr, &test.orv, test.document, &inner, &face, nullptr, nullptr, nullptr,
                               &resource_id);
    inner.group_start.fn(&inner, 1, nullptr, nullptr, 0, 0, 0, 0, nullptr, 0, 0, 0, nullptr, nullptr, nullptr, nullptr,
                         0, 0, 0, nullptr, nullptr, nullptr);
    EXPECT_EQ(session()->group_depth, 2U);
    inner.drawing_finish.fn(&inner);
    EXPECT_EQ(session()->group_depth, 1U);
    face.group_finish.fn(&face, &replay);
    EXPECT_EQ(session()->group_depth, 0U);
}

TEST_F(Failures, WarningOfAMemoryContextWaitsWhileNothingHasBeenClosed)
{
    TestSession fresh;
    ORV_DrawingInterface memory = {};
    fresh.orv.memory_context_start.fn(nullptr, &fresh.orv, nullptr, &memory, 0, 0, 0, 0, 0, nullptr, nullptr, 0, 0, 0,
                                      0, 0, 0);
    EXPECT_EQ(fresh.log(), "  <ORV_memory_context_start drawing_context=\"0\">\n"
                           "  </ORV_memory_context_start>\n"
                           "\n<!--\nORVLOG: WARNING: ORV_memory_context_start parameters are not logged\n-->\n");
}

}  // namespace
