#include "reader/records/record-parts.h"
#include "reader/records/records.h"
#include "reader/tree/values.h"

#include <algorithm>
#include <cstring>

namespace orvlog::reader
{

namespace
{

// A description's payload behind its record, and zeros up to `size`.
GFI_GlyphDesc* make_description(Arena& arena, size_t offset, size_t size, const Element* payload)
{
    auto* block = static_cast<std::byte*>(arena.take(std::max(offset + size, sizeof(GFI_GlyphDescBitmap))));
    if (payload != nullptr && !payload->bytes.empty())
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

GFI_GlyphDesc* make_fbe(Arena& arena, const Element& told, const Element* payload)
{
    const size_t size = payload != nullptr ? payload->bytes.size() : 0;
    GFI_GlyphDesc* made = make_description(arena, GFI_GLYPH_DESC_FBE_PAYLOAD, size, payload);
    auto* fbe = reinterpret_cast<GFI_GlyphDescFBE*>(made);
    fbe->gdf_Width = read_word(told, "gdf_Width");
    fbe->gdf_Height = read_word(told, "gdf_Height");
    fbe->gdf_FbeSize = static_cast<uint32_t>(size);
    return made;
}

GFI_GlyphDesc* make_bitmap(Arena& arena, const Element& told, const Element* payload)
{
    const size_t rows = read_word(told, "gdb_Height");
    const size_t row_step = read_word(told, "gdb_Rowstep");
    GFI_GlyphDesc* made = make_description(arena, GFI_GLYPH_DESC_BITMAP_PAYLOAD, rows * row_step, payload);
    auto* bitmap = reinterpret_cast<GFI_GlyphDescBitmap*>(made);
    spread_rows(reinterpret_cast<std::byte*>(made) + GFI_GLYPH_DESC_BITMAP_PAYLOAD, payload, rows, row_step);
    bitmap->gdb_Width = read_word(told, "gdb_Width");
    bitmap->gdb_Height = static_cast<uint16_t>(rows);
    bitmap->gdb_Rowstep = static_cast<uint16_t>(row_step);
    bitmap->gdb_BlackIsOne = read_word(told, "gdb_BlackIsOne");
    return made;
}

GFI_GlyphDesc* make_path(Arena& arena, const Element& told, const Element*)
{
    GFI_GlyphDesc* made = make_description(arena, sizeof(GFI_GlyphDescPath), 0, nullptr);
    reinterpret_cast<GFI_GlyphDescPath*>(made)->gdp_WindingRule = read_enum(told, "gdp_WindingRule");
    return made;
}

GFI_GlyphDesc* make_true_type(Arena& arena, const Element& told, const Element* payload)
{
    const uint16_t size = read_word(told, "gdt_TrueTypeSize");
    GFI_GlyphDesc* made = make_description(arena, GFI_GLYPH_DESC_TRUETYPE_PAYLOAD, size, payload);
    reinterpret_cast<GFI_GlyphDescTrueType*>(made)->gdt_TrueTypeSize = size;
    return made;
}

GFI_GlyphDesc* make_rle(Arena& arena, const Element& told, const Element* payload)
{
    const uint16_t size = read_word(told, "gdr_RleSize");
    GFI_GlyphDesc* made = make_description(arena, GFI_GLYPH_DESC_RLE_PAYLOAD, size, payload);
    auto* rle = reinterpret_cast<GFI_GlyphDescRLE*>(made);
    rle->gdr_Width = read_word(told, "gdr_Width");
    rle->gdr_Height = read_word(told, "gdr_Height");
    rle->gdr_RleSize = size;
    return made;
}

struct GlyphForm
{
    std::string_view element;
    uint32_t type;
    GFI_GlyphDesc* (*make)(Arena& arena, const Element& told, const Element* payload);
};

constexpr GlyphForm kForms[] = {
    {"GFI_GlyphDescFBE", GFI_GDT_FBE, make_fbe},    {"GFI_GlyphDescBitmap", GFI_GDT_BITMAP, make_bitmap},
    {"GFI_GlyphDescPath", GFI_GDT_PATH, make_path}, {"GFI_GlyphDescTrueType", GFI_GDT_TRUETYPE, make_true_type},
    {"GFI_GlyphDescRLE", GFI_GDT_RLE, make_rle},
};

}  // namespace

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
    const auto* form = std::ranges::find(kForms, told->name, &GlyphForm::element);
    if (form == std::end(kForms))
    {
        ++unknown_;
        return pointer;
    }
    GFI_GlyphDesc* made = form->make(arena_, *told, told->child("BufferUInt8"));
    made->gd_Type = form->type;
    made->gd_Offset = read_vector(*head, "gd_Offset");
    pointer->gdp_GlyphDesc = made;
    if (form->type == GFI_GDT_PATH)
        pointer->gdp_Path = path(member->child("GPA_PathPointer"));
    return pointer;
}

}  // namespace orvlog::reader
