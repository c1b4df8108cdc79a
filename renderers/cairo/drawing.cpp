#include "renderers/cairo/drawing.h"

#include "renderers/cairo/matrix.h"

#include <algorithm>
#include <cmath>
#include <optional>

namespace orvlog::cairo_renderer
{
namespace
{

constexpr size_t kMaxDepth = 200;
constexpr double kMaxCost = 1e8;

Repetition read_repetition(const Drawing::GroupCall& call)
{
    Repetition repetition;
    const auto step = [&](uint32_t flag, double interval)
    {
        const bool usable = std::isfinite(interval) && interval != 0.0;
        return (call.tiling_flags & flag) != 0 && usable ? interval : 0.0;
    };
    repetition.x_step = step(ORV_GROUP_TILE_X, call.x_interval);
    repetition.y_step = step(ORV_GROUP_TILE_Y, call.y_interval);
    repetition.reflect_x = (call.tiling_flags & ORV_GROUP_TILE_REFLECT_X) != 0;
    repetition.reflect_y = (call.tiling_flags & ORV_GROUP_TILE_REFLECT_Y) != 0;
    repetition.whole_pixels =
        (call.tiling_flags & (ORV_GROUP_TILE_PIXEL_SPACING | ORV_GROUP_TILE_FASTER_PIXEL_SPACING)) != 0;
    return repetition;
}

bool is_opaque(const Paint& paint)
{
    const auto* flat = std::get_if<FlatBrush>(&paint.brush);
    return flat != nullptr && flat->alpha >= 1.0 && paint.compose.op == CAIRO_OPERATOR_OVER &&
           paint.compose.mask_mode == MaskMode::none;
}

}  // namespace

Drawing::Drawing(Shared shared, cairo_t* cr, const cairo_matrix_t& to_pixels, const GFI_FontEngineTable* engine)
    : shared_(shared), cr_(cr), base_(to_pixels), engine_(engine)
{
    if (cr == nullptr || shared.keep_images)
        return;
    painter_ = std::make_unique<ScenePainter>(cr, to_pixels, shared.complaints);
    painter_->watch_by(shared.watch);
}

Drawing::~Drawing() = default;

const GFI_FontEngineTable* Drawing::engine() const
{
    return groups_.empty() ? engine_ : groups_.back()->engine;
}

const cairo_matrix_t& Drawing::to_pixels() const
{
    return groups_.empty() ? base_ : groups_.back()->to_pixels;
}

bool Drawing::left_out() const
{
    return !groups_.empty() && groups_.back()->left_out;
}

uint64_t Drawing::present_call() const
{
    return shared_.watch != nullptr ? shared_.watch->call() : 0;
}

bool Drawing::painting() const
{
    return painter_ != nullptr && (groups_.empty() || groups_.back()->immediate);
}

ShapeContext Drawing::shape_context() const
{
    return {engine(), to_pixels(), shared_.glyph_form, shared_.complaints};
}

BrushContext Drawing::brush_context(uint32_t object_type, const Window* window)
{
    const uint32_t known = GCM_OBJ_TEXT | GCM_OBJ_LINE | GCM_OBJ_GRAPHICS | GCM_OBJ_IMAGE;
    return {shared_.spaces,
            shared_.complaints,
            shared_.keep_images ? &kept_ : nullptr,
            object_type & known,
            window,
            painting() ? nullptr : &shared_.images};
}

void Drawing::emit(Paint paint)
{
    cost_ += paint.left_out ? 0.0 : 1.0;
    if (left_out())
        return;
    if (painting())
        return painter_->paint(paint);
    Nodes& nodes = groups_.empty() ? *root_ : *groups_.back()->group.content;
    nodes.push_back(Node{std::move(paint)});
}

void Drawing::emit(Group group)
{
    if (left_out())
        return;
    if (painting())
        return painter_->group(group);
    Nodes& nodes = groups_.empty() ? *root_ : *groups_.back()->group.content;
    nodes.push_back(Node{std::move(group)});
}

// False when nothing is to be painted.
bool Drawing::make_paint(const PaintCall& call, Shape shape, Paint& paint)
{
    if (left_out() || (!shape.everything && shape.pieces.empty()))
        return false;
    // Clips that ask for nothing can be read before the images that they may show little of.
    const bool is_seen_through_clips =
        painting() && !has_text(call.clip) && (is_large_image(call.operand1) || is_large_image(call.operand2));
    std::optional<Window> window;
    if (is_seen_through_clips)
    {
        paint.clips = read_clips(call.clip, shape_context());
        window = painter_->window(paint.clips);
    }
    const BrushContext context = brush_context(call.object_type, window ? &*window : nullptr);
    const bool painted = read_operator(call.op, call.operand2, context, paint.compose);
    if (!painted && shared_.watch == nullptr)
        return false;
    paint.call = present_call();
    paint.left_out = !painted;
    paint.shape = std::move(shape);
    paint.brush = read_brush(call.operand1, BrushUse::colour, context);
    if (paint.compose.op == CAIRO_OPERATOR_CLEAR)
        paint.brush = FlatBrush{};
    if (!is_seen_through_clips)
        paint.clips = read_clips(call.clip, shape_context());
    if (!painted)
        emit(std::move(paint));
    return painted;
}

void Drawing::paint(const PaintCall& call)
{
    Paint paint;
    if (make_paint(call, read_shape(call.path, shape_context(), nullptr), paint))
        emit(std::move(paint));
}

// The second object replaces the first one where they overlap, rather than showing it through.
void Drawing::emit_with_knockout(Paint first, Paint second)
{
    Group group;
    group.content = std::make_shared<Nodes>();
    group.content->push_back(Node{std::move(first)});
    group.content->push_back(Node{std::move(second)});
    group.retransform = identity();
    group.isolated = false;
    group.knockout = true;
    group.call = group.end_call = present_call();
    emit(std::move(group));
}

void Drawing::paint_and_stroke(const PaintAndStrokeCall& call)
{
    Point pen;
    const ShapeContext context = shape_context();
    Shape shape = read_shape(call.fill.path, context, &pen);
    const bool has_shape = call.fill.path != nullptr && call.fill.path->sp_HeaderPtr != nullptr;
    if (call.end_point != nullptr)
        *call.end_point = {pen.x, pen.y};
    Paint fill;
    Paint stroke;
    bool filled = (call.flags & ORV_PAINTFLAGS_FILL) != 0;
    bool stroked = (call.flags & ORV_PAINTFLAGS_STROKE) != 0 && has_shape && call.params != nullptr;
    if (stroked)
        stroked = make_paint(call.stroke, read_outline(*call.fill.path, shape, *call.params, call.transform, context),
                             stroke);
    if (filled)
        filled = make_paint(call.fill, std::move(shape), fill);
    const bool fill_second = (call.flags & ORV_PAINTFLAGS_FILL_SECOND) != 0;
    if (filled && stroked && fill_second)
        std::swap(fill, stroke);
    if (filled && stroked && (call.flags & ORV_PAINTFLAGS_KNOCKOUT) != 0 && !is_opaque(stroke))
        return emit_with_knockout(std::move(fill), std::move(stroke));
    if (filled)
        emit(std::move(fill));
    if (stroked)
        emit(std::move(stroke));
}

Group Drawing::make_group(const GroupCall& call)
{
    Group group;
    group.content = std::make_shared<Nodes>();
    group.retransform = call.retransform == nullptr ? identity() : matrix_of(*call.retransform);
    group.isolated = call.group_type != ORV_GROUP_NON_ISOLATED;
    group.knockout = call.knockout;
    group.call = group.end_call = present_call();
    group.repetition = read_repetition(call);
    if (call.group_type == ORV_GROUP_COMBINE_SEPARATION || call.group_type == ORV_GROUP_MAKE_SEPARATION)
        shared_.complaints.say_once("separation groups are painted as simple groups");
    if (!left_out())
    {
        read_operator(call.op, call.operand2, brush_context(GCM_OBJ_GRAPHICS), group.compose);
        group.clips = read_clips(call.clip, shape_context());
    }
    return group;
}

void Drawing::start_group(const GroupCall& call)
{
    auto open = std::make_unique<OpenGroup>();
    open->left_out = left_out() || groups_.size() >= kMaxDepth;
    if (open->left_out && !left_out())
        shared_.complaints.lose_once("groups nested more than 200 deep are left out");
    open->group = make_group(call);
    open->engine = call.engine != nullptr ? call.engine : engine();
    open->to_pixels = multiply(open->group.retransform, to_pixels());
    const Repetition& repetition = open->group.repetition;
    open->immediate = painting() && !open->left_out && repetition.x_step == 0.0 && repetition.y_step == 0.0;
    if (open->immediate)
        painter_->begin_group(open->group);
    groups_.push_back(std::move(open));
    depth_ = std::max(depth_, static_cast<uint32_t>(groups_.size()));
}

bool Drawing::finish_group()
{
    if (groups_.empty())
        return false;
    std::unique_ptr<OpenGroup> open = std::move(groups_.back());
    groups_.pop_back();
    open->group.end_call = present_call();
    if (open->immediate)
        painter_->end_group(open->group);
    else if (!open->left_out)
        emit(std::move(open->group));
    return true;
}

bool Drawing::paint_resource(uint32_t id, const GroupCall& call)
{
    const auto found = shared_.resources.find(id);
    if (found == shared_.resources.end() || found->second.content == nullptr)
    {
        shared_.complaints.say_once("resources that are not there are left out");
        return false;
    }
    const Resource& resource = found->second;
    depth_ = std::max(depth_, static_cast<uint32_t>(groups_.size()) + resource.depth + 1);
    cost_ += resource.cost;
    if (depth_ > kMaxDepth || cost_ > kMaxCost)
    {
        shared_.complaints.lose_once("resources nested too deep, or painted too often, are left out");
        return true;
    }
    Group group = make_group(call);
    group.content = resource.content;
    group.knockout = resource.knockout;
    group.has_box = resource.has_box;
    group.box = resource.box;
    emit(std::move(group));
    return true;
}

void Drawing::finish()
{
    while (finish_group())
    {
    }
    kept_.pull_all(shared_.spaces, shared_.complaints, shared_.images);
    if (cr_ == nullptr || painter_ != nullptr)
        return;
    paint_on(cr_);
}

void Drawing::paint_on(cairo_t* cr) const
{
    ScenePainter painter(cr, base_, shared_.complaints);
    painter.watch_by(shared_.watch);
    painter.paint_nodes(*root_);
}

void Drawing::discard()
{
    while (finish_group())
    {
    }
    kept_.release_all();
}

void Drawing::take_content(Resource& resource)
{
    resource.content = root_;
    resource.depth = depth_;
    resource.cost = cost_;
}

}  // namespace orvlog::cairo_renderer
