#include "renderers/cairo/scene-painter.h"

#include "renderers/cairo/bounds.h"

#include "renderers/cairo/stroker.h"

#include <algorithm>
#include <cmath>

namespace orvlog::cairo_renderer
{
namespace
{

constexpr double kFarthest = 4194304.0;  // pixels; Cairo's own numbers end at twice this

double held(double value)
{
    return std::clamp(value, -kFarthest, kFarthest);
}

constexpr double kFlatness = 0.05;         // pixels
constexpr double kThinnestWithEnds = 1.0;  // pixels; below, caps and joins cannot be told apart

// Operators that act where nothing is painted, too.
bool reaches_beyond(cairo_operator_t op)
{
    return op == CAIRO_OPERATOR_IN || op == CAIRO_OPERATOR_OUT || op == CAIRO_OPERATOR_DEST_IN ||
           op == CAIRO_OPERATOR_DEST_ATOP;
}

bool is_straight(const Path& path, size_t verb)
{
    return verb < path.verbs.size() && path.verbs[verb] == Verb::line;
}

// A piece that Cairo can take as its clip.
const FillPiece* only_fill(const Shape& shape)
{
    return shape.pieces.size() == 1 ? std::get_if<FillPiece>(&shape.pieces[0]) : nullptr;
}

const FlatBrush* flat_of(const Brush& brush)
{
    return std::get_if<FlatBrush>(&brush);
}

cairo_line_cap_t cairo_cap(Cap cap)
{
    if (cap == Cap::round)
        return CAIRO_LINE_CAP_ROUND;
    return cap == Cap::project ? CAIRO_LINE_CAP_SQUARE : CAIRO_LINE_CAP_BUTT;
}

cairo_line_join_t cairo_join(Join join)
{
    if (join == Join::round)
        return CAIRO_LINE_JOIN_ROUND;
    return join == Join::miter ? CAIRO_LINE_JOIN_MITER : CAIRO_LINE_JOIN_BEVEL;
}

bool waits_in_file(const Brush& brush)
{
    const auto* image = std::get_if<ImageBrush>(&brush);
    return image != nullptr && image->image->load;
}

bool waits_in_file(const Paint& paint)
{
    return waits_in_file(paint.brush) || waits_in_file(paint.compose.mask);
}

}  // namespace

ScenePainter::ScenePainter(cairo_t* cr, const cairo_matrix_t& to_pixels, Complaints& complaints)
    : cr_(cr), complaints_(complaints)
{
    Level base;
    base.to_pixels = to_pixels;
    base.hidden = !is_finite(to_pixels);
    levels_.push_back(base);
}

const cairo_matrix_t& ScenePainter::to_pixels() const
{
    return levels_.back().to_pixels;
}

void ScenePainter::paint_nodes(const Nodes& nodes)
{
    for (const Node& node : nodes)
        if (const auto* painted = std::get_if<Paint>(&node.what))
            paint(*painted);
        else
            group(std::get<Group>(node.what));
}

// Outlines.

bool ScenePainter::outline(const cairo_matrix_t& to_pixels, const Path& path)
{
    size_t next = 0;
    const auto point = [&](size_t offset)
    {
        const Point moved = transform(to_pixels, path.points[next + offset]);
        return Point{held(moved.x), held(moved.y)};
    };
    for (const Point& given : path.points)
    {
        const Point moved = transform(to_pixels, given);
        if (std::isfinite(moved.x) && std::isfinite(moved.y))
            continue;
        complaints_.say_once("paths with a coordinate that is no number are left out");
        return false;
    }
    for (const Verb verb : path.verbs)
    {
        if (verb == Verb::close)
            cairo_close_path(cr_);
        else if (verb == Verb::curve)
            cairo_curve_to(cr_, point(0).x, point(0).y, point(1).x, point(1).y, point(2).x, point(2).y);
        else if (verb == Verb::line)
            cairo_line_to(cr_, point(0).x, point(0).y);
        else
            cairo_move_to(cr_, point(0).x, point(0).y);
        next += verb == Verb::close ? 0U : verb == Verb::curve ? 3U : 1U;
    }
    return true;
}

// The ends of horizontal and vertical lines go to the middle of their pixel, so that a line one pixel wide
// fills one row or column.
bool ScenePainter::outline_adjusted(const cairo_matrix_t& to_pixels, const Path& path)
{
    Path moved = path;
    moved.transform(to_pixels);
    std::vector<bool> adjust(moved.points.size(), false);
    size_t next = 0;
    for (size_t i = 0; i < moved.verbs.size(); ++i)
    {
        if (is_straight(moved, i) && next > 0)
        {
            const Point from = moved.points[next - 1];
            const Point to = moved.points[next];
            if (std::fabs(from.x - to.x) < 0.5 || std::fabs(from.y - to.y) < 0.5)
                adjust[next - 1] = adjust[next] = true;
        }
        next += moved.verbs[i] == Verb::close ? 0U : moved.verbs[i] == Verb::curve ? 3U : 1U;
    }
    for (size_t i = 0; i < moved.points.size(); ++i)
        if (adjust[i])
            moved.points[i] = {std::floor(moved.points[i].x) + 0.5, std::floor(moved.points[i].y) + 0.5};
    return outline(identity(), moved);
}

// Clips.

bool ScenePainter::clip(const ClipList& clips, std::vector<const Clip*>& masks)
{
    for (const Clip& entry : clips)
    {
        if (entry.shape.everything && entry.inside)
            continue;
        if (entry.shape.everything || (entry.inside && entry.shape.pieces.empty()))
            return false;
        if (entry.shape.pieces.empty())
            continue;
        const FillPiece* fill = entry.inside ? only_fill(entry.shape) : nullptr;
        if (fill == nullptr)
        {
            masks.push_back(&entry);
            continue;
        }
        cairo_new_path(cr_);
        if (!outline(multiply(fill->to_content, to_pixels()), fill->path))
            return false;
        cairo_set_fill_rule(cr_, fill->rule);
        cairo_clip(cr_);
    }
    return true;
}

Window ScenePainter::window(const ClipList& clips) const
{
    Window window{to_pixels(), {}};
    Box& box = window.box;
    cairo_clip_extents(cr_, &box.x0, &box.y0, &box.x1, &box.y1);
    for (const Clip& entry : clips)
    {
        Box inside;
        if (!entry.inside || !bounds_of(entry.shape, to_pixels(), inside))
            continue;
        box.x0 = std::max(box.x0, inside.x0);
        box.y0 = std::max(box.y0, inside.y0);
        box.x1 = std::max(std::min(box.x1, inside.x1), box.x0);
        box.y1 = std::max(std::min(box.y1, inside.y1), box.y0);
    }
    return window;
}

void ScenePainter::cut(const Box& box)
{
    cairo_new_path(cr_);
    if (outline(to_pixels(), rectangle(box)))
        cairo_clip(cr_);
}

// Shapes.

void ScenePainter::draw(const Shape& shape)
{
    if (shape.everything)
        cairo_paint(cr_);
    for (const Piece& piece : shape.pieces)
        std::visit([&](const auto& any) { draw_piece(any); }, piece);
}

void ScenePainter::draw_piece(const FillPiece& piece)
{
    cairo_new_path(cr_);
    if (!outline(multiply(piece.to_content, to_pixels()), piece.path))
        return cairo_new_path(cr_);
    cairo_set_fill_rule(cr_, piece.rule);
    cairo_fill(cr_);
}

void ScenePainter::draw_piece(const BitmapPiece& piece)
{
    cairo_matrix_t inverse;
    if (!invert(multiply(piece.to_content, to_pixels()), inverse))
        return;
    PatternPtr pattern = own_pattern(cairo_pattern_create_for_surface(piece.surface.get()));
    cairo_pattern_set_matrix(pattern.get(), &inverse);
    cairo_mask(cr_, pattern.get());
}

void ScenePainter::draw_piece(const StrokePiece& piece)
{
    const cairo_matrix_t pen = multiply(piece.to_content, to_pixels());
    const double scale = scale_of(pen);
    const bool usable = std::isfinite(scale) && scale > 0.0;
    if (is_plain(piece.style) || !usable || piece.style.width * scale <= kThinnestWithEnds)
        return stroke_plain(piece, pen);
    const StrokeParts parts = take_apart(piece.path, piece.style, kFlatness / scale);
    StrokePiece body{parts.body, StrokeStyle{}, piece.to_content};
    body.style.width = piece.style.width;
    body.style.join = parts.body_join;
    body.style.miter_limit = piece.style.miter_limit;
    stroke_plain(body, pen);
    draw_piece(FillPiece{parts.corners, CAIRO_FILL_RULE_WINDING, piece.to_content});
}

// A line is at least one pixel wide, as it paints each pixel that it touches; one that asks to be adjusted goes
// through the middle of its pixels as well.
void ScenePainter::stroke_plain(const StrokePiece& piece, const cairo_matrix_t& pen)
{
    const StrokeStyle& style = piece.style;
    double x = style.width;
    double y = style.width;
    cairo_matrix_transform_distance(&pen, &x, &y);
    const bool thin = std::fabs(x) <= 1.0 && std::fabs(y) <= 1.0;
    const bool widened = thin || style.width == 0.0;
    cairo_matrix_t inverse;
    const bool flat = !invert(pen, inverse);
    double width = style.width;
    if (widened && !flat)
    {
        x = y = 1.0;
        cairo_matrix_transform_distance(&inverse, &x, &y);
        width = std::min(std::fabs(x), std::fabs(y));
    }
    cairo_new_path(cr_);
    const bool drawn = widened && style.adjust ? outline_adjusted(pen, piece.path) : outline(pen, piece.path);
    if (!drawn)
        return cairo_new_path(cr_);
    if (!flat)
        cairo_set_matrix(cr_, &pen);
    cairo_set_line_width(cr_, flat ? 1.0 : width);
    cairo_set_line_cap(cr_, cairo_cap(style.dashes.empty() ? style.start_cap : style.dash_cap));
    cairo_set_line_join(cr_, cairo_join(style.join));
    cairo_set_miter_limit(cr_, style.miter_limit);
    if (!flat)
        cairo_set_dash(cr_, style.dashes.data(), static_cast<int>(style.dashes.size()), style.dash_start);
    cairo_stroke(cr_);
    cairo_set_dash(cr_, nullptr, 0, 0.0);
    cairo_identity_matrix(cr_);
}

// Sources.

PatternPtr ScenePainter::source_of(const Brush& brush)
{
    if (const FlatBrush* flat = flat_of(brush))
        return own_pattern(cairo_pattern_create_rgba(flat->red, flat->green, flat->blue, flat->alpha));
    if (const auto* image = std::get_if<ImageBrush>(&brush))
        return image_source(*image->image);
    const auto* pattern = std::get_if<PatternBrush>(&brush);
    cairo_matrix_t inverse;
    if (pattern == nullptr || !invert(multiply(pattern->to_content, to_pixels()), inverse))
        return nullptr;
    cairo_pattern_set_matrix(pattern->pattern.get(), &inverse);
    return pattern->pattern;
}

Shape ScenePainter::shape_of(const Paint& paint) const
{
    const auto* image = std::get_if<ImageBrush>(&paint.brush);
    if (!paint.shape.everything || image == nullptr || image->image->tiled)
        return paint.shape;
    Shape shape;
    const Box box{0.0, 0.0, image->image->width, image->image->height};
    shape.pieces.emplace_back(FillPiece{rectangle(box), CAIRO_FILL_RULE_WINDING, image->image->pixels_to_content});
    return shape;
}

// Painting.

void ScenePainter::paint(const Paint& paint)
{
    const bool missed = waits_in_file(paint) && !touches_window(paint);
    if (!levels_.back().hidden && !paint.left_out && !missed)
        on_each_plane([&] { paint_plane(paint); });
    if (watch_ != nullptr)
        tell_painted(paint);
}

// Images aren't fetched for where nobody sees them.
bool ScenePainter::touches_window(const Paint& paint) const
{
    Box box;
    if (!bounds_of(shape_of(paint), to_pixels(), box))
        return true;
    const Box seen = window(paint.clips).box;
    return box.x0 < seen.x1 && box.x1 > seen.x0 && box.y0 < seen.y1 && box.y1 > seen.y0;
}

void ScenePainter::paint_plane(const Paint& paint)
{
    cairo_save(cr_);
    std::vector<const Clip*> masks;
    if (clip(paint.clips, masks))
    {
        PatternPtr source = source_of(paint.brush);
        if (source != nullptr && plane_ == Plane::shape)
            source = paint.compose.alpha_is_shape ? source : own_pattern(cairo_pattern_create_rgba(0.0, 0.0, 0.0, 1.0));
        if (source != nullptr)
            composite(source.get(), shape_of(paint), on_plane(paint.compose), masks);
    }
    cairo_restore(cr_);
}

void ScenePainter::composite(cairo_pattern_t* source, const Shape& shape, const Compose& compose,
                             const std::vector<const Clip*>& masks)
{
    // What is no more there than it covers lies on earlier elements as far as it doesn't.
    const bool replaces = levels_.back().knockout && plane_ != Plane::shape && !compose.alpha_is_shape;
    if (replaces || reaches_beyond(compose.op))
        return composite_replacing(source, shape, compose, masks);
    const FlatBrush* flat = flat_of(compose.mask);
    double alpha = 1.0;
    if (compose.mask_mode != MaskMode::none && flat != nullptr)
        alpha = compose.mask_mode == MaskMode::in ? flat->alpha : 1.0 - flat->alpha;
    const bool masked = compose.mask_mode != MaskMode::none && flat == nullptr;
    if (masks.empty() && !masked && composite_plain(source, shape, compose.op, alpha))
        return;
    PatternPtr covered = coverage(shape, masks, &compose);
    cairo_set_operator(cr_, compose.op);
    cairo_set_source(cr_, source);
    cairo_mask(cr_, covered.get());
}

bool ScenePainter::composite_plain(cairo_pattern_t* source, const Shape& shape, cairo_operator_t op, double alpha)
{
    cairo_set_operator(cr_, op);
    if (shape.everything)
    {
        cairo_set_source(cr_, source);
        cairo_paint_with_alpha(cr_, alpha);
        return true;
    }
    if (shape.pieces.empty())
        return true;
    double red = 0.0;
    double green = 0.0;
    double blue = 0.0;
    double opacity = 0.0;
    PatternPtr thinned;
    if (alpha < 1.0)
    {
        if (cairo_pattern_get_rgba(source, &red, &green, &blue, &opacity) != CAIRO_STATUS_SUCCESS)
            return false;
        thinned = own_pattern(cairo_pattern_create_rgba(red, green, blue, opacity * alpha));
        source = thinned.get();
    }
    const auto* stroke = std::get_if<StrokePiece>(&shape.pieces[0]);
    if (shape.pieces.size() != 1 || (stroke != nullptr && !is_plain(stroke->style)))
        return false;
    cairo_set_source(cr_, source);
    draw(shape);
    return true;
}

// Each object is combined with what lay below the group, or with what lies there now, on a layer of its
// own; the result replaces what is there, as far as the shape covers.
void ScenePainter::composite_replacing(cairo_pattern_t* source, const Shape& shape, const Compose& compose,
                                       const std::vector<const Clip*>& masks)
{
    const Level& level = levels_.back();
    const bool cuts = level.knockout && compose.mask_is_shape;
    PatternPtr below = plane_ == Plane::colour ? level.backdrop : nullptr;
    if (!level.knockout)
        below = own_pattern(cairo_pattern_create_for_surface(cairo_get_group_target(cr_)));
    cairo_push_group_with_content(cr_, CAIRO_CONTENT_COLOR_ALPHA);
    cairo_reset_clip(cr_);
    if (below != nullptr)
    {
        cairo_set_operator(cr_, CAIRO_OPERATOR_SOURCE);
        cairo_set_source(cr_, below.get());
        cairo_paint(cr_);
    }
    Shape all;
    all.everything = true;
    cairo_set_operator(cr_, compose.op);
    if (compose.mask_mode == MaskMode::none || cuts)
    {
        cairo_set_source(cr_, source);
        cairo_paint(cr_);
    }
    else
    {
        PatternPtr mask = coverage(all, {}, &compose);
        cairo_set_operator(cr_, compose.op);
        cairo_set_source(cr_, source);
        cairo_mask(cr_, mask.get());
    }
    PatternPtr layer = own_pattern(cairo_pop_group(cr_));
    PatternPtr covered = coverage(shape, masks, cuts ? &compose : nullptr);
    cairo_set_operator(cr_, CAIRO_OPERATOR_SOURCE);
    cairo_set_source(cr_, layer.get());
    cairo_mask(cr_, covered.get());
}

// The group is as large as the shape, so that masks are looked at there only.
PatternPtr ScenePainter::coverage(const Shape& shape, const std::vector<const Clip*>& masks, const Compose* mask)
{
    cairo_save(cr_);
    Box box;
    if (bounds_of(shape, to_pixels(), box))
    {
        cairo_new_path(cr_);
        cairo_rectangle(cr_, std::floor(box.x0), std::floor(box.y0), std::ceil(box.x1) - std::floor(box.x0),
                        std::ceil(box.y1) - std::floor(box.y0));
        cairo_clip(cr_);
    }
    cairo_push_group_with_content(cr_, CAIRO_CONTENT_ALPHA);
    cairo_reset_clip(cr_);
    cairo_set_operator(cr_, CAIRO_OPERATOR_OVER);
    cairo_set_source_rgba(cr_, 0.0, 0.0, 0.0, 1.0);
    draw(shape);
    for (const Clip* entry : masks)
        narrow(*entry);
    if (mask != nullptr && mask->mask_mode != MaskMode::none)
        apply_mask(*mask);
    PatternPtr covered = own_pattern(cairo_pop_group(cr_));
    cairo_restore(cr_);
    return covered;
}

void ScenePainter::narrow(const Clip& clip)
{
    cairo_set_source_rgba(cr_, 0.0, 0.0, 0.0, 1.0);
    if (!clip.inside)
    {
        cairo_set_operator(cr_, CAIRO_OPERATOR_DEST_OUT);
        return draw(clip.shape);
    }
    PatternPtr inside = coverage(clip.shape, {}, nullptr);
    cairo_set_source(cr_, inside.get());
    cairo_set_operator(cr_, CAIRO_OPERATOR_DEST_IN);
    cairo_paint(cr_);
}

void ScenePainter::apply_mask(const Compose& compose)
{
    PatternPtr mask = source_of(compose.mask);
    const bool in = compose.mask_mode == MaskMode::in;
    const auto* image = std::get_if<ImageBrush>(&compose.mask);
    if (mask != nullptr && image != nullptr && !image->image->tiled)
        cairo_pattern_set_extend(mask.get(), CAIRO_EXTEND_NONE);
    if (mask == nullptr && !in)
        return;
    if (mask == nullptr)
        mask = own_pattern(cairo_pattern_create_rgba(0.0, 0.0, 0.0, 0.0));
    cairo_set_operator(cr_, in ? CAIRO_OPERATOR_DEST_IN : CAIRO_OPERATOR_DEST_OUT);
    cairo_set_source(cr_, mask.get());
    cairo_paint(cr_);
}

}  // namespace orvlog::cairo_renderer
