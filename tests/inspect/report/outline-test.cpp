// Shapes and clips as path data, and colours as a screen shows them.

#include "inspect/report/flat-colour.h"
#include "inspect/report/outline.h"
#include "tests/inspect/history/small-log.h"

#include <gtest/gtest.h>

#include <sstream>
#include <string>

namespace
{

using namespace orvlog;
using namespace orvlog::test;
using namespace orvlog::inspect;

constexpr GGO_Matrix kTwice = {{2, 0, 0, 2, 0.125, 0}};

// The first paint of a page with these calls.
struct FirstPaint
{
    explicit FirstPaint(const std::string& calls) : source(page_of(20, 20, calls)), elements(source)
    {
        do
            call = elements.next();
        while (call != nullptr && call->name != "ORV_object_paint");
    }

    std::istringstream source;
    reader::ElementReader elements;
    const reader::Element* call = nullptr;
};

TEST(Outline, OfARectangle)
{
    const FirstPaint paint(paint_of(0, {1, 2, 5, 4}, "1 0 0"));
    ASSERT_NE(paint.call, nullptr);
    const std::vector<Outline> outlines = outlines_of(*paint.call, kTwice);
    ASSERT_EQ(outlines.size(), 1U);
    EXPECT_EQ(outline_json(outlines[0]), "{\"d\":\"M2.13,4L10.13,4L10.13,8L2.13,8Z\",\"rule\":\"nonzero\","
                                         "\"stroke\":null,\"inside\":true,\"cut\":false}");
    EXPECT_TRUE(clips_of(*paint.call, kTwice).empty());
}

TEST(Outline, OfClips)
{
    With with;
    with.clip = clip_of({0, 0, 3, 3}, false);
    const FirstPaint paint(paint_of(0, {1, 2, 5, 4}, "1 0 0", with));
    ASSERT_NE(paint.call, nullptr);
    const std::vector<Outline> outlines = clips_of(*paint.call, kTwice);
    ASSERT_EQ(outlines.size(), 1U);
    EXPECT_FALSE(outlines[0].inside);
    EXPECT_EQ(outlines[0].data, "M0.13,0L6.13,0L6.13,6L0.13,6Z");
}

TEST(Outline, LeavesOutWhatIsNoNumber)
{
    constexpr GGO_Matrix kNowhere = {{1e308, 0, 0, 1e308, 0, 0}};
    const FirstPaint paint(paint_of(0, {0, 0, 5, 4}, "1 0 0"));
    ASSERT_NE(paint.call, nullptr);
    for (const Outline& outline : outlines_of(*paint.call, kNowhere))
        EXPECT_EQ(outline.data.find_first_not_of("MLZ0123456789,."), std::string::npos) << outline.data;
}

TEST(ShownColour, OfEachFamily)
{
    const FirstPaint paint(paint_of(0, {1, 2, 5, 4}, "1 0.5 0"));
    ASSERT_NE(paint.call, nullptr);
    const reader::Element* operand = paint.call->member("operand1");
    ASSERT_NE(operand, nullptr);
    EXPECT_EQ(flat_colour(operand->first), 0xFF8000);
    EXPECT_EQ(flat_colour(nullptr), -1);
    std::istringstream source("<ORV>\n<GBC_Color bit_depth=\"8\" num_chans=\"4\" base_n=\"255 0 51 0 \"/>\n</ORV>\n");
    reader::ElementReader elements(source);
    const reader::Element* color = elements.next();
    ASSERT_NE(color, nullptr);
    EXPECT_EQ(shown_colour(*color, "cmyk8"), 0x00FFCC);
    EXPECT_EQ(shown_colour(*color, "gray8"), 0xFFFFFF);
    EXPECT_EQ(shown_colour(*color, "named 'Orange'"), -1);
}

}  // namespace
