#include "orvlog/font/gfi-dump.h"

#include "orvlog/log/orvlog-attributes.h"
#include "orvlog/log/orvlog-scope.h"
#include "orvlog/names/orvlog-names.h"
#include "orvlog/records/ggo-dump.h"
#include "orvlog/records/gpa-path-dump.h"

namespace
{

constexpr uint32_t kRow = 50;
constexpr uint32_t kMaxClusters = 65535;

// Payloads stand right behind the last field, where no record of a description could hold them.
const uint8_t* payload(const GFI_GlyphDesc* desc, uint32_t offset)
{
    return reinterpret_cast<const uint8_t*>(desc) + offset;
}

// Behind the attributes: the head, the payload, the closing tag.
void dump_body(ORVLOG_Writer* writer, const char* element, const GFI_GlyphDesc* desc, const uint8_t* bytes,
               uint32_t length, uint32_t row)
{
    const ORVLOG_Content content(writer, element);
    dump_GFI_GlyphDesc(writer, desc);
    orvlog_elem_bytes(writer, bytes, length, row);
}

void dump_fbe(ORVLOG_Writer* writer, const GFI_GlyphDescFBE* desc)
{
    orvlog_writer_begin_element(writer, "GFI_GlyphDescFBE");
    orvlog_attr_uint(writer, "gdf_Width", desc->gdf_Width);
    orvlog_attr_uint(writer, "gdf_Height", desc->gdf_Height);
    orvlog_attr_uint(writer, "gdf_FbeSize", desc->gdf_FbeSize);
    dump_body(writer, "GFI_GlyphDescFBE", &desc->gdf_Desc, payload(&desc->gdf_Desc, GFI_GLYPH_DESC_FBE_PAYLOAD),
              desc->gdf_FbeSize, kRow);
}

void dump_bitmap(ORVLOG_Writer* writer, const GFI_GlyphDescBitmap* desc)
{
    orvlog_writer_begin_element(writer, "GFI_GlyphDescBitmap");
    orvlog_attr_uint(writer, "gdb_Width", desc->gdb_Width);
    orvlog_attr_uint(writer, "gdb_Height", desc->gdb_Height);
    orvlog_attr_uint(writer, "gdb_Rowstep", desc->gdb_Rowstep);
    orvlog_attr_uint(writer, "gdb_BlackIsOne", desc->gdb_BlackIsOne);
    // A row of the log is a row of the bitmap.
    dump_body(writer, "GFI_GlyphDescBitmap", &desc->gdb_Desc, payload(&desc->gdb_Desc, GFI_GLYPH_DESC_BITMAP_PAYLOAD),
              uint32_t{desc->gdb_Height} * desc->gdb_Rowstep, desc->gdb_Rowstep);
}

void dump_path(ORVLOG_Writer* writer, const GFI_GlyphDescPath* desc)
{
    orvlog_writer_begin_element(writer, "GFI_GlyphDescPath");
    orvlog_attr_enum(writer, "gdp_WindingRule", &ORVLOG_WINDING, desc->gdp_WindingRule);
    dump_body(writer, "GFI_GlyphDescPath", &desc->gdp_Desc, nullptr, 0, kRow);
}

void dump_truetype(ORVLOG_Writer* writer, const GFI_GlyphDescTrueType* desc)
{
    orvlog_writer_begin_element(writer, "GFI_GlyphDescTrueType");
    orvlog_attr_uint(writer, "gdt_TrueTypeSize", desc->gdt_TrueTypeSize);
    dump_body(writer, "GFI_GlyphDescTrueType", &desc->gdt_Desc,
              payload(&desc->gdt_Desc, GFI_GLYPH_DESC_TRUETYPE_PAYLOAD), desc->gdt_TrueTypeSize, kRow);
}

void dump_rle(ORVLOG_Writer* writer, const GFI_GlyphDescRLE* desc)
{
    orvlog_writer_begin_element(writer, "GFI_GlyphDescRLE");
    orvlog_attr_uint(writer, "gdr_Width", desc->gdr_Width);
    orvlog_attr_uint(writer, "gdr_Height", desc->gdr_Height);
    orvlog_attr_uint(writer, "gdr_RleSize", desc->gdr_RleSize);
    dump_body(writer, "GFI_GlyphDescRLE", &desc->gdr_Desc, payload(&desc->gdr_Desc, GFI_GLYPH_DESC_RLE_PAYLOAD),
              desc->gdr_RleSize, kRow);
}

void dump_font_spec(ORVLOG_Writer* writer, const GFI_FontSpec* spec)
{
    orvlog_writer_begin_element(writer, "GFI_FontSpec");
    orvlog_attr_float(writer, "ufs_FontSize", spec->ufs_FontSize);
    orvlog_attr_enum(writer, "ufs_Direction", &ORVLOG_TEXT_DIRECTION, spec->ufs_Direction);
    orvlog_attr_enum(writer, "ufs_FontVolatility", &ORVLOG_FONT_VOLATILITY, spec->ufs_FontVolatility);
    orvlog_writer_end_empty(writer, "GFI_FontSpec");
}

void dump_string_attributes(ORVLOG_Writer* writer, const GFI_StringDescPointer* pointer)
{
    const GFI_StringDesc* desc = pointer->gsp_StringDesc;
    orvlog_attr_uint(writer, "gsp_StringDesc.gsd_TextLen", desc->gsd_TextLen);
    orvlog_attr_uint(writer, "gsp_StringDesc.gsd_GlyphMappingLen", desc->gsd_GlyphMappingLen);
    orvlog_attr_uint(writer, "gsp_StringDesc.gsd_StyleSimulation", desc->gsd_StyleSimulation);
    if (desc->gsd_TextLen == 0)
        return;
    if (pointer->gsp_TextPtr == nullptr)
        orvlog_writer_warn(writer, "GFI_StringDescPointer without its text.");
    orvlog_attr_uint8_array(writer, "gsp_TextPtr", pointer->gsp_TextPtr, desc->gsd_TextLen);
}

void dump_clusters(ORVLOG_Writer* writer, const GFI_StringDescPointer* pointer)
{
    uint32_t count = pointer->gsp_StringDesc->gsd_GlyphMappingLen;
    if (count == 0)
        return;
    if (pointer->gsp_GlyphMapping == nullptr)
        return orvlog_writer_warn(writer, "GFI_StringDescPointer without its glyph mapping.");
    if (count > kMaxClusters)
    {
        orvlog_writer_warn(writer, "GFI_StringDescPointer with more than 65535 clusters.");
        count = kMaxClusters;
    }
    for (uint32_t i = 0; i < count; ++i)
        dump_GFI_GlyphClusterSpec(writer, pointer->gsp_GlyphMapping + i);
}

}  // namespace

void gfi_attr_glyph_desc_type(ORVLOG_Writer* writer, const char* name, uint32_t type)
{
    orvlog_attr_enum(writer, name, &ORVLOG_GLYPH_TYPE, type);
}

void gfi_attr_character_encoding(ORVLOG_Writer* writer, const char* name, uint32_t encoding)
{
    orvlog_attr_enum(writer, name, &ORVLOG_CHARACTER_ENCODING, encoding);
}

void dump_GFI_GlyphDesc(ORVLOG_Writer* writer, const GFI_GlyphDesc* desc)
{
    if (desc == nullptr)
        return;
    orvlog_writer_begin_element(writer, "GFI_GlyphDesc");
    gfi_attr_glyph_desc_type(writer, "gd_Type", desc->gd_Type);
    ggo_attr_vector(writer, "gd_Offset", &desc->gd_Offset);
    orvlog_writer_self_close(writer);
}

void dump_glyph_desc(ORVLOG_Writer* writer, const GFI_GlyphDesc* desc)
{
    if (desc == nullptr)
        return;
    switch (desc->gd_Type)
    {
    case GFI_GDT_FBE:
        return dump_fbe(writer, reinterpret_cast<const GFI_GlyphDescFBE*>(desc));
    case GFI_GDT_BITMAP:
        return dump_bitmap(writer, reinterpret_cast<const GFI_GlyphDescBitmap*>(desc));
    case GFI_GDT_PATH:
        return dump_path(writer, reinterpret_cast<const GFI_GlyphDescPath*>(desc));
    case GFI_GDT_TRUETYPE:
        return dump_truetype(writer, reinterpret_cast<const GFI_GlyphDescTrueType*>(desc));
    case GFI_GDT_RLE:
        return dump_rle(writer, reinterpret_cast<const GFI_GlyphDescRLE*>(desc));
    default:
        return;
    }
}

void dump_GFI_GlyphDescPointer(ORVLOG_Writer* writer, const GFI_GlyphDescPointer* pointer)
{
    if (pointer == nullptr)
        return;
    const GFI_GlyphDesc* desc = pointer->gdp_GlyphDesc;
    const ORVLOG_Element element(writer, "GFI_GlyphDescPointer");
    const ORVLOG_Member member(writer, "GFI_GlyphDescPointer", "gdp_GlyphDesc");
    dump_glyph_desc(writer, desc);
    if (desc == nullptr)
        orvlog_writer_warn(writer, "GFI_GlyphDescPointer without a glyph description.");
    else if (desc->gd_Type == GFI_GDT_PATH)
        dump_GPA_PathPointer(writer, pointer->gdp_Path);
}

void dump_GFI_FontSpecPointer(ORVLOG_Writer* writer, const GFI_FontSpecPointer* pointer)
{
    if (pointer == nullptr)
        return;
    const ORVLOG_Element element(writer, "GFI_FontSpecPointer");
    if (pointer->fsp_FontSpec != nullptr)
        dump_font_spec(writer, pointer->fsp_FontSpec);
}

void dump_GFI_StringDescPointer(ORVLOG_Writer* writer, const GFI_StringDescPointer* pointer)
{
    if (pointer == nullptr)
        return;
    orvlog_writer_begin_element(writer, "GFI_StringDescPointer");
    if (pointer->gsp_StringDesc != nullptr)
        dump_string_attributes(writer, pointer);
    else
        orvlog_writer_warn(writer, "GFI_StringDescPointer without a string description.");
    orvlog_writer_end_tag(writer);
    if (pointer->gsp_StringDesc != nullptr)
        dump_clusters(writer, pointer);
    orvlog_writer_close_element(writer, "GFI_StringDescPointer");
}

void dump_GFI_GlyphClusterSpec(ORVLOG_Writer* writer, const GFI_GlyphClusterSpec* cluster)
{
    if (cluster == nullptr)
        return;
    orvlog_writer_begin_element(writer, "GFI_GlyphClusterSpec");
    orvlog_attr_uint(writer, "gcs_nCharacters", cluster->gcs_nCharacters);
    orvlog_attr_uint(writer, "gcs_nGlyphIndices", cluster->gcs_nGlyphIndices);
    orvlog_writer_end_tag(writer);
    if (cluster->gcs_GlyphSpec == nullptr && cluster->gcs_nGlyphIndices != 0)
        orvlog_writer_warn(writer, "GFI_GlyphClusterSpec without its glyphs.");
    for (uint32_t i = 0; cluster->gcs_GlyphSpec != nullptr && i < cluster->gcs_nGlyphIndices; ++i)
        dump_GFI_GlyphSpec(writer, cluster->gcs_GlyphSpec + i);
    orvlog_writer_close_element(writer, "GFI_GlyphClusterSpec");
}

void dump_GFI_GlyphSpec(ORVLOG_Writer* writer, const GFI_GlyphSpec* glyph)
{
    if (glyph == nullptr)
        return;
    orvlog_writer_begin_element(writer, "GFI_GlyphSpec");
    orvlog_attr_uint(writer, "ggs_Flags", glyph->ggs_Flags);
    orvlog_attr_uint(writer, "ggs_GlyphIndex", glyph->ggs_GlyphIndex);
    orvlog_attr_float(writer, "ggs_OffsetX", glyph->ggs_OffsetX);
    orvlog_attr_float(writer, "ggs_OffsetY", glyph->ggs_OffsetY);
    orvlog_attr_float(writer, "ggs_AdvanceOverride", glyph->ggs_AdvanceOverride);
    orvlog_writer_end_empty(writer, "GFI_GlyphSpec");
}

void dump_GFI_FontSubstInfo(ORVLOG_Writer* writer, const GFI_FontSubstInfo* info)
{
    if (info == nullptr)
        return;
    orvlog_writer_begin_element(writer, "GFI_FontSubstInfo");
    orvlog_attr_uint(writer, "fsi_FontWeight", info->fsi_FontWeight);
    orvlog_attr_uint(writer, "fsi_FontStretch", info->fsi_FontStretch);
    orvlog_attr_uint(writer, "fsi_FontStyle", info->fsi_FontStyle);
    orvlog_attr_uint(writer, "fsi_FontSmallCaps", info->fsi_FontSmallCaps);
    orvlog_attr_uint(writer, "fsi_FontAllCaps", info->fsi_FontAllCaps);
    // Ahead of the angle, though it is stored behind; readers of the log rely on it.
    orvlog_attr_uint(writer, "fsi_FontFamily", info->fsi_FontFamily);
    orvlog_attr_float(writer, "fsi_ObliqueAngle", info->fsi_ObliqueAngle);
    orvlog_attr_bool(writer, "fsi_PanoseValid", info->fsi_PanoseValid);
    if (info->fsi_PanoseValid != 0)
        orvlog_attr_uint8_array(writer, "fsi_Panose", info->fsi_Panose, sizeof info->fsi_Panose);
    orvlog_attr_uint8_array(writer, "fsi_OsFamilyClass", info->fsi_OsFamilyClass, sizeof info->fsi_OsFamilyClass);
    orvlog_attr_float(writer, "fsi_EmSquareSize", info->fsi_EmSquareSize);
    if (info->fsi_EmSquareSize > 0.0F)
    {
        orvlog_attr_float(writer, "fsi_StemV", info->fsi_StemV);
        orvlog_attr_float(writer, "fsi_StemH", info->fsi_StemH);
        orvlog_attr_float(writer, "fsi_CapHeight", info->fsi_CapHeight);
        orvlog_attr_float(writer, "fsi_XHeight", info->fsi_XHeight);
        orvlog_attr_float(writer, "fsi_Ascent", info->fsi_Ascent);
        orvlog_attr_float(writer, "fsi_Descent", info->fsi_Descent);
    }
    orvlog_writer_end_empty(writer, "GFI_FontSubstInfo");
}
