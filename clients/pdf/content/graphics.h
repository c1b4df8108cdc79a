// SPDX-License-Identifier: GPL-2.0-or-later
//
// What is on a page, in the client's own terms: paths, colours, strokes, gradients, images, glyph runs and the
// state in which they are painted. The reader of PDF files produces these, the painter turns them into drawing
// calls. Coordinates are doubles in the content space of the drawing: inches, y down, from the page's upper
// left corner, or the space of a pattern or group.

#pragma once

#include "clients/pdf/content/geometry.h"

#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace orvlog::pdf_client
{

struct Segment
{
    bool curve = false;
    GGO_Point control1{};  // curves only
    GGO_Point control2{};  // curves only
    GGO_Point end{};
};

struct Subpath
{
    GGO_Point start{};
    std::vector<Segment> segments;
    bool closed = false;
};

struct Path
{
    std::vector<Subpath> subpaths;

    bool empty() const;
    // (1, 1, -1, -1) for an empty path. Control points count.
    GGO_BoxFloat bounds() const;
    Path transformed(const GGO_Matrix& matrix) const;
    void append(const Path& other);
};

Path rectangle(const GGO_BoxFloat& box);

enum class Winding
{
    odd_even,
    non_zero
};

// What a colour space is defined by when it isn't one of the device spaces.
struct SpaceDefinition
{
    enum class Kind
    {
        icc_profile,
        calibrated_gray,
        calibrated_rgb
    };

    Kind kind = Kind::icc_profile;
    std::vector<uint8_t> profile;                    // icc_profile
    double white[3] = {1, 1, 1};                     // the calibrated kinds
    double black[3] = {0, 0, 0};                     // the calibrated kinds
    double gamma[3] = {1, 1, 1};                     // calibrated_gray uses the first
    double matrix[9] = {1, 0, 0, 0, 1, 0, 0, 0, 1};  // calibrated_rgb: X, Y, Z of each channel in turn

    bool operator==(const SpaceDefinition&) const = default;
};

// A device family, by the number of channels 1, 3 or 4, with a definition when there is a better one.
struct ColourSpace
{
    uint16_t channels = 1;
    std::shared_ptr<const SpaceDefinition> definition;

    bool operator==(const ColourSpace&) const = default;
};

struct Colour
{
    ColourSpace space;
    float value[4] = {0, 0, 0, 0};  // as many as the space has channels, each 0 to 1

    bool operator==(const Colour&) const = default;
};

struct StrokeStyle
{
    double width = 1;
    uint8_t cap = 0;   // GPA_CAP_*
    uint8_t join = 0;  // GPA_JOIN_*
    bool adjust = true;
    double miter_limit = 10;
    double dash_start = 0;
    std::vector<double> dashes;
};

struct GradientStop
{
    double position = 0;
    Colour colour;
};

struct AxialGradient
{
    GGO_Matrix transform{};  // the gradient's space to the content space
    GGO_Point start{};
    GGO_Point end{};
    bool extend_start = false;
    bool extend_end = false;
    std::vector<GradientStop> stops;
};

struct RadialGradient
{
    GGO_Matrix transform{};
    GGO_Point centre1{};
    GGO_Point centre2{};
    double radius1 = 0;
    double radius2 = 0;
    bool extend_start = false;
    bool extend_end = false;
    std::vector<GradientStop> stops;
};

struct Triangle
{
    GGO_Point corner[3]{};
    Colour colour[3];
};

// Sums of what the first reading of an image gave, each with all rows before it, at places that only the image's height
// decides; as many as were read.
using ReadingMarks = std::vector<uint64_t>;

// An image whose rows are pulled on demand.
class ImageRows
{
public:
    virtual ~ImageRows() = default;
    // Starts over at the first row. False if that can't be done.
    virtual bool restart() = 0;
    // Fills one row, and gives how many of its bytes came: fewer than `size` where the data ends before its time, and
    // 0 from there on. The bytes that didn't come are left as they were.
    virtual size_t read_row(uint8_t* row, size_t size) = 0;
    // Grow as rows are read, and stay when the rows are gone; null for rows that nobody watches.
    virtual std::shared_ptr<const ReadingMarks> marks() const
    {
        return nullptr;
    }
};

struct Image
{
    uint32_t width = 0;
    uint32_t height = 0;
    uint8_t bits = 8;  // of a sample: 1, 2, 4, 8, 16
    ColourSpace space;
    bool alpha_first = false;  // each pixel begins with a sample of alpha
    bool interpolate = false;
    std::vector<uint8_t> index_table;  // not empty: one sample for a pixel, entries of 8 bits a channel
    bool restartable = true;           // may be read again, and after the paint
    std::shared_ptr<ImageRows> rows;

    // Bytes of a row.
    size_t row_bytes() const;
};

// A mask of 8 bits, held in memory: what a group comes to when it is used as a soft mask.
struct MaskImage
{
    uint32_t width = 0;
    uint32_t height = 0;
    std::vector<uint8_t> samples;
    GGO_Matrix pixels_to_content{};
};

struct ClipNode;
using Clip = std::shared_ptr<const ClipNode>;

enum class Blend : uint8_t
{
    normal,
    multiply,
    screen,
    overlay,
    darken,
    lighten,
    color_dodge,
    color_burn,
    hard_light,
    soft_light,
    difference,
    exclusion,
    hue,
    saturation,
    color,
    luminosity
};

// How something is painted, whatever it is.
struct PaintState
{
    Clip clip;
    double alpha = 1;
    Blend blend = Blend::normal;
    std::shared_ptr<const MaskImage> mask;
};

struct Group
{
    bool isolated = false;
    bool knockout = false;
    GGO_BoxFloat bounds{1, 1, -1, -1};
    PaintState state;
};

// A glyph as the font has it, in units of the em, y up; shared by all its uses.
struct Glyph
{
    uint32_t code = 0;
    Path outline;
    Winding winding = Winding::non_zero;
    std::vector<uint8_t> true_type;  // its entry in the font's glyf table, if there is one
    // A bitmap font's glyph: 1 paints; then there is no outline.
    uint32_t bitmap_width = 0;
    uint32_t bitmap_height = 0;
    std::vector<uint8_t> bitmap;
    GGO_Matrix bitmap_to_em{};
};

struct PlacedGlyph
{
    std::shared_ptr<const Glyph> glyph;
    GGO_Vector advance{};       // to the next glyph, in em units
    std::vector<uint8_t> text;  // the bytes of the document that stand for it
};

// Glyphs of one font in one state.
struct GlyphRun
{
    GGO_Matrix em_to_content{};  // places the first glyph's origin too
    double font_size = 1;        // the unit of the shape's space is one em divided by this
    bool vertical = false;
    int32_t font_id = 0;
    std::vector<PlacedGlyph> glyphs;
};

}  // namespace orvlog::pdf_client
