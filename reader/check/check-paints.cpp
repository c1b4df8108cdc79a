#include "reader/check/check-paints.h"

#include "orvlog/interface/orvlog.h"
#include "reader/look/call-box.h"
#include "reader/tree/values.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <optional>
#include <string_view>

namespace orvlog::reader
{

namespace
{

constexpr size_t kMostOpen = 1 << 16;
constexpr size_t kMostGroups = 4096;
constexpr double kSlack = 2;       // pixels that a renderer may paint around a shape
constexpr double kFarPages = 100;  // so many times the page's longer side is far
constexpr uint32_t kSourceOver = 3;

const Element* in_member(const Element& call, const std::string& name)
{
    const Element* member = call.member(name);
    return member != nullptr ? member->first : nullptr;
}

bool apart(const GGO_BoxFloat& a, const GGO_BoxFloat& b)
{
    return a.gbf_MinX > b.gbf_MaxX + kSlack || b.gbf_MinX > a.gbf_MaxX + kSlack || a.gbf_MinY > b.gbf_MaxY + kSlack ||
           b.gbf_MinY > a.gbf_MaxY + kSlack;
}

bool is_empty(const GGO_BoxFloat& box)
{
    return box.gbf_MinX > box.gbf_MaxX + kSlack || box.gbf_MinY > box.gbf_MaxY + kSlack;
}

std::string told(const GGO_BoxFloat& box)
{
    char text[160];
    std::snprintf(text, sizeof text, "%.9g,%.9g,%.9g,%.9g", box.gbf_MinX, box.gbf_MinY, box.gbf_MaxX, box.gbf_MaxY);
    return text;
}

const Element* flat_color(const Element* operand)
{
    const Element* flat = operand != nullptr ? operand->child("GOP_OperandFlat") : nullptr;
    const Element* holder = flat != nullptr ? flat->member("fl_Color") : nullptr;
    return holder != nullptr ? holder->child("GBC_Color") : nullptr;
}

bool is_zero(std::string_view value)
{
    return !value.empty() && value.find_first_not_of("-0. ") == std::string_view::npos &&
           value.find('0') != std::string_view::npos;
}

// What is transparent leaves what is there as it is.
bool keeps_below(const Element* op)
{
    if (op == nullptr)
        return true;
    const std::string_view type = op->value("op_OperatorType");
    return type == "GOP_ROP_PDF_SEPARABLE" || type == "GOP_ROP_PDF_NONSEPARABLE" ||
           (type == "GOP_ROP_PORTER_DUFF" && read_uint(*op, "op_Operator") == kSourceOver);
}

// Why the fill or the stroke of a paint, whose members' names begin with `side`, has no effect; null if it may have.
const char* without_effect(const Element& call, const std::string& side)
{
    const Element* op = in_member(call, side + "op");
    if (!keeps_below(op))
        return nullptr;
    const Element* color = flat_color(in_member(call, side + "operand1"));
    if (color != nullptr && color->has("alpha") && is_zero(color->value("alpha")))
        return "its alpha is 0";
    const Element* mask = flat_color(in_member(call, side + "operand2"));
    if (op == nullptr || op->value("op_MaskMode") != "GOP_MASK_IN" || mask == nullptr)
        return nullptr;
    const std::string_view channels = mask->value("base_n");
    const std::string_view level = mask->has("alpha") ? mask->value("alpha") : channels.substr(0, channels.find(' '));
    return is_zero(level) ? "its mask is 0" : nullptr;
}

const char* without_effect(const Element& call)
{
    if (call.name == "ORV_object_paint")
        return without_effect(call, "");
    const uint32_t flags = read_flags(call, "paint_flags");
    const bool fills = (flags & ORV_PAINTFLAGS_FILL) != 0;
    const bool strokes = (flags & ORV_PAINTFLAGS_STROKE) != 0;
    if (!fills && !strokes)
        return call.has("paint_flags") ? "it neither fills nor strokes" : nullptr;
    const char* fill = fills ? without_effect(call, "fill_") : nullptr;
    const char* stroke = strokes ? without_effect(call, "stroke_") : nullptr;
    const bool all = (!fills || fill != nullptr) && (!strokes || stroke != nullptr);
    return !all ? nullptr : fill != nullptr ? fill : stroke;
}

const Element* shape_record(const Element& shape)
{
    const Element* holder = shape.member("sp_HeaderPtr");
    return holder != nullptr ? holder->first : nullptr;
}

// Clips whose boxes may be smaller than they are: strokes have corners.
bool has_stroked_clip(const Element& call)
{
    const Element* clips = call.member("clip");
    for (const Element* list = clips != nullptr ? clips->first : nullptr; list != nullptr; list = list->next)
    {
        const Element* holder = list->member("sl_Shape");
        const Element* shape = holder != nullptr ? holder->child("GSH_ShapePointer") : nullptr;
        const Element* record = shape != nullptr ? shape_record(*shape) : nullptr;
        if (record != nullptr && record->name.starts_with("GSH_Stroked"))
            return true;
    }
    return false;
}

bool is_shape_empty(const Element& shape)
{
    const Element* record = shape_record(shape);
    const bool known = record != nullptr && record->child("GSH_Shape") != nullptr &&
                       (record->name == "GSH_FilledPathShape" || record->name == "GSH_MultiRectShape");
    constexpr GGO_Matrix kIdentity = {{1, 0, 0, 1, 0, 0}};
    return known && !shape_box(shape, kIdentity);
}

// A box that holds all that the call paints, with the corners of strokes; nothing if it can't be told for sure.
std::optional<GGO_BoxFloat> sure_box(const Element& call, const CallSummary& summary, const GGO_Matrix& space)
{
    const Element* shape = in_member(call, "paint_path");
    const Element* stroke = in_member(call, "stroking_params");
    if (shape == nullptr || !summary.box || is_text(*shape) || call.has("stroking_transform"))
        return std::nullopt;
    const Element* record = shape_record(*shape);
    const Element* head = record != nullptr ? record->child("GSH_Shape") : nullptr;
    if (head == nullptr || record->name.starts_with("GSH_Stroked"))
        return std::nullopt;
    GGO_BoxFloat box = *summary.box;
    if (stroke != nullptr)
    {
        const GGO_Matrix own = read_matrix(*head, "sh_Transform");
        const GGO_Vector margin = stroke_margin(*stroke, ggo_multiply(&own, &space));
        const double corner = std::max(2.0, read_double(*stroke, "psp_MiterLimit"));
        const double reach = corner * std::max(margin.gvf_X, margin.gvf_Y);
        box = {box.gbf_MinX - reach, box.gbf_MinY - reach, box.gbf_MaxX + reach, box.gbf_MaxY + reach};
    }
    const bool finite = std::isfinite(box.gbf_MinX) && std::isfinite(box.gbf_MinY) && std::isfinite(box.gbf_MaxX) &&
                        std::isfinite(box.gbf_MaxY);
    return finite ? std::optional(box) : std::nullopt;
}

}  // namespace

void CheckPaints::finish_group(const Element& call, Drawing& drawing)
{
    if (read_bool(call, "replay_group") != 0)
        return;
    if (drawing.deeper > 0)
    {
        --drawing.deeper;
        return;
    }
    if (drawing.groups.empty())
        return;
    if (!drawing.groups.back().used)
        note_(drawing.groups.back().place, "nothing is drawn into a group");
    const bool used = drawing.groups.back().used;
    drawing.groups.pop_back();
    if (!drawing.groups.empty() && used)
        drawing.groups.back().used = true;
}

void CheckPaints::where(const Element& call, const GGO_BoxFloat& box, const Drawing& drawing, const GGO_Matrix& space)
{
    const std::optional<GGO_BoxFloat> clip = has_stroked_clip(call) ? std::nullopt : clip_box(call, space);
    if (clip && is_empty(*clip))
        note_(call.place, "a paint has no effect: its clips have nothing in common");
    else if (clip && apart(box, *clip))
        note_(call.place, "a paint has no effect: it lies in " + told(box) + ", and its clips leave " + told(*clip));
    const GGO_BoxFloat& page = drawing.face;
    const bool repeated = drawing.deeper > 0 || std::ranges::any_of(drawing.groups, &Group::repeated);
    if (repeated)
        return;
    if (apart(box, page))
        note_(call.place, "a paint has no effect: it lies in " + told(box) + ", off the page");
    const double far = kFarPages * std::max({page.gbf_MaxX, page.gbf_MaxY, 1.0});
    if (box.gbf_MinX < -far || box.gbf_MinY < -far || box.gbf_MaxX > far || box.gbf_MaxY > far)
        note_(call.place, "a paint reaches far beyond the page: " + told(box));
}

void CheckPaints::paint(const Element& call, const CallSummary& summary, const Drawing& drawing,
                        const GGO_Matrix& space)
{
    const Element* shape = in_member(call, "paint_path");
    if (shape != nullptr && is_shape_empty(*shape))
        note_(call.place, "a paint has no effect: its shape is empty");
    else if (const auto box = sure_box(call, summary, space); box && drawing.has_face)
        where(call, *box, drawing, space);
    const bool knockout = drawing.deeper > 0 || std::ranges::any_of(drawing.groups, &Group::knockout);
    if (const char* why = knockout ? nullptr : without_effect(call); why != nullptr)
        note_(call.place, std::string("a paint has no effect: ") + why);
}

void CheckPaints::call(const Element& call)
{
    const CallSummary summary = summaries_.next(call);
    if (!call.has("drawing_context"))
        return;
    const uint32_t context = read_uint(call, "drawing_context");
    if (call.name == "ORV_drawing_finish" || call.name == "ORV_drawing_discard")
    {
        drawings_.erase(context);
        return;
    }
    if (drawings_.size() >= kMostOpen && !drawings_.contains(context))
        return;
    Drawing& drawing = drawings_[context];
    if (call.name == "ORV_face_start" && summary.box)
        drawing = {*summary.box, true, {}, 0};
    else if (call.name == "ORV_group_start" && drawing.groups.size() < kMostGroups)
        drawing.groups.push_back({call.place, false, read_bool(call, "is_knockout") != 0,
                                  read_bool(call, "is_replayable") != 0 || read_flags(call, "tiling_flags") != 0});
    else if (call.name == "ORV_group_start")
        ++drawing.deeper;
    else if (call.name == "ORV_group_finish")
        finish_group(call, drawing);
    else if (call.name == "ORV_object_paint" || call.name == "ORV_object_paint_and_stroke" ||
             call.name == "ORV_resource_paint")
    {
        if (!drawing.groups.empty())
            drawing.groups.back().used = true;
        const GGO_Matrix* space = summaries_.to_pixels(call);
        constexpr GGO_Matrix kIdentity = {{1, 0, 0, 1, 0, 0}};
        if (call.name != "ORV_resource_paint")
            paint(call, summary, drawing, space != nullptr ? *space : kIdentity);
    }
}

}  // namespace orvlog::reader
