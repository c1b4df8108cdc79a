// SPDX-License-Identifier: GPL-2.0-or-later

#include "clients/pdf/painter/painter.h"
#include "tests/support/fake-renderer.h"

#include <gtest/gtest.h>

#include <limits>

namespace
{

using namespace orvlog::pdf_client;
using orvlog::test::FakeRenderer;

PageGeometry small_page()
{
    return {3, 100, 50, 1, 0.5, 100, nullptr};
}

class PainterTest : public testing::Test
{
protected:
    PainterTest() : painter(fake.get(), [](const std::string&) {})
    {
        EXPECT_TRUE(painter.begin_document(1));
        EXPECT_TRUE(painter.begin_page(small_page()));
    }

    uint64_t made(Call call) const
    {
        return painter.counts().made[static_cast<size_t>(call)];
    }

    FakeRenderer fake;
    Painter painter;
    const Path box = rectangle({0, 0, 1, 1});
    const Colour black;
};

TEST_F(PainterTest, OpensAndClosesAPage)
{
    painter.end_page();
    painter.end_document();
    EXPECT_EQ(fake.count("document_start"), 1U);
    EXPECT_EQ(fake.count("face_start"), 1U);
    EXPECT_EQ(fake.count("drawing_finish"), 1U);
    EXPECT_EQ(fake.count("document_finish"), 1U);
    EXPECT_EQ(painter.counts().refused, 0U);
    EXPECT_EQ(painter.pixels_per_unit(), 0);
}

TEST_F(PainterTest, FillsAndStrokes)
{
    painter.fill(box, Winding::non_zero, black, PaintState{});
    EXPECT_EQ(fake.count("object_paint"), 1U);
    EXPECT_EQ(fake.last_operands[1], nullptr);
    painter.stroke(box, identity(), StrokeStyle{}, black, PaintState{});
    EXPECT_EQ(fake.count("object_paint_and_stroke"), 1U);
    EXPECT_EQ(made(Call::object_paint), 1U);
    EXPECT_EQ(made(Call::object_paint_and_stroke), 1U);
}

TEST_F(PainterTest, GivesNumbersInOrder)
{
    uint32_t first = 0;
    uint32_t second = 0;
    uint32_t* target = &first;
    fake.on_draw([&](const char*) { *target = fake.last_operands[0]->op_UniqueId; });
    painter.fill(box, Winding::non_zero, black, PaintState{});
    target = &second;
    painter.fill(box, Winding::non_zero, black, PaintState{});
    EXPECT_GT(second, first);
}

TEST_F(PainterTest, SaysWhenTheClipIsTheSame)
{
    PaintState state;
    state.clip = painter.narrow(nullptr, box, Winding::non_zero);
    painter.fill(box, Winding::non_zero, black, state);
    EXPECT_NE(fake.last().find("hints=0 "), std::string::npos) << fake.last();
    painter.fill(box, Winding::non_zero, black, state);
    EXPECT_NE(fake.last().find("hints=1 "), std::string::npos) << fake.last();
    EXPECT_NE(fake.last_clip, nullptr);
}

TEST_F(PainterTest, EndsWhatIsLeftOpen)
{
    painter.begin_group(Group{});
    painter.begin_group(Group{});
    ASSERT_TRUE(painter.begin_resource("cell", {{0, 0, 1, 1}, 10, true}));
    painter.begin_group(Group{});
    painter.end_page();
    EXPECT_EQ(fake.count("group_start"), 3U);
    EXPECT_EQ(fake.count("group_finish"), 3U);
    EXPECT_EQ(fake.count("drawing_finish"), 2U);
    painter.end_group();
    EXPECT_EQ(fake.count("group_finish"), 3U);
}

TEST_F(PainterTest, RecordsAResourceOnce)
{
    EXPECT_FALSE(painter.has_resource("cell"));
    ASSERT_TRUE(painter.begin_resource("cell", {{0, 0, 1, 1}, 10, true}));
    EXPECT_DOUBLE_EQ(painter.pixels_per_unit(), 10);
    painter.fill(box, Winding::non_zero, black, PaintState{});
    painter.end_resource();
    EXPECT_TRUE(painter.has_resource("cell"));
    painter.paint_resource("cell", scaling(2, 2), {true, 1, 1}, true, PaintState{});
    painter.paint_resource("cell", scaling(3, 3), {true, 1, 1}, true, PaintState{});
    painter.paint_resource("another", identity(), {}, true, PaintState{});
    EXPECT_EQ(fake.count("resource_start"), 1U);
    EXPECT_EQ(fake.count("resource_paint"), 2U);
    painter.end_page();
    painter.end_document();
    EXPECT_EQ(fake.count("resource_destroy"), 1U);
}

constexpr double kFar = std::numeric_limits<double>::max();
constexpr GGO_BoxFloat kEverywhere{-kFar, -kFar, kFar, kFar};

TEST_F(PainterTest, DrawsNoMoreOfAMaskThanIsSeen)
{
    // A page of one inch by half an inch, 100 pixels to an inch.
    ASSERT_TRUE(painter.begin_mask({0.2, 0.1, 0.3, 0.2}));
    Colour white = black;
    white.value[0] = 1;
    painter.fill(rectangle({0.25, 0, 1, 1}), Winding::non_zero, white, PaintState{});
    const MaskPictures pictures = painter.end_mask();
    EXPECT_NEAR(pictures.on_black.width, 14, 1);
    EXPECT_NEAR(pictures.on_black.height, 14, 1);
    EXPECT_EQ(pictures.on_black.pixels[0], 0U);
    EXPECT_EQ(pictures.on_black.pixels[13], 0xFFFFFFU);
    const auto mask = make_mask(pictures, MaskRule{});
    EXPECT_NEAR(transform(mask->pixels_to_content, GGO_Point{0, 0}).gpf_X, 0.25, 1e-9);
    ASSERT_TRUE(painter.begin_mask({7, 7, 8, 8}));
    EXPECT_EQ(painter.end_mask().on_black.pixels.size(), 1U);
}

TEST_F(PainterTest, DrawsMasksElsewhere)
{
    ASSERT_TRUE(painter.begin_mask(kEverywhere));
    Colour white = black;
    white.value[0] = 1;
    painter.fill(rectangle({0.25, 0.125, 0.5, 0.25}), Winding::non_zero, white, PaintState{});
    const MaskPictures pictures = painter.end_mask();
    EXPECT_EQ(fake.count("object_paint"), 0U);
    EXPECT_EQ(pictures.on_white.width, 100U);
    EXPECT_EQ(pictures.on_black.height, 50U);
    EXPECT_EQ(pictures.on_black.pixels[0], 0U);
    EXPECT_EQ(pictures.on_black.pixels[15 * 100 + 30], 0xFFFFFFU);
    EXPECT_EQ(pictures.on_white.pixels[0], 0xFFFFFFU);

    PaintState state;
    state.alpha = 0.5;
    state.mask = make_mask(pictures, MaskRule{});
    painter.fill(box, Winding::non_zero, black, state);
    EXPECT_EQ(fake.count("object_paint"), 1U);
    EXPECT_NE(fake.last_operands[1], nullptr);
}

TEST_F(PainterTest, MasksWithinMasksAndNoDeeperThanCanBe)
{
    int depth = 0;
    while (painter.begin_mask(kEverywhere))
        ASSERT_LT(++depth, 100);
    EXPECT_EQ(depth, 11);
    painter.end_page();
    EXPECT_EQ(fake.count("drawing_finish"), 1U);
}

TEST_F(PainterTest, WrapsAMaskedImageThatIsMaskedAgain)
{
    Image image;
    image.width = 1;
    image.height = 1;
    image.rows = nullptr;
    PaintState state;
    auto mask = std::make_shared<MaskImage>();
    mask->width = 1;
    mask->height = 1;
    mask->samples = {255};
    mask->pixels_to_content = identity();
    state.mask = mask;
    painter.masked_image(image, identity(), image, identity(), state);
    EXPECT_EQ(fake.count("group_start"), 1U);
    EXPECT_EQ(fake.count("object_paint"), 1U);
    EXPECT_EQ(fake.count("group_finish"), 1U);
}

TEST_F(PainterTest, CountsWhatIsRefused)
{
    fake.set_result(0);
    painter.fill(box, Winding::non_zero, black, PaintState{});
    EXPECT_FALSE(painter.begin_resource("cell", {{0, 0, 1, 1}, 10, true}));
    EXPECT_EQ(painter.counts().refused, 2U);
    fake.set_result(1);
    painter.end_page();
}

TEST(Painter, PaintsNothingWithoutAPage)
{
    FakeRenderer fake;
    Painter painter(fake.get(), [](const std::string&) {});
    painter.begin_document(1);
    fake.set_result(0);
    EXPECT_FALSE(painter.begin_page(small_page()));
    fake.set_result(1);
    painter.fill(rectangle({0, 0, 1, 1}), Winding::non_zero, Colour{}, PaintState{});
    painter.begin_group(Group{});
    painter.end_group();
    EXPECT_FALSE(painter.begin_mask(kEverywhere));
    painter.end_page();
    painter.end_document();
    EXPECT_EQ(fake.count("object_paint"), 0U);
    EXPECT_EQ(fake.count("group_start"), 0U);
    EXPECT_EQ(fake.count("drawing_finish"), 0U);
}

TEST_F(PainterTest, TellsWhatItIsAskedFor)
{
    const auto digest_of = [this](const Path& path, const Colour& colour, double alpha)
    {
        Painter other(fake.get(), [](const std::string&) {});
        CallDigest digest;
        other.tell(&digest);
        other.begin_document(1);
        other.begin_page(small_page());
        PaintState state;
        state.alpha = alpha;
        state.clip = other.narrow(nullptr, path, Winding::non_zero);
        other.fill(box, Winding::non_zero, colour, state);
        other.end_page();
        other.end_document();
        return digest;
    };
    Colour gray;
    gray.value[0] = 0.5F;
    const CallDigest first = digest_of(box, black, 1);
    EXPECT_FALSE(first.differs_by_itself(digest_of(box, black, 1)));
    EXPECT_TRUE(first.differs_by_itself(digest_of(rectangle({0, 0, 1, 2}), black, 1)));
    EXPECT_TRUE(first.differs_by_itself(digest_of(box, gray, 1)));
    EXPECT_TRUE(first.differs_by_itself(digest_of(box, black, 0.5)));
}

TEST_F(PainterTest, TellsWhatTheRendererRefused)
{
    CallDigest taken;
    painter.tell(&taken);
    ASSERT_TRUE(painter.begin_resource("a", {{0, 0, 1, 1}, 10, false}));
    painter.fill(box, Winding::non_zero, black, PaintState{});
    painter.end_resource();
    CallDigest refused;
    painter.tell(&refused);
    fake.set_result(0);
    ASSERT_FALSE(painter.begin_resource("a", {{0, 0, 1, 1}, 10, false}));
    EXPECT_FALSE(taken.differs_by_itself(refused));
}

}  // namespace
