// SPDX-License-Identifier: GPL-2.0-or-later
//
// Records of the drawing interface, made from the client's own terms. Each builder owns the memory of its
// records; the pointers it gives are valid as long as it lives and isn't assigned to.

#pragma once

#include "clients/pdf/content/graphics.h"
#include "orvlog/interface/orv-interface.h"

#include <cstdint>
#include <memory>
#include <vector>

namespace pdf_client
{

// A path, each edge a run of segments of one kind. Edges hold at most 65535 segments; longer runs are cut.
class PathRecord
{
public:
    explicit PathRecord(const Path& path);
    const GPA_PathPointer* get() const;

private:
    using Block = std::vector<std::byte>;
    std::vector<Block> edges_;
    Block path_;
    Block pointer_;
};

// The parameters of a stroke, with the shape's own unit for lengths; and the shape of a stroke as a clip.
class StrokeRecord
{
public:
    explicit StrokeRecord(const StrokeStyle& style);
    const GPA_PathStrokingParams* get() const;

private:
    std::vector<std::byte> block_;
};

// A filled path as a shape.
class FilledShape
{
public:
    FilledShape(const Path& path, Winding winding, uint16_t hints = 0);
    const GSH_ShapePointer* get() const;
    const GGO_BoxFloat& bounds() const;

private:
    GGO_BoxFloat bounds_;
    PathRecord path_;
    GSH_FilledPathShape header_{};
    GSH_ShapePointer pointer_{};
};

// A path to be stroked as a shape: `to_content` maps the path's space to the content space. With a style the
// shape carries its parameters and is itself the stroked line, as clips need it.
class StrokedShape
{
public:
    StrokedShape(const Path& path, const GGO_Matrix& to_content, const StrokeStyle& style);
    const GSH_ShapePointer* get() const;
    const GPA_PathStrokingParams* params() const;

private:
    PathRecord path_;
    StrokeRecord stroke_;
    std::vector<std::byte> header_;
    GSH_ShapePointer pointer_{};
};

// The rectangle of an image, from (0, 0) to its size in pixels under `pixels_to_content`.
class ImageShape
{
public:
    ImageShape(uint32_t width, uint32_t height, const GGO_Matrix& pixels_to_content);
    const GSH_ShapePointer* get() const;

private:
    GSH_ImageRectShape header_{};
    GSH_ShapePointer pointer_{};
};

// A clip and all that it narrows down: a node of a list that grows at its head.
struct ClipNode
{
    ClipNode(std::shared_ptr<const FilledShape> shape, uint32_t unique_id, Clip parent);
    ClipNode(std::shared_ptr<const StrokedShape> shape, uint32_t unique_id, Clip parent);
    // The same shape on top of another clip.
    ClipNode(const ClipNode& other, Clip parent);
    ~ClipNode();
    ClipNode(const ClipNode&) = delete;
    ClipNode& operator=(const ClipNode&) = delete;

    std::shared_ptr<const FilledShape> fill;
    std::shared_ptr<const StrokedShape> stroke;
    Clip parent;
    GSH_ShapeList record{};

private:
    void link(uint32_t unique_id);
};

// The list for a call; null for no clip.
const GSH_ShapeList* clip_list(const Clip& clip);

// A box, in content space, that holds all that the clip lets through: unbounded for no clip; one whose minimum
// exceeds its maximum if nothing is let through.
GGO_BoxFloat clip_bounds(const Clip& clip);

// The clips that `clip` has above `base`, on their own; all of them if `base` isn't among them.
Clip clips_above(const Clip& clip, const Clip& base);

// A colour definition for an operand; null in cp_Csd for device spaces.
class SpaceRecord
{
public:
    explicit SpaceRecord(const ColourSpace& space);
    const GCM_CsdPointer& pointer() const;
    // The go_ColorInfo and go_ColorSpaceFamily of an operand in this space.
    uint8_t colour_info() const;
    uint16_t family() const;

private:
    struct Tables;
    void fill_cie_tables(const SpaceDefinition& definition);

    ColourSpace space_;
    std::shared_ptr<Tables> tables_;
    GCM_CsdPointer pointer_{};
};

// A colour of float channels. An alpha below 0 leaves out the alpha channel.
class ColourRecord
{
public:
    explicit ColourRecord(const Colour& colour, double alpha = -1);
    const GBC_Color* get() const;

private:
    std::vector<std::byte> block_;
};

// An operand of any kind but an image.
class OperandRecord
{
public:
    // Flat colours; with an alpha below 1 the colour has an alpha channel.
    static OperandRecord flat(const Colour& colour, double alpha);
    // A constant mask: gray with one channel.
    static OperandRecord constant_mask(double alpha);
    // A gradient of two stops at 0 and 1 is a two-point gradient, any other a multistop one.
    static OperandRecord gradient(const AxialGradient& gradient, double alpha);
    static OperandRecord gradient(const RadialGradient& gradient, double alpha);
    static OperandRecord gradient(const Triangle& triangle, double alpha);

    // The record, with this number as its op_UniqueId.
    GOP_OperandPointer* get(uint32_t unique_id);

private:
    OperandRecord() = default;
    static OperandRecord make(const ColourSpace& space, size_t operand_size, size_t pointer_size);
    GOP_Operand* head();
    void set_head(uint8_t kind, size_t count, double alpha);
    const GBC_Color* add_colour(const Colour& colour, double alpha);
    const GOP_GradStop* add_stop(const GradientStop& stop, double alpha);

    std::vector<std::byte> operand_;
    std::vector<std::byte> pointer_;
    std::vector<std::vector<std::byte>> parts_;
    std::unique_ptr<SpaceRecord> space_;
};

// The operator of a blend mode, with a mask mode GOP_MASK_*.
GOP_Operator blend_operator(Blend blend, uint32_t mask_mode);

}  // namespace pdf_client
