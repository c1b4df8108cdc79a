// What a scene painter repeats: groups in cells, and images as tiles.

#include "renderers/cairo/bounds.h"
#include "renderers/cairo/image-store.h"
#include "renderers/cairo/scene-painter.h"

#include <algorithm>
#include <cmath>

namespace orvlog::cairo_renderer
{
namespace
{

constexpr double kMaxCells = 20000.0;
constexpr double kManyCells = 500.0;
constexpr double kMaxCellSide = 4096.0;
constexpr double kEnlargedToBlocks = 4.0;
constexpr int kMaxOverlap = 16;

bool odd(double index)
{
    return std::fmod(std::fabs(index), 2.0) == 1.0;
}

double step_count(double from, double to)
{
    return std::max(0.0, to - from + 1.0);
}

// The cells of an axis whose content can reach from `low` to `high`; content lies from `from` to `to` of a
// cell that begins at 0. Mirrored cells swap the two ends.
void cell_range(double low, double high, double from, double to, double step, bool reflect, double& first, double& last)
{
    if (step == 0.0)
    {
        first = last = 0.0;
        return;
    }
    const double length = std::fabs(step);
    const double begin = reflect ? std::min(from, length - to) : from;
    const double end = reflect ? std::max(to, length - from) : to;
    first = std::ceil((low - end) / length);
    last = std::floor((high - begin) / length);
}

Box visible_box(cairo_t* cr)
{
    Box box;
    cairo_clip_extents(cr, &box.x0, &box.y0, &box.x1, &box.y1);
    return box;
}

cairo_filter_t filter_for(const cairo_matrix_t& to_pixels, bool smooth)
{
    const bool blocks = std::hypot(to_pixels.xx, to_pixels.yx) >= kEnlargedToBlocks ||
                        std::hypot(to_pixels.xy, to_pixels.yy) >= kEnlargedToBlocks;
    return blocks && !smooth ? CAIRO_FILTER_NEAREST : CAIRO_FILTER_GOOD;
}

// From the pixels of the surface to those of the image.
cairo_matrix_t refine(const Image& image)
{
    return {image.coarse, 0.0, 0.0, image.coarse, image.left, image.top};
}

PatternPtr surface_pattern(cairo_surface_t* surface, const cairo_matrix_t& surface_to_pixels, bool smooth,
                           cairo_extend_t extend)
{
    cairo_matrix_t inverse;
    if (!invert(surface_to_pixels, inverse))
        return nullptr;
    PatternPtr pattern = own_pattern(cairo_pattern_create_for_surface(surface));
    cairo_pattern_set_matrix(pattern.get(), &inverse);
    cairo_pattern_set_filter(pattern.get(), filter_for(surface_to_pixels, smooth));
    cairo_pattern_set_extend(pattern.get(), extend);
    return pattern;
}

// The image in each place of one cell of a pattern, some of which lie outside and reach in.
void paint_tiles(cairo_t* cr, const Image& image, cairo_surface_t* pixels, const cairo_matrix_t& to_cell)
{
    const Tiles& tiles = image.tiles;
    const int columns = tiles.x_flip ? 2 : 1;
    const int rows = tiles.y_flip ? 2 : 1;
    const int reach_x = std::min(kMaxOverlap, static_cast<int>(std::min(image.width / tiles.x_step, 100.0)));
    const int reach_y = std::min(kMaxOverlap, static_cast<int>(std::min(image.height / tiles.y_step, 100.0)));
    for (int row = -reach_y; row < rows + reach_y; ++row)
        for (int column = -reach_x; column < columns + reach_x; ++column)
        {
            const bool mirror_x = tiles.x_flip && column % 2 != 0;
            const bool mirror_y = tiles.y_flip && row % 2 != 0;
            const cairo_matrix_t place{mirror_x ? -1.0 : 1.0,
                                       0.0,
                                       0.0,
                                       mirror_y ? -1.0 : 1.0,
                                       column * tiles.x_step + (mirror_x ? image.width : 0.0),
                                       row * tiles.y_step + (mirror_y ? image.height : 0.0)};
            const cairo_matrix_t matrix = multiply(multiply(refine(image), place), to_cell);
            PatternPtr pattern = surface_pattern(pixels, matrix, image.smooth, CAIRO_EXTEND_PAD);
            if (pattern == nullptr)
                continue;
            const Box box = transformed({0.0, 0.0, image.width, image.height}, multiply(place, to_cell));
            cairo_set_source(cr, pattern.get());
            cairo_rectangle(cr, box.x0, box.y0, box.x1 - box.x0, box.y1 - box.y0);
            cairo_fill(cr);
        }
}

// Content that reaches from cell to cell would show seams if it were painted one by one.
bool touches(const Box& content, const Repetition& rep)
{
    const double x_gap = std::fabs(rep.x_step) - (content.x1 - content.x0);
    const double y_gap = std::fabs(rep.y_step) - (content.y1 - content.y0);
    return std::fabs(x_gap) < 1e-6 * std::fabs(rep.x_step) || std::fabs(y_gap) < 1e-6 * std::fabs(rep.y_step);
}

int cell_side(double pixels)
{
    return static_cast<int>(std::ceil(std::clamp(pixels - 1e-6, 1.0, kMaxCellSide)));
}

}  // namespace

PatternPtr ScenePainter::image_source(const Image& image)
{
    if (image.tiled)
        return tile_source(image);
    const SurfacePtr pixels = pixels_of(image);
    if (pixels == nullptr)
        return nullptr;
    return surface_pattern(pixels.get(), multiply(multiply(refine(image), image.pixels_to_content), to_pixels()),
                           image.smooth, CAIRO_EXTEND_PAD);
}

PatternPtr ScenePainter::tile_source(const Image& image)
{
    const Tiles& tiles = image.tiles;
    const SurfacePtr pixels = pixels_of(image);
    if (pixels == nullptr)
        return nullptr;
    const cairo_matrix_t to_device = multiply(image.pixels_to_content, to_pixels());
    const bool fits = cairo_image_surface_get_width(pixels.get()) == static_cast<int>(image.width);
    if (fits && tiles.x_step == image.width && tiles.y_step == image.height && !tiles.x_flip && !tiles.y_flip)
        return surface_pattern(pixels.get(), to_device, image.smooth, CAIRO_EXTEND_REPEAT);
    const double cell_width = tiles.x_step * (tiles.x_flip ? 2.0 : 1.0);
    const double cell_height = tiles.y_step * (tiles.y_flip ? 2.0 : 1.0);
    const int wide = cell_side(cell_width);
    const int high = cell_side(cell_height);
    const cairo_matrix_t to_cell{wide / cell_width, 0.0, 0.0, high / cell_height, 0.0, 0.0};
    SurfacePtr cell = own_surface(cairo_image_surface_create(cairo_image_surface_get_format(pixels.get()), wide, high));
    cairo_t* cr = cairo_create(cell.get());
    paint_tiles(cr, image, pixels.get(), to_cell);
    cairo_destroy(cr);
    cairo_matrix_t from_cell;
    if (!invert(to_cell, from_cell))
        return nullptr;
    return surface_pattern(cell.get(), multiply(from_cell, to_device), image.smooth, CAIRO_EXTEND_REPEAT);
}

cairo_matrix_t ScenePainter::cell_matrix(const Group& group, double column, double row) const
{
    const Repetition& rep = group.repetition;
    const double x_length = std::fabs(rep.x_step);
    const double y_length = std::fabs(rep.y_step);
    const bool mirror_x = rep.reflect_x && odd(column);
    const bool mirror_y = rep.reflect_y && odd(row);
    cairo_matrix_t place{mirror_x ? -1.0 : 1.0,    0.0, 0.0, mirror_y ? -1.0 : 1.0, mirror_x ? x_length : 0.0,
                         mirror_y ? y_length : 0.0};
    cairo_matrix_t matrix = multiply(place, to_pixels());
    Point right = {column * x_length * to_pixels().xx, column * x_length * to_pixels().yx};
    Point down = {row * y_length * to_pixels().xy, row * y_length * to_pixels().yy};
    if (rep.whole_pixels)
    {
        right = {column * std::round(x_length * to_pixels().xx), column * std::round(x_length * to_pixels().yx)};
        down = {row * std::round(y_length * to_pixels().xy), row * std::round(y_length * to_pixels().yy)};
    }
    matrix.x0 += right.x + down.x;
    matrix.y0 += right.y + down.y;
    return matrix;
}

void ScenePainter::paint_cell(const Group& group, const cairo_matrix_t& to_pixels)
{
    const cairo_matrix_t kept = levels_.back().to_pixels;
    levels_.back().to_pixels = to_pixels;
    levels_.back().cell_box = group.has_box ? &group.box : nullptr;
    on_each_plane(
        [&]
        {
            cairo_save(cr_);
            if (group.has_box)
                cut(group.box);
        });
    paint_nodes(*group.content);
    on_each_plane([&] { cairo_restore(cr_); });
    levels_.back().cell_box = nullptr;
    levels_.back().to_pixels = kept;
}

void ScenePainter::repeat_one_by_one(const Group& group, const Box& cells)
{
    for (double row = cells.y0; row <= cells.y1; row += 1.0)
        for (double column = cells.x0; column <= cells.x1; column += 1.0)
            paint_cell(group, cell_matrix(group, column, row));
}

// Draws one cell, with what reaches into it, on a surface of whole pixels, and repeats that.
bool ScenePainter::repeat_by_cell(const Group& group, const Box& content)
{
    const Repetition& rep = group.repetition;
    if (rep.x_step == 0.0 || rep.y_step == 0.0 || rep.reflect_x || rep.reflect_y)
        return false;
    const double x_length = std::fabs(rep.x_step);
    const double y_length = std::fabs(rep.y_step);
    const int wide = cell_side(x_length * std::hypot(to_pixels().xx, to_pixels().yx));
    const int high = cell_side(y_length * std::hypot(to_pixels().xy, to_pixels().yy));
    const cairo_matrix_t to_cell{
        wide / x_length, 0.0, 0.0, high / y_length, -content.x0 * wide / x_length, -content.y0 * high / y_length};
    cairo_matrix_t from_cell;
    cairo_matrix_t inverse;
    if (!invert(to_cell, from_cell) || !invert(multiply(from_cell, to_pixels()), inverse))
        return false;
    const double columns = std::ceil((content.x1 - content.x0) / x_length - 1e-6);
    const double rows = std::ceil((content.y1 - content.y0) / y_length - 1e-6);
    if (columns > kMaxOverlap || rows > kMaxOverlap)
        return false;
    SurfacePtr surface = own_surface(cairo_image_surface_create(CAIRO_FORMAT_ARGB32, wide, high));
    SurfacePtr shape_surface = own_surface(cairo_image_surface_create(CAIRO_FORMAT_A8, wide, high));
    cairo_t* cr = cairo_create(surface.get());
    ContextPtr shape;
    Watch watch_of_cell;
    if (watch_ != nullptr)
        watch_of_cell = tell_cell_begins(group, surface.get(), inverse);
    if (levels_.back().shape != nullptr)
        shape = ContextPtr(cairo_create(shape_surface.get()), cairo_destroy);
    for (double row = 1.0 - rows; row <= 0.0; row += 1.0)
        for (double column = 1.0 - columns; column <= 0.0; column += 1.0)
        {
            cairo_matrix_t shift{1.0, 0.0, 0.0, 1.0, column * x_length, row * y_length};
            ScenePainter painter(cr, multiply(shift, to_cell), complaints_);
            painter.levels_.back().shape = shape;
            painter.watch_by(watch_ != nullptr ? &watch_of_cell : nullptr);
            painter.paint_cell(group, painter.to_pixels());
        }
    cairo_destroy(cr);
    PatternPtr colours;
    on_each_plane(
        [&]
        {
            cairo_surface_t* cell = plane_ == Plane::shape ? shape_surface.get() : surface.get();
            PatternPtr pattern = own_pattern(cairo_pattern_create_for_surface(cell));
            cairo_pattern_set_matrix(pattern.get(), &inverse);
            cairo_pattern_set_extend(pattern.get(), CAIRO_EXTEND_REPEAT);
            cairo_set_operator(cr_, CAIRO_OPERATOR_OVER);
            cairo_set_source(cr_, pattern.get());
            cairo_paint(cr_);
            if (plane_ == Plane::colour)
                colours = pattern;
        });
    if (watch_ != nullptr)
        tell_cell_ends(group, colours);
    return true;
}

void ScenePainter::repeat(const Group& group)
{
    if (group.content->empty())
        return;
    Group frame = group;
    frame.has_box = false;
    begin_group(frame);
    cairo_matrix_t from_pixels;
    const Repetition& rep = group.repetition;
    Box content{0.0, 0.0, std::fabs(rep.x_step), std::fabs(rep.y_step)};
    if (group.has_box)
        content = group.box;
    else if (!bounds_of(*group.content, content))
        complaints_.say_once("repeated content without bounds is cut to its cell");
    if (!levels_.back().hidden && invert(to_pixels(), from_pixels))
    {
        const Box visible = transformed(visible_box(cr_), from_pixels);
        Box cells;
        cell_range(visible.x0, visible.x1, content.x0, content.x1, rep.x_step, rep.reflect_x, cells.x0, cells.x1);
        cell_range(visible.y0, visible.y1, content.y0, content.y1, rep.y_step, rep.reflect_y, cells.y0, cells.y1);
        const double count = step_count(cells.x0, cells.x1) * step_count(cells.y0, cells.y1);
        const bool by_cell = count > kManyCells || (count > 1.0 && touches(content, rep) && !rep.whole_pixels);
        if (count > 0.0 && (!by_cell || !repeat_by_cell(group, content)))
        {
            if (count <= kMaxCells)
                repeat_one_by_one(group, cells);
            else
                complaints_.lose_once("content repeated more than 20000 times in ways of its own is left out");
        }
    }
    end_group(frame);
}

}  // namespace orvlog::cairo_renderer
