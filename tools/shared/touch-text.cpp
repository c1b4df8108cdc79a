#include "tools/shared/touch-text.h"

#include "tools/shared/clips-text.h"
#include "tools/shared/look.h"

#include <algorithm>
#include <cstdio>

namespace orvlog::tool
{

namespace
{

using nlohmann::ordered_json;
using orvlog::inspect::CallDescription;
using orvlog::inspect::ClipEntry;
using orvlog::inspect::PixelBox;
using orvlog::inspect::Touch;

const CallDescription& description(const Descriptions& calls, uint64_t call)
{
    static const CallDescription unknown{"-", 0, "-", 0, "", "", std::nullopt, {}};
    const auto found = calls.find(call);
    return found != calls.end() ? found->second : unknown;
}

std::string pixel_box_text(const PixelBox& box)
{
    return std::to_string(box.x0) + "," + std::to_string(box.y0) + "," + std::to_string(box.x1) + "," +
           std::to_string(box.y1);
}

std::string what_happened(const TouchView& view)
{
    const Touch& touch = view.touch;
    if (!view.one_pixel)
        return std::to_string(touch.pixels) + (touch.pixels == 1 ? " pixel in " : " pixels in ") +
               pixel_box_text(touch.area);
    const std::string after = colour_text(touch.after, touch.on_layer);
    if (touch.changed)
        return colour_text(touch.before, touch.on_layer) + " -> " + after;
    std::string text = after + " stays: " + reason_text(touch.why.reason);
    if (touch.why.group != 0)
        text += ", " + description(view.calls, touch.why.group).address;
    return text;
}

// The operator and operand of a group's end are those of its begin.
const CallDescription& painter(const TouchView& view)
{
    const bool ends = view.touch.kind != Touch::Kind::paint;
    return description(view.calls, ends ? view.touch.begun_by : view.touch.call);
}

}  // namespace

const char* reason_text(cairo_renderer::Unchanged reason)
{
    using cairo_renderer::Unchanged;
    switch (reason)
    {
    case Unchanged::not_covered:
        return "not covered";
    case Unchanged::clipped:
        return "clipped away";
    case Unchanged::group_clipped:
        return "clipped away by a group";
    case Unchanged::hidden:
        return "in a group that isn't painted";
    case Unchanged::nothing:
        return "nothing to paint with";
    case Unchanged::transparent:
        return "transparent";
    case Unchanged::masked:
        return "masked out";
    case Unchanged::same_colour:
        return "same colour";
    case Unchanged::by_operator:
        return "kept by the operator";
    case Unchanged::faint:
        return "too faint";
    }
    return "";
}

std::string colour_text(std::optional<uint32_t> colour, bool alpha)
{
    if (!colour)
        return "-";
    const uint32_t opacity = *colour >> 24U;
    const auto channel = [&](unsigned shift)
    {
        const uint32_t value = *colour >> shift & 0xFFU;
        return opacity == 0 ? 0 : std::min((value * 255 + opacity / 2) / opacity, 255U);
    };
    char text[16];
    std::snprintf(text, sizeof text, "#%02x%02x%02x", channel(16), channel(8), channel(0));
    char with_alpha[24];
    std::snprintf(with_alpha, sizeof with_alpha, "%s%02x", text, opacity);
    return alpha ? with_alpha : text;
}

std::string touch_line(const TouchView& view)
{
    const CallDescription& call = description(view.calls, view.touch.call);
    const CallDescription& paints = painter(view);
    const std::string op = paints.op.empty() ? "-" : paints.op;
    const std::string what = paints.operand.empty() ? "-" : paints.operand;
    const std::string clip =
        paints.clips.empty() ? "-"
                             : box_text(orvlog::inspect::box_of(paints.clips)) +
                                   (paints.clips.size() > 1 ? " (" + std::to_string(paints.clips.size()) + ")" : "");
    char text[200];
    std::snprintf(text, sizeof text, "%12s %-23s %-22s %-14s ", call.address.c_str(),
                  printable(call.kind).substr(0, 60).c_str(), what_happened(view).c_str(),
                  printable(op).substr(0, 60).c_str());
    std::string line = text + printable(what) + "  clip " + clip;
    if (view.touch.kind != Touch::Kind::paint && view.touch.begun_by != view.touch.call)
        line += "  of " + paints.address;
    if (!view.around.empty())
        line += "  in";
    for (const uint64_t group : view.around)
        line += " " + description(view.calls, group).address;
    return line + "\n";
}

ordered_json touch_json(const TouchView& view)
{
    const Touch& touch = view.touch;
    const CallDescription& call = description(view.calls, touch.call);
    const CallDescription& paints = painter(view);
    const auto text = [](const std::string& value)
    { return value.empty() ? ordered_json(nullptr) : ordered_json(value); };
    const auto colour = [&](std::optional<uint32_t> value)
    { return value ? ordered_json(colour_text(value, touch.on_layer)) : ordered_json(nullptr); };
    ordered_json object;
    object["call"] = call.address;
    object["line"] = call.line;
    object["byte"] = touch.call;
    object["kind"] = call.kind;
    object["of"] = touch.kind == Touch::Kind::paint ? ordered_json(nullptr) : ordered_json(paints.address);
    object["in"] = ordered_json::array();
    for (const uint64_t group : view.around)
        object["in"].push_back(description(view.calls, group).address);
    object["changed"] = touch.changed;
    object["reason"] = touch.changed ? ordered_json(nullptr) : ordered_json(reason_text(touch.why.reason));
    object["reason_call"] = touch.changed || touch.why.group == 0
                                ? ordered_json(nullptr)
                                : ordered_json(description(view.calls, touch.why.group).address);
    object["before"] = colour(touch.before);
    object["after"] = colour(touch.after);
    object["pixels"] = touch.pixels;
    object["area"] = touch.changed ? ordered_json::array({touch.area.x0, touch.area.y0, touch.area.x1, touch.area.y1})
                                   : ordered_json(nullptr);
    object["operator"] = text(paints.op);
    object["operand"] = text(paints.operand);
    object["clips"] = clips_json(paints.clips);
    return object;
}

}  // namespace orvlog::tool
