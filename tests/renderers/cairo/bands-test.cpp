// Pages that are drawn in bands: the same pixels as on one surface.

#include "tests/renderers/cairo/page-fixture.h"

#include <cstdio>
#include <filesystem>

using namespace orvlog::records;

namespace
{

const GOP_Operator multiply = operation(GOP_ROP_PDF_SEPARABLE, 1);

class BandsTest : public PageTest
{
protected:
    // Objects and groups of all kinds, each across several bands.
    void draw()
    {
        const GGO_Matrix turn{{0.8, 0.6, -0.6, 0.8, 1.0, 0.3}};
        Clips clips;
        clips.inside(Shape::box(0.5, 0.4, 3.7, 3.6)).outside(Shape::box(1.5, 1.5, 2, 2));
        paint_record(nullptr, Operand::rgb(1, 1, 0.5F).record(), {});
        GroupExtra knockout;
        knockout.knockout = true;
        knockout.type = ORV_GROUP_NON_ISOLATED;
        knockout.clip = clips.record();
        start_group(knockout);
        paint(Shape::box(0, 0, 3, 3), Operand::rgb(0, 0, 1));
        GroupExtra inner;
        inner.type = ORV_GROUP_NON_ISOLATED;
        inner.op = &multiply;
        inner.retransform = &turn;
        start_group(inner);
        paint(Shape::box(0.52, 0.33, 2.9, 2.71), Operand::rgba(1, 0.3F, 0, 0.6F));
        finish_group();
        finish_group();
        GroupExtra tiles;
        tiles.tiling = unsigned{ORV_GROUP_TILE_X} | ORV_GROUP_TILE_Y;
        tiles.x_interval = 0.31;
        tiles.y_interval = 0.37;
        start_group(tiles);
        paint(Shape::box(0, 0, 0.11, 0.13), Operand::gray(0));
        finish_group();
    }
};

TEST_F(BandsTest, PixelsAreThoseOfAWholePage)
{
    draw();
    finish();
    const orvlog::cairo_renderer::PagePixels whole = pages().at(0);
    class Banded : public BandsTest
    {
    public:
        std::vector<orvlog::cairo_renderer::PagePixels> drawn()
        {
            options_.pixels_at_once = 7 * 40 + 3;
            draw();
            finish();
            return pages();
        }

    private:
        void TestBody() override {}
    };
    const std::vector<orvlog::cairo_renderer::PagePixels> banded = Banded().drawn();
    ASSERT_EQ(banded.size(), 1U);
    EXPECT_EQ(banded[0].height, 40U);
    EXPECT_TRUE(banded[0] == whole);
}

TEST_F(BandsTest, BandsComeInOrderAndCoverThePage)
{
    std::vector<std::pair<uint32_t, uint32_t>> bands;
    orvlog::cairo_renderer::Options options;
    options.pixels_at_once = 16 * 40;
    options.page_sink = [&](const orvlog::cairo_renderer::Page& page)
    { bands.emplace_back(page.first_row, page.rows); };
    orvlog::cairo_renderer::Renderer banded(options);
    const ORV_Interface* table = banded.interface();
    void* document = nullptr;
    ASSERT_EQ(table->document_start.fn(nullptr, table, &document, 1, nullptr, nullptr), 1U);
    ORV_FaceProperties face{};
    face.fp_FaceInchToPixels = {{10, 0, 0, 10, 0, 0}};
    face.fp_WidthInPixels = 40;
    face.fp_HeightInPixels = 40;
    ORV_DrawingInterface drawing{};
    ASSERT_EQ(table->face_start.fn(nullptr, table, document, &drawing, nullptr, 1, &face, nullptr, 0, 0), 1U);
    EXPECT_EQ(drawing.drawing_finish.fn(&drawing), 1U);
    EXPECT_EQ(table->document_finish.fn(table, document), 1U);
    const std::vector<std::pair<uint32_t, uint32_t>> expected = {{0, 16}, {16, 16}, {32, 8}};
    EXPECT_EQ(bands, expected);
    EXPECT_EQ(banded.pages_finished(), 1U);
}

TEST_F(BandsTest, PngHasAllBands)
{
    const std::filesystem::path prefix = std::filesystem::temp_directory_path() / "bands-test";
    options_.pixels_at_once = 7 * 40;
    options_.png_prefix = prefix.string();
    draw();
    finish();
    const std::string name = prefix.string() + "-001.png";
    const orvlog::cairo_renderer::PagePixels file = orvlog::cairo_renderer::read_png(name);
    std::filesystem::remove(name);
    EXPECT_TRUE(renderer().all_pages_written());
    EXPECT_TRUE(file == pages().at(0));
}

TEST_F(BandsTest, PngThatCannotBeWrittenIsSaid)
{
    options_.pixels_at_once = 7 * 40;
    options_.png_prefix = "/nowhere/at-all";
    ORV_DrawingInterface& table = page();
    EXPECT_EQ(table.drawing_finish.fn(&table), 0U);
    EXPECT_FALSE(renderer().all_pages_written());
    EXPECT_EQ(lost_,
              std::vector<std::string>{"cairo renderer: the page image /nowhere/at-all-001.png could not be written"});
}

}  // namespace
