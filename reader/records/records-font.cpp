#include "reader/records/record-parts.h"
#include "reader/records/records.h"
#include "reader/tree/values.h"

#include <algorithm>

namespace orvlog::reader
{

const GFI_FontSpecPointer* RecordReader::font_spec(const Element* element)
{
    if (element == nullptr || element->name != "GFI_FontSpecPointer")
        return nullptr;
    auto* pointer = arena_.make<GFI_FontSpecPointer>();
    const Element* told = element->child("GFI_FontSpec");
    if (told == nullptr)
        return pointer;
    auto* spec = arena_.make<GFI_FontSpec>();
    spec->ufs_FontSize = read_float(*told, "ufs_FontSize");
    spec->ufs_Direction = static_cast<uint8_t>(read_enum(*told, "ufs_Direction"));
    spec->ufs_FontVolatility = static_cast<uint8_t>(read_enum(*told, "ufs_FontVolatility"));
    pointer->fsp_FontSpec = spec;
    return pointer;
}

const GFI_StringDescPointer* RecordReader::string_desc(const Element* element)
{
    if (element == nullptr || element->name != "GFI_StringDescPointer")
        return nullptr;
    auto* pointer = arena_.make<GFI_StringDescPointer>();
    if (!element->has("gsp_StringDesc.gsd_TextLen"))
        return pointer;
    auto* description = arena_.make<GFI_StringDesc>();
    const std::vector<uint32_t> text = to_uints(element->value("gsp_TextPtr"));
    const std::span<uint8_t> bytes = arena_.make_array<uint8_t>(text.size());
    std::ranges::transform(text, bytes.begin(), [](uint32_t value) { return static_cast<uint8_t>(value); });
    const size_t count = count_named(*element, "GFI_GlyphClusterSpec");
    const std::span<GFI_GlyphClusterSpec> clusters = arena_.make_array<GFI_GlyphClusterSpec>(count);
    description->gsd_TextLen = static_cast<uint32_t>(text.size());
    description->gsd_GlyphMappingLen = static_cast<uint32_t>(count);
    description->gsd_StyleSimulation = read_word(*element, "gsp_StringDesc.gsd_StyleSimulation");
    pointer->gsp_StringDesc = description;
    pointer->gsp_TextPtr = bytes.data();
    pointer->gsp_GlyphMapping = clusters.data();
    GFI_GlyphClusterSpec* to = clusters.data();
    for (const Element& cluster : Children(*element))
    {
        if (cluster.name != "GFI_GlyphClusterSpec")
            continue;
        const size_t glyph_count = std::min<size_t>(count_named(cluster, "GFI_GlyphSpec"), UINT16_MAX);
        const std::span<GFI_GlyphSpec> glyphs = arena_.make_array<GFI_GlyphSpec>(glyph_count);
        size_t next = 0;
        for (const Element& one : Children(cluster))
        {
            if (one.name == "GFI_GlyphSpec" && next < glyph_count)
                glyphs[next++] = {read_word(one, "ggs_Flags"), read_word(one, "ggs_GlyphIndex"),
                                  read_float(one, "ggs_OffsetX"), read_float(one, "ggs_OffsetY"),
                                  read_float(one, "ggs_AdvanceOverride")};
        }
        *to++ = {read_word(cluster, "gcs_nCharacters"), static_cast<uint16_t>(glyph_count), glyphs.data()};
    }
    return pointer;
}

void RecordReader::start_call()
{
    font_specs_.clear();
    strings_.clear();
    colour_spaces_.clear();
}

}  // namespace orvlog::reader
