// ORV_resource_start and ORV_resource_destroy.

#include "orvlog/session/orvlog-session.h"
#include "tests/orvlog/core/face-fixture.h"
#include "tests/support/fake-font-engine.h"

#include <gtest/gtest.h>

#include <limits>
#include <string>

namespace
{

using namespace orvlog::test;

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

}  // namespace
