// ORV_drawing_finish and ORV_drawing_discard.

#include "orvlog/session/orvlog-session.h"
#include "tests/orvlog/core/group-fixture.h"
#include "tests/support/fake-font-engine.h"
#include "tests/support/test-session.h"

#include <gtest/gtest.h>

namespace
{

using namespace orvlog::test;

TEST(DrawingEnd, FinishLogsAndReleases)
{
    TestSession test;
    ORV_DrawingInterface face = {};
    test.start_document();
    test.start_face(&face);
    const uint64_t before = test.allocator.outstanding();
    test.forget();
    EXPECT_EQ(face.drawing_finish.fn(&face), 1U);
    EXPECT_EQ(test.log(), "  <ORV_drawing_finish drawing_context=\"0\">\n  </ORV_drawing_finish>\n");
    EXPECT_EQ(test.renderer.last(), "drawing_finish");
    EXPECT_EQ(test.allocator.outstanding(), before - 2);
}

TEST(DrawingEnd, DiscardLogsUnderItsOwnName)
{
    TestSession test;
    ORV_DrawingInterface face = {};
    test.start_document();
    test.start_face(&face);
    test.forget();
    EXPECT_EQ(face.drawing_discard.fn(&face), 1U);
    EXPECT_EQ(test.log(), "  <ORV_drawing_discard drawing_context=\"0\">\n  </ORV_drawing_discard>\n");
    EXPECT_EQ(test.renderer.last(), "drawing_discard");
}

TEST(DrawingEnd, PopsGroupsLeftOpen)
{
    TestSession test;
    FakeFontEngine face_engine;
    FakeFontEngine group_engine;
    ORV_DrawingInterface face = {};
    const ORV_FaceProperties properties = letter_face();
    test.start_document();
    test.orv.face_start.fn(nullptr, &test.orv, test.document, &face, face_engine.get(), 1, &properties, nullptr, 0, 0);
    GroupArguments arguments;
    arguments.engine = group_engine.get();
    start_group(face, arguments);
    start_group(face, arguments);
    EXPECT_EQ(face.drawing_finish.fn(&face), 1U);
    const auto* session = static_cast<ORVLOG_Session*>(test.session());
    EXPECT_EQ(session->group_depth, 0U);
    EXPECT_EQ(session->current_font_wrapper, nullptr);
    EXPECT_EQ(session->live_font_wrappers, nullptr);
}

struct Results
{
    uint32_t second;
    uint32_t renderer;
    uint32_t finish;
    uint32_t discard;
};

TEST(DrawingEnd, ResultsOfBothReceivers)
{
    const Results table[] = {{1, 1, 1, 1}, {1, 0, 0, 0}, {0, 1, 0, 1}, {0, 0, 0, 0}, {2, 1, 0, 1}, {3, 5, 1, 5}};
    for (const Results& row : table)
    {
        for (const bool finish : {true, false})
        {
            TestSession test;
            FakeRenderer second("second");
            test.set_second(second.get());
            ORV_DrawingInterface face = {};
            test.start_document();
            test.start_face(&face);
            second.set_result(row.second);
            test.renderer.set_result(row.renderer);
            const uint32_t result = finish ? face.drawing_finish.fn(&face) : face.drawing_discard.fn(&face);
            EXPECT_EQ(result, finish ? row.finish : row.discard) << row.second << row.renderer << finish;
            EXPECT_EQ(second.last(), finish ? "drawing_finish" : "drawing_discard");
        }
    }
}

TEST(DrawingEnd, WithoutRendererTheSecondReceiverDecides)
{
    TestSession test(Behind::kNothing);
    FakeRenderer second("second");
    test.set_second(second.get());
    ORV_DrawingInterface face = {};
    test.start_document();
    test.start_face(&face);
    second.set_result(6);
    EXPECT_EQ(face.drawing_finish.fn(&face), 0U);
}

}  // namespace
