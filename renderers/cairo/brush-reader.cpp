#include "renderers/cairo/brush-reader.h"

#include "renderers/cairo/matrix.h"

#include <algorithm>
#include <array>
#include <cmath>

namespace orvlog::cairo_renderer
{
namespace
{

constexpr unsigned kStepsBetweenStops = 32;

enum
{
    extends_start = 1,
    extends_end = 2
};

struct Stop
{
    double position = 0.0;
    Colour colour;
};

FlatBrush to_flat(const Colour& colour, const ColourSpace& space, BrushUse use)
{
    std::vector<float> values = colour.values;
    values.resize(std::max<size_t>(values.size(), space.channels()), 0.0F);
    const Rgb rgb = space.convert(values.data());
    if (use == BrushUse::mask)
        return {0.0, 0.0, 0.0, luminance(rgb) * colour.alpha};
    return {rgb.red, rgb.green, rgb.blue, colour.alpha};
}

void add_stop(cairo_pattern_t* pattern, double position, const FlatBrush& flat)
{
    cairo_pattern_add_color_stop_rgba(pattern, position, flat.red, flat.green, flat.blue, flat.alpha);
}

Colour mix(const Colour& one, const Colour& other, double share)
{
    Colour mixed = one;
    mixed.alpha += (other.alpha - one.alpha) * share;
    for (size_t i = 0; i < std::min(mixed.values.size(), other.values.size()); ++i)
        mixed.values[i] += static_cast<float>((other.values[i] - one.values[i]) * share);
    return mixed;
}

// Gray and RGB blend alike in their own space and in Cairo's; other spaces get stops in between.
void add_stops(cairo_pattern_t* pattern, const std::vector<Stop>& stops, const ColourSpace& space, BrushUse use)
{
    const bool straight = space.channels() == 1 || space.channels() == 3;
    for (size_t i = 0; i < stops.size(); ++i)
    {
        add_stop(pattern, stops[i].position, to_flat(stops[i].colour, space, use));
        if (straight || i + 1 == stops.size() || !(stops[i + 1].position > stops[i].position))
            continue;
        for (unsigned step = 1; step < kStepsBetweenStops; ++step)
        {
            const double share = static_cast<double>(step) / kStepsBetweenStops;
            add_stop(pattern, stops[i].position + (stops[i + 1].position - stops[i].position) * share,
                     to_flat(mix(stops[i].colour, stops[i + 1].colour, share), space, use));
        }
    }
}

// Cairo extends at both ends or at none: an end that doesn't extend gets a clear stop.
Brush finish_gradient(cairo_pattern_t* made, std::vector<Stop> stops, const ColourSpace& space, BrushUse use,
                      unsigned extend, const GGO_Matrix& transform)
{
    PatternPtr pattern = own_pattern(made);
    for (Stop& stop : stops)
        stop.position = stop.position > 0.0 ? std::min(stop.position, 1.0) : 0.0;
    std::stable_sort(stops.begin(), stops.end(),
                     [](const Stop& one, const Stop& other) { return one.position < other.position; });
    if (stops.empty())
        return std::monostate{};
    const FlatBrush clear{0.0, 0.0, 0.0, 0.0};
    const bool both = (extend & 3U) == (extends_start | extends_end);
    if ((extend & 3U) == extends_end)
        add_stop(made, 0.0, clear);
    if ((extend & 3U) == extends_end && stops.front().position > 0.0)
        add_stop(made, 0.0, to_flat(stops.front().colour, space, use));
    add_stops(made, stops, space, use);
    if ((extend & 3U) == extends_start && stops.back().position < 1.0)
        add_stop(made, 1.0, to_flat(stops.back().colour, space, use));
    if ((extend & 3U) == extends_start)
        add_stop(made, 1.0, clear);
    cairo_pattern_set_extend(made, both || (extend & 3U) != 0 ? CAIRO_EXTEND_PAD : CAIRO_EXTEND_NONE);
    return PatternBrush{pattern, matrix_of(transform)};
}

uint32_t base_channels(const GBC_Color& colour)
{
    const uint32_t alpha = colour.has_alpha != 0 ? 1U : 0U;
    return colour.num_chans > alpha ? colour.num_chans - alpha : 0U;
}

std::shared_ptr<const ColourSpace> space_of(const GOP_OperandPointer& operand, const GBC_Color& colour,
                                            const BrushContext& context)
{
    return context.spaces.find(*operand.op_Operand, &operand.op_Csd, base_channels(colour));
}

// The value of channel 0 is the mask, whatever the space.
Brush read_flat_mask(const GBC_Color& colour)
{
    const Colour read = read_colour(colour);
    if (colour.has_alpha != 0)
        return FlatBrush{0.0, 0.0, 0.0, read.alpha};
    const double value = read.values.empty() ? 1.0 : std::clamp(static_cast<double>(read.values[0]), 0.0, 1.0);
    return FlatBrush{0.0, 0.0, 0.0, value};
}

Brush read_flat(const GOP_OperandPointer& operand, BrushUse use, const BrushContext& context)
{
    const void* head = operand.op_Operand;
    const GBC_Color& colour = static_cast<const GOP_OperandFlat*>(head)->fl_Color;
    if (use == BrushUse::mask)
        return read_flat_mask(colour);
    return to_flat(read_colour(colour), *space_of(operand, colour, context), use);
}

Brush read_two_point(const GOP_OperandPointer& operand, BrushUse use, const BrushContext& context)
{
    const void* record = &operand;
    const void* head = operand.op_Operand;
    const auto& pointer = *static_cast<const GOP_OperandGrad2PtPointer*>(record);
    const auto& gradient = *static_cast<const GOP_OperandGrad2Pt*>(head);
    if (pointer.g2p_Color1 == nullptr || pointer.g2p_Color2 == nullptr)
        return std::monostate{};
    const auto space = space_of(operand, *pointer.g2p_Color1, context);
    return finish_gradient(cairo_pattern_create_linear(gradient.g2_Pt1.gpf_X, gradient.g2_Pt1.gpf_Y,
                                                       gradient.g2_Pt2.gpf_X, gradient.g2_Pt2.gpf_Y),
                           {{0.0, read_colour(*pointer.g2p_Color1)}, {1.0, read_colour(*pointer.g2p_Color2)}}, *space,
                           use, gradient.g2_GradientExtendMode, gradient.g2_Transform);
}

std::vector<Stop> read_stops(const GOP_GradStop* const* stops, uint32_t count)
{
    std::vector<Stop> result;
    for (uint32_t i = 0; i < count; ++i)
        if (stops[i] != nullptr && std::isfinite(stops[i]->gs_StopPosn))
            result.push_back({stops[i]->gs_StopPosn, read_colour(stops[i]->gs_StopColor)});
    return result;
}

const GOP_GradStop* first_stop(const GOP_GradStop* const* stops, uint32_t count)
{
    const auto* end = stops + count;
    const auto* found = std::find_if(stops, end, [](const GOP_GradStop* stop) { return stop != nullptr; });
    return found == end ? nullptr : *found;
}

Brush read_multistop(const GOP_OperandPointer& operand, BrushUse use, const BrushContext& context)
{
    const void* record = &operand;
    const void* head = operand.op_Operand;
    const GOP_GradStop* const* stops = &static_cast<const GOP_OperandGradMultistopPointer*>(record)->gmp_GradStop[0];
    const auto& gradient = *static_cast<const GOP_OperandGradMultistop*>(head);
    const uint32_t count = operand.op_Operand->go_Count;
    const GOP_GradStop* first = first_stop(stops, count);
    if (first == nullptr)
        return std::monostate{};
    return finish_gradient(cairo_pattern_create_linear(gradient.gm_Pt1.gpf_X, gradient.gm_Pt1.gpf_Y,
                                                       gradient.gm_Pt2.gpf_X, gradient.gm_Pt2.gpf_Y),
                           read_stops(stops, count), *space_of(operand, first->gs_StopColor, context), use,
                           gradient.gm_GradientExtendMode, gradient.gm_Transform);
}

Brush read_radial(const GOP_OperandPointer& operand, BrushUse use, const BrushContext& context)
{
    const void* record = &operand;
    const void* head = operand.op_Operand;
    const GOP_GradStop* const* stops = &static_cast<const GOP_OperandGradRadialPointer*>(record)->grp_GradStop[0];
    const auto& gradient = *static_cast<const GOP_OperandGradRadial*>(head);
    const uint32_t count = operand.op_Operand->go_Count;
    const GOP_GradStop* first = first_stop(stops, count);
    if (first == nullptr)
        return std::monostate{};
    return finish_gradient(cairo_pattern_create_radial(gradient.gr_Center1.gpf_X, gradient.gr_Center1.gpf_Y,
                                                       std::fabs(gradient.gr_Radius1), gradient.gr_Center2.gpf_X,
                                                       gradient.gr_Center2.gpf_Y, std::fabs(gradient.gr_Radius2)),
                           read_stops(stops, count), *space_of(operand, first->gs_StopColor, context), use,
                           gradient.gr_GradientExtendMode, gradient.gr_Transform);
}

Brush read_three_point(const GOP_OperandPointer& operand, BrushUse use, const BrushContext& context)
{
    const void* record = &operand;
    const void* head = operand.op_Operand;
    const auto& pointer = *static_cast<const GOP_OperandGrad3PtPointer*>(record);
    const auto& gradient = *static_cast<const GOP_OperandGrad3Pt*>(head);
    const std::array<GGO_Point, 3> corners{gradient.g3_Pt1, gradient.g3_Pt2, gradient.g3_Pt3};
    for (const GBC_Color* colour : pointer.g3p_Color)
        if (colour == nullptr)
            return std::monostate{};
    const auto space = space_of(operand, *pointer.g3p_Color[0], context);
    cairo_pattern_t* mesh = cairo_pattern_create_mesh();
    PatternPtr pattern = own_pattern(mesh);
    cairo_mesh_pattern_begin_patch(mesh);
    cairo_mesh_pattern_move_to(mesh, corners[0].gpf_X, corners[0].gpf_Y);
    cairo_mesh_pattern_line_to(mesh, corners[1].gpf_X, corners[1].gpf_Y);
    cairo_mesh_pattern_line_to(mesh, corners[2].gpf_X, corners[2].gpf_Y);
    for (unsigned i = 0; i < 3; ++i)
    {
        const FlatBrush flat = to_flat(read_colour(*pointer.g3p_Color[i]), *space, use);
        cairo_mesh_pattern_set_corner_color_rgba(mesh, i, flat.red, flat.green, flat.blue, flat.alpha);
    }
    cairo_mesh_pattern_end_patch(mesh);
    return PatternBrush{pattern, matrix_of(gradient.g3_Transform)};
}

Brush read_image(GOP_OperandImagePointer* record, BrushUse use, const BrushContext& context)
{
    auto image = std::make_shared<Image>();
    image->pixels_to_content = identity();
    if (context.kept != nullptr && context.kept->keep(record, use, context.object_type, image))
        return ImageBrush{image};
    pull_image(record, use, context.object_type, context.spaces, context.complaints, context.window, *image);
    if (context.store != nullptr)
        context.store->put_away(*image);
    return ImageBrush{image};
}

constexpr std::array<cairo_operator_t, 13> kPorterDuff{
    CAIRO_OPERATOR_CLEAR,     CAIRO_OPERATOR_SOURCE, CAIRO_OPERATOR_DEST,      CAIRO_OPERATOR_OVER,
    CAIRO_OPERATOR_DEST_OVER, CAIRO_OPERATOR_IN,     CAIRO_OPERATOR_DEST_IN,   CAIRO_OPERATOR_OUT,
    CAIRO_OPERATOR_DEST_OUT,  CAIRO_OPERATOR_ATOP,   CAIRO_OPERATOR_DEST_ATOP, CAIRO_OPERATOR_XOR,
    CAIRO_OPERATOR_ADD};

constexpr std::array<cairo_operator_t, 12> kSeparable{
    CAIRO_OPERATOR_OVER,       CAIRO_OPERATOR_MULTIPLY,   CAIRO_OPERATOR_SCREEN,      CAIRO_OPERATOR_OVERLAY,
    CAIRO_OPERATOR_DARKEN,     CAIRO_OPERATOR_LIGHTEN,    CAIRO_OPERATOR_COLOR_DODGE, CAIRO_OPERATOR_COLOR_BURN,
    CAIRO_OPERATOR_HARD_LIGHT, CAIRO_OPERATOR_SOFT_LIGHT, CAIRO_OPERATOR_DIFFERENCE,  CAIRO_OPERATOR_EXCLUSION};

constexpr std::array<cairo_operator_t, 4> kNonseparable{CAIRO_OPERATOR_HSL_HUE, CAIRO_OPERATOR_HSL_SATURATION,
                                                        CAIRO_OPERATOR_HSL_COLOR, CAIRO_OPERATOR_HSL_LUMINOSITY};

// The operations of the operating system's tables that copy the source, or leave all as it is.
cairo_operator_t raster_operator(uint32_t family, uint32_t number, Complaints& complaints)
{
    const bool two = family == GOP_ROP_ROP2_GDI;
    const uint32_t code = two ? number : number & 0xFFU;
    if (code == (two ? 11U : 0xAAU))
        return CAIRO_OPERATOR_DEST;
    if (code != (two ? 13U : 0xCCU) && code != (two ? 13U : 0xF0U))
        complaints.say_once("raster operations other than copies are painted as copies");
    return CAIRO_OPERATOR_OVER;
}

template <size_t count>
cairo_operator_t pick(const std::array<cairo_operator_t, count>& table, uint32_t number, Complaints& complaints)
{
    if (number < count)
        return table[number];
    complaints.say_once("operators of unknown number are painted as source over");
    return CAIRO_OPERATOR_OVER;
}

cairo_operator_t cairo_operator_of(const GOP_Operator& op, Complaints& complaints)
{
    switch (op.op_OperatorType)
    {
    case GOP_ROP_PORTER_DUFF:
        return pick(kPorterDuff, op.op_Operator, complaints);
    case GOP_ROP_PDF_SEPARABLE:
        return pick(kSeparable, op.op_Operator, complaints);
    case GOP_ROP_PDF_NONSEPARABLE:
        return pick(kNonseparable, op.op_Operator, complaints);
    case GOP_ROP_ROP2_GDI:
    case GOP_ROP_ROP3:
    case GOP_ROP_ROP4:
        return raster_operator(op.op_OperatorType, op.op_Operator, complaints);
    case GOP_ROP_ARITHMETIC:
        complaints.say_once("arithmetic operators are painted as source over");
        return CAIRO_OPERATOR_OVER;
    case GOP_ROP_IMAGE_PROCESSING:
        complaints.say_once("image processing operators are painted as source over");
        return CAIRO_OPERATOR_OVER;
    default:
        complaints.say_once("operators of the client's own or of unknown kind are painted as source over");
        return CAIRO_OPERATOR_OVER;
    }
}

void name_what_is_lost(const GOP_Operator& op, cairo_operator_t cairo_operator, Complaints& complaints)
{
    if (op.op_TransparencyType != GOP_TRANS_NONE)
        complaints.say_once("transparency types of operators are not looked at");
    if ((op.op_TransparencyFlags & GOP_TRANS_FLAG_ALPHA_IS_SHAPE) != 0 && cairo_operator != CAIRO_OPERATOR_OVER)
        complaints.say_once("alpha that is shape is painted as opacity");
    if (op.op_BitmapTransferFn != nullptr || op.op_ColorTransferFn != nullptr)
        complaints.say_once("transfer functions of operators are not called");
}

// A mask of single bits says where there is something, not how much of it.
bool is_stencil(const GOP_OperandPointer& operand)
{
    const GOP_Operand* head = operand.op_Operand;
    if (head == nullptr || head->go_OpType != GOP_OPERAND_IMAGE || head->go_Count != GNC_BMP_DEPTH_1 ||
        head->go_ColorSpaceFamily != GCM_CSF_GRAY)
        return false;
    const void* record = head;
    const uint32_t more = GOP_OP_FLAGS_HAS_ALPHA | GOP_OP_FLAGS_HAS_CONSTANT_ALPHA | GOP_OP_FLAGS_IS_INDEXED_COLOR;
    return (static_cast<const GOP_OperandImage*>(record)->im_Flags & more) == 0;
}

}  // namespace

bool KeptImages::keep(GOP_OperandImagePointer* record, BrushUse use, uint32_t object_type,
                      const std::shared_ptr<Image>& image)
{
    if (!keep_image(record))
        return false;
    kept_.push_back({record, use, object_type, image});
    return true;
}

void KeptImages::pull_all(ColourSpaces& spaces, Complaints& complaints, ImageStore& store)
{
    for (const Kept& kept : kept_)
    {
        pull_image(kept.record, kept.use, kept.object_type, spaces, complaints, nullptr, *kept.image);
        release_image(kept.record);
        store.put_away(*kept.image);
    }
    kept_.clear();
}

void KeptImages::release_all()
{
    for (const Kept& kept : kept_)
        release_image(kept.record);
    kept_.clear();
}

Brush read_brush(GOP_OperandPointer* operand, BrushUse use, const BrushContext& context)
{
    if (operand == nullptr || operand->op_Operand == nullptr)
        return std::monostate{};
    void* record = operand;
    switch (operand->op_Operand->go_OpType)
    {
    case GOP_OPERAND_FLAT:
        return read_flat(*operand, use, context);
    case GOP_OPERAND_GRAD_2PT:
        return read_two_point(*operand, use, context);
    case GOP_OPERAND_GRAD_MULTISTOP:
        return read_multistop(*operand, use, context);
    case GOP_OPERAND_GRAD_3PT:
        return read_three_point(*operand, use, context);
    case GOP_OPERAND_GRAD_RADIAL:
        return read_radial(*operand, use, context);
    case GOP_OPERAND_IMAGE:
    case GOP_OPERAND_IMAGE_TILE:
        return read_image(static_cast<GOP_OperandImagePointer*>(record), use, context);
    default:
        context.complaints.say_once("operands of unknown kind are left out");
        return std::monostate{};
    }
}

bool read_operator(const GOP_Operator* op, GOP_OperandPointer* operand2, const BrushContext& context, Compose& compose)
{
    compose = Compose{};
    if (op == nullptr)
        return true;
    compose.op = cairo_operator_of(*op, context.complaints);
    name_what_is_lost(*op, compose.op, context.complaints);
    const bool alpha_is_shape = (op->op_TransparencyFlags & GOP_TRANS_FLAG_ALPHA_IS_SHAPE) != 0;
    compose.alpha_is_shape = alpha_is_shape && compose.op == CAIRO_OPERATOR_OVER;
    if (op->op_MaskMode == GOP_ATTRIBUTE_MASK || op->op_MaskMode > GOP_ATTRIBUTE_MASK)
        context.complaints.say_once("attribute masks are not applied");
    else if (op->op_MaskMode != GOP_MASK_NONE && operand2 != nullptr)
    {
        compose.mask = read_brush(operand2, BrushUse::mask, context);
        compose.mask_mode = op->op_MaskMode == GOP_MASK_IN ? MaskMode::in : MaskMode::out;
        compose.mask_is_shape = alpha_is_shape || is_stencil(*operand2);
    }
    return compose.op != CAIRO_OPERATOR_DEST;
}

}  // namespace orvlog::cairo_renderer
