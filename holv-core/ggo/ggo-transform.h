// GGO: what a transform is made of, quarter turns, and boxes under a transform, in double and in single
// precision. The single forms compute in single precision throughout.
//
// A null out argument is passed over. Without a matrix a box stays as it is, nothing is taken apart or written, and
// the result is 0.

#ifndef HOLV_CORE_GGO_TRANSFORM_H
#define HOLV_CORE_GGO_TRANSFORM_H

#include "holv-core/ggo/ggo-geometry.h"

#ifdef __cplusplus
extern "C" {
#endif

typedef struct GGO_MatrixSingle
{
    float m[6];
} GGO_MatrixSingle;

typedef struct GGO_BoxSingle
{
    float gbs_MinX;
    float gbs_MinY;
    float gbs_MaxX;
    float gbs_MaxY;
} GGO_BoxSingle;

// As ggo_classify_matrix, with the bounds 0.001, 0.999, 1.001 and 0.01 as literals of the number form.
uint32_t ggo_classify_matrix_double(const GGO_Matrix* matrix);
uint32_t ggo_classify_matrix_single(const GGO_MatrixSingle* matrix);

// Turns the three pairs of values, the shift's too, by `count` quarter turns; a negative count turns the
// other way. One turn maps (x, y) to (-y, x).
void ggo_quarter_turns_double(GGO_Matrix* matrix, int32_t count);
void ggo_quarter_turns_single(GGO_MatrixSingle* matrix, int32_t count);

// Takes a matrix apart. With scale X the hypotenuse of m0 and m1: scale Y is the determinant over it, cosine
// and sine are m0 and m1 over it, and shear is (m3*m1 + m2*m0) over its square; the result is 1 if scale Y
// is not zero. If scale X is zero: shear is 0, scale Y is the hypotenuse of m2 and m3, sine and cosine are
// -m2 and m3 over it, or 0 and 1 if that is zero, too; the result is 0. The hypotenuse neither overflows nor
// underflows on its way.
uint32_t ggo_decompose_double(const GGO_Matrix* matrix, double* scale_x, double* scale_y, double* shear, double* cosine,
                              double* sine, double* shift_x, double* shift_y);
uint32_t ggo_decompose_single(const GGO_MatrixSingle* matrix, float* scale_x, float* scale_y, float* shear,
                              float* cosine, float* sine, float* shift_x, float* shift_y);

// As above, but a scale counts as zero when its magnitude is below t = (q / p) / 10. The result is 0 when
// both do, whether the determinant's magnitude exceeds t*t when one does, and 1 when neither does. With a t
// of 0 or less nothing counts as zero, and a matrix without a scale gives infinities and NaNs.
uint32_t ggo_decompose_within_double(const GGO_Matrix* matrix, double p, double q, double* scale_x, double* scale_y,
                                     double* shear, double* cosine, double* sine, double* shift_x, double* shift_y);
uint32_t ggo_decompose_within_single(const GGO_MatrixSingle* matrix, float p, float q, float* scale_x, float* scale_y,
                                     float* shear, float* cosine, float* sine, float* shift_x, float* shift_y);

// As ggo_decompose_*, and says in `faulted` whether the arithmetic met underflow, overflow, a division by
// zero, an invalid operation or a denormal number, as operand or as result, exact or not. After a fault the
// result is 0 and no other out argument is written. The control word of the floating-point unit is as it was
// before and its pending faults are cleared, whichever way it went. No signal is raised: the faults are
// masked while the arithmetic runs and looked at behind it.
uint32_t ggo_decompose_trapping_double(const GGO_Matrix* matrix, double* scale_x, double* scale_y, double* shear,
                                       double* cosine, double* sine, double* shift_x, double* shift_y,
                                       uint32_t* faulted);
uint32_t ggo_decompose_trapping_single(const GGO_MatrixSingle* matrix, float* scale_x, float* scale_y, float* shear,
                                       float* cosine, float* sine, float* shift_x, float* shift_y, uint32_t* faulted);

// The number 12 units in the last place above or below: its bits, taken as sign and magnitude, step by 12,
// through zero if need be. A step that ends on zero keeps the sign. A NaN stays, and a step beyond an
// infinity stays there.
double ggo_step_up_double(double value);
double ggo_step_down_double(double value);
float ggo_step_up_single(float value);
float ggo_step_down_single(float value);

// The bounds of a box under a transform, moved out by a tenth of `tolerance`, or by 12 units in the last
// place. An empty box is returned as it is.
GGO_BoxFloat ggo_transform_box_within_double(const GGO_Matrix* matrix, GGO_BoxFloat box, double tolerance);
GGO_BoxSingle ggo_transform_box_within_single(const GGO_MatrixSingle* matrix, GGO_BoxSingle box, float tolerance);
GGO_BoxFloat ggo_transform_box_stepped_double(const GGO_Matrix* matrix, GGO_BoxFloat box);
GGO_BoxSingle ggo_transform_box_stepped_single(const GGO_MatrixSingle* matrix, GGO_BoxSingle box);

#ifdef __cplusplus
}
#endif

#endif
