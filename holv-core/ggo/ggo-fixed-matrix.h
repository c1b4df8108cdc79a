// GGO: affine transforms in fixed point.
//
// A matrix holds m0 to m3 as GGO_Fix16 and the shift, m4 and m5, as GGO_Fix8; points and boxes are GGO_Fix8.
// A point is packed into 64 bits with x in the low half. All arithmetic runs in 64 bits with 32 of them
// fraction (see ggo-fixed.h) and is narrowed once, toward zero, at the end.
//
// Each operation reports GGO_FIX_OVERFLOW and GGO_FIX_UNDERFLOW, joined over all its steps; both may stand at
// once. The result stands in any case, and the caller decides what a flag means. A null out argument is
// passed over. Without a matrix a point or box stays as it is, nothing is written but the flags, and the result
// is 0.

#ifndef HOLV_CORE_GGO_FIXED_MATRIX_H
#define HOLV_CORE_GGO_FIXED_MATRIX_H

#include "holv-core/ggo/ggo-fixed.h"
#include "holv-core/ggo/ggo-geometry.h"

#ifdef __cplusplus
extern "C" {
#endif

typedef struct GGO_MatrixFixed
{
    int32_t m[6];
} GGO_MatrixFixed;

typedef struct GGO_BoxFixed
{
    GGO_Fix8 gbx_MinX;
    GGO_Fix8 gbx_MinY;
    GGO_Fix8 gbx_MaxX;
    GGO_Fix8 gbx_MaxY;
} GGO_BoxFixed;

uint64_t ggo_pack_point_fixed(GGO_Fix8 x, GGO_Fix8 y);

// Exact.
GGO_Matrix ggo_matrix_from_fixed(const GGO_MatrixFixed* matrix);

// ggo_classify_matrix_double of the converted matrix.
uint32_t ggo_classify_matrix_fixed(const GGO_MatrixFixed* matrix);

// As ggo_quarter_turns_double. -2^31 negated stays, with no report.
void ggo_quarter_turns_fixed(GGO_MatrixFixed* matrix, int32_t count);

// The packed point (x*m0 + y*m2 + m4, x*m1 + y*m3 + m5), added from left to right.
uint64_t ggo_transform_point_fixed(const GGO_MatrixFixed* matrix, uint64_t point, uint32_t* flags);

// The product in which `first` acts first; gives the flags.
uint32_t ggo_multiply_fixed(const GGO_MatrixFixed* first, const GGO_MatrixFixed* then, GGO_MatrixFixed* product);

// Multiplies m0, m2 and m4 by `x`, and m1, m3 and m5 by `y`; gives the flags. The linear products are shifted
// right arithmetically by 16, toward the lower value; the shift is cut toward zero.
uint32_t ggo_scale_fixed(GGO_MatrixFixed* matrix, GGO_Fix16 x, GGO_Fix16 y);

// numerator / determinant as a word of 21 bits: a signed mantissa of 17 bits above an exponent field of four,
// which holds s, from 1 down to -14, in two's complement. The value is the mantissa times 2^(s - 16).
// `numerator` is a GGO_Fix16, `determinant` a GGO_Fix32 that loses its lowest 16 bits; if it is zero then, the
// numerator times 2^30 stands as the quotient. A quotient outside -2 to 2 (a little less if `guarded`) sets
// GGO_FIX_OVERFLOW and gives the largest value of its sign, 0xFFFF1 or 0x100001; otherwise the flags are 0.
// A positive mantissa that loses bits is rounded up, a negative one down, as far as it has room.
uint32_t ggo_packed_divide(int32_t numerator, GGO_Fix32 determinant, uint32_t guarded, uint32_t* flags);

// The inverse of the linear part, as four words of ggo_packed_divide: m3, -m1, -m2 and m0 over the
// determinant. Gives the flags, with 1 in `invertible`; for a determinant of zero 0 in it, and no words.
uint32_t ggo_invert_fixed(const GGO_MatrixFixed* matrix, uint32_t guarded, uint32_t inverse[4], uint32_t* invertible);

// Takes a matrix apart by the rules of ggo_decompose_double. The scales, shear, cosine, sine and ratio are
// GGO_Fix16.
typedef struct GGO_PartsFixed
{
    GGO_Fix16 scale_x;
    GGO_Fix16 scale_y;
    GGO_Fix16 shear;
    GGO_Fix16 cosine;
    GGO_Fix16 sine;
    GGO_Fix8 shift_x;
    GGO_Fix8 shift_y;
    GGO_Fix16 ratio;  // m2 over m3, how far x runs for each unit of y; 0x7FFFFFFF if m3 is zero
} GGO_PartsFixed;

// Gives 1 if both scales are nonzero as GGO_Fix32, before they are narrowed, otherwise 0.
uint32_t ggo_decompose_fixed(const GGO_MatrixFixed* matrix, GGO_PartsFixed* parts, uint32_t* flags);

// The bounds of a box under a transform. `corners`, if not null, takes the four corners as packed points:
// minimum, minimum Y with maximum X, maximum, maximum Y with minimum X. An empty box, with a minimum above
// its maximum, is returned as it is, its corners as they stand.
GGO_BoxFixed ggo_transform_box_fixed(const GGO_MatrixFixed* matrix, GGO_BoxFixed box, uint64_t corners[4],
                                     uint32_t* flags);

#ifdef __cplusplus
}
#endif

#endif
