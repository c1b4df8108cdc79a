#include "renderers/cairo/stroker.h"

#include <algorithm>
#include <cmath>

namespace orvlog::cairo_renderer
{
namespace
{

constexpr double kRoundReach = 0.5522847498307936;  // control points of a quarter circle
constexpr int kMaxCurvePieces = 200;
constexpr size_t kMaxDashes = 200000;

Point operator+(Point one, Point other)
{
    return {one.x + other.x, one.y + other.y};
}

Point operator-(Point one, Point other)
{
    return {one.x - other.x, one.y - other.y};
}

Point operator*(Point point, double factor)
{
    return {point.x * factor, point.y * factor};
}

double dot(Point one, Point other)
{
    return one.x * other.x + one.y * other.y;
}

double cross(Point one, Point other)
{
    return one.x * other.y - one.y * other.x;
}

double length(Point vector)
{
    return std::hypot(vector.x, vector.y);
}

Point direction(Point from, Point to)
{
    const double distance = length(to - from);
    return distance > 0.0 ? (to - from) * (1.0 / distance) : Point{1.0, 0.0};
}

Point left_of(Point vector)
{
    return {-vector.y, vector.x};
}

struct Vertex
{
    Point at;
    bool corner = true;  // an end of a segment, and no point within a curve
};

struct Line
{
    std::vector<Vertex> vertices;
    bool closed = false;
    Cap start_cap = Cap::butt;
    Cap end_cap = Cap::butt;
};

void add_curve(Line& line, Point p0, Point p1, Point p2, Point p3, double tolerance)
{
    const double bend = std::max(length(p0 - p1 * 2.0 + p2), length(p1 - p2 * 2.0 + p3));
    const double wanted = std::sqrt(0.75 * bend / std::max(tolerance, 1e-12));
    const int pieces = static_cast<int>(std::ceil(std::clamp(wanted, 1.0, static_cast<double>(kMaxCurvePieces))));
    for (int i = 1; i <= pieces; ++i)
    {
        const double t = static_cast<double>(i) / pieces;
        const double s = 1.0 - t;
        const Point at = p0 * (s * s * s) + p1 * (3.0 * s * s * t) + p2 * (3.0 * s * t * t) + p3 * (t * t * t);
        line.vertices.push_back({i == pieces ? p3 : at, i == pieces});
    }
}

void drop_repeated(Line& line)
{
    std::vector<Vertex> kept;
    for (const Vertex& vertex : line.vertices)
        if (kept.empty() || length(vertex.at - kept.back().at) > 0.0)
            kept.push_back(vertex);
        else
            kept.back().corner = kept.back().corner || vertex.corner;
    if (line.closed && kept.size() > 1 && !(length(kept.front().at - kept.back().at) > 0.0))
        kept.pop_back();
    line.vertices = std::move(kept);
}

std::vector<Line> flatten(const Path& path, double tolerance)
{
    std::vector<Line> lines;
    size_t next = 0;
    for (const Verb verb : path.verbs)
    {
        const Point* points = path.points.data() + next;
        if (verb == Verb::move || lines.empty() || (lines.back().closed && verb != Verb::close))
        {
            const Point start = verb == Verb::move || lines.empty() ? points[0] : lines.back().vertices.front().at;
            lines.push_back({{{start, true}}, false});
        }
        Line& line = lines.back();
        if (verb == Verb::line)
            line.vertices.push_back({points[0], true});
        else if (verb == Verb::curve)
            add_curve(line, line.vertices.back().at, points[0], points[1], points[2], tolerance);
        else if (verb == Verb::close)
            line.closed = true;
        next += verb == Verb::close ? 0U : verb == Verb::curve ? 3U : 1U;
    }
    for (Line& line : lines)
        drop_repeated(line);
    return lines;
}

// Walks along the dash lengths.
class DashWalk
{
public:
    explicit DashWalk(const StrokeStyle& style) : dashes_(style.dashes)
    {
        double sum = 0.0;
        for (const double dash : dashes_)
            sum += dash;
        double offset = std::fmod(style.dash_start, sum * 2.0);
        if (offset < 0.0)
            offset += sum * 2.0;
        left_ = dashes_[0];
        while (offset >= left_)
        {
            offset -= left_;
            next();
        }
        left_ -= offset;
    }

    bool on() const
    {
        return on_;
    }
    double left() const
    {
        return left_;
    }
    void advance(double distance)
    {
        left_ -= distance;
    }
    void next()
    {
        index_ = (index_ + 1) % dashes_.size();
        left_ = dashes_[index_];
        on_ = !on_;
    }

private:
    const std::vector<double>& dashes_;
    size_t index_ = 0;
    double left_ = 0.0;
    bool on_ = true;
};

// A closed line whose first and last dash meet has one dash there.
void join_ends(std::vector<Line>& dashes, const Line& line)
{
    if (!line.closed || dashes.size() < 2)
        return;
    Line& first = dashes.front();
    Line& last = dashes.back();
    if (length(first.vertices.front().at - line.vertices.front().at) > 0.0 ||
        length(last.vertices.back().at - line.vertices.front().at) > 0.0)
        return;
    last.vertices.insert(last.vertices.end(), first.vertices.begin() + 1, first.vertices.end());
    first = std::move(last);
    dashes.pop_back();
}

std::vector<Line> cut(const Line& line, const StrokeStyle& style)
{
    std::vector<Line> dashes;
    std::vector<Vertex> vertices = line.vertices;
    if (line.closed)
        vertices.push_back(vertices.front());
    DashWalk walk(style);
    const auto begin = [&](Point at) { dashes.push_back({{{at, true}}, false, style.dash_cap, style.dash_cap}); };
    if (walk.on())
        begin(vertices.front().at);
    for (size_t i = 1; i < vertices.size() && dashes.size() < kMaxDashes; ++i)
    {
        const Point from = vertices[i - 1].at;
        const Point along = direction(from, vertices[i].at);
        const double whole = length(vertices[i].at - from);
        double done = 0.0;
        while (walk.left() <= whole - done && dashes.size() < kMaxDashes)
        {
            done += walk.left();
            const Point at = from + along * done;
            if (walk.on())
                dashes.back().vertices.push_back({at, true});
            walk.next();
            if (walk.on())
                begin(at);
        }
        walk.advance(whole - done);
        if (walk.on())
            dashes.back().vertices.push_back(vertices[i]);
    }
    join_ends(dashes, line);
    if (!line.closed && !dashes.empty())
    {
        if (length(dashes.front().vertices.front().at - vertices.front().at) == 0.0)
            dashes.front().start_cap = style.start_cap;
        if (length(dashes.back().vertices.back().at - vertices.back().at) == 0.0)
            dashes.back().end_cap = style.end_cap;
    }
    for (Line& dash : dashes)
        drop_repeated(dash);
    return dashes;
}

class Builder
{
public:
    explicit Builder(const StrokeStyle& style) : style_(style), half_(style.width / 2.0)
    {
        const bool known = style.join == Join::miter || style.join == Join::round;
        parts_.body_join = known ? style.join : Join::bevel;
    }

    void add(const Line& line);
    StrokeParts take()
    {
        return std::move(parts_);
    }

private:
    void body(const Line& line);
    void cap(Cap kind, Point at, Point outwards, double room);
    void join(Point before, Point at, Point after);
    void miter(Point at, Point in, Point out, Point side_in, Point side_out);
    void polygon(std::vector<Point> points);

    const StrokeStyle& style_;
    double half_;
    StrokeParts parts_;
};

void Builder::body(const Line& line)
{
    const std::vector<Vertex>& vertices = line.vertices;
    const bool split = style_.join == Join::none;
    parts_.body.move_to(vertices.front().at);
    for (size_t i = 1; i < vertices.size(); ++i)
    {
        parts_.body.line_to(vertices[i].at);
        if (split && vertices[i].corner && i + 1 < vertices.size())
            parts_.body.move_to(vertices[i].at);
    }
    if (line.closed && !split)
        parts_.body.close();
    if (!line.closed || !split)
        return;
    if (vertices.back().corner)
        parts_.body.move_to(vertices.back().at);
    parts_.body.line_to(vertices.front().at);
}

void Builder::add(const Line& line)
{
    const std::vector<Vertex>& vertices = line.vertices;
    if (vertices.size() < 2)
    {
        cap(line.start_cap, vertices.front().at, {-1.0, 0.0}, 0.0);
        cap(line.end_cap, vertices.front().at, {1.0, 0.0}, 0.0);
        return;
    }
    body(line);
    const size_t count = vertices.size();
    const bool own_joins = style_.join == Join::miter_clipped || style_.join == Join::triangle;
    for (size_t i = 0; own_joins && i < count; ++i)
    {
        const bool inner = line.closed || (i > 0 && i + 1 < count);
        if (inner && vertices[i].corner)
            join(vertices[(i + count - 1) % count].at, vertices[i].at, vertices[(i + 1) % count].at);
    }
    if (line.closed)
        return;
    cap(line.start_cap, vertices[0].at, direction(vertices[1].at, vertices[0].at),
        length(vertices[1].at - vertices[0].at));
    cap(line.end_cap, vertices[count - 1].at, direction(vertices[count - 2].at, vertices[count - 1].at),
        length(vertices[count - 2].at - vertices[count - 1].at));
}

// All polygons turn the same way round, so that none cancels another where they overlap.
void Builder::polygon(std::vector<Point> points)
{
    double area = 0.0;
    for (size_t i = 0; i < points.size(); ++i)
        area += cross(points[i], points[(i + 1) % points.size()]);
    if (area < 0.0)
        std::reverse(points.begin(), points.end());
    parts_.corners.move_to(points.front());
    for (size_t i = 1; i < points.size(); ++i)
        parts_.corners.line_to(points[i]);
    parts_.corners.close();
}

// Each cap reaches back into the line by as much as there is room, so that no seam shows.
void Builder::cap(Cap kind, Point at, Point outwards, double room)
{
    if (kind == Cap::butt)
        return;
    const Point side = left_of(outwards) * half_;
    const Point back = outwards * -std::min(half_, room);
    const Point tip = outwards * half_;
    if (kind == Cap::triangle)
        return polygon({at + back + side, at + back - side, at - side, at + tip, at + side});
    if (kind == Cap::project)
        return polygon({at + back + side, at + back - side, at - side + tip, at + side + tip});
    Path& path = parts_.corners;
    path.move_to(at + back + side);
    path.line_to(at + back - side);
    path.line_to(at - side);
    path.curve_to(at - side + tip * kRoundReach, at + tip - side * kRoundReach, at + tip);
    path.curve_to(at + tip + side * kRoundReach, at + side + tip * kRoundReach, at + side);
    path.close();
}

void Builder::join(Point before, Point at, Point after)
{
    const Point in = direction(before, at);
    const Point out = direction(at, after);
    const double turn = cross(in, out);
    if (std::fabs(turn) < 1e-9 && dot(in, out) > 0.0)
        return;
    const double outer = turn > 0.0 ? -1.0 : 1.0;
    const Point side_in = left_of(in) * outer;
    const Point side_out = left_of(out) * outer;
    if (style_.join == Join::miter_clipped)
        return miter(at, in, out, side_in, side_out);
    const Point middle = side_in + side_out;
    const Point tip = length(middle) > 1e-9 ? middle * (half_ / length(middle)) : in * half_;
    polygon({at, at + side_in * half_, at + tip, at + side_out * half_});
}

// The tip is cut off square, across the bisector, at `miter_limit` half widths from the corner.
void Builder::miter(Point at, Point in, Point out, Point side_in, Point side_out)
{
    const Point middle = side_in + side_out;
    const Point axis = length(middle) > 1e-9 ? middle * (1.0 / length(middle)) : in;
    const double cosine = dot(side_in, axis);
    const double sine = dot(in, axis);
    if (!(sine > 1e-9))
        return;
    const double cut_at = cosine > 1e-9 ? std::min(style_.miter_limit, 1.0 / cosine) : style_.miter_limit;
    const double along = std::max(0.0, half_ * (cut_at - cosine) / sine);
    polygon({at, at + side_in * half_, at + side_in * half_ + in * along, at + side_out * half_ - out * along,
             at + side_out * half_});
}

}  // namespace

bool is_plain(const StrokeStyle& style)
{
    const bool known_caps = style.start_cap != Cap::triangle && style.start_cap == style.end_cap &&
                            (style.dashes.empty() || style.dash_cap == style.start_cap);
    return known_caps && (style.join == Join::miter || style.join == Join::round || style.join == Join::bevel);
}

StrokeParts take_apart(const Path& path, const StrokeStyle& style, double tolerance)
{
    Builder builder(style);
    for (Line& line : flatten(path, tolerance))
    {
        line.start_cap = style.start_cap;
        line.end_cap = style.end_cap;
        if (style.dashes.empty() || line.vertices.size() < 2)
        {
            builder.add(line);
            continue;
        }
        for (const Line& dash : cut(line, style))
            builder.add(dash);
    }
    return builder.take();
}

}  // namespace orvlog::cairo_renderer
