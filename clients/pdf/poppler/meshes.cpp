// SPDX-License-Identifier: GPL-2.0-or-later

#include "clients/pdf/poppler/meshes.h"

#include "clients/pdf/poppler/groups.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>
#include <vector>

#include <GfxState.h>

namespace orvlog::pdf_client
{

namespace
{

constexpr double kPlainPiece = 10;    // pixels, where colours run evenly
constexpr double kFunctionPiece = 4;  // pixels, where a function makes the colours
constexpr size_t kGreatestSide = 32;  // pieces along the side of a patch or triangle
constexpr size_t kGreatestCount = 200000;

// A place in a mesh: where it is on the page, and its colour as poppler counts channels (patches too hold them
// so), or the one value that a function makes a colour of.
struct Vertex
{
    GGO_Point at{};
    std::array<double, gfxColorMaxComps> value{};
};

template <typename Shading> Colour colour_at(Canvas& canvas, const Shading& shading, const Vertex& vertex)
{
    GfxColor colour;
    clearGfxColor(&colour);
    if (shading.isParameterized())
    {
        const double low = shading.getParameterDomainMin();
        const double high = std::max(low, shading.getParameterDomainMax());
        shading.getParameterizedColor(std::clamp(vertex.value[0], low, high), &colour);
    }
    else
    {
        for (size_t i = 0; i < gfxColorMaxComps; ++i)
            colour.c[i] = static_cast<GfxColorComp>(std::lround(vertex.value[i]));
    }
    return colour_of(const_cast<Shading&>(shading).getColorSpace(), colour, canvas.spaces);
}

template <typename Shading> class TrianglePainter
{
public:
    TrianglePainter(Canvas& canvas, const Shading& shading, const PaintState& paint)
        : canvas_(canvas), shading_(shading), paint_(paint)
    {
    }

    void add(const Vertex& one, const Vertex& two, const Vertex& three)
    {
        const std::array<const Vertex*, 3> vertices{&one, &two, &three};
        Triangle triangle;
        for (size_t i = 0; i < 3; ++i)
        {
            triangle.corner[i] = vertices[i]->at;
            triangle.colour[i] = colour_at(canvas_, shading_, *vertices[i]);
        }
        canvas_.painter->gradient(triangle, paint_);
    }

private:
    Canvas& canvas_;
    const Shading& shading_;
    const PaintState& paint_;
};

double length(GGO_Point from, GGO_Point to)
{
    return std::hypot(to.gpf_X - from.gpf_X, to.gpf_Y - from.gpf_Y);
}

Vertex between(const Vertex& one, const Vertex& other, double share)
{
    Vertex result;
    result.at = {one.at.gpf_X + (other.at.gpf_X - one.at.gpf_X) * share,
                 one.at.gpf_Y + (other.at.gpf_Y - one.at.gpf_Y) * share};
    for (size_t i = 0; i < result.value.size(); ++i)
        result.value[i] = one.value[i] + (other.value[i] - one.value[i]) * share;
    return result;
}

size_t pieces_along(double pixels, double piece)
{
    const double count = std::ceil(pixels / piece);
    return std::isfinite(count) ? static_cast<size_t>(std::clamp(count, 1.0, static_cast<double>(kGreatestSide))) : 1;
}

// A triangle of a mesh in rows of smaller ones.
struct Face
{
    Face(GfxGouraudTriangleShading& shading, int index, const GGO_Matrix& to_content)
    {
        std::array<GGO_Point, 3> at{};
        if (shading.isParameterized())
        {
            shading.getTriangle(index, &at[0].gpf_X, &at[0].gpf_Y, &corner[0].value[0], &at[1].gpf_X, &at[1].gpf_Y,
                                &corner[1].value[0], &at[2].gpf_X, &at[2].gpf_Y, &corner[2].value[0]);
        }
        else
        {
            std::array<GfxColor, 3> colour{};
            shading.getTriangle(index, &at[0].gpf_X, &at[0].gpf_Y, &colour[0], &at[1].gpf_X, &at[1].gpf_Y, &colour[1],
                                &at[2].gpf_X, &at[2].gpf_Y, &colour[2]);
            for (size_t i = 0; i < 3; ++i)
            {
                std::transform(std::begin(colour[i].c), std::end(colour[i].c), corner[i].value.begin(),
                               [](GfxColorComp level) { return static_cast<double>(level); });
            }
        }
        for (size_t i = 0; i < 3; ++i)
            corner[i].at = transform(to_content, at[i]);
    }

    double longest_side() const
    {
        return std::max({length(corner[0].at, corner[1].at), length(corner[1].at, corner[2].at),
                         length(corner[2].at, corner[0].at)});
    }

    // The vertex so many steps of `count` from the first corner to the second, and to the third.
    Vertex vertex(size_t along, size_t across, size_t count) const
    {
        const double whole = static_cast<double>(count);
        const Vertex start = between(corner[0], corner[2], static_cast<double>(across) / whole);
        const Vertex end = between(corner[1], corner[2], static_cast<double>(across) / whole);
        return across == count ? start
                               : between(start, end, static_cast<double>(along) / static_cast<double>(count - across));
    }

    std::array<Vertex, 3> corner{};
};

template <typename Painter> void paint_face(Painter& painter, const Face& face, size_t count)
{
    for (size_t across = 0; across < count; ++across)
    {
        for (size_t along = 0; along + across < count; ++along)
        {
            const Vertex left = face.vertex(along, across + 1, count);
            const Vertex right = face.vertex(along + 1, across, count);
            painter.add(face.vertex(along, across, count), right, left);
            if (along + across + 1 < count)
                painter.add(right, face.vertex(along + 1, across + 1, count), left);
        }
    }
}

std::array<double, 4> bernstein(double t)
{
    const double s = 1 - t;
    return {s * s * s, 3 * s * s * t, 3 * s * t * t, t * t * t};
}

// A patch, and into how many pieces it is cut in its two directions.
struct Patch
{
    Patch(const GfxPatch& source, const GGO_Matrix& to_content) : colours(source)
    {
        for (size_t u = 0; u < 4; ++u)
            for (size_t v = 0; v < 4; ++v)
                points[u][v] = transform(to_content, GGO_Point{source.x[u][v], source.y[u][v]});
    }

    bool is_finite() const
    {
        return std::all_of(&points[0][0], &points[0][0] + 16,
                           [](GGO_Point at) { return std::isfinite(at.gpf_X) && std::isfinite(at.gpf_Y); });
    }

    // The longest way along lines of control points.
    double length_u() const
    {
        double longest = 0;
        for (size_t v = 0; v < 4; ++v)
        {
            longest = std::max(longest, length(points[0][v], points[1][v]) + length(points[1][v], points[2][v]) +
                                            length(points[2][v], points[3][v]));
        }
        return longest;
    }
    double length_v() const
    {
        double longest = 0;
        for (size_t u = 0; u < 4; ++u)
        {
            longest = std::max(longest, length(points[u][0], points[u][1]) + length(points[u][1], points[u][2]) +
                                            length(points[u][2], points[u][3]));
        }
        return longest;
    }

    Vertex vertex(double u, double v) const
    {
        const std::array<double, 4> along = bernstein(u);
        const std::array<double, 4> across = bernstein(v);
        Vertex result;
        for (size_t i = 0; i < 4; ++i)
        {
            for (size_t j = 0; j < 4; ++j)
            {
                result.at.gpf_X += along[i] * across[j] * points[i][j].gpf_X;
                result.at.gpf_Y += along[i] * across[j] * points[i][j].gpf_Y;
            }
        }
        for (size_t i = 0; i < result.value.size(); ++i)
        {
            const double low = colours.color[0][0].c[i] * (1 - u) + colours.color[1][0].c[i] * u;
            const double high = colours.color[0][1].c[i] * (1 - u) + colours.color[1][1].c[i] * u;
            result.value[i] = low * (1 - v) + high * v;
        }
        return result;
    }

    const GfxPatch& colours;
    GGO_Point points[4][4] = {};
};

// What lies further along v, then further along u, lies above.
template <typename Painter> void paint_patch(Painter& painter, const Patch& patch, size_t columns, size_t rows)
{
    std::vector<Vertex> below(columns + 1);
    std::vector<Vertex> above(columns + 1);
    const auto fill_row = [&](std::vector<Vertex>& row, size_t number)
    {
        for (size_t i = 0; i <= columns; ++i)
            row[i] = patch.vertex(static_cast<double>(i) / static_cast<double>(columns),
                                  static_cast<double>(number) / static_cast<double>(rows));
    };
    fill_row(below, 0);
    for (size_t row = 1; row <= rows; ++row)
    {
        fill_row(above, row);
        for (size_t i = 0; i < columns; ++i)
        {
            painter.add(below[i], below[i + 1], above[i + 1]);
            painter.add(below[i], above[i + 1], above[i]);
        }
        below.swap(above);
    }
}

// The size of pieces, in pixels, with which a mesh has no more of them than is sensible.
template <typename Count> double fitting_piece(double piece, Count count)
{
    constexpr double kLargest = 1000;
    while (piece < kLargest && count(piece) > kGreatestCount)
        piece *= 1.5;
    return piece;
}

}  // namespace

void paint_mesh(Canvas& canvas, GfxState* state, GfxGouraudTriangleShading& shading)
{
    const GGO_Matrix to_content = user_to_content(canvas, state);
    const double pixels = canvas.painter->pixels_per_unit();
    std::vector<double> sides;
    sides.reserve(static_cast<size_t>(std::max(shading.getNTriangles(), 0)));
    for (int i = 0; i < shading.getNTriangles(); ++i)
        sides.push_back(Face(shading, i, to_content).longest_side() * pixels);
    const auto side_count = [&](double side, double piece)
    { return shading.isParameterized() ? pieces_along(side, piece) : size_t{1}; };
    const auto count = [&](double piece)
    {
        size_t sum = 0;
        for (const double side : sides)
        {
            sum += side_count(side, piece) * side_count(side, piece);
        }
        return sum;
    };
    const double piece = fitting_piece(kFunctionPiece, count);
    paint_as_one(canvas, state, count(piece),
                 [&](const PaintState& paint)
                 {
                     TrianglePainter<GfxGouraudTriangleShading> painter(canvas, shading, paint);
                     for (size_t i = 0; i < sides.size(); ++i)
                         if (std::isfinite(sides[i]))
                             paint_face(painter, Face(shading, static_cast<int>(i), to_content),
                                        side_count(sides[i], piece));
                 });
}

void paint_mesh(Canvas& canvas, GfxState* state, GfxPatchMeshShading& shading)
{
    const GGO_Matrix to_content = user_to_content(canvas, state);
    const double pixels = canvas.painter->pixels_per_unit();
    std::vector<Patch> patches;
    for (int i = 0; i < shading.getNPatches(); ++i)
    {
        Patch patch(*shading.getPatch(i), to_content);
        if (patch.is_finite())
            patches.push_back(patch);
    }
    const auto count = [&](double piece)
    {
        size_t sum = 0;
        for (const Patch& patch : patches)
            sum += 2 * pieces_along(patch.length_u() * pixels, piece) * pieces_along(patch.length_v() * pixels, piece);
        return sum;
    };
    const double piece = fitting_piece(shading.isParameterized() ? kFunctionPiece : kPlainPiece, count);
    paint_as_one(canvas, state, count(piece),
                 [&](const PaintState& paint)
                 {
                     TrianglePainter<GfxPatchMeshShading> painter(canvas, shading, paint);
                     for (const Patch& patch : patches)
                         paint_patch(painter, patch, pieces_along(patch.length_u() * pixels, piece),
                                     pieces_along(patch.length_v() * pixels, piece));
                 });
}

}  // namespace orvlog::pdf_client
