// ORV_object_paint_and_stroke.

#include "tests/orvlog/core/paint-fixture.h"

#include <gtest/gtest.h>

#include <string>

namespace
{

using namespace orvlog::test;

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

}  // namespace
