// ORV_object_paint.

#include "holv-core/ggo/ggo-geometry.h"
#include "tests/orvlog/core/paint-fixture.h"

#include <gtest/gtest.h>

#include <string>

namespace
{

using namespace orvlog::test;

class ObjectPaint : public Paint
{
protected:
    PaintArguments arguments;
};

TEST_F(ObjectPaint, LogsItsAttributesAndStaysOpenForTheForward)
{
    std::string seen;
    test.renderer.on_draw([&](const char*) { seen = test.log(); });
    arguments.hints = 5;
    arguments.placement = 8;
    EXPECT_EQ(paint(face, arguments), 1U);
    const std::string tag = "  <ORV_object_paint id=\"0\" drawing_context=\"0\" object_type_and_flag=\"4\" "
                            "object_hints=\"[0x5] ORV_OBJ_HINT_UNCHANGED_CLIP ORV_OBJ_HINT_UNCHANGED_PATH \" "
                            "path_pixel_placement=\"GPA_PLACEMENT_CENTER_INTERSECT\">\n";
    EXPECT_EQ(seen, tag);
    EXPECT_EQ(test.log(), tag + "  </ORV_object_paint>\n");
    EXPECT_EQ(test.renderer.last(), "object_paint type=4 hints=5 placement=8");
    EXPECT_EQ(test.renderer.last_table, &drawing()->renderer_table);
}

// The numbers of the texts in the log since the last call, in their order.
std::string text_numbers(TestSession* test)
{
    const std::string log = test->log();
    const std::string before = "<GSH_ShapePointer.sp_U.glyph ";
    std::string numbers;
    for (size_t at = log.find(before); at != std::string::npos; at = log.find(before, at + 1))
        numbers += log.substr(at + before.size(), log.find('>', at) - at - before.size()) + "\n";
    test->forget();
    return numbers;
}

TEST_F(ObjectPaint, TextsAreNumberedAnewInEachPaint)
{
    const GSH_Shape glyphs = {GSH_SHAPE_GLYPHS, 0, ggo_identity()};
    const GFI_StringDesc desc = {};
    const GFI_FontSpecPointer font = {};
    const GFI_StringDescPointer string = {&desc, nullptr, nullptr};
    const GFI_StringDescPointer other = {&desc, nullptr, nullptr};
    GSH_ShapePointer text = {};
    text.sp_HeaderPtr = &glyphs;
    text.sp_U.glyph = {&font, &string};
    GSH_ShapeList text_clip = {};
    text_clip.sl_Shape = text;
    text_clip.sl_Shape.sp_U.glyph.string_desc = &other;
    arguments.path = &text;
    arguments.clip = &text_clip;
    paint(face, arguments);
    EXPECT_EQ(text_numbers(&test), "orvlog_font_spec_id=\"0\" orvlog_string_desc_id=\"0\"\n"
                                   "orvlog_font_spec_id=\"0\" orvlog_string_desc_id=\"1\"\n");
    paint(face, arguments);
    EXPECT_EQ(text_numbers(&test), "orvlog_font_spec_id=\"1\" orvlog_string_desc_id=\"2\"\n"
                                   "orvlog_font_spec_id=\"1\" orvlog_string_desc_id=\"3\"\n");
    // The clip of a group goes on with the texts of the paint before it; a resource that is painted does not.
    uint32_t group = 0;
    face.group_start.fn(&face, 0, &group, nullptr, 0, 0, 0, 0, nullptr, 0, 0, 0, nullptr, nullptr, nullptr, &text_clip,
                        0, 0, 0, nullptr, nullptr, nullptr);
    EXPECT_EQ(text_numbers(&test), "orvlog_font_spec_id=\"1\" orvlog_string_desc_id=\"3\"\n");
    ResourceArguments resource;
    resource.clip = &text_clip;
    paint_resource(face, resource);
    EXPECT_EQ(text_numbers(&test), "orvlog_font_spec_id=\"2\" orvlog_string_desc_id=\"4\"\n");
    StrokeArguments stroked;
    stroked.path = &text;
    stroke(face, stroked);
    EXPECT_EQ(text_numbers(&test), "orvlog_font_spec_id=\"3\" orvlog_string_desc_id=\"5\"\n");
}

TEST_F(ObjectPaint, HintsOfZeroNameTheEmptySet)
{
    arguments.type = 255;
    arguments.placement = 9;
    paint(face, arguments);
    paint(face, arguments);
    EXPECT_EQ(test.log(), "  <ORV_object_paint id=\"0\" drawing_context=\"0\" object_type_and_flag=\"255\" "
                          "object_hints=\"[0] ORV_OBJ_HINT_NONE \" path_pixel_placement=\"UNKNOWN_VALUE(9)\">\n"
                          "  </ORV_object_paint>\n"
                          "  <ORV_object_paint id=\"1\" drawing_context=\"0\" object_type_and_flag=\"255\" "
                          "object_hints=\"[0] ORV_OBJ_HINT_NONE \" path_pixel_placement=\"UNKNOWN_VALUE(9)\">\n"
                          "  </ORV_object_paint>\n");
}

TEST_F(ObjectPaint, EveryHintHasItsName)
{
    arguments.hints = 0x1FFFF;
    paint(face, arguments);
    EXPECT_NE(
        test.log().find(
            " object_hints=\"[0x1ffff] ORV_OBJ_HINT_UNCHANGED_CLIP ORV_OBJ_HINT_UNCHANGED_OPERATOR "
            "ORV_OBJ_HINT_UNCHANGED_PATH ORV_OBJ_HINT_UNCHANGED_OP1 ORV_OBJ_HINT_UNCHANGED_OP2 "
            "ORV_OBJ_HINT_UNCHANGED_OP3 ORV_OBJ_HINT_UNCHANGED_OPTYPE ORV_OBJ_HINT_FIRST_OF_STROKE "
            "ORV_OBJ_HINT_LAST_OF_STROKE ORV_OBJ_HINT_LAST_COMPOSITING ORV_OBJ_HINT_LAST_OBJECT "
            "ORV_OBJ_HINT_UNCHANGED_STROKE_OP1 ORV_OBJ_HINT_UNCHANGED_STROKE_OP2 ORV_OBJ_HINT_UNCHANGED_STROKE_OP3 "
            "ORV_OBJ_HINT_UNCHANGED_STROKE_OPERATOR ORV_OBJ_HINT_UNCHANGED_STROKE_OPTYPE \" "),
        std::string::npos);
    char expected[64];
    const char* names[] = {"UNCHANGED_CLIP",         "UNCHANGED_OPERATOR",   "UNCHANGED_PATH",
                           "UNCHANGED_OP1",          "UNCHANGED_OP2",        "UNCHANGED_OP3",
                           "UNCHANGED_OPTYPE",       "FIRST_OF_STROKE",      "LAST_OF_STROKE",
                           "LAST_COMPOSITING",       "LAST_OBJECT",          "UNCHANGED_STROKE_OP1",
                           "UNCHANGED_STROKE_OP2",   "UNCHANGED_STROKE_OP3", "UNCHANGED_STROKE_OPERATOR",
                           "UNCHANGED_STROKE_OPTYPE"};
    for (uint32_t bit = 0; bit < 16; ++bit)
    {
        test.forget();
        arguments.hints = 1U << bit;
        paint(face, arguments);
        std::snprintf(expected, sizeof expected, "] ORV_OBJ_HINT_%s \"", names[bit]);
        EXPECT_NE(test.log().find(expected), std::string::npos) << names[bit];
    }
}

TEST_F(ObjectPaint, MembersStandInTheirOrder)
{
    op.op_OperatorType = GOP_ROP_ROP4;
    arguments = {4, 0, &op, &shape, 0, &clip, {&operands[0], &operands[1], &operands[2]}};
    paint(face, arguments);
    EXPECT_EQ(members(test.log()), "op paint_path clip operand1 operand2 operand3 ");
    for (int i = 0; i < 3; ++i)
        EXPECT_EQ(test.renderer.last_operands[i], &operands[i]);
    EXPECT_EQ(test.renderer.last_shape, &shape);
    EXPECT_EQ(test.renderer.last_clip, &clip);
    EXPECT_EQ(test.renderer.last_op, &op);
}

struct CountingRow
{
    uint32_t type;
    uint16_t operation;
    uint32_t mask;
    const char* members;
};

TEST_F(ObjectPaint, OperatorDecidesWhichOperandsCount)
{
    const CountingRow rows[] = {
        {0, 0, 0, "op operand1 "},          {0, 0, 1, "op operand1 operand2 "},
        {1, 0, 0, "op operand1 operand2 "}, {2, 0, 0, "op operand1 operand2 operand3 "},
        {3, 3, 0, "op operand1 "},          {6, 0, 0, "op operand1 "},
        {7, 2, 0, "op operand1 operand2 "}, {7, 3, 0, "op operand1 "},
        {7, 3, 3, "op operand1 operand2 "}, {8, 0, 0, "op operand1 "},
    };
    for (const CountingRow& row : rows)
    {
        op = {};
        op.op_OperatorType = row.type;
        op.op_Operator = row.operation;
        op.op_MaskMode = row.mask;
        arguments = {4, 0, &op, nullptr, 0, nullptr, {&operands[0], &operands[1], &operands[2]}};
        test.forget();
        paint(face, arguments);
        EXPECT_EQ(members(test.log()), row.members) << row.type << " " << row.operation << " " << row.mask;
    }
}

TEST_F(ObjectPaint, WithoutOperatorOnlyTheFirstOperandCounts)
{
    arguments.operands[0] = &operands[0];
    arguments.operands[1] = &operands[1];
    arguments.operands[2] = &operands[2];
    paint(face, arguments);
    EXPECT_EQ(members(test.log()), "operand1 ");
    EXPECT_EQ(test.renderer.last_operands[1], &operands[1]);
    EXPECT_EQ(test.renderer.last_operands[2], &operands[2]);
}

TEST_F(ObjectPaint, TransformsOfAnObjectWithAPath)
{
    rect.irs_Shape.sh_Transform = {{2, 0, 0, 3, 1, 1}};
    arguments.path = &shape;
    paint(face, arguments);
    const double without_group[] = {200, 0, 0, 300, 100, 100};
    for (int i = 0; i < 6; ++i)
        EXPECT_EQ(session()->object_transform.m[i], without_group[i]) << i;
    EXPECT_EQ(session()->drawing_transform.m[0], 100);
    EXPECT_EQ(session()->object_type, 4U);
    const GGO_Matrix retransform = {{1, 0, 0, 1, 5, 7}};
    face.group_start.fn(&face, 1, nullptr, nullptr, 0, 0, 0, 0, nullptr, 0, 0, 0, &retransform, nullptr, nullptr,
                        nullptr, 0, 0, 0, nullptr, nullptr, nullptr);
    paint(face, arguments);
    const double with_group[] = {200, 0, 0, 300, 600, 800};
    for (int i = 0; i < 6; ++i)
        EXPECT_EQ(session()->object_transform.m[i], with_group[i]) << i;
    EXPECT_EQ(session()->drawing_transform.m[0], 100);
    EXPECT_EQ(session()->drawing_transform.m[4], 0);
}

TEST_F(ObjectPaint, TransformsOfAnObjectWithoutAPath)
{
    paint(face, arguments);
    EXPECT_EQ(session()->object_transform.m[0], 1);
    EXPECT_EQ(session()->drawing_transform.m[0], 1);
    const GGO_Matrix retransform = {{9, 0, 0, 9, 5, 7}};
    face.group_start.fn(&face, 1, nullptr, nullptr, 0, 0, 0, 0, nullptr, 0, 0, 0, &retransform, nullptr, nullptr,
                        nullptr, 0, 0, 0, nullptr, nullptr, nullptr);
    paint(face, arguments);
    EXPECT_EQ(session()->object_transform.m[0], 9);
    EXPECT_EQ(session()->object_transform.m[5], 7);
    EXPECT_EQ(session()->drawing_transform.m[0], 1);
}

TEST_F(ObjectPaint, NullHeaderIsLetBe)
{
    shape.sp_HeaderPtr = nullptr;
    arguments.path = &shape;
    EXPECT_EQ(paint(face, arguments), 1U);
    EXPECT_EQ(session()->object_transform.m[0], 1);
    EXPECT_EQ(members(test.log()), "paint_path ");
}

TEST_F(ObjectPaint, InAMemoryContextIsForwardedButKeepsTheBooks)
{
    open_memory_context();
    arguments.type = 9;
    arguments.path = &shape;
    arguments.operands[0] = &operands[0];
    rect.irs_Shape.sh_Transform = {{2, 0, 0, 3, 1, 1}};
    EXPECT_EQ(paint(face, arguments), 1U);
    EXPECT_EQ(test.log(), "");
    EXPECT_EQ(session()->object_type, 9U);
    EXPECT_EQ(session()->object_transform.m[0], 0);
    EXPECT_EQ(session()->next_object_id, 0U);
    EXPECT_EQ(test.renderer.count("object_paint"), 1U);
    EXPECT_EQ(test.renderer.last_operands[0], &operands[0]);
}

TEST_F(ObjectPaint, ResultIsTheRenderers)
{
    test.renderer.set_result(0);
    EXPECT_EQ(paint(face, arguments), 0U);
    test.renderer.set_result(0xFFFFFFFF);
    EXPECT_EQ(paint(face, arguments), 0xFFFFFFFFU);
    drawing()->renderer_table.object_paint.fn = nullptr;
    EXPECT_EQ(paint(face, arguments), 1U);
}

}  // namespace
