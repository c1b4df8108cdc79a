/// \file
/// ORV: the drawing interface. Two tables of functions, one for documents and one for an open drawing.
///
/// A table is an array of entries of two words, a function and its context. Every function takes the table
/// on which it is called, and finds its own context in its entry there. Calls give non-zero for success.
/// All numbers of one session are unsigned and 32 bits wide; booleans are 32 bits wide.

#ifndef ORVLOG_INTERFACE_ORV_INTERFACE_H
#define ORVLOG_INTERFACE_ORV_INTERFACE_H

#include "holv-core/ggo/ggo-records.h"
#include "orvlog/interface/gfi-font.h"
#include "orvlog/interface/gop-image.h"
#include "orvlog/interface/gop-operand.h"
#include "orvlog/interface/gpa-path.h"
#include "orvlog/interface/gsh-shape.h"

#include <stddef.h>
#include <stdint.h>

#ifdef __cplusplus
extern "C" {
#endif

/// The table for documents.
typedef struct ORV_Interface ORV_Interface;
/// The table for an open drawing.
typedef struct ORV_DrawingInterface ORV_DrawingInterface;

/// Flags of fp_FaceHints.
enum
{
    ORV_FACE_HINT_NONE = 0x0,                   ///< no hint
    ORV_FACE_HINT_NO_PDF_BLENDS = 0x2,          ///< no blend mode comes
    ORV_FACE_HINT_NO_COMPOSITING = 0x8,         ///< nothing transparent comes
    ORV_FACE_HINT_NO_OVERPRINTING = 0x10,       ///< nothing overprints
    ORV_FACE_HINT_EXPECTED_GRAD3PT_MESH = 0x20  ///< three-point gradients come as meshes
};

/// Flags of rp_ResourceHints.
enum
{
    ORV_RES_HINT_NONE = 0x0,                  ///< no hint
    ORV_RES_HINT_NO_PDF_BLENDS = 0x1,         ///< no blend mode comes
    ORV_RES_HINT_ONE_TIME_USE = 0x4,          ///< is painted once
    ORV_RES_HINT_NO_ROTATION = 0x8,           ///< isn't rotated when it is painted
    ORV_RES_HINT_NO_SCALE = 0x10,             ///< isn't scaled
    ORV_RES_HINT_NO_SKEW = 0x20,              ///< isn't skewed
    ORV_RES_HINT_NO_TILING = 0x40,            ///< isn't tiled
    ORV_RES_HINT_WILL_BE_TILED = 0x80,        ///< is tiled
    ORV_RES_HINT_NEVER_NON_ISOLATED = 0x200,  ///< is painted as an isolated group
    ORV_RES_SHARE_OUTSIDE_RESOURCE = 0x400,   ///< is used outside of the resource that it is made in
    ORV_RES_HINT_NO_COMPOSITING = 0x800,      ///< nothing transparent comes
    ORV_RES_HINT_NO_OVERPRINTING = 0x1000     ///< nothing overprints
};

/// Kinds of groups. docs/data-model.md tells how they combine.
enum
{
    ORV_GROUP_SIMPLE,              ///< drawn on nothing
    ORV_GROUP_PAINT_AS_OPAQUE,     ///< painted as opaque
    ORV_GROUP_NON_ISOLATED,        ///< drawn on what lies below
    ORV_GROUP_COMBINE_SEPARATION,  ///< combined with a separation
    ORV_GROUP_MAKE_SEPARATION      ///< makes a separation
};

/// Flags of the hints of a group and of the paint of a resource.
enum
{
    ORV_GRP_HINT_NONE = 0x0,                                    ///< no hint
    ORV_GRP_HINT_NO_PDF_BLENDS = 0x2,                           ///< no blend mode comes
    ORV_GRP_HINT_PIXEL_UNITS = 0x8,                             ///< its units are pixels
    ORV_GRP_HINT_NO_ROTATION = 0x10,                            ///< isn't rotated
    ORV_GRP_HINT_NO_COMPOSITING = 0x40,                         ///< nothing transparent comes
    ORV_GRP_HINT_NO_OVERPRINTING = 0x80,                        ///< nothing overprints
    ORV_GRP_HINT_GROUP_UNIQUE_ID_USED_OUTSIDE_DRAWING = 0x100,  ///< its number is used outside of its drawing too
    ORV_GRP_HINT_RECOMMEND_PRERENDERING = 0x800                 ///< is worth being rendered ahead
};

/// Flags of tiling_flags.
enum
{
    ORV_GROUP_TILE_NONE = 0x0,                  ///< isn't repeated
    ORV_GROUP_TILE_X = 0x2,                     ///< repeats along x
    ORV_GROUP_TILE_Y = 0x4,                     ///< repeats along y
    ORV_GROUP_TILE_REFLECT_X = 0x8,             ///< every second repetition along x is mirrored
    ORV_GROUP_TILE_REFLECT_Y = 0x10,            ///< every second repetition along y is mirrored
    ORV_GROUP_TILE_PIXEL_SPACING = 0x20,        ///< steps are whole pixels
    ORV_GROUP_TILE_FASTER_PIXEL_SPACING = 0x40  ///< steps are whole pixels, whichever are fast
};

/// Flags of object_hints. They are data for the reader of a log: the log is complete whatever they say.
enum
{
    ORV_OBJ_HINT_NONE = 0x0,                          ///< no hint
    ORV_OBJ_HINT_UNCHANGED_CLIP = 0x1,                ///< the clip is that of the call before, as below
    ORV_OBJ_HINT_UNCHANGED_OPERATOR = 0x2,            ///< the operator
    ORV_OBJ_HINT_UNCHANGED_PATH = 0x4,                ///< the path
    ORV_OBJ_HINT_UNCHANGED_OP1 = 0x8,                 ///< operand 1
    ORV_OBJ_HINT_UNCHANGED_OP2 = 0x10,                ///< operand 2
    ORV_OBJ_HINT_UNCHANGED_OP3 = 0x20,                ///< operand 3
    ORV_OBJ_HINT_UNCHANGED_OPTYPE = 0x40,             ///< the object type
    ORV_OBJ_HINT_FIRST_OF_STROKE = 0x80,              ///< first of the calls that make a stroke
    ORV_OBJ_HINT_LAST_OF_STROKE = 0x100,              ///< last of them
    ORV_OBJ_HINT_LAST_COMPOSITING = 0x200,            ///< nothing transparent comes behind it
    ORV_OBJ_HINT_LAST_OBJECT = 0x400,                 ///< last call of the drawing
    ORV_OBJ_HINT_UNCHANGED_STROKE_OP1 = 0x800,        ///< the stroke's operand 1
    ORV_OBJ_HINT_UNCHANGED_STROKE_OP2 = 0x1000,       ///< the stroke's operand 2
    ORV_OBJ_HINT_UNCHANGED_STROKE_OP3 = 0x2000,       ///< the stroke's operand 3
    ORV_OBJ_HINT_UNCHANGED_STROKE_OPERATOR = 0x4000,  ///< the stroke's operator
    ORV_OBJ_HINT_UNCHANGED_STROKE_OPTYPE = 0x8000     ///< the stroke's object type
};

/// Flags of paint_flags.
enum
{
    ORV_PAINTFLAGS_NONE = 0x0,         ///< nothing
    ORV_PAINTFLAGS_FILL = 0x1,         ///< fills
    ORV_PAINTFLAGS_STROKE = 0x2,       ///< strokes
    ORV_PAINTFLAGS_FILL_SECOND = 0x4,  ///< fills behind the stroke
    ORV_PAINTFLAGS_KNOCKOUT = 0x8      ///< the second of the two replaces the first
};

/// A page.
typedef struct ORV_FaceProperties
{
    uint32_t fp_FaceHints;           ///< ORV_FACE_HINT_*
    GGO_Matrix fp_FaceInchToPixels;  ///< face space in inches to pixels
    uint32_t fp_WidthInPixels;       ///< pixels
    uint32_t fp_HeightInPixels;      ///< pixels
    GGO_BoxFloat fp_TrimBox;         ///< inches
    GGO_BoxFloat fp_ClipBox;         ///< inches
    GGO_Point fp_MediaSize;          ///< inches
} ORV_FaceProperties;

/// A resource.
typedef struct ORV_ResourceProperties
{
    uint32_t rp_ResourceHints;         ///< ORV_RES_HINT_*
    float rp_MaxRescale;               ///< above 0: the scale at which the resource is drawn
    uint8_t rp_IsKnockout;             ///< boolean
    uint8_t rp_HasPixelPlacementRule;  ///< boolean: the next field counts
    uint16_t rp_PixelPlacementRule;    ///< GPA_PLACEMENT_*
    GGO_BoxFloat rp_Enclosing_box;     ///< content is cut to it unless it is empty; in the resource's space
} ORV_ResourceProperties;

// An entry's function and its context. In entry 0 of a wrapped table the first word is the renderer's own
// table, or null, and the second is 0.

/// Opens a document. `document_out` receives the renderer's word for it, `document_id` is the client's number.
typedef uint32_t (*ORV_document_start_fn)(void* err, const ORV_Interface* table, void** document_out,
                                          uint32_t document_id, const GFI_FontEngineTable* font_engine_functions,
                                          void* document_extra);

/// Ends a document.
typedef uint32_t (*ORV_document_finish_fn)(const ORV_Interface* table, void* document);

/// Gives a resource back. `parent_drawing` is null for a document's own.
typedef uint32_t (*ORV_resource_destroy_fn)(void* err, const ORV_Interface* table, void* document,
                                            const ORV_DrawingInterface* parent_drawing, uint32_t resource_id);

/// Opens a page. `drawing_out` is the client's record and is filled by the call.
typedef uint32_t (*ORV_face_start_fn)(void* err, const ORV_Interface* table, void* document,
                                      ORV_DrawingInterface* drawing_out,
                                      const GFI_FontEngineTable* font_engine_functions, uint32_t face_seq_number,
                                      const ORV_FaceProperties* face_properties, void* colour_ticket,
                                      uint32_t pixel_placement_orientation, uint32_t pixel_placement);

/// Opens a resource: a drawing that is recorded once and painted by ORV_resource_paint.
typedef uint32_t (*ORV_resource_start_fn)(void* err, const ORV_Interface* table, void* document,
                                          ORV_DrawingInterface* drawing_out, const ORV_DrawingInterface* parent_drawing,
                                          const GFI_FontEngineTable* font_engine_functions,
                                          const ORV_ResourceProperties* resource_properties, void* colour_ticket,
                                          uint32_t* resource_id_out);

/// Opens a drawing in memory. The thirteen further arguments are pointer-sized words of the renderer's; the
/// sixth is a font engine table, the seventh a colour ticket.
typedef uint32_t (*ORV_memory_context_start_fn)(void* err, const ORV_Interface* table, void* document,
                                                ORV_DrawingInterface* drawing_out, uintptr_t word1, uintptr_t word2,
                                                uintptr_t word3, uintptr_t word4, uintptr_t word5,
                                                const GFI_FontEngineTable* font_engine_functions, void* colour_ticket,
                                                uintptr_t word8, uintptr_t word9, uintptr_t word10, uintptr_t word11,
                                                uintptr_t word12, uintptr_t word13);

/// The table for documents.
struct ORV_Interface
{
    struct
    {
        const ORV_Interface* renderer;
        uint32_t reserved;
    } base;  ///< entry 0: no function
    struct
    {
        ORV_document_start_fn fn;
        void* context;
    } document_start;  ///< entry 1
    struct
    {
        ORV_document_finish_fn fn;
        void* context;
    } document_finish;  ///< entry 2
    struct
    {
        ORV_resource_destroy_fn fn;
        void* context;
    } resource_destroy;  ///< entry 3
    struct
    {
        ORV_face_start_fn fn;
        void* context;
    } face_start;  ///< entry 4
    struct
    {
        ORV_resource_start_fn fn;
        void* context;
    } resource_start;  ///< entry 5
    struct
    {
        ORV_memory_context_start_fn fn;
        void* context;
    } memory_context_start;  ///< entry 6
};

// Operand arguments point at a pointer record of gop-operand.h or gop-image.h; which one is told by
// go_OpType of the operand behind it. They may be null, as may operators, shape lists and colours.

/// Paints a shape, within a clip, with operand 1, by an operator; operand 2 is a mask, operand 3 counts for
/// GOP_ROP_ROP4 alone.
typedef uint32_t (*ORV_object_paint_fn)(const ORV_DrawingInterface* table, uint8_t object_type_and_flag,
                                        uint32_t object_hints, const GOP_Operator* op,
                                        const GSH_ShapePointer* paint_path, uint32_t path_pixel_placement,
                                        const GSH_ShapeList* clip, GOP_OperandPointer* operand1,
                                        GOP_OperandPointer* operand2, GOP_OperandPointer* operand3);

/// `end_point_out` receives two doubles: the pen position after a text, in the coordinates of the drawing.
typedef uint32_t (*ORV_object_paint_and_stroke_fn)(
    const ORV_DrawingInterface* table, uint8_t fill_object_type, uint8_t stroke_object_type, uint32_t object_hints,
    const GOP_Operator* fill_op, const GOP_Operator* stroke_op, const GSH_ShapePointer* paint_path,
    const GPA_PathStrokingParams* stroking_params, const GGO_Matrix* stroking_transform, uint32_t path_pixel_placement,
    const GSH_ShapeList* clip, uint32_t paint_flags, GGO_Point* end_point_out, GOP_OperandPointer* fill_operand1,
    GOP_OperandPointer* fill_operand2, GOP_OperandPointer* fill_operand3, GOP_OperandPointer* stroke_operand1,
    GOP_OperandPointer* stroke_operand2, GOP_OperandPointer* stroke_operand3);

/// Opens a group; what is drawn until it ends is combined as a whole. `retransform` maps its content to what is around
/// it.
typedef uint32_t (*ORV_group_start_fn)(
    const ORV_DrawingInterface* table, uint32_t group_unique_id, uint32_t* group_out,
    const GFI_FontEngineTable* font_engine_functions, uint32_t hints, uint32_t group_type, uint32_t is_knockout,
    uint32_t is_replayable, void* colour_ticket, uint32_t pixel_placement_orientation, uint32_t has_pixel_placement,
    uint32_t pixel_placement, const GGO_Matrix* retransform, const GOP_Operator* op, GOP_OperandPointer* operand2,
    const GSH_ShapeList* group_clip, uint32_t tiling_flags, double x_repetition_interval, double y_repetition_interval,
    const GBC_Color* separation_mask, const GBC_Color* separation_color, const GGO_BoxFloat* bounding_box_hint);

/// Non-zero in `replay_out` says that the renderer wants the content of the group once more.
typedef uint32_t (*ORV_group_finish_fn)(const ORV_DrawingInterface* table, uint32_t* replay_out);

/// Paints a resource, as a group with its content would be.
typedef uint32_t (*ORV_resource_paint_fn)(const ORV_DrawingInterface* table, uint32_t resource_id, uint32_t hints,
                                          uint32_t group_type, const GGO_Matrix* retransform, const GOP_Operator* op,
                                          GOP_OperandPointer* operand2, const GSH_ShapeList* group_clip,
                                          uint32_t tiling_flags, double x_repetition_interval,
                                          double y_repetition_interval, const GBC_Color* separation_mask,
                                          const GBC_Color* separation_color, uint32_t pixel_placement_orientation);

/// The error context that the client gave when the drawing was opened.
typedef void* (*ORV_drawing_error_context_fn)(const ORV_DrawingInterface* table);

/// Both end the drawing; the table must not be called afterwards.
typedef uint32_t (*ORV_drawing_finish_fn)(const ORV_DrawingInterface* table);
/// Ends the drawing and throws away what was drawn; the table must not be called afterwards.
typedef uint32_t (*ORV_drawing_discard_fn)(const ORV_DrawingInterface* table);

/// The table for an open drawing.
struct ORV_DrawingInterface
{
    struct
    {
        ORV_object_paint_fn fn;
        void* context;
    } object_paint;  ///< entry 0
    struct
    {
        ORV_object_paint_and_stroke_fn fn;
        void* context;
    } object_paint_and_stroke;  ///< entry 1
    struct
    {
        ORV_group_start_fn fn;
        void* context;
    } group_start;  ///< entry 2
    struct
    {
        ORV_group_finish_fn fn;
        void* context;
    } group_finish;  ///< entry 3
    struct
    {
        ORV_resource_paint_fn fn;
        void* context;
    } resource_paint;  ///< entry 4
    struct
    {
        ORV_drawing_error_context_fn fn;
        void* context;
    } drawing_error_context;  ///< entry 5
    struct
    {
        ORV_drawing_finish_fn fn;
        void* context;
    } drawing_finish;  ///< entry 6
    struct
    {
        ORV_drawing_discard_fn fn;
        void* context;
    } drawing_discard;  ///< entry 7
};

#ifdef __cplusplus
}
#endif

#endif
