// What a drawing call asks for, in records of the renderer's own: nothing here points at a client's memory,
// so a paint can be drawn at once, at the end of its drawing, or each time its resource is painted.

#pragma once

#include <cairo.h>

#include <cstdint>
#include <functional>
#include <memory>
#include <utility>
#include <variant>
#include <vector>

namespace orvlog::cairo_renderer
{

using SurfacePtr = std::shared_ptr<cairo_surface_t>;
using PatternPtr = std::shared_ptr<cairo_pattern_t>;

// Both take over the caller's reference.
inline SurfacePtr own_surface(cairo_surface_t* surface)
{
    return SurfacePtr(surface, cairo_surface_destroy);
}

inline PatternPtr own_pattern(cairo_pattern_t* pattern)
{
    return PatternPtr(pattern, cairo_pattern_destroy);
}

struct Point
{
    double x = 0.0;
    double y = 0.0;
};

enum class Verb : uint8_t
{
    move,   // one point
    line,   // one point
    curve,  // three points
    close   // none
};

struct Path
{
    std::vector<Verb> verbs;
    std::vector<Point> points;

    void move_to(Point point);
    void line_to(Point point);
    void curve_to(Point control1, Point control2, Point end);
    void close();
    void append(const Path& other);
    void transform(const cairo_matrix_t& matrix);
};

enum class Cap : uint8_t
{
    butt,
    round,
    project,
    triangle
};

enum class Join : uint8_t
{
    miter,
    round,
    bevel,
    miter_clipped,
    triangle,
    none
};

struct StrokeStyle
{
    Cap start_cap = Cap::butt;
    Cap end_cap = Cap::butt;
    Cap dash_cap = Cap::butt;
    Join join = Join::miter;
    bool adjust = false;
    double width = 0.0;
    double miter_limit = 10.0;
    double dash_start = 0.0;
    std::vector<double> dashes;  // no negative length, and a sum above 0, or empty
};

// In all pieces `to_content` maps the piece's own space to the content space.

struct FillPiece
{
    Path path;
    cairo_fill_rule_t rule = CAIRO_FILL_RULE_WINDING;
    cairo_matrix_t to_content{};
};

// The width of the pen is measured in the piece's space.
struct StrokePiece
{
    Path path;
    StrokeStyle style;
    cairo_matrix_t to_content{};
};

struct BitmapPiece
{
    SurfacePtr surface;  // CAIRO_FORMAT_A8
    cairo_matrix_t to_content{};
};

using Piece = std::variant<FillPiece, StrokePiece, BitmapPiece>;

// The union of its pieces, or the whole plane.
struct Shape
{
    bool everything = false;
    std::vector<Piece> pieces;
};

struct Clip
{
    bool inside = true;
    Shape shape;
};

using ClipList = std::vector<Clip>;

struct FlatBrush
{
    double red = 0.0;
    double green = 0.0;
    double blue = 0.0;
    double alpha = 1.0;
};

struct PatternBrush
{
    PatternPtr pattern;
    cairo_matrix_t to_content{};
};

struct Tiles
{
    double x_step = 0.0;  // image pixels, above 0
    double y_step = 0.0;
    bool x_flip = false;
    bool y_flip = false;
};

// An image, whose pixels may still be with the client. Pixel space has its origin at the outer corner of
// the first pixel.
struct Image
{
    SurfacePtr surface;  // ARGB32, of a mask A8; null: not pulled yet, or not to be had
    cairo_matrix_t pixels_to_content{};
    double width = 0.0;  // of the image's space
    double height = 0.0;
    double left = 0.0;  // where the surface begins, which may hold a part only
    double top = 0.0;
    double coarse = 1.0;               // pixels of the image, each way, that are one of the surface
    std::function<SurfacePtr()> load;  // in place of a surface that isn't in memory; else empty
    std::shared_ptr<void> kept;        // the room that its pixels take while they wait
    bool smooth = false;
    bool tiled = false;
    Tiles tiles;
};

struct ImageBrush
{
    std::shared_ptr<Image> image;
};

// std::monostate paints nothing.
using Brush = std::variant<std::monostate, FlatBrush, PatternBrush, ImageBrush>;

enum class MaskMode : uint8_t
{
    none,
    in,
    out
};

struct Compose
{
    cairo_operator_t op = CAIRO_OPERATOR_OVER;
    MaskMode mask_mode = MaskMode::none;
    Brush mask;  // only alpha counts
    // What a knockout group's element covers: the mask cuts it, as stencils do, or alpha of all kinds does.
    bool mask_is_shape = false;
    bool alpha_is_shape = false;
};

struct Paint
{
    Shape shape;
    Brush brush;
    Compose compose;
    ClipList clips;
    uint64_t call = 0;      // for a watch: the call that it comes from
    bool left_out = false;  // only a watch is told of it
};

struct Box
{
    double x0 = 0.0;
    double y0 = 0.0;
    double x1 = 0.0;
    double y1 = 0.0;
};

struct Repetition
{
    double x_step = 0.0;  // content space; 0: not repeated
    double y_step = 0.0;
    bool reflect_x = false;
    bool reflect_y = false;
    bool whole_pixels = false;
};

struct Node;
using Nodes = std::vector<Node>;

struct Group
{
    std::shared_ptr<Nodes> content;
    cairo_matrix_t retransform{};
    bool isolated = true;
    bool knockout = false;
    Compose compose;
    ClipList clips;
    Repetition repetition;
    bool has_box = false;  // `box` cuts the content
    Box box;
    uint64_t call = 0;      // for a watch: the call that begins it
    uint64_t end_call = 0;  // and the one that ends it
};

struct Node
{
    std::variant<Paint, Group> what;
};

// The product in which `first` acts first.
inline cairo_matrix_t multiply(const cairo_matrix_t& first, const cairo_matrix_t& then)
{
    cairo_matrix_t product;
    cairo_matrix_multiply(&product, &first, &then);
    return product;
}

inline cairo_matrix_t identity()
{
    cairo_matrix_t matrix;
    cairo_matrix_init_identity(&matrix);
    return matrix;
}

// False for a matrix that is singular or holds a value that is no number; `inverse` is then left alone.
bool invert(const cairo_matrix_t& matrix, cairo_matrix_t& inverse);

bool is_finite(const cairo_matrix_t& matrix);

inline Point transform(const cairo_matrix_t& matrix, Point point)
{
    cairo_matrix_transform_point(&matrix, &point.x, &point.y);
    return point;
}

// How long the longer of the two unit vectors becomes.
double scale_of(const cairo_matrix_t& matrix);

Path rectangle(const Box& box);

}  // namespace orvlog::cairo_renderer
