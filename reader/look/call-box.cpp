#include "reader/look/call-box.h"

#include "orvlog/interface/gop-image.h"
#include "reader/look/elliptical-arc.h"
#include "reader/tree/values.h"

#include <algorithm>
#include <cmath>

namespace orvlog::reader
{

namespace
{

// A point of a path, moved by the vectors of its segments.
GGO_Point moved(GGO_Point from, GGO_Vector by)
{
    return {from.gpf_X + by.gvf_X, from.gpf_Y + by.gvf_Y};
}

double on_cubic(double a, double b, double c, double d, double t)
{
    const double u = 1 - t;
    return u * u * u * a + 3 * u * u * t * b + 3 * u * t * t * c + t * t * t * d;
}

// Where one coordinate of a cubic curve turns, in (0, 1).
size_t turns(double a, double b, double c, double d, double found[2])
{
    const double p = d - 3 * c + 3 * b - a;
    const double q = 2 * (c - 2 * b + a);
    const double r = b - a;
    double roots[2] = {-1, -1};
    if (p == 0)
        roots[0] = q != 0 ? -r / q : -1;
    else if (q * q >= 4 * p * r)
    {
        const double root = std::sqrt(q * q - 4 * p * r);
        roots[0] = (-q + root) / (2 * p);
        roots[1] = (-q - root) / (2 * p);
    }
    size_t count = 0;
    for (const double t : roots)
        if (t > 0 && t < 1)
            found[count++] = t;
    return count;
}

class PathWalk
{
public:
    PathWalk(const GGO_Matrix& matrix, BoxAround& around) : matrix_(matrix), around_(around) {}

    void edge(GGO_Point start, const Element& edge)
    {
        at_ = start;
        around_.add(matrix_, at_.gpf_X, at_.gpf_Y);
        const bool up = read_bool(edge, "sc_YPositive") != 0;
        for (const Element& member : Children(edge))
            for (const Element& segment : Children(member))
                this->segment(segment, up);
    }

private:
    void segment(const Element& one, bool up)
    {
        if (one.name == "GGO_Vector")
            go({read_double(one, "gvf_X"), read_double(one, "gvf_Y")});
        else if (one.name == "GPA_BezierSegment")
            curve(read_vector(one, "bs_StartTangent"), read_vector(one, "bs_EndTangent"),
                  read_vector(one, "bs_EndPoint"));
        else if (one.name == "GPA_QuadBezierSegment")
        {
            const GGO_Vector a = read_vector(one, "qs_ControlPoint");
            const GGO_Vector end = read_vector(one, "qs_EndPoint");
            curve({a.gvf_X * 2 / 3, a.gvf_Y * 2 / 3}, {(2 * a.gvf_X + end.gvf_X) / 3, (2 * a.gvf_Y + end.gvf_Y) / 3},
                  end);
        }
        else if (one.name == "GPA_StaircaseSegment")
        {
            go({static_cast<double>(read_int(one, "ss_XOffset")), 0});
            const double height = read_uint(one, "ss_YOffset");
            go({0, up ? height : -height});
        }
        else if (one.name == "GPA_EllipticalSegment")
            arc(EllipticalArc(one));
    }

    void go(GGO_Vector by)
    {
        at_ = moved(at_, by);
        around_.add(matrix_, at_.gpf_X, at_.gpf_Y);
    }

    void curve(GGO_Vector first, GGO_Vector second, GGO_Vector end)
    {
        const GGO_Point p[4] = {ggo_transform_point(&matrix_, at_), ggo_transform_point(&matrix_, moved(at_, first)),
                                ggo_transform_point(&matrix_, moved(at_, second)),
                                ggo_transform_point(&matrix_, moved(at_, end))};
        double t[4];
        size_t count = turns(p[0].gpf_X, p[1].gpf_X, p[2].gpf_X, p[3].gpf_X, t);
        count += turns(p[0].gpf_Y, p[1].gpf_Y, p[2].gpf_Y, p[3].gpf_Y, t + count);
        for (size_t i = 0; i < count; ++i)
            around_.add(on_cubic(p[0].gpf_X, p[1].gpf_X, p[2].gpf_X, p[3].gpf_X, t[i]),
                        on_cubic(p[0].gpf_Y, p[1].gpf_Y, p[2].gpf_Y, p[3].gpf_Y, t[i]));
        go(end);
    }

    void arc(const EllipticalArc& arc)
    {
        constexpr int kSteps = 32;
        for (int i = 1; i < kSteps && !arc.is_line(); ++i)
        {
            const GGO_Point point = moved(at_, arc.at(static_cast<double>(i) / kSteps));
            around_.add(matrix_, point.gpf_X, point.gpf_Y);
        }
        go(arc.end());
    }

    const GGO_Matrix& matrix_;
    BoxAround& around_;
    GGO_Point at_{};
};

void add_rows(const Element& shape, const GGO_Matrix& matrix, BoxAround& around)
{
    int64_t y = read_int(shape, "ss_StartY");
    for (const Element& row : Children(shape))
    {
        if (row.name != "GSH_XLimits")
            continue;
        const double start = read_int(row, "xl_StartX");
        const double stop = read_int(row, "xl_StopX");
        const auto top = static_cast<double>(y++);
        if (start < stop)
            around.add_rectangle(matrix, {start, top, stop, top + 1});
    }
}

void add_rectangles(const Element& shape, const GGO_Matrix& matrix, BoxAround& around)
{
    for (const Element& one : Children(shape))
    {
        if (one.name == "GGO_BoxInt")
            around.add_rectangle(matrix, {static_cast<double>(read_int(one, "gbi_MinX")),
                                          static_cast<double>(read_int(one, "gbi_MinY")),
                                          static_cast<double>(read_int(one, "gbi_MaxX")),
                                          static_cast<double>(read_int(one, "gbi_MaxY"))});
    }
}

// The record of a shape's kind: GSH_FilledPathShape and so on.
const Element* shape_record(const Element& shape)
{
    const Element* holder = shape.member("sp_HeaderPtr");
    return holder != nullptr ? holder->first : nullptr;
}

// The pen that walks along the glyphs of strings.
class GlyphWalk
{
public:
    GlyphWalk(std::string_view font, std::string_view string) : font_(font), string_(string) {}

    // All glyphs below `call`.
    std::optional<GGO_BoxFloat> box_of(const Element& call)
    {
        walk(call);
        take_quick_box();
        return around_.box();
    }

private:
    void walk(const Element& element)
    {
        for (const Element& child : Children(element))
            if (child.name == "GFI_StringStartFn")
                start(child);
            else if (child.name == "GFI_GlyphIndexGetFn")
                index(child);
            else if (child.name == "GFI_GlyphGetFn" || child.name == "GFI_GlyphGetFixedFormatFn")
                glyph(child);
            else if (child.name.find('.') != std::string_view::npos || child.name == "GSH_ShapeList")
                walk(child);
    }

    // The box that the engine told for a glyph, where the glyph itself isn't there.
    void take_quick_box()
    {
        if (quick_box_)
            around_.add_rectangle(at_pen(advances_by_, {}), *quick_box_);
        quick_box_.reset();
    }

    void start(const Element& call)
    {
        take_quick_box();
        going_ = read_bool(call, "result") != 0 && call.value("orvlog_font_spec_id") == font_ &&
                 call.value("orvlog_string_desc_id") == string_;
        const GGO_Matrix to_pixel = read_matrix(call, "stringdesc_to_face_pixel");
        pen_ = {to_pixel.m[4], to_pixel.m[5]};
        advance_ = {};
        advances_by_ = read_matrix(call, "glyphdesc_to_face_pixel");
        matrix_ = advances_by_;
    }

    void index(const Element& call)
    {
        take_quick_box();
        going_ = going_ && read_bool(call, "glyph_returned") != 0;
        if (!going_)
            return;
        pen_ = moved(pen_, advance_);
        const GGO_Vector advance = read_vector(call, "advance_vector");
        advance_ = ggo_transform_vector(&advances_by_, advance);
        if (call.has("quick_bounding_box"))
            quick_box_ = read_box(call, "quick_bounding_box");
    }

    void glyph(const Element& call)
    {
        if (going_ && call.has("glyphdesc_to_face_pixel"))
            matrix_ = read_matrix(call, "glyphdesc_to_face_pixel");
        const Element* pointer = going_ ? call.child("GFI_GlyphDescPointer") : nullptr;
        const Element* holder = pointer != nullptr ? pointer->member("gdp_GlyphDesc") : nullptr;
        const Element* record = holder != nullptr ? holder->first : nullptr;
        const Element* head = record != nullptr ? record->child("GFI_GlyphDesc") : nullptr;
        if (head == nullptr)
            return;
        quick_box_.reset();
        const GGO_Matrix matrix = at_pen(matrix_, read_vector(*head, "gd_Offset"));
        const char* const widths[] = {"gdb_Width", "gdf_Width", "gdr_Width"};
        const char* const heights[] = {"gdb_Height", "gdf_Height", "gdr_Height"};
        for (size_t i = 0; i < std::size(widths); ++i)
        {
            if (record->has(widths[i]))
                around_.add_rectangle(matrix, {0, 0, static_cast<double>(read_uint(*record, widths[i])),
                                               static_cast<double>(read_uint(*record, heights[i]))});
        }
        if (const Element* path = holder->child("GPA_PathPointer"); path != nullptr)
            add_path(*path, matrix, around_);
    }

    // From a glyph's description to pixels, at the pen.
    GGO_Matrix at_pen(const GGO_Matrix& matrix, GGO_Vector offset) const
    {
        const GGO_Vector shift = ggo_transform_vector(&matrix, offset);
        const double* m = matrix.m;
        return {{m[0], m[1], m[2], m[3], pen_.gpf_X + shift.gvf_X, pen_.gpf_Y + shift.gvf_Y}};
    }

    BoxAround around_;
    std::optional<GGO_BoxFloat> quick_box_;

    std::string_view font_;
    std::string_view string_;
    bool going_ = false;
    GGO_Point pen_{};
    GGO_Vector advance_{};
    GGO_Matrix advances_by_{};
    GGO_Matrix matrix_{};
};

}  // namespace

void BoxAround::add(double x, double y)
{
    if (!std::isfinite(x) || !std::isfinite(y))
        return;
    if (!any_)
        box_ = {x, y, x, y};
    any_ = true;
    box_ = {std::min(box_.gbf_MinX, x), std::min(box_.gbf_MinY, y), std::max(box_.gbf_MaxX, x),
            std::max(box_.gbf_MaxY, y)};
}

void BoxAround::add(const GGO_Matrix& matrix, double x, double y)
{
    const GGO_Point point = ggo_transform_point(&matrix, {x, y});
    add(point.gpf_X, point.gpf_Y);
}

void BoxAround::add_rectangle(const GGO_Matrix& matrix, const GGO_BoxFloat& box)
{
    if (box.gbf_MinX > box.gbf_MaxX || box.gbf_MinY > box.gbf_MaxY)
        return;
    add(matrix, box.gbf_MinX, box.gbf_MinY);
    add(matrix, box.gbf_MaxX, box.gbf_MinY);
    add(matrix, box.gbf_MinX, box.gbf_MaxY);
    add(matrix, box.gbf_MaxX, box.gbf_MaxY);
}

std::optional<GGO_BoxFloat> BoxAround::box(double margin_x, double margin_y) const
{
    if (!any_)
        return std::nullopt;
    return GGO_BoxFloat{box_.gbf_MinX - margin_x, box_.gbf_MinY - margin_y, box_.gbf_MaxX + margin_x,
                        box_.gbf_MaxY + margin_y};
}

void add_path(const Element& path, const GGO_Matrix& to_pixels, BoxAround& around)
{
    const Element* record = path.child("GPA_Path");
    const Element* starts = record != nullptr ? record->member("pa_EdgeStart") : nullptr;
    const Element* edges = path.member("lpp_EdgePointer");
    const Element* start = starts != nullptr ? starts->first : nullptr;
    PathWalk walk(to_pixels, around);
    for (const Element* edge = edges != nullptr ? edges->first : nullptr; edge != nullptr && start != nullptr;
         edge = edge->next, start = start->next)
    {
        const Element* pointer = edge->member("ep_Pointer");
        if (pointer != nullptr && pointer->first != nullptr)
            walk.edge({read_double(*start, "gpf_X"), read_double(*start, "gpf_Y")}, *pointer->first);
    }
}

GGO_Vector stroke_margin(const Element& stroking_params, const GGO_Matrix& to_pixels)
{
    const double half = read_double(stroking_params, "psp_StrokeWidth") / 2;
    const double* m = to_pixels.m;
    const double x = half * std::hypot(m[0], m[2]);
    const double y = half * std::hypot(m[1], m[3]);
    // The thinnest line is a pixel wide.
    return {std::isfinite(x) && x > 0.5 ? x : 0.5, std::isfinite(y) && y > 0.5 ? y : 0.5};
}

bool is_text(const Element& shape)
{
    return shape.member("sp_U.glyph") != nullptr;
}

std::optional<GGO_BoxFloat> shape_box(const Element& shape, const GGO_Matrix& to_pixels)
{
    const Element* record = shape_record(shape);
    const Element* head = record != nullptr ? record->child("GSH_Shape") : nullptr;
    if (head == nullptr)
        return std::nullopt;
    const GGO_Matrix to_content = read_matrix(*head, "sh_Transform");
    const GGO_Matrix matrix = ggo_multiply(&to_content, &to_pixels);
    BoxAround around;
    if (record->name == "GSH_ImageRectShape")
        around.add_rectangle(matrix, {0, 0, static_cast<double>(read_uint(*record, "irs_ImageWidth")),
                                      static_cast<double>(read_uint(*record, "irs_ImageHeight"))});
    add_rectangles(*record, matrix, around);
    add_rows(*record, matrix, around);
    for (const char* member : {"sp_U.filled_path", "sp_U.stroked_path"})
    {
        const Element* holder = shape.member(member);
        const Element* path = holder != nullptr ? holder->child("GPA_PathPointer") : nullptr;
        if (path != nullptr)
            add_path(*path, matrix, around);
    }
    const Element* params = record->child("GPA_PathStrokingParams");
    const GGO_Vector margin = params != nullptr ? stroke_margin(*params, matrix) : GGO_Vector{};
    return around.box(margin.gvf_X, margin.gvf_Y);
}

std::optional<GGO_BoxFloat> image_box(const Element& image, const GGO_Matrix& to_pixels)
{
    const Element* record = image.child("GOP_OperandImage");
    if (record == nullptr)
        return std::nullopt;
    const GGO_Matrix to_content = read_matrix(*record, "im_Transform");
    const GGO_Matrix matrix = ggo_multiply(&to_content, &to_pixels);
    const bool unit = (read_flags(*record, "im_Flags") & GOP_OP_FLAGS_TRANSFORM_FROM_UNIT_SQUARE) != 0;
    BoxAround around;
    around.add_rectangle(matrix, {0, 0, unit ? 1 : static_cast<double>(read_uint(*record, "im_ImageWidthPixels")),
                                  unit ? 1 : static_cast<double>(read_uint(*record, "im_ImageHeightPixels"))});
    return around.box();
}

std::optional<GGO_BoxFloat> text_box(const Element& call, const Element& shape)
{
    const Element* member = shape.member("sp_U.glyph");
    if (member == nullptr || !member->has("orvlog_font_spec_id"))
        return std::nullopt;
    GlyphWalk walk(member->value("orvlog_font_spec_id"), member->value("orvlog_string_desc_id"));
    return walk.box_of(call);
}

}  // namespace orvlog::reader
