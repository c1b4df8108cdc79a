// SPDX-License-Identifier: GPL-2.0-or-later

#include "clients/pdf/poppler/patterns.h"

#include "clients/pdf/poppler/glyph-runs.h"
#include "clients/pdf/poppler/paths.h"

#include <algorithm>
#include <cmath>
#include <utility>

#include <Gfx.h>
#include <Page.h>

namespace orvlog::pdf_client
{

namespace
{

constexpr size_t kGreatestDepth = 6;

std::string key_of(Patterns& patterns, Canvas& canvas, GfxState* state, const GfxTilingPattern& pattern, double scale)
{
    std::string key = "pattern " + std::to_string(pattern.getPatternRefNum());
    if (pattern.getPatternRefNum() < 0)
        key += " unnamed " + std::to_string(++patterns.unnamed);
    key += " at " + std::to_string(static_cast<int>(std::lround(std::log2(std::max(scale, 1e-6)) * 16)));
    if (pattern.getPaintType() == 2)
    {
        const Colour colour = fill_colour(canvas, state);
        for (int i = 0; i < colour.space.channels; ++i)
        {
            key += ' ';
            key += std::to_string(static_cast<int>(std::lround(colour.value[i] * 65535)));
        }
    }
    return key;
}

// False if the resource can't be had.
bool draw_resource(Patterns& patterns, Canvas& canvas, const std::string& key, const ResourceGeometry& geometry,
                   const std::function<void()>& draw_cell)
{
    if (patterns.depth >= kGreatestDepth || !canvas.painter->begin_resource(key, geometry))
        return false;
    ++patterns.depth;
    Content outside = std::exchange(canvas.content, Content{});
    draw_cell();
    flush_text(canvas);
    canvas.content = std::move(outside);
    --patterns.depth;
    canvas.painter->end_resource();
    return true;
}

}  // namespace

void paint_pattern(Patterns& patterns, Canvas& canvas, GfxState* state, const PatternUse& use,
                   const std::function<void()>& draw_cell, const std::function<void(const std::string&)>& complain)
{
    const GGO_Matrix to_content = multiply(matrix_of(use.to_user), user_to_content(canvas, state));
    const GGO_Matrix retransform = multiply(scaling(kPointsPerInch, kPointsPerInch), to_content);
    const double* box = use.pattern.getBBox();
    if (!finite(to_content) || determinant(to_content) == 0 || use.x_step <= 0 || use.y_step <= 0)
        return;
    ResourceGeometry geometry;
    geometry.box = {box[0] / kPointsPerInch, box[1] / kPointsPerInch, box[2] / kPointsPerInch, box[3] / kPointsPerInch};
    geometry.scale = mean_scale(retransform) * canvas.painter->pixels_per_unit();
    geometry.tiled = true;
    const std::string key = key_of(patterns, canvas, state, use.pattern, geometry.scale);
    if (!canvas.painter->has_resource(key) && !draw_resource(patterns, canvas, key, geometry, draw_cell))
    {
        complain("patterns are nested too deeply");
        return;
    }
    const Tiling tiling = {true, use.x_step / kPointsPerInch, use.y_step / kPointsPerInch};
    canvas.painter->paint_resource(key, retransform, tiling, true, fill_state(canvas, state));
}

void read_cell(PDFDoc* document, OutputDev* device, GfxState* state, Gfx* gfx, GfxTilingPattern& pattern)
{
    const double* box = pattern.getBBox();
    const PDFRectangle rectangle(box[0], box[1], box[2], box[3]);
    Gfx cell(document, device, pattern.getResDict(), &rectangle, nullptr, nullptr, nullptr, gfx);
    GfxState* inside = cell.getState();
    inside->setCTM(1, 0, 0, 1, 0, 0);
    if (pattern.getPaintType() == 2)
    {
        inside->setFillColorSpace(state->getFillColorSpace()->copy());
        inside->setFillColor(state->getFillColor());
        inside->setStrokeColorSpace(state->getFillColorSpace()->copy());
        inside->setStrokeColor(state->getFillColor());
    }
    cell.display(pattern.getContentStream());
}

}  // namespace orvlog::pdf_client
