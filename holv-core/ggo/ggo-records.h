// GGO: points, vectors, boxes and affine transforms in double precision, as records that calls carry.
//
// A matrix maps a point (x, y) to (x*m0 + y*m2 + m4, x*m1 + y*m3 + m5): row vectors, the first matrix
// of a product acts first.

#ifndef HOLV_CORE_GGO_RECORDS_H
#define HOLV_CORE_GGO_RECORDS_H

#include <stdint.h>

#ifdef __cplusplus
extern "C" {
#endif

typedef struct GGO_Point
{
    double gpf_X;
    double gpf_Y;
} GGO_Point;

typedef struct GGO_Vector
{
    double gvf_X;
    double gvf_Y;
} GGO_Vector;

typedef struct GGO_BoxInt
{
    int32_t gbi_MinX;
    int32_t gbi_MinY;
    int32_t gbi_MaxX;
    int32_t gbi_MaxY;
} GGO_BoxInt;

// Empty when a minimum exceeds its maximum; the empty box is (1, 1, -1, -1).
typedef struct GGO_BoxFloat
{
    double gbf_MinX;
    double gbf_MinY;
    double gbf_MaxX;
    double gbf_MaxY;
} GGO_BoxFloat;

typedef struct GGO_Matrix
{
    double m[6];
} GGO_Matrix;

// What a transform is made of. Bits 5 to 7 are one field of three bits, not three flags: bit 5 says
// that there is a rotation, 0x40, 0x80 and 0xC0 have no name.
enum
{
    GGO_XFLAG_NONE = 0x0,
    GGO_XFLAG_IDENTITY = 0x1,
    GGO_XFLAG_XLATE = 0x2,
    GGO_XFLAG_SCALE = 0x4,
    GGO_XFLAG_FLIP_HORZ = 0x8,
    GGO_XFLAG_FLIP_VERT = 0x10,
    GGO_XFLAG_ROTATE = 0x20,
    GGO_XFLAG_ROT_90 = 0x60,
    GGO_XFLAG_ROT_180 = 0xA0,
    GGO_XFLAG_ROT_270 = 0xE0,
    GGO_XFLAG_GENERAL = 0x100
};

#ifdef __cplusplus
}
#endif

#endif
