// How a scene painter paints groups: each on a layer, put on what lies below when the group ends.

#include "renderers/cairo/layers.h"
#include "renderers/cairo/scene-painter.h"

#include <cmath>

namespace orvlog::cairo_renderer
{
namespace
{

bool is_image(cairo_surface_t* surface)
{
    return cairo_surface_get_type(surface) == CAIRO_SURFACE_TYPE_IMAGE;
}

bool is_blend(cairo_operator_t op)
{
    return op >= CAIRO_OPERATOR_MULTIPLY;
}

std::shared_ptr<cairo_t> plane_beside(cairo_surface_t* layer)
{
    const SurfacePtr plane = make_plane(layer, CAIRO_FORMAT_A8);
    return plane == nullptr ? nullptr : std::shared_ptr<cairo_t>(cairo_create(plane.get()), cairo_destroy);
}

PatternPtr pattern_of(const std::shared_ptr<cairo_t>& plane)
{
    return plane == nullptr ? nullptr : own_pattern(cairo_pattern_create_for_surface(cairo_get_target(plane.get())));
}

cairo_surface_t* surface_of(const PatternPtr& pattern)
{
    cairo_surface_t* surface = nullptr;
    cairo_pattern_get_surface(pattern.get(), &surface);
    return surface;
}

Shape whole_plane()
{
    Shape all;
    all.everything = true;
    return all;
}

}  // namespace

// Blend modes mix colours only: alpha is that of the source over what is there.
Compose ScenePainter::on_plane(const Compose& compose) const
{
    Compose result = compose;
    if (plane_ == Plane::shape)
        result.op = CAIRO_OPERATOR_OVER;
    if (plane_ == Plane::shape && !compose.mask_is_shape)
        result.mask_mode = MaskMode::none;
    if (plane_ == Plane::alpha && is_blend(compose.op))
        result.op = CAIRO_OPERATOR_OVER;
    return result;
}

// In a knockout group each element lies on what lay below the group, not on the elements before it.
void ScenePainter::begin_layer(const Group& group, Level& level)
{
    const Level& around = levels_.back();
    cairo_surface_t* below = cairo_get_group_target(cr_);
    const bool readable = is_image(below);
    if (!readable && !group.isolated)
        complaints_.say_once("groups that aren't isolated are painted as isolated on vector surfaces");
    level.knockout = group.knockout;
    if (readable && !group.isolated)
        level.backdrop = around.knockout ? around.backdrop : own_pattern(cairo_pattern_create_for_surface(below));
    const bool own_alpha = level.backdrop != nullptr &&
                           (around.knockout || around.alpha != nullptr || group.compose.op != CAIRO_OPERATOR_OVER);
    const bool own_shape = readable && (around.knockout || around.shape != nullptr);
    cairo_push_group_with_content(cr_, CAIRO_CONTENT_COLOR_ALPHA);
    cairo_reset_clip(cr_);
    cairo_surface_t* layer = cairo_get_group_target(cr_);
    level.alpha = own_alpha ? plane_beside(layer) : nullptr;
    level.shape = own_shape ? plane_beside(layer) : nullptr;
    if (level.backdrop == nullptr)
        return;
    cairo_set_operator(cr_, CAIRO_OPERATOR_SOURCE);
    cairo_set_source(cr_, level.backdrop.get());
    cairo_paint(cr_);
    cairo_set_operator(cr_, CAIRO_OPERATOR_OVER);
}

void ScenePainter::begin_group(const Group& group)
{
    const Level& around = levels_.back();
    Level level;
    level.hidden = around.hidden || group.compose.op == CAIRO_OPERATOR_DEST;
    on_each_plane(
        [&]
        {
            cairo_save(cr_);
            level.masks.clear();
            level.hidden = !clip(group.clips, level.masks) || level.hidden;
        });
    level.group = &group;
    level.to_pixels = multiply(group.retransform, to_pixels());
    level.hidden = level.hidden || !is_finite(level.to_pixels);
    level.through = !group.isolated && !group.knockout && !around.knockout && group.compose.op == CAIRO_OPERATOR_OVER &&
                    group.compose.mask_mode == MaskMode::none && level.masks.empty();
    if (level.hidden || level.through)
    {
        level.alpha = around.alpha;
        level.shape = around.shape;
    }
    else
        begin_layer(group, level);
    levels_.push_back(std::move(level));
    if (group.has_box && !levels_.back().hidden)
        on_each_plane([&] { cut(group.box); });
    if (watch_ != nullptr)
        tell_group_begins(group);
}

void ScenePainter::end_group(const Group& group)
{
    const Level level = std::move(levels_.back());
    levels_.pop_back();
    const bool has_layer = !level.hidden && !level.through;
    const PatternPtr layer = has_layer ? merge_layer(group, level) : nullptr;
    if (watch_ != nullptr)
        tell_group_ends(group, has_layer, layer);
    on_each_plane([&] { cairo_restore(cr_); });
}

// A group on a backdrop whose alpha nobody asks for replaces the backdrop as far as masks and clips let it; any
// other is freed of its backdrop first. Gives the layer.
PatternPtr ScenePainter::merge_layer(const Group& group, const Level& level)
{
    if (level.alpha != nullptr)
    {
        cairo_surface_t* layer = cairo_get_group_target(cr_);
        const SurfacePtr below = copy_of(level.backdrop.get(), layer);
        remove_backdrop(layer, cairo_get_target(level.alpha.get()), below.get());
    }
    PatternPtr layer = own_pattern(cairo_pop_group(cr_));
    const PatternPtr shape = pattern_of(level.shape);
    Level& around = levels_.back();
    if (around.knockout && shape != nullptr)
    {
        const PatternPtr element = masked(layer.get(), CAIRO_CONTENT_COLOR_ALPHA, group.compose, level.masks);
        const PatternPtr cover = masked(shape.get(), CAIRO_CONTENT_ALPHA,
                                        group.compose.mask_is_shape ? group.compose : Compose{}, level.masks);
        on_each_plane([&] { knock_out(element.get(), cover.get(), group.compose.op); });
        return layer;
    }
    const bool knockout = around.knockout;
    if (knockout)
        complaints_.say_once("groups inside knockout groups are painted over what lies there on vector surfaces");
    around.knockout = false;
    const bool on_backdrop = level.backdrop != nullptr && level.alpha == nullptr;
    on_each_plane(
        [&]
        {
            Compose compose = on_plane(group.compose);
            if (on_backdrop && plane_ == Plane::colour)
                compose.op = CAIRO_OPERATOR_SOURCE;
            composite(plane_ == Plane::shape ? shape.get() : layer.get(), whole_plane(), compose, level.masks);
        });
    around.knockout = knockout;
    return layer;
}

// What of `source` the clips and the mask let through, as a pattern.
PatternPtr ScenePainter::masked(cairo_pattern_t* source, cairo_content_t content, const Compose& compose,
                                const std::vector<const Clip*>& masks)
{
    cairo_push_group_with_content(cr_, content);
    PatternPtr covered;
    if (!masks.empty() || compose.mask_mode != MaskMode::none)
        covered = coverage(whole_plane(), masks, &compose);
    cairo_set_operator(cr_, CAIRO_OPERATOR_OVER);
    cairo_set_source(cr_, source);
    if (covered != nullptr)
        cairo_mask(cr_, covered.get());
    else
        cairo_paint(cr_);
    return own_pattern(cairo_pop_group(cr_));
}

// Replaces what the innermost group, a knockout group, has by the element on the group's backdrop. Both patterns
// have their clips in them already.
void ScenePainter::knock_out(cairo_pattern_t* element, cairo_pattern_t* shape, cairo_operator_t op)
{
    const auto put = [&](cairo_operator_t how, cairo_pattern_t* source)
    {
        cairo_set_operator(cr_, how);
        cairo_set_source(cr_, source);
        cairo_paint(cr_);
    };
    cairo_save(cr_);
    Box box;
    cairo_clip_extents(cr_, &box.x0, &box.y0, &box.x1, &box.y1);
    cairo_reset_clip(cr_);
    const PatternPtr& below = levels_.back().backdrop;
    if (plane_ == Plane::shape)
        put(CAIRO_OPERATOR_OVER, shape);
    else if (plane_ == Plane::alpha || (below == nullptr && !is_blend(op)))
    {
        put(CAIRO_OPERATOR_DEST_OUT, shape);
        put(CAIRO_OPERATOR_ADD, element);
    }
    else
    {
        cairo_rectangle(cr_, std::floor(box.x0), std::floor(box.y0), std::ceil(box.x1) - std::floor(box.x0),
                        std::ceil(box.y1) - std::floor(box.y0));
        cairo_clip(cr_);
        cairo_push_group_with_content(cr_, CAIRO_CONTENT_COLOR_ALPHA);
        const SurfacePtr backdrop = copy_of(below.get(), cairo_get_group_target(cr_));
        const SurfacePtr cover = copy_of(shape, cairo_get_group_target(cr_));
        if (below != nullptr)
            put(CAIRO_OPERATOR_SOURCE, below.get());
        if (op == CAIRO_OPERATOR_SOURCE)
            put(CAIRO_OPERATOR_DEST_OUT, shape);
        put(op == CAIRO_OPERATOR_SOURCE ? CAIRO_OPERATOR_ADD : op, element);
        const PatternPtr result = own_pattern(cairo_pop_group(cr_));
        replace_by(cairo_get_group_target(cr_), surface_of(result), cover.get(), backdrop.get());
    }
    cairo_restore(cr_);
}

void ScenePainter::group(const Group& group)
{
    if ((levels_.back().hidden && watch_ == nullptr) || group.content == nullptr)
        return;
    if (group.repetition.x_step != 0.0 || group.repetition.y_step != 0.0)
        return repeat(group);
    begin_group(group);
    paint_nodes(*group.content);
    end_group(group);
}

}  // namespace orvlog::cairo_renderer
