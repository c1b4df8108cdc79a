// Large images of which the clips show little: they are read whole, and no more of them is held than is seen.

#include "renderers/cairo/image-part.h"
#include "tests/renderers/cairo/image-records.h"
#include "tests/renderers/cairo/page-fixture.h"

#include <algorithm>
#include <vector>

using namespace orvlog::records;

namespace
{

using orvlog::cairo_renderer::Layout;
using orvlog::cairo_renderer::Part;

constexpr uint32_t kWide = 1531;
constexpr uint32_t kHigh = 1201;

struct Form
{
    const char* name;
    uint16_t family;
    uint16_t depth;
    uint32_t flags;
    uint32_t bits;  // of a pixel
};

const Form forms[] = {{"bits", GCM_CSF_GRAY, GNC_BMP_DEPTH_1, 0, 1},
                      {"nibbles", GCM_CSF_RGB, GNC_BMP_DEPTH_4, 0, 12},
                      {"bytes", GCM_CSF_RGB, GNC_BMP_DEPTH_8, 0, 24},
                      {"alpha", GCM_CSF_RGB, GNC_BMP_DEPTH_8, GOP_OP_FLAGS_HAS_ALPHA, 32},
                      {"words", GCM_CSF_GRAY, GNC_BMP_DEPTH_16, 0, 16}};

std::vector<uint8_t> soft_noise(const Form& form)
{
    std::vector<uint8_t> bytes((kWide * form.bits + 7) / 8 * size_t{kHigh});
    uint32_t state = 1;
    for (uint8_t& byte : bytes)
    {
        state = state * 1664525U + 1013904223U;
        byte = static_cast<uint8_t>(state >> 24);
    }
    return bytes;
}

struct Drawn
{
    orvlog::cairo_renderer::PagePixels page;
    std::vector<std::string> diary;
};

// A page with the image, turned, behind a small clip: painted at once, or, if it is `kept`, when all of it is there.
class Drawing : public PageTest
{
public:
    Drawn draw(const Form& form, bool kept, size_t bytes_lacking)
    {
        options_.keep_images = kept;
        std::vector<uint8_t> bytes = soft_noise(form);
        bytes.resize(bytes.size() - bytes_lacking);
        ImageSource source(form.family, kWide, kHigh, bytes);
        source.depth(form.depth).flags(form.flags | GOP_OP_FLAGS_ASYNCH_ACCESS);
        source.image.im_Transform = {{0.0066, 0.0021, -0.0019, 0.0071, -3.3, -4.7}};
        Clips clips;
        clips.inside(orvlog::records::Shape::box(1.13, 0.9, 2.31, 2.77))
            .outside(orvlog::records::Shape::box(1.5, 1.5, 1.8, 1.8));
        Extra extra;
        extra.clip = clips.record();
        paint_record(nullptr, source.record(), extra);
        finish();
        return {pages().at(0), source.diary};
    }

private:
    void TestBody() override {}
};

class LargeImageTest : public testing::TestWithParam<Form>
{
protected:
    static Drawn draw(bool kept, size_t bytes_lacking = 0)
    {
        return Drawing().draw(GetParam(), kept, bytes_lacking);
    }

    // The largest difference of a channel.
    static uint32_t difference(const Drawn& one, const Drawn& other)
    {
        return orvlog::cairo_renderer::compare_pixels(one.page, other.page).largest;
    }

    static size_t reads(const Drawn& drawn)
    {
        return static_cast<size_t>(std::count_if(drawn.diary.begin(), drawn.diary.end(),
                                                 [](const std::string& line)
                                                 { return line.compare(0, 4, "read") == 0; }));
    }
};

TEST_P(LargeImageTest, LooksLikeTheWholeOne)
{
    const Drawn seen = draw(false);
    EXPECT_LE(difference(seen, draw(true)), 2U);
    EXPECT_NE(seen.page.pixels.at(20 * 40 + 13), 0xFFFFFFU);
    EXPECT_EQ(seen.page.pixels.at(20 * 40 + 9), 0xFFFFFFU);
}

TEST_P(LargeImageTest, IsReadWhole)
{
    EXPECT_EQ(reads(draw(false)), reads(draw(true)));
}

TEST_P(LargeImageTest, EndsWhereItsDataEnds)
{
    const size_t row = (kWide * GetParam().bits + 7) / 8;
    // Within a row that is seen, and behind all of them.
    for (const size_t lacking : {row * 340 + row / 3, row / 2})
        EXPECT_LE(difference(draw(false, lacking), draw(true, lacking)), 2U) << lacking;
}

INSTANTIATE_TEST_SUITE_P(AllForms, LargeImageTest, testing::ValuesIn(forms),
                         [](const testing::TestParamInfo<Form>& form) { return std::string(form.param.name); });

// Parts of an image of single bits, 40,000 by 3,000, a tenth of a unit each.
class PartSeenTest : public testing::Test
{
protected:
    PartSeenTest()
    {
        layout.width = 40000;
        layout.height = 3000;
        layout.channels = 1;
        layout.bits = 1;
        layout.row_bytes = 5000;
        layout.rows = 3000;
        image.pixels_to_content = {0.1, 0.0, 0.0, 0.1, 0.0, 0.0};
        image.width = 40000;
        image.height = 3000;
    }

    std::vector<uint32_t> seen(const orvlog::cairo_renderer::Box& box, uint32_t coarse = 2) const
    {
        const orvlog::cairo_renderer::Window window{orvlog::cairo_renderer::identity(), box};
        const Part part = part_seen(layout, image, coarse, &window);
        return {part.left, part.top, part.width, part.height};
    }

    Layout layout;
    orvlog::cairo_renderer::Image image;
};

using Numbers = std::vector<uint32_t>;

TEST_F(PartSeenTest, IsTheWindowAndWhatAFilterReaches)
{
    // The filter reaches 4 * (10 + 2) pixels.
    EXPECT_EQ(seen({100, 20, 130, 60}), (Numbers{952, 152, 400, 496}));
    EXPECT_EQ(seen({100, 20, 130, 60}, 3), (Numbers{936, 147, 432, 507}));
}

TEST_F(PartSeenTest, EndsWithTheImage)
{
    EXPECT_EQ(seen({3990, 290, 5000, 5000}), (Numbers{39848, 2852, 152, 148}));
    EXPECT_EQ(seen({-50, -50, 1, 1}), (Numbers{0, 0, 64, 58}));
}

TEST_F(PartSeenTest, IsNeverEmpty)
{
    EXPECT_EQ(seen({9000, 9000, 9100, 9100}), (Numbers{39992, 2998, 8, 2}));
    EXPECT_EQ(seen({0, 0, 0, 0}), (Numbers{0, 0, 48, 48}));
}

TEST_F(PartSeenTest, IsTheWholeImageWhereItMustBe)
{
    const Numbers whole = {0, 0, 40000, 3000};
    const orvlog::cairo_renderer::Box little = {100, 20, 130, 60};
    EXPECT_EQ(seen({0, 0, 3200, 300}), whole);
    image.tiled = true;
    EXPECT_EQ(seen(little), whole);
    image.tiled = false;
    layout.planar = true;
    EXPECT_EQ(seen(little), whole);
    layout.planar = false;
    image.pixels_to_content = {0, 0, 0, 0, 0, 0};
    EXPECT_EQ(seen(little), whole);
    const Part part = part_seen(layout, image, 2, nullptr);
    EXPECT_EQ(part.width, 40000U);
    EXPECT_EQ(part.height, 3000U);
}

TEST_F(PartSeenTest, HasItsOwnLayout)
{
    uint64_t offset = 0;
    const Layout part = layout_of({952, 152, 400, 496}, layout, offset);
    EXPECT_EQ(offset, 119U);
    EXPECT_EQ(part.width, 400U);
    EXPECT_EQ(part.height, 496U);
    EXPECT_EQ(part.row_bytes, 50U);
    EXPECT_EQ(part.rows, 496U);
}

}  // namespace
