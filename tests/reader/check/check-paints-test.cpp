// Paints that have no effect, groups that nothing is drawn into, and the call in flight.

#include "reader/check/log-check.h"

#include <gtest/gtest.h>

#include <sstream>
#include <string>

namespace
{

using namespace orvlog::reader;

// The findings in a page of 100 by 50 pixels, 96 to an inch, that has these calls, a line each with its number in them.
std::string check(const std::string& calls, const std::string& end = "  <ORV_drawing_finish drawing_context=\"0\">\n"
                                                                     "  </ORV_drawing_finish>\n</ORV>\n")
{
    std::istringstream source("<ORV ORVLOG_CONTENT_VERSION=\"2\">\n<ORV_face_start drawing_context=\"0\">\n"
                              "<ORV_FaceProperties fp_FaceInchToPixels=\"2 0 0 2 0 0 \" fp_WidthInPixels=\"100\" "
                              "fp_HeightInPixels=\"50\">\n</ORV_FaceProperties>\n</ORV_face_start>\n" +
                              calls + end);
    std::string told;
    CheckOptions options;
    options.on_finding = [&](const Finding& finding)
    { told += std::to_string(finding.place.line) + (finding.note ? ": note: " : ": ") + finding.text + "\n"; };
    check_log(source, options);
    return told;
}

std::string shape(const std::string& rectangle)
{
    const std::string box = rectangle.empty() ? "" : "<GGO_BoxInt " + rectangle + "/>";
    return "<GSH_ShapePointer>\n<GSH_ShapePointer.sp_HeaderPtr>\n<GSH_MultiRectShape>\n"
           "<GSH_Shape sh_Transform=\"1 0 0 1 0 0 \"/>\n" +
           box + "\n</GSH_MultiRectShape>\n</GSH_ShapePointer.sp_HeaderPtr>\n</GSH_ShapePointer>\n";
}

// In units of two pixels.
std::string rectangle(int x0, int y0, int x1, int y1)
{
    return shape("gbi_MinX=\"" + std::to_string(x0) + "\" gbi_MinY=\"" + std::to_string(y0) + "\" gbi_MaxX=\"" +
                 std::to_string(x1) + "\" gbi_MaxY=\"" + std::to_string(y1) + "\"");
}

std::string member(const std::string& name, const std::string& content)
{
    const std::string whole = "ORV_object_paint." + name;
    return "<" + whole + ">\n" + content + "</" + whole + ">\n";
}

std::string clip(const std::string& content, const std::string& inside = "TRUE")
{
    return member("clip", "<GSH_ShapeList sl_ClipIn=\"" + inside + "\">\n<GSH_ShapeList.sl_Shape>\n" + content +
                              "</GSH_ShapeList.sl_Shape>\n</GSH_ShapeList>\n");
}

std::string paint(const std::string& members)
{
    return "<ORV_object_paint id=\"0\" drawing_context=\"0\">\n" + members + "</ORV_object_paint>\n";
}

std::string flat(const std::string& name, const std::string& color)
{
    return member(name, "<GOP_OperandFlatPointer>\n<GOP_OperandFlat>\n<GOP_OperandFlat.fl_Color>\n<GBC_Color " + color +
                            "/>\n</GOP_OperandFlat.fl_Color>\n</GOP_OperandFlat>\n</GOP_OperandFlatPointer>\n");
}

std::string op(const std::string& number, const std::string& mask = "GOP_MASK_NONE")
{
    return member("op", "<GOP_Operator op_OperatorType=\"GOP_ROP_PORTER_DUFF\" op_Operator=\"" + number +
                            "\" op_MaskMode=\"" + mask + "\"/>\n");
}

std::string group(const std::string& attributes, const std::string& calls)
{
    return "<ORV_group_start drawing_context=\"0\" " + attributes + ">\n</ORV_group_start>\n" + calls +
           "<ORV_group_finish drawing_context=\"0\" replay_group=\"FALSE\">\n</ORV_group_finish>\n";
}

TEST(CheckPaints, AClipThatShutsOutThePaint)
{
    const std::string path = member("paint_path", rectangle(1, 1, 5, 5));
    EXPECT_EQ(check(paint(path + clip(rectangle(8, 1, 9, 5)))),
              "6: note: a paint has no effect: it lies in 2,2,10,10, and its clips leave 16,2,18,10\n");
    // A renderer may paint a little beyond an edge.
    EXPECT_EQ(check(paint(path + clip(rectangle(6, 1, 9, 5)))), "");
    EXPECT_EQ(check(paint(path + clip(rectangle(4, 4, 9, 9)))), "");
    EXPECT_EQ(check(paint(path + clip(rectangle(8, 1, 9, 5), "FALSE"))), "");
}

TEST(CheckPaints, WhatLiesOffThePageOrFarBeyondIt)
{
    EXPECT_EQ(check(paint(member("paint_path", rectangle(60, 1, 65, 5)))),
              "6: note: a paint has no effect: it lies in 120,2,130,10, off the page\n");
    EXPECT_EQ(check(paint(member("paint_path", rectangle(-9, 1, 65, 5)))), "");
    EXPECT_EQ(check(paint(member("paint_path", rectangle(-9, 1, 90000, 5)))),
              "6: note: a paint reaches far beyond the page: -18,2,180000,10\n");
    // It may come to lie on the page.
    const std::string off = paint(member("paint_path", rectangle(60, 1, 65, 5)));
    EXPECT_EQ(check(group("tiling_flags=\"[0x2] ORV_GROUP_TILE_X \"", off)), "");
    EXPECT_EQ(check(group("is_replayable=\"TRUE\"", off)), "");
}

TEST(CheckPaints, AnEmptyShapeAlphaAndMask)
{
    const std::string path = member("paint_path", rectangle(1, 1, 5, 5));
    EXPECT_EQ(check(paint(member("paint_path", shape("")))), "6: note: a paint has no effect: its shape is empty\n");
    const std::string clear = flat("operand1", "base_n=\"1 \" alpha=\"0\"");
    EXPECT_EQ(check(paint(path + clear)), "6: note: a paint has no effect: its alpha is 0\n");
    EXPECT_EQ(check(paint(path + flat("operand1", "base_n=\"0 \" alpha=\"0.001\""))), "");
    const std::string masked = flat("operand2", "base_n=\"0 \"");
    EXPECT_EQ(check(paint(path + op("3", "GOP_MASK_IN") + masked)), "6: note: a paint has no effect: its mask is 0\n");
    EXPECT_EQ(check(paint(path + op("3", "GOP_MASK_OUT") + masked)), "");
    EXPECT_EQ(check(paint(path + op("3") + masked)), "");
    // The operator source clears, and so does a knockout group.
    EXPECT_EQ(check(paint(path + op("1") + clear)), "");
    EXPECT_EQ(check(group("is_knockout=\"TRUE\"", paint(path + clear))), "");
}

TEST(CheckPaints, AFillThatIsClearBesideAStrokeThatIsNot)
{
    const auto both = [](const std::string& flags, const std::string& stroke)
    {
        const std::string name = "ORV_object_paint_and_stroke";
        std::string call =
            paint(member("paint_path", rectangle(1, 1, 5, 5)) + flat("fill_operand1", "base_n=\"1 \" alpha=\"0\"") +
                  flat("stroke_operand1", "base_n=\"1 \" alpha=\"" + stroke + "\""));
        for (size_t at = call.find("ORV_object_paint"); at != std::string::npos;
             at = call.find("ORV_object_paint", at + name.size()))
            call.replace(at, name.size() - 11, name);
        return call.replace(call.find(" id="), 1, " paint_flags=\"" + flags + "\" ");
    };
    EXPECT_EQ(check(both("[0x3] ORV_PAINTFLAGS_FILL ORV_PAINTFLAGS_STROKE ", "1")), "");
    EXPECT_EQ(check(both("[0x3] ORV_PAINTFLAGS_FILL ORV_PAINTFLAGS_STROKE ", "0")),
              "6: note: a paint has no effect: its alpha is 0\n");
    EXPECT_EQ(check(both("[0x1] ORV_PAINTFLAGS_FILL ", "1")), "6: note: a paint has no effect: its alpha is 0\n");
    EXPECT_EQ(check(both("[0] ", "1")), "6: note: a paint has no effect: it neither fills nor strokes\n");
}

TEST(CheckPaints, AGroupThatNothingIsDrawnInto)
{
    EXPECT_EQ(check(group("", group("", ""))),
              "8: note: nothing is drawn into a group\n6: note: nothing is drawn into a group\n");
    EXPECT_EQ(check(group("", group("", paint("")))), "");
}

TEST(CheckPaints, TheCallInFlight)
{
    EXPECT_EQ(check("<ORV_object_paint id=\"0\" drawing_context=\"0\">\n", ""),
              "7: the log ends here, before its end\n6: in flight: ORV_object_paint 0, line 6\n"
              "2: drawing_context 0 is not finished\n");
    EXPECT_EQ(check(paint(""), ""), "8: the log ends here, before its end\n2: drawing_context 0 is not finished\n");
}

}  // namespace
