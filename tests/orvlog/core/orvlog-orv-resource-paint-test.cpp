// ORV_resource_paint.

#include "tests/orvlog/core/paint-fixture.h"

#include <gtest/gtest.h>

#include <string>

namespace
{

using namespace orvlog::test;

class ResourcePaint : public Paint
{
protected:
    ResourcePaint()
    {
        ORV_DrawingInterface resource = {};
        test.orv.resource_start.fn(nullptr, &test.orv, test.document, &resource, nullptr, nullptr, nullptr, nullptr,
                                   &arguments.resource_id);
        resource.drawing_finish.fn(&resource);
        test.forget();
    }

    ResourceArguments arguments;
};

TEST_F(ResourcePaint, LogsItsAttributesAndForwardsTheRenderersNumber)
{
    const GGO_Matrix retransform = {{1, 0, 0, 1, 0.5, 0}};
    arguments.hints = 0x802;
    arguments.type = 2;
    arguments.retransform = &retransform;
    arguments.tiling = 6;
    arguments.x = 1.5;
    arguments.y = 2;
    arguments.orientation = 4;
    EXPECT_EQ(paint_resource(face, arguments), 1U);
    EXPECT_EQ(test.log(), "  <ORV_resource_paint drawing_context=\"0\" resource_id=\"0\" hints=\"[0x802] "
                          "ORV_GRP_HINT_NO_PDF_BLENDS ORV_GRP_HINT_RECOMMEND_PRERENDERING \" "
                          "group_type=\"ORV_GROUP_NON_ISOLATED\" retransform=\"1 0 0 1 0.5 0 \" tiling_flags=\"6\" "
                          "x_repetition_interval=\"1.5\" y_repetition_interval=\"2\" "
                          "pixel_placement_orientation=\"GPA_PP_ORIENTATION_Y_FLIP_0_DEG\">\n"
                          "  </ORV_resource_paint>\n");
    EXPECT_EQ(test.renderer.last(), "resource_paint resource=500 hints=2050 type=2 retransform=" +
                                        std::to_string(reinterpret_cast<uintptr_t>(&retransform)) +
                                        " tiling=6 x=1 y=2 mask=0 color=0 orientation=4");
}

TEST_F(ResourcePaint, WithoutRetransformHasNoSuchAttribute)
{
    paint_resource(face, arguments);
    EXPECT_NE(test.log().find(" group_type=\"ORV_GROUP_SIMPLE\" tiling_flags=\"0\" "), std::string::npos);
}

TEST_F(ResourcePaint, MembersStandInTheirOrder)
{
    const GBC_Color color = {};
    op.op_MaskMode = GOP_MASK_OUT;
    arguments.op = &op;
    arguments.operand2 = &operands[1];
    arguments.clip = &clip;
    arguments.mask = &color;
    arguments.color = &color;
    paint_resource(face, arguments);
    EXPECT_EQ(members(test.log()), "op operand2 group_clip separation_mask separation_color ");
    EXPECT_EQ(test.renderer.last_operands[1], &operands[1]);
    op.op_MaskMode = GOP_MASK_NONE;
    test.forget();
    paint_resource(face, arguments);
    EXPECT_EQ(members(test.log()), "op group_clip separation_mask separation_color ");
}

TEST_F(ResourcePaint, UnknownNumberLeavesTheElementOpen)
{
    arguments.resource_id = 7;
    EXPECT_EQ(paint_resource(face, arguments), 0U);
    EXPECT_EQ(test.renderer.count("resource_paint"), 0U);
    EXPECT_EQ(test.log().find("</ORV_resource_paint>"), std::string::npos);
    EXPECT_EQ(session()->writer.depth, 2U);
    test.forget();
    face.drawing_finish.fn(&face);
    EXPECT_EQ(test.log(), "    <ORV_drawing_finish drawing_context=\"0\">\n    </ORV_drawing_finish>\n");
}

TEST_F(ResourcePaint, WithoutRendererAnyNumberGivesOne)
{
    drawing()->renderer_table.resource_paint.fn = nullptr;
    arguments.resource_id = 7;
    EXPECT_EQ(paint_resource(face, arguments), 1U);
    EXPECT_NE(test.log().find("  </ORV_resource_paint>\n"), std::string::npos);
}

TEST_F(ResourcePaint, TransformsStayAsTheyWere)
{
    session()->object_transform = {{7, 7, 7, 7, 7, 7}};
    session()->object_type = 55;
    paint_resource(face, arguments);
    EXPECT_EQ(session()->object_transform.m[0], 7);
    EXPECT_EQ(session()->object_type, 55U);
}

TEST_F(ResourcePaint, InAMemoryContextIsForwardedOnly)
{
    open_memory_context();
    EXPECT_EQ(paint_resource(face, arguments), 1U);
    EXPECT_EQ(test.log(), "");
    EXPECT_EQ(test.renderer.count("resource_paint"), 1U);
    arguments.resource_id = 7;
    EXPECT_EQ(paint_resource(face, arguments), 0U);
}

}  // namespace
