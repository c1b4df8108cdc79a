// Records of the drawing interface, short to write in a test. Each maker owns what its record points at.

#pragma once

#include "orvlog/interface/orv-interface.h"

#include <cstdint>
#include <initializer_list>
#include <memory>
#include <vector>

namespace orvlog::records
{

struct Pair
{
    double x;
    double y;
};

inline constexpr GGO_Matrix kUnit{{1, 0, 0, 1, 0, 0}};

// A path of one or more edges.
class Path
{
public:
    Path& straight(Pair start, std::initializer_list<Pair> segments, unsigned flag = GPA_SUBPATH_END_CLOSED);
    Path& bezier(Pair start, std::initializer_list<Pair> three_each, unsigned flag = GPA_SUBPATH_END_CLOSED);
    Path& quad(Pair start, std::initializer_list<Pair> two_each, unsigned flag = GPA_SUBPATH_END_CLOSED);
    Path& staircase(Pair start, bool y_positive, std::initializer_list<GPA_StaircaseSegment> segments,
                    unsigned flag = GPA_SUBPATH_END_CLOSED);
    Path& ellipse(Pair start, std::initializer_list<GPA_EllipticalSegment> segments,
                  unsigned flag = GPA_SUBPATH_END_CLOSED);
    // A rectangle, one straight edge.
    Path& box(double x0, double y0, double x1, double y1);
    // An edge whose kind nobody knows.
    Path& unknown_edge(Pair start);

    const GPA_PathPointer* record();

private:
    void* edge(Pair start, uint8_t type, unsigned flag, size_t count, size_t entry);

    std::vector<std::vector<uint64_t>> edges_;
    std::vector<Pair> starts_;
    std::vector<uint64_t> path_;
    std::vector<uint64_t> pointer_;
};

// A shape to paint or clip with. It keeps its path.
class Shape
{
public:
    static Shape fill(Path path, GGO_Matrix transform = kUnit, uint32_t rule = GPA_WINDING_NON_ZERO);
    static Shape stroke(Path path, const GPA_PathStrokingParams& params, GGO_Matrix transform = kUnit,
                        std::initializer_list<float> dashes = {});
    static Shape box(double x0, double y0, double x1, double y1);
    static Shape image_rect(uint32_t width, uint32_t height, GGO_Matrix transform);
    static Shape multi_rect(std::initializer_list<GGO_BoxInt> boxes, GGO_Matrix transform);
    static Shape scanline(int32_t start_y, std::initializer_list<GSH_XLimits> rows, GGO_Matrix transform);
    static Shape text(const GFI_FontSpecPointer* font, const GFI_StringDescPointer* string,
                      GGO_Matrix transform = kUnit);
    static Shape stroked_text(const GFI_FontSpecPointer* font, const GFI_StringDescPointer* string,
                              const GPA_PathStrokingParams& params, GGO_Matrix pen, GGO_Matrix transform = kUnit);
    static Shape of_kind(uint16_t kind);

    const GSH_ShapePointer* record() const
    {
        return &pointer_;
    }

private:
    template <typename Head> static Shape with_head(uint16_t kind, GGO_Matrix transform, size_t bytes = sizeof(Head));
    template <typename Head> Head& head();

    std::shared_ptr<Path> path_;
    std::shared_ptr<std::vector<uint64_t>> head_;
    GSH_ShapePointer pointer_{};
};

// Stroke parameters: caps, join, width and the rest.
GPA_PathStrokingParams stroke_params(float width, unsigned cap = GPA_CAP_BUTT, unsigned join = GPA_JOIN_MITER,
                                     float miter_limit = 10.0F);

// A list of clips, in the order given.
class Clips
{
public:
    Clips& inside(Shape shape);
    Clips& outside(Shape shape);
    // Adds to the shape of the last clip.
    Clips& united_with(Shape shape);
    Clips& end_here();

    const GSH_ShapeList* record();

private:
    struct Entry
    {
        Shape shape;
        bool inside;
        bool partner;
        bool last;
    };
    std::vector<Entry> entries_;
    std::vector<std::shared_ptr<GSH_ShapeList>> lists_;
};

// A colour, floats or words.
class Colour
{
public:
    Colour(std::initializer_list<float> values, bool has_alpha = false);
    static Colour words(std::initializer_list<uint16_t> values, uint8_t bits, bool has_alpha = false);

    const GBC_Color& record() const;

private:
    Colour() = default;
    std::vector<uint64_t> bytes_;
};

// An operand of any kind but images.
class Operand
{
public:
    static Operand flat(uint16_t family, const Colour& colour);
    static Operand gray(float value);
    static Operand rgb(float red, float green, float blue);
    static Operand rgba(float red, float green, float blue, float alpha);
    static Operand cmyk(float cyan, float magenta, float yellow, float black);
    static Operand two_point(uint16_t family, Pair from, Pair to, const Colour& one, const Colour& other,
                             uint8_t extend);
    struct Stop
    {
        double position;
        Colour colour;
    };
    static Operand multistop(uint16_t family, Pair from, Pair to, std::vector<Stop> stops, uint8_t extend);
    static Operand radial(uint16_t family, Pair center1, double radius1, Pair center2, double radius2,
                          std::vector<Stop> stops, uint8_t extend);
    static Operand three_point(uint16_t family, std::initializer_list<Pair> corners, std::vector<Colour> colours);
    // The same colour, in a space that `csd` defines.
    Operand in_space(const GCM_CsdPointer& csd) const;

    GOP_OperandPointer* record() const;

private:
    Operand with(size_t head_bytes, size_t pointer_bytes, uint8_t type, uint16_t family, uint16_t count);
    template <typename Record> Record& head();
    template <typename Record> Record& pointer();
    const GBC_Color* keep(const Colour& colour);
    const GOP_GradStop* keep(const Stop& stop);

    std::shared_ptr<std::vector<uint64_t>> head_;
    std::shared_ptr<std::vector<uint64_t>> pointer_;
    std::vector<std::shared_ptr<std::vector<uint64_t>>> kept_;
};

// An operator; without a mask mode operand 2 doesn't count.
GOP_Operator operation(uint32_t type, uint16_t number, uint32_t mask_mode = GOP_MASK_NONE);

}  // namespace orvlog::records
