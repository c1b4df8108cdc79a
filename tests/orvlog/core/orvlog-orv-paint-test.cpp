// The three paint calls.

#include "holv-core/ger/ger-error.h"
#include "holv-core/ggo/ggo-geometry.h"
#include "orvlog/core/orvlog-orv.h"
#include "orvlog/session/orvlog-frames.h"
#include "orvlog/session/orvlog-session.h"
#include "tests/support/test-session.h"

#include <gtest/gtest.h>

#include <string>

namespace
{

using namespace orvlog::test;

struct PaintArguments
{
    uint8_t type = 4;
    uint32_t hints = 0;
    const GOP_Operator* op = nullptr;
    const GSH_ShapePointer* path = nullptr;
    uint32_t placement = 0;
    const GSH_ShapeList* clip = nullptr;
    GOP_OperandPointer* operands[3] = {};
};

struct StrokeArguments
{
    uint8_t fill_type = 4;
    uint8_t stroke_type = 2;
    uint32_t hints = 0;
    const GOP_Operator* fill_op = nullptr;
    const GOP_Operator* stroke_op = nullptr;
    const GSH_ShapePointer* path = nullptr;
    const GPA_PathStrokingParams* params = nullptr;
    const GGO_Matrix* transform = nullptr;
    uint32_t placement = 0;
    const GSH_ShapeList* clip = nullptr;
    uint32_t flags = 3;
    GGO_Point* end_point = nullptr;
    GOP_OperandPointer* operands[6] = {};
};

struct ResourceArguments
{
    uint32_t resource_id = 0;
    uint32_t hints = 0;
    uint32_t type = 0;
    const GGO_Matrix* retransform = nullptr;
    const GOP_Operator* op = nullptr;
    GOP_OperandPointer* operand2 = nullptr;
    const GSH_ShapeList* clip = nullptr;
    uint32_t tiling = 0;
    double x = 0;
    double y = 0;
    const GBC_Color* mask = nullptr;
    const GBC_Color* color = nullptr;
    uint32_t orientation = 0;
};

uint32_t paint(const ORV_DrawingInterface& d, const PaintArguments& a)
{
    return d.object_paint.fn(&d, a.type, a.hints, a.op, a.path, a.placement, a.clip, a.operands[0], a.operands[1],
                             a.operands[2]);
}

uint32_t stroke(const ORV_DrawingInterface& d, const StrokeArguments& a)
{
    return d.object_paint_and_stroke.fn(&d, a.fill_type, a.stroke_type, a.hints, a.fill_op, a.stroke_op, a.path,
                                        a.params, a.transform, a.placement, a.clip, a.flags, a.end_point, a.operands[0],
                                        a.operands[1], a.operands[2], a.operands[3], a.operands[4], a.operands[5]);
}

uint32_t paint_resource(const ORV_DrawingInterface& d, const ResourceArguments& a)
{
    return d.resource_paint.fn(&d, a.resource_id, a.hints, a.type, a.retransform, a.op, a.operand2, a.clip, a.tiling,
                               a.x, a.y, a.mask, a.color, a.orientation);
}

// The tags at one level in, without their attributes: what a call's members are.
std::string members(const std::string& log)
{
    std::string found;
    for (size_t line = 0; line < log.size(); line = log.find('\n', line) + 1)
    {
        if (log.compare(line, 5, "    <") != 0 || log[line + 5] == '/')
            continue;
        const size_t dot = log.find('.', line);
        found += log.substr(dot + 1, log.find('>', line) - dot - 1) + " ";
    }
    return found;
}

class Paint : public testing::Test
{
protected:
    Paint()
    {
        test.start_document();
        test.start_face(&face);
        test.forget();
        header.sh_ShapeType = GSH_SHAPE_IMAGE_RECT;
        header.sh_Transform = ggo_identity();
        shape.sp_HeaderPtr = &rect.irs_Shape;
        rect.irs_Shape = header;
        clip.sl_Shape = shape;
        for (int i = 0; i < 6; ++i)
            operands[i] = {&flats[i].fl_Operand, static_cast<uint32_t>(i), {}};
    }

    ORVLOG_Session* session()
    {
        return static_cast<ORVLOG_Session*>(test.session());
    }
    ORVLOG_DrawingContext* drawing()
    {
        return static_cast<ORVLOG_DrawingContext*>(face.object_paint.context);
    }
    void open_memory_context()
    {
        test.orv.memory_context_start.fn(nullptr, &test.orv, test.document, &face, 0, 0, 0, 0, 0, nullptr, nullptr, 0,
                                         0, 0, 0, 0, 0);
        test.forget();
    }

    TestSession test;
    ORV_DrawingInterface face = {};
    GSH_Shape header = {};
    GSH_ImageRectShape rect = {};
    GSH_ShapePointer shape = {};
    GSH_ShapeList clip = {};
    GOP_OperandFlat flats[6] = {};
    GOP_OperandPointer operands[6] = {};
    GOP_Operator op = {};
};

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

class PaintAndStroke : public Paint
{
protected:
    PaintAndStroke()
    {
        op.op_OperatorType = GOP_ROP_ROP4;
        arguments.fill_op = &op;
        arguments.stroke_op = &op;
        arguments.path = &shape;
        arguments.params = &params;
        arguments.clip = &clip;
        for (int i = 0; i < 6; ++i)
            arguments.operands[i] = &operands[i];
    }

    GPA_PathStrokingParams params = {};
    StrokeArguments arguments;
};

TEST_F(PaintAndStroke, LogsItsAttributes)
{
    arguments.hints = 0x80;
    arguments.placement = 1;
    EXPECT_EQ(stroke(face, arguments), 1U);
    EXPECT_EQ(test.log().substr(0, test.log().find('\n')),
              "  <ORV_object_paint_and_stroke id=\"0\" drawing_context=\"0\" fill_object_type=\"4\" "
              "stroke_object_type=\"2\" object_hints=\"[0x80] ORV_OBJ_HINT_FIRST_OF_STROKE \" "
              "path_pixel_placement=\"GPA_PLACEMENT_PS\" paint_flags=\"[0x3] ORV_PAINTFLAGS_FILL "
              "ORV_PAINTFLAGS_STROKE \">");
    EXPECT_NE(test.log().find("\n  </ORV_object_paint_and_stroke>\n"), std::string::npos);
    EXPECT_EQ(session()->object_type, 4U);
}

TEST_F(PaintAndStroke, FlagsHaveTheirNames)
{
    const std::pair<uint32_t, const char*> flags[] = {
        {0, "[0] ORV_PAINTFLAGS_NONE "},       {1, "[0x1] ORV_PAINTFLAGS_FILL "},
        {2, "[0x2] ORV_PAINTFLAGS_STROKE "},   {4, "[0x4] ORV_PAINTFLAGS_FILL_SECOND "},
        {8, "[0x8] ORV_PAINTFLAGS_KNOCKOUT "}, {16, "[0x10] "},
    };
    for (const auto& [value, text] : flags)
    {
        test.forget();
        arguments.flags = value;
        stroke(face, arguments);
        EXPECT_NE(test.log().find(" paint_flags=\"" + std::string(text) + "\">"), std::string::npos) << text;
    }
}

TEST_F(PaintAndStroke, MembersFollowTheFlags)
{
    stroke(face, arguments);
    EXPECT_EQ(members(test.log()), "fill_op stroke_op paint_path stroking_params clip fill_operand1 fill_operand2 "
                                   "fill_operand3 stroke_operand1 stroke_operand2 stroke_operand3 ");
    test.forget();
    arguments.flags = ORV_PAINTFLAGS_FILL;
    stroke(face, arguments);
    EXPECT_EQ(members(test.log()), "fill_op paint_path clip fill_operand1 fill_operand2 fill_operand3 ");
    test.forget();
    arguments.flags = ORV_PAINTFLAGS_STROKE;
    stroke(face, arguments);
    EXPECT_EQ(members(test.log()), "stroke_op paint_path stroking_params clip stroke_operand1 stroke_operand2 "
                                   "stroke_operand3 ");
    test.forget();
    arguments.flags = 0;
    stroke(face, arguments);
    EXPECT_EQ(members(test.log()), "paint_path clip ");
    for (int i = 0; i < 6; ++i)
        EXPECT_EQ(test.renderer.last_operands[i], &operands[i]);
}

TEST_F(PaintAndStroke, NullOperatorsAndParamsWriteNothing)
{
    arguments.fill_op = nullptr;
    arguments.stroke_op = nullptr;
    arguments.params = nullptr;
    arguments.path = nullptr;
    arguments.clip = nullptr;
    EXPECT_EQ(stroke(face, arguments), 1U);
    EXPECT_EQ(members(test.log()), "fill_operand1 stroke_operand1 ");
}

TEST_F(PaintAndStroke, StrokingTransformShowsOnlyWhereGlyphsAreStroked)
{
    const GGO_Matrix transform = {{1, 2, 3, 4, 5, 6}};
    const GFI_StringDesc string = {};
    const GFI_StringDescPointer string_pointer = {&string, nullptr, nullptr};
    const GFI_FontSpecPointer font = {nullptr};
    arguments.clip = nullptr;
    const char* attribute = " stroking_transform=\"1 2 3 4 5 6 \">";
    arguments.transform = &transform;
    stroke(face, arguments);
    EXPECT_EQ(test.log().find(attribute), std::string::npos) << "no glyphs";
    rect.irs_Shape.sh_ShapeType = GSH_SHAPE_GLYPHS;
    shape.sp_U.glyph.font_spec_ptr = &font;
    shape.sp_U.glyph.string_desc = &string_pointer;
    test.forget();
    stroke(face, arguments);
    EXPECT_NE(test.log().find(attribute), std::string::npos);
    test.forget();
    arguments.flags = ORV_PAINTFLAGS_FILL;
    stroke(face, arguments);
    EXPECT_EQ(test.log().find(attribute), std::string::npos) << "no stroke";
    test.forget();
    arguments.flags = 3;
    arguments.transform = nullptr;
    stroke(face, arguments);
    EXPECT_EQ(test.log().find("stroking_transform"), std::string::npos) << "no transform";
}

TEST_F(PaintAndStroke, EndPointIsClearedAndHandedBack)
{
    GGO_Point end = {5, 5};
    session()->glyph_end_point = {8, 9};
    arguments.end_point = &end;
    stroke(face, arguments);
    EXPECT_EQ(end.gpf_X, 0);
    EXPECT_EQ(end.gpf_Y, 0);
    EXPECT_EQ(test.renderer.last_end_point, &end);
}

TEST_F(PaintAndStroke, EndPointIsLeftAloneInAMemoryContext)
{
    open_memory_context();
    GGO_Point end = {5, 6};
    session()->glyph_end_point = {8, 9};
    arguments.end_point = &end;
    stroke(face, arguments);
    EXPECT_EQ(end.gpf_X, 5);
    EXPECT_EQ(session()->glyph_end_point.gpf_X, 0);
    EXPECT_EQ(test.log(), "");
}

TEST_F(PaintAndStroke, ForwardsItsArguments)
{
    const GGO_Matrix transform = {};
    arguments.transform = &transform;
    arguments.hints = 3;
    arguments.placement = 2;
    stroke(face, arguments);
    const auto number = [](const void* pointer) { return std::to_string(reinterpret_cast<uintptr_t>(pointer)); };
    EXPECT_EQ(test.renderer.last(),
              "object_paint_and_stroke fill_type=4 stroke_type=2 hints=3 stroke_op=" + number(&op) +
                  " params=" + number(&params) + " transform=" + number(&transform) + " placement=2 flags=3");
    drawing()->renderer_table.object_paint_and_stroke.fn = nullptr;
    EXPECT_EQ(stroke(face, arguments), 1U);
}

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

// What a failed read of an image makes of a call.

struct ErrorRoom
{
    GER_Error error;
    char text[200];
};

TEST_F(Paint, FailedReadIsReportedInBaseModeOnly)
{
    ErrorRoom room = {};
    room.error.ge_TextCapacity = 150;
    drawing()->error_context = &room.error;
    EXPECT_EQ(orvlog_result_after_dump(drawing(), 0, 5, 3786), 5U);
    EXPECT_EQ(room.error.ge_Severity, 0);
    test.set_base_mode();
    EXPECT_EQ(orvlog_result_after_dump(drawing(), 1, 5, 3786), 5U);
    EXPECT_EQ(room.error.ge_Severity, 0);
    EXPECT_EQ(orvlog_result_after_dump(drawing(), 0, 5, 3786), 0U);
    EXPECT_EQ(room.error.ge_Severity, 1);
    EXPECT_EQ(room.error.ge_Module, 6);
    EXPECT_EQ(room.error.ge_Code, 33303786);
    EXPECT_STREQ(room.error.ge_Text, "ORVLOG: Image read failed.:orvlog-orv v$Revision: 1.114 $ L:3786 ");
}

TEST_F(Paint, EachCallReportsUnderItsOwnCode)
{
    const std::pair<int32_t, int32_t> codes[] = {
        {2523, 33302523}, {3480, 33303480}, {3786, 33303786}, {4346, 33304346}};
    test.set_base_mode();
    for (const auto& [line, code] : codes)
    {
        ErrorRoom room = {};
        drawing()->error_context = &room.error;
        EXPECT_EQ(orvlog_result_after_dump(drawing(), 0, 1, line), 0U);
        EXPECT_EQ(room.error.ge_Code, code);
    }
    drawing()->error_context = nullptr;
    EXPECT_EQ(orvlog_result_after_dump(drawing(), 0, 1, 2523), 0U);
}

}  // namespace
