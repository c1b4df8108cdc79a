#include "inspect/c-source/c-records.h"
#include "inspect/c-source/c-text.h"
#include "orvlog/names/orvlog-names.h"

#include <algorithm>
#include <utility>
#include <vector>

namespace orvlog::inspect
{

namespace
{

// Payloads of more bytes lie in a file.
constexpr size_t kMostInSource = 256;

std::string glyph_spec_text(const GFI_GlyphSpec& spec)
{
    return "{" + c_uint(spec.ggs_Flags) + ", " + c_uint(spec.ggs_GlyphIndex) + ", " + c_float(spec.ggs_OffsetX) + ", " +
           c_float(spec.ggs_OffsetY) + ", " + c_float(spec.ggs_AdvanceOverride) + "}";
}

struct Payload
{
    const char* macro;
    std::string fields;  // behind the head
    size_t offset;
    size_t size;
};

Payload payload_of(const GFI_GlyphDesc* record)
{
    if (record->gd_Type == GFI_GDT_FBE)
    {
        const auto* fbe = reinterpret_cast<const GFI_GlyphDescFBE*>(record);
        return {"GLYPH_FBE", c_uint(fbe->gdf_Width) + ", " + c_uint(fbe->gdf_Height) + ", " + c_uint(fbe->gdf_FbeSize),
                GFI_GLYPH_DESC_FBE_PAYLOAD, fbe->gdf_FbeSize};
    }
    if (record->gd_Type == GFI_GDT_BITMAP)
    {
        const auto* bitmap = reinterpret_cast<const GFI_GlyphDescBitmap*>(record);
        return {"GLYPH_BITMAP",
                c_uint(bitmap->gdb_Width) + ", " + c_uint(bitmap->gdb_Height) + ", " + c_uint(bitmap->gdb_Rowstep) +
                    ", " + c_uint(bitmap->gdb_BlackIsOne),
                GFI_GLYPH_DESC_BITMAP_PAYLOAD, size_t{bitmap->gdb_Height} * bitmap->gdb_Rowstep};
    }
    if (record->gd_Type == GFI_GDT_TRUETYPE)
    {
        const auto* font = reinterpret_cast<const GFI_GlyphDescTrueType*>(record);
        return {"GLYPH_TRUETYPE", c_uint(font->gdt_TrueTypeSize), GFI_GLYPH_DESC_TRUETYPE_PAYLOAD,
                font->gdt_TrueTypeSize};
    }
    const auto* rle = reinterpret_cast<const GFI_GlyphDescRLE*>(record);
    return {"GLYPH_RLE", c_uint(rle->gdr_Width) + ", " + c_uint(rle->gdr_Height) + ", " + c_uint(rle->gdr_RleSize),
            GFI_GLYPH_DESC_RLE_PAYLOAD, rle->gdr_RleSize};
}

}  // namespace

std::string CRecords::font(const GFI_FontSpecPointer* record)
{
    if (record == nullptr)
        return "NULL";
    const auto known = texts_.find(record);
    if (known != texts_.end())
        return known->second;
    std::string spec = "NULL";
    if (const GFI_FontSpec* told = record->fsp_FontSpec; told != nullptr)
        spec = define("const GFI_FontSpec", "font_spec",
                      "{" + c_float(told->ufs_FontSize) + ", " + c_enum(ORVLOG_TEXT_DIRECTION, told->ufs_Direction) +
                          ", " + c_enum(ORVLOG_FONT_VOLATILITY, told->ufs_FontVolatility) + "}");
    return texts_[record] = define_own("const GFI_FontSpecPointer", "font", "{" + spec + "}");
}

std::string CRecords::string(const GFI_StringDescPointer* record)
{
    if (record == nullptr)
        return "NULL";
    const auto known = texts_.find(record);
    if (known != texts_.end())
        return known->second;
    CFields fields;
    if (const GFI_StringDesc* told = record->gsp_StringDesc; told != nullptr)
    {
        fields.add("gsp_StringDesc", define("const GFI_StringDesc", "string_desc",
                                            "{" + c_uint(told->gsd_TextLen) + ", " + c_uint(told->gsd_GlyphMappingLen) +
                                                ", " + c_uint(told->gsd_StyleSimulation) + "}"));
        const std::string text = fresh("text");
        define("static const uint8_t " + text + "[] = " +
               c_bytes(std::span(record->gsp_TextPtr, record->gsp_TextPtr != nullptr ? told->gsd_TextLen : 0)) + ";\n");
        std::vector<std::string> specs;
        std::vector<std::string> clusters;
        const std::string glyphs = fresh("glyph_specs");
        for (const GFI_GlyphClusterSpec& one : std::span(record->gsp_GlyphMapping, told->gsd_GlyphMappingLen))
        {
            clusters.push_back("{" + c_uint(one.gcs_nCharacters) + ", " + c_uint(one.gcs_nGlyphIndices) + ", " +
                               glyphs + " + " + std::to_string(specs.size()) + "}");
            for (const GFI_GlyphSpec& spec : std::span(one.gcs_GlyphSpec, one.gcs_nGlyphIndices))
                specs.push_back(glyph_spec_text(spec));
        }
        const std::string mapping = clusters.empty() ? "NULL" : fresh("clusters");
        if (!clusters.empty())
            define("static const GFI_GlyphSpec " + glyphs +
                   "[] = " + (specs.empty() ? std::string("{{0, 0, 0, 0, 0}}") : c_list(specs)) + ";\n" +
                   "static const GFI_GlyphClusterSpec " + mapping + "[] = " + c_list(clusters) + ";\n");
        fields.add("gsp_TextPtr", text).add("gsp_GlyphMapping", mapping);
    }
    return texts_[record] = define_own("const GFI_StringDescPointer", "string", fields.text());
}

std::string CRecords::glyph_description(const GFI_GlyphDesc* record)
{
    const std::string head = "{" + c_enum(ORVLOG_GLYPH_TYPE, record->gd_Type) + ", {" +
                             c_double(record->gd_Offset.gvf_X) + ", " + c_double(record->gd_Offset.gvf_Y) + "}}";
    if (record->gd_Type == GFI_GDT_PATH)
    {
        const auto* path = reinterpret_cast<const GFI_GlyphDescPath*>(record);
        return "(const GFI_GlyphDesc*)" +
               define("const GFI_GlyphDescPath", "glyph_desc",
                      "{" + head + ", " + c_enum(ORVLOG_WINDING, path->gdp_WindingRule) + "}");
    }
    const Payload payload = payload_of(record);
    const std::span<const uint8_t> bytes(reinterpret_cast<const uint8_t*>(record) + payload.offset, payload.size);
    const std::string type = payload.macro + ("(" + std::to_string(std::max<size_t>(bytes.size(), 1)) + ")");
    const std::string before = "{" + head + ", " + payload.fields + ", ";
    if (bytes.size() <= kMostInSource)
        return "(const GFI_GlyphDesc*)" + define("const " + type, "glyph_desc", before + c_bytes(bytes) + "}");
    const std::string what = type + before + std::string(reinterpret_cast<const char*>(bytes.data()), bytes.size());
    std::string made = known(what);
    if (!made.empty())
        return made;
    const std::string record_made = define_own(type, "glyph_desc", before + "{0}}");
    add_load(record_made.substr(1) + ".payload", CDataKind::glyphs, bytes);
    made = "(const GFI_GlyphDesc*)" + record_made;
    remember(what, made);
    return made;
}

std::string CRecords::glyph(const GFI_GlyphDescPointer* record)
{
    if (record == nullptr)
        return "NULL";
    CFields fields;
    if (record->gdp_GlyphDesc != nullptr)
        fields.add("gdp_GlyphDesc", glyph_description(record->gdp_GlyphDesc));
    fields.add("gdp_Path", path("glyph_path", record->gdp_Path));
    return define("const GFI_GlyphDescPointer", "glyph", fields.text());
}

}  // namespace orvlog::inspect
