/// \file
/// GFI: what a font is asked for with, what a string is, the five forms of a glyph, and the table of
/// functions of a font engine.

#ifndef ORVLOG_INTERFACE_GFI_FONT_H
#define ORVLOG_INTERFACE_GFI_FONT_H

#include "holv-core/ggo/ggo-records.h"
#include "orvlog/interface/gpa-path.h"

#include <stddef.h>
#include <stdint.h>

#ifdef __cplusplus
extern "C" {
#endif

/// The forms of a glyph.
enum
{
    GFI_GDT_FBE,       ///< runs of edges, GFI_GlyphDescFBE
    GFI_GDT_BITMAP,    ///< pixels, GFI_GlyphDescBitmap
    GFI_GDT_PATH,      ///< an outline, GFI_GlyphDescPath
    GFI_GDT_TRUETYPE,  ///< TrueType data, GFI_GlyphDescTrueType
    GFI_GDT_RLE        ///< runs of pixels, GFI_GlyphDescRLE
};

/// Directions of a text.
enum
{
    GFI_TD_LEFT_TO_RIGHT,  ///< left to right
    GFI_TD_RIGHT_TO_LEFT,  ///< right to left
    GFI_TD_TOP_TO_BOTTOM   ///< top to bottom
};

/// How long a glyph number names the same glyph.
enum
{
    GFI_FV_GLYPH,   ///< a number names other glyphs from glyph to glyph
    GFI_FV_STRING,  ///< a number names other glyphs from string to string
    GFI_FV_STATIC   ///< a number names the same glyph throughout
};

/// Encodings of a text.
enum
{
    GFI_CE_NO_INFO,            ///< unknown
    GFI_CE_UNICODE_32BE,       ///< UTF-32, high byte first
    GFI_CE_UNICODE_32LE,       ///< UTF-32, low byte first
    GFI_CE_UNICODE_16BE,       ///< two bytes each, high byte first
    GFI_CE_UNICODE_16LE,       ///< two bytes each, low byte first
    GFI_CE_UNICODE_UTF16,      ///< UTF-16 in the machine's order
    GFI_CE_UNICODE_UTF8,       ///< UTF-8
    GFI_CE_ADOBE_SINGLE_BYTE,  ///< single bytes of a font's own encoding
    GFI_CE_ADOBE_CID           ///< numbers of a CID font
};

/// The head of every glyph description.
typedef struct GFI_GlyphDesc
{
    uint32_t gd_Type;      ///< GFI_GDT_*
    GGO_Vector gd_Offset;  ///< from the pen to the glyph's origin, in units of the description
} GFI_GlyphDesc;

/// The payload of a description stands in the same block, directly behind its last field: at these offsets.
enum
{
    GFI_GLYPH_DESC_FBE_PAYLOAD = 32,       ///< of a GFI_GlyphDescFBE
    GFI_GLYPH_DESC_BITMAP_PAYLOAD = 32,    ///< of a GFI_GlyphDescBitmap
    GFI_GLYPH_DESC_TRUETYPE_PAYLOAD = 26,  ///< of a GFI_GlyphDescTrueType
    GFI_GLYPH_DESC_RLE_PAYLOAD = 30        ///< of a GFI_GlyphDescRLE
};

/// A glyph as runs of edges.
typedef struct GFI_GlyphDescFBE
{
    GFI_GlyphDesc gdf_Desc;  ///< the head
    uint16_t gdf_Width;      ///< pixels
    uint16_t gdf_Height;     ///< pixels
    uint32_t gdf_FbeSize;    ///< bytes of payload
} GFI_GlyphDescFBE;

/// A glyph as pixels, one bit each, the first in the highest bit of a row's first byte.
typedef struct GFI_GlyphDescBitmap
{
    GFI_GlyphDesc gdb_Desc;   ///< the head
    uint16_t gdb_Width;       ///< pixels
    uint16_t gdb_Height;      ///< pixels, rows
    uint16_t gdb_Rowstep;     ///< bytes from row to row; the payload is gdb_Height times this
    uint16_t gdb_BlackIsOne;  ///< 0: zeros paint; else ones do
} GFI_GlyphDescBitmap;

/// A glyph as an outline.
typedef struct GFI_GlyphDescPath
{
    GFI_GlyphDesc gdp_Desc;    ///< the head
    uint32_t gdp_WindingRule;  ///< GPA_WINDING_*; the path stands in GFI_GlyphDescPointer
} GFI_GlyphDescPath;

/// A glyph as TrueType data.
typedef struct GFI_GlyphDescTrueType
{
    GFI_GlyphDesc gdt_Desc;     ///< the head
    uint16_t gdt_TrueTypeSize;  ///< bytes of payload
} GFI_GlyphDescTrueType;

/// A glyph as runs of pixels.
typedef struct GFI_GlyphDescRLE
{
    GFI_GlyphDesc gdr_Desc;  ///< the head
    uint16_t gdr_Width;      ///< pixels
    uint16_t gdr_Height;     ///< pixels
    uint16_t gdr_RleSize;    ///< bytes of payload
} GFI_GlyphDescRLE;

/// A glyph description with what it refers to. Owned by the font engine.
typedef struct GFI_GlyphDescPointer
{
    const GFI_GlyphDesc* gdp_GlyphDesc;  ///< whichever of the five
    const GPA_PathPointer* gdp_Path;     ///< of a GFI_GDT_PATH description
} GFI_GlyphDescPointer;

/// What a font is asked for with.
typedef struct GFI_FontSpec
{
    float ufs_FontSize;          ///< size of the em square in units of the shape's space
    uint8_t ufs_Direction;       ///< GFI_TD_*
    uint8_t ufs_FontVolatility;  ///< GFI_FV_*
} GFI_FontSpec;

/// What stands behind the first member is between the client and its font engine.
typedef struct GFI_FontSpecPointer
{
    const GFI_FontSpec* fsp_FontSpec;  ///< may be null
} GFI_FontSpecPointer;

/// A glyph of a string.
typedef struct GFI_GlyphSpec
{
    uint16_t ggs_Flags;         ///< between the client and its font engine
    uint16_t ggs_GlyphIndex;    ///< number of the glyph in the font
    float ggs_OffsetX;          ///< moves the glyph, in units of the shape's space
    float ggs_OffsetY;          ///< the same along y
    float ggs_AdvanceOverride;  ///< advance in place of the font's, in units of the shape's space
} GFI_GlyphSpec;

/// Characters and the glyphs that stand for them together.
typedef struct GFI_GlyphClusterSpec
{
    uint16_t gcs_nCharacters;            ///< characters of the text
    uint16_t gcs_nGlyphIndices;          ///< glyphs
    const GFI_GlyphSpec* gcs_GlyphSpec;  ///< gcs_nGlyphIndices entries
} GFI_GlyphClusterSpec;

/// The sizes of a string.
typedef struct GFI_StringDesc
{
    uint32_t gsd_TextLen;          ///< bytes
    uint32_t gsd_GlyphMappingLen;  ///< clusters, at most 65535
    uint16_t gsd_StyleSimulation;  ///< between the client and its font engine
} GFI_StringDesc;

/// A string with what it refers to.
typedef struct GFI_StringDescPointer
{
    const GFI_StringDesc* gsp_StringDesc;          ///< the sizes
    const uint8_t* gsp_TextPtr;                    ///< gsd_TextLen bytes of unknown encoding
    const GFI_GlyphClusterSpec* gsp_GlyphMapping;  ///< gsd_GlyphMappingLen entries
} GFI_StringDescPointer;

/// The log writes fsi_FontFamily ahead of fsi_ObliqueAngle.
typedef struct GFI_FontSubstInfo
{
    uint32_t fsi_FontWeight;       ///< weight, 100 to 900; 400 is regular
    uint32_t fsi_FontStretch;      ///< width class
    uint32_t fsi_FontStyle;        ///< style
    uint32_t fsi_FontSmallCaps;    ///< non-zero for small capitals
    uint32_t fsi_FontAllCaps;      ///< non-zero for capitals alone
    float fsi_ObliqueAngle;        ///< slant, degrees
    uint32_t fsi_FontFamily;       ///< family class
    uint32_t fsi_PanoseValid;      ///< boolean
    uint8_t fsi_Panose[10];        ///< the ten PANOSE digits
    uint8_t fsi_OsFamilyClass[2];  ///< class and subclass of the family
    float fsi_EmSquareSize;  ///< units of the em square; the lengths below are in these units, and count if this is
                             ///< above 0
    float fsi_StemV;         ///< width of vertical stems
    float fsi_StemH;         ///< width of horizontal stems
    float fsi_CapHeight;     ///< height of capitals
    float fsi_XHeight;       ///< height of a small x
    float fsi_Ascent;        ///< above the base line
    float fsi_Descent;       ///< below the base line
} GFI_FontSubstInfo;

/// The table of a font engine. Each function takes fe_Context of its table first and gives a 32-bit
/// boolean unless said otherwise. Output pointers are the caller's and non-null unless said otherwise.
typedef struct GFI_FontEngineTable
{
    /// Starts a string. `scaled` is a boolean. Gives a number for the font, the transform from glyph
    /// description units to face pixels and its GGO_XFLAG_* word.
    uint32_t (*GFI_StringStartFn)(void* fe_context, const GFI_FontSpecPointer* font_spec_ptr,
                                  const GGO_Matrix* stringdesc_to_face_pixel, uint32_t stringdesc_transform_flags,
                                  uint32_t scaled, const GFI_StringDescPointer* string_desc, int32_t* unique_font_id,
                                  GGO_Matrix* glyphdesc_to_face_pixel, uint32_t* glyphdesc_transform_flags);

    /// Steps to the next glyph; `glyph_returned` of 0 says that the string is done. `quick_bounding_box` may be null.
    uint32_t (*GFI_GlyphIndexGetFn)(void* fe_context, uint32_t* glyph_returned, uint32_t* glyph_index_out,
                                    uint16_t* glyph_sub_pixel_variant, GGO_Vector* advance_vector,
                                    GGO_BoxFloat* quick_bounding_box);

    // The glyph that the next two point to is the engine's own and lasts until the next call of the engine; an
    // engine may give null.

    /// The present glyph in exactly the form `required_desc_type` (GFI_GDT_*), if the engine has it.
    uint32_t (*GFI_GlyphGetFixedFormatFn)(void* fe_context, uint32_t required_desc_type, uint32_t* glyph_returned,
                                          uint32_t* glyphdesc_transform_changed, GGO_Matrix* glyphdesc_to_face_pixel,
                                          uint32_t* glyphdesc_transform_flags, GFI_GlyphDescPointer** glyph);

    /// The present glyph, in the form `requested_desc_type` or another of the engine's choice.
    uint32_t (*GFI_GlyphGetFn)(void* fe_context, uint32_t requested_desc_type, uint32_t* glyphdesc_transform_changed,
                               GGO_Matrix* glyphdesc_to_face_pixel, uint32_t* glyphdesc_transform_flags,
                               GFI_GlyphDescPointer** glyph);

    /// A text that names the engine, or null. Owned by the engine.
    const char* (*fp_EngineIdGet)(void* fe_context);

    void* fe_Reserved;  ///< not read
    void* fe_Context;   ///< first argument of each function
} GFI_FontEngineTable;

#ifdef __cplusplus
}
#endif

#endif
