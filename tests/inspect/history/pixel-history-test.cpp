// Which calls changed a pixel.

#include "inspect/history/pixel-history.h"
#include "inspect/history/touch-list.h"
#include "reader/look/call-address.h"
#include "tests/inspect/history/small-log.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdio>
#include <random>
#include <sstream>
#include <string>
#include <vector>

namespace
{

using namespace orvlog;
using namespace orvlog::test;
using inspect::HistoryOptions;
using inspect::PixelBox;
using inspect::Touch;
using orvlog::cairo_renderer::Unchanged;

// "1", "line:40": the call that begins at a byte.
std::string address(const std::string& log, uint64_t byte)
{
    std::istringstream source(log);
    reader::ElementReader elements(source);
    while (const reader::Element* call = elements.next())
        if (call->place.byte == byte)
            return reader::call_address_text(*call);
    return "?";
}

std::string kind_at(const std::string& log, uint64_t byte)
{
    const std::string tag = log.substr(log.find("ORV_", byte));
    return tag.substr(4, tag.find(' ') - 4);
}

std::string hex(std::optional<uint32_t> colour)
{
    char text[16] = "-";
    if (colour)
        std::snprintf(text, sizeof text, "%08x", *colour);
    return text;
}

constexpr const char* kReasons[] = {"not covered", "clipped", "group clipped", "hidden",      "nothing",
                                    "transparent", "masked",  "same colour",   "by operator", "faint"};

struct History
{
    inspect::TouchList list;
    inspect::HistoryOutcome outcome;
};

History history_of(const std::string& log, const PixelBox& box, bool reasons = true)
{
    History history;
    std::istringstream first(log);
    const replay::LogKind kind = replay::examine(first);
    std::istringstream source(log);
    HistoryOptions options;
    options.box = box;
    options.reasons = reasons;
    history.outcome = inspect::follow_pixels(
        source, kind, options, [&](const Touch& touch, auto, auto groups) { history.list.add(touch, groups); });
    return history;
}

// "0: ffffffff -> ffff0000", "1: clipped", "group_finish: ..." for calls without an id; " in resource_paint" behind.
std::vector<std::string> lines_at(const std::string& log, int x, int y)
{
    const History history = history_of(log, {x, y, x + 1, y + 1});
    std::vector<std::string> lines;
    const auto name = [&](uint64_t call)
    {
        const std::string text = address(log, call);
        return text.starts_with("line:") ? kind_at(log, call) : text;
    };
    for (const Touch& touch : history.list.touches())
    {
        std::string line = name(touch.call) + ": ";
        line += touch.changed ? hex(touch.before) + " -> " + hex(touch.after)
                              : kReasons[static_cast<size_t>(touch.why.reason)];
        if (!touch.changed && touch.why.group != 0)
            line += " by " + name(touch.why.group);
        const std::vector<uint64_t> around = history.list.around(touch);
        for (size_t i = 0; i < around.size(); ++i)
            line += (i == 0 ? " in " : " ") + name(around[i]);
        lines.push_back(line);
    }
    return lines;
}

using Lines = std::vector<std::string>;

With with_clip(const Rectangle& clip)
{
    With with;
    with.clip = clip_of(clip);
    return with;
}

With with_op(const std::string& op)
{
    With with;
    with.op = op;
    return with;
}

With with_mask(const std::string& mask)
{
    With with;
    with.mask = mask;
    return with;
}

TEST(PixelHistory, TellsPaintsInTheirOrder)
{
    const std::string log = page_of(20, 10,
                                    paint_of(0, {2, 2, 8, 8}, "1 0 0") + paint_of(1, {10, 2, 18, 8}, "0 0 1") +
                                        paint_of(2, {4, 4, 12, 6}, "0 1 0"));
    EXPECT_EQ(lines_at(log, 5, 5), (Lines{"0: ffffffff -> ffff0000", "2: ffff0000 -> ff00ff00"}));
    EXPECT_EQ(lines_at(log, 2, 2), (Lines{"0: ffffffff -> ffff0000"}));
    EXPECT_EQ(lines_at(log, 11, 4), (Lines{"1: ffffffff -> ff0000ff", "2: ff0000ff -> ff00ff00"}));
    EXPECT_EQ(lines_at(log, 0, 0), Lines{});
    EXPECT_EQ(lines_at(log, 8, 5), (Lines{"2: ffffffff -> ff00ff00"}));
    EXPECT_EQ(lines_at(log, 19, 9), Lines{});
}

TEST(PixelHistory, TellsWhyAPixelStaysAsItWas)
{
    const Rectangle all{0, 0, 10, 10};
    const std::string log =
        page_of(10, 10,
                paint_of(0, all, "1 0 0") + paint_of(1, all, "0 0 1", with_clip({0, 0, 4, 10})) +
                    paint_of(2, all, "1 0 0") + paint_of(3, all, "0 1 0", {}, "0") +
                    paint_of(4, all, "0 1 0", with_mask("0")) + paint_of(5, all, "0 1 0", with_op("2")) +
                    paint_of(6, {5.999, 0, 8, 10}, "0 1 0") + paint_of(7, {7, 7, 8, 8}, "0 1 0"));
    EXPECT_EQ(lines_at(log, 5, 5), (Lines{"0: ffffffff -> ffff0000", "1: clipped", "2: same colour", "3: transparent",
                                          "4: masked", "5: by operator"}));
    EXPECT_EQ(lines_at(log, 3, 5), (Lines{"0: ffffffff -> ffff0000", "1: ffff0000 -> ff0000ff",
                                          "2: ff0000ff -> ffff0000", "3: transparent", "4: masked", "5: by operator"}));
}

TEST(PixelHistory, TellsWhatIsTooFaint)
{
    const std::string log = page_of(4, 4,
                                    paint_of(0, {0, 0, 4, 4}, "1 1 0", with_mask("0.5")) +
                                        paint_of(1, {0, 0, 4, 4}, "1 1 0.49", with_mask("0.1")));
    EXPECT_EQ(lines_at(log, 1, 1), (Lines{"0: ffffffff -> ffffff7f", "1: faint"}));
}

TEST(PixelHistory, FollowsThePixelOntoTheLayerOfAGroupAndBack)
{
    const std::string log = page_of(10, 10,
                                    group_start(with_mask("0.5")) + paint_of(0, {0, 0, 8, 8}, "1 0 0") +
                                        paint_of(1, {4, 4, 10, 10}, "0 0 1") + group_finish());
    EXPECT_EQ(lines_at(log, 2, 2),
              (Lines{"0: 00000000 -> ffff0000 in group_start", "group_finish: ffffffff -> ffff7f7f"}));
    EXPECT_EQ(lines_at(log, 5, 5),
              (Lines{"0: 00000000 -> ffff0000 in group_start", "1: ffff0000 -> ff0000ff in group_start",
                     "group_finish: ffffffff -> ff7f7fff"}));
    EXPECT_EQ(lines_at(log, 9, 0), Lines{});
}

TEST(PixelHistory, NamesTheGroupThatClips)
{
    const std::string log = page_of(10, 10,
                                    group_start(with_clip({0, 0, 5, 10})) + group_start() +
                                        paint_of(0, {0, 0, 10, 10}, "1 0 0") + group_finish() + group_finish());
    const std::string outer = address(log, log.find("  <ORV_group_start"));
    const History history = history_of(log, {7, 7, 8, 8});
    ASSERT_EQ(history.list.touches().size(), 1U);
    const Touch& touch = history.list.touches()[0];
    EXPECT_EQ(address(log, touch.call), "0");
    EXPECT_EQ(touch.why.reason, Unchanged::group_clipped);
    EXPECT_EQ(address(log, touch.why.group), outer);
    EXPECT_FALSE(touch.after.has_value());
    EXPECT_EQ(lines_at(log, 2, 2).back(), "group_finish: ffffffff -> ffff0000");
}

TEST(PixelHistory, TellsAGroupThatComesUpWithoutEffect)
{
    const std::string log = page_of(10, 10,
                                    paint_of(0, {0, 0, 10, 10}, "1 0 0") + group_start(with_mask("0")) +
                                        paint_of(1, {0, 0, 10, 10}, "0 0 1") + group_finish());
    EXPECT_EQ(lines_at(log, 5, 5),
              (Lines{"0: ffffffff -> ffff0000", "1: 00000000 -> ff0000ff in group_start", "group_finish: masked"}));
}

TEST(PixelHistory, FollowsThePixelIntoResources)
{
    const std::string log = page_of(
        20, 20,
        resource_of(0, 1, {0, 0, 10, 10},
                    paint_of(0, {0, 0, 10, 10}, "1 0 0", {}, "", 1) + paint_of(1, {2, 2, 30, 4}, "0 1 0", {}, "", 1)) +
            []
            {
                With with;
                with.retransform = "1 0 0 1 5 5";
                return resource_paint(0, with);
            }());
    EXPECT_EQ(lines_at(log, 8, 8),
              (Lines{"0: 00000000 -> ffff0000 in resource_paint", "1: ffff0000 -> ff00ff00 in resource_paint",
                     "resource_paint: ffffffff -> ff00ff00"}));
    EXPECT_EQ(lines_at(log, 6, 6),
              (Lines{"0: 00000000 -> ffff0000 in resource_paint", "resource_paint: ffffffff -> ffff0000"}));
    EXPECT_EQ(lines_at(log, 17, 8), (Lines{"1: group clipped by resource_paint in resource_paint"}));
}

TEST(PixelHistory, TellsBothHalvesOfAPaintAsOne)
{
    const std::string plain = page_of(20, 20, fill_and_stroke(0, {5, 5, 15, 15}, "1 0 0", "0 0 1", 4));
    EXPECT_EQ(lines_at(plain, 10, 10), (Lines{"0: ffffffff -> ffff0000"}));
    EXPECT_EQ(lines_at(plain, 6, 10), (Lines{"0: ffffffff -> ff0000ff"}));
    EXPECT_EQ(lines_at(plain, 4, 10), (Lines{"0: ffffffff -> ff0000ff"}));
    const std::string knockout = page_of(20, 20, fill_and_stroke(0, {5, 5, 15, 15}, "1 0 0", "0 0 1", 4, "0.5", true));
    EXPECT_EQ(lines_at(knockout, 10, 10), (Lines{"0: ffffffff -> ffff0000"}));
    const Lines line = lines_at(knockout, 6, 10);
    ASSERT_EQ(line.size(), 1U);
    EXPECT_EQ(line[0].substr(0, 15), "0: ffffffff -> ");
}

// A cell of 4 by 4 with a mark of 2 by 2 in it: 10000 of them by their cell, 16 one by one.
TEST(PixelHistory, FollowsThePixelIntoRepeatedContent)
{
    for (const int size : {400, 16})
    {
        With with;
        with.tiling = "tiling_flags=\"6\" x_repetition_interval=\"4\" y_repetition_interval=\"4\"";
        const std::string log = page_of(
            size, size,
            resource_of(0, 1, {0, 0, 4, 4},
                        paint_of(0, {1, 1, 3, 3}, "1 0 0", {}, "", 1) + paint_of(1, {2, 2, 4, 3}, "0 1 0", {}, "", 1)) +
                resource_paint(0, with));
        for (const int at : {0, 8})
        {
            const Lines red = lines_at(log, at + 1, at + 1);
            ASSERT_FALSE(red.empty()) << size;
            EXPECT_NE(red.front().find("0: 00000000 -> ffff0000 in resource_paint"), std::string::npos) << red.front();
            EXPECT_EQ(red.back(), "resource_paint: ffffffff -> ffff0000");
            const Lines green = lines_at(log, at + 2, at + 2);
            EXPECT_EQ(green.back(), "resource_paint: ffffffff -> ff00ff00");
            EXPECT_TRUE(std::ranges::any_of(green, [](const std::string& one)
                                            { return one.find("1: ffff0000 -> ff00ff00") == 0; }));
            EXPECT_EQ(lines_at(log, at, at), Lines{});
        }
    }
}

// A page of 20 million pixels is drawn in bands, of which the pixel's alone is looked at.
TEST(PixelHistory, LooksAtTheBandOfALargePage)
{
    const std::string log = page_of(
        5000, 4000, paint_of(0, {100, 100, 4900, 3900}, "1 0 0") + paint_of(1, {200, 3600, 4800, 3800}, "0 0 1"));
    EXPECT_EQ(lines_at(log, 300, 3700), (Lines{"0: ffffffff -> ffff0000", "1: ffff0000 -> ff0000ff"}));
    EXPECT_EQ(lines_at(log, 300, 300), (Lines{"0: ffffffff -> ffff0000"}));
}

TEST(PixelHistory, CountsTheChangedPixelsOfABox)
{
    const std::string log = page_of(20, 20,
                                    paint_of(0, {2, 2, 8, 8}, "1 0 0") + paint_of(1, {4, 4, 12, 6}, "0 1 0") +
                                        paint_of(2, {4, 4, 12, 6}, "0 1 0"));
    const History whole = history_of(log, {0, 0, 20, 20}, false);
    ASSERT_EQ(whole.list.touches().size(), 2U);
    EXPECT_EQ(whole.list.touches()[0].pixels, 36U);
    EXPECT_EQ(whole.list.touches()[0].area, (PixelBox{2, 2, 8, 8}));
    EXPECT_EQ(whole.list.touches()[1].pixels, 16U);
    EXPECT_EQ(whole.list.touches()[1].area, (PixelBox{4, 4, 12, 6}));
    const History part = history_of(log, {7, 5, 10, 7}, false);
    ASSERT_EQ(part.list.touches().size(), 2U);
    EXPECT_EQ(part.list.touches()[0].pixels, 2U);
    EXPECT_EQ(part.list.touches()[1].pixels, 3U);
    EXPECT_EQ(part.outcome.width, 20U);
}

// The runs of all changes, put on white paper, are the page.
TEST(PixelHistory, TellsEachChangedPixelOfAPage)
{
    const std::string log =
        page_of(30, 30,
                paint_of(0, {2.5, 2.5, 20, 20}, "1 0 0") + fill_and_stroke(1, {8, 8, 25, 25}, "0 1 0", "0 0 1", 3) +
                    paint_of(2, {0, 0, 30, 3}, "0 0 0", with_clip({10, 0, 14, 30})));
    std::istringstream first(log);
    const replay::LogKind kind = replay::examine(first);
    std::istringstream source(log);
    HistoryOptions options;
    options.box = {0, 0, 30, 30};
    std::vector<std::string> last(900, "-");
    inspect::follow_pixels(source, kind, options,
                           [&](const Touch& touch, std::span<const inspect::PixelRun> runs, auto)
                           {
                               for (const inspect::PixelRun& run : runs)
                                   for (int x = run.x0; x < run.x1; ++x)
                                       last[static_cast<size_t>(run.y * 30 + x)] = address(log, touch.call);
                           });
    for (int y = 0; y < 30; ++y)
        for (int x = 0; x < 30; ++x)
        {
            std::string wanted = "-";
            const History history = history_of(log, {x, y, x + 1, y + 1});
            for (const Touch& touch : history.list.touches())
                wanted = touch.changed ? address(log, touch.call) : wanted;
            EXPECT_EQ(last[static_cast<size_t>(y * 30 + x)], wanted) << x << "," << y;
        }
    EXPECT_EQ(last[12 * 30 + 12], "1");
    EXPECT_EQ(last[1 * 30 + 12], "2");
    EXPECT_EQ(last[1 * 30 + 20], "-");
}

// One thing changed in one call: a pixel that differs names the call.
TEST(PixelHistory, NamesAPlantedFault)
{
    const auto job = [](const std::string& op, const std::string& mask, double clip_edge)
    {
        With faulty = with_clip({6, 6, clip_edge, 24});
        faulty.op = op;
        faulty.mask = mask;
        return page_of(30, 30,
                       paint_of(0, {0, 0, 30, 30}, "0.5 0.5 0.5") + paint_of(1, {3, 3, 20, 20}, "0 1 0") +
                           paint_of(2, {5, 5, 25, 25}, "1 0 0", faulty) + paint_of(3, {2, 2, 5, 28}, "0 0 1"));
    };
    const auto of_call_2 = [](const std::string& log, int x, int y)
    {
        for (const std::string& line : lines_at(log, x, y))
        {
            if (line.starts_with("2: "))
                return line;
        }
        return std::string();
    };
    const std::string good = job("3", "1", 24);
    EXPECT_EQ(of_call_2(good, 22, 22), "2: ff808080 -> ffff0000");
    EXPECT_EQ(of_call_2(job("12", "1", 24), 22, 22), "2: ff808080 -> ffff8080");
    EXPECT_EQ(of_call_2(job("3", "0", 24), 22, 22), "2: masked");
    EXPECT_EQ(of_call_2(job("3", "1", 20), 22, 22), "2: clipped");
}

// Damaged logs are followed as far as they go.
TEST(PixelHistory, BentAndCutLogsDoNoHarm)
{
    With tiled;
    tiled.tiling = "tiling_flags=\"6\" x_repetition_interval=\"4\" y_repetition_interval=\"4\"";
    const std::string log = page_of(
        40, 40,
        resource_of(0, 1, {0, 0, 4, 4}, paint_of(0, {1, 1, 3, 3}, "1 0 0", {}, "", 1)) +
            group_start(with_clip({0, 0, 30, 30})) + paint_of(1, {2, 2, 20, 20}, "0 1 0", with_mask("0.5")) +
            resource_paint(0, tiled) + group_finish() + fill_and_stroke(2, {5, 5, 15, 15}, "1 0 0", "0 0 1", 4));
    std::mt19937 random(7);
    for (int i = 0; i < 150; ++i)
    {
        std::string bent = log;
        for (int n = 0; n < 4; ++n)
            bent[random() % bent.size()] = "0123456789 <>\"/eE-=\n"[random() % 20];
        if (i % 3 == 0)
            bent.resize(random() % bent.size());
        const History history = history_of(bent, {8, 8, 9, 9});
        EXPECT_LE(history.list.touches().size(), 10000U);
        history_of(bent, {0, 0, 40, 40}, false);
    }
}

}  // namespace
