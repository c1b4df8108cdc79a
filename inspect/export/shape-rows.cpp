// The rows of shapes and of what they are made of: a part of RecordRows.

#include "inspect/export/path-rows.h"
#include "inspect/export/record-rows.h"
#include "reader/tree/values.h"

#include <cstdio>

namespace orvlog::inspect
{

using orvlog::reader::Children;
using orvlog::reader::Element;

int64_t RecordRows::shape(const Element& element, const Around& around)
{
    const Element* holder = element.member("sp_HeaderPtr");
    const Element* record = holder != nullptr ? holder->first : nullptr;
    const Element* head = record != nullptr ? record->child("GSH_Shape") : nullptr;
    const Element* stroke = record != nullptr ? record->child("GPA_PathStrokingParams") : nullptr;
    const auto winding = name_of(record, "fps_WindingRule");
    const auto rectangles = number_of(record, "mrs_RectCount");
    const auto height = number_of(record, "irs_ImageHeight");
    const auto rows_of_it = number_of(record, "ss_Height");
    RowWriter& rows = job_.rows;
    const int64_t item = job_.begin(Table::shapes);
    rows.text(around.role).integer(around.clip).text(name_of(head, "sh_ShapeType")).integer(flags_of(head, "sh_Hints"));
    rows.text(winding ? winding : name_of(record, "sps_WindingRule"));
    rows.integer(rectangles ? rectangles : rows_of_it).integer(number_of(record, "irs_ImageWidth"));
    rows.integer(height ? height : rows_of_it).real(real_of(stroke, "psp_StrokeWidth"));
    put_matrix(rows, head, "sh_Transform");
    rows.end();
    if (const Element* glyphs = element.member("sp_U.glyph"); glyphs != nullptr)
    {
        Around inside = around;
        inside.shape = item;
        text(*glyphs, inside);
    }
    return item;
}

void RecordRows::path(const Element& element, const Around& around)
{
    const Element* record = element.child("GPA_Path");
    const int64_t item = job_.items[static_cast<size_t>(Table::paths)] + 1;
    TakeSegment take;
    if (job_.options.content)
        take = [this, item](const Element& edge, uint64_t number, const Element* start, const Element& segment)
        {
            job_.begin(Table::segments);
            job_.rows.integer(item).integer(static_cast<int64_t>(number));
            put_segment(job_.rows, edge, start, segment);
            job_.rows.end();
        };
    const PathFacts facts = path_facts(element, take);
    RowWriter& rows = job_.rows;
    job_.begin(Table::paths);
    rows.text(around.role).integer(around.shape);
    for (const uint64_t count : {facts.edges, facts.segments, facts.straights, facts.beziers, facts.quadratics,
                                 facts.staircases, facts.ellipses, facts.closed})
        rows.integer(static_cast<int64_t>(count));
    rows.integer(flags_of(record, "pa_PathHints"));
    const bool boxed = record != nullptr && record->has("pa_EnclosingBox");
    put_box(rows, boxed ? std::optional(orvlog::reader::read_box(*record, "pa_EnclosingBox")) : std::nullopt);
    rows.text(facts.hash).integer(facts.complete ? 1 : 0).end();
}

int64_t RecordRows::clip(const Element& element, const Around& around)
{
    const int64_t item = job_.begin(Table::clips);
    job_.rows.text(around.role).integer(around.clip);
    job_.rows.integer(orvlog::reader::read_bool(element, "sl_ClipIn") != 0 ? 1 : 0);
    job_.rows.integer(flags_of(&element, "sl_Hints").value_or(0));
    job_.rows.integer(number_of(&element, "sl_UniqueId").value_or(0));
    job_.rows.integer(element.child("GSH_ShapeListCollection") != nullptr ? 1 : 0).end();
    return item;
}

void RecordRows::text(const Element& glyphs, const Around& around)
{
    const Element* string = glyphs.child("GFI_StringDescPointer");
    uint64_t count = 0;
    for (const Element* cluster = string != nullptr ? string->first : nullptr; cluster != nullptr;
         cluster = cluster->next)
        for (const Element& glyph : Children(*cluster))
            count += glyph.name == "GFI_GlyphSpec" ? 1 : 0;
    RowWriter& rows = job_.rows;
    job_.begin(Table::texts);
    rows.text(around.role).integer(*around.shape);
    rows.integer(number_of(&glyphs, "orvlog_font_spec_id")).integer(number_of(&glyphs, "orvlog_string_desc_id"));
    rows.integer(number_of(string, "gsp_StringDesc.gsd_TextLen"));
    rows.integer(number_of(string, "gsp_StringDesc.gsd_GlyphMappingLen")).integer(static_cast<int64_t>(count));
    rows.integer(number_of(string, "gsp_StringDesc.gsd_StyleSimulation"));
    if (!job_.options.texts || string == nullptr || !string->has("gsp_TextPtr"))
    {
        rows.null().null().end();
        return;
    }
    std::string bytes;
    std::string hex;
    for (const uint32_t byte : orvlog::reader::to_uints(string->value("gsp_TextPtr")))
    {
        char digits[3];
        std::snprintf(digits, sizeof digits, "%02x", byte & 0xFFU);
        bytes += static_cast<char>(byte);
        hex += digits;
    }
    rows.text(bytes).text(hex).end();
}

void RecordRows::font(const Element& element, const Around& around)
{
    const Element* record = element.child("GFI_FontSpec");
    const std::optional<int64_t> spec = number_of(around.glyphs, "orvlog_font_spec_id");
    const FontUse* use = spec ? callbacks_.font(*spec) : nullptr;
    RowWriter& rows = job_.rows;
    job_.begin(Table::fonts);
    rows.text(around.role).integer(around.shape).integer(spec).real(real_of(record, "ufs_FontSize"));
    rows.text(name_of(record, "ufs_Direction")).text(name_of(record, "ufs_FontVolatility"));
    if (use == nullptr)
        rows.null().null().null();
    else
        rows.integer(use->engine).text(callbacks_.engine_name(use->engine)).integer(use->font);
    rows.end();
}

}  // namespace orvlog::inspect
