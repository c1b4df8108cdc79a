// SPDX-License-Identifier: GPL-2.0-or-later

#include "clients/pdf/records/orv-records.h"

#include <algorithm>
#include <cstddef>
#include <cstring>
#include <limits>

namespace pdf_client
{

namespace
{

constexpr size_t greatest_segment_count = 65535;

template <typename Record> Record* record_in(std::vector<std::byte>& block)
{
    return reinterpret_cast<Record*>(block.data());
}

template <typename Record> const Record* record_in(const std::vector<std::byte>& block)
{
    return reinterpret_cast<const Record*>(block.data());
}

GGO_Vector between(GGO_Point from, GGO_Point to)
{
    return {to.gpf_X - from.gpf_X, to.gpf_Y - from.gpf_Y};
}

// A run of segments of one kind within a subpath.
struct Run
{
    const Subpath* subpath;
    size_t first;
    size_t count;
    GGO_Point start;
    bool last;
};

std::vector<Run> split_into_runs(const Path& path)
{
    std::vector<Run> runs;
    for (const Subpath& subpath : path.subpaths)
    {
        const size_t total = subpath.segments.size();
        GGO_Point start = subpath.start;
        size_t first = 0;
        do
        {
            size_t count = 0;
            while (first + count < total && count < greatest_segment_count &&
                   subpath.segments[first + count].curve == subpath.segments[first].curve)
            {
                count++;
            }
            runs.push_back({&subpath, first, count, start, first + count >= total});
            first += count;
            if (count > 0)
            {
                start = subpath.segments[first - 1].end;
            }
        } while (first < total);
    }
    return runs;
}

std::vector<std::byte> straight_edge(const Run& run)
{
    std::vector<std::byte> block(offsetof(GPA_StraightEdge, se_Segment) + run.count * sizeof(GGO_Vector));
    GGO_Vector* segments = reinterpret_cast<GGO_Vector*>(block.data() + offsetof(GPA_StraightEdge, se_Segment));
    GGO_Point from = run.start;
    for (size_t i = 0; i < run.count; i++)
    {
        const Segment& segment = run.subpath->segments[run.first + i];
        segments[i] = between(from, segment.end);
        from = segment.end;
    }
    return block;
}

std::vector<std::byte> bezier_edge(const Run& run)
{
    std::vector<std::byte> block(offsetof(GPA_BezierEdge, be_BezierSegment) + run.count * sizeof(GPA_BezierSegment));
    GPA_BezierSegment* segments =
        reinterpret_cast<GPA_BezierSegment*>(block.data() + offsetof(GPA_BezierEdge, be_BezierSegment));
    GGO_Point from = run.start;
    for (size_t i = 0; i < run.count; i++)
    {
        const Segment& segment = run.subpath->segments[run.first + i];
        segments[i] = {between(from, segment.control1), between(from, segment.control2), between(from, segment.end)};
        from = segment.end;
    }
    return block;
}

std::vector<std::byte> edge_of(const Run& run)
{
    const bool curves = run.count > 0 && run.subpath->segments[run.first].curve;
    std::vector<std::byte> block = curves ? bezier_edge(run) : straight_edge(run);
    GPA_Edge* edge = record_in<GPA_Edge>(block);
    edge->ed_EdgeType = curves ? GPA_EDGE_BEZIER : GPA_EDGE_STRAIGHT;
    const uint8_t end = run.subpath->closed ? GPA_SUBPATH_END_CLOSED : GPA_SUBPATH_END_OPEN;
    edge->ed_EdgeFlag = run.last ? end : static_cast<uint8_t>(GPA_SUBPATH_CONTINUE);
    edge->ed_SegmentCount = static_cast<uint16_t>(run.count);
    return block;
}

bool is_rectangle(const Path& path)
{
    if (path.subpaths.size() != 1)
    {
        return false;
    }
    const Subpath& subpath = path.subpaths[0];
    const size_t count = subpath.segments.size();
    if (count < 3 || count > 4 || (!subpath.closed && count != 4))
    {
        return false;
    }
    std::vector<GGO_Point> points = {subpath.start};
    for (const Segment& segment : subpath.segments)
    {
        if (segment.curve)
        {
            return false;
        }
        points.push_back(segment.end);
    }
    if (count == 4 && (points[4].gpf_X != points[0].gpf_X || points[4].gpf_Y != points[0].gpf_Y))
    {
        return false;
    }
    const bool across = points[0].gpf_Y == points[1].gpf_Y && points[1].gpf_X == points[2].gpf_X &&
                        points[2].gpf_Y == points[3].gpf_Y && points[3].gpf_X == points[0].gpf_X;
    const bool along = points[0].gpf_X == points[1].gpf_X && points[1].gpf_Y == points[2].gpf_Y &&
                       points[2].gpf_X == points[3].gpf_X && points[3].gpf_Y == points[0].gpf_Y;
    return across || along;
}

uint16_t hints_of(const Path& path)
{
    uint16_t hints = 0;
    if (is_rectangle(path))
    {
        hints |= GPA_HINT_IS_RECTANGLE;
    }
    if (path.subpaths.size() == 1)
    {
        hints |= GPA_HINT_ONE_SUBPATH;
    }
    bool curves = false;
    for (const Subpath& subpath : path.subpaths)
    {
        curves = curves || std::any_of(subpath.segments.begin(), subpath.segments.end(),
                                       [](const Segment& segment) { return segment.curve; });
    }
    if (!curves)
    {
        hints |= GPA_HINT_ONLY_STRAIGHTS | GPA_HINT_BOX_IS_MINIMAL;
    }
    return hints;
}

std::vector<std::byte> colour_block(const Colour& colour, double alpha)
{
    const bool has_alpha = alpha >= 0;
    const uint16_t channels = static_cast<uint16_t>(colour.space.channels + (has_alpha ? 1 : 0));
    const size_t size = offsetof(GBC_Color, channels) + channels * sizeof(float);
    std::vector<std::byte> block(std::max(size, sizeof(GBC_Color)));
    GBC_Color* record = record_in<GBC_Color>(block);
    record->num_chans = channels;
    record->bit_depth = 32;
    record->has_alpha = has_alpha ? 1 : 0;
    float* values = reinterpret_cast<float*>(block.data() + offsetof(GBC_Color, channels));
    if (has_alpha)
    {
        *values++ = static_cast<float>(alpha);
    }
    std::copy_n(colour.value, colour.space.channels, values);
    return block;
}

uint8_t colour_flag(const Colour& colour)
{
    const float* v = colour.value;
    if (colour.space.channels == 1)
    {
        return v[0] == 0 ? GCM_CF_BLACK : GCM_CF_GREY;
    }
    if (colour.space.channels == 3 && v[0] == v[1] && v[1] == v[2])
    {
        return v[0] == 0 ? GCM_CF_BLACK : GCM_CF_GREY;
    }
    if (colour.space.channels == 4 && v[0] == 0 && v[1] == 0 && v[2] == 0)
    {
        return v[3] == 1 ? GCM_CF_BLACK : GCM_CF_GREY;
    }
    return GCM_CF_OTHER;
}

uint8_t extend_mode(bool start, bool end)
{
    return static_cast<uint8_t>((start ? 1 : 0) | (end ? 2 : 0));
}

bool spans_from_end_to_end(const std::vector<GradientStop>& stops)
{
    return stops.size() == 2 && stops[0].position == 0 && stops[1].position == 1;
}

double stop_alpha(double alpha)
{
    return alpha < 1 ? alpha : -1;
}

const ColourSpace& space_of(const std::vector<GradientStop>& stops)
{
    static const ColourSpace gray;
    return stops.empty() ? gray : stops[0].colour.space;
}

}  // namespace

PathRecord::PathRecord(const Path& path)
{
    const std::vector<Run> runs = split_into_runs(path);
    path_.resize(std::max(sizeof(GPA_Path), offsetof(GPA_Path, pa_EdgeStart) + runs.size() * sizeof(GGO_Point)));
    pointer_.resize(std::max(sizeof(GPA_PathPointer),
                             offsetof(GPA_PathPointer, lpp_EdgePointer) + runs.size() * sizeof(GPA_EdgePointer)));
    GPA_Path* record = record_in<GPA_Path>(path_);
    record->pa_NumEdges = static_cast<uint32_t>(runs.size());
    record->pa_PathHints = hints_of(path);
    record->pa_EnclosingBox = path.bounds();
    GPA_PathPointer* pointer = record_in<GPA_PathPointer>(pointer_);
    pointer->lpp_Path = record;
    GGO_Point* starts = reinterpret_cast<GGO_Point*>(path_.data() + offsetof(GPA_Path, pa_EdgeStart));
    GPA_EdgePointer* edges =
        reinterpret_cast<GPA_EdgePointer*>(pointer_.data() + offsetof(GPA_PathPointer, lpp_EdgePointer));
    edges_.reserve(runs.size());
    for (size_t i = 0; i < runs.size(); i++)
    {
        edges_.push_back(edge_of(runs[i]));
        starts[i] = runs[i].start;
        edges[i].ep_Pointer = record_in<GPA_Edge>(edges_.back());
    }
}

const GPA_PathPointer* PathRecord::get() const
{
    return record_in<GPA_PathPointer>(pointer_);
}

StrokeRecord::StrokeRecord(const StrokeStyle& style)
{
    const size_t dashes = std::min<size_t>(style.dashes.size(), 65535);
    block_.resize(std::max(sizeof(GPA_PathStrokingParams),
                           offsetof(GPA_PathStrokingParams, psp_DashLength) + dashes * sizeof(float)));
    GPA_PathStrokingParams* params = record_in<GPA_PathStrokingParams>(block_);
    params->psp_Flags = static_cast<uint16_t>(style.cap | (style.cap << 4) | (style.join << 8) |
                                              ((style.adjust ? GPA_ADJUST_PS : GPA_ADJUST_NONE) << 12));
    params->psp_DashCount = static_cast<uint16_t>(dashes);
    params->psp_DashCaps = style.cap;
    params->psp_StrokeWidth = static_cast<float>(style.width);
    params->psp_MiterLimit = static_cast<float>(style.miter_limit);
    params->psp_DashStart = static_cast<float>(style.dash_start);
    float* lengths = reinterpret_cast<float*>(block_.data() + offsetof(GPA_PathStrokingParams, psp_DashLength));
    for (size_t i = 0; i < dashes; i++)
    {
        lengths[i] = static_cast<float>(style.dashes[i]);
    }
}

const GPA_PathStrokingParams* StrokeRecord::get() const
{
    return record_in<GPA_PathStrokingParams>(block_);
}

FilledShape::FilledShape(const Path& path, Winding winding, uint16_t hints) : bounds_(path.bounds()), path_(path)
{
    header_.fps_Shape.sh_ShapeType = GSH_SHAPE_FILL;
    header_.fps_Shape.sh_Hints = hints;
    header_.fps_Shape.sh_Transform = identity();
    header_.fps_WindingRule = winding == Winding::odd_even ? GPA_WINDING_ODD_EVEN : GPA_WINDING_NON_ZERO;
    pointer_.sp_HeaderPtr = &header_.fps_Shape;
    pointer_.sp_U.filled_path = path_.get();
}

const GSH_ShapePointer* FilledShape::get() const
{
    return &pointer_;
}

const GGO_BoxFloat& FilledShape::bounds() const
{
    return bounds_;
}

StrokedShape::StrokedShape(const Path& path, const GGO_Matrix& to_content, const StrokeStyle& style)
    : path_(path), stroke_(style)
{
    const size_t dashes = stroke_.get()->psp_DashCount;
    const size_t params_size = offsetof(GPA_PathStrokingParams, psp_DashLength) + dashes * sizeof(float);
    header_.resize(
        std::max(sizeof(GSH_StrokedPathShape), offsetof(GSH_StrokedPathShape, sps_StrokingParams) + params_size));
    GSH_StrokedPathShape* header = record_in<GSH_StrokedPathShape>(header_);
    header->sps_Shape.sh_ShapeType = GSH_SHAPE_STROKE;
    header->sps_Shape.sh_Transform = to_content;
    header->sps_WindingRule = GPA_WINDING_NON_ZERO;
    std::memcpy(header_.data() + offsetof(GSH_StrokedPathShape, sps_StrokingParams), stroke_.get(), params_size);
    pointer_.sp_HeaderPtr = &header->sps_Shape;
    pointer_.sp_U.stroked_path = path_.get();
}

const GSH_ShapePointer* StrokedShape::get() const
{
    return &pointer_;
}

const GPA_PathStrokingParams* StrokedShape::params() const
{
    return stroke_.get();
}

ImageShape::ImageShape(uint32_t width, uint32_t height, const GGO_Matrix& pixels_to_content)
{
    header_.irs_Shape.sh_ShapeType = GSH_SHAPE_IMAGE_RECT;
    header_.irs_Shape.sh_Transform = pixels_to_content;
    header_.irs_ImageWidth = width;
    header_.irs_ImageHeight = height;
    pointer_.sp_HeaderPtr = &header_.irs_Shape;
}

const GSH_ShapePointer* ImageShape::get() const
{
    return &pointer_;
}

ClipNode::ClipNode(std::shared_ptr<const FilledShape> shape, uint32_t unique_id, Clip parent_clip)
    : fill(std::move(shape)), parent(std::move(parent_clip))
{
    link(unique_id);
}

ClipNode::ClipNode(std::shared_ptr<const StrokedShape> shape, uint32_t unique_id, Clip parent_clip)
    : stroke(std::move(shape)), parent(std::move(parent_clip))
{
    link(unique_id);
}

ClipNode::ClipNode(const ClipNode& other, Clip parent_clip)
    : fill(other.fill), stroke(other.stroke), parent(std::move(parent_clip))
{
    link(other.record.sl_UniqueId);
}

// A long list is taken apart in a loop, so that its destruction doesn't recurse.
ClipNode::~ClipNode()
{
    Clip next = std::move(parent);
    while (next != nullptr && next.use_count() == 1)
    {
        Clip after = std::move(const_cast<ClipNode&>(*next).parent);
        next = std::move(after);
    }
}

void ClipNode::link(uint32_t unique_id)
{
    record.sl_ClipIn = 1;
    record.sl_Shape = fill != nullptr ? *fill->get() : *stroke->get();
    record.sl_Next = clip_list(parent);
    record.sl_UniqueId = unique_id;
}

const GSH_ShapeList* clip_list(const Clip& clip)
{
    return clip != nullptr ? &clip->record : nullptr;
}

GGO_BoxFloat clip_bounds(const Clip& clip)
{
    constexpr double far = std::numeric_limits<double>::max();
    GGO_BoxFloat box{-far, -far, far, far};
    for (const ClipNode* node = clip.get(); node != nullptr; node = node->parent.get())
    {
        if (node->fill != nullptr)
        {
            const GGO_BoxFloat& shape = node->fill->bounds();
            box.gbf_MinX = std::max(box.gbf_MinX, shape.gbf_MinX);
            box.gbf_MinY = std::max(box.gbf_MinY, shape.gbf_MinY);
            box.gbf_MaxX = std::min(box.gbf_MaxX, shape.gbf_MaxX);
            box.gbf_MaxY = std::min(box.gbf_MaxY, shape.gbf_MaxY);
        }
    }
    return box;
}

Clip clips_above(const Clip& clip, const Clip& base)
{
    std::vector<const ClipNode*> nodes;
    for (const ClipNode* node = clip.get(); node != nullptr && node != base.get(); node = node->parent.get())
    {
        nodes.push_back(node);
    }
    Clip result;
    for (auto node = nodes.rbegin(); node != nodes.rend(); ++node)
    {
        result = std::make_shared<const ClipNode>(**node, result);
    }
    return result;
}

ColourRecord::ColourRecord(const Colour& colour, double alpha) : block_(colour_block(colour, alpha)) {}

const GBC_Color* ColourRecord::get() const
{
    return record_in<GBC_Color>(block_);
}

OperandRecord OperandRecord::make(const ColourSpace& space, size_t operand_size, size_t pointer_size)
{
    OperandRecord record;
    record.operand_.resize(operand_size);
    record.pointer_.resize(pointer_size);
    record.space_ = std::make_unique<SpaceRecord>(space);
    GOP_OperandPointer* pointer = record_in<GOP_OperandPointer>(record.pointer_);
    pointer->op_Operand = record.head();
    pointer->op_Csd = record.space_->pointer();
    return record;
}

GOP_Operand* OperandRecord::head()
{
    return record_in<GOP_Operand>(operand_);
}

GOP_OperandPointer* OperandRecord::get(uint32_t unique_id)
{
    GOP_OperandPointer* pointer = record_in<GOP_OperandPointer>(pointer_);
    pointer->op_UniqueId = unique_id;
    return pointer;
}

void OperandRecord::set_head(uint8_t kind, size_t count, double alpha)
{
    head()->go_OpType = kind;
    head()->go_ColorInfo = static_cast<uint8_t>(space_->colour_info() | (GCM_CF_OTHER << 6));
    head()->go_Count = static_cast<uint16_t>(count);
    head()->go_Hints = alpha < 1 ? GOP_OPD_HINT_NONE : GOP_OPD_HINT_IS_OPAQUE;
    head()->go_ColorSpaceFamily = space_->family();
}

const GBC_Color* OperandRecord::add_colour(const Colour& colour, double alpha)
{
    parts_.push_back(colour_block(colour, stop_alpha(alpha)));
    return record_in<GBC_Color>(parts_.back());
}

const GOP_GradStop* OperandRecord::add_stop(const GradientStop& stop, double alpha)
{
    const std::vector<std::byte> colour = colour_block(stop.colour, stop_alpha(alpha));
    std::vector<std::byte> block(std::max(sizeof(GOP_GradStop), offsetof(GOP_GradStop, gs_StopColor) + colour.size()));
    record_in<GOP_GradStop>(block)->gs_StopPosn = stop.position;
    std::memcpy(block.data() + offsetof(GOP_GradStop, gs_StopColor), colour.data(), colour.size());
    parts_.push_back(std::move(block));
    return record_in<GOP_GradStop>(parts_.back());
}

OperandRecord OperandRecord::flat(const Colour& colour, double alpha)
{
    const std::vector<std::byte> block = colour_block(colour, stop_alpha(alpha));
    const size_t size = std::max(sizeof(GOP_OperandFlat), offsetof(GOP_OperandFlat, fl_Color) + block.size());
    OperandRecord record = make(colour.space, size, sizeof(GOP_OperandFlatPointer));
    record.set_head(GOP_OPERAND_FLAT, 0, alpha);
    record.head()->go_ColorInfo = static_cast<uint8_t>(record.space_->colour_info() | (colour_flag(colour) << 6));
    std::memcpy(record.operand_.data() + offsetof(GOP_OperandFlat, fl_Color), block.data(), block.size());
    return record;
}

OperandRecord OperandRecord::constant_mask(double alpha)
{
    Colour gray;
    gray.value[0] = static_cast<float>(alpha);
    return flat(gray, 1);
}

OperandRecord OperandRecord::gradient(const AxialGradient& gradient, double alpha)
{
    const size_t count = gradient.stops.size();
    if (spans_from_end_to_end(gradient.stops))
    {
        OperandRecord record =
            make(space_of(gradient.stops), sizeof(GOP_OperandGrad2Pt), sizeof(GOP_OperandGrad2PtPointer));
        record.set_head(GOP_OPERAND_GRAD_2PT, count, alpha);
        GOP_OperandGrad2Pt* operand = record_in<GOP_OperandGrad2Pt>(record.operand_);
        operand->g2_Transform = gradient.transform;
        operand->g2_Pt1 = gradient.start;
        operand->g2_Pt2 = gradient.end;
        operand->g2_UseInterpColorSpace = 1;
        operand->g2_GradientExtendMode = extend_mode(gradient.extend_start, gradient.extend_end);
        GOP_OperandGrad2PtPointer* pointer = record_in<GOP_OperandGrad2PtPointer>(record.pointer_);
        pointer->g2p_Color1 = record.add_colour(gradient.stops[0].colour, alpha);
        pointer->g2p_Color2 = record.add_colour(gradient.stops[1].colour, alpha);
        return record;
    }
    const size_t pointer_size =
        offsetof(GOP_OperandGradMultistopPointer, gmp_GradStop) + std::max<size_t>(count, 1) * sizeof(void*);
    OperandRecord record = make(space_of(gradient.stops), sizeof(GOP_OperandGradMultistop), pointer_size);
    record.set_head(GOP_OPERAND_GRAD_MULTISTOP, count, alpha);
    GOP_OperandGradMultistop* operand = record_in<GOP_OperandGradMultistop>(record.operand_);
    operand->gm_Transform = gradient.transform;
    operand->gm_Pt1 = gradient.start;
    operand->gm_Pt2 = gradient.end;
    operand->gm_UseInterpColorSpace = 1;
    operand->gm_GradientExtendMode = extend_mode(gradient.extend_start, gradient.extend_end);
    const GOP_GradStop** stops = reinterpret_cast<const GOP_GradStop**>(
        record.pointer_.data() + offsetof(GOP_OperandGradMultistopPointer, gmp_GradStop));
    for (size_t i = 0; i < count; i++)
    {
        stops[i] = record.add_stop(gradient.stops[i], alpha);
    }
    return record;
}

OperandRecord OperandRecord::gradient(const RadialGradient& gradient, double alpha)
{
    const size_t count = gradient.stops.size();
    const size_t pointer_size =
        offsetof(GOP_OperandGradRadialPointer, grp_GradStop) + std::max<size_t>(count, 1) * sizeof(void*);
    // The record ends with a colour that isn't used: gray with one channel.
    OperandRecord record = make(space_of(gradient.stops), sizeof(GOP_OperandGradRadial), pointer_size);
    record.set_head(GOP_OPERAND_GRAD_RADIAL, count, alpha);
    GOP_OperandGradRadial* operand = record_in<GOP_OperandGradRadial>(record.operand_);
    operand->gr_Transform = gradient.transform;
    operand->gr_Center1 = gradient.centre1;
    operand->gr_Radius1 = gradient.radius1;
    operand->gr_Center2 = gradient.centre2;
    operand->gr_Radius2 = gradient.radius2;
    operand->gr_UseInterpColorSpace = 1;
    operand->gr_GradientExtendMode = extend_mode(gradient.extend_start, gradient.extend_end);
    operand->gr_Color.num_chans = 1;
    operand->gr_Color.bit_depth = 32;
    const GOP_GradStop** stops = reinterpret_cast<const GOP_GradStop**>(
        record.pointer_.data() + offsetof(GOP_OperandGradRadialPointer, grp_GradStop));
    for (size_t i = 0; i < count; i++)
    {
        stops[i] = record.add_stop(gradient.stops[i], alpha);
    }
    return record;
}

OperandRecord OperandRecord::gradient(const Triangle& triangle, double alpha)
{
    OperandRecord record =
        make(triangle.colour[0].space, sizeof(GOP_OperandGrad3Pt), sizeof(GOP_OperandGrad3PtPointer));
    // The count of a three-point gradient says whether its colour space definition counts.
    record.set_head(GOP_OPERAND_GRAD_3PT, 1, alpha);
    GOP_OperandGrad3Pt* operand = record_in<GOP_OperandGrad3Pt>(record.operand_);
    operand->g3_Transform = identity();
    operand->g3_Pt1 = triangle.corner[0];
    operand->g3_Pt2 = triangle.corner[1];
    operand->g3_Pt3 = triangle.corner[2];
    GOP_OperandGrad3PtPointer* pointer = record_in<GOP_OperandGrad3PtPointer>(record.pointer_);
    for (size_t i = 0; i < 3; i++)
    {
        pointer->g3p_Color[i] = record.add_colour(triangle.colour[i], alpha);
    }
    return record;
}

GOP_Operator blend_operator(Blend blend, uint32_t mask_mode)
{
    GOP_Operator op{};
    op.op_MaskMode = mask_mode;
    if (blend == Blend::normal)
    {
        op.op_OperatorType = GOP_ROP_PORTER_DUFF;
        op.op_Operator = 3;
        return op;
    }
    if (blend >= Blend::hue)
    {
        op.op_OperatorType = GOP_ROP_PDF_NONSEPARABLE;
        op.op_Operator = static_cast<uint16_t>(static_cast<uint32_t>(blend) - static_cast<uint32_t>(Blend::hue));
    }
    else
    {
        op.op_OperatorType = GOP_ROP_PDF_SEPARABLE;
        op.op_Operator = static_cast<uint16_t>(blend);
    }
    op.op_OperatorHints = GOP_OP_HINT_NEEDS_BACKGROUND;
    return op;
}

}  // namespace pdf_client
