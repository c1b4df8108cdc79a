// GPA: paths as lists of edges, each edge a run of segments of one kind, and the parameters of a stroke.
//
// All coordinates are doubles; stroke parameters are single precision. Arrays at the end of a record are
// declared with one entry and hold as many as their count says: size a record by offsetof.

#ifndef ORVLOG_INTERFACE_GPA_PATH_H
#define ORVLOG_INTERFACE_GPA_PATH_H

#include "holv-core/ggo/ggo-records.h"

#include <stddef.h>
#include <stdint.h>

#ifdef __cplusplus
extern "C" {
#endif

enum
{
    GPA_JOIN_MITER,
    GPA_JOIN_ROUND,
    GPA_JOIN_BEVEL,
    GPA_JOIN_MITER_CLIPPED,
    GPA_JOIN_TRIANGLE,
    GPA_JOIN_NONE,
    GPA_JOIN_MITER_DUAL_CLIPPED
};

enum
{
    GPA_CAP_BUTT,
    GPA_CAP_ROUND,
    GPA_CAP_PROJECT,
    GPA_CAP_TRIANGLE
};

enum
{
    GPA_ADJUST_NONE,
    GPA_ADJUST_PS
};

// Which pixels a path touches.
enum
{
    GPA_PLACEMENT_GDI,
    GPA_PLACEMENT_PS,
    GPA_PLACEMENT_PCL,
    GPA_PLACEMENT_GDI_MQP,
    GPA_PLACEMENT_PATH_PCL_IMAGE_GDI,
    GPA_PLACEMENT_PATH_PS_IMAGE_GDI,
    GPA_PLACEMENT_PATH_GDI_IMAGE_PS,
    GPA_PLACEMENT_AREA_INTERSECT,
    GPA_PLACEMENT_CENTER_INTERSECT
};

enum
{
    GPA_PP_ORIENTATION_0_DEG,
    GPA_PP_ORIENTATION_90_DEG,
    GPA_PP_ORIENTATION_180_DEG,
    GPA_PP_ORIENTATION_270_DEG,
    GPA_PP_ORIENTATION_Y_FLIP_0_DEG,
    GPA_PP_ORIENTATION_Y_FLIP_90_DEG,
    GPA_PP_ORIENTATION_Y_FLIP_180_DEG,
    GPA_PP_ORIENTATION_Y_FLIP_270_DEG
};

enum
{
    GPA_WINDING_ODD_EVEN,
    GPA_WINDING_NON_ZERO
};

enum
{
    GPA_EDGE_STRAIGHT,
    GPA_EDGE_BEZIER,
    GPA_EDGE_QUAD_BEZIER,
    GPA_EDGE_STAIRCASE,
    GPA_EDGE_ELLIPTICAL
};

// How an edge ends its subpath: the low seven bits of ed_EdgeFlag.
enum
{
    GPA_SUBPATH_END_CLOSED,
    GPA_SUBPATH_CONTINUE,
    GPA_SUBPATH_END_OPEN
};

// Bit 7 of ed_EdgeFlag.
enum
{
    GPA_SUPPRESS_STROKING_FLAG = 0x80
};

// Flags of pa_PathHints.
enum
{
    GPA_HINT_NONE = 0x0,
    GPA_HINT_IS_RECTANGLE = 0x1,
    GPA_HINT_STROKED = 0x2,
    GPA_HINT_NO_OVERLAP = 0x4,
    GPA_HINT_BOX_IS_MINIMAL = 0x8,
    GPA_HINT_ONE_SUBPATH = 0x10,
    GPA_HINT_ONLY_STRAIGHTS = 0x20,
    GPA_HINT_ONLY_STAIRCASES = 0x40,
    GPA_HINT_INPUT_INT_ONLY = 0x80
};

// Segments hold displacements, each measured from P, the point where the segment starts: the first segment
// of an edge starts at its pa_EdgeStart, each later one where the last one ended. A straight segment v is a
// line from P to P + v.

// A cubic Bezier curve from P to P + bs_EndPoint with the control points P + bs_StartTangent and
// P + bs_EndTangent. All three vectors are displacements from P, the end tangent too.
typedef struct GPA_BezierSegment
{
    GGO_Vector bs_StartTangent;
    GGO_Vector bs_EndTangent;
    GGO_Vector bs_EndPoint;
} GPA_BezierSegment;

// A quadratic Bezier curve from P to P + qs_EndPoint with the control point P + qs_ControlPoint.
typedef struct GPA_QuadBezierSegment
{
    GGO_Vector qs_ControlPoint;
    GGO_Vector qs_EndPoint;
} GPA_QuadBezierSegment;

// A line by ss_XOffset along x, then one by ss_YOffset along y, downwards in value if sc_YPositive is 0.
// Y is stored ahead of X; the log writes X ahead of Y.
typedef struct GPA_StaircaseSegment
{
    uint8_t ss_YOffset;
    int8_t ss_XOffset;
} GPA_StaircaseSegment;

// An arc of at most half an ellipse from P to P + es_EndPoint. The x axis of the ellipse is turned by
// es_AngleToXAxis, in radians from the x axis towards the y axis; the arc runs in that direction if the
// product of the radii is positive, else in the other.
typedef struct GPA_EllipticalSegment
{
    double es_XRadius;
    double es_YRadius;
    double es_AngleToXAxis;
    GGO_Vector es_EndPoint;
} GPA_EllipticalSegment;

// The head of every edge.
typedef struct GPA_Edge
{
    uint8_t ed_EdgeType;       // GPA_EDGE_*
    uint8_t ed_EdgeFlag;       // GPA_SUPPRESS_STROKING_FLAG, and GPA_SUBPATH_* in the low seven bits
    uint16_t ed_SegmentCount;  // entries of the segment array
} GPA_Edge;

// In all five edges the segment array stands eight bytes behind the start.
typedef struct GPA_StraightEdge
{
    GPA_Edge se_Edge;
    uint32_t se_Gap;
    GGO_Vector se_Segment[1];
} GPA_StraightEdge;

typedef struct GPA_BezierEdge
{
    GPA_Edge be_Edge;
    uint32_t be_Gap;
    GPA_BezierSegment be_BezierSegment[1];
} GPA_BezierEdge;

typedef struct GPA_QuadBezierEdge
{
    GPA_Edge qb_Edge;
    uint32_t qb_Gap;
    GPA_QuadBezierSegment qb_QuadBezierSegment[1];
} GPA_QuadBezierEdge;

typedef struct GPA_StaircaseEdge
{
    GPA_Edge sc_Edge;
    uint32_t sc_YPositive;  // boolean
    GPA_StaircaseSegment sc_Field[1];
} GPA_StaircaseEdge;

typedef struct GPA_EllipticalEdge
{
    GPA_Edge ee_Edge;
    uint32_t ee_Gap;
    GPA_EllipticalSegment ee_EllipticalSegment[1];
} GPA_EllipticalEdge;

typedef struct GPA_EdgePointer
{
    const GPA_Edge* ep_Pointer;  // whichever of the five edges
    uint32_t ep_Owned;           // boolean; only printed
} GPA_EdgePointer;

typedef struct GPA_Path
{
    uint32_t pa_NumEdges;
    uint16_t pa_PathHints;  // GPA_HINT_*
    GGO_BoxFloat pa_EnclosingBox;
    GGO_Point pa_EdgeStart[1];  // pa_NumEdges start points, one for each edge
} GPA_Path;

typedef struct GPA_PathPointer
{
    const GPA_Path* lpp_Path;
    uint32_t lpp_PixelPlacement;         // GPA_PLACEMENT_*
    uint32_t lpp_EnablePixelPlacement;   // boolean
    uint32_t lpp_PathOwned;              // boolean; only printed
    GPA_EdgePointer lpp_EdgePointer[1];  // pa_NumEdges entries
} GPA_PathPointer;

// Bit fields of psp_Flags.
#define GPA_PSP_START_CAP(flags) (0xFU & (uint32_t)(flags))
#define GPA_PSP_END_CAP(flags) (((uint32_t)(flags) >> 4) & 0xFU)
#define GPA_PSP_JOIN(flags) (((uint32_t)(flags) >> 8) & 0xFU)
#define GPA_PSP_ADJUST(flags) (((uint32_t)(flags) >> 12) & 0x7U)
#define GPA_PSP_Z(flags) (((uint32_t)(flags) >> 15) & 0x1U)

typedef struct GPA_PathStrokingParams
{
    uint16_t psp_Flags;      // GPA_PSP_*: start cap, end cap, join, adjust, Z
    uint16_t psp_DashCount;  // entries of psp_DashLength
    uint8_t psp_DashCaps;    // GPA_CAP_*
    float psp_StrokeWidth;
    float psp_MiterLimit;
    float psp_DashStart;
    float psp_DashLength[1];  // psp_DashCount entries
} GPA_PathStrokingParams;

#ifdef __cplusplus
}
#endif

#endif
