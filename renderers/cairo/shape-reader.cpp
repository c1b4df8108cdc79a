#include "renderers/cairo/shape-reader.h"

#include "renderers/cairo/glyph-reader.h"
#include "renderers/cairo/matrix.h"
#include "renderers/cairo/path-reader.h"

#include <algorithm>
#include <iterator>

namespace orvlog::cairo_renderer
{
namespace
{

constexpr uint32_t kMaxClips = 100000;
constexpr uint32_t kMaxPartners = 100000;

template <typename Record> const Record& as(const GSH_Shape& head)
{
    const void* record = &head;
    return *static_cast<const Record*>(record);
}

void add_box(Path& path, double x0, double y0, double x1, double y1)
{
    if (x0 < x1 && y0 < y1)
        path.append(rectangle({x0, y0, x1, y1}));
}

Path rectangles_of(const GSH_MultiRectShape& shape)
{
    Path path;
    const GGO_BoxInt* boxes = &shape.mrs_Rect[0];
    for (uint32_t i = 0; i < shape.mrs_RectCount; ++i)
        add_box(path, boxes[i].gbi_MinX, boxes[i].gbi_MinY, boxes[i].gbi_MaxX, boxes[i].gbi_MaxY);
    return path;
}

Path rows_of(const GSH_ScanlineShape& shape)
{
    Path path;
    const GSH_XLimits* rows = &shape.ss_XLimits[0];
    for (uint32_t i = 0; i < shape.ss_Height; ++i)
    {
        const double y = static_cast<double>(shape.ss_StartY) + i;
        add_box(path, rows[i].xl_StartX, y, rows[i].xl_StopX, y + 1.0);
    }
    return path;
}

void add_fill(Shape& shape, Path path, cairo_fill_rule_t rule, const GSH_Shape& head)
{
    if (!path.verbs.empty())
        shape.pieces.emplace_back(FillPiece{std::move(path), rule, matrix_of(head.sh_Transform)});
}

void add_stroke(Shape& shape, const GPA_PathPointer* path, const GPA_PathStrokingParams& params, const GSH_Shape& head,
                Complaints& complaints)
{
    Path read = read_path(path, PathUse::stroke, complaints);
    if (!read.verbs.empty())
        shape.pieces.emplace_back(
            StrokePiece{std::move(read), read_stroke_style(params, complaints), matrix_of(head.sh_Transform)});
}

void add_text(Shape& shape, const GSH_ShapePointer& pointer, const ShapeContext& context, Point* pen)
{
    const cairo_matrix_t to_pixels = multiply(matrix_of(pointer.sp_HeaderPtr->sh_Transform), context.content_to_pixels);
    cairo_matrix_t from_pixels = identity();
    cairo_matrix_t to_shape = to_pixels;
    invert(to_pixels, to_shape);
    if (!invert(context.content_to_pixels, from_pixels))
        return context.complaints.say_once("texts on a plane without extent are left out");
    GlyphRun run = pull_glyphs(context.engine, pointer.sp_U.glyph.font_spec_ptr, pointer.sp_U.glyph.string_desc,
                               to_pixels, from_pixels, context.glyph_form, context.complaints);
    for (Piece& piece : run.pieces)
        shape.pieces.push_back(std::move(piece));
    if (pen != nullptr)
        *pen = transform(to_shape, run.pen);
}

// The outlines of glyphs, stroked by a pen whose space is that of `pen`.
void add_glyph_strokes(Shape& shape, const Shape& filled, const StrokeStyle& style, const cairo_matrix_t& pen,
                       Complaints& complaints)
{
    cairo_matrix_t to_pen;
    if (!invert(pen, to_pen))
        return complaints.say_once("texts stroked by a pen without extent are left out");
    for (const Piece& piece : filled.pieces)
    {
        const auto* fill = std::get_if<FillPiece>(&piece);
        if (fill == nullptr)
        {
            complaints.lose_once("glyphs that come as bitmaps are not stroked");
            continue;
        }
        Path path = fill->path;
        path.transform(multiply(fill->to_content, to_pen));
        shape.pieces.emplace_back(StrokePiece{std::move(path), style, pen});
    }
}

bool is_text(const GSH_Shape& head)
{
    return head.sh_ShapeType == GSH_SHAPE_GLYPHS || head.sh_ShapeType == GSH_SHAPE_STROKE_GLYPHS;
}

bool is_zero(const GGO_Matrix& matrix)
{
    const double* m = matrix.m;
    return m[0] == 0.0 && m[1] == 0.0 && m[2] == 0.0 && m[3] == 0.0;
}

Shape read_stroked_text(const GSH_ShapePointer& pointer, const ShapeContext& context, Point* pen)
{
    const auto& text = as<GSH_StrokedGlyphShape>(*pointer.sp_HeaderPtr);
    Shape filled;
    add_text(filled, pointer, context, pen);
    return read_outline(pointer, filled, text.sgs_StrokingParams, &text.sgs_StrokingTransform, context);
}

// The shape of a list, united with those of its partners.
Shape read_united(const GSH_ShapeList& list, const ShapeContext& context)
{
    Shape shape;
    uint32_t count = 0;
    for (const GSH_ShapeList* at = &list; at != nullptr; at = at->sl_Collection)
    {
        if (++count > kMaxPartners)
        {
            context.complaints.lose_once("clip collections of more than 100000 lists are cut short");
            break;
        }
        if (at->sl_Shape.sp_HeaderPtr == nullptr)
            continue;
        Shape part = read_shape(&at->sl_Shape, context, nullptr);
        std::move(part.pieces.begin(), part.pieces.end(), std::back_inserter(shape.pieces));
    }
    return shape;
}

}  // namespace

Shape read_shape(const GSH_ShapePointer* shape, const ShapeContext& context, Point* pen)
{
    Shape result;
    result.everything = shape == nullptr || shape->sp_HeaderPtr == nullptr;
    if (result.everything)
        return result;
    const GSH_Shape& head = *shape->sp_HeaderPtr;
    switch (head.sh_ShapeType)
    {
    case GSH_SHAPE_GLYPHS:
        add_text(result, *shape, context, pen);
        return result;
    case GSH_SHAPE_STROKE_GLYPHS:
        return read_stroked_text(*shape, context, pen);
    case GSH_SHAPE_FILL:
        add_fill(result, read_path(shape->sp_U.filled_path, PathUse::fill, context.complaints),
                 read_winding_rule(as<GSH_FilledPathShape>(head).fps_WindingRule), head);
        return result;
    case GSH_SHAPE_STROKE:
        add_stroke(result, shape->sp_U.stroked_path, as<GSH_StrokedPathShape>(head).sps_StrokingParams, head,
                   context.complaints);
        return result;
    case GSH_SHAPE_IMAGE_RECT:
    {
        const auto& image = as<GSH_ImageRectShape>(head);
        Path path;
        add_box(path, 0.0, 0.0, image.irs_ImageWidth, image.irs_ImageHeight);
        add_fill(result, std::move(path), CAIRO_FILL_RULE_WINDING, head);
        return result;
    }
    case GSH_SHAPE_MULTI_RECT:
        add_fill(result, rectangles_of(as<GSH_MultiRectShape>(head)), CAIRO_FILL_RULE_WINDING, head);
        return result;
    case GSH_SHAPE_SCANLINE:
        add_fill(result, rows_of(as<GSH_ScanlineShape>(head)), CAIRO_FILL_RULE_WINDING, head);
        return result;
    default:
        context.complaints.say_once("shapes of unknown kind are left out");
        return result;
    }
}

Shape read_outline(const GSH_ShapePointer& shape, const Shape& filled, const GPA_PathStrokingParams& params,
                   const GGO_Matrix* transform, const ShapeContext& context)
{
    Shape result;
    const GSH_Shape& head = *shape.sp_HeaderPtr;
    if (is_text(head))
    {
        const GGO_Matrix& pen = transform != nullptr && !is_zero(*transform) ? *transform : head.sh_Transform;
        add_glyph_strokes(result, filled, read_stroke_style(params, context.complaints), matrix_of(pen),
                          context.complaints);
        return result;
    }
    if (head.sh_ShapeType == GSH_SHAPE_FILL)
        add_stroke(result, shape.sp_U.filled_path, params, head, context.complaints);
    else if (head.sh_ShapeType == GSH_SHAPE_STROKE)
        add_stroke(result, shape.sp_U.stroked_path, params, head, context.complaints);
    else
        for (const Piece& piece : filled.pieces)
            if (const auto* fill = std::get_if<FillPiece>(&piece))
                result.pieces.emplace_back(
                    StrokePiece{fill->path, read_stroke_style(params, context.complaints), fill->to_content});
    return result;
}

bool has_text(const GSH_ShapeList* list)
{
    uint32_t count = 0;
    for (const GSH_ShapeList* at = list; at != nullptr; at = at->sl_Next)
        for (const GSH_ShapeList* partner = at; partner != nullptr; partner = partner->sl_Collection)
        {
            const GSH_Shape* head = partner->sl_Shape.sp_HeaderPtr;
            if ((head != nullptr && is_text(*head)) || ++count > kMaxClips)
                return true;
        }
    return false;
}

ClipList read_clips(const GSH_ShapeList* list, const ShapeContext& context)
{
    ClipList clips;
    for (const GSH_ShapeList* at = list; at != nullptr; at = at->sl_Next)
    {
        if (clips.size() == kMaxClips)
        {
            context.complaints.lose_once("clips of more than 100000 lists are cut short");
            break;
        }
        Clip clip;
        clip.inside = at->sl_ClipIn != 0;
        clip.shape = read_united(*at, context);
        clips.push_back(std::move(clip));
        if ((at->sl_Hints & GSH_SLH_IGNORE_REST_OF_LIST) != 0)
            break;
    }
    return clips;
}

}  // namespace orvlog::cairo_renderer
