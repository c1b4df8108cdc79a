#include "reader/records/records.h"

#include "reader/tree/values.h"

#include <algorithm>

namespace orvlog::reader
{

namespace
{

size_t channel_count(const Element& color)
{
    return read_uint(color, "num_chans") & UINT16_MAX;
}

const Element* held_color(const Element* member)
{
    return member != nullptr ? member->child("GBC_Color") : nullptr;
}

size_t channel_bytes(const Element* color)
{
    return color != nullptr ? channel_count(*color) * sizeof(float) : 0;
}

uint8_t read_byte(const Element& element, std::string_view name)
{
    return static_cast<uint8_t>(read_uint(element, name));
}

}  // namespace

void RecordReader::read_color(const Element& element, GBC_Color* color)
{
    color->bit_depth = read_byte(element, "bit_depth");
    color->num_chans = static_cast<uint16_t>(channel_count(element));
    color->has_alpha = static_cast<uint8_t>(read_bool(element, "has_alpha"));
    color->empty_chans = read_uint(element, "empty_chans");
    std::string values(element.value("alpha"));
    values.append(" ").append(element.value("base_n"));
    size_t to = 0;
    if (color->bit_depth == 32)
    {
        for (const float value : to_floats(values))
        {
            if (to < color->num_chans)
                (&color->channels.as_float[0])[to++] = value;
        }
        return;
    }
    for (const uint32_t value : to_uints(values))
    {
        if (to < color->num_chans)
            (&color->channels.as_uint16[0])[to++] = static_cast<uint16_t>(value);
    }
}

const GBC_Color* RecordReader::color(const Element* element)
{
    if (element == nullptr || element->name != "GBC_Color")
        return nullptr;
    auto* record = arena_.make<GBC_Color>(channel_bytes(element));
    read_color(*element, record);
    return record;
}

void RecordReader::read_head(const Element& element, GOP_Operand* head)
{
    head->go_OpType = static_cast<uint8_t>(read_enum(element, "go_OpType"));
    // A flag of 3 goes by the name that stands behind the others.
    const std::string_view flag = element.value("go_ColorInfo.GCM_ColorFlag");
    head->go_ColorInfo = element.has("go_ColorInfo")
                             ? read_byte(element, "go_ColorInfo")
                             : GOP_COLOR_INFO(read_enum(element, "go_ColorInfo.GOP_OperandColorSpace") & 3,
                                              (flag == "GCM_WHITEPOINT_D65" ? 3 : to_enum(flag)) & 3);
    head->go_Count = static_cast<uint16_t>(read_uint(element, "go_Count"));
    head->go_Hints = static_cast<uint16_t>(read_flags(element, "go_Hints"));
    head->go_ColorSpaceFamily = static_cast<uint16_t>(read_enum(element, "go_ColorSpaceFamily"));
}

void RecordReader::read_pointer(const Element& element, GOP_OperandPointer* pointer)
{
    pointer->op_UniqueId = read_uint(element, "op_UniqueId");
    const GCM_CsdPointer* space = csd(element.child("GCM_CsdPointer"));
    if (space != nullptr)
        pointer->op_Csd = *space;
}

GOP_OperandPointer* RecordReader::flat(const Element& element)
{
    auto* pointer = arena_.make<GOP_OperandFlatPointer>();
    read_pointer(element, &pointer->flp_Pointer);
    const Element* inside = element.child("GOP_OperandFlat");
    const Element* head = inside != nullptr ? inside->child("GOP_Operand") : nullptr;
    if (head == nullptr)
        return nullptr;
    const Element* told = held_color(inside->member("fl_Color"));
    auto* record = arena_.make<GOP_OperandFlat>(channel_bytes(told));
    read_head(*head, &record->fl_Operand);
    if (told != nullptr)
        read_color(*told, &record->fl_Color);
    pointer->flp_Pointer.op_Operand = &record->fl_Operand;
    return &pointer->flp_Pointer;
}

GOP_OperandPointer* RecordReader::gradient_2pt(const Element& element)
{
    auto* pointer = arena_.make<GOP_OperandGrad2PtPointer>();
    read_pointer(element, &pointer->g2p_Pointer);
    const Element* inside = element.child("GOP_OperandGrad2Pt");
    const Element* head = inside != nullptr ? inside->child("GOP_Operand") : nullptr;
    if (head == nullptr)
        return nullptr;
    auto* record = arena_.make<GOP_OperandGrad2Pt>();
    read_head(*head, &record->g2_Operand);
    record->g2_Transform = read_matrix(*inside, "g2_Transform");
    record->g2_Pt1 = read_point(*inside, "g2_Pt1");
    record->g2_Pt2 = read_point(*inside, "g2_Pt2");
    record->g2_UseInterpColorSpace = read_byte(*inside, "g2_UseInterpColorSpace");
    record->g2_GradientExtendMode = read_byte(*inside, "g2_GradientExtendMode");
    record->g2_GradientRoundingMode = read_byte(*inside, "g2_GradientRoundingMode");
    pointer->g2p_Pointer.op_Operand = &record->g2_Operand;
    pointer->g2p_Color1 = color(held_color(element.member("g2p_Color1")));
    pointer->g2p_Color2 = color(held_color(element.member("g2p_Color2")));
    return &pointer->g2p_Pointer;
}

GOP_OperandPointer* RecordReader::gradient_3pt(const Element& element)
{
    auto* pointer = arena_.make<GOP_OperandGrad3PtPointer>();
    read_pointer(element, &pointer->g3p_Pointer);
    const Element* inside = element.child("GOP_OperandGrad3Pt");
    const Element* head = inside != nullptr ? inside->child("GOP_Operand") : nullptr;
    if (head == nullptr)
        return nullptr;
    auto* record = arena_.make<GOP_OperandGrad3Pt>();
    read_head(*head, &record->g3_Operand);
    record->g3_Transform = read_matrix(*inside, "g3_Transform");
    record->g3_Pt1 = read_point(*inside, "g3_Pt1");
    record->g3_Pt2 = read_point(*inside, "g3_Pt2");
    record->g3_Pt3 = read_point(*inside, "g3_Pt3");
    pointer->g3p_Pointer.op_Operand = &record->g3_Operand;
    const Element* colors = element.member("g3p_Color");
    size_t count = 0;
    for (const Element* one = colors != nullptr ? colors->first : nullptr; one != nullptr && count < 3; one = one->next)
        pointer->g3p_Color[count++] = color(one);
    return &pointer->g3p_Pointer;
}

// Stops that were null are not told; they come last.
void RecordReader::read_stops(const Element* member, const GOP_GradStop** stops, size_t count)
{
    size_t to = 0;
    for (const Element* one = member != nullptr ? member->first : nullptr; one != nullptr && to < count;
         one = one->next)
    {
        const Element* told = held_color(one->member("gs_StopColor"));
        auto* stop = arena_.make<GOP_GradStop>(channel_bytes(told));
        stop->gs_StopPosn = read_double(*one, "gs_StopPosn");
        if (told != nullptr)
            read_color(*told, &stop->gs_StopColor);
        stops[to++] = stop;
    }
}

GOP_OperandPointer* RecordReader::gradient_multistop(const Element& element)
{
    const Element* inside = element.child("GOP_OperandGradMultistop");
    const Element* head = inside != nullptr ? inside->child("GOP_Operand") : nullptr;
    if (head == nullptr)
        return nullptr;
    auto* record = arena_.make<GOP_OperandGradMultistop>();
    read_head(*head, &record->gm_Operand);
    record->gm_Transform = read_matrix(*inside, "gm_Transform");
    record->gm_Pt1 = read_point(*inside, "gm_Pt1");
    record->gm_Pt2 = read_point(*inside, "gm_Pt2");
    record->gm_UseInterpColorSpace = read_byte(*inside, "gm_UseInterpColorSpace");
    record->gm_GradientExtendMode = read_byte(*inside, "gm_GradientExtendMode");
    record->gm_GradientRoundingMode = read_byte(*inside, "gm_GradientRoundingMode");
    const size_t count = record->gm_Operand.go_Count;
    auto* pointer = arena_.make<GOP_OperandGradMultistopPointer>(count * sizeof(void*));
    read_pointer(element, &pointer->gmp_Pointer);
    pointer->gmp_Pointer.op_Operand = &record->gm_Operand;
    read_stops(element.member("gmp_GradStop"), pointer->gmp_GradStop, count);
    return &pointer->gmp_Pointer;
}

GOP_OperandPointer* RecordReader::gradient_radial(const Element& element)
{
    const Element* inside = element.child("GOP_OperandGradRadial");
    const Element* head = inside != nullptr ? inside->child("GOP_Operand") : nullptr;
    if (head == nullptr)
        return nullptr;
    const Element* told = inside->child("GBC_Color");
    auto* record = arena_.make<GOP_OperandGradRadial>(channel_bytes(told));
    read_head(*head, &record->gr_Operand);
    record->gr_Transform = read_matrix(*inside, "gr_Transform");
    record->gr_Center1 = read_point(*inside, "gr_Center1");
    record->gr_Radius1 = read_double(*inside, "gr_Radius1");
    record->gr_Center2 = read_point(*inside, "gr_Center2");
    record->gr_Radius2 = read_double(*inside, "gr_Radius2");
    record->gr_UseInterpColorSpace = read_byte(*inside, "gr_UseInterpColorSpace");
    record->gr_GradientExtendMode = read_byte(*inside, "gr_GradientExtendMode");
    record->gr_GradientRoundingMode = read_byte(*inside, "gr_GradientRoundingMode");
    if (told != nullptr)
        read_color(*told, &record->gr_Color);
    const size_t count = record->gr_Operand.go_Count;
    auto* pointer = arena_.make<GOP_OperandGradRadialPointer>(count * sizeof(void*));
    read_pointer(element, &pointer->grp_Pointer);
    pointer->grp_Pointer.op_Operand = &record->gr_Operand;
    read_stops(element.member("grp_GradStop"), pointer->grp_GradStop, count);
    return &pointer->grp_Pointer;
}

GOP_OperandImagePointer* RecordReader::image(const Element* element)
{
    if (element == nullptr || element->name != "GOP_OperandImagePointer")
        return nullptr;
    const Element* inside = element->child("GOP_OperandImage");
    const Element* head = inside != nullptr ? inside->child("GOP_Operand") : nullptr;
    if (head == nullptr)
    {
        ++unknown_;
        return nullptr;
    }
    auto* record = arena_.make<GOP_OperandImage>();
    read_head(*head, &record->im_Operand);
    record->im_ImageEncoding = read_byte(*inside, "im_ImageEncoding");
    record->im_IndexColorDepth = read_byte(*inside, "im_IndexColorDepth");
    record->im_QualitySetting = static_cast<uint8_t>(read_enum(*inside, "im_QualitySetting"));
    record->im_NumNonalphaChans = read_byte(*inside, "im_NumNonalphaChans");
    record->im_Flags = read_flags(*inside, "im_Flags");
    record->im_Alpha = read_float(*inside, "im_Alpha");
    record->im_ImageWidthPixels = read_uint(*inside, "im_ImageWidthPixels");
    record->im_ImageHeightPixels = read_uint(*inside, "im_ImageHeightPixels");
    record->im_Transform = read_matrix(*inside, "im_Transform");
    auto* pointer = arena_.make<GOP_OperandImagePointer>();
    pointer->imp_Image = record;
    pointer->op_UniqueId = read_uint(*element, "op_UniqueId");
    pointer->imp_RowStep = read_uint(*element, "imp_RowStep");
    pointer->imp_CompressedStreamLength = read_uint(*element, "imp_CompressedStreamLength");
    pointer->imp_GrayscaleDetectStatus = read_enum(*element, "imp_GrayscaleDetectStatus");
    const GCM_CsdPointer* space = csd(element->child("GCM_CsdPointer"));
    if (space != nullptr)
        pointer->imp_Csd = *space;
    if (element->has("imp_IndexColorTable"))
    {
        const std::vector<uint32_t> table = to_uints(element->value("imp_IndexColorTable"));
        const std::span<uint8_t> copy = arena_.make_array<uint8_t>(table.size());
        std::ranges::transform(table, copy.begin(), [](uint32_t value) { return static_cast<uint8_t>(value); });
        pointer->imp_IndexColorTable = table.empty() ? nullptr : copy.data();
    }
    const Element* tiling = element->child("GOP_TilingParameters");
    if (tiling != nullptr)
    {
        auto* tile = arena_.make<GOP_TilingParameters>();
        tile->it_XRepetitionInterval = read_double(*tiling, "it_XRepetitionInterval");
        tile->it_YRepetitionInterval = read_double(*tiling, "it_YRepetitionInterval");
        tile->it_XFlip = static_cast<uint16_t>(read_uint(*tiling, "it_XFlip"));
        tile->it_YFlip = static_cast<uint16_t>(read_uint(*tiling, "it_YFlip"));
        pointer->imp_TilingParameters = tile;
    }
    if (on_image)
        on_image(pointer, *element);
    return pointer;
}

GOP_OperandPointer* RecordReader::operand(const Element* element)
{
    if (element == nullptr)
        return nullptr;
    GOP_OperandPointer* made = nullptr;
    if (element->name == "GOP_OperandFlatPointer")
        made = flat(*element);
    else if (element->name == "GOP_OperandGrad2PtPointer")
        made = gradient_2pt(*element);
    else if (element->name == "GOP_OperandGrad3PtPointer")
        made = gradient_3pt(*element);
    else if (element->name == "GOP_OperandGradMultistopPointer")
        made = gradient_multistop(*element);
    else if (element->name == "GOP_OperandGradRadialPointer")
        made = gradient_radial(*element);
    else if (element->name == "GOP_OperandImagePointer")
        return reinterpret_cast<GOP_OperandPointer*>(image(element));
    unknown_ += made == nullptr ? 1 : 0;
    return made;
}

const GOP_Operator* RecordReader::op(const Element* element)
{
    if (element == nullptr || element->name != "GOP_Operator")
        return nullptr;
    auto* record = arena_.make<GOP_Operator>();
    record->op_OperatorType = read_enum(*element, "op_OperatorType");
    record->op_Operator = static_cast<uint16_t>(read_uint(*element, "op_Operator"));
    record->op_TransparencyType = static_cast<uint8_t>(read_enum(*element, "op_TransparencyType"));
    record->op_TransparencyFlags = static_cast<uint8_t>(read_flags(*element, "op_TransparencyFlags"));
    record->op_MaskMode = read_enum(*element, "op_MaskMode");
    record->op_OperatorHints = read_flags(*element, "op_OperatorHints");
    const GOP_TransferFn unknown_function = [] {};
    if (read_bool(*element, "op_BitmapTransferFn") != 0)
        record->op_BitmapTransferFn = unknown_function;
    if (read_bool(*element, "op_ColorTransferFn") != 0)
        record->op_ColorTransferFn = unknown_function;
    return record;
}

GOP_OperandPointer* RecordReader::operand_member(const Element& call, std::string_view name)
{
    const Element* member = call.member(name);
    return member != nullptr ? operand(member->first) : nullptr;
}

const GOP_Operator* RecordReader::op_member(const Element& call, std::string_view name)
{
    const Element* member = call.member(name);
    return member != nullptr ? op(member->child("GOP_Operator")) : nullptr;
}

const GPA_PathStrokingParams* RecordReader::stroke_member(const Element& call, std::string_view name)
{
    const Element* member = call.member(name);
    return member != nullptr ? stroke(member->child("GPA_PathStrokingParams")) : nullptr;
}

const GBC_Color* RecordReader::color_member(const Element& call, std::string_view name)
{
    return color(held_color(call.member(name)));
}

const GGO_Matrix* RecordReader::matrix_attribute(const Element& call, std::string_view name)
{
    if (!call.has(name))
        return nullptr;
    auto* matrix = arena_.make<GGO_Matrix>();
    *matrix = read_matrix(call, name);
    return matrix;
}

const GGO_BoxFloat* RecordReader::box_attribute(const Element& call, std::string_view name)
{
    if (!call.has(name))
        return nullptr;
    auto* box = arena_.make<GGO_BoxFloat>();
    *box = read_box(call, name);
    return box;
}

}  // namespace orvlog::reader
