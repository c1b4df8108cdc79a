#include "tests/renderers/cairo/page-fixture.h"

#include <cstdlib>

orvlog::cairo_renderer::Renderer& PageTest::renderer()
{
    if (renderer_ == nullptr)
    {
        options_.page_sink = collector_.sink();
        options_.complaint_sink = [this](const std::string& line) { said_.push_back(line); };
        options_.loss_sink = [this](const std::string& line) { lost_.push_back(line); };
        renderer_ = std::make_unique<orvlog::cairo_renderer::Renderer>(options_);
        const ORV_Interface* table = renderer_->interface();
        EXPECT_EQ(table->document_start.fn(nullptr, table, &document_, 1, engine_, nullptr), 1U);
    }
    return *renderer_;
}

ORV_DrawingInterface& PageTest::page()
{
    if (!page_open_)
    {
        const ORV_Interface* table = renderer().interface();
        ORV_FaceProperties face{};
        face.fp_FaceInchToPixels = {{pixels_per_inch_, 0, 0, pixels_per_inch_, 0, 0}};
        face.fp_WidthInPixels = width_;
        face.fp_HeightInPixels = height_;
        EXPECT_EQ(table->face_start.fn(nullptr, table, document_, &page_, nullptr, 1, &face, nullptr, 0, 0), 1U);
        page_open_ = true;
    }
    return page_;
}

ORV_DrawingInterface& PageTest::target()
{
    return in_resource_ ? resource_ : page();
}

void PageTest::paint(const orvlog::records::Shape& shape, const orvlog::records::Operand& operand)
{
    paint(shape, operand, {});
}

void PageTest::paint(const orvlog::records::Shape& shape, const orvlog::records::Operand& operand, const Extra& extra)
{
    paint_record(shape.record(), operand.record(), extra);
}

void PageTest::paint_record(const GSH_ShapePointer* shape, GOP_OperandPointer* operand, const Extra& extra)
{
    ORV_DrawingInterface& table = target();
    EXPECT_EQ(table.object_paint.fn(&table, GCM_OBJ_GRAPHICS, 0, extra.op, shape, 0, extra.clip, operand,
                                    extra.operand2, nullptr),
              1U);
}

void PageTest::start_group(const GroupExtra& extra)
{
    ORV_DrawingInterface& table = target();
    uint32_t group = 77;
    EXPECT_EQ(table.group_start.fn(&table, 5, &group, extra.engine, 0, extra.type, extra.knockout ? 1 : 0, 0, nullptr,
                                   0, 0, 0, extra.retransform, extra.op, extra.operand2, extra.clip, extra.tiling,
                                   extra.x_interval, extra.y_interval, nullptr, nullptr, nullptr),
              1U);
    EXPECT_EQ(group, 0U);
}

void PageTest::finish_group()
{
    ORV_DrawingInterface& table = target();
    uint32_t replay = 77;
    EXPECT_EQ(table.group_finish.fn(&table, &replay), 1U);
    EXPECT_EQ(replay, 0U);
}

uint32_t PageTest::start_resource(const ORV_ResourceProperties& properties)
{
    page();
    const ORV_Interface* table = renderer().interface();
    uint32_t id = 0;
    EXPECT_EQ(
        table->resource_start.fn(nullptr, table, document_, &resource_, &page_, nullptr, &properties, nullptr, &id),
        1U);
    in_resource_ = true;
    return id;
}

void PageTest::end_resource()
{
    EXPECT_EQ(resource_.drawing_finish.fn(&resource_), 1U);
    in_resource_ = false;
}

uint32_t PageTest::paint_resource(uint32_t id, const GroupExtra& extra)
{
    ORV_DrawingInterface& table = target();
    return table.resource_paint.fn(&table, id, 0, extra.type, extra.retransform, extra.op, extra.operand2, extra.clip,
                                   extra.tiling, extra.x_interval, extra.y_interval, nullptr, nullptr, 0);
}

void PageTest::finish()
{
    ORV_DrawingInterface& table = page();
    EXPECT_TRUE(page_finished_ || table.drawing_finish.fn(&table) == 1U);
    page_finished_ = true;
    const ORV_Interface* interface = renderer().interface();
    EXPECT_TRUE(document_ == nullptr || interface->document_finish.fn(interface, document_) == 1U);
    document_ = nullptr;
}

uint32_t PageTest::at(uint32_t x, uint32_t y)
{
    if (!page_finished_)
        finish();
    const orvlog::cairo_renderer::PagePixels& pixels = pages().at(0);
    return pixels.pixels.at(static_cast<size_t>(y) * pixels.width + x);
}

testing::AssertionResult PageTest::near(uint32_t x, uint32_t y, uint32_t expected, int slack)
{
    const uint32_t seen = at(x, y);
    for (const unsigned shift : {0U, 8U, 16U})
        if (std::abs(static_cast<int>((seen >> shift) & 0xFFU) - static_cast<int>((expected >> shift) & 0xFFU)) > slack)
            return testing::AssertionFailure()
                   << "pixel " << x << ", " << y << " is " << std::hex << seen << ", expected " << expected;
    return testing::AssertionSuccess();
}

double PageTest::ink()
{
    if (!page_finished_)
        finish();
    double sum = 0.0;
    for (const uint32_t pixel : pages().at(0).pixels)
        sum += 1.0 - static_cast<double>((pixel >> 8) & 0xFFU) / 255.0;
    return sum;
}

const std::vector<orvlog::cairo_renderer::PagePixels>& PageTest::pages() const
{
    return collector_.pages();
}
