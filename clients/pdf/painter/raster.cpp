// SPDX-License-Identifier: GPL-2.0-or-later

#include "clients/pdf/painter/raster.h"

#include <algorithm>
#include <cmath>

namespace orvlog::pdf_client
{

namespace
{

constexpr int kCurveSteps = 16;

struct Crossing
{
    double x;
    int direction;
};

GGO_Point on_curve(GGO_Point from, const Segment& segment, double t)
{
    const double u = 1 - t;
    const double a = u * u * u;
    const double b = 3 * u * u * t;
    const double c = 3 * u * t * t;
    const double d = t * t * t;
    return {a * from.gpf_X + b * segment.control1.gpf_X + c * segment.control2.gpf_X + d * segment.end.gpf_X,
            a * from.gpf_Y + b * segment.control1.gpf_Y + c * segment.control2.gpf_Y + d * segment.end.gpf_Y};
}

class Scanner
{
public:
    Scanner(int32_t top, uint32_t height) : top_(top), rows_(height) {}

    void add(const Path& path)
    {
        for (const Subpath& subpath : path.subpaths)
        {
            GGO_Point at = subpath.start;
            for (const Segment& segment : subpath.segments)
            {
                const GGO_Point from = at;
                for (int i = 1; segment.curve && i < kCurveSteps; ++i)
                {
                    const GGO_Point next = on_curve(from, segment, static_cast<double>(i) / kCurveSteps);
                    add_line(at, next);
                    at = next;
                }
                add_line(at, segment.end);
                at = segment.end;
            }
            add_line(at, subpath.start);
        }
    }

    std::vector<Crossing>& row(uint32_t y)
    {
        return rows_[y];
    }

private:
    void add_line(GGO_Point from, GGO_Point to)
    {
        const int direction = from.gpf_Y < to.gpf_Y ? 1 : -1;
        const GGO_Point& low = direction > 0 ? from : to;
        const GGO_Point& high = direction > 0 ? to : from;
        const double first = std::max(std::ceil(low.gpf_Y - 0.5), static_cast<double>(top_));
        const double end =
            std::min(std::ceil(high.gpf_Y - 0.5), static_cast<double>(top_) + static_cast<double>(rows_.size()));
        for (double y = first; y < end; ++y)
        {
            const double share = (y + 0.5 - low.gpf_Y) / (high.gpf_Y - low.gpf_Y);
            rows_[static_cast<size_t>(y - top_)].push_back({low.gpf_X + share * (high.gpf_X - low.gpf_X), direction});
        }
    }

    int32_t top_;
    std::vector<std::vector<Crossing>> rows_;
};

void fill_span(Bitmap& bitmap, uint32_t y, double from, double to)
{
    const double first = std::max(std::ceil(from - 0.5) - bitmap.left, 0.0);
    const double end = std::min(std::ceil(to - 0.5) - bitmap.left, static_cast<double>(bitmap.width));
    for (double x = first; x < end; ++x)
    {
        const uint32_t column = static_cast<uint32_t>(x);
        bitmap.rows[y * bitmap.row_bytes() + column / 8] |= static_cast<uint8_t>(0x80U >> (column % 8));
    }
}

void fill_row(Bitmap& bitmap, uint32_t y, std::vector<Crossing>& crossings, Winding winding)
{
    std::sort(crossings.begin(), crossings.end(), [](const Crossing& a, const Crossing& b) { return a.x < b.x; });
    int count = 0;
    for (size_t i = 0; i + 1 < crossings.size(); ++i)
    {
        count += winding == Winding::non_zero ? crossings[i].direction : 1;
        const bool inside = winding == Winding::non_zero ? count != 0 : count % 2 != 0;
        if (inside)
            fill_span(bitmap, y, crossings[i].x, crossings[i + 1].x);
    }
}

}  // namespace

bool Bitmap::at(uint32_t x, uint32_t y) const
{
    return (rows[y * row_bytes() + x / 8] & (0x80U >> (x % 8))) != 0;
}

Bitmap rasterise(const Path& path, Winding winding, uint32_t greatest_side)
{
    Bitmap bitmap;
    const GGO_BoxFloat box = path.bounds();
    const double wide = std::ceil(box.gbf_MaxX) - std::floor(box.gbf_MinX);
    const double high = std::ceil(box.gbf_MaxY) - std::floor(box.gbf_MinY);
    const bool fits = wide > 0 && high > 0 && wide <= greatest_side && high <= greatest_side;
    if (path.empty() || !fits || std::abs(box.gbf_MinX) > 1e9 || std::abs(box.gbf_MinY) > 1e9)
        return bitmap;
    bitmap.left = static_cast<int32_t>(std::floor(box.gbf_MinX));
    bitmap.top = static_cast<int32_t>(std::floor(box.gbf_MinY));
    bitmap.width = static_cast<uint32_t>(wide);
    bitmap.height = static_cast<uint32_t>(high);
    bitmap.rows.resize(static_cast<size_t>(bitmap.row_bytes()) * bitmap.height);
    Scanner scanner(bitmap.top, bitmap.height);
    scanner.add(path);
    for (uint32_t y = 0; y < bitmap.height; ++y)
        fill_row(bitmap, y, scanner.row(y), winding);
    return bitmap;
}

std::vector<uint8_t> run_lengths(const Bitmap& bitmap)
{
    std::vector<uint8_t> runs;
    for (uint32_t y = 0; y < bitmap.height; ++y)
    {
        bool painting = false;
        uint32_t x = 0;
        while (x < bitmap.width)
        {
            uint32_t length = 0;
            while (x + length < bitmap.width && length < 255 && bitmap.at(x + length, y) == painting)
                ++length;
            runs.push_back(static_cast<uint8_t>(length));
            x += length;
            painting = !painting;
        }
    }
    return runs;
}

std::vector<uint8_t> row_edges(const Bitmap& bitmap)
{
    std::vector<uint8_t> bytes;
    const auto add = [&](size_t value)
    {
        bytes.push_back(static_cast<uint8_t>(value));
        bytes.push_back(static_cast<uint8_t>(value >> 8));
    };
    for (uint32_t y = 0; y < bitmap.height; ++y)
    {
        std::vector<uint32_t> edges;
        bool painting = false;
        for (uint32_t x = 0; x < bitmap.width; ++x)
        {
            if (bitmap.at(x, y) != painting)
            {
                edges.push_back(x);
                painting = !painting;
            }
        }
        if (painting)
            edges.push_back(bitmap.width);
        add(edges.size());
        std::for_each(edges.begin(), edges.end(), add);
    }
    return bytes;
}

}  // namespace orvlog::pdf_client
