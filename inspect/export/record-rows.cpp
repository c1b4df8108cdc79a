#include "inspect/export/record-rows.h"

#include "inspect/export/path-rows.h"
#include "orvlog/interface/orvlog.h"
#include "reader/look/call-summary.h"
#include "reader/tree/values.h"

#include <algorithm>
#include <cmath>
#include <cstdio>

namespace orvlog::inspect
{

using orvlog::reader::Children;
using orvlog::reader::Element;

namespace
{

bool is_operand(std::string_view name)
{
    return name.starts_with("GOP_Operand") && name.ends_with("Pointer");
}

// "ORV_object_paint.clip" is "clip".
std::optional<std::string_view> role_of(std::string_view member)
{
    const size_t dot = member.rfind('.');
    if (!member.starts_with("ORV_") || dot == std::string_view::npos)
        return std::nullopt;
    constexpr std::string_view kRoles[] = {"op",
                                           "operand1",
                                           "operand2",
                                           "operand3",
                                           "paint_path",
                                           "clip",
                                           "group_clip",
                                           "fill_op",
                                           "stroke_op",
                                           "stroking_params",
                                           "separation_mask",
                                           "separation_color",
                                           "fill_operand1",
                                           "fill_operand2",
                                           "fill_operand3",
                                           "stroke_operand1",
                                           "stroke_operand2",
                                           "stroke_operand3"};
    const std::string_view role = member.substr(dot + 1);
    const auto* known = std::ranges::find(kRoles, role);
    return known != std::end(kRoles) ? std::optional(*known) : std::nullopt;
}

// The name that `orvlog ls` has for a blend mode or a Porter-Duff operator; of what has none, it ends in its number.
bool is_known_operator(const Element& op, const std::string& name)
{
    const std::string_view type = op.value("op_OperatorType");
    const uint32_t number = orvlog::reader::read_uint(op, "op_Operator");
    if (type == "GOP_ROP_PORTER_DUFF" || type.starts_with("GOP_ROP_PDF_"))
        return name.find('(') == std::string::npos;
    if (type == "GOP_ROP_ROP2_GDI")
        return number >= 1 && number <= 16;
    if (type == "GOP_ROP_ROP3")
        return number <= 0xFF;
    return orvlog::reader::is_enumerator(type);
}

// The record of an operand, and its head.
const Element* record_of(const Element& operand)
{
    return operand.child(operand.name.substr(0, operand.name.size() - std::string_view("Pointer").size()));
}

std::optional<std::string_view> definition_of(const Element& operand)
{
    const Element* pointer = operand.child("GCM_CsdPointer");
    return name_of(pointer != nullptr ? pointer->child("GCM_Csd") : nullptr, "csd_Type");
}

std::optional<int64_t> extend_of(const Element* record)
{
    for (const char* name : {"g2_GradientExtendMode", "gm_GradientExtendMode", "gr_GradientExtendMode"})
        if (const auto mode = number_of(record, name))
            return mode;
    return std::nullopt;
}

const char* transform_of(std::string_view operand)
{
    if (operand == "GOP_OperandImagePointer")
        return "im_Transform";
    if (operand == "GOP_OperandGrad2PtPointer")
        return "g2_Transform";
    if (operand == "GOP_OperandGradMultistopPointer")
        return "gm_Transform";
    return operand == "GOP_OperandGrad3PtPointer" ? "g3_Transform" : "gr_Transform";
}

// The channels of a colour as numbers, whatever the log has in their place.
std::string levels_of(const Element& colour)
{
    std::string levels;
    for (const double level : orvlog::reader::to_doubles(colour.value("base_n")))
    {
        char text[40];
        std::snprintf(text, sizeof text, "%s%.9g", levels.empty() ? "" : " ", level);
        levels += text;
    }
    return levels;
}

std::optional<std::string_view> family_of(std::string_view ticket)
{
    constexpr std::string_view kEnd = "RenderColorSpace>";
    const size_t end = ticket.find(kEnd);
    const size_t begin = end != std::string_view::npos ? ticket.rfind('<', end) : end;
    if (begin == std::string_view::npos)
        return std::nullopt;
    const std::string_view family = ticket.substr(begin + 1, end - begin - 1);
    const bool word =
        !family.empty() && family.size() < 40 &&
        std::ranges::all_of(
            family, [](char c)
            { return (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z') || (c >= '0' && c <= '9') || c == '_'; });
    return word ? std::optional(family) : std::nullopt;
}

}  // namespace

uint64_t RecordRows::write(const Element& element, const Page& page)
{
    page_ = page;
    images_of_call_ = 0;
    tickets_of_call_ = 0;
    callbacks_.start(element);
    if (orvlog::reader::is_call_name(element.name))
    {
        engine(element);
        visit(element, {});
    }
    else
        record(element, {});
    return callbacks_.count();
}

void RecordRows::visit(const Element& element, const Around& around)
{
    for (const Element& child : Children(element))
        record(child, around);
}

void RecordRows::record(const Element& element, Around around)
{
    const std::string_view name = element.name;
    if (name.ends_with("Fn"))
    {
        callbacks_.write(element);
        return;
    }
    if (const auto role = role_of(name))
        around = {role, {}, {}, {}, nullptr, nullptr};
    else if (name == "GOP_Operator")
        op(element, around);
    else if (is_operand(name))
        around.operand = operand(element, around);
    else if (name == "GOP_GradStop")
        around.stop = &element;
    else if (name == "GBC_Color")
        colour(element, around);
    else if (name == "GSH_ShapeList")
        around.clip = clip(element, around);
    else if (name == "GSH_ShapePointer")
        around.shape = shape(element, around);
    else if (name == "GSH_ShapePointer.sp_U.glyph")
        around.glyphs = &element;
    else if (name == "GPA_PathPointer")
        path(element, around);
    else if (name == "GFI_FontSpecPointer")
        font(element, around);
    else if (name == "GCM_ColorTicket")
        ticket(element);
    visit(element, around);
}

void RecordRows::engine(const Element& call)
{
    if (call.value("font_engine_functions") != "TRUE")
        return;
    const std::optional<int64_t> id = number_of(&call, "GfpId");
    const std::string name = orvlog::reader::to_text(call.value("fp_EngineIdGet"));
    if (id)
        callbacks_.note_engine(*id, name);
    job_.begin(Table::engines);
    job_.rows.integer(id).text(call.has("fp_EngineIdGet") ? std::optional<std::string_view>(name) : std::nullopt).end();
}

void RecordRows::op(const Element& element, const Around& around)
{
    const std::string name = orvlog::reader::operator_text(&element);
    const std::string bare = name.substr(0, name.find('/'));
    const std::string_view type = element.value("op_OperatorType");
    const bool named = name_of(&element, "op_OperatorType").has_value();
    RowWriter& rows = job_.rows;
    job_.begin(Table::operators);
    rows.text(around.role).text(name_of(&element, "op_OperatorType"));
    rows.integer(number_of(&element, "op_Operator").value_or(0)).text(named ? std::string_view(bare) : "unknown");
    rows.integer(is_known_operator(element, bare) ? 1 : 0).integer(type.starts_with("GOP_ROP_PDF_") ? 1 : 0);
    rows.text(name_of(&element, "op_MaskMode")).text(name_of(&element, "op_TransparencyType"));
    rows.integer(flags_of(&element, "op_TransparencyFlags").value_or(0));
    rows.integer(flags_of(&element, "op_OperatorHints").value_or(0));
    rows.integer(element.has("op_BitmapTransferFn") ? 1 : 0).integer(element.has("op_ColorTransferFn") ? 1 : 0);
    rows.end();
}

int64_t RecordRows::operand(const Element& element, const Around& around)
{
    const Element* record = record_of(element);
    const Element* head = record != nullptr ? record->child("GOP_Operand") : nullptr;
    RowWriter& rows = job_.rows;
    const int64_t item = job_.begin(Table::operands);
    rows.text(around.role).text(name_of(head, "go_OpType")).integer(number_of(&element, "op_UniqueId").value_or(0));
    rows.text(name_of(head, "go_ColorInfo.GOP_OperandColorSpace")).text(name_of(head, "go_ColorSpaceFamily"));
    rows.text(definition_of(element)).text(name_of(head, "go_ColorInfo.GCM_ColorFlag"));
    rows.integer(number_of(head, "go_Count")).integer(flags_of(head, "go_Hints")).integer(extend_of(record));
    put_matrix(rows, record, transform_of(element.name));
    rows.end();
    if (element.name == "GOP_OperandImagePointer")
    {
        Around inside = around;
        inside.operand = item;
        image(element, inside);
    }
    return item;
}

void RecordRows::put_resolution(const Element* record)
{
    double numbers[6] = {};
    const bool placed = record != nullptr && page_.to_pixels != nullptr && page_.dpi_x > 0 && page_.dpi_y > 0 &&
                        orvlog::reader::read_doubles(record->value("im_Transform"), numbers) == 6;
    if (!placed)
    {
        job_.rows.null().null();
        return;
    }
    const bool unit = (orvlog::reader::read_flags(*record, "im_Flags") & GOP_OP_FLAGS_TRANSFORM_FROM_UNIT_SQUARE) != 0;
    const double width = unit ? std::max(1U, orvlog::reader::read_uint(*record, "im_ImageWidthPixels")) : 1;
    const double height = unit ? std::max(1U, orvlog::reader::read_uint(*record, "im_ImageHeightPixels")) : 1;
    const auto pixels_to_inch = [this](GGO_Vector step)
    {
        const GGO_Vector pixels = ggo_transform_vector(page_.to_pixels, step);
        const double inches = std::hypot(pixels.gvf_X / page_.dpi_x, pixels.gvf_Y / page_.dpi_y);
        return inches > 0 ? std::optional(1 / inches) : std::nullopt;
    };
    job_.rows.real(pixels_to_inch({numbers[0] / width, numbers[1] / width}));
    job_.rows.real(pixels_to_inch({numbers[2] / height, numbers[3] / height}));
}

void RecordRows::image(const Element& element, const Around& around)
{
    const Element* record = record_of(element);
    const Element* head = record != nullptr ? record->child("GOP_Operand") : nullptr;
    const ImageData data = images_.take(images_of_call_++);
    const std::optional<int64_t> flags = flags_of(record, "im_Flags");
    const auto flag = [flags](int64_t bit)
    { return flags ? std::optional<int64_t>((*flags & bit) != 0 ? 1 : 0) : std::nullopt; };
    constexpr int64_t kBits[] = {1, 2, 4, 8, 16, 32};
    const int64_t code = number_of(head, "go_Count").value_or(-1);
    RowWriter& rows = job_.rows;
    job_.begin(Table::images);
    rows.text(around.role).integer(*around.operand).integer(number_of(&element, "Id").value_or(0));
    rows.integer(number_of(&element, "op_UniqueId").value_or(0));
    rows.integer(number_of(record, "im_ImageWidthPixels")).integer(number_of(record, "im_ImageHeightPixels"));
    rows.integer(number_of(record, "im_NumNonalphaChans"));
    rows.integer(code >= 0 && code < 6 ? std::optional(kBits[code]) : std::nullopt);
    rows.text(name_of(head, "go_ColorInfo.GOP_OperandColorSpace")).text(name_of(head, "go_ColorSpaceFamily"));
    rows.text(definition_of(element)).integer(number_of(record, "im_ImageEncoding")).integer(flags);
    rows.integer(flag(GOP_OP_FLAGS_IS_INDEXED_COLOR)).integer(flag(GOP_OP_FLAGS_HAS_ALPHA));
    rows.real(real_of(record, "im_Alpha")).text(name_of(record, "im_QualitySetting"));
    rows.integer(orvlog::reader::read_bool(element, "imp_DirectImage") != 0 ? 1 : 0);
    rows.integer(element.child("GOP_TilingParameters") != nullptr ? 1 : 0);
    put_matrix(rows, record, "im_Transform");
    put_resolution(record);
    rows.integer(static_cast<int64_t>(data.bytes));
    rows.text(data.hash ? std::optional<std::string_view>(*data.hash) : std::nullopt).end();
}

void RecordRows::colour(const Element& element, const Around& around)
{
    RowWriter& rows = job_.rows;
    job_.begin(Table::colours);
    rows.text(around.role).integer(around.operand).real(real_of(around.stop, "gs_StopPosn"));
    rows.integer(number_of(&element, "bit_depth").value_or(0)).integer(number_of(&element, "num_chans").value_or(0));
    rows.real(real_of(&element, "alpha")).text(levels_of(element));
    rows.integer(number_of(&element, "empty_chans").value_or(0)).end();
}

void RecordRows::ticket(const Element& element)
{
    const std::optional<int64_t> id = number_of(&element, "id");
    const Element* text = element.child("GXC_ColorTickets");
    Ticket found;
    if (text != nullptr)
    {
        const bool digested = tickets_of_call_ < ticket_texts_.size();
        found = {std::string(family_of(text->rows).value_or("")),
                 digested ? ticket_texts_[tickets_of_call_++].take() : std::string()};
        if (id && *id != 0 && tickets_.size() < kMostTickets)
            tickets_.insert_or_assign(*id, found);
    }
    else if (const auto known = tickets_.find(id.value_or(0)); known != tickets_.end())
        found = known->second;
    RowWriter& rows = job_.rows;
    job_.begin(Table::tickets);
    rows.integer(id).integer(text != nullptr ? 1 : 0);
    rows.integer(text != nullptr ? static_cast<int64_t>(text->data_size) : 0);
    const auto told = [](const std::string& value)
    { return value.empty() ? std::nullopt : std::optional<std::string_view>(value); };
    rows.text(told(found.family)).text(told(found.hash)).end();
}

}  // namespace orvlog::inspect
