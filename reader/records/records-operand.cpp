#include "reader/records/record-parts.h"
#include "reader/records/records.h"
#include "reader/tree/values.h"

#include <algorithm>

namespace orvlog::reader
{

namespace
{

void read_pointer(RecordReader& records, const Element& element, GOP_OperandPointer* pointer)
{
    pointer->op_UniqueId = read_uint(element, "op_UniqueId");
    const GCM_CsdPointer* space = records.csd(element.child("GCM_CsdPointer"));
    if (space != nullptr)
        pointer->op_Csd = *space;
}

GOP_OperandPointer* flat(RecordReader& records, Arena& arena, const Element& element)
{
    auto* pointer = arena.make<GOP_OperandFlatPointer>();
    read_pointer(records, element, &pointer->flp_Pointer);
    const Element* inside = element.child("GOP_OperandFlat");
    const Element* head = inside != nullptr ? inside->child("GOP_Operand") : nullptr;
    if (head == nullptr)
        return nullptr;
    const Element* told = held_color(inside->member("fl_Color"));
    auto* record = arena.make<GOP_OperandFlat>(channel_bytes(told));
    read_head(*head, &record->fl_Operand);
    if (told != nullptr)
        read_color(*told, &record->fl_Color);
    pointer->flp_Pointer.op_Operand = &record->fl_Operand;
    return &pointer->flp_Pointer;
}

GOP_OperandPointer* gradient_2pt(RecordReader& records, Arena& arena, const Element& element)
{
    auto* pointer = arena.make<GOP_OperandGrad2PtPointer>();
    read_pointer(records, element, &pointer->g2p_Pointer);
    const Element* inside = element.child("GOP_OperandGrad2Pt");
    const Element* head = inside != nullptr ? inside->child("GOP_Operand") : nullptr;
    if (head == nullptr)
        return nullptr;
    auto* record = arena.make<GOP_OperandGrad2Pt>();
    read_head(*head, &record->g2_Operand);
    record->g2_Transform = read_matrix(*inside, "g2_Transform");
    record->g2_Pt1 = read_point(*inside, "g2_Pt1");
    record->g2_Pt2 = read_point(*inside, "g2_Pt2");
    record->g2_UseInterpColorSpace = read_byte(*inside, "g2_UseInterpColorSpace");
    record->g2_GradientExtendMode = read_byte(*inside, "g2_GradientExtendMode");
    record->g2_GradientRoundingMode = read_byte(*inside, "g2_GradientRoundingMode");
    pointer->g2p_Pointer.op_Operand = &record->g2_Operand;
    pointer->g2p_Color1 = records.color(held_color(element.member("g2p_Color1")));
    pointer->g2p_Color2 = records.color(held_color(element.member("g2p_Color2")));
    return &pointer->g2p_Pointer;
}

GOP_OperandPointer* gradient_3pt(RecordReader& records, Arena& arena, const Element& element)
{
    auto* pointer = arena.make<GOP_OperandGrad3PtPointer>();
    read_pointer(records, element, &pointer->g3p_Pointer);
    const Element* inside = element.child("GOP_OperandGrad3Pt");
    const Element* head = inside != nullptr ? inside->child("GOP_Operand") : nullptr;
    if (head == nullptr)
        return nullptr;
    auto* record = arena.make<GOP_OperandGrad3Pt>();
    read_head(*head, &record->g3_Operand);
    record->g3_Transform = read_matrix(*inside, "g3_Transform");
    record->g3_Pt1 = read_point(*inside, "g3_Pt1");
    record->g3_Pt2 = read_point(*inside, "g3_Pt2");
    record->g3_Pt3 = read_point(*inside, "g3_Pt3");
    pointer->g3p_Pointer.op_Operand = &record->g3_Operand;
    const Element* colors = element.member("g3p_Color");
    size_t count = 0;
    for (const Element* one = colors != nullptr ? colors->first : nullptr; one != nullptr && count < 3; one = one->next)
        pointer->g3p_Color[count++] = records.color(one);
    return &pointer->g3p_Pointer;
}

// Stops that were null are not told; they come last.
void read_stops(Arena& arena, const Element* member, const GOP_GradStop** stops, size_t count)
{
    size_t to = 0;
    for (const Element* one = member != nullptr ? member->first : nullptr; one != nullptr && to < count;
         one = one->next)
    {
        const Element* told = held_color(one->member("gs_StopColor"));
        auto* stop = arena.make<GOP_GradStop>(channel_bytes(told));
        stop->gs_StopPosn = read_double(*one, "gs_StopPosn");
        if (told != nullptr)
            read_color(*told, &stop->gs_StopColor);
        stops[to++] = stop;
    }
}

GOP_OperandPointer* gradient_multistop(RecordReader& records, Arena& arena, const Element& element)
{
    const Element* inside = element.child("GOP_OperandGradMultistop");
    const Element* head = inside != nullptr ? inside->child("GOP_Operand") : nullptr;
    if (head == nullptr)
        return nullptr;
    auto* record = arena.make<GOP_OperandGradMultistop>();
    read_head(*head, &record->gm_Operand);
    record->gm_Transform = read_matrix(*inside, "gm_Transform");
    record->gm_Pt1 = read_point(*inside, "gm_Pt1");
    record->gm_Pt2 = read_point(*inside, "gm_Pt2");
    record->gm_UseInterpColorSpace = read_byte(*inside, "gm_UseInterpColorSpace");
    record->gm_GradientExtendMode = read_byte(*inside, "gm_GradientExtendMode");
    record->gm_GradientRoundingMode = read_byte(*inside, "gm_GradientRoundingMode");
    const size_t count = record->gm_Operand.go_Count;
    auto* pointer = arena.make<GOP_OperandGradMultistopPointer>(count * sizeof(void*));
    read_pointer(records, element, &pointer->gmp_Pointer);
    pointer->gmp_Pointer.op_Operand = &record->gm_Operand;
    read_stops(arena, element.member("gmp_GradStop"), pointer->gmp_GradStop, count);
    return &pointer->gmp_Pointer;
}

GOP_OperandPointer* gradient_radial(RecordReader& records, Arena& arena, const Element& element)
{
    const Element* inside = element.child("GOP_OperandGradRadial");
    const Element* head = inside != nullptr ? inside->child("GOP_Operand") : nullptr;
    if (head == nullptr)
        return nullptr;
    const Element* told = inside->child("GBC_Color");
    auto* record = arena.make<GOP_OperandGradRadial>(channel_bytes(told));
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
    auto* pointer = arena.make<GOP_OperandGradRadialPointer>(count * sizeof(void*));
    read_pointer(records, element, &pointer->grp_Pointer);
    pointer->grp_Pointer.op_Operand = &record->gr_Operand;
    read_stops(arena, element.member("grp_GradStop"), pointer->grp_GradStop, count);
    return &pointer->grp_Pointer;
}

struct OperandKind
{
    std::string_view element;
    GOP_OperandPointer* (*make)(RecordReader& records, Arena& arena, const Element& element);
};

constexpr OperandKind kKinds[] = {
    {"GOP_OperandFlatPointer", flat},
    {"GOP_OperandGrad2PtPointer", gradient_2pt},
    {"GOP_OperandGrad3PtPointer", gradient_3pt},
    {"GOP_OperandGradMultistopPointer", gradient_multistop},
    {"GOP_OperandGradRadialPointer", gradient_radial},
};

}  // namespace

GOP_OperandPointer* RecordReader::operand(const Element* element)
{
    if (element == nullptr)
        return nullptr;
    if (element->name == "GOP_OperandImagePointer")
        return reinterpret_cast<GOP_OperandPointer*>(image(element));
    const auto* kind = std::ranges::find(kKinds, element->name, &OperandKind::element);
    GOP_OperandPointer* made = kind != std::end(kKinds) ? kind->make(*this, arena_, *element) : nullptr;
    unknown_ += made == nullptr ? 1 : 0;
    return made;
}

}  // namespace orvlog::reader
