// One open drawing: reads the calls that are made on it, and paints or gathers them.

#pragma once

#include "orvlog/interface/orv-interface.h"
#include "renderers/cairo/brush-reader.h"
#include "renderers/cairo/cairo-renderer.h"
#include "renderers/cairo/colour.h"
#include "renderers/cairo/complaints.h"
#include "renderers/cairo/scene-painter.h"
#include "renderers/cairo/scene.h"
#include "renderers/cairo/shape-reader.h"

#include <map>
#include <memory>
#include <vector>

namespace orvlog::cairo_renderer
{

// A drawing that has been gathered and can be painted.
struct Resource
{
    std::shared_ptr<Nodes> content;  // null while its drawing is open
    bool knockout = false;
    bool has_box = false;
    Box box;
    uint32_t depth = 0;  // how deep groups nest in it
    double cost = 0.0;   // paints in it
};

using Resources = std::map<uint32_t, Resource>;

// What the drawings of a renderer share.
struct Shared
{
    Complaints& complaints;
    ColourSpaces& spaces;
    Resources& resources;
    ImageStore& images;
    GlyphForm glyph_form;
    bool keep_images;
    const Watch* watch;  // null: nobody watches
};

class Drawing
{
public:
    // Draws on `cr` (borrowed) as the calls come, or at the end when images are kept; without a `cr` it
    // gathers only. `to_pixels` maps the drawing's space to pixels.
    Drawing(Shared shared, cairo_t* cr, const cairo_matrix_t& to_pixels, const GFI_FontEngineTable* engine);
    ~Drawing();
    Drawing(const Drawing&) = delete;
    Drawing& operator=(const Drawing&) = delete;

    struct PaintCall
    {
        uint32_t object_type;
        const GOP_Operator* op;
        const GSH_ShapePointer* path;
        const GSH_ShapeList* clip;
        GOP_OperandPointer* operand1;
        GOP_OperandPointer* operand2;
    };
    struct PaintAndStrokeCall
    {
        PaintCall fill;
        PaintCall stroke;  // path and clip are those of `fill`
        const GPA_PathStrokingParams* params;
        const GGO_Matrix* transform;
        uint32_t flags;
        GGO_Point* end_point;
    };
    struct GroupCall
    {
        uint32_t group_type;
        bool knockout;
        const GFI_FontEngineTable* engine;
        const GGO_Matrix* retransform;
        const GOP_Operator* op;
        GOP_OperandPointer* operand2;
        const GSH_ShapeList* clip;
        uint32_t tiling_flags;
        double x_interval;
        double y_interval;
    };

    void paint(const PaintCall& call);
    void paint_and_stroke(const PaintAndStrokeCall& call);
    void start_group(const GroupCall& call);
    // False without an open group.
    bool finish_group();
    // False for a resource that is not there.
    bool paint_resource(uint32_t id, const GroupCall& call);

    // Ends all groups; pulls kept images and paints what was gathered for a `cr`.
    void finish();
    // Gives kept images back, unpulled.
    void discard();
    // Paints what was gathered without a `cr`, after finish().
    void paint_on(cairo_t* cr) const;
    // What was gathered without a `cr`, after finish().
    void take_content(Resource& resource);

private:
    struct OpenGroup
    {
        Group group;
        const GFI_FontEngineTable* engine = nullptr;
        cairo_matrix_t to_pixels{};
        bool immediate = false;
        bool left_out = false;
    };

    const GFI_FontEngineTable* engine() const;
    const cairo_matrix_t& to_pixels() const;
    bool left_out() const;
    uint64_t present_call() const;
    ShapeContext shape_context() const;
    BrushContext brush_context(uint32_t object_type, const Window* window = nullptr);
    bool make_paint(const PaintCall& call, Shape shape, Paint& paint);
    Group make_group(const GroupCall& call);
    bool painting() const;
    void emit(Paint paint);
    void emit(Group group);
    void emit_with_knockout(Paint first, Paint second);

    Shared shared_;
    cairo_t* cr_;
    cairo_matrix_t base_;
    const GFI_FontEngineTable* engine_;
    std::unique_ptr<ScenePainter> painter_;  // when calls are painted as they come
    std::shared_ptr<Nodes> root_ = std::make_shared<Nodes>();
    std::vector<std::unique_ptr<OpenGroup>> groups_;
    KeptImages kept_;
    uint32_t depth_ = 0;
    double cost_ = 0.0;
};

}  // namespace orvlog::cairo_renderer
