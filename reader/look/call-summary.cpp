#include "reader/look/call-summary.h"

#include "orvlog/interface/orvlog.h"
#include "reader/look/call-box.h"
#include "reader/tree/values.h"

#include <algorithm>
#include <array>
#include <iterator>

namespace orvlog::reader
{

namespace
{

constexpr size_t kDeepest = 4096;      // groups within groups whose spaces are followed
constexpr size_t kMostOpen = 1 << 16;  // drawings and resources that are remembered
constexpr std::string_view kPrefix = "ORV_";

constexpr std::array kPorterDuff = {"clear",
                                    "source",
                                    "destination",
                                    "source-over",
                                    "destination-over",
                                    "source-in",
                                    "destination-in",
                                    "source-out",
                                    "destination-out",
                                    "source-atop",
                                    "destination-atop",
                                    "xor",
                                    "add"};
constexpr std::array kSeparable = {"normal",      "multiply",   "screen",     "overlay",    "darken",     "lighten",
                                   "color-dodge", "color-burn", "hard-light", "soft-light", "difference", "exclusion"};
constexpr std::array kNonseparable = {"hue", "saturation", "color", "luminosity"};

std::string numbered(std::string_view name, uint32_t number)
{
    return std::string(name) + "(" + std::to_string(number) + ")";
}

template <typename Names> std::string name_of(const Names& names, uint32_t number, std::string_view kind)
{
    return number < names.size() ? std::string(names[number]) : numbered(kind, number);
}

std::string_view trimmed(std::string_view text)
{
    while (text.ends_with(' '))
        text.remove_suffix(1);
    return text;
}

// "GCM_CSF_RGB" is "rgb" without the first `prefix` bytes.
std::string lower(std::string_view name, std::string_view prefix)
{
    if (name.starts_with(prefix))
        name.remove_prefix(prefix.size());
    std::string text(name);
    for (char& c : text)
        if (c >= 'A' && c <= 'Z')
            c = static_cast<char>(c - 'A' + 'a');
        else if (c == '_')
            c = '-';
    return text;
}

// The colour space of a definition.
std::string definition_text(const Element& pointer)
{
    const Element* csd = pointer.child("GCM_Csd");
    if (csd == nullptr)
        return "other";
    const std::string_view type = csd->value("csd_Type");
    if (read_uint(*csd, "csd_NumNamedChans") > 0)
    {
        std::string names = "named";
        const Element* named = pointer.member("cp_NamedChans");
        for (const Element* one = named != nullptr ? named->first : nullptr; one != nullptr; one = one->next)
            names.append(" '").append(to_text(one->value("val"))).append("'");
        return names;
    }
    const Element* analytical = csd->child("GCM_AnalyticalColorSpace");
    if (analytical != nullptr)
        return lower(analytical->value("acs_ColorSpace"), "GCM_ACS_");
    if (type == "GCM_CSDTYPE_PROFILE_BUFFER" || type == "GCM_CSDTYPE_FILE")
        return "icc";
    if (type == "GCM_CSDTYPE_NONCOLORIMETRIC")
        return lower(csd->value("csd_Defn.NonColorimetric"), "GNC_FORMAT_");
    if (type == "GCM_CSDTYPE_CIELUT_DATA")
        return lower(csd->value("csd_Defn.CieBased"), "GCM_");
    return lower(type, "GCM_CSDTYPE_");
}

// `operand` is a pointer element, `record` the GOP_Operand within it.
std::string space_text(const Element& operand, const Element& record)
{
    const std::string_view space = record.value("go_ColorInfo.GOP_OperandColorSpace");
    if (space == "GOP_OCS_INPUT")
        return lower(record.value("go_ColorSpaceFamily"), "GCM_CSF_");
    if (space == "GOP_OCS_RENDER")
        return "render";
    const Element* definition = operand.child("GCM_CsdPointer");
    return definition != nullptr ? definition_text(*definition) : "other";
}

std::string color_text(const Element& color, std::string_view space)
{
    std::string text(space);
    const uint32_t depth = read_uint(color, "bit_depth");
    if (depth != 32)
        text += std::to_string(depth);
    text.append("(").append(trimmed(color.value("base_n"))).append(")");
    if (color.has("alpha"))
        text.append(" alpha ").append(color.value("alpha"));
    return text;
}

std::string flat_text(const Element& operand)
{
    const Element* flat = operand.child("GOP_OperandFlat");
    const Element* record = flat != nullptr ? flat->child("GOP_Operand") : nullptr;
    const Element* holder = flat != nullptr ? flat->member("fl_Color") : nullptr;
    const Element* color = holder != nullptr ? holder->child("GBC_Color") : nullptr;
    return record != nullptr && color != nullptr ? color_text(*color, space_text(operand, *record)) : "flat";
}

// What masks: a flat operand's first channel.
std::string mask_text(const Element& operand)
{
    const Element* flat = operand.child("GOP_OperandFlat");
    const Element* holder = flat != nullptr ? flat->member("fl_Color") : nullptr;
    const Element* color = holder != nullptr ? holder->child("GBC_Color") : nullptr;
    if (color == nullptr)
        return operand_text(&operand);
    const std::string_view channels = trimmed(color->value("base_n"));
    return std::string(color->has("alpha") ? color->value("alpha") : channels.substr(0, channels.find(' ')));
}

const Element* in_member(const Element& call, std::string_view name)
{
    const Element* member = call.member(name);
    return member != nullptr ? member->first : nullptr;
}

void add_paint(std::string& text, std::string_view label, const Element& call, const std::string& side)
{
    const Element* operand = in_member(call, side + "operand1");
    const Element* mask = in_member(call, side + "operand2");
    if (operand == nullptr && mask == nullptr)
        return;
    text += text.empty() ? "" : ", ";
    text += label;
    if (operand != nullptr)
        text += operand_text(operand);
    if (mask != nullptr)
        text.append(operand != nullptr ? ", " : "").append("mask ").append(mask_text(*mask));
}

void meet(std::optional<GGO_BoxFloat>& box, const std::optional<GGO_BoxFloat>& other)
{
    if (!other || !box)
    {
        box = box ? box : other;
        return;
    }
    box = GGO_BoxFloat{std::max(box->gbf_MinX, other->gbf_MinX), std::max(box->gbf_MinY, other->gbf_MinY),
                       std::min(box->gbf_MaxX, other->gbf_MaxX), std::min(box->gbf_MaxY, other->gbf_MaxY)};
}

template <typename Map> void remember(Map& map, uint32_t key, typename Map::mapped_type value)
{
    map.insert_or_assign(key, std::move(value));
    if (map.size() > kMostOpen)
        map.erase(map.begin()->first != key ? map.begin() : std::next(map.begin()));
}

}  // namespace

std::span<const std::string_view> call_kinds()
{
    static constexpr std::array<std::string_view, 13> kKinds = {
        "document_start",       "document_finish",         "face_start",      "resource_start", "resource_destroy",
        "memory_context_start", "drawing_finish",          "drawing_discard", "group_start",    "group_finish",
        "object_paint",         "object_paint_and_stroke", "resource_paint"};
    return kKinds;
}

std::string operator_text(const Element* op)
{
    if (op == nullptr)
        return kPorterDuff[3];
    const std::string_view type = op->value("op_OperatorType");
    const uint32_t number = read_uint(*op, "op_Operator");
    const std::string_view mask = op->value("op_MaskMode");
    std::string text;
    if (type == "GOP_ROP_PORTER_DUFF")
        text = name_of(kPorterDuff, number, "porter-duff");
    else if (type == "GOP_ROP_PDF_SEPARABLE")
        text = name_of(kSeparable, number, "separable");
    else if (type == "GOP_ROP_PDF_NONSEPARABLE")
        text = name_of(kNonseparable, number, "nonseparable");
    else
        text = numbered(lower(type, "GOP_ROP_"), number);
    if (!mask.empty() && mask != "GOP_MASK_NONE")
        text.append("/").append(mask == "GOP_ATTRIBUTE_MASK" ? "attribute-mask" : lower(mask, "GOP_"));
    return text;
}

std::string image_text(const Element& image)
{
    const Element* record = image.child("GOP_OperandImage");
    const Element* head = record != nullptr ? record->child("GOP_Operand") : nullptr;
    if (head == nullptr)
        return "unknown";
    constexpr std::array kDepths = {"1 bit", "2 bits", "4 bits", "8 bits", "16 bits", "32 bits"};
    const uint32_t flags = read_flags(*record, "im_Flags");
    const uint32_t encoding = read_uint(*record, "im_ImageEncoding");
    std::string text = std::string(record->value("im_ImageWidthPixels"))
                           .append("x")
                           .append(record->value("im_ImageHeightPixels"))
                           .append(" ")
                           .append(space_text(image, *head))
                           .append(" ")
                           .append(name_of(kDepths, read_uint(*head, "go_Count"), "depth"));
    text += (flags & GOP_OP_FLAGS_IS_INDEXED_COLOR) != 0 ? " indexed" : "";
    text += (flags & GOP_OP_FLAGS_HAS_ALPHA) != 0 ? " alpha" : "";
    text += encoding == GOP_ENCODING_PLANAR ? " planar" : "";
    if (encoding > GOP_ENCODING_PLANAR)
        text.append(" ").append(numbered("compressed", encoding));
    return text;
}

std::string operand_text(const Element* operand)
{
    if (operand == nullptr)
        return {};
    if (operand->name == "GOP_OperandImagePointer")
    {
        const bool tiled = operand->child("GOP_TilingParameters") != nullptr;
        return (tiled ? "tiled image " : "image ") + image_text(*operand);
    }
    if (operand->name == "GOP_OperandFlatPointer")
        return flat_text(*operand);
    const std::string_view name = operand->name;
    const Element* record = operand->child(name.substr(0, name.size() - std::min<size_t>(name.size(), 7)));
    const Element* head = record != nullptr ? record->child("GOP_Operand") : nullptr;
    constexpr std::array kKinds = {"GOP_OperandGrad2PtPointer", "GOP_OperandGradMultistopPointer",
                                   "GOP_OperandGrad3PtPointer", "GOP_OperandGradRadialPointer"};
    constexpr std::array kNames = {"two-point gradient ", "multistop gradient ", "three-point gradient ",
                                   "radial gradient "};
    for (size_t i = 0; i < kKinds.size(); ++i)
        if (name == kKinds[i])
            return kNames[i] + (head != nullptr ? space_text(*operand, *head) : std::string("other"));
    return std::string(name);
}

std::optional<GGO_BoxFloat> clip_box(const Element& call, const GGO_Matrix& to_pixels)
{
    const Element* clip = call.member("clip");
    if (clip == nullptr)
        clip = call.member("group_clip");
    std::optional<GGO_BoxFloat> box;
    if (clip == nullptr)
        return box;
    for (const Element& list : Children(*clip))
    {
        const Element* holder = list.member("sl_Shape");
        const Element* shape = holder != nullptr ? holder->child("GSH_ShapePointer") : nullptr;
        const bool plain = read_bool(list, "sl_ClipIn") != 0 && list.child("GSH_ShapeListCollection") == nullptr;
        if (shape != nullptr && plain)
            meet(box, shape_box(*shape, to_pixels));
        if ((read_flags(list, "sl_Hints") & GSH_SLH_IGNORE_REST_OF_LIST) != 0)
            break;
    }
    return box;
}

CallSummaries::Drawing* CallSummaries::drawing_of(const Element& call)
{
    const auto known = drawings_.find(read_uint(call, "drawing_context"));
    return call.has("drawing_context") && known != drawings_.end() ? &known->second : nullptr;
}

const GGO_Matrix* CallSummaries::to_pixels(const Element& call) const
{
    const auto known = drawings_.find(read_uint(call, "drawing_context"));
    const bool placed = known != drawings_.end() && !known->second.spaces.empty();
    return placed ? &known->second.spaces.back() : nullptr;
}

void CallSummaries::start_face(const Element& call, CallSummary& summary)
{
    Drawing drawing;
    summary.page = drawing.page = ++pages_;
    const Element* face = call.child("ORV_FaceProperties");
    if (face != nullptr)
    {
        drawing.spaces.push_back(read_matrix(*face, "fp_FaceInchToPixels"));
        drawing.face = {0, 0, static_cast<double>(read_uint(*face, "fp_WidthInPixels")),
                        static_cast<double>(read_uint(*face, "fp_HeightInPixels"))};
        summary.box = drawing.face;
    }
    remember(drawings_, read_uint(call, "drawing_context"), std::move(drawing));
}

void CallSummaries::start_resource(const Element& call, CallSummary&)
{
    remember(drawings_, read_uint(call, "drawing_context"), Drawing{});
    const Element* properties = call.child("ORV_ResourceProperties");
    if (properties != nullptr)
        remember(resources_, read_uint(call, "resource_id"), read_box(*properties, "rp_Enclosing_box"));
}

void CallSummaries::start_group(const Element& call, CallSummary& summary, Drawing& drawing)
{
    summary.op = operator_text(in_member(call, "op"));
    if (const Element* mask = in_member(call, "operand2"); mask != nullptr)
        summary.colour.append("mask ").append(mask_text(*mask));
    if (drawing.spaces.empty())
        return;
    if (drawing.spaces.size() == kDeepest)
    {
        ++drawing.deeper;
        return;
    }
    GGO_Matrix space = drawing.spaces.back();
    if (call.has("retransform"))
    {
        const GGO_Matrix own = read_matrix(call, "retransform");
        space = ggo_multiply(&own, &space);
    }
    drawing.spaces.push_back(space);
    BoxAround around;
    if (call.has("bounding_box_hint"))
        around.add_rectangle(space, read_box(call, "bounding_box_hint"));
    summary.box = around.box();
}

void CallSummaries::finish_group(const Element& call, Drawing& drawing)
{
    if (read_bool(call, "replay_group") != 0)
        return;
    if (drawing.deeper > 0)
        --drawing.deeper;
    else if (drawing.spaces.size() > 1)
        drawing.spaces.pop_back();
}

void CallSummaries::paint_resource(const Element& call, CallSummary& summary, const Drawing& drawing)
{
    summary.op = operator_text(in_member(call, "op"));
    summary.colour.append("resource ").append(call.value("resource_id"));
    if (const Element* mask = in_member(call, "operand2"); mask != nullptr)
        summary.colour.append(", mask ").append(mask_text(*mask));
    const auto resource = resources_.find(read_uint(call, "resource_id"));
    if (drawing.spaces.empty() || resource == resources_.end())
        return;
    GGO_Matrix space = drawing.spaces.back();
    if (call.has("retransform"))
    {
        const GGO_Matrix own = read_matrix(call, "retransform");
        space = ggo_multiply(&own, &space);
    }
    BoxAround around;
    around.add_rectangle(space, resource->second);
    summary.box = around.box();
}

std::optional<GGO_BoxFloat> CallSummaries::paint_box(const Element& call, const Drawing& drawing)
{
    if (drawing.spaces.empty())
        return std::nullopt;
    const GGO_Matrix& space = drawing.spaces.back();
    const Element* shape = in_member(call, "paint_path");
    const Element* stroke = in_member(call, "stroking_params");
    if (shape != nullptr && is_text(*shape))
        return text_box(call, *shape);
    if (shape != nullptr)
    {
        std::optional<GGO_BoxFloat> box = shape_box(*shape, space);
        const Element* holder = shape->member("sp_HeaderPtr");
        const Element* record = holder != nullptr ? holder->first : nullptr;
        const Element* head = record != nullptr ? record->child("GSH_Shape") : nullptr;
        if (!box || stroke == nullptr || head == nullptr)
            return box;
        const GGO_Matrix own = read_matrix(*head, "sh_Transform");
        const GGO_Vector margin = stroke_margin(*stroke, ggo_multiply(&own, &space));
        return GGO_BoxFloat{box->gbf_MinX - margin.gvf_X, box->gbf_MinY - margin.gvf_Y, box->gbf_MaxX + margin.gvf_X,
                            box->gbf_MaxY + margin.gvf_Y};
    }
    for (const char* name : {"operand1", "fill_operand1"})
    {
        const Element* operand = in_member(call, name);
        if (operand != nullptr && operand->child("GOP_OperandImage") != nullptr &&
            operand->child("GOP_TilingParameters") == nullptr)
            return image_box(*operand, space);
    }
    // What has no shape paints all that the clip lets through.
    std::optional<GGO_BoxFloat> box = drawing.face;
    meet(box, clip_box(call, space));
    return box->gbf_MinX <= box->gbf_MaxX && box->gbf_MinY <= box->gbf_MaxY ? box : std::nullopt;
}

CallSummary CallSummaries::next(const Element& call)
{
    CallSummary summary;
    summary.place = call.place;
    summary.kind = call.name.starts_with(kPrefix) ? call.name.substr(kPrefix.size()) : call.name;
    if (call.has("id"))
        summary.id = read_uint(call, "id");
    if (summary.kind == "face_start")
        start_face(call, summary);
    else if (summary.kind == "resource_start")
        start_resource(call, summary);
    else if (summary.kind == "resource_destroy")
        resources_.erase(read_uint(call, "resource_id"));
    Drawing nowhere;
    Drawing* known = drawing_of(call);
    Drawing& drawing = known != nullptr ? *known : nowhere;
    summary.page = drawing.page;
    if (summary.kind == "group_start")
        start_group(call, summary, drawing);
    else if (summary.kind == "group_finish")
        finish_group(call, drawing);
    else if (summary.kind == "resource_paint")
        paint_resource(call, summary, drawing);
    else if (summary.kind == "drawing_finish" || summary.kind == "drawing_discard")
        drawings_.erase(read_uint(call, "drawing_context"));
    else if (summary.kind == "object_paint")
    {
        summary.op = operator_text(in_member(call, "op"));
        summary.box = paint_box(call, drawing);
        add_paint(summary.colour, "", call, "");
    }
    else if (summary.kind == "object_paint_and_stroke")
    {
        const uint32_t flags = read_flags(call, "paint_flags");
        const bool fills = (flags & ORV_PAINTFLAGS_FILL) != 0;
        summary.op = operator_text(in_member(call, fills ? "fill_op" : "stroke_op"));
        summary.box = paint_box(call, drawing);
        add_paint(summary.colour, "", call, "fill_");
        add_paint(summary.colour, "stroke ", call, "stroke_");
    }
    return summary;
}

}  // namespace orvlog::reader
