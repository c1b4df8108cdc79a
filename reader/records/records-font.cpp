#include "reader/records/records.h"

#include "reader/tree/values.h"

#include <algorithm>
#include <cstring>

namespace orvlog::reader
{

namespace
{

size_t count_named(const Element& element, std::string_view name)
{
    size_t count = 0;
    for (const Element& child : Children(element))
        count += child.name == name ? 1 : 0;
    return count;
}

uint16_t read_word(const Element& element, std::string_view name)
{
    return static_cast<uint16_t>(read_uint(element, name));
}

// A description's payload behind its record, and zeros up to `size`.
GFI_GlyphDesc* make_description(Arena& arena, size_t offset, size_t size, const Element* payload)
{
    auto* block = static_cast<std::byte*>(arena.take(std::max(offset + size, sizeof(GFI_GlyphDescBitmap))));
    if (payload != nullptr)
        std::memcpy(block + offset, payload->bytes.data(), std::min(size, payload->bytes.size()));
    return reinterpret_cast<GFI_GlyphDesc*>(block);
}

// In a coded log long rows lack their last bytes, each as many: then each begins in its own place.
void spread_rows(std::byte* to, const Element* payload, size_t rows, size_t row_step)
{
    const size_t told = payload != nullptr ? payload->bytes.size() : 0;
    if (rows == 0 || told == 0 || told >= rows * row_step || told % rows != 0)
        return;
    const size_t row = told / rows;
    for (size_t i = 0; i < rows; ++i)
    {
        std::memcpy(to + i * row_step, payload->bytes.data() + i * row, row);
        std::memset(to + i * row_step + row, 0, row_step - row);
    }
}

}  // namespace

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

const GFI_GlyphDescPointer* RecordReader::glyph(const Element* element)
{
    if (element == nullptr || element->name != "GFI_GlyphDescPointer")
        return nullptr;
    auto* pointer = arena_.make<GFI_GlyphDescPointer>();
    const Element* member = element->member("gdp_GlyphDesc");
    const Element* told = member != nullptr ? member->first : nullptr;
    const Element* head = told != nullptr ? told->child("GFI_GlyphDesc") : nullptr;
    if (head == nullptr)
        return pointer;
    const Element* payload = told->child("BufferUInt8");
    GFI_GlyphDesc* made = nullptr;
    if (told->name == "GFI_GlyphDescFBE")
    {
        const size_t size = payload != nullptr ? payload->bytes.size() : 0;
        made = make_description(arena_, GFI_GLYPH_DESC_FBE_PAYLOAD, size, payload);
        auto* fbe = reinterpret_cast<GFI_GlyphDescFBE*>(made);
        fbe->gdf_Width = read_word(*told, "gdf_Width");
        fbe->gdf_Height = read_word(*told, "gdf_Height");
        fbe->gdf_FbeSize = static_cast<uint32_t>(size);
    }
    else if (told->name == "GFI_GlyphDescBitmap")
    {
        const size_t size = size_t{read_word(*told, "gdb_Height")} * read_word(*told, "gdb_Rowstep");
        made = make_description(arena_, GFI_GLYPH_DESC_BITMAP_PAYLOAD, size, payload);
        auto* bitmap = reinterpret_cast<GFI_GlyphDescBitmap*>(made);
        spread_rows(reinterpret_cast<std::byte*>(made) + GFI_GLYPH_DESC_BITMAP_PAYLOAD, payload,
                    read_word(*told, "gdb_Height"), read_word(*told, "gdb_Rowstep"));
        bitmap->gdb_Width = read_word(*told, "gdb_Width");
        bitmap->gdb_Height = read_word(*told, "gdb_Height");
        bitmap->gdb_Rowstep = read_word(*told, "gdb_Rowstep");
        bitmap->gdb_BlackIsOne = read_word(*told, "gdb_BlackIsOne");
    }
    else if (told->name == "GFI_GlyphDescPath")
    {
        made = make_description(arena_, sizeof(GFI_GlyphDescPath), 0, nullptr);
        reinterpret_cast<GFI_GlyphDescPath*>(made)->gdp_WindingRule = read_enum(*told, "gdp_WindingRule");
        pointer->gdp_Path = path(member->child("GPA_PathPointer"));
    }
    else if (told->name == "GFI_GlyphDescTrueType")
    {
        const size_t size = read_word(*told, "gdt_TrueTypeSize");
        made = make_description(arena_, GFI_GLYPH_DESC_TRUETYPE_PAYLOAD, size, payload);
        reinterpret_cast<GFI_GlyphDescTrueType*>(made)->gdt_TrueTypeSize = static_cast<uint16_t>(size);
    }
    else if (told->name == "GFI_GlyphDescRLE")
    {
        const size_t size = read_word(*told, "gdr_RleSize");
        made = make_description(arena_, GFI_GLYPH_DESC_RLE_PAYLOAD, size, payload);
        auto* rle = reinterpret_cast<GFI_GlyphDescRLE*>(made);
        rle->gdr_Width = read_word(*told, "gdr_Width");
        rle->gdr_Height = read_word(*told, "gdr_Height");
        rle->gdr_RleSize = static_cast<uint16_t>(size);
    }
    if (made == nullptr)
    {
        ++unknown_;
        return pointer;
    }
    static constexpr struct
    {
        std::string_view element;
        uint32_t type;
    } kTypes[] = {{"GFI_GlyphDescFBE", GFI_GDT_FBE},
                  {"GFI_GlyphDescBitmap", GFI_GDT_BITMAP},
                  {"GFI_GlyphDescPath", GFI_GDT_PATH},
                  {"GFI_GlyphDescTrueType", GFI_GDT_TRUETYPE},
                  {"GFI_GlyphDescRLE", GFI_GDT_RLE}};
    made->gd_Type = std::ranges::find(kTypes, told->name, [](const auto& type) { return type.element; })->type;
    made->gd_Offset = read_vector(*head, "gd_Offset");
    pointer->gdp_GlyphDesc = made;
    return pointer;
}

const ORV_FaceProperties* RecordReader::face_properties(const Element* element)
{
    if (element == nullptr || element->name != "ORV_FaceProperties")
        return nullptr;
    auto* face = arena_.make<ORV_FaceProperties>();
    face->fp_FaceHints = read_flags(*element, "fp_FaceHints");
    face->fp_FaceInchToPixels = read_matrix(*element, "fp_FaceInchToPixels");
    face->fp_WidthInPixels = read_uint(*element, "fp_WidthInPixels");
    face->fp_HeightInPixels = read_uint(*element, "fp_HeightInPixels");
    face->fp_TrimBox = read_box(*element, "fp_TrimBox");
    face->fp_ClipBox = read_box(*element, "fp_ClipBox");
    face->fp_MediaSize = read_point(*element, "fp_MediaSize");
    return face;
}

const ORV_ResourceProperties* RecordReader::resource_properties(const Element* element)
{
    if (element == nullptr || element->name != "ORV_ResourceProperties")
        return nullptr;
    auto* resource = arena_.make<ORV_ResourceProperties>();
    resource->rp_ResourceHints = read_flags(*element, "rp_ResourceHints");
    resource->rp_MaxRescale = read_float(*element, "rp_MaxRescale");
    resource->rp_IsKnockout = static_cast<uint8_t>(read_bool(*element, "rp_IsKnockout"));
    resource->rp_HasPixelPlacementRule = element->has("rp_PixelPlacementRule") ? 1 : 0;
    resource->rp_PixelPlacementRule = static_cast<uint16_t>(read_enum(*element, "rp_PixelPlacementRule"));
    resource->rp_Enclosing_box = read_box(*element, "rp_Enclosing_box");
    return resource;
}

void RecordReader::start_call()
{
    font_specs_.clear();
    strings_.clear();
    streams_.clear();
}

}  // namespace orvlog::reader
