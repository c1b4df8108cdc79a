// What a painter tells a watch, and how it finds out why a pixel is what it was.

#include "renderers/cairo/bounds.h"
#include "renderers/cairo/scene-painter.h"

#include <algorithm>
#include <cmath>

namespace orvlog::cairo_renderer
{
namespace
{

// Pixels of a page on a surface of their own.
struct Canvas
{
    Canvas(cairo_format_t format, const PixelBox& box)
        : surface(own_surface(cairo_image_surface_create(format, box.x1 - box.x0, box.y1 - box.y0)))
    {
        cairo_surface_set_device_offset(surface.get(), -box.x0, -box.y0);
        cr = std::shared_ptr<cairo_t>(cairo_create(surface.get()), cairo_destroy);
        cairo_set_source_rgba(cr.get(), 0.0, 0.0, 0.0, 1.0);
    }

    // The first pixel, 0xAARRGGBB; of alpha 0xAA.
    uint32_t pixel() const
    {
        cairo_surface_flush(surface.get());
        const unsigned char* data = cairo_image_surface_get_data(surface.get());
        if (data == nullptr)
            return 0;
        if (cairo_image_surface_get_format(surface.get()) == CAIRO_FORMAT_A8)
            return data[0];
        return *reinterpret_cast<const uint32_t*>(data);
    }

    SurfacePtr surface;
    std::shared_ptr<cairo_t> cr;
};

PixelBox around(const Box& box, double margin)
{
    static constexpr double kFar = 1 << 24;
    const auto whole = [](double value) { return static_cast<int>(std::clamp(value, -kFar, kFar)); };
    return {whole(std::floor(box.x0 - margin)), whole(std::floor(box.y0 - margin)), whole(std::ceil(box.x1 + margin)),
            whole(std::ceil(box.y1 + margin))};
}

cairo_surface_t* image_target(cairo_t* cr)
{
    cairo_surface_t* target = cairo_get_group_target(cr);
    return cairo_surface_get_type(target) == CAIRO_SURFACE_TYPE_IMAGE ? target : nullptr;
}

PixelBox clip_extents(cairo_t* cr)
{
    Box box;
    cairo_clip_extents(cr, &box.x0, &box.y0, &box.x1, &box.y1);
    return around(box, 0.0);
}

const Shape& whole_plane()
{
    static const Shape all{true, {}};
    return all;
}

// The pixel of a page on its surface as 0xAARRGGBB, opaque if the surface has no alpha.
uint32_t colour_at(cairo_surface_t* surface, int x, int y)
{
    Canvas canvas(CAIRO_FORMAT_ARGB32, {x, y, x + 1, y + 1});
    cairo_set_operator(canvas.cr.get(), CAIRO_OPERATOR_SOURCE);
    cairo_set_source_surface(canvas.cr.get(), surface, 0.0, 0.0);
    cairo_paint(canvas.cr.get());
    return canvas.pixel();
}

// Parts of a pixel's bounds that `box` has.
bool holds(const Box& box, int x, int y)
{
    return box.x0 < x + 1 && x < box.x1 && box.y0 < y + 1 && y < box.y1;
}

// One stretch of an axis, cut into those of cells of `size` that it meets.
std::vector<std::pair<int, int>> wrapped(int from, int to, int size)
{
    if (to - from >= size)
        return {{0, size}};
    const int first = from - static_cast<int>(std::floor(static_cast<double>(from) / size)) * size;
    const int last = first + (to - from);
    if (last <= size)
        return {{first, last}};
    return {{first, size}, {0, last - size}};
}

int wrapped(int at, int size)
{
    return (at % size + size) % size;
}

}  // namespace

PixelBox meet(const PixelBox& one, const PixelBox& other)
{
    return {std::max(one.x0, other.x0), std::max(one.y0, other.y0), std::min(one.x1, other.x1),
            std::min(one.y1, other.y1)};
}

void ScenePainter::watch_by(const Watch* watch)
{
    watch_ = watch;
}

// What the clips of a group or a paint let through, as alpha. The box of a group lies in its content's space.
SurfacePtr ScenePainter::let_through(const ClipList& clips, const cairo_matrix_t& clips_to_pixels, const Box* box,
                                     const cairo_matrix_t& box_to_pixels, const PixelBox& pixels) const
{
    const Canvas canvas(CAIRO_FORMAT_A8, pixels);
    ScenePainter painter(canvas.cr.get(), clips_to_pixels, complaints_);
    std::vector<const Clip*> masks;
    if (!is_finite(clips_to_pixels) || !painter.clip(clips, masks))
        return canvas.surface;
    if (box != nullptr)
    {
        painter.levels_.back().to_pixels = box_to_pixels;
        painter.cut(*box);
        painter.levels_.back().to_pixels = clips_to_pixels;
    }
    const PatternPtr covered = masks.empty() ? nullptr : painter.coverage(whole_plane(), masks, nullptr);
    cairo_set_source_rgba(canvas.cr.get(), 0.0, 0.0, 0.0, 1.0);
    if (covered != nullptr)
        cairo_mask(canvas.cr.get(), covered.get());
    else
        cairo_paint(canvas.cr.get());
    return canvas.surface;
}

// The same for the open group at `depth`; null if it shuts nothing out.
SurfacePtr ScenePainter::let_through_group(size_t depth, const PixelBox& pixels) const
{
    static const ClipList no_clips;
    const Level& level = levels_[depth];
    const Box* box = level.cell_box;
    if (box == nullptr && level.group != nullptr && level.group->has_box)
        box = &level.group->box;
    const ClipList& clips = level.group != nullptr ? level.group->clips : no_clips;
    if (box == nullptr && clips.empty())
        return nullptr;
    return let_through(clips, levels_[depth > 0 ? depth - 1 : 0].to_pixels, box, level.to_pixels, pixels);
}

SurfacePtr ScenePainter::let_through_all(const ClipList& clips, const PixelBox& pixels) const
{
    SurfacePtr all = let_through(clips, to_pixels(), nullptr, to_pixels(), pixels);
    const std::shared_ptr<cairo_t> cr(cairo_create(all.get()), cairo_destroy);
    cairo_set_operator(cr.get(), CAIRO_OPERATOR_DEST_IN);
    for (size_t depth = levels_.size(); depth-- > 0;)
    {
        const SurfacePtr group = let_through_group(depth, pixels);
        if (group == nullptr)
            continue;
        cairo_set_source_surface(cr.get(), group.get(), 0.0, 0.0);
        cairo_paint(cr.get());
    }
    return all;
}

// Whether clips shut a pixel out: those of the paint, or of the groups around it.
bool ScenePainter::is_shut_out(const ClipList& clips, const PixelBox& pixel, WhyUnchanged& why) const
{
    const auto nothing = [](const SurfacePtr& surface)
    {
        cairo_surface_flush(surface.get());
        const unsigned char* data = cairo_image_surface_get_data(surface.get());
        return data == nullptr || data[0] == 0;
    };
    if (!clips.empty() && nothing(let_through(clips, to_pixels(), nullptr, to_pixels(), pixel)))
    {
        why = {Unchanged::clipped, 0};
        return true;
    }
    for (size_t depth = levels_.size(); depth-- > 0;)
    {
        const SurfacePtr through = let_through_group(depth, pixel);
        if (through == nullptr || !nothing(through))
            continue;
        const Group* group = levels_[depth].group;
        why = {Unchanged::group_clipped, group != nullptr ? group->call : 0};
        return true;
    }
    return false;
}

bool ScenePainter::covers(const Shape& shape, const PixelBox& pixel) const
{
    Box box;
    if (!shape.everything && (shape.pieces.empty() || !bounds_of(shape, to_pixels(), box) ||
                              !holds({box.x0 - 1.0, box.y0 - 1.0, box.x1 + 1.0, box.y1 + 1.0}, pixel.x0, pixel.y0)))
        return false;
    const Canvas canvas(CAIRO_FORMAT_A8, pixel);
    ScenePainter painter(canvas.cr.get(), to_pixels(), complaints_);
    painter.draw(shape);
    return canvas.pixel() != 0;
}

// Why what reaches the pixel, through its clips, leaves it as it is.
Unchanged ScenePainter::why_without_effect(cairo_pattern_t* source, const Compose& compose, cairo_surface_t* target,
                                           const PixelBox& pixel) const
{
    const Canvas alone(CAIRO_FORMAT_ARGB32, pixel);
    cairo_set_source(alone.cr.get(), source);
    cairo_paint(alone.cr.get());
    const uint32_t colour = alone.pixel();
    if (colour >> 24U == 0)
        return Unchanged::transparent;
    const Canvas mask_alone(CAIRO_FORMAT_A8, pixel);
    ScenePainter painter(mask_alone.cr.get(), to_pixels(), complaints_);
    const PatternPtr mask = painter.coverage(whole_plane(), {}, &compose);
    cairo_set_source_rgba(mask_alone.cr.get(), 0.0, 0.0, 0.0, 1.0);
    cairo_mask(mask_alone.cr.get(), mask.get());
    if (mask_alone.pixel() == 0)
        return Unchanged::masked;
    if (target == nullptr)
        return Unchanged::faint;
    const uint32_t there = colour_at(target, pixel.x0, pixel.y0);
    const Canvas both(CAIRO_FORMAT_ARGB32, pixel);
    cairo_set_operator(both.cr.get(), CAIRO_OPERATOR_SOURCE);
    cairo_set_source_surface(both.cr.get(), target, 0.0, 0.0);
    cairo_paint(both.cr.get());
    cairo_set_operator(both.cr.get(), compose.op);
    cairo_set_source(both.cr.get(), source);
    cairo_paint(both.cr.get());
    if (both.pixel() != there)
        return Unchanged::faint;
    return colour == there ? Unchanged::same_colour : Unchanged::by_operator;
}

WhyUnchanged ScenePainter::why_unchanged(const Paint& paint, int x, int y)
{
    const PixelBox pixel{x, y, x + 1, y + 1};
    WhyUnchanged why;
    if (!covers(shape_of(paint), pixel) || is_shut_out(paint.clips, pixel, why))
        return why;
    for (size_t depth = 1; depth < levels_.size(); ++depth)
        if (levels_[depth].hidden)
            return {Unchanged::hidden, levels_[depth].group != nullptr ? levels_[depth].group->call : 0};
    if (levels_[0].hidden)
        return {Unchanged::hidden, 0};
    if (paint.compose.op == CAIRO_OPERATOR_DEST)
        return {Unchanged::by_operator, 0};
    const PatternPtr source = source_of(paint.brush);
    if (source == nullptr)
        return {Unchanged::nothing, 0};
    return {why_without_effect(source.get(), paint.compose, image_target(cr_), pixel), 0};
}

// The same for a layer that is put on what lies below.
WhyUnchanged ScenePainter::why_unchanged(const Group& group, cairo_pattern_t* layer, int x, int y)
{
    const PixelBox pixel{x, y, x + 1, y + 1};
    WhyUnchanged why;
    if (is_shut_out(group.clips, pixel, why))
        return why;
    return {why_without_effect(layer, group.compose, image_target(cr_), pixel), 0};
}

void ScenePainter::tell_painted(const Paint& paint)
{
    WatchStep step;
    step.kind = WatchStep::Kind::painted;
    step.call = paint.call;
    step.target = image_target(cr_);
    const Shape shape = paint.left_out ? Shape{} : shape_of(paint);
    Box box;
    if (!levels_.back().hidden && !paint.left_out)
        step.area = bounds_of(shape, to_pixels(), box) ? meet(around(box, 2.0), clip_extents(cr_)) : clip_extents(cr_);
    step.why = [this, &paint](int x, int y) { return why_unchanged(paint, x, y); };
    step.clips = [this, &paint](const PixelBox& pixels)
    { return cairo_surface_reference(let_through_all(paint.clips, pixels).get()); };
    watch_->step(step);
}

// `group` is the innermost one.
void ScenePainter::tell_group_begins(const Group& group)
{
    const Level& level = levels_.back();
    WatchStep step;
    step.kind = WatchStep::Kind::group_begins;
    step.call = group.call;
    step.layer = !level.hidden && !level.through;
    step.backdrop = level.backdrop != nullptr;
    step.target = image_target(cr_);
    step.clips = [this](const PixelBox& pixels) { return cairo_surface_reference(let_through_all({}, pixels).get()); };
    watch_->step(step);
}

// `group` is open no more.
void ScenePainter::tell_group_ends(const Group& group, bool has_layer, const PatternPtr& layer)
{
    WatchStep step;
    step.kind = WatchStep::Kind::group_ends;
    step.call = group.end_call;
    step.group = group.call;
    step.layer = has_layer;
    step.target = image_target(cr_);
    if (step.layer)
        step.area = clip_extents(cr_);
    step.why = [this, &group, &layer](int x, int y) {
        return layer == nullptr ? WhyUnchanged{Unchanged::hidden, 0} : why_unchanged(group, layer.get(), x, y);
    };
    step.clips = [this, &group](const PixelBox& pixels)
    { return cairo_surface_reference(let_through_all(group.clips, pixels).get()); };
    watch_->step(step);
}

// `to_cell` maps pixels of the page to those of a cell that is repeated for ever. Gives the watch for the cell's
// content.
Watch ScenePainter::tell_cell_begins(const Group& group, cairo_surface_t* cell, const cairo_matrix_t& to_cell)
{
    const int wide = cairo_image_surface_get_width(cell);
    const int high = cairo_image_surface_get_height(cell);
    const PixelBox& watched = watch_->box;
    // As far as the filter looks: where a pixel of the page is one of the cell, at that one.
    constexpr double kNear = 1e-3;
    const double scale = scale_of(to_cell);
    const double margin = (scale > 1.0 + kNear ? scale + 1.0 : 1.0) / 2.0 - kNear;
    const PixelBox all =
        around(transformed({watched.x0 + 0.5, watched.y0 + 0.5, watched.x1 - 0.5, watched.y1 - 0.5}, to_cell), margin);
    const Point middle = transform(to_cell, {watched.x0 + 0.5, watched.y0 + 0.5});
    const PixelBox at = around({middle.x, middle.y, middle.x, middle.y}, 0.0);
    WatchStep step;
    step.kind = WatchStep::Kind::cell_begins;
    step.call = group.call;
    step.target = cell;
    for (const auto& [y0, y1] : wrapped(all.y0, all.y1, high))
        for (const auto& [x0, x1] : wrapped(all.x0, all.x1, wide))
            step.cells.push_back({x0, y0, x1, y1});
    step.cell_x = wrapped(at.x0, wide);
    step.cell_y = wrapped(at.y0, high);
    step.to_cell = to_cell;
    step.reach = margin;
    watch_->step(step);
    Watch inner = *watch_;
    inner.box = {0, 0, wide, high};
    if (watched.x1 - watched.x0 == 1 && watched.y1 - watched.y0 == 1)
        inner.box = {step.cell_x, step.cell_y, step.cell_x + 1, step.cell_y + 1};
    return inner;
}

void ScenePainter::tell_cell_ends(const Group& group, const PatternPtr& cell)
{
    WatchStep step;
    step.kind = WatchStep::Kind::cell_ends;
    step.call = group.end_call;
    step.group = group.call;
    step.target = image_target(cr_);
    step.area = clip_extents(cr_);
    Compose over;
    step.why = [this, &cell, &over](int x, int y)
    {
        const PixelBox pixel{x, y, x + 1, y + 1};
        WhyUnchanged why;
        if (!is_shut_out({}, pixel, why))
            why = {why_without_effect(cell.get(), over, image_target(cr_), pixel), 0};
        return why;
    };
    watch_->step(step);
}

}  // namespace orvlog::cairo_renderer
