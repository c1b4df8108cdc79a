// SPDX-License-Identifier: GPL-2.0-or-later

#include "clients/pdf/poppler/paths.h"

#include <algorithm>
#include <cmath>

#include <GfxState.h>
#include <splash/SplashPath.h>

namespace orvlog::pdf_client
{

GGO_Matrix matrix_of(const double* m)
{
    return {{m[0], m[1], m[2], m[3], m[4], m[5]}};
}

Path path_of(const GfxPath& source)
{
    Path path;
    for (int i = 0; i < source.getNumSubpaths(); ++i)
    {
        const GfxSubpath& from = *source.getSubpath(i);
        const int count = from.getNumPoints();
        if (count == 0)
            continue;
        const auto point = [&](int n) { return GGO_Point{from.getX(n), from.getY(n)}; };
        Subpath subpath;
        subpath.start = point(0);
        int n = 1;
        while (n < count)
        {
            if (from.getCurve(n) && n + 2 < count)
            {
                subpath.segments.push_back({true, point(n), point(n + 1), point(n + 2)});
                n += 3;
            }
            else
            {
                subpath.segments.push_back({false, {}, {}, point(n)});
                ++n;
            }
        }
        subpath.closed = from.isClosed();
        path.subpaths.push_back(std::move(subpath));
    }
    return path;
}

Path path_of(SplashPath& source)
{
    Path path;
    const int count = source.getLength();
    double x = 0;
    double y = 0;
    unsigned char flags = 0;
    int i = 0;
    while (i < count)
    {
        source.getPoint(i, &x, &y, &flags);
        if ((flags & splashPathFirst) != 0 || path.subpaths.empty())
        {
            path.subpaths.push_back({{x, y}, {}, true});
            ++i;
            continue;
        }
        std::vector<Segment>& segments = path.subpaths.back().segments;
        if ((flags & splashPathCurve) != 0 && i + 2 < count)
        {
            Segment segment{true, {x, y}, {}, {}};
            source.getPoint(i + 1, &x, &y, &flags);
            segment.control2 = {x, y};
            source.getPoint(i + 2, &x, &y, &flags);
            segment.end = {x, y};
            segments.push_back(segment);
            i += 3;
        }
        else
        {
            segments.push_back({false, {}, {}, {x, y}});
            ++i;
        }
    }
    drop_closing_lines(path);
    return path;
}

void drop_closing_lines(Path& path)
{
    for (Subpath& subpath : path.subpaths)
    {
        if (!subpath.closed || subpath.segments.size() < 2 || subpath.segments.back().curve)
            continue;
        const GGO_Point end = subpath.segments.back().end;
        if (end.gpf_X == subpath.start.gpf_X && end.gpf_Y == subpath.start.gpf_Y)
            subpath.segments.pop_back();
    }
}

bool all_finite(const Path& path)
{
    const auto good = [](GGO_Point p) { return std::abs(p.gpf_X) < 1e12 && std::abs(p.gpf_Y) < 1e12; };
    for (const Subpath& subpath : path.subpaths)
    {
        if (!good(subpath.start))
            return false;
        for (const Segment& segment : subpath.segments)
            if (!good(segment.end) || (segment.curve && (!good(segment.control1) || !good(segment.control2))))
                return false;
    }
    return true;
}

StrokeStyle style_of(GfxState* state, double scale)
{
    StrokeStyle style;
    style.width = state->getLineWidth() * scale;
    style.cap = static_cast<uint8_t>(std::clamp(state->getLineCap(), 0, 2));
    style.join = static_cast<uint8_t>(std::clamp(state->getLineJoin(), 0, 2));
    style.adjust = state->getStrokeAdjust();
    style.miter_limit = state->getMiterLimit();
    double start = 0;
    style.dashes = state->getLineDash(&start);
    for (double& dash : style.dashes)
        dash = std::max(dash, 0.0) * scale;
    style.dash_start = start * scale;
    return style;
}

}  // namespace orvlog::pdf_client
