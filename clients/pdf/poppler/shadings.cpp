// SPDX-License-Identifier: GPL-2.0-or-later

#include "clients/pdf/poppler/shadings.h"

#include "clients/pdf/poppler/groups.h"
#include "clients/pdf/poppler/paths.h"

#include <algorithm>
#include <cmath>
#include <vector>

#include <GfxState.h>

namespace orvlog::pdf_client
{

namespace
{

constexpr size_t kGreatestStopCount = 257;

double colour_distance(const Colour& one, const Colour& other)
{
    double distance = 0;
    for (int i = 0; i < 4; ++i)
        distance = std::max(distance, std::abs(static_cast<double>(one.value[i]) - other.value[i]));
    return distance;
}

Colour halfway(const Colour& one, const Colour& other)
{
    Colour middle = one;
    for (int i = 0; i < 4; ++i)
        middle.value[i] = (one.value[i] + other.value[i]) / 2;
    return middle;
}

// Stops so close that straight lines between them stay within a fraction of a step of 8 bits.
class StopFinder
{
public:
    StopFinder(GfxUnivariateShading& shading, SpaceStore& spaces) : shading_(shading), spaces_(spaces) {}

    std::vector<GradientStop> find()
    {
        constexpr int kPieces = 8;
        stops_.push_back(stop_at(0));
        for (int i = 0; i < kPieces; ++i)
            refine(stops_.back(), stop_at((i + 1.0) / kPieces), 6);
        return merged();
    }

private:
    GradientStop stop_at(double position)
    {
        GfxColor value;
        clearGfxColor(&value);
        const double t0 = shading_.getDomain0();
        shading_.getColor(t0 + position * (shading_.getDomain1() - t0), &value);
        return {position, colour_of(shading_.getColorSpace(), value, spaces_)};
    }

    void refine(const GradientStop& from, const GradientStop& to, int depth)
    {
        const double middle = (from.position + to.position) / 2;
        const GradientStop between = stop_at(middle);
        const bool straight = colour_distance(between.colour, halfway(from.colour, to.colour)) < 0.002;
        if (depth == 0 || straight || stops_.size() >= kGreatestStopCount)
        {
            stops_.push_back(to);
            return;
        }
        refine(from, between, depth - 1);
        refine(between, to, depth - 1);
    }

    // Leaves out stops that lie on the line between their neighbours.
    std::vector<GradientStop> merged() const
    {
        std::vector<GradientStop> result = {stops_.front()};
        for (size_t i = 1; i + 1 < stops_.size(); ++i)
        {
            const GradientStop& last = result.back();
            const GradientStop& next = stops_[i + 1];
            const double share = (stops_[i].position - last.position) / (next.position - last.position);
            Colour expected = last.colour;
            for (int c = 0; c < 4; ++c)
            {
                expected.value[c] +=
                    static_cast<float>(share * (static_cast<double>(next.colour.value[c]) - last.colour.value[c]));
            }
            if (colour_distance(expected, stops_[i].colour) > 0.0005)
                result.push_back(stops_[i]);
        }
        result.push_back(stops_.back());
        return result;
    }

    GfxUnivariateShading& shading_;
    SpaceStore& spaces_;
    std::vector<GradientStop> stops_;
};

// How far beyond a circle a gradient has to go on, in steps from one circle to the other, until what it
// paints covers the clip, or the radius is down to 0.
double extension(GfxState* state, GGO_Point centre, double radius, GGO_Vector step, double growth)
{
    if (growth < 0)
        return radius / -growth;
    double x_min = 0;
    double y_min = 0;
    double x_max = 0;
    double y_max = 0;
    state->getUserClipBBox(&x_min, &y_min, &x_max, &y_max);
    const double reach = std::hypot(x_max - x_min, y_max - y_min) + radius +
                         std::hypot((x_min + x_max) / 2 - centre.gpf_X, (y_min + y_max) / 2 - centre.gpf_Y);
    const double length = std::hypot(step.gvf_X, step.gvf_Y);
    const double pace = growth > length ? std::max(growth - length, growth / 16) : std::max(growth, length);
    return pace > 0 && std::isfinite(reach) ? std::min(reach / pace, 1000.0) : 0;
}

// Takes the extended side into the circles themselves: a gradient with overlapping circles that goes on at
// one end only.
void extend_circles(GfxState* state, RadialGradient& gradient)
{
    const GGO_Point from = gradient.centre1;
    const GGO_Point to = gradient.centre2;
    const GGO_Vector step = {to.gpf_X - from.gpf_X, to.gpf_Y - from.gpf_Y};
    const double radius = gradient.radius1;
    const double growth = gradient.radius2 - radius;
    const double s_min = gradient.extend_start ? -extension(state, from, radius, step, -growth) : 0;
    const double s_max = gradient.extend_end ? 1 + extension(state, to, gradient.radius2, step, growth) : 1;
    gradient.centre1 = {from.gpf_X + s_min * step.gvf_X, from.gpf_Y + s_min * step.gvf_Y};
    gradient.centre2 = {from.gpf_X + s_max * step.gvf_X, from.gpf_Y + s_max * step.gvf_Y};
    gradient.radius1 = std::max(0.0, radius + s_min * growth);
    gradient.radius2 = std::max(0.0, radius + s_max * growth);
    gradient.extend_start = false;
    gradient.extend_end = false;
    const auto place = [&](double s) { return std::clamp((s - s_min) / (s_max - s_min), 0.0, 1.0); };
    std::vector<GradientStop> stops;
    if (place(0) > 0)
        stops.push_back({0, gradient.stops.front().colour});
    for (const GradientStop& stop : gradient.stops)
        stops.push_back({place(stop.position), stop.colour});
    if (place(1) < 1)
        stops.push_back({1, gradient.stops.back().colour});
    gradient.stops = std::move(stops);
}

// The domain of a function in cells, none wider than a few pixels.
struct Cells
{
    Cells(GfxFunctionShading& shading, const GGO_Matrix& to_content, double pixels)
    {
        constexpr double kGreatestCount = 96;
        shading.getDomain(&x0, &y0, &x1, &y1);
        const auto count_along = [&](GGO_Vector side)
        {
            const GGO_Vector along = transform(to_content, side);
            const double length = std::hypot(along.gvf_X, along.gvf_Y) * pixels;
            return std::isfinite(length) ? static_cast<size_t>(std::clamp(std::ceil(length / 2), 1.0, kGreatestCount))
                                         : size_t{1};
        };
        columns = count_along({x1 - x0, 0});
        rows = count_along({0, y1 - y0});
    }

    double x0 = 0;
    double y0 = 0;
    double x1 = 0;
    double y1 = 0;
    size_t columns = 1;
    size_t rows = 1;
};

// Each cell reaches under the next ones, so that no seams show.
void paint_cells(Canvas& canvas, GfxFunctionShading& shading, const Cells& cells, const GGO_Matrix& to_content,
                 const PaintState& paint)
{
    const double wide = (cells.x1 - cells.x0) / static_cast<double>(cells.columns);
    const double high = (cells.y1 - cells.y0) / static_cast<double>(cells.rows);
    for (size_t row = 0; row < cells.rows; ++row)
    {
        for (size_t column = 0; column < cells.columns; ++column)
        {
            const double x = cells.x0 + static_cast<double>(column) * wide;
            const double y = cells.y0 + static_cast<double>(row) * high;
            GfxColor value;
            clearGfxColor(&value);
            shading.getColor(x + wide / 2, y + high / 2, &value);
            const Path cell = rectangle({x, y, std::min(x + 2 * wide, cells.x1), std::min(y + 2 * high, cells.y1)});
            canvas.painter->fill(cell.transformed(to_content), Winding::non_zero,
                                 colour_of(shading.getColorSpace(), value, canvas.spaces), paint);
        }
    }
}

}  // namespace

void paint_axial(Canvas& canvas, GfxState* state, GfxAxialShading& shading)
{
    AxialGradient gradient;
    gradient.transform = user_to_content(canvas, state);
    shading.getCoords(&gradient.start.gpf_X, &gradient.start.gpf_Y, &gradient.end.gpf_X, &gradient.end.gpf_Y);
    gradient.extend_start = shading.getExtend0();
    gradient.extend_end = shading.getExtend1();
    gradient.stops = StopFinder(shading, canvas.spaces).find();
    canvas.painter->gradient(gradient, fill_state(canvas, state));
}

void paint_radial(Canvas& canvas, GfxState* state, GfxRadialShading& shading)
{
    RadialGradient gradient;
    gradient.transform = user_to_content(canvas, state);
    shading.getCoords(&gradient.centre1.gpf_X, &gradient.centre1.gpf_Y, &gradient.radius1, &gradient.centre2.gpf_X,
                      &gradient.centre2.gpf_Y, &gradient.radius2);
    gradient.extend_start = shading.getExtend0();
    gradient.extend_end = shading.getExtend1();
    gradient.stops = StopFinder(shading, canvas.spaces).find();
    if (gradient.extend_start != gradient.extend_end)
        extend_circles(state, gradient);
    canvas.painter->gradient(gradient, fill_state(canvas, state));
}

void paint_function(Canvas& canvas, GfxState* state, GfxFunctionShading& shading)
{
    const GGO_Matrix to_content = multiply(matrix_of(shading.getMatrix()), user_to_content(canvas, state));
    if (!finite(to_content))
        return;
    const Cells cells(shading, to_content, canvas.painter->pixels_per_unit());
    paint_as_one(canvas, state, cells.columns * cells.rows,
                 [&](const PaintState& paint) { paint_cells(canvas, shading, cells, to_content, paint); });
}

}  // namespace orvlog::pdf_client
