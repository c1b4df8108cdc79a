// GGO: what is calculated with the points, vectors, boxes and matrices of ggo-records.h. These functions are
// the library's own: it doesn't export them, so clients are given the records alone.
//
// Without a matrix a point or vector stays as it is, and all else is 0.

#ifndef HOLV_CORE_GGO_GEOMETRY_H
#define HOLV_CORE_GGO_GEOMETRY_H

#include "holv-core/ggo/ggo-records.h"

#include <stdint.h>

#ifdef __cplusplus
extern "C" {
#endif

// m0*m3 - m2*m1.
double ggo_determinant(const GGO_Matrix* matrix);

// The inverse, with 1 in `invertible`. For a determinant of exactly zero, of either sign, a copy of the
// matrix, with 0 in `invertible`.
GGO_Matrix ggo_inverse(const GGO_Matrix* matrix, uint32_t* invertible);

GGO_Point ggo_transform_point(const GGO_Matrix* matrix, GGO_Point point);

// Maps by the linear part alone.
GGO_Vector ggo_transform_vector(const GGO_Matrix* matrix, GGO_Vector vector);

void ggo_make_empty_box(GGO_BoxFloat* box);

GGO_Matrix ggo_identity(void);

// The product in which `first` acts first.
GGO_Matrix ggo_multiply(const GGO_Matrix* first, const GGO_Matrix* then);

// GGO_XFLAG_* of a matrix, by tolerance: 0.001 for the linear part and 0.01 for the shift, both taken
// as 32-bit floats and widened. A vertical mirror comes out as a half turn with GGO_XFLAG_FLIP_HORZ.
uint32_t ggo_classify_matrix(const GGO_Matrix* matrix);

#ifdef __cplusplus
}
#endif

#endif
