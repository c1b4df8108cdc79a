// SPDX-License-Identifier: GPL-2.0-or-later

#include "clients/pdf/content/graphics.h"

#include <algorithm>

namespace orvlog::pdf_client
{

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

}  // namespace orvlog::pdf_client
