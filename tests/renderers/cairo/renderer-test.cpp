// The renderer itself: pages, files, surfaces, loose ends.

#include "tests/renderers/cairo/page-fixture.h"

#include <cairo-svg.h>

#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <sstream>

using namespace orvlog::records;

namespace
{

class RendererTest : public PageTest
{
protected:
    void TearDown() override
    {
        std::filesystem::remove_all(folder_);
    }
    std::string folder()
    {
        if (folder_.empty())
        {
            std::string name = (std::filesystem::temp_directory_path() / "cairo-test-XXXXXX").string();
            folder_ = mkdtemp(name.data());
        }
        return folder_;
    }

private:
    std::string folder_;
};

ORV_FaceProperties small_face()
{
    ORV_FaceProperties face{};
    face.fp_FaceInchToPixels = {{1, 0, 0, 1, 0, 0}};
    face.fp_WidthInPixels = 3;
    face.fp_HeightInPixels = 2;
    return face;
}

TEST_F(RendererTest, PagesAreNumberedFiles)
{
    options_.png_prefix = folder() + "/page";
    const ORV_Interface* table = renderer().interface();
    const ORV_FaceProperties face = small_face();
    for (int i = 0; i < 2; ++i)
    {
        ORV_DrawingInterface drawing{};
        ASSERT_EQ(table->face_start.fn(nullptr, table, document_, &drawing, nullptr, 9, &face, nullptr, 0, 0), 1U);
        const Operand colour = Operand::gray(i == 0 ? 0.2F : 0.4F);
        drawing.object_paint.fn(&drawing, 0, 0, nullptr, nullptr, 0, nullptr, colour.record(), nullptr, nullptr);
        EXPECT_EQ(drawing.drawing_finish.fn(&drawing), 1U);
    }
    const orvlog::cairo_renderer::PagePixels first = orvlog::cairo_renderer::read_png(folder() + "/page-001.png");
    const orvlog::cairo_renderer::PagePixels second = orvlog::cairo_renderer::read_png(folder() + "/page-002.png");
    EXPECT_EQ(first.width, 3U);
    EXPECT_EQ(first.height, 2U);
    EXPECT_EQ(first.pixels, (std::vector<uint32_t>(6, 0x333333)));
    EXPECT_EQ(second.pixels, (std::vector<uint32_t>(6, 0x666666)));
    EXPECT_EQ(pages().at(0), first);
    EXPECT_EQ(renderer().pages_finished(), 2U);
    EXPECT_TRUE(renderer().all_pages_written());
}

TEST_F(RendererTest, FileThatCannotBeWrittenFailsThePage)
{
    options_.png_prefix = folder() + "/nowhere/page";
    ORV_DrawingInterface& drawing = page();
    EXPECT_EQ(drawing.drawing_finish.fn(&drawing), 0U);
    EXPECT_FALSE(renderer().all_pages_written());
    EXPECT_EQ(lost_.size(), 1U);
}

TEST_F(RendererTest, SurfacesFromAFactory)
{
    const std::string name = folder() + "/page.svg";
    options_.surface_factory = [&](const orvlog::cairo_renderer::Page& page)
    { return cairo_svg_surface_create(name.c_str(), page.width, page.height); };
    paint(Shape::box(1, 1, 2, 2), Operand::rgb(1, 0, 0));
    // No group here: Cairo's own SVG surfaces leak the layer of a group.
    finish();
    std::ifstream file(name);
    std::stringstream text;
    text << file.rdbuf();
    EXPECT_NE(text.str().find("rgb(100%,0%,0%)"), std::string::npos);
    EXPECT_TRUE(pages().at(0).pixels.empty());
}

TEST_F(RendererTest, FactoryThatGivesNothingFailsTheFace)
{
    options_.surface_factory = [](const orvlog::cairo_renderer::Page&) -> cairo_surface_t* { return nullptr; };
    const ORV_Interface* table = renderer().interface();
    const ORV_FaceProperties face = small_face();
    ORV_DrawingInterface drawing{};
    EXPECT_EQ(table->face_start.fn(nullptr, table, document_, &drawing, nullptr, 9, &face, nullptr, 0, 0), 0U);
    EXPECT_EQ(lost_.size(), 1U);
}

TEST_F(RendererTest, ImpossiblePagesAreRefused)
{
    const ORV_Interface* table = renderer().interface();
    ORV_DrawingInterface drawing{};
    ORV_FaceProperties face = small_face();
    face.fp_WidthInPixels = 0;
    EXPECT_EQ(table->face_start.fn(nullptr, table, document_, &drawing, nullptr, 9, &face, nullptr, 0, 0), 0U);
    face.fp_WidthInPixels = 4000000000U;
    EXPECT_EQ(table->face_start.fn(nullptr, table, document_, &drawing, nullptr, 9, &face, nullptr, 0, 0), 0U);
    EXPECT_EQ(table->face_start.fn(nullptr, table, document_, &drawing, nullptr, 9, nullptr, nullptr, 0, 0), 0U);
    face.fp_WidthInPixels = 3;
    EXPECT_EQ(table->face_start.fn(nullptr, table, document_, nullptr, nullptr, 9, &face, nullptr, 0, 0), 0U);
}

TEST_F(RendererTest, MemoryContextsAreRefusedAndSaidOnce)
{
    const ORV_Interface* table = renderer().interface();
    ORV_DrawingInterface drawing{};
    for (int i = 0; i < 2; ++i)
        EXPECT_EQ(table->memory_context_start.fn(nullptr, table, document_, &drawing, 0, 0, 0, 0, 0, nullptr, nullptr,
                                                 0, 0, 0, 0, 0, 0),
                  0U);
    EXPECT_EQ(said_, (std::vector<std::string>{"cairo renderer: memory contexts cannot be opened"}));
    EXPECT_EQ(renderer().complaints(), (std::vector<std::string>{"memory contexts cannot be opened"}));
}

TEST_F(RendererTest, ErrorContextIsTheOneOfTheStart)
{
    const ORV_Interface* table = renderer().interface();
    ORV_DrawingInterface drawing{};
    const ORV_FaceProperties face = small_face();
    int mark = 0;
    ASSERT_EQ(table->face_start.fn(&mark, table, document_, &drawing, nullptr, 9, &face, nullptr, 0, 0), 1U);
    EXPECT_EQ(drawing.drawing_error_context.fn(&drawing), &mark);
    EXPECT_EQ(drawing.drawing_discard.fn(&drawing), 1U);
    EXPECT_TRUE(pages().empty());
}

TEST_F(RendererTest, NullTablesAndRecordsAreGuarded)
{
    ORV_DrawingInterface& drawing = page();
    const ORV_Interface* table = renderer().interface();
    EXPECT_EQ(drawing.object_paint.fn(nullptr, 0, 0, nullptr, nullptr, 0, nullptr, nullptr, nullptr, nullptr), 0U);
    EXPECT_EQ(drawing.object_paint.fn(&drawing, 0, 0, nullptr, nullptr, 0, nullptr, nullptr, nullptr, nullptr), 1U);
    EXPECT_EQ(drawing.object_paint_and_stroke.fn(&drawing, 0, 0, 0, nullptr, nullptr, nullptr, nullptr, nullptr, 0,
                                                 nullptr, 3, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr,
                                                 nullptr),
              1U);
    EXPECT_EQ(drawing.group_start.fn(&drawing, 0, nullptr, nullptr, 0, 99, 0, 0, nullptr, 0, 0, 0, nullptr, nullptr,
                                     nullptr, nullptr, 0, 0, 0, nullptr, nullptr, nullptr),
              1U);
    EXPECT_EQ(drawing.group_finish.fn(&drawing, nullptr), 1U);
    GSH_ShapePointer no_head{};
    drawing.object_paint.fn(&drawing, 0, 0, nullptr, &no_head, 0, nullptr, nullptr, nullptr, nullptr);
    GSH_FilledPathShape fill{};
    fill.fps_Shape.sh_ShapeType = GSH_SHAPE_FILL;
    GSH_ShapePointer no_path{&fill.fps_Shape, {}};
    const Operand black = Operand::gray(0);
    drawing.object_paint.fn(&drawing, 0, 0, nullptr, &no_path, 0, nullptr, black.record(), nullptr, nullptr);
    GPA_PathPointer empty{};
    no_path.sp_U.filled_path = &empty;
    drawing.object_paint.fn(&drawing, 0, 0, nullptr, &no_path, 0, nullptr, black.record(), nullptr, nullptr);
    GOP_OperandPointer no_operand{};
    drawing.object_paint.fn(&drawing, 0, 0, nullptr, nullptr, 0, nullptr, &no_operand, nullptr, nullptr);
    EXPECT_EQ(table->document_start.fn(nullptr, table, nullptr, 0, nullptr, nullptr), 0U);
    EXPECT_EQ(table->document_finish.fn(table, nullptr), 0U);
    EXPECT_EQ(table->resource_start.fn(nullptr, table, document_, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr),
              0U);
    EXPECT_DOUBLE_EQ(ink(), 0.0);
}

TEST_F(RendererTest, DrawingsLeftOpenAreDropped)
{
    page();
    start_group({});
    ORV_ResourceProperties properties{};
    start_resource(properties);
    // The fixture takes the renderer down with both open.
}

TEST_F(RendererTest, SameCallsSameBytes)
{
    options_.png_prefix = folder() + "/a";
    paint(Shape::fill(Path().ellipse({1, 2}, {{1, 1.3, 0.3, {2, 0}}})), Operand::rgba(1, 0.3F, 0.1F, 0.7F));
    finish();
    const auto bytes = [](const std::string& name)
    {
        std::ifstream file(name, std::ios::binary);
        std::stringstream text;
        text << file.rdbuf();
        return text.str();
    };
    const std::string first = bytes(folder() + "/a-001.png");
    orvlog::cairo_renderer::Options again;
    again.png_prefix = folder() + "/b";
    orvlog::cairo_renderer::Renderer other(again);
    const ORV_Interface* table = other.interface();
    ORV_FaceProperties face{};
    face.fp_FaceInchToPixels = {{10, 0, 0, 10, 0, 0}};
    face.fp_WidthInPixels = 40;
    face.fp_HeightInPixels = 40;
    ORV_DrawingInterface drawing{};
    table->face_start.fn(nullptr, table, nullptr, &drawing, nullptr, 1, &face, nullptr, 0, 0);
    drawing.object_paint.fn(&drawing, 0, 0, nullptr,
                            Shape::fill(Path().ellipse({1, 2}, {{1, 1.3, 0.3, {2, 0}}})).record(), 0, nullptr,
                            Operand::rgba(1, 0.3F, 0.1F, 0.7F).record(), nullptr, nullptr);
    drawing.drawing_finish.fn(&drawing);
    EXPECT_FALSE(first.empty());
    EXPECT_EQ(first, bytes(folder() + "/b-001.png"));
}

TEST(ComparePixels, CountsAndMeasures)
{
    const orvlog::cairo_renderer::PagePixels one{2, 1, {0x000000, 0x102030}};
    const orvlog::cairo_renderer::PagePixels other{2, 1, {0x000000, 0x132030}};
    EXPECT_EQ(orvlog::cairo_renderer::compare_pixels(one, one).pixels_different, 0U);
    const orvlog::cairo_renderer::PixelDifference difference = orvlog::cairo_renderer::compare_pixels(one, other);
    EXPECT_EQ(difference.pixels_different, 1U);
    EXPECT_EQ(difference.largest, 3U);
    EXPECT_DOUBLE_EQ(difference.mean, 0.5);
    const orvlog::cairo_renderer::PagePixels tall{1, 2, {0, 0}};
    EXPECT_DOUBLE_EQ(orvlog::cairo_renderer::compare_pixels(one, tall).mean, 255.0);
    EXPECT_TRUE(orvlog::cairo_renderer::read_png("no such file.png").pixels.empty());
}

}  // namespace
