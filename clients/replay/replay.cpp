#include "clients/replay/replay.h"

#include "clients/replay/as-logged.h"
#include "clients/replay/call-stream.h"
#include "clients/replay/player.h"
#include "holv-core/ggo/ggo-geometry.h"
#include "reader/text/log-pieces.h"
#include "reader/tree/values.h"

#include <cmath>
#include <utility>

namespace orvlog::replay
{

namespace
{

using reader::Children;
using reader::Element;

// What the logger warns of.
constexpr const char* kUnknownFamily = "GCM_ColorTicket of an unknown family.";

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

bool is_own(const Element& element, bool in_member)
{
    return !reader::is_call_name(element.name) && (in_member || element.name.find('.') != std::string_view::npos);
}

// Callbacks that stand in members are the logger's own, but for those of the calls that stand there.
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
            examine_call(child, is_own(child, in_member), kind);
    }
}

}  // namespace

double resolution(const GGO_Matrix& inch_to_pixels)
{
    const double found = std::sqrt(std::abs(ggo_determinant(&inch_to_pixels)));
    return std::isfinite(found) ? found : 0;
}

void Examination::add(const Element& call)
{
    examine_call(call, false, &kind_);
    if (call.name != "ORV_face_start")
        return;
    const uint32_t number = reader::read_uint(call, "face_seq_number");
    kind_.numbered = kind_.numbered && number > last_number_;
    last_number_ = number;
    const Element* face = call.child("ORV_FaceProperties");
    if (kind_.faces++ == 0 && face != nullptr)
        kind_.dpi = resolution(reader::read_matrix(*face, "fp_FaceInchToPixels"));
}

void Examination::add(const reader::Comment& one)
{
    kind_.names_unknown_families |= one.warning && one.text.find(kUnknownFamily) != std::string::npos;
}

LogKind Examination::finish(bool is_log, const Element& root)
{
    kind_.is_log = is_log;
    kind_.base_mode = root.value("LoggingMode") == "base";
    return kind_;
}

std::vector<uint64_t> facts_of(const LogKind& kind)
{
    return {kind.base_content,   kind.fixed_formats,         kind.image_attributes, kind.side_files,
            kind.rendered,       kind.kept_images,           kind.rendered_fixed,   kind.rendered_first,
            kind.glyph_get_type, kind.names_unknown_families};
}

namespace
{

// What the index of the whole log tells besides what its parts do.
void add_facts(const std::vector<uint64_t>& facts, LogKind* kind)
{
    if (facts.size() != facts_of({}).size())
        return;
    kind->base_content |= facts[0] != 0;
    kind->fixed_formats |= facts[1] != 0;
    kind->image_attributes |= facts[2] != 0;
    kind->side_files |= facts[3] != 0;
    kind->rendered |= facts[4] != 0;
    kind->kept_images |= facts[5] != 0;
    kind->rendered_fixed |= facts[6] != 0;
    kind->rendered_first |= static_cast<uint32_t>(facts[7]);
    kind->glyph_get_type = static_cast<uint32_t>(facts[8]);
    kind->names_unknown_families |= facts[9] != 0;
}

}  // namespace

LogKind examine(std::istream& log)
{
    Examination examination;
    ScriptFacts script;
    FactFinder facts(script);
    reader::ElementReader elements(log, reader::LogForm::log, reader::Data::skip);
    elements.on_comment = [&examination](const reader::Comment& one) { examination.add(one); };
    while (const Element* call = elements.next())
    {
        examination.add(*call);
        facts.add(*call);
    }
    facts.finish();
    LogKind kind = examination.finish(elements.events().is_log(), elements.root());
    kind.script = std::move(script);
    if (const auto* pieces = dynamic_cast<const reader::LogPieces*>(&log); pieces != nullptr)
        add_facts(pieces->index().facts, &kind);
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
    // As logged, what a job left open stays open.
    if (options.as_logged == nullptr || !going || calls.is_cut())
        player.finish_all();
    if (options.as_logged != nullptr)
        options.as_logged->renderer.finish_releases();
    Outcome outcome = player.outcome();
    outcome.kept = player.still_kept();
    outcome.is_log = calls.is_log();
    outcome.cut = going && calls.is_cut();
    outcome.reached = !options.up_to || !going;
    outcome.damage += calls.damage();
    return outcome;
}

}  // namespace orvlog::replay
