/// \file
/// GPA: paths as lists of edges, each edge a run of segments of one kind, and the parameters of a stroke.
///
/// All coordinates are doubles; stroke parameters are single precision. Arrays at the end of a record are
/// declared with one entry and hold as many as their count says: size a record by offsetof.

#ifndef ORVLOG_INTERFACE_GPA_PATH_H
#define ORVLOG_INTERFACE_GPA_PATH_H

#include "holv-core/ggo/ggo-records.h"

#include <stddef.h>
#include <stdint.h>

#ifdef __cplusplus
extern "C" {
#endif

/// Joins of a stroke. docs/data-model.md tells their forms.
enum
{
    GPA_JOIN_MITER,              ///< mitered, beyond the limit a bevel
    GPA_JOIN_ROUND,              ///< round
    GPA_JOIN_BEVEL,              ///< cut off
    GPA_JOIN_MITER_CLIPPED,      ///< mitered, beyond the limit cut off there
    GPA_JOIN_TRIANGLE,           ///< a point half a width off the corner
    GPA_JOIN_NONE,               ///< open
    GPA_JOIN_MITER_DUAL_CLIPPED  ///< as GPA_JOIN_MITER_CLIPPED
};

/// Caps of a stroke.
enum
{
    GPA_CAP_BUTT,     ///< none
    GPA_CAP_ROUND,    ///< half a circle
    GPA_CAP_PROJECT,  ///< half a square
    GPA_CAP_TRIANGLE  ///< a point half a width beyond the end
};

/// Adjustment of a stroke to pixels.
enum
{
    GPA_ADJUST_NONE,  ///< none
    GPA_ADJUST_PS     ///< at least one pixel wide, thin lines on the middle of their pixels
};

/// Which pixels a path touches.
enum
{
    GPA_PLACEMENT_GDI,                 ///< pixels whose centre is inside
    GPA_PLACEMENT_PS,                  ///< pixels that are touched
    GPA_PLACEMENT_PCL,                 ///< PCL's rule
    GPA_PLACEMENT_GDI_MQP,             ///< GDI's rule at the highest quality
    GPA_PLACEMENT_PATH_PCL_IMAGE_GDI,  ///< PCL's for paths, GDI's for images
    GPA_PLACEMENT_PATH_PS_IMAGE_GDI,   ///< PostScript's for paths, GDI's for images
    GPA_PLACEMENT_PATH_GDI_IMAGE_PS,   ///< GDI's for paths, PostScript's for images
    GPA_PLACEMENT_AREA_INTERSECT,      ///< pixels whose area is met
    GPA_PLACEMENT_CENTER_INTERSECT     ///< pixels whose centre is met
};

/// The direction in which pixel placement looks at a page.
enum
{
    GPA_PP_ORIENTATION_0_DEG,           ///< as it is
    GPA_PP_ORIENTATION_90_DEG,          ///< turned by 90 degrees
    GPA_PP_ORIENTATION_180_DEG,         ///< by 180 degrees
    GPA_PP_ORIENTATION_270_DEG,         ///< by 270 degrees
    GPA_PP_ORIENTATION_Y_FLIP_0_DEG,    ///< mirrored top to bottom
    GPA_PP_ORIENTATION_Y_FLIP_90_DEG,   ///< mirrored and turned by 90 degrees
    GPA_PP_ORIENTATION_Y_FLIP_180_DEG,  ///< by 180 degrees
    GPA_PP_ORIENTATION_Y_FLIP_270_DEG   ///< by 270 degrees
};

/// What is inside a path.
enum
{
    GPA_WINDING_ODD_EVEN,  ///< an odd number of crossings
    GPA_WINDING_NON_ZERO   ///< a winding number other than 0
};

/// Kinds of edges.
enum
{
    GPA_EDGE_STRAIGHT,     ///< GPA_StraightEdge
    GPA_EDGE_BEZIER,       ///< GPA_BezierEdge
    GPA_EDGE_QUAD_BEZIER,  ///< GPA_QuadBezierEdge
    GPA_EDGE_STAIRCASE,    ///< GPA_StaircaseEdge
    GPA_EDGE_ELLIPTICAL    ///< GPA_EllipticalEdge
};

/// How an edge ends its subpath: the low seven bits of ed_EdgeFlag.
enum
{
    GPA_SUBPATH_END_CLOSED,  ///< with a line back to the subpath's start
    GPA_SUBPATH_CONTINUE,    ///< not at all: it goes on into the next edge
    GPA_SUBPATH_END_OPEN     ///< without a line
};

/// Bit 7 of ed_EdgeFlag.
enum
{
    GPA_SUPPRESS_STROKING_FLAG = 0x80  ///< the edge counts when the path is filled, not when it is stroked
};

/// Flags of pa_PathHints.
enum
{
    GPA_HINT_NONE = 0x0,              ///< no hint
    GPA_HINT_IS_RECTANGLE = 0x1,      ///< is an upright rectangle
    GPA_HINT_STROKED = 0x2,           ///< is the outline of a stroke
    GPA_HINT_NO_OVERLAP = 0x4,        ///< doesn't cross itself
    GPA_HINT_BOX_IS_MINIMAL = 0x8,    ///< pa_EnclosingBox is as small as it can be
    GPA_HINT_ONE_SUBPATH = 0x10,      ///< has one subpath
    GPA_HINT_ONLY_STRAIGHTS = 0x20,   ///< has straight edges alone
    GPA_HINT_ONLY_STAIRCASES = 0x40,  ///< has staircase edges alone
    GPA_HINT_INPUT_INT_ONLY = 0x80    ///< its coordinates are whole numbers
};

// Segments hold displacements, each measured from P, the point where the segment starts: the first segment
// of an edge starts at its pa_EdgeStart, each later one where the last one ended. A straight segment v is a
// line from P to P + v.

/// A cubic Bezier curve from P to P + bs_EndPoint with the control points P + bs_StartTangent and
/// P + bs_EndTangent. All three vectors are displacements from P, the end tangent too.
typedef struct GPA_BezierSegment
{
    GGO_Vector bs_StartTangent;  ///< first control point
    GGO_Vector bs_EndTangent;    ///< second control point
    GGO_Vector bs_EndPoint;      ///< end
} GPA_BezierSegment;

/// A quadratic Bezier curve from P to P + qs_EndPoint with the control point P + qs_ControlPoint.
typedef struct GPA_QuadBezierSegment
{
    GGO_Vector qs_ControlPoint;  ///< control point
    GGO_Vector qs_EndPoint;      ///< end
} GPA_QuadBezierSegment;

/// A line by ss_XOffset along x, then one by ss_YOffset along y, downwards in value if sc_YPositive is 0.
/// Y is stored ahead of X; the log writes X ahead of Y.
typedef struct GPA_StaircaseSegment
{
    uint8_t ss_YOffset;  ///< along y, without its sign
    int8_t ss_XOffset;   ///< along x
} GPA_StaircaseSegment;

/// An arc of at most half an ellipse from P to P + es_EndPoint. The x axis of the ellipse is turned by
/// es_AngleToXAxis, in radians from the x axis towards the y axis; the arc runs in that direction if the
/// product of the radii is positive, else in the other.
typedef struct GPA_EllipticalSegment
{
    double es_XRadius;       ///< radius along the ellipse's x axis; its sign counts
    double es_YRadius;       ///< radius along the ellipse's y axis; its sign counts
    double es_AngleToXAxis;  ///< radians
    GGO_Vector es_EndPoint;  ///< end
} GPA_EllipticalSegment;

/// The head of every edge.
typedef struct GPA_Edge
{
    uint8_t ed_EdgeType;       ///< GPA_EDGE_*
    uint8_t ed_EdgeFlag;       ///< GPA_SUPPRESS_STROKING_FLAG, and GPA_SUBPATH_* in the low seven bits
    uint16_t ed_SegmentCount;  ///< entries of the segment array
} GPA_Edge;

/// In all five edges the segment array stands eight bytes behind the start.
typedef struct GPA_StraightEdge
{
    GPA_Edge se_Edge;          ///< the head
    uint32_t se_Gap;           ///< not read
    GGO_Vector se_Segment[1];  ///< ed_SegmentCount entries
} GPA_StraightEdge;

/// Cubic Bezier curves.
typedef struct GPA_BezierEdge
{
    GPA_Edge be_Edge;                       ///< the head
    uint32_t be_Gap;                        ///< not read
    GPA_BezierSegment be_BezierSegment[1];  ///< ed_SegmentCount entries
} GPA_BezierEdge;

/// Quadratic Bezier curves.
typedef struct GPA_QuadBezierEdge
{
    GPA_Edge qb_Edge;                               ///< the head
    uint32_t qb_Gap;                                ///< not read
    GPA_QuadBezierSegment qb_QuadBezierSegment[1];  ///< ed_SegmentCount entries
} GPA_QuadBezierEdge;

/// Steps along the axes.
typedef struct GPA_StaircaseEdge
{
    GPA_Edge sc_Edge;                  ///< the head
    uint32_t sc_YPositive;             ///< boolean
    GPA_StaircaseSegment sc_Field[1];  ///< ed_SegmentCount entries
} GPA_StaircaseEdge;

/// Arcs of ellipses.
typedef struct GPA_EllipticalEdge
{
    GPA_Edge ee_Edge;                               ///< the head
    uint32_t ee_Gap;                                ///< not read
    GPA_EllipticalSegment ee_EllipticalSegment[1];  ///< ed_SegmentCount entries
} GPA_EllipticalEdge;

/// An edge of a path.
typedef struct GPA_EdgePointer
{
    const GPA_Edge* ep_Pointer;  ///< whichever of the five edges
    uint32_t ep_Owned;           ///< boolean; only printed
} GPA_EdgePointer;

/// The head of a path: its edges' starts.
typedef struct GPA_Path
{
    uint32_t pa_NumEdges;          ///< edges
    uint16_t pa_PathHints;         ///< GPA_HINT_*
    GGO_BoxFloat pa_EnclosingBox;  ///< a box around the path, in the shape's space
    GGO_Point pa_EdgeStart[1];     ///< pa_NumEdges start points, one for each edge
} GPA_Path;

/// A path with its edges.
typedef struct GPA_PathPointer
{
    const GPA_Path* lpp_Path;            ///< the head
    uint32_t lpp_PixelPlacement;         ///< GPA_PLACEMENT_*
    uint32_t lpp_EnablePixelPlacement;   ///< boolean
    uint32_t lpp_PathOwned;              ///< boolean; only printed
    GPA_EdgePointer lpp_EdgePointer[1];  ///< pa_NumEdges entries
} GPA_PathPointer;

/// Bit fields of psp_Flags.
#define GPA_PSP_START_CAP(flags) (0xFU & (uint32_t)(flags))
/// The cap at the end of an open subpath, GPA_CAP_*.
#define GPA_PSP_END_CAP(flags) (((uint32_t)(flags) >> 4) & 0xFU)
/// The join, GPA_JOIN_*.
#define GPA_PSP_JOIN(flags) (((uint32_t)(flags) >> 8) & 0xFU)
/// The adjustment, GPA_ADJUST_*.
#define GPA_PSP_ADJUST(flags) (((uint32_t)(flags) >> 12) & 0x7U)
/// The highest bit. It is only printed.
#define GPA_PSP_Z(flags) (((uint32_t)(flags) >> 15) & 0x1U)

/// How a path is stroked. Lengths are in the space that is told with the stroke.
typedef struct GPA_PathStrokingParams
{
    uint16_t psp_Flags;       ///< GPA_PSP_*: start cap, end cap, join, adjust, Z
    uint16_t psp_DashCount;   ///< entries of psp_DashLength
    uint8_t psp_DashCaps;     ///< GPA_CAP_*
    float psp_StrokeWidth;    ///< width; 0 is the thinnest line, one pixel
    float psp_MiterLimit;     ///< greatest ratio of miter length to width
    float psp_DashStart;      ///< where in the dashes a subpath begins
    float psp_DashLength[1];  ///< psp_DashCount entries
} GPA_PathStrokingParams;

#ifdef __cplusplus
}
#endif

#endif
