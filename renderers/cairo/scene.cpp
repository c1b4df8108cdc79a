#include "renderers/cairo/scene.h"

#include <algorithm>
#include <cmath>

namespace orvlog::cairo_renderer
{

void Path::move_to(Point point)
{
    verbs.push_back(Verb::move);
    points.push_back(point);
}

void Path::line_to(Point point)
{
    verbs.push_back(Verb::line);
    points.push_back(point);
}

void Path::curve_to(Point control1, Point control2, Point end)
{
    verbs.push_back(Verb::curve);
    points.insert(points.end(), {control1, control2, end});
}

void Path::close()
{
    verbs.push_back(Verb::close);
}

void Path::append(const Path& other)
{
    verbs.insert(verbs.end(), other.verbs.begin(), other.verbs.end());
    points.insert(points.end(), other.points.begin(), other.points.end());
}

void Path::transform(const cairo_matrix_t& matrix)
{
    for (Point& point : points)
        point = cairo_renderer::transform(matrix, point);
}

bool is_finite(const cairo_matrix_t& matrix)
{
    return std::isfinite(matrix.xx) && std::isfinite(matrix.yx) && std::isfinite(matrix.xy) &&
           std::isfinite(matrix.yy) && std::isfinite(matrix.x0) && std::isfinite(matrix.y0);
}

bool invert(const cairo_matrix_t& matrix, cairo_matrix_t& inverse)
{
    if (!is_finite(matrix))
        return false;
    cairo_matrix_t turned = matrix;
    if (cairo_matrix_invert(&turned) != CAIRO_STATUS_SUCCESS || !is_finite(turned))
        return false;
    inverse = turned;
    return true;
}

double scale_of(const cairo_matrix_t& matrix)
{
    return std::max(std::hypot(matrix.xx, matrix.yx), std::hypot(matrix.xy, matrix.yy));
}

Path rectangle(const Box& box)
{
    Path path;
    path.move_to({box.x0, box.y0});
    path.line_to({box.x1, box.y0});
    path.line_to({box.x1, box.y1});
    path.line_to({box.x0, box.y1});
    path.close();
    return path;
}

}  // namespace orvlog::cairo_renderer
