#include "tools/shared/state-text.h"

#include "tools/shared/clips-text.h"
#include "tools/shared/look.h"

#include <array>
#include <span>

namespace orvlog::tool
{

namespace
{

using nlohmann::ordered_json;
using orvlog::inspect::CallDescription;
using orvlog::inspect::CallState;
using orvlog::inspect::ClipEntry;
using orvlog::inspect::DrawingState;
using orvlog::inspect::FontState;
using orvlog::inspect::FrameState;
using orvlog::inspect::GroupState;

std::string line(std::string_view name, const std::string& text)
{
    std::string padded(name);
    padded.resize(12, ' ');
    return padded + printable(text) + "\n";
}

std::string or_dash(const std::string& text)
{
    return text.empty() ? "-" : text;
}

std::string numbers(std::span<const double> values)
{
    std::string text;
    for (const double value : values)
    {
        text += text.empty() ? "" : " ";
        text += number_text(value);
    }
    return text;
}

std::string exact_box(const GGO_BoxFloat& box)
{
    const std::array values{box.gbf_MinX, box.gbf_MinY, box.gbf_MaxX, box.gbf_MaxY};
    return numbers(values);
}

std::string clip_text(const ClipEntry& clip)
{
    std::string text = clip.collection ? "or in " : clip.inside ? "inside " : "outside ";
    text += clip.shape;
    if (!clip.winding.empty())
        text += ", " + clip.winding;
    if (clip.parts > 0)
        text += ", " + std::to_string(clip.parts) + " parts";
    return text + ", " + (clip.box ? exact_box(*clip.box) : "-");
}

std::string clip_lines(std::string_view name, const std::vector<ClipEntry>& clips)
{
    std::string text;
    for (const ClipEntry& clip : clips)
        text += line(name, clip_text(clip));
    return text;
}

std::string group_lines(const GroupState& group)
{
    constexpr std::string_view kPrefix = "ORV_GROUP_";
    const std::string type = group.type.starts_with(kPrefix) ? group.type.substr(kPrefix.size()) : group.type;
    return line("group", group.call.address + ", " + or_dash(type) + (group.knockout ? ", knockout" : "") + ", " +
                             or_dash(group.call.op) + ", " + or_dash(group.call.operand) + ", transform " +
                             numbers(group.retransform.m)) +
           clip_lines("  its clip", group.call.clips);
}

std::string font_text(const FontState& font)
{
    return or_dash(font.engine) + (font.gfp_id ? ", GfpId " + std::to_string(*font.gfp_id) : "") + ", from " +
           font.from;
}

std::string frame_text(const FrameState& frame)
{
    const std::string ticket = frame.ticket ? "ticket " + std::to_string(*frame.ticket) : "no ticket";
    return frame.from + ", " + ticket + (frame.ticket && !frame.own ? " of the frame around it" : "");
}

std::string drawing_lines(const DrawingState& drawing)
{
    const bool face = drawing.kind == "face";
    std::string text = drawing.from + ", drawing " + std::to_string(drawing.context);
    if (face)
        text += ", number " + std::to_string(drawing.number) + ", " + number_text(drawing.box.gbf_MaxX) + " by " +
                number_text(drawing.box.gbf_MaxY) + " pixels, transform " + numbers(drawing.to_pixels.m);
    else if (drawing.kind == "resource")
        text += ", id " + std::to_string(drawing.number) + ", box " + exact_box(drawing.box);
    std::string lines = line(face ? "page " + std::to_string(drawing.page) : drawing.kind, text);
    for (const GroupState& group : drawing.groups)
        lines += group_lines(group);
    for (const FrameState& frame : drawing.frames)
        lines += line("colours", frame_text(frame));
    for (const FontState& font : drawing.fonts)
        lines += line("fonts", font_text(font));
    return lines;
}

std::string warning_lines(const CallState& state)
{
    std::string count = std::to_string(state.warnings) + " since the start";
    if (state.drawing)
        count += ", " + std::to_string(state.warnings - state.drawing->warnings_before) + " since the " +
                 (state.drawing->kind == "face" ? "page" : "drawing") + " began";
    std::string lines = line("warnings", count);
    for (const auto& warning : state.last_warnings)
    {
        std::string text = warning.text;
        while (text.ends_with('\n') || text.ends_with('\r'))
            text.pop_back();
        lines += line("", "line " + std::to_string(warning.line) + ": " + text);
    }
    return lines;
}

// What the clips of the call and of the groups around it let through at most.
std::optional<GGO_BoxFloat> whole_clip(const CallState& state)
{
    std::vector<ClipEntry> all = state.call.clips;
    if (state.drawing && state.drawing->kind == "face")
    {
        ClipEntry page;
        page.box = state.drawing->box;
        all.push_back(page);
    }
    std::optional<GGO_BoxFloat> box = orvlog::inspect::box_of(all);
    for (const GroupState& group : state.drawing ? state.drawing->groups : std::vector<GroupState>())
    {
        ClipEntry known;
        ClipEntry own;
        known.box = box;
        own.box = orvlog::inspect::box_of(group.call.clips);
        box = orvlog::inspect::box_of({known, own});
    }
    return box;
}

ordered_json call_json(const CallDescription& call)
{
    const auto text = [](const std::string& value)
    { return value.empty() ? ordered_json(nullptr) : ordered_json(value); };
    ordered_json object;
    object["call"] = call.address;
    object["line"] = call.line;
    object["kind"] = call.kind;
    object["operator"] = text(call.op);
    object["operand"] = text(call.operand);
    object["box"] = box_json(call.box);
    object["clips"] = clips_json(call.clips);
    return object;
}

ordered_json drawing_json(const DrawingState& drawing)
{
    ordered_json object;
    object["from"] = drawing.from;
    object["kind"] = drawing.kind;
    object["drawing_context"] = drawing.context;
    object["page"] = drawing.page != 0 ? ordered_json(drawing.page) : ordered_json(nullptr);
    object["number"] = drawing.number;
    object["box"] = box_json(drawing.box);
    object["to_pixels"] = drawing.kind == "face" ? ordered_json(drawing.to_pixels.m) : ordered_json(nullptr);
    object["groups"] = ordered_json::array();
    for (const GroupState& group : drawing.groups)
    {
        ordered_json one = call_json(group.call);
        one["type"] = group.type;
        one["knockout"] = group.knockout;
        one["retransform"] = group.retransform.m;
        object["groups"].push_back(one);
    }
    object["colour_frames"] = ordered_json::array();
    for (const FrameState& frame : drawing.frames)
        object["colour_frames"].push_back(
            {{"from", frame.from},
             {"ticket", frame.ticket ? ordered_json(*frame.ticket) : ordered_json(nullptr)},
             {"own", frame.own}});
    object["fonts"] = ordered_json::array();
    for (const FontState& font : drawing.fonts)
        object["fonts"].push_back({{"from", font.from},
                                   {"engine", font.engine},
                                   {"gfp_id", font.gfp_id ? ordered_json(*font.gfp_id) : ordered_json(nullptr)}});
    return object;
}

}  // namespace

std::string state_text(const CallState& state)
{
    const CallDescription& call = state.call;
    std::string text = line("call", call.address + " " + call.kind + ", line " + std::to_string(call.line) + ", byte " +
                                        std::to_string(state.byte));
    if (state.document)
        text += line("document", state.document->from + ", context " + std::to_string(state.document->context) +
                                     ", id " + std::to_string(state.document->id));
    if (state.drawing)
        text += drawing_lines(*state.drawing);
    if (state.on_page)
        text += line("to pixels", numbers(state.to_pixels.m));
    if (!call.op.empty() || !call.operand.empty())
        text += line("paints", or_dash(call.op) + ", " + or_dash(call.operand) + ", box " +
                                   (call.box ? exact_box(*call.box) : "-"));
    text += clip_lines("clip", call.clips);
    if (const std::optional<GGO_BoxFloat> box = whole_clip(state); state.on_page && box)
        text += line("all clips", exact_box(*box));
    for (const auto& resource : state.resources)
        text += line("resource " + std::to_string(resource.id),
                     resource.from + ", box " + exact_box(resource.box) + (resource.open ? ", being drawn" : ""));
    return text + warning_lines(state);
}

ordered_json state_json(const CallState& state)
{
    ordered_json object = call_json(state.call);
    object["byte"] = state.byte;
    object["page"] = state.call.page != 0 ? ordered_json(state.call.page) : ordered_json(nullptr);
    object["document"] = nullptr;
    if (state.document)
        object["document"] = {{"from", state.document->from},
                              {"document_context", state.document->context},
                              {"document_id", state.document->id}};
    object["drawing"] = state.drawing ? drawing_json(*state.drawing) : ordered_json(nullptr);
    object["to_pixels"] = state.on_page ? ordered_json(state.to_pixels.m) : ordered_json(nullptr);
    object["all_clips"] = state.on_page ? box_json(whole_clip(state)) : ordered_json(nullptr);
    object["resources"] = ordered_json::array();
    for (const auto& resource : state.resources)
        object["resources"].push_back({{"id", resource.id},
                                       {"from", resource.from},
                                       {"box", box_json(resource.box)},
                                       {"being_drawn", resource.open}});
    object["warnings"] = state.warnings;
    object["warnings_of_drawing"] =
        state.drawing ? ordered_json(state.warnings - state.drawing->warnings_before) : ordered_json(nullptr);
    object["last_warnings"] = ordered_json::array();
    for (const auto& warning : state.last_warnings)
        object["last_warnings"].push_back({{"line", warning.line}, {"text", warning.text}});
    return object;
}

}  // namespace orvlog::tool
