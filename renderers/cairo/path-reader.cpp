#include "renderers/cairo/path-reader.h"

#include <algorithm>
#include <cmath>
#include <numbers>

namespace orvlog::cairo_renderer
{
namespace
{

Point operator+(Point point, const GGO_Vector& vector)
{
    return {point.x + vector.gvf_X, point.y + vector.gvf_Y};
}

bool same_place(Point one, Point other)
{
    const double size = std::max({std::fabs(one.x), std::fabs(one.y), 1e-3});
    return std::fabs(one.x - other.x) <= 1e-9 * size && std::fabs(one.y - other.y) <= 1e-9 * size;
}

// The edges of one path, drawn one after the other.
class EdgeWalk
{
public:
    EdgeWalk(PathUse use, Complaints& complaints) : use_(use), complaints_(complaints) {}

    void edge(const GPA_Edge& edge, Point start);
    Path take()
    {
        return std::move(path_);
    }

private:
    void begin(Point start);
    void end(uint32_t status);
    void segments(const GPA_Edge& edge);
    void line(Point end);
    void curve(Point control1, Point control2, Point end);
    void quad(const GPA_QuadBezierSegment& segment);
    void staircase(const GPA_StaircaseEdge& edge, const GPA_StaircaseSegment& segment);
    void arc(const GPA_EllipticalSegment& segment);
    void draw_arc(Point center, double rx, double ry, double turn, double from, double sweep, Point end);
    void catch_up();

    PathUse use_;
    Complaints& complaints_;
    Path path_;
    Point start_;
    Point at_;
    bool in_subpath_ = false;
    bool hidden_ = false;      // the present edge is not stroked
    bool has_hidden_ = false;  // some edge of the subpath isn't
    bool behind_ = false;      // the path's current point isn't `at_`
};

void EdgeWalk::edge(const GPA_Edge& edge, Point start)
{
    hidden_ = use_ == PathUse::stroke && (edge.ed_EdgeFlag & GPA_SUPPRESS_STROKING_FLAG) != 0;
    begin(start);
    has_hidden_ = has_hidden_ || hidden_;
    segments(edge);
    end(edge.ed_EdgeFlag & 0x7FU);
}

void EdgeWalk::begin(Point start)
{
    if (in_subpath_)
    {
        if (!same_place(start, at_))
            line(start);
        return;
    }
    path_.move_to(start);
    start_ = start;
    at_ = start;
    in_subpath_ = true;
    has_hidden_ = false;
    behind_ = false;
}

void EdgeWalk::end(uint32_t status)
{
    if (status == GPA_SUBPATH_CONTINUE)
        return;
    if (status == GPA_SUBPATH_END_CLOSED && !has_hidden_)
        path_.close();
    else if (status == GPA_SUBPATH_END_CLOSED && !same_place(at_, start_))
        line(start_);
    in_subpath_ = false;
}

void EdgeWalk::catch_up()
{
    if (behind_)
        path_.move_to(at_);
    behind_ = false;
}

void EdgeWalk::line(Point end)
{
    if (!hidden_)
    {
        catch_up();
        path_.line_to(end);
    }
    behind_ = hidden_;
    at_ = end;
}

void EdgeWalk::curve(Point control1, Point control2, Point end)
{
    if (!hidden_)
    {
        catch_up();
        path_.curve_to(control1, control2, end);
    }
    behind_ = hidden_;
    at_ = end;
}

void EdgeWalk::quad(const GPA_QuadBezierSegment& segment)
{
    const Point control = at_ + segment.qs_ControlPoint;
    const Point end = at_ + segment.qs_EndPoint;
    curve({at_.x + (control.x - at_.x) * 2.0 / 3.0, at_.y + (control.y - at_.y) * 2.0 / 3.0},
          {end.x + (control.x - end.x) * 2.0 / 3.0, end.y + (control.y - end.y) * 2.0 / 3.0}, end);
}

void EdgeWalk::staircase(const GPA_StaircaseEdge& edge, const GPA_StaircaseSegment& segment)
{
    line({at_.x + segment.ss_XOffset, at_.y});
    line({at_.x, edge.sc_YPositive != 0 ? at_.y + segment.ss_YOffset : at_.y - segment.ss_YOffset});
}

// The centre is found on a unit circle, into which the ellipse is turned and squeezed.
void EdgeWalk::arc(const GPA_EllipticalSegment& segment)
{
    const Point end = at_ + segment.es_EndPoint;
    double rx = std::fabs(segment.es_XRadius);
    double ry = std::fabs(segment.es_YRadius);
    const double turn = segment.es_AngleToXAxis;
    if (same_place(end, at_))
        return;
    if (!(rx > 0.0) || !(ry > 0.0) || !std::isfinite(rx) || !std::isfinite(ry) || !std::isfinite(turn))
        return line(end);
    const bool forward = (segment.es_XRadius > 0.0) == (segment.es_YRadius > 0.0);
    const double half_x = (at_.x - end.x) / 2.0;
    const double half_y = (at_.y - end.y) / 2.0;
    double ux = (std::cos(turn) * half_x + std::sin(turn) * half_y) / rx;
    double uy = (std::cos(turn) * half_y - std::sin(turn) * half_x) / ry;
    const double distance = std::hypot(ux, uy);
    if (distance > 1.0)
    {
        rx *= distance;
        ry *= distance;
        ux /= distance;
        uy /= distance;
    }
    const double square = ux * ux + uy * uy;
    const double away = (forward ? -1.0 : 1.0) * std::sqrt(std::max(0.0, 1.0 / square - 1.0));
    const double cx = -away * uy;
    const double cy = away * ux;
    const double from = std::atan2(uy - cy, ux - cx);
    double sweep = std::atan2(-uy - cy, -ux - cx) - from;
    if (forward && sweep < 0.0)
        sweep += 2.0 * std::numbers::pi;
    if (!forward && sweep > 0.0)
        sweep -= 2.0 * std::numbers::pi;
    const Point middle{(at_.x + end.x) / 2.0, (at_.y + end.y) / 2.0};
    const Point center{middle.x + std::cos(turn) * cx * rx - std::sin(turn) * cy * ry,
                       middle.y + std::sin(turn) * cx * rx + std::cos(turn) * cy * ry};
    draw_arc(center, rx, ry, turn, from, sweep, end);
}

void EdgeWalk::draw_arc(Point center, double rx, double ry, double turn, double from, double sweep, Point end)
{
    const int pieces = std::max(1, static_cast<int>(std::ceil(std::fabs(sweep) / (std::numbers::pi / 4.0) - 1e-9)));
    const double step = sweep / pieces;
    const double reach = 4.0 / 3.0 * std::tan(step / 4.0);
    const auto place = [&](double x, double y)
    {
        return Point{center.x + std::cos(turn) * x * rx - std::sin(turn) * y * ry,
                     center.y + std::sin(turn) * x * rx + std::cos(turn) * y * ry};
    };
    for (int i = 0; i < pieces; ++i)
    {
        const double a = from + i * step;
        const double b = a + step;
        curve(place(std::cos(a) - reach * std::sin(a), std::sin(a) + reach * std::cos(a)),
              place(std::cos(b) + reach * std::sin(b), std::sin(b) - reach * std::cos(b)),
              i + 1 == pieces ? end : place(std::cos(b), std::sin(b)));
    }
}

void EdgeWalk::segments(const GPA_Edge& edge)
{
    const uint32_t count = edge.ed_SegmentCount;
    const void* record = &edge;
    switch (edge.ed_EdgeType)
    {
    case GPA_EDGE_STRAIGHT:
        for (uint32_t i = 0; i < count; ++i)
            line(at_ + static_cast<const GPA_StraightEdge*>(record)->se_Segment[i]);
        return;
    case GPA_EDGE_BEZIER:
        for (uint32_t i = 0; i < count; ++i)
        {
            const GPA_BezierSegment& segment = static_cast<const GPA_BezierEdge*>(record)->be_BezierSegment[i];
            curve(at_ + segment.bs_StartTangent, at_ + segment.bs_EndTangent, at_ + segment.bs_EndPoint);
        }
        return;
    case GPA_EDGE_QUAD_BEZIER:
        for (uint32_t i = 0; i < count; ++i)
            quad(static_cast<const GPA_QuadBezierEdge*>(record)->qb_QuadBezierSegment[i]);
        return;
    case GPA_EDGE_STAIRCASE:
        for (uint32_t i = 0; i < count; ++i)
            staircase(*static_cast<const GPA_StaircaseEdge*>(record),
                      static_cast<const GPA_StaircaseEdge*>(record)->sc_Field[i]);
        return;
    case GPA_EDGE_ELLIPTICAL:
        for (uint32_t i = 0; i < count; ++i)
            arc(static_cast<const GPA_EllipticalEdge*>(record)->ee_EllipticalSegment[i]);
        return;
    default:
        complaints_.say_once("edges of an unknown type are left out of their path");
        return;
    }
}

Cap read_cap(uint32_t cap, Complaints& complaints)
{
    switch (cap)
    {
    case GPA_CAP_BUTT:
        return Cap::butt;
    case GPA_CAP_ROUND:
        return Cap::round;
    case GPA_CAP_PROJECT:
        return Cap::project;
    case GPA_CAP_TRIANGLE:
        return Cap::triangle;
    default:
        complaints.say_once("unknown line caps are painted as butt caps");
        return Cap::butt;
    }
}

Join read_join(uint32_t join, Complaints& complaints)
{
    switch (join)
    {
    case GPA_JOIN_MITER:
        return Join::miter;
    case GPA_JOIN_ROUND:
        return Join::round;
    case GPA_JOIN_BEVEL:
        return Join::bevel;
    case GPA_JOIN_MITER_CLIPPED:
        return Join::miter_clipped;
    case GPA_JOIN_TRIANGLE:
        return Join::triangle;
    case GPA_JOIN_NONE:
        return Join::none;
    case GPA_JOIN_MITER_DUAL_CLIPPED:
        complaints.say_once("dual clipped miters are painted as clipped miters");
        return Join::miter_clipped;
    default:
        complaints.say_once("unknown line joins are painted as miters");
        return Join::miter;
    }
}

}  // namespace

Path read_path(const GPA_PathPointer* path, PathUse use, Complaints& complaints)
{
    if (path == nullptr || path->lpp_Path == nullptr)
        return {};
    EdgeWalk walk(use, complaints);
    const GPA_Path& record = *path->lpp_Path;
    for (uint32_t i = 0; i < record.pa_NumEdges; ++i)
    {
        const GPA_Edge* edge = path->lpp_EdgePointer[i].ep_Pointer;
        if (edge != nullptr)
            walk.edge(*edge, {record.pa_EdgeStart[i].gpf_X, record.pa_EdgeStart[i].gpf_Y});
    }
    return walk.take();
}

StrokeStyle read_stroke_style(const GPA_PathStrokingParams& params, Complaints& complaints)
{
    StrokeStyle style;
    style.start_cap = read_cap(GPA_PSP_START_CAP(params.psp_Flags), complaints);
    style.end_cap = read_cap(GPA_PSP_END_CAP(params.psp_Flags), complaints);
    style.join = read_join(GPA_PSP_JOIN(params.psp_Flags), complaints);
    style.adjust = GPA_PSP_ADJUST(params.psp_Flags) == GPA_ADJUST_PS;
    style.width = std::isfinite(params.psp_StrokeWidth) ? std::fabs(params.psp_StrokeWidth) : 0.0;
    style.miter_limit = params.psp_MiterLimit >= 1.0F ? params.psp_MiterLimit : 1.0;
    style.dash_start = std::isfinite(params.psp_DashStart) ? params.psp_DashStart : 0.0;
    double sum = 0.0;
    for (uint32_t i = 0; i < params.psp_DashCount; ++i)
    {
        const double length = params.psp_DashLength[i];
        style.dashes.push_back(std::isfinite(length) ? std::max(0.0, length) : 0.0);
        sum += style.dashes.back();
    }
    if (!(sum > 0.0))
        style.dashes.clear();
    style.dash_cap = style.dashes.empty() ? style.start_cap : read_cap(params.psp_DashCaps, complaints);
    return style;
}

cairo_fill_rule_t read_winding_rule(uint32_t rule)
{
    return rule == GPA_WINDING_ODD_EVEN ? CAIRO_FILL_RULE_EVEN_ODD : CAIRO_FILL_RULE_WINDING;
}

}  // namespace orvlog::cairo_renderer
