#include "clients/replay/replay.h"

#include "clients/replay/call-stream.h"
#include "clients/replay/player.h"
#include "holv-core/ggo/ggo-geometry.h"
#include "reader/tree/values.h"

#include <cmath>

namespace orvlog::replay
{

namespace
{

using reader::Children;
using reader::Element;

void examine_callback(const Element& callback, LogKind* kind)
{
    if (callback.name == "GFI_GlyphGetFixedFormatFn")
        kind->fixed_formats = true;
    if (callback.name == "GFI_GlyphGetFn")
        kind->glyph_get_type = reader::read_enum(callback, "requested_desc_type");
    if (callback.name == "GOP_ImagePrepareFn" && reader::read_bool(callback, "need_attr") != 0)
        kind->image_attributes = true;
}

// A glyph callback of the renderer's; `first` as long as it hasn't asked for the present glyph. Gives that for what
// follows.
bool examine_rendered(const Element& callback, bool first, LogKind* kind)
{
    if (callback.name == "GFI_GlyphIndexGetFn")
        return true;
    if (callback.name == "GFI_GlyphGetFixedFormatFn")
        kind->rendered_fixed = true;
    if (callback.name != "GFI_GlyphGetFn")
        return first;
    if (first)
        kind->rendered_first |= 1U << (reader::read_enum(callback, "requested_desc_type") & 31);
    return false;
}

// Callbacks that stand in members are the logger's own.
void examine_call(const Element& element, bool in_member, LogKind* kind)
{
    bool first = false;
    for (const Element& child : Children(element))
    {
        const bool callback = child.name.ends_with("Fn");
        kind->side_files |= child.has("imp_DirectImageFileName") || child.has("ImageFileName");
        kind->kept_images |= child.name == "GOP_ImageKeepFn";
        kind->rendered |= callback && !in_member;
        if (!in_member)
            first = examine_rendered(child, first, kind);
        if (callback && in_member)
        {
            kind->base_content = true;
            examine_callback(child, kind);
        }
        if (!callback && child.name != "GSH_ShapePointer" && !child.name.starts_with("GOP_"))
            examine_call(child, in_member || child.name.find('.') != std::string_view::npos, kind);
    }
}

}  // namespace

double resolution(const GGO_Matrix& inch_to_pixels)
{
    const double found = std::sqrt(std::abs(ggo_determinant(&inch_to_pixels)));
    return std::isfinite(found) ? found : 0;
}

LogKind examine(std::istream& log)
{
    LogKind kind;
    FactFinder facts(kind.script);
    uint32_t last_number = 0;
    reader::ElementReader elements(log, reader::LogForm::log, reader::Data::skip);
    while (const Element* call = elements.next())
    {
        examine_call(*call, false, &kind);
        facts.add(*call);
        if (call->name != "ORV_face_start")
            continue;
        const uint32_t number = reader::read_uint(*call, "face_seq_number");
        kind.numbered = kind.numbered && number > last_number;
        last_number = number;
        const Element* face = call->child("ORV_FaceProperties");
        if (kind.faces++ == 0 && face != nullptr)
            kind.dpi = resolution(reader::read_matrix(*face, "fp_FaceInchToPixels"));
    }
    kind.is_log = elements.events().is_log();
    kind.base_mode = elements.root().value("LoggingMode") == "base";
    return kind;
}

Outcome play(std::istream& log, const ORV_Interface* table, ReplayTickets& tickets, const Options& options)
{
    CallStream calls(log, options);
    Player player(table, tickets, options, calls);
    bool going = true;
    while (const Element* call = going ? calls.take() : nullptr)
    {
        going = (!options.before_call || options.before_call(*call)) && player.play(*call);
        if (options.progress)
            options.progress(calls.bytes_used());
    }
    player.finish_all();
    Outcome outcome = player.outcome();
    outcome.is_log = calls.is_log();
    outcome.cut = going && calls.is_cut();
    outcome.reached = !options.up_to || !going;
    outcome.damage += calls.damage();
    return outcome;
}

}  // namespace orvlog::replay
