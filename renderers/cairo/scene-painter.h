// Paints a scene onto a Cairo context.

#pragma once

#include "renderers/cairo/complaints.h"
#include "renderers/cairo/image-part.h"
#include "renderers/cairo/scene.h"
#include "renderers/cairo/watch.h"

#include <cairo.h>

#include <memory>
#include <vector>

namespace orvlog::cairo_renderer
{

class ScenePainter
{
public:
    // `cr` is borrowed and must have the identity as its transform, which it has again after each call.
    // `to_pixels` maps the content space to the units of `cr`.
    ScenePainter(cairo_t* cr, const cairo_matrix_t& to_pixels, Complaints& complaints);

    // Tells `watch` (borrowed; null: nobody) of each step from now on.
    void watch_by(const Watch* watch);

    void paint(const Paint& paint);

    // A group with its content.
    void group(const Group& group);

    void paint_nodes(const Nodes& nodes);

    // A group whose content is painted between these two calls; `group` must stay as it is between them.
    // It must not be repeated.
    void begin_group(const Group& group);
    void end_group(const Group& group);

    // What can be painted on within these clips.
    Window window(const ClipList& clips) const;

    // From the content space of the innermost open group to pixels.
    const cairo_matrix_t& to_pixels() const;

private:
    // What a paint is painted on in turn. Beside the colours of a group that is painted on a backdrop, or stands in
    // a knockout group, lie planes with what the group itself has painted: its alpha, and its shape, which
    // is alpha without opacities and masks.
    enum class Plane : uint8_t
    {
        colour,
        alpha,
        shape
    };

    using ContextPtr = std::shared_ptr<cairo_t>;

    struct Level
    {
        cairo_matrix_t to_pixels{};
        const Group* group = nullptr;   // null for the drawing itself
        const Box* cell_box = nullptr;  // of repeated content, while a cell of it is painted
        bool hidden = false;            // nothing of it can be seen
        bool through = false;           // painted straight onto what lies below
        bool on_backdrop = false;       // begins with a copy of what lies below
        bool knockout = false;
        PatternPtr backdrop;             // of a group that isn't isolated
        ContextPtr alpha;                // null: the layer's own alpha is the group's
        ContextPtr shape;                // null: nobody asks for it
        std::vector<const Clip*> masks;  // clips that Cairo cannot hold itself
    };

    bool clip(const ClipList& clips, std::vector<const Clip*>& masks);
    bool outline(const cairo_matrix_t& to_pixels, const Path& path);
    bool outline_adjusted(const cairo_matrix_t& to_pixels, const Path& path);
    void draw(const Shape& shape);
    void draw_piece(const FillPiece& piece);
    void draw_piece(const StrokePiece& piece);
    void draw_piece(const BitmapPiece& piece);
    void stroke_plain(const StrokePiece& piece, const cairo_matrix_t& pen);

    PatternPtr source_of(const Brush& brush);
    PatternPtr image_source(const Image& image);
    PatternPtr tile_source(const Image& image);
    Shape shape_of(const Paint& paint) const;

    template <typename Draw> void on_each_plane(Draw&& draw);
    bool touches_window(const Paint& paint) const;
    void paint_plane(const Paint& paint);
    Compose on_plane(const Compose& compose) const;
    void composite(cairo_pattern_t* source, const Shape& shape, const Compose& compose,
                   const std::vector<const Clip*>& masks);
    bool composite_plain(cairo_pattern_t* source, const Shape& shape, cairo_operator_t op, double alpha);
    void composite_replacing(cairo_pattern_t* source, const Shape& shape, const Compose& compose,
                             const std::vector<const Clip*>& masks);
    PatternPtr coverage(const Shape& shape, const std::vector<const Clip*>& masks, const Compose* mask);
    void narrow(const Clip& clip);
    void apply_mask(const Compose& compose);

    void begin_layer(const Group& group, Level& level);
    PatternPtr merge_layer(const Group& group, const Level& level);
    PatternPtr masked(cairo_pattern_t* source, cairo_content_t content, const Compose& compose,
                      const std::vector<const Clip*>& masks);
    void knock_out(cairo_pattern_t* element, cairo_pattern_t* shape, cairo_operator_t op);
    void cut(const Box& box);
    void repeat(const Group& group);
    void repeat_one_by_one(const Group& group, const Box& cells);
    bool repeat_by_cell(const Group& group, const Box& content);
    cairo_matrix_t cell_matrix(const Group& group, double column, double row) const;
    void paint_cell(const Group& group, const cairo_matrix_t& to_pixels);

    SurfacePtr let_through(const ClipList& clips, const cairo_matrix_t& clips_to_pixels, const Box* box,
                           const cairo_matrix_t& box_to_pixels, const PixelBox& pixels) const;
    SurfacePtr let_through_group(size_t depth, const PixelBox& pixels) const;
    SurfacePtr let_through_all(const ClipList& clips, const PixelBox& pixels) const;
    bool is_shut_out(const ClipList& clips, const PixelBox& pixel, WhyUnchanged& why) const;
    bool covers(const Shape& shape, const PixelBox& pixel) const;
    Unchanged why_without_effect(cairo_pattern_t* source, const Compose& compose, cairo_surface_t* target,
                                 const PixelBox& pixel) const;
    WhyUnchanged why_unchanged(const Paint& paint, int x, int y);
    WhyUnchanged why_unchanged(const Group& group, cairo_pattern_t* layer, int x, int y);
    void tell_painted(const Paint& paint);
    void tell_group_begins(const Group& group);
    void tell_group_ends(const Group& group, bool has_layer, const PatternPtr& layer);
    Watch tell_cell_begins(const Group& group, cairo_surface_t* cell, const cairo_matrix_t& to_cell);
    void tell_cell_ends(const Group& group, const PatternPtr& cell);

    cairo_t* cr_;  // of the plane that is painted on
    Plane plane_ = Plane::colour;
    Complaints& complaints_;
    std::vector<Level> levels_;
    const Watch* watch_ = nullptr;
};

// Calls `draw` with each plane of the innermost group as what is painted on, the colours first.
template <typename Draw> void ScenePainter::on_each_plane(Draw&& draw)
{
    struct Restore
    {
        ~Restore()
        {
            painter.cr_ = cr;
            painter.plane_ = Plane::colour;
        }
        ScenePainter& painter;
        cairo_t* cr;
    };
    draw();
    const ContextPtr alpha = levels_.back().alpha;
    const ContextPtr shape = levels_.back().shape;
    const Restore restore{*this, cr_};
    for (const Plane plane : {Plane::alpha, Plane::shape})
    {
        plane_ = plane;
        cr_ = plane == Plane::alpha ? alpha.get() : shape.get();
        if (cr_ != nullptr)
            draw();
    }
}

}  // namespace orvlog::cairo_renderer
