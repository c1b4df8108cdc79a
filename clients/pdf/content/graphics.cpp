// SPDX-License-Identifier: GPL-2.0-or-later

#include "clients/pdf/content/graphics.h"

#include <algorithm>
#include <cmath>

namespace pdf_client
{

GGO_Matrix identity()
{
    return {{1, 0, 0, 1, 0, 0}};
}

GGO_Matrix multiply(const GGO_Matrix& first, const GGO_Matrix& then)
{
    const double* p = first.m;
    const double* r = then.m;
    return {{p[0] * r[0] + p[1] * r[2], p[0] * r[1] + p[1] * r[3], p[2] * r[0] + p[3] * r[2], p[2] * r[1] + p[3] * r[3],
             p[4] * r[0] + p[5] * r[2] + r[4], p[4] * r[1] + p[5] * r[3] + r[5]}};
}

GGO_Matrix scaling(double x, double y)
{
    return {{x, 0, 0, y, 0, 0}};
}

GGO_Matrix translation(double x, double y)
{
    return {{1, 0, 0, 1, x, y}};
}

GGO_Matrix inverse(const GGO_Matrix& matrix)
{
    const double d = determinant(matrix);
    if (d == 0 || !std::isfinite(d))
    {
        return identity();
    }
    const double* m = matrix.m;
    GGO_Matrix result = {{m[3] / d, -m[1] / d, -m[2] / d, m[0] / d, 0, 0}};
    result.m[4] = -(m[5] * result.m[2] + m[4] * result.m[0]);
    result.m[5] = -(m[5] * result.m[3] + m[4] * result.m[1]);
    return result;
}

double determinant(const GGO_Matrix& matrix)
{
    return matrix.m[0] * matrix.m[3] - matrix.m[2] * matrix.m[1];
}

GGO_Point transform(const GGO_Matrix& matrix, GGO_Point point)
{
    const double* m = matrix.m;
    return {point.gpf_X * m[0] + point.gpf_Y * m[2] + m[4], point.gpf_X * m[1] + point.gpf_Y * m[3] + m[5]};
}

GGO_Vector transform(const GGO_Matrix& matrix, GGO_Vector vector)
{
    const double* m = matrix.m;
    return {vector.gvf_X * m[0] + vector.gvf_Y * m[2], vector.gvf_X * m[1] + vector.gvf_Y * m[3]};
}

bool finite(const GGO_Matrix& matrix)
{
    return std::all_of(std::begin(matrix.m), std::end(matrix.m), [](double v) { return std::isfinite(v); });
}

bool keeps_circles(const GGO_Matrix& matrix)
{
    const double* m = matrix.m;
    const double size = std::abs(m[0]) + std::abs(m[1]) + std::abs(m[2]) + std::abs(m[3]);
    const double tolerance = 1e-9 * size;
    const bool turned = std::abs(m[0] - m[3]) <= tolerance && std::abs(m[1] + m[2]) <= tolerance;
    const bool mirrored = std::abs(m[0] + m[3]) <= tolerance && std::abs(m[1] - m[2]) <= tolerance;
    return turned || mirrored;
}

double mean_scale(const GGO_Matrix& matrix)
{
    return std::sqrt(std::abs(determinant(matrix)));
}

bool Path::empty() const
{
    return subpaths.empty();
}

GGO_BoxFloat Path::bounds() const
{
    GGO_BoxFloat box{1, 1, -1, -1};
    bool first = true;
    const auto add = [&](GGO_Point p)
    {
        if (first)
        {
            box = {p.gpf_X, p.gpf_Y, p.gpf_X, p.gpf_Y};
            first = false;
            return;
        }
        box.gbf_MinX = std::min(box.gbf_MinX, p.gpf_X);
        box.gbf_MinY = std::min(box.gbf_MinY, p.gpf_Y);
        box.gbf_MaxX = std::max(box.gbf_MaxX, p.gpf_X);
        box.gbf_MaxY = std::max(box.gbf_MaxY, p.gpf_Y);
    };
    for (const Subpath& subpath : subpaths)
    {
        add(subpath.start);
        for (const Segment& segment : subpath.segments)
        {
            if (segment.curve)
            {
                add(segment.control1);
                add(segment.control2);
            }
            add(segment.end);
        }
    }
    return box;
}

Path Path::transformed(const GGO_Matrix& matrix) const
{
    Path result = *this;
    for (Subpath& subpath : result.subpaths)
    {
        subpath.start = transform(matrix, subpath.start);
        for (Segment& segment : subpath.segments)
        {
            segment.control1 = transform(matrix, segment.control1);
            segment.control2 = transform(matrix, segment.control2);
            segment.end = transform(matrix, segment.end);
        }
    }
    return result;
}

void Path::append(const Path& other)
{
    subpaths.insert(subpaths.end(), other.subpaths.begin(), other.subpaths.end());
}

Path rectangle(const GGO_BoxFloat& box)
{
    const auto line_to = [](double x, double y) { return Segment{false, {}, {}, {x, y}}; };
    Subpath subpath;
    subpath.start = {box.gbf_MinX, box.gbf_MinY};
    subpath.segments = {line_to(box.gbf_MaxX, box.gbf_MinY), line_to(box.gbf_MaxX, box.gbf_MaxY),
                        line_to(box.gbf_MinX, box.gbf_MaxY)};
    subpath.closed = true;
    return Path{{subpath}};
}

size_t Image::row_bytes() const
{
    const uint64_t channels = index_table.empty() ? space.channels + (alpha_first ? 1U : 0U) : 1U;
    return static_cast<size_t>((static_cast<uint64_t>(width) * channels * bits + 7) / 8);
}

}  // namespace pdf_client
