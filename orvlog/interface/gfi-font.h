// GFI: what a font is asked for with, what a string is, the five forms of a glyph, and the table of
// functions of a font engine.

#ifndef ORVLOG_INTERFACE_GFI_FONT_H
#define ORVLOG_INTERFACE_GFI_FONT_H

#include "holv-core/ggo/ggo-records.h"
#include "orvlog/interface/gpa-path.h"

#include <stddef.h>
#include <stdint.h>

#ifdef __cplusplus
extern "C" {
#endif

enum
{
    GFI_GDT_FBE,
    GFI_GDT_BITMAP,
    GFI_GDT_PATH,
    GFI_GDT_TRUETYPE,
    GFI_GDT_RLE
};

enum
{
    GFI_TD_LEFT_TO_RIGHT,
    GFI_TD_RIGHT_TO_LEFT,
    GFI_TD_TOP_TO_BOTTOM
};

enum
{
    GFI_FV_GLYPH,
    GFI_FV_STRING,
    GFI_FV_STATIC
};

enum
{
    GFI_CE_NO_INFO,
    GFI_CE_UNICODE_32BE,
    GFI_CE_UNICODE_32LE,
    GFI_CE_UNICODE_16BE,
    GFI_CE_UNICODE_16LE,
    GFI_CE_UNICODE_UTF16,
    GFI_CE_UNICODE_UTF8,
    GFI_CE_ADOBE_SINGLE_BYTE,
    GFI_CE_ADOBE_CID
};

// The head of every glyph description.
typedef struct GFI_GlyphDesc
{
    uint32_t gd_Type;  // GFI_GDT_*
    GGO_Vector gd_Offset;
} GFI_GlyphDesc;

// The payload of a description stands in the same block, directly behind its last field: at these offsets.
enum
{
    GFI_GLYPH_DESC_FBE_PAYLOAD = 32,
    GFI_GLYPH_DESC_BITMAP_PAYLOAD = 32,
    GFI_GLYPH_DESC_TRUETYPE_PAYLOAD = 26,
    GFI_GLYPH_DESC_RLE_PAYLOAD = 30
};

typedef struct GFI_GlyphDescFBE
{
    GFI_GlyphDesc gdf_Desc;
    uint16_t gdf_Width;
    uint16_t gdf_Height;
    uint32_t gdf_FbeSize;  // bytes of payload
} GFI_GlyphDescFBE;

typedef struct GFI_GlyphDescBitmap
{
    GFI_GlyphDesc gdb_Desc;
    uint16_t gdb_Width;
    uint16_t gdb_Height;
    uint16_t gdb_Rowstep;  // bytes from row to row; the payload is gdb_Height times this
    uint16_t gdb_BlackIsOne;
} GFI_GlyphDescBitmap;

typedef struct GFI_GlyphDescPath
{
    GFI_GlyphDesc gdp_Desc;
    uint32_t gdp_WindingRule;  // GPA_WINDING_*; the path stands in GFI_GlyphDescPointer
} GFI_GlyphDescPath;

typedef struct GFI_GlyphDescTrueType
{
    GFI_GlyphDesc gdt_Desc;
    uint16_t gdt_TrueTypeSize;  // bytes of payload
} GFI_GlyphDescTrueType;

typedef struct GFI_GlyphDescRLE
{
    GFI_GlyphDesc gdr_Desc;
    uint16_t gdr_Width;
    uint16_t gdr_Height;
    uint16_t gdr_RleSize;  // bytes of payload
} GFI_GlyphDescRLE;

typedef struct GFI_GlyphDescPointer
{
    const GFI_GlyphDesc* gdp_GlyphDesc;
    const GPA_PathPointer* gdp_Path;  // of a GFI_GDT_PATH description
} GFI_GlyphDescPointer;

typedef struct GFI_FontSpec
{
    float ufs_FontSize;
    uint8_t ufs_Direction;       // GFI_TD_*
    uint8_t ufs_FontVolatility;  // GFI_FV_*
} GFI_FontSpec;

// What stands behind the first member is between the client and its font engine.
typedef struct GFI_FontSpecPointer
{
    const GFI_FontSpec* fsp_FontSpec;
} GFI_FontSpecPointer;

typedef struct GFI_GlyphSpec
{
    uint16_t ggs_Flags;
    uint16_t ggs_GlyphIndex;
    float ggs_OffsetX;
    float ggs_OffsetY;
    float ggs_AdvanceOverride;
} GFI_GlyphSpec;

typedef struct GFI_GlyphClusterSpec
{
    uint16_t gcs_nCharacters;
    uint16_t gcs_nGlyphIndices;
    const GFI_GlyphSpec* gcs_GlyphSpec;  // gcs_nGlyphIndices entries
} GFI_GlyphClusterSpec;

typedef struct GFI_StringDesc
{
    uint32_t gsd_TextLen;          // bytes
    uint32_t gsd_GlyphMappingLen;  // clusters, at most 65535
    uint16_t gsd_StyleSimulation;
} GFI_StringDesc;

typedef struct GFI_StringDescPointer
{
    const GFI_StringDesc* gsp_StringDesc;
    const uint8_t* gsp_TextPtr;                    // gsd_TextLen bytes of unknown encoding
    const GFI_GlyphClusterSpec* gsp_GlyphMapping;  // gsd_GlyphMappingLen entries
} GFI_StringDescPointer;

// The log writes fsi_FontFamily ahead of fsi_ObliqueAngle.
typedef struct GFI_FontSubstInfo
{
    uint32_t fsi_FontWeight;
    uint32_t fsi_FontStretch;
    uint32_t fsi_FontStyle;
    uint32_t fsi_FontSmallCaps;
    uint32_t fsi_FontAllCaps;
    float fsi_ObliqueAngle;
    uint32_t fsi_FontFamily;
    uint32_t fsi_PanoseValid;  // boolean
    uint8_t fsi_Panose[10];
    uint8_t fsi_OsFamilyClass[2];
    float fsi_EmSquareSize;
    float fsi_StemV;
    float fsi_StemH;
    float fsi_CapHeight;
    float fsi_XHeight;
    float fsi_Ascent;
    float fsi_Descent;
} GFI_FontSubstInfo;

// The table of a font engine. Each function takes fe_Context of its table first and gives a 32-bit
// boolean unless said otherwise. Output pointers are the caller's and non-null unless said otherwise.
typedef struct GFI_FontEngineTable
{
    // Starts a string. `scaled` is a boolean. Gives a number for the font, the transform from glyph
    // description units to face pixels and its GGO_XFLAG_* word.
    uint32_t (*GFI_StringStartFn)(void* fe_context, const GFI_FontSpecPointer* font_spec_ptr,
                                  const GGO_Matrix* stringdesc_to_face_pixel, uint32_t stringdesc_transform_flags,
                                  uint32_t scaled, const GFI_StringDescPointer* string_desc, int32_t* unique_font_id,
                                  GGO_Matrix* glyphdesc_to_face_pixel, uint32_t* glyphdesc_transform_flags);

    // Steps to the next glyph; `glyph_returned` of 0 says that the string is done. `quick_bounding_box` may be null.
    uint32_t (*GFI_GlyphIndexGetFn)(void* fe_context, uint32_t* glyph_returned, uint32_t* glyph_index_out,
                                    uint16_t* glyph_sub_pixel_variant, GGO_Vector* advance_vector,
                                    GGO_BoxFloat* quick_bounding_box);

    // The glyph that the next two point to is the engine's own and lasts until the next call of the engine; an
    // engine may give null.

    // The present glyph in exactly the form `required_desc_type` (GFI_GDT_*), if the engine has it.
    uint32_t (*GFI_GlyphGetFixedFormatFn)(void* fe_context, uint32_t required_desc_type, uint32_t* glyph_returned,
                                          uint32_t* glyphdesc_transform_changed, GGO_Matrix* glyphdesc_to_face_pixel,
                                          uint32_t* glyphdesc_transform_flags, GFI_GlyphDescPointer** glyph);

    // The present glyph, in the form `requested_desc_type` or another of the engine's choice.
    uint32_t (*GFI_GlyphGetFn)(void* fe_context, uint32_t requested_desc_type, uint32_t* glyphdesc_transform_changed,
                               GGO_Matrix* glyphdesc_to_face_pixel, uint32_t* glyphdesc_transform_flags,
                               GFI_GlyphDescPointer** glyph);

    // A text that names the engine, or null. Owned by the engine.
    const char* (*fp_EngineIdGet)(void* fe_context);

    void* fe_Reserved;
    void* fe_Context;
} GFI_FontEngineTable;

#ifdef __cplusplus
}
#endif

#endif
