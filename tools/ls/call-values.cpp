#include "tools/ls/call-values.h"

#include "reader/tree/values.h"
#include "tools/shared/look.h"

#include <algorithm>
#include <initializer_list>
#include <string>
#include <string_view>

namespace orvlog::tool
{

namespace
{

using nlohmann::ordered_json;
using orvlog::reader::Element;

const Element* in_member(const Element& call, std::string_view name)
{
    const Element* member = call.member(name);
    return member != nullptr ? member->first : nullptr;
}

// The names of flags, "[0x1] NAME NAME ".
void add_flags(ordered_json& list, std::string_view value)
{
    const size_t bracket = value.find("] ");
    value.remove_prefix(bracket != std::string_view::npos ? bracket + 2 : value.size());
    while (!value.empty())
    {
        const std::string_view name = value.substr(0, value.find(' '));
        if (!name.empty())
            list.push_back(name);
        value.remove_prefix(std::min(name.size() + 1, value.size()));
    }
}

ordered_json hints_of(const Element& call)
{
    ordered_json list = ordered_json::array();
    for (const char* name : {"object_hints", "hints"})
        add_flags(list, call.value(name));
    return list;
}

ordered_json operator_values(const Element& op)
{
    ordered_json object;
    object["name"] = orvlog::reader::operator_text(&op);
    object["type"] = op.value("op_OperatorType");
    object["number"] = orvlog::reader::read_uint(op, "op_Operator");
    object["mask"] = op.value("op_MaskMode");
    return object;
}

void add_flat(ordered_json& object, const Element& operand)
{
    const Element* flat = operand.child("GOP_OperandFlat");
    const Element* holder = flat != nullptr ? flat->member("fl_Color") : nullptr;
    const Element* color = holder != nullptr ? holder->child("GBC_Color") : nullptr;
    if (color == nullptr)
        return;
    object["bit_depth"] = orvlog::reader::read_uint(*color, "bit_depth");
    object["channels"] = orvlog::reader::to_doubles(color->value("base_n"));
    object["alpha"] =
        color->has("alpha") ? ordered_json(orvlog::reader::read_double(*color, "alpha")) : ordered_json(nullptr);
}

void add_image(ordered_json& object, const Element& operand, const Element& record)
{
    object["width"] = orvlog::reader::read_uint(record, "im_ImageWidthPixels");
    object["height"] = orvlog::reader::read_uint(record, "im_ImageHeightPixels");
    object["tiled"] = operand.child("GOP_TilingParameters") != nullptr;
}

// `role` is what the operand is for: "paint", "mask", "stroke", "stroke mask".
ordered_json operand_values(const Element& operand, std::string_view role)
{
    std::string_view name = operand.name;
    if (name.ends_with("Pointer"))
        name.remove_suffix(std::string_view("Pointer").size());
    const Element* record = operand.child(name);
    const Element* head = record != nullptr ? record->child("GOP_Operand") : nullptr;
    ordered_json object;
    object["role"] = role;
    object["type"] = name;
    object["unique_id"] = operand.has("op_UniqueId") ? ordered_json(orvlog::reader::read_uint(operand, "op_UniqueId"))
                                                     : ordered_json(nullptr);
    object["space"] = head != nullptr && head->has("go_ColorSpaceFamily")
                          ? ordered_json(head->value("go_ColorSpaceFamily"))
                          : ordered_json(nullptr);
    add_flat(object, operand);
    if (record != nullptr && name == "GOP_OperandImage")
        add_image(object, operand, *record);
    return object;
}

void add_operands(ordered_json& list, const Element& call, const std::string& prefix, const std::string& paint,
                  const std::string& mask)
{
    if (const Element* operand = in_member(call, prefix + "operand1"); operand != nullptr)
        list.push_back(operand_values(*operand, paint));
    if (const Element* operand = in_member(call, prefix + "operand2"); operand != nullptr)
        list.push_back(operand_values(*operand, mask));
}

ordered_json operands_of(const Element& call)
{
    ordered_json list = ordered_json::array();
    add_operands(list, call, "", "paint", "mask");
    add_operands(list, call, "fill_", "paint", "mask");
    add_operands(list, call, "stroke_", "stroke", "stroke mask");
    return list;
}

ordered_json operator_of(const Element& call, std::initializer_list<const char*> names)
{
    for (const char* name : names)
        if (const Element* op = in_member(call, name); op != nullptr)
            return operator_values(*op);
    return nullptr;
}

}  // namespace

ordered_json call_values(const CallRow& row, const Element& element)
{
    const orvlog::reader::CallSummary& call = row.call;
    ordered_json object;
    object["call"] = row.address;
    object["id"] = call.id ? ordered_json(*call.id) : ordered_json(nullptr);
    object["page"] = call.page != 0 ? ordered_json(call.page) : ordered_json(nullptr);
    object["kind"] = call.kind;
    object["box"] = box_json(call.box);
    object["clip"] = box_json(row.clip);
    object["operator"] = operator_of(element, {"op", "fill_op"});
    object["stroke_operator"] = operator_of(element, {"stroke_op"});
    object["operands"] = operands_of(element);
    object["resource"] = element.has("resource_id") ? ordered_json(orvlog::reader::read_uint(element, "resource_id"))
                                                    : ordered_json(nullptr);
    object["text"] = row.text.empty() ? ordered_json(nullptr) : ordered_json(row.text);
    object["hints"] = hints_of(element);
    object["byte"] = call.place.byte;
    object["line"] = call.place.line;
    return object;
}

}  // namespace orvlog::tool
