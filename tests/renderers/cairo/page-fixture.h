// A page of 40 by 40 pixels, 10 to the inch, y down, on which a test draws and whose pixels it reads.

#pragma once

#include "renderers/cairo/cairo-renderer.h"
#include "tests/renderers/cairo/drawing-records.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

class PageTest : public testing::Test
{
protected:
    // Options may be changed before the first call.
    orvlog::cairo_renderer::Options options_;
    std::vector<std::string> said_;
    std::vector<std::string> lost_;  // what the page lacks
    const GFI_FontEngineTable* engine_ = nullptr;
    uint32_t width_ = 40;
    uint32_t height_ = 40;
    double pixels_per_inch_ = 10.0;

    orvlog::cairo_renderer::Renderer& renderer();
    ORV_DrawingInterface& page();

    struct Extra
    {
        const GOP_Operator* op = nullptr;
        const GSH_ShapeList* clip = nullptr;
        GOP_OperandPointer* operand2 = nullptr;
    };
    void paint(const orvlog::records::Shape& shape, const orvlog::records::Operand& operand);
    void paint(const orvlog::records::Shape& shape, const orvlog::records::Operand& operand, const Extra& extra);
    void paint_record(const GSH_ShapePointer* shape, GOP_OperandPointer* operand, const Extra& extra);

    struct GroupExtra
    {
        uint32_t type = ORV_GROUP_SIMPLE;
        bool knockout = false;
        const GGO_Matrix* retransform = nullptr;
        const GOP_Operator* op = nullptr;
        GOP_OperandPointer* operand2 = nullptr;
        const GSH_ShapeList* clip = nullptr;
        uint32_t tiling = 0;
        double x_interval = 0.0;
        double y_interval = 0.0;
        const GFI_FontEngineTable* engine = nullptr;
    };
    void start_group(const GroupExtra& extra);
    void finish_group();

    // Opens a resource, to be drawn on with paint() until end_resource().
    uint32_t start_resource(const ORV_ResourceProperties& properties);
    void end_resource();
    uint32_t paint_resource(uint32_t id, const GroupExtra& extra);

    // Ends the page.
    void finish();
    // A pixel of the finished page, 0xRRGGBB.
    uint32_t at(uint32_t x, uint32_t y);
    // As at(), and each channel may be off by `slack`.
    testing::AssertionResult near(uint32_t x, uint32_t y, uint32_t expected, int slack = 2);
    // The dark share of the page: the sum of 1 less the green channel, in pixels.
    double ink();

    const std::vector<orvlog::cairo_renderer::PagePixels>& pages() const;

    orvlog::cairo_renderer::PageCollector collector_;
    void* document_ = nullptr;

private:
    ORV_DrawingInterface& target();

    std::unique_ptr<orvlog::cairo_renderer::Renderer> renderer_;
    ORV_DrawingInterface page_{};
    ORV_DrawingInterface resource_{};
    bool page_open_ = false;
    bool page_finished_ = false;
    bool in_resource_ = false;
};
