#include "inspect/pixels/pixel-diff.h"
#include "tests/inspect/history/small-log.h"

#include <gtest/gtest.h>

#include <memory>
#include <sstream>
#include <string>
#include <vector>

namespace orvlog::test
{

namespace
{

using namespace orvlog::inspect;

// A log of several documents, each of one page with these calls.
std::string log_of(const std::vector<std::string>& pages)
{
    const std::string end = "</ORV>\n";
    std::string log;
    for (const std::string& calls : pages)
    {
        const std::string one = page_of(20, 20, calls);
        const size_t head = log.empty() ? 0 : one.find('\n') + 1;
        log += one.substr(head, one.size() - head - end.size());
    }
    return log + end;
}

std::string square(int x, const std::string& colour)
{
    const double at = x;
    return paint_of(0, {at, 2, at + 4, 6}, colour);
}

struct Compared
{
    std::vector<PageDifference> pages;
    int opened_a = 0;
    int opened_b = 0;
};

Compared compare(const std::string& a, const std::string& b)
{
    Compared compared;
    const auto opener = [](const std::string& log, int* opened) -> OpenLog
    {
        return [log, opened]() -> std::shared_ptr<std::istream>
        {
            ++*opened;
            return std::make_shared<std::istringstream>(log);
        };
    };
    NumberFile numbers_a;
    NumberFile numbers_b;
    uint64_t number = 0;
    int none = 0;
    align_logs(opener(a, &none), opener(b, &none), {},
               [&](const Step& step)
               {
                   number += 4;
                   const uint64_t kind = step.kind == StepKind::changed   ? CallNumber::kChanged
                                         : step.kind == StepKind::missing ? CallNumber::kInA
                                         : step.kind == StepKind::added   ? CallNumber::kInB
                                                                          : CallNumber::kSame;
                   if (step.a != nullptr)
                       numbers_a.add({step.a->place.byte, number + kind});
                   if (step.b != nullptr)
                       numbers_b.add({step.b->place.byte, number + kind});
                   return true;
               });
    const auto side = [](const std::string& log, OpenLog open)
    {
        PixelSide made;
        made.open = std::move(open);
        std::istringstream source(log);
        made.kind = replay::examine(source);
        return made;
    };
    compare_pages(side(a, opener(a, &compared.opened_a)), numbers_a, side(b, opener(b, &compared.opened_b)), numbers_b,
                  0, [&compared](const PageDifference& page) { compared.pages.push_back(page); });
    return compared;
}

TEST(PixelDiff, TellsOfEachPageThatDiffersWithItsCallAndArea)
{
    const Compared compared = compare(
        log_of({square(2, "1 0 0"), square(4, "1 0 0") + square(10, "0 1 0"), square(6, "1 0 0"), square(8, "1 0 0")}),
        log_of({square(2, "0 0 1"), square(4, "1 0 0") + square(11, "0 1 0"), square(6, "1 0 0"), square(8, "0 0 1")}));
    ASSERT_EQ(compared.pages.size(), 3U);
    EXPECT_EQ(compared.pages[0].page_a, 1U);
    EXPECT_EQ(compared.pages[0].first.pixels, 16U);
    EXPECT_EQ(compared.pages[0].first.box.x0, 2);
    EXPECT_EQ(compared.pages[1].page_b, 2U);
    EXPECT_EQ(compared.pages[1].first.pixels, 8U);
    EXPECT_EQ(compared.pages[1].first.box.x0, 10);
    EXPECT_EQ(compared.pages[1].first.box.x1, 15);
    EXPECT_EQ(compared.pages[2].page_a, 4U);
    EXPECT_EQ(compared.pages[2].end.pixels, 16U);
    EXPECT_EQ(compared.pages[2].end.box.x0, 8);
    for (const PageDifference& page : compared.pages)
        EXPECT_EQ(page.kind, "ORV_object_paint") << page.page_a;
}

TEST(PixelDiff, DrawsALogTwiceHoweverManyPagesDiffer)
{
    std::vector<std::string> red;
    std::vector<std::string> blue;
    for (int page = 0; page < 40; ++page)
    {
        red.push_back(square(page % 16, "1 0 0"));
        blue.push_back(square(page % 16, "0 0 1"));
    }
    const Compared compared = compare(log_of(red), log_of(blue));
    ASSERT_EQ(compared.pages.size(), 40U);
    for (size_t i = 0; i < compared.pages.size(); ++i)
    {
        EXPECT_EQ(compared.pages[i].page_a, i + 1);
        EXPECT_EQ(compared.pages[i].page_b, i + 1);
        EXPECT_EQ(compared.pages[i].first.box.x0, static_cast<int>(i % 16));
        EXPECT_EQ(compared.pages[i].end.pixels, 16U);
    }
    EXPECT_EQ(compared.opened_a, 2);
    EXPECT_EQ(compared.opened_b, 2);
}

TEST(PixelDiff, TellsOfPagesThatOneLogLacks)
{
    const std::string longer = log_of({square(2, "1 0 0"), square(4, "1 0 0"), square(6, "1 0 0")});
    const std::string shorter = log_of({square(2, "0 0 1")});
    const Compared without = compare(longer, shorter);
    ASSERT_EQ(without.pages.size(), 3U);
    EXPECT_EQ(without.pages[0].page_b, 1U);
    EXPECT_EQ(without.pages[0].end.pixels, 16U);
    EXPECT_EQ(without.pages[1].page_b, 0U);
    EXPECT_EQ(without.pages[2].page_a, 3U);
    EXPECT_EQ(without.pages[2].page_b, 0U);
    EXPECT_EQ(without.pages[2].end.pixels, 400U);
    const Compared added = compare(shorter, longer);
    ASSERT_EQ(added.pages.size(), 3U);
    EXPECT_EQ(added.pages[2].page_a, 0U);
    EXPECT_EQ(added.pages[2].page_b, 3U);
    EXPECT_TRUE(added.pages[2].call_a.empty());
}

}  // namespace

}  // namespace orvlog::test
