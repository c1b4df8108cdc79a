/// \file
/// Sizes of records that end in an array of one entry, which stands for as many as a count says.
///
/// For records that are made at run time: a function for each, which gives the bytes of the whole and never less than
/// the record's own size. For records of constant size: a macro for each, the type of a variable that is filled in
/// place, whose member `record` is what the interface takes.
///
///   static const ORVLOG_STRAIGHT_EDGE(3) triangle = {{{GPA_EDGE_STRAIGHT, 0, 3}, 0, {{1, 0}, {0, 1}, {-1, -1}}}};
///   ... triangle.record ...

#ifndef ORVLOG_RECORD_SIZES_H
#define ORVLOG_RECORD_SIZES_H

#include "orvlog/interface/orv-interface.h"

#include <stddef.h>
#include <stdint.h>

#ifdef __cplusplus
extern "C" {
#endif

/// Bytes of a record whose array, a member that is named in it, has `count` entries.
#define ORVLOG_BYTES_WITH(type, array, count)                                                                          \
    orvlog_bytes_with(sizeof(type), offsetof(type, array), sizeof(((type*)0)->array[0]), (count))

/// \cond inner

static inline size_t orvlog_bytes_with(size_t record, size_t offset, size_t entry, uint32_t count)
{
    const size_t bytes = offset + entry * count;
    return bytes > record ? bytes : record;
}

/// \endcond

/// Bytes of a GPA_Path.
/// \param edges  pa_NumEdges
/// \return the record's own size at least
static inline size_t orvlog_path_size(uint32_t edges)
{
    return ORVLOG_BYTES_WITH(GPA_Path, pa_EdgeStart, edges);
}

/// Bytes of a GPA_PathPointer.
/// \param edges  pa_NumEdges
/// \return the record's own size at least
static inline size_t orvlog_path_pointer_size(uint32_t edges)
{
    return ORVLOG_BYTES_WITH(GPA_PathPointer, lpp_EdgePointer, edges);
}

/// Bytes of a GPA_StraightEdge.
/// \param segments  ed_SegmentCount
/// \return the record's own size at least
static inline size_t orvlog_straight_edge_size(uint16_t segments)
{
    return ORVLOG_BYTES_WITH(GPA_StraightEdge, se_Segment, segments);
}

/// Bytes of a GPA_BezierEdge.
/// \param segments  ed_SegmentCount
/// \return the record's own size at least
static inline size_t orvlog_bezier_edge_size(uint16_t segments)
{
    return ORVLOG_BYTES_WITH(GPA_BezierEdge, be_BezierSegment, segments);
}

/// Bytes of a GPA_QuadBezierEdge.
/// \param segments  ed_SegmentCount
/// \return the record's own size at least
static inline size_t orvlog_quad_bezier_edge_size(uint16_t segments)
{
    return ORVLOG_BYTES_WITH(GPA_QuadBezierEdge, qb_QuadBezierSegment, segments);
}

/// Bytes of a GPA_StaircaseEdge.
/// \param segments  ed_SegmentCount
/// \return the record's own size at least
static inline size_t orvlog_staircase_edge_size(uint16_t segments)
{
    return ORVLOG_BYTES_WITH(GPA_StaircaseEdge, sc_Field, segments);
}

/// Bytes of a GPA_EllipticalEdge.
/// \param segments  ed_SegmentCount
/// \return the record's own size at least
static inline size_t orvlog_elliptical_edge_size(uint16_t segments)
{
    return ORVLOG_BYTES_WITH(GPA_EllipticalEdge, ee_EllipticalSegment, segments);
}

/// Bytes of a GPA_PathStrokingParams.
/// \param dashes  psp_DashCount
/// \return the record's own size at least
static inline size_t orvlog_stroking_params_size(uint16_t dashes)
{
    return ORVLOG_BYTES_WITH(GPA_PathStrokingParams, psp_DashLength, dashes);
}

/// Bytes of a GSH_StrokedPathShape.
/// \param dashes  psp_DashCount
/// \return the record's own size at least
static inline size_t orvlog_stroked_path_shape_size(uint16_t dashes)
{
    return ORVLOG_BYTES_WITH(GSH_StrokedPathShape, sps_StrokingParams.psp_DashLength, dashes);
}

/// Bytes of a GSH_StrokedGlyphShape.
/// \param dashes  psp_DashCount
/// \return the record's own size at least
static inline size_t orvlog_stroked_glyph_shape_size(uint16_t dashes)
{
    return ORVLOG_BYTES_WITH(GSH_StrokedGlyphShape, sgs_StrokingParams.psp_DashLength, dashes);
}

/// Bytes of a GSH_MultiRectShape.
/// \param rects  mrs_RectCount
/// \return the record's own size at least
static inline size_t orvlog_multi_rect_shape_size(uint32_t rects)
{
    return ORVLOG_BYTES_WITH(GSH_MultiRectShape, mrs_Rect, rects);
}

/// Bytes of a GSH_ScanlineShape.
/// \param rows  ss_Height
/// \return the record's own size at least
static inline size_t orvlog_scanline_shape_size(uint32_t rows)
{
    return ORVLOG_BYTES_WITH(GSH_ScanlineShape, ss_XLimits, rows);
}

/// Bytes of a GBC_Color.
/// \param channels   num_chans, alpha included
/// \param bit_depth  16 or 32
/// \return the record's own size at least
static inline size_t orvlog_color_size(uint16_t channels, uint8_t bit_depth)
{
    return bit_depth == 32 ? ORVLOG_BYTES_WITH(GBC_Color, channels.as_float, channels)
                           : ORVLOG_BYTES_WITH(GBC_Color, channels.as_uint16, channels);
}

/// Bytes of a GOP_OperandFlat.
/// \param channels   num_chans, alpha included
/// \param bit_depth  16 or 32
/// \return the record's own size at least
static inline size_t orvlog_flat_operand_size(uint16_t channels, uint8_t bit_depth)
{
    return offsetof(GOP_OperandFlat, fl_Color) + orvlog_color_size(channels, bit_depth);
}

/// Bytes of a GOP_GradStop.
/// \param channels   num_chans, alpha included
/// \param bit_depth  16 or 32
/// \return the record's own size at least
static inline size_t orvlog_grad_stop_size(uint16_t channels, uint8_t bit_depth)
{
    return sizeof(GOP_GradStop) - sizeof(GBC_Color) + orvlog_color_size(channels, bit_depth);
}

/// Bytes of a GOP_OperandGradMultistopPointer.
/// \param stops  go_Count
/// \return the record's own size at least
static inline size_t orvlog_multistop_pointer_size(uint16_t stops)
{
    return ORVLOG_BYTES_WITH(GOP_OperandGradMultistopPointer, gmp_GradStop, stops);
}

/// Bytes of a GOP_OperandGradRadialPointer.
/// \param stops  go_Count
/// \return the record's own size at least
static inline size_t orvlog_radial_pointer_size(uint16_t stops)
{
    return ORVLOG_BYTES_WITH(GOP_OperandGradRadialPointer, grp_GradStop, stops);
}

// Types of records of constant size. Each count is 1 or more.

/// A GPA_Path of so many edges.
#define ORVLOG_PATH(edges)                                                                                             \
    union                                                                                                              \
    {                                                                                                                  \
        struct                                                                                                         \
        {                                                                                                              \
            uint32_t pa_NumEdges;                                                                                      \
            uint16_t pa_PathHints;                                                                                     \
            GGO_BoxFloat pa_EnclosingBox;                                                                              \
            GGO_Point pa_EdgeStart[edges];                                                                             \
        } of;                                                                                                          \
        GPA_Path record;                                                                                               \
    }

/// A GPA_PathPointer of so many edges.
#define ORVLOG_PATH_POINTER(edges)                                                                                     \
    union                                                                                                              \
    {                                                                                                                  \
        struct                                                                                                         \
        {                                                                                                              \
            const GPA_Path* lpp_Path;                                                                                  \
            uint32_t lpp_PixelPlacement;                                                                               \
            uint32_t lpp_EnablePixelPlacement;                                                                         \
            uint32_t lpp_PathOwned;                                                                                    \
            GPA_EdgePointer lpp_EdgePointer[edges];                                                                    \
        } of;                                                                                                          \
        GPA_PathPointer record;                                                                                        \
    }

/// A GPA_StraightEdge of so many segments.
#define ORVLOG_STRAIGHT_EDGE(segments)                                                                                 \
    union                                                                                                              \
    {                                                                                                                  \
        struct                                                                                                         \
        {                                                                                                              \
            GPA_Edge se_Edge;                                                                                          \
            uint32_t se_Gap;                                                                                           \
            GGO_Vector se_Segment[segments];                                                                           \
        } of;                                                                                                          \
        GPA_StraightEdge record;                                                                                       \
    }

/// A GPA_BezierEdge of so many segments.
#define ORVLOG_BEZIER_EDGE(segments)                                                                                   \
    union                                                                                                              \
    {                                                                                                                  \
        struct                                                                                                         \
        {                                                                                                              \
            GPA_Edge be_Edge;                                                                                          \
            uint32_t be_Gap;                                                                                           \
            GPA_BezierSegment be_BezierSegment[segments];                                                              \
        } of;                                                                                                          \
        GPA_BezierEdge record;                                                                                         \
    }

/// A flat colour whose channels are floats.
#define ORVLOG_FLAT_OPERAND(color_channels)                                                                            \
    union                                                                                                              \
    {                                                                                                                  \
        struct                                                                                                         \
        {                                                                                                              \
            GOP_Operand fl_Operand;                                                                                    \
            uint16_t num_chans;                                                                                        \
            uint8_t bit_depth;                                                                                         \
            uint8_t has_alpha;                                                                                         \
            uint32_t empty_chans;                                                                                      \
            float channels[color_channels];                                                                            \
        } of;                                                                                                          \
        GOP_OperandFlat record;                                                                                        \
    }

#ifdef __cplusplus
}
#endif

#endif
