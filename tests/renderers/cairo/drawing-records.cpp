#include "tests/renderers/cairo/drawing-records.h"

#include <cstddef>
#include <cstring>

namespace orvlog::records
{
namespace
{

constexpr size_t kEdgeHead = 8;

std::vector<uint64_t> block(size_t bytes)
{
    return std::vector<uint64_t>((bytes + 7) / 8, 0);
}

GGO_Vector vector_of(Pair pair)
{
    return {pair.x, pair.y};
}

GGO_Point point_of(Pair pair)
{
    return {pair.x, pair.y};
}

}  // namespace

void* Path::edge(Pair start, uint8_t type, unsigned flag, size_t count, size_t entry)
{
    std::vector<uint64_t>& bytes = edges_.emplace_back(block(kEdgeHead + count * entry));
    starts_.push_back(start);
    const GPA_Edge head{type, static_cast<uint8_t>(flag), static_cast<uint16_t>(count)};
    std::memcpy(bytes.data(), &head, sizeof head);
    return reinterpret_cast<uint8_t*>(bytes.data()) + kEdgeHead;
}

Path& Path::straight(Pair start, std::initializer_list<Pair> segments, unsigned flag)
{
    auto* out = static_cast<GGO_Vector*>(edge(start, GPA_EDGE_STRAIGHT, flag, segments.size(), sizeof(GGO_Vector)));
    for (const Pair pair : segments)
        *out++ = vector_of(pair);
    return *this;
}

Path& Path::bezier(Pair start, std::initializer_list<Pair> three_each, unsigned flag)
{
    auto* out =
        static_cast<GGO_Vector*>(edge(start, GPA_EDGE_BEZIER, flag, three_each.size() / 3, sizeof(GPA_BezierSegment)));
    for (const Pair pair : three_each)
        *out++ = vector_of(pair);
    return *this;
}

Path& Path::quad(Pair start, std::initializer_list<Pair> two_each, unsigned flag)
{
    auto* out = static_cast<GGO_Vector*>(
        edge(start, GPA_EDGE_QUAD_BEZIER, flag, two_each.size() / 2, sizeof(GPA_QuadBezierSegment)));
    for (const Pair pair : two_each)
        *out++ = vector_of(pair);
    return *this;
}

Path& Path::staircase(Pair start, bool y_positive, std::initializer_list<GPA_StaircaseSegment> segments, unsigned flag)
{
    auto* out = static_cast<GPA_StaircaseSegment*>(
        edge(start, GPA_EDGE_STAIRCASE, flag, segments.size(), sizeof(GPA_StaircaseSegment)));
    const uint32_t positive = y_positive ? 1 : 0;
    std::memcpy(reinterpret_cast<uint8_t*>(edges_.back().data()) + 4, &positive, 4);
    for (const GPA_StaircaseSegment segment : segments)
        *out++ = segment;
    return *this;
}

Path& Path::ellipse(Pair start, std::initializer_list<GPA_EllipticalSegment> segments, unsigned flag)
{
    auto* out = static_cast<GPA_EllipticalSegment*>(
        edge(start, GPA_EDGE_ELLIPTICAL, flag, segments.size(), sizeof(GPA_EllipticalSegment)));
    for (const GPA_EllipticalSegment& segment : segments)
        *out++ = segment;
    return *this;
}

Path& Path::box(double x0, double y0, double x1, double y1)
{
    return straight({x0, y0}, {{x1 - x0, 0}, {0, y1 - y0}, {x0 - x1, 0}});
}

Path& Path::unknown_edge(Pair start)
{
    edge(start, 9, GPA_SUBPATH_END_OPEN, 0, 1);
    return *this;
}

const GPA_PathPointer* Path::record()
{
    path_ = block(offsetof(GPA_Path, pa_EdgeStart) + starts_.size() * sizeof(GGO_Point));
    pointer_ = block(offsetof(GPA_PathPointer, lpp_EdgePointer) + edges_.size() * sizeof(GPA_EdgePointer));
    auto* path = reinterpret_cast<GPA_Path*>(path_.data());
    auto* pointer = reinterpret_cast<GPA_PathPointer*>(pointer_.data());
    path->pa_NumEdges = static_cast<uint32_t>(edges_.size());
    pointer->lpp_Path = path;
    GGO_Point* starts = &path->pa_EdgeStart[0];
    GPA_EdgePointer* edges = &pointer->lpp_EdgePointer[0];
    for (size_t i = 0; i < edges_.size(); ++i)
    {
        starts[i] = point_of(starts_[i]);
        edges[i] = {reinterpret_cast<const GPA_Edge*>(edges_[i].data()), 0};
    }
    return pointer;
}

template <typename Head> Shape Shape::with_head(uint16_t kind, GGO_Matrix transform, size_t bytes)
{
    Shape shape;
    shape.head_ = std::make_shared<std::vector<uint64_t>>(block(bytes));
    auto* head = reinterpret_cast<GSH_Shape*>(shape.head_->data());
    head->sh_ShapeType = kind;
    head->sh_Transform = transform;
    shape.pointer_.sp_HeaderPtr = head;
    return shape;
}

template <typename Head> Head& Shape::head()
{
    return *reinterpret_cast<Head*>(head_->data());
}

Shape Shape::fill(Path path, GGO_Matrix transform, uint32_t rule)
{
    Shape shape = with_head<GSH_FilledPathShape>(GSH_SHAPE_FILL, transform);
    shape.head<GSH_FilledPathShape>().fps_WindingRule = rule;
    shape.path_ = std::make_shared<Path>(std::move(path));
    shape.pointer_.sp_U.filled_path = shape.path_->record();
    return shape;
}

Shape Shape::stroke(Path path, const GPA_PathStrokingParams& params, GGO_Matrix transform,
                    std::initializer_list<float> dashes)
{
    Shape shape =
        with_head<GSH_StrokedPathShape>(GSH_SHAPE_STROKE, transform, sizeof(GSH_StrokedPathShape) + 4 * dashes.size());
    GPA_PathStrokingParams& out = shape.head<GSH_StrokedPathShape>().sps_StrokingParams;
    out = params;
    out.psp_DashCount = static_cast<uint16_t>(dashes.size());
    float* lengths = &out.psp_DashLength[0];
    for (const float length : dashes)
        *lengths++ = length;
    shape.path_ = std::make_shared<Path>(std::move(path));
    shape.pointer_.sp_U.stroked_path = shape.path_->record();
    return shape;
}

Shape Shape::box(double x0, double y0, double x1, double y1)
{
    return fill(Path().box(x0, y0, x1, y1));
}

Shape Shape::image_rect(uint32_t width, uint32_t height, GGO_Matrix transform)
{
    Shape shape = with_head<GSH_ImageRectShape>(GSH_SHAPE_IMAGE_RECT, transform);
    shape.head<GSH_ImageRectShape>().irs_ImageWidth = width;
    shape.head<GSH_ImageRectShape>().irs_ImageHeight = height;
    return shape;
}

Shape Shape::multi_rect(std::initializer_list<GGO_BoxInt> boxes, GGO_Matrix transform)
{
    Shape shape = with_head<GSH_MultiRectShape>(GSH_SHAPE_MULTI_RECT, transform,
                                                sizeof(GSH_MultiRectShape) + boxes.size() * sizeof(GGO_BoxInt));
    auto& head = shape.head<GSH_MultiRectShape>();
    head.mrs_RectCount = static_cast<uint32_t>(boxes.size());
    GGO_BoxInt* out = &head.mrs_Rect[0];
    for (const GGO_BoxInt& box : boxes)
        *out++ = box;
    return shape;
}

Shape Shape::scanline(int32_t start_y, std::initializer_list<GSH_XLimits> rows, GGO_Matrix transform)
{
    Shape shape = with_head<GSH_ScanlineShape>(GSH_SHAPE_SCANLINE, transform,
                                               sizeof(GSH_ScanlineShape) + rows.size() * sizeof(GSH_XLimits));
    auto& head = shape.head<GSH_ScanlineShape>();
    head.ss_StartY = start_y;
    head.ss_Height = static_cast<uint32_t>(rows.size());
    GSH_XLimits* out = &head.ss_XLimits[0];
    for (const GSH_XLimits& row : rows)
        *out++ = row;
    return shape;
}

Shape Shape::text(const GFI_FontSpecPointer* font, const GFI_StringDescPointer* string, GGO_Matrix transform)
{
    Shape shape = with_head<GSH_GlyphShape>(GSH_SHAPE_GLYPHS, transform);
    shape.pointer_.sp_U.glyph.font_spec_ptr = font;
    shape.pointer_.sp_U.glyph.string_desc = string;
    return shape;
}

Shape Shape::stroked_text(const GFI_FontSpecPointer* font, const GFI_StringDescPointer* string,
                          const GPA_PathStrokingParams& params, GGO_Matrix pen, GGO_Matrix transform)
{
    Shape shape = with_head<GSH_StrokedGlyphShape>(GSH_SHAPE_STROKE_GLYPHS, transform);
    shape.head<GSH_StrokedGlyphShape>().sgs_StrokingTransform = pen;
    shape.head<GSH_StrokedGlyphShape>().sgs_StrokingParams = params;
    shape.pointer_.sp_U.glyph.font_spec_ptr = font;
    shape.pointer_.sp_U.glyph.string_desc = string;
    return shape;
}

Shape Shape::of_kind(uint16_t kind)
{
    return with_head<GSH_Shape>(kind, kUnit);
}

GPA_PathStrokingParams stroke_params(float width, unsigned cap, unsigned join, float miter_limit)
{
    GPA_PathStrokingParams params{};
    params.psp_Flags = static_cast<uint16_t>(cap | cap << 4 | join << 8);
    params.psp_DashCaps = static_cast<uint8_t>(cap);
    params.psp_StrokeWidth = width;
    params.psp_MiterLimit = miter_limit;
    return params;
}

Clips& Clips::inside(Shape shape)
{
    entries_.push_back({std::move(shape), true, false, false});
    return *this;
}

Clips& Clips::outside(Shape shape)
{
    entries_.push_back({std::move(shape), false, false, false});
    return *this;
}

Clips& Clips::united_with(Shape shape)
{
    entries_.push_back({std::move(shape), true, true, false});
    return *this;
}

Clips& Clips::end_here()
{
    entries_.back().last = true;
    return *this;
}

const GSH_ShapeList* Clips::record()
{
    lists_.clear();
    GSH_ShapeList* own = nullptr;
    GSH_ShapeList* last = nullptr;
    for (const Entry& entry : entries_)
    {
        lists_.push_back(std::make_shared<GSH_ShapeList>());
        GSH_ShapeList* list = lists_.back().get();
        list->sl_ClipIn = entry.inside ? 1 : 0;
        list->sl_Hints = entry.last ? GSH_SLH_IGNORE_REST_OF_LIST : GSH_SLH_NONE;
        list->sl_Shape = *entry.shape.record();
        if (entry.partner)
            last->sl_Collection = list;
        else if (own != nullptr)
            own->sl_Next = list;
        own = entry.partner ? own : list;
        last = list;
    }
    return lists_.empty() ? nullptr : lists_.front().get();
}

Colour::Colour(std::initializer_list<float> values, bool has_alpha)
    : bytes_(block(offsetof(GBC_Color, channels) + values.size() * 4 + sizeof(GBC_Color)))
{
    auto* colour = reinterpret_cast<GBC_Color*>(bytes_.data());
    *colour = {static_cast<uint16_t>(values.size()), 32, static_cast<uint8_t>(has_alpha ? 1 : 0), 0, {{0.0F}}};
    float* out = &colour->channels.as_float[0];
    for (const float value : values)
        *out++ = value;
}

Colour Colour::words(std::initializer_list<uint16_t> values, uint8_t bits, bool has_alpha)
{
    Colour result;
    result.bytes_ = block(offsetof(GBC_Color, channels) + values.size() * 2 + sizeof(GBC_Color));
    auto* colour = reinterpret_cast<GBC_Color*>(result.bytes_.data());
    *colour = {static_cast<uint16_t>(values.size()), bits, static_cast<uint8_t>(has_alpha ? 1 : 0), 0, {{0.0F}}};
    uint16_t* out = &colour->channels.as_uint16[0];
    for (const uint16_t value : values)
        *out++ = value;
    return result;
}

const GBC_Color& Colour::record() const
{
    return *reinterpret_cast<const GBC_Color*>(bytes_.data());
}

Operand Operand::with(size_t head_bytes, size_t pointer_bytes, uint8_t type, uint16_t family, uint16_t count)
{
    head_ = std::make_shared<std::vector<uint64_t>>(block(head_bytes));
    pointer_ = std::make_shared<std::vector<uint64_t>>(block(pointer_bytes));
    head<GOP_Operand>() = {type, GOP_COLOR_INFO(GOP_OCS_INPUT, GCM_CF_OTHER), count, 0, family};
    pointer<GOP_OperandPointer>().op_Operand = &head<GOP_Operand>();
    return *this;
}

template <typename Record> Record& Operand::head()
{
    return *reinterpret_cast<Record*>(head_->data());
}

template <typename Record> Record& Operand::pointer()
{
    return *reinterpret_cast<Record*>(pointer_->data());
}

const GBC_Color* Operand::keep(const Colour& colour)
{
    const size_t bytes = offsetof(GBC_Color, channels) + size_t{colour.record().num_chans} * 4 + sizeof(GBC_Color);
    kept_.push_back(std::make_shared<std::vector<uint64_t>>(block(bytes)));
    const size_t used =
        offsetof(GBC_Color, channels) + size_t{colour.record().num_chans} * (colour.record().bit_depth == 32 ? 4 : 2);
    std::memcpy(kept_.back()->data(), &colour.record(), used);
    return reinterpret_cast<const GBC_Color*>(kept_.back()->data());
}

const GOP_GradStop* Operand::keep(const Stop& stop)
{
    const GBC_Color& colour = stop.colour.record();
    const size_t channels = size_t{colour.num_chans} * 4;
    kept_.push_back(std::make_shared<std::vector<uint64_t>>(block(sizeof(GOP_GradStop) + channels)));
    auto* out = reinterpret_cast<uint8_t*>(kept_.back()->data());
    std::memcpy(out, &stop.position, sizeof stop.position);
    std::memcpy(out + offsetof(GOP_GradStop, gs_StopColor), &colour, offsetof(GBC_Color, channels) + channels);
    return reinterpret_cast<const GOP_GradStop*>(out);
}

Operand Operand::flat(uint16_t family, const Colour& colour)
{
    Operand operand;
    const size_t channels = size_t{colour.record().num_chans} * (colour.record().bit_depth == 32 ? 4 : 2);
    operand.with(sizeof(GOP_OperandFlat) + channels, sizeof(GOP_OperandFlatPointer), GOP_OPERAND_FLAT, family, 0);
    std::memcpy(&operand.head<GOP_OperandFlat>().fl_Color, &colour.record(), offsetof(GBC_Color, channels) + channels);
    return operand;
}

Operand Operand::gray(float value)
{
    return flat(GCM_CSF_GRAY, Colour({value}));
}

Operand Operand::rgb(float red, float green, float blue)
{
    return flat(GCM_CSF_RGB, Colour({red, green, blue}));
}

Operand Operand::rgba(float red, float green, float blue, float alpha)
{
    return flat(GCM_CSF_RGB, Colour({alpha, red, green, blue}, true));
}

Operand Operand::cmyk(float cyan, float magenta, float yellow, float black)
{
    return flat(GCM_CSF_CMYK, Colour({cyan, magenta, yellow, black}));
}

Operand Operand::two_point(uint16_t family, Pair from, Pair to, const Colour& one, const Colour& other, uint8_t extend)
{
    Operand operand;
    operand.with(sizeof(GOP_OperandGrad2Pt), sizeof(GOP_OperandGrad2PtPointer), GOP_OPERAND_GRAD_2PT, family, 2);
    auto& head = operand.head<GOP_OperandGrad2Pt>();
    head.g2_Transform = kUnit;
    head.g2_Pt1 = point_of(from);
    head.g2_Pt2 = point_of(to);
    head.g2_GradientExtendMode = extend;
    operand.pointer<GOP_OperandGrad2PtPointer>().g2p_Color1 = operand.keep(one);
    operand.pointer<GOP_OperandGrad2PtPointer>().g2p_Color2 = operand.keep(other);
    return operand;
}

Operand Operand::multistop(uint16_t family, Pair from, Pair to, std::vector<Stop> stops, uint8_t extend)
{
    Operand operand;
    operand.with(sizeof(GOP_OperandGradMultistop), sizeof(GOP_OperandGradMultistopPointer) + stops.size() * 8,
                 GOP_OPERAND_GRAD_MULTISTOP, family, static_cast<uint16_t>(stops.size()));
    auto& head = operand.head<GOP_OperandGradMultistop>();
    head.gm_Transform = kUnit;
    head.gm_Pt1 = point_of(from);
    head.gm_Pt2 = point_of(to);
    head.gm_GradientExtendMode = extend;
    const GOP_GradStop** out = &operand.pointer<GOP_OperandGradMultistopPointer>().gmp_GradStop[0];
    for (const Stop& stop : stops)
        *out++ = operand.keep(stop);
    return operand;
}

Operand Operand::radial(uint16_t family, Pair center1, double radius1, Pair center2, double radius2,
                        std::vector<Stop> stops, uint8_t extend)
{
    Operand operand;
    operand.with(sizeof(GOP_OperandGradRadial), sizeof(GOP_OperandGradRadialPointer) + stops.size() * 8,
                 GOP_OPERAND_GRAD_RADIAL, family, static_cast<uint16_t>(stops.size()));
    auto& head = operand.head<GOP_OperandGradRadial>();
    head.gr_Transform = kUnit;
    head.gr_Center1 = point_of(center1);
    head.gr_Radius1 = radius1;
    head.gr_Center2 = point_of(center2);
    head.gr_Radius2 = radius2;
    head.gr_GradientExtendMode = extend;
    const GOP_GradStop** out = &operand.pointer<GOP_OperandGradRadialPointer>().grp_GradStop[0];
    for (const Stop& stop : stops)
        *out++ = operand.keep(stop);
    return operand;
}

Operand Operand::three_point(uint16_t family, std::initializer_list<Pair> corners, std::vector<Colour> colours)
{
    Operand operand;
    operand.with(sizeof(GOP_OperandGrad3Pt), sizeof(GOP_OperandGrad3PtPointer), GOP_OPERAND_GRAD_3PT, family, 3);
    auto& head = operand.head<GOP_OperandGrad3Pt>();
    head.g3_Transform = kUnit;
    const Pair* corner = corners.begin();
    head.g3_Pt1 = point_of(corner[0]);
    head.g3_Pt2 = point_of(corner[1]);
    head.g3_Pt3 = point_of(corner[2]);
    for (size_t i = 0; i < 3; ++i)
        operand.pointer<GOP_OperandGrad3PtPointer>().g3p_Color[i] = operand.keep(colours[i]);
    return operand;
}

Operand Operand::in_space(const GCM_CsdPointer& csd) const
{
    Operand operand = *this;
    operand.head<GOP_Operand>().go_ColorInfo = GOP_COLOR_INFO(GOP_OCS_OTHER, GCM_CF_OTHER);
    operand.pointer<GOP_OperandPointer>().op_Csd = csd;
    return operand;
}

GOP_OperandPointer* Operand::record() const
{
    return reinterpret_cast<GOP_OperandPointer*>(pointer_->data());
}

GOP_Operator operation(uint32_t type, uint16_t number, uint32_t mask_mode)
{
    GOP_Operator op{};
    op.op_OperatorType = type;
    op.op_Operator = number;
    op.op_MaskMode = mask_mode;
    return op;
}

}  // namespace orvlog::records
