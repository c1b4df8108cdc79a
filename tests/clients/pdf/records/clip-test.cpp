// SPDX-License-Identifier: GPL-2.0-or-later

#include "clients/pdf/records/clip.h"

#include <gtest/gtest.h>

namespace
{

using namespace orvlog::pdf_client;

Clip narrowed(const Clip& clip, uint32_t id)
{
    return std::make_shared<const ClipNode>(
        std::make_shared<const FilledShape>(rectangle({0, 0, 1, 1}), Winding::non_zero), id, clip);
}

TEST(Clips, ChainFromTheNewestToTheOldest)
{
    const Clip outer = narrowed(nullptr, 4);
    const Clip inner = narrowed(outer, 9);
    const GSH_ShapeList* list = clip_list(inner);
    EXPECT_EQ(list->sl_UniqueId, 9U);
    EXPECT_EQ(list->sl_ClipIn, 1U);
    ASSERT_NE(list->sl_Next, nullptr);
    EXPECT_EQ(list->sl_Next->sl_UniqueId, 4U);
    EXPECT_EQ(list->sl_Next->sl_Next, nullptr);
    EXPECT_EQ(clip_list(nullptr), nullptr);
}

TEST(Clips, AboveABaseStandAlone)
{
    const Clip base = narrowed(narrowed(nullptr, 1), 2);
    const Clip above = clips_above(narrowed(narrowed(base, 3), 4), base);
    ASSERT_NE(above, nullptr);
    EXPECT_EQ(above->record.sl_UniqueId, 4U);
    ASSERT_NE(above->record.sl_Next, nullptr);
    EXPECT_EQ(above->record.sl_Next->sl_UniqueId, 3U);
    EXPECT_EQ(above->record.sl_Next->sl_Next, nullptr);
    EXPECT_EQ(clips_above(base, base), nullptr);
}

TEST(Clips, AreBoundedByTheirIntersection)
{
    const auto box = [](const GGO_BoxFloat& bounds, Clip parent)
    {
        const auto shape = std::make_shared<const FilledShape>(rectangle(bounds), Winding::non_zero);
        return std::make_shared<const ClipNode>(shape, 1, std::move(parent));
    };
    const GGO_BoxFloat both = clip_bounds(box({2, 1, 9, 4}, box({0, 3, 5, 8}, nullptr)));
    EXPECT_EQ(both.gbf_MinX, 2);
    EXPECT_EQ(both.gbf_MinY, 3);
    EXPECT_EQ(both.gbf_MaxX, 5);
    EXPECT_EQ(both.gbf_MaxY, 4);
    const GGO_BoxFloat nothing = clip_bounds(box({6, 6, 9, 9}, box({0, 3, 5, 8}, nullptr)));
    EXPECT_GT(nothing.gbf_MinX, nothing.gbf_MaxX);
    EXPECT_GT(clip_bounds(nullptr).gbf_MaxX, 1e300);
}

TEST(Clips, OfAGreatDepthComeApart)
{
    Clip clip;
    for (uint32_t i = 0; i < 200000; ++i)
        clip = narrowed(clip, i);
    EXPECT_EQ(clip->record.sl_UniqueId, 199999U);
    clip = nullptr;
}

}  // namespace
