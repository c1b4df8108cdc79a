// GSH: what is painted or clipped with: a shape of one of seven kinds with its path or its text, and
// lists of shapes.

#ifndef ORVLOG_INTERFACE_GSH_SHAPE_H
#define ORVLOG_INTERFACE_GSH_SHAPE_H

#include "holv-core/ggo/ggo-records.h"
#include "orvlog/interface/gfi-font.h"
#include "orvlog/interface/gpa-path.h"

#include <stddef.h>
#include <stdint.h>

#ifdef __cplusplus
extern "C" {
#endif

enum
{
    GSH_SHAPE_GLYPHS,
    GSH_SHAPE_FILL,
    GSH_SHAPE_STROKE,
    GSH_SHAPE_IMAGE_RECT,
    GSH_SHAPE_MULTI_RECT,
    GSH_SHAPE_SCANLINE,
    GSH_SHAPE_STROKE_GLYPHS
};

// Flags of sh_Hints.
enum
{
    GSH_SH_NO_HINT = 0x0,
    GSH_SH_FONT_HAS_FACE_SCOPE = 0x1,
    GSH_SH_FONT_HAS_DOC_SCOPE = 0x2,
    GSH_SH_NO_ROTATION = 0x4,
    GSH_SH_NO_SKEW = 0x8,
    GSH_SH_NO_SCALE = 0x10,
    GSH_SH_NO_SHIFT = 0x20,
    GSH_SH_REUSED_AS_STROKE = 0x40
};

// Flags of sl_Hints.
enum
{
    GSH_SLH_NONE = 0x0,
    GSH_SLH_IGNORE_REST_OF_LIST = 0x1
};

// The head of every shape.
typedef struct GSH_Shape
{
    uint16_t sh_ShapeType;  // GSH_SHAPE_*
    uint16_t sh_Hints;      // GSH_SH_*
    GGO_Matrix sh_Transform;
} GSH_Shape;

typedef struct GSH_GlyphShape
{
    GSH_Shape gs_Shape;
} GSH_GlyphShape;

typedef struct GSH_FilledPathShape
{
    GSH_Shape fps_Shape;
    uint32_t fps_WindingRule;  // GPA_WINDING_*
} GSH_FilledPathShape;

typedef struct GSH_StrokedPathShape
{
    GSH_Shape sps_Shape;
    uint32_t sps_WindingRule;  // GPA_WINDING_*
    GPA_PathStrokingParams sps_StrokingParams;
} GSH_StrokedPathShape;

// The log writes the height ahead of the width.
typedef struct GSH_ImageRectShape
{
    GSH_Shape irs_Shape;
    uint32_t irs_ImageWidth;   // pixels
    uint32_t irs_ImageHeight;  // pixels
} GSH_ImageRectShape;

typedef struct GSH_MultiRectShape
{
    GSH_Shape mrs_Shape;
    uint32_t mrs_RectCount;
    GGO_BoxInt mrs_Rect[1];  // mrs_RectCount entries
} GSH_MultiRectShape;

typedef struct GSH_XLimits
{
    int16_t xl_StartX;
    int16_t xl_StopX;
} GSH_XLimits;

typedef struct GSH_ScanlineShape
{
    GSH_Shape ss_Shape;
    GGO_BoxInt ss_BoundingBox;
    int32_t ss_StartY;
    uint32_t ss_Height;
    GSH_XLimits ss_XLimits[1];  // ss_Height entries, one for each row
} GSH_ScanlineShape;

typedef struct GSH_StrokedGlyphShape
{
    GSH_Shape sgs_Shape;
    GGO_Matrix sgs_StrokingTransform;
    GPA_PathStrokingParams sgs_StrokingParams;
} GSH_StrokedGlyphShape;

typedef struct GSH_ShapePointer
{
    const GSH_Shape* sp_HeaderPtr;
    union
    {
        const GPA_PathPointer* filled_path;   // GSH_SHAPE_FILL
        const GPA_PathPointer* stroked_path;  // GSH_SHAPE_STROKE
        struct
        {
            const GFI_FontSpecPointer* font_spec_ptr;
            const GFI_StringDescPointer* string_desc;
        } glyph;  // GSH_SHAPE_GLYPHS, GSH_SHAPE_STROKE_GLYPHS
    } sp_U;       // the other kinds use no member
} GSH_ShapePointer;

typedef struct GSH_ShapeList GSH_ShapeList;

struct GSH_ShapeList
{
    uint32_t sl_Hints;   // GSH_SLH_*
    uint32_t sl_ClipIn;  // boolean
    GSH_ShapePointer sl_Shape;
    const GSH_ShapeList* sl_Next;        // null at the end
    const GSH_ShapeList* sl_Collection;  // may be null
    uint32_t sl_UniqueId;
};

#ifdef __cplusplus
}
#endif

#endif
