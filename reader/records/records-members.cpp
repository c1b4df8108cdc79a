#include "reader/records/record-parts.h"
#include "reader/records/records.h"
#include "reader/tree/values.h"

namespace orvlog::reader
{

const GBC_Color* RecordReader::color(const Element* element)
{
    if (element == nullptr || element->name != "GBC_Color")
        return nullptr;
    auto* record = arena_.make<GBC_Color>(channel_bytes(element));
    read_color(*element, record);
    return record;
}

const GCM_CsdPointer* RecordReader::csd(const Element* element)
{
    return colour_spaces_.read(element);
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
