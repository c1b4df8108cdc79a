// What holds when a call is made.

#include "inspect/history/call-state.h"
#include "inspect/history/clip-picture.h"
#include "tests/inspect/history/small-log.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <random>
#include <sstream>
#include <string>

namespace
{

using namespace orvlog;
using namespace orvlog::test;
using inspect::CallState;
using Kind = reader::CallAddress::Kind;

CallState state_of(const std::string& log, const reader::CallAddress& address)
{
    std::istringstream source(log);
    return inspect::state_at(source, address, {});
}

// The line of the Nth tag of a name, from 1.
uint64_t line_of(const std::string& log, const std::string& tag, int n = 1)
{
    size_t at = 0;
    for (; n > 0; --n)
        at = log.find(tag, at + 1);
    return 1 + static_cast<uint64_t>(std::count(log.begin(), log.begin() + static_cast<std::ptrdiff_t>(at), '\n'));
}

std::string job()
{
    With outer;
    outer.retransform = "2 0 0 2 10 10";
    outer.clip = clip_of({0, 0, 50, 60});
    With own;
    own.clip = clip_of({1, 1, 11, 21}) + clip_of({3, 3, 4, 4}, false);
    return page_of(100, 100,
                   "\n<!--\nORVLOG: WARNING: first\n-->\n" +
                       resource_of(4, 1, {0, 0, 9, 8}, paint_of(0, {0, 0, 1, 1}, "1 0 0", {}, "", 1)) +
                       group_start(outer) + "\n<!--\nORVLOG: WARNING: second\n-->\n" + group_start() +
                       paint_of(1, {0, 0, 20, 20}, "0 1 0", own) + group_finish() + group_finish());
}

TEST(CallState, TellsWhatIsOpen)
{
    const std::string log = job();
    const CallState state = state_of(log, {Kind::id, 1});
    ASSERT_TRUE(state.found);
    EXPECT_EQ(state.call.kind, "object_paint");
    EXPECT_EQ(state.call.page, 1U);
    EXPECT_EQ(state.call.op, "source-over");
    EXPECT_EQ(state.call.operand, "rgb(0 1 0)");
    ASSERT_TRUE(state.document.has_value());
    EXPECT_EQ(state.document->from, "line:2");
    EXPECT_EQ(state.document->id, 1U);
    ASSERT_TRUE(state.drawing.has_value());
    EXPECT_EQ(state.drawing->kind, "face");
    EXPECT_EQ(state.drawing->from, "line:4");
    EXPECT_EQ(state.drawing->box.gbf_MaxX, 100);
    ASSERT_EQ(state.drawing->groups.size(), 2U);
    EXPECT_EQ(state.drawing->groups[0].call.line, line_of(log, "<ORV_group_start "));
    EXPECT_EQ(state.drawing->groups[0].retransform.m[0], 2);
    EXPECT_EQ(state.drawing->groups[0].retransform.m[4], 10);
    ASSERT_EQ(state.drawing->groups[0].call.clips.size(), 1U);
    EXPECT_EQ(state.drawing->groups[0].call.clips[0].box->gbf_MaxY, 60);
    EXPECT_EQ(state.to_pixels.m[0], 2);
    EXPECT_EQ(state.to_pixels.m[5], 10);
    ASSERT_EQ(state.call.clips.size(), 2U);
    EXPECT_TRUE(state.call.clips[0].inside);
    EXPECT_EQ(state.call.clips[0].shape, "filled path");
    EXPECT_EQ(state.call.clips[0].winding, "non-zero");
    EXPECT_EQ(state.call.clips[0].parts, 3U);
    EXPECT_EQ(state.call.clips[0].box->gbf_MinX, 12);
    EXPECT_EQ(state.call.clips[0].box->gbf_MaxY, 52);
    EXPECT_FALSE(state.call.clips[1].inside);
    ASSERT_EQ(state.resources.size(), 1U);
    EXPECT_EQ(state.resources[0].id, 4U);
    EXPECT_EQ(state.resources[0].box.gbf_MaxX, 9);
    EXPECT_FALSE(state.resources[0].open);
    EXPECT_EQ(state.warnings, 2U);
    EXPECT_EQ(state.drawing->warnings_before, 0U);
    ASSERT_EQ(state.last_warnings.size(), 2U);
    EXPECT_NE(state.last_warnings[1].text.find("second"), std::string::npos);
}

TEST(CallState, IsThatBeforeTheCall)
{
    const std::string log = job();
    const auto at = [&](const std::string& tag, int n = 1) {
        return state_of(log, {Kind::line, line_of(log, tag, n)});
    };
    EXPECT_FALSE(at("<ORV_document_start ").document.has_value());
    EXPECT_FALSE(at("<ORV_face_start ").drawing.has_value());
    EXPECT_TRUE(at("<ORV_face_start ").document.has_value());
    EXPECT_EQ(at("<ORV_group_start ").drawing->groups.size(), 0U);
    EXPECT_EQ(at("<ORV_group_start ", 2).drawing->groups.size(), 1U);
    EXPECT_EQ(at("<ORV_group_finish ").drawing->groups.size(), 2U);
    EXPECT_EQ(at("<ORV_group_finish ", 2).drawing->groups.size(), 1U);
    EXPECT_EQ(at("<ORV_drawing_finish ", 2).drawing->groups.size(), 0U);
    EXPECT_EQ(at("<ORV_resource_start ").resources.size(), 0U);
    const CallState in_resource = state_of(log, {Kind::id, 0});
    EXPECT_EQ(in_resource.drawing->kind, "resource");
    ASSERT_EQ(in_resource.resources.size(), 1U);
    EXPECT_TRUE(in_resource.resources[0].open);
    EXPECT_FALSE(in_resource.on_page);
}

TEST(CallState, FollowsTicketsAndFontEngines)
{
    std::string log = job();
    const auto replace = [&](const std::string& from, const std::string& to, size_t after)
    {
        const size_t at = log.find(from, after);
        log.replace(at, from.size(), to);
    };
    const std::string engine = "font_engine_functions=\"TRUE\" fp_EngineIdGet=\"here\" GfpId=\"3\"";
    replace("font_engine_functions=\"FALSE\"", engine, log.find("<ORV_group_start "));
    replace("  </ORV_face_start>", "    <GCM_ColorTicket id=\"7\">\n    </GCM_ColorTicket>\n  </ORV_face_start>", 0);
    const CallState state = state_of(log, {Kind::id, 1});
    ASSERT_EQ(state.drawing->frames.size(), 3U);
    EXPECT_EQ(state.drawing->frames[0].ticket, 7U);
    EXPECT_TRUE(state.drawing->frames[0].own);
    EXPECT_EQ(state.drawing->frames[2].ticket, 7U);
    EXPECT_FALSE(state.drawing->frames[2].own);
    ASSERT_EQ(state.drawing->fonts.size(), 1U);
    EXPECT_EQ(state.drawing->fonts[0].engine, "here");
    EXPECT_EQ(state.drawing->fonts[0].gfp_id, 3U);
    EXPECT_EQ(state.drawing->fonts[0].from, "line:" + std::to_string(line_of(log, "<ORV_group_start ")));
    const CallState behind = state_of(log, {Kind::line, line_of(log, "<ORV_drawing_finish ", 2)});
    EXPECT_EQ(behind.drawing->fonts.size(), 0U);
    EXPECT_EQ(behind.drawing->frames.size(), 1U);
}

TEST(CallState, SaysThatACallIsNotThere)
{
    EXPECT_FALSE(state_of(job(), {Kind::id, 9}).found);
    EXPECT_TRUE(state_of(job(), {Kind::id, 9}).is_log);
    EXPECT_FALSE(state_of("no log", {Kind::id, 0}).is_log);
}

int alpha_at(const inspect::ClipPicture& picture, int x, int y)
{
    cairo_surface_t* surface = picture.surface.get();
    cairo_surface_flush(surface);
    return cairo_image_surface_get_data(surface)[y * cairo_image_surface_get_stride(surface) + x];
}

TEST(CallState, DrawsTheClipOfTheCallAndItsGroups)
{
    const std::string log = job();
    std::istringstream first(log);
    const replay::LogKind kind = replay::examine(first);
    inspect::ClipPictureOptions options;
    options.call = log.find("  <ORV_object_paint id=\"1\"");
    std::istringstream source(log);
    const inspect::ClipPicture picture = inspect::clip_picture(source, kind, options);
    ASSERT_NE(picture.surface, nullptr);
    EXPECT_EQ(picture.page, 1U);
    ASSERT_EQ(cairo_image_surface_get_width(picture.surface.get()), 100);
    // Inside 12 to 32 by 12 to 52, without 16 to 18 by 16 to 18, and within the group's 0 to 50 by 0 to 60.
    EXPECT_EQ(alpha_at(picture, 11, 20), 0);
    EXPECT_EQ(alpha_at(picture, 12, 12), 255);
    EXPECT_EQ(alpha_at(picture, 31, 51), 255);
    EXPECT_EQ(alpha_at(picture, 32, 20), 0);
    EXPECT_EQ(alpha_at(picture, 17, 17), 0);
    EXPECT_EQ(alpha_at(picture, 18, 17), 255);
    EXPECT_EQ(alpha_at(picture, 20, 52), 0);
}

TEST(CallState, BentAndCutLogsDoNoHarm)
{
    const std::string log = job();
    std::mt19937 random(3);
    for (int i = 0; i < 300; ++i)
    {
        std::string bent = log;
        for (int n = 0; n < 4; ++n)
            bent[random() % bent.size()] = "0123456789 <>\"/eE-=\n"[random() % 20];
        if (i % 3 == 0)
            bent.resize(random() % bent.size());
        const CallState state = state_of(bent, {Kind::id, 1});
        EXPECT_LE(state.resources.size(), 2U);
        if (!state.found)
            continue;
        std::istringstream first(bent);
        const replay::LogKind kind = replay::examine(first);
        inspect::ClipPictureOptions options;
        options.call = state.byte;
        options.dpi = 1;
        std::istringstream source(bent);
        inspect::clip_picture(source, kind, options);
    }
}

}  // namespace
