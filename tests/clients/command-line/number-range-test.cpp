// Ranges of pages and ids.

#include "clients/command-line/number-range.h"

#include <gtest/gtest.h>

#include <string>

namespace
{

using namespace orvlog::command_line;

// "3 to 7", or what is wrong.
std::string pages(const std::string& text)
{
    NumberRange range = {99, 98};
    const std::string wrong = read_pages(text, &range);
    EXPECT_EQ(check_pages(text), wrong);
    EXPECT_EQ(range.first == 99 && range.last == 98, !wrong.empty()) << text;
    return wrong.empty() ? std::to_string(range.first) + " to " + std::to_string(range.last) : wrong;
}

std::string ids(const std::string& text)
{
    NumberRange range;
    const std::string wrong = read_ids(text, &range);
    EXPECT_EQ(check_ids(text), wrong);
    return wrong.empty() ? std::to_string(range.first) + " to " + std::to_string(range.last) : wrong;
}

TEST(NumberRange, OfPages)
{
    EXPECT_EQ(pages("3"), "3 to 3");
    EXPECT_EQ(pages("3-7"), "3 to 7");
    EXPECT_EQ(pages("7-7"), "7 to 7");
    EXPECT_EQ(pages("2-"), "2 to 4294967295");
    EXPECT_EQ(pages("-7"), "1 to 7");
    EXPECT_EQ(pages("007"), "7 to 7");
    EXPECT_EQ(pages("4294967295"), "4294967295 to 4294967295");
}

TEST(NumberRange, OfPagesThatMakeNoSense)
{
    const std::string form = "pages are given as A, A-B, A- or -B, counting from 1";
    for (const char* text : {"", "-", "0", "0-3", "-0", "1,3-4", "1-2-3", "--2", "1--2", " 1", "1 ", "+1", "x", "1x",
                             "1-x", "0x1", "1.5", "4294967296", "1-99999999999999999999"})
        EXPECT_EQ(pages(text), form) << text;
    EXPECT_EQ(pages(std::string("1\0", 2)), form);
    EXPECT_EQ(pages("5-3"), "the last page comes before the first");
}

TEST(NumberRange, OfIds)
{
    EXPECT_EQ(ids("0"), "0 to 0");
    EXPECT_EQ(ids("-4"), "0 to 4");
    EXPECT_EQ(ids("4-5"), "4 to 5");
    EXPECT_EQ(ids("4-"), "4 to 4294967295");
    EXPECT_EQ(ids("5-4"), "the last id comes before the first");
    EXPECT_EQ(ids("four"), "ids are given as A, A-B, A- or -B, counting from 0");
}

TEST(NumberRange, HoldsBothEnds)
{
    const NumberRange range = {2, 4};
    EXPECT_FALSE(range.holds(1));
    EXPECT_TRUE(range.holds(2));
    EXPECT_TRUE(range.holds(4));
    EXPECT_FALSE(range.holds(5));
}

}  // namespace
