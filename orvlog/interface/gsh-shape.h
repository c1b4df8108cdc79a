/// \file
/// GSH: what is painted or clipped with: a shape of one of seven kinds with its path or its text, and
/// lists of shapes.

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

/// Kinds of shapes.
enum
{
    GSH_SHAPE_GLYPHS,        ///< a text, GSH_GlyphShape
    GSH_SHAPE_FILL,          ///< the inside of a path, GSH_FilledPathShape
    GSH_SHAPE_STROKE,        ///< a stroked path, GSH_StrokedPathShape
    GSH_SHAPE_IMAGE_RECT,    ///< the rectangle of an image, GSH_ImageRectShape
    GSH_SHAPE_MULTI_RECT,    ///< rectangles, GSH_MultiRectShape
    GSH_SHAPE_SCANLINE,      ///< rows, GSH_ScanlineShape
    GSH_SHAPE_STROKE_GLYPHS  ///< a stroked text, GSH_StrokedGlyphShape
};

/// Flags of sh_Hints.
enum
{
    GSH_SH_NO_HINT = 0x0,              ///< no hint
    GSH_SH_FONT_HAS_FACE_SCOPE = 0x1,  ///< the font is the same throughout the page
    GSH_SH_FONT_HAS_DOC_SCOPE = 0x2,   ///< the font is the same throughout the document
    GSH_SH_NO_ROTATION = 0x4,          ///< sh_Transform doesn't rotate
    GSH_SH_NO_SKEW = 0x8,              ///< nor skew
    GSH_SH_NO_SCALE = 0x10,            ///< nor scale
    GSH_SH_NO_SHIFT = 0x20,            ///< nor move
    GSH_SH_REUSED_AS_STROKE = 0x40     ///< comes again as a stroke
};

/// Flags of sl_Hints.
enum
{
    GSH_SLH_NONE = 0x0,                ///< no hint
    GSH_SLH_IGNORE_REST_OF_LIST = 0x1  ///< the chain ends with this list
};

/// The head of every shape.
typedef struct GSH_Shape
{
    uint16_t sh_ShapeType;    ///< GSH_SHAPE_*
    uint16_t sh_Hints;        ///< GSH_SH_*
    GGO_Matrix sh_Transform;  ///< the shape's space to the content space
} GSH_Shape;

/// A text. Font and string stand in the GSH_ShapePointer.
typedef struct GSH_GlyphShape
{
    GSH_Shape gs_Shape;  ///< the head
} GSH_GlyphShape;

/// The inside of a path. The path stands in the GSH_ShapePointer.
typedef struct GSH_FilledPathShape
{
    GSH_Shape fps_Shape;       ///< the head
    uint32_t fps_WindingRule;  ///< GPA_WINDING_*
} GSH_FilledPathShape;

/// A stroked path. The path stands in the GSH_ShapePointer.
typedef struct GSH_StrokedPathShape
{
    GSH_Shape sps_Shape;       ///< the head
    uint32_t sps_WindingRule;  ///< GPA_WINDING_*
    GPA_PathStrokingParams
        sps_StrokingParams;  ///< the stroke, in the shape's space; its dashes go on behind the record
} GSH_StrokedPathShape;

/// The log writes the height ahead of the width.
typedef struct GSH_ImageRectShape
{
    GSH_Shape irs_Shape;       ///< the head
    uint32_t irs_ImageWidth;   ///< pixels
    uint32_t irs_ImageHeight;  ///< pixels
} GSH_ImageRectShape;

/// Rectangles of whole units.
typedef struct GSH_MultiRectShape
{
    GSH_Shape mrs_Shape;     ///< the head
    uint32_t mrs_RectCount;  ///< rectangles
    GGO_BoxInt mrs_Rect[1];  ///< mrs_RectCount entries
} GSH_MultiRectShape;

/// A row of a scanline shape. It is empty if its stop isn't above its start.
typedef struct GSH_XLimits
{
    int16_t xl_StartX;  ///< first unit
    int16_t xl_StopX;   ///< behind the last unit
} GSH_XLimits;

/// Rows of whole units.
typedef struct GSH_ScanlineShape
{
    GSH_Shape ss_Shape;         ///< the head
    GGO_BoxInt ss_BoundingBox;  ///< a box around the rows
    int32_t ss_StartY;          ///< y of the first row
    uint32_t ss_Height;         ///< rows
    GSH_XLimits ss_XLimits[1];  ///< ss_Height entries, one for each row
} GSH_ScanlineShape;

/// A stroked text. Font and string stand in the GSH_ShapePointer.
typedef struct GSH_StrokedGlyphShape
{
    GSH_Shape sgs_Shape;                        ///< the head
    GGO_Matrix sgs_StrokingTransform;           ///< the stroke's space to the content space
    GPA_PathStrokingParams sgs_StrokingParams;  ///< the stroke; its dashes go on behind the record
} GSH_StrokedGlyphShape;

/// A shape with what it refers to.
typedef struct GSH_ShapePointer
{
    const GSH_Shape* sp_HeaderPtr;  ///< whichever of the seven kinds; null: there is no shape
    union
    {
        const GPA_PathPointer* filled_path;   ///< GSH_SHAPE_FILL
        const GPA_PathPointer* stroked_path;  ///< GSH_SHAPE_STROKE
        struct
        {
            const GFI_FontSpecPointer* font_spec_ptr;
            const GFI_StringDescPointer* string_desc;
        } glyph;  ///< GSH_SHAPE_GLYPHS, GSH_SHAPE_STROKE_GLYPHS
    } sp_U;       ///< the other kinds use no member
} GSH_ShapePointer;

/// A list of a clip. docs/data-model.md tells how lists combine.
typedef struct GSH_ShapeList GSH_ShapeList;

/// A list of a clip. docs/data-model.md tells how lists combine.
struct GSH_ShapeList
{
    uint32_t sl_Hints;                   ///< GSH_SLH_*
    uint32_t sl_ClipIn;                  ///< boolean
    GSH_ShapePointer sl_Shape;           ///< the shape
    const GSH_ShapeList* sl_Next;        ///< null at the end
    const GSH_ShapeList* sl_Collection;  ///< may be null
    uint32_t sl_UniqueId;                ///< chosen by the caller; equal numbers say that two calls use the same list
};

#ifdef __cplusplus
}
#endif

#endif
