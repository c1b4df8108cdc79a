/// \file
/// GGO: points, vectors, boxes and affine transforms in double precision, as records that calls carry.
///
/// A matrix maps a point (x, y) to (x*m0 + y*m2 + m4, x*m1 + y*m3 + m5): row vectors, the first matrix
/// of a product acts first.

#ifndef HOLV_CORE_GGO_RECORDS_H
#define HOLV_CORE_GGO_RECORDS_H

#include <stdint.h>

#ifdef __cplusplus
extern "C" {
#endif

/// A point. Units are told where it is used.
typedef struct GGO_Point
{
    double gpf_X;  ///< x
    double gpf_Y;  ///< y
} GGO_Point;

/// A displacement. Units are told where it is used.
typedef struct GGO_Vector
{
    double gvf_X;  ///< along x
    double gvf_Y;  ///< along y
} GGO_Vector;

/// A box of whole units; the maximum is outside.
typedef struct GGO_BoxInt
{
    int32_t gbi_MinX;  ///< left
    int32_t gbi_MinY;  ///< top, in a space whose rows run downwards
    int32_t gbi_MaxX;  ///< right, outside of the box
    int32_t gbi_MaxY;  ///< bottom, outside of the box
} GGO_BoxInt;

/// Empty when a minimum exceeds its maximum; the empty box is (1, 1, -1, -1).
typedef struct GGO_BoxFloat
{
    double gbf_MinX;  ///< smallest x
    double gbf_MinY;  ///< smallest y
    double gbf_MaxX;  ///< largest x
    double gbf_MaxY;  ///< largest y
} GGO_BoxFloat;

/// An affine transform of row vectors.
typedef struct GGO_Matrix
{
    double m[6];  ///< (x, y) goes to (x*m0 + y*m2 + m4, x*m1 + y*m3 + m5)
} GGO_Matrix;

/// What a transform is made of. Bits 5 to 7 are one field of three bits, not three flags: bit 5 says
/// that there is a rotation, 0x40, 0x80 and 0xC0 have no name.
enum
{
    GGO_XFLAG_NONE = 0x0,        ///< nothing is known
    GGO_XFLAG_IDENTITY = 0x1,    ///< changes nothing
    GGO_XFLAG_XLATE = 0x2,       ///< moves
    GGO_XFLAG_SCALE = 0x4,       ///< scales
    GGO_XFLAG_FLIP_HORZ = 0x8,   ///< mirrors left and right
    GGO_XFLAG_FLIP_VERT = 0x10,  ///< mirrors top and bottom
    GGO_XFLAG_ROTATE = 0x20,     ///< rotates, by any angle
    GGO_XFLAG_ROT_90 = 0x60,     ///< rotates by 90 degrees
    GGO_XFLAG_ROT_180 = 0xA0,    ///< rotates by 180 degrees
    GGO_XFLAG_ROT_270 = 0xE0,    ///< rotates by 270 degrees
    GGO_XFLAG_GENERAL = 0x100    ///< none of the others describes it
};

#ifdef __cplusplus
}
#endif

#endif
