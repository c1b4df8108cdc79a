#include "renderers/cairo/bounds.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <limits>

namespace orvlog::cairo_renderer
{
namespace
{

class Extent
{
public:
    void add(Point point)
    {
        box_.x0 = std::min(box_.x0, point.x);
        box_.y0 = std::min(box_.y0, point.y);
        box_.x1 = std::max(box_.x1, point.x);
        box_.y1 = std::max(box_.y1, point.y);
    }
    void add(const Box& box)
    {
        add(Point{box.x0, box.y0});
        add(Point{box.x1, box.y1});
    }
    bool take(Box& box) const
    {
        if (unbounded || !(box_.x0 <= box_.x1) || !(box_.y0 <= box_.y1))
            return false;
        box = box_;
        return std::isfinite(box.x1 - box.x0) && std::isfinite(box.y1 - box.y0);
    }

    bool unbounded = false;

private:
    static constexpr double kFar = std::numeric_limits<double>::infinity();
    Box box_{kFar, kFar, -kFar, -kFar};
};

void add_points(const Path& path, const cairo_matrix_t& matrix, double margin, Extent& extent)
{
    for (const Point& point : path.points)
    {
        extent.add(transform(matrix, {point.x - margin, point.y - margin}));
        extent.add(transform(matrix, {point.x + margin, point.y - margin}));
        extent.add(transform(matrix, {point.x - margin, point.y + margin}));
        extent.add(transform(matrix, {point.x + margin, point.y + margin}));
    }
}

void add_piece(const FillPiece& piece, const cairo_matrix_t& matrix, Extent& extent)
{
    add_points(piece.path, multiply(piece.to_content, matrix), 0.0, extent);
}

void add_piece(const StrokePiece& piece, const cairo_matrix_t& matrix, Extent& extent)
{
    const double reach = piece.style.join == Join::miter || piece.style.join == Join::miter_clipped
                             ? std::max(piece.style.miter_limit, 2.0)
                             : 2.0;
    add_points(piece.path, multiply(piece.to_content, matrix), piece.style.width * reach / 2.0, extent);
}

void add_piece(const BitmapPiece& piece, const cairo_matrix_t& matrix, Extent& extent)
{
    const Box box{0.0, 0.0, static_cast<double>(cairo_image_surface_get_width(piece.surface.get())),
                  static_cast<double>(cairo_image_surface_get_height(piece.surface.get()))};
    extent.add(transformed(box, multiply(piece.to_content, matrix)));
}

void add_nodes(const Nodes& nodes, const cairo_matrix_t& matrix, Extent& extent);

void add_node(const Paint& paint, const cairo_matrix_t& matrix, Extent& extent)
{
    if (paint.left_out)
        return;
    if (paint.shape.everything)
    {
        const auto* image = std::get_if<ImageBrush>(&paint.brush);
        if (image == nullptr || image->image->tiled)
            extent.unbounded = true;
        else
            extent.add(transformed({0.0, 0.0, image->image->width, image->image->height},
                                   multiply(image->image->pixels_to_content, matrix)));
    }
    for (const Piece& piece : paint.shape.pieces)
        std::visit([&](const auto& any) { add_piece(any, matrix, extent); }, piece);
}

void add_node(const Group& group, const cairo_matrix_t& matrix, Extent& extent)
{
    if (group.repetition.x_step != 0.0 || group.repetition.y_step != 0.0)
        extent.unbounded = true;
    else if (group.has_box)
        extent.add(transformed(group.box, multiply(group.retransform, matrix)));
    else if (group.content != nullptr)
        add_nodes(*group.content, multiply(group.retransform, matrix), extent);
}

void add_nodes(const Nodes& nodes, const cairo_matrix_t& matrix, Extent& extent)
{
    for (const Node& node : nodes)
        std::visit([&](const auto& any) { add_node(any, matrix, extent); }, node.what);
}

}  // namespace

Box transformed(const Box& box, const cairo_matrix_t& matrix)
{
    const std::array<Point, 4> corners{transform(matrix, {box.x0, box.y0}), transform(matrix, {box.x1, box.y0}),
                                       transform(matrix, {box.x0, box.y1}), transform(matrix, {box.x1, box.y1})};
    Box result{corners[0].x, corners[0].y, corners[0].x, corners[0].y};
    for (const Point& corner : corners)
    {
        result.x0 = std::min(result.x0, corner.x);
        result.y0 = std::min(result.y0, corner.y);
        result.x1 = std::max(result.x1, corner.x);
        result.y1 = std::max(result.y1, corner.y);
    }
    return result;
}

bool bounds_of(const Nodes& nodes, Box& box)
{
    Extent extent;
    add_nodes(nodes, identity(), extent);
    return extent.take(box);
}

bool bounds_of(const Shape& shape, const cairo_matrix_t& matrix, Box& box)
{
    constexpr double kPixel = 1.0;
    Extent extent;
    extent.unbounded = shape.everything;
    for (const Piece& piece : shape.pieces)
        std::visit([&](const auto& any) { add_piece(any, matrix, extent); }, piece);
    if (!extent.take(box))
        return false;
    box = {box.x0 - kPixel, box.y0 - kPixel, box.x1 + kPixel, box.y1 + kPixel};
    return true;
}

}  // namespace orvlog::cairo_renderer
