// GGO: scalar arithmetic in three fixed-point formats.
//
//   GGO_Fix32   64 bits, 32 of them fraction   one is 1 << 32
//   GGO_Fix16   32 bits, 16 of them fraction   one is 65536
//   GGO_Fix8    32 bits,  8 of them fraction   one is 256
//
// An operation that can lose information stores how in a status word, on every call; a null status word
// is passed over. The result stands whatever the status says, in wrapped two's complement. The most
// negative value of a format counts as outside it, since its magnitude is: it is reported, not refused.
// An operation has one status: where a result is out of range and its kept bits are 0, that is overflow.

#ifndef HOLV_CORE_GGO_FIXED_H
#define HOLV_CORE_GGO_FIXED_H

#include <stdint.h>

#ifdef __cplusplus
extern "C" {
#endif

typedef int64_t GGO_Fix32;
typedef int32_t GGO_Fix16;
typedef int32_t GGO_Fix8;

enum
{
    GGO_FIX_OK = 0,
    GGO_FIX_OVERFLOW = 1,        // outside the format: the value is not to be trusted
    GGO_FIX_UNDERFLOW = 2,       // a nonzero value became zero
    GGO_FIX_DIVIDE_BY_ZERO = 4,  // the result is 0
    GGO_FIX_NEGATIVE_ROOT = 8    // the result is 0
};

// The two words joined: the integer word high, the fraction word low.
GGO_Fix32 ggo_fix32_make(uint32_t integer, uint32_t fraction);
GGO_Fix32 ggo_fix32_join(uint32_t low, uint32_t high);

// Widening is exact: the status is always 0.
GGO_Fix32 ggo_fix32_from_fix16(uint32_t* status, GGO_Fix16 value);
GGO_Fix32 ggo_fix32_from_fix8(uint32_t* status, GGO_Fix8 value);

// Narrowing cuts the magnitude, so it goes toward zero. Overflow for a value beyond 0x7FFFFFFFFFFF of
// either sign (0x7FFFFFFFFFFFFF for GGO_Fix8), underflow for a nonzero value whose result is 0.
GGO_Fix16 ggo_fix32_to_fix16(uint32_t* status, GGO_Fix32 value);
GGO_Fix8 ggo_fix32_to_fix8(uint32_t* status, GGO_Fix32 value);

// Sum and difference wrap. Overflow if the result is the most negative value, or has the wrong sign
// for its operands. Two negative values may wrap to 0: overflow, too.
GGO_Fix32 ggo_fix32_add(uint32_t* status, GGO_Fix32 a, GGO_Fix32 b);
GGO_Fix32 ggo_fix32_sub(uint32_t* status, GGO_Fix32 a, GGO_Fix32 b);

// The product of the magnitudes with its lowest 32 bits dropped, then the sign. Overflow if the product
// of the two integer words has a bit from bit 31 up, or if the result is the most negative value. What
// the cross products carry beyond that goes unreported: the result may have the wrong sign with status 0.
GGO_Fix32 ggo_fix32_mul(uint32_t* status, GGO_Fix32 a, GGO_Fix32 b);

// The quotient of the magnitudes, truncated to 32 fraction bits, then the sign; the low 64 bits of 96.
GGO_Fix32 ggo_fix32_div(uint32_t* status, GGO_Fix32 a, GGO_Fix32 b);

// The root, truncated to 32 fraction bits.
GGO_Fix32 ggo_fix32_sqrt(uint32_t* status, GGO_Fix32 value);

int32_t ggo_fix32_sign(GGO_Fix32 value);       // -1, 0 or 1
int32_t ggo_fix32_floor(GGO_Fix32 value);      // the largest integer not above the value
uint32_t ggo_fix32_fraction(GGO_Fix32 value);  // what the value has above its floor, in 2^-32

// Overflow for an integer outside -2^23 to 2^23 - 1.
GGO_Fix8 ggo_fix8_from_int(uint32_t* status, int32_t integer);

// The product, shifted right arithmetically by 16: toward the lower value. Overflow beyond 0x7FFFFFFF of
// either sign; underflow if the result is 0 and neither operand was.
GGO_Fix16 ggo_fix16_mul(uint32_t* status, GGO_Fix16 a, GGO_Fix16 b);

// The quotient, truncated toward zero. Overflow and underflow as for the product.
GGO_Fix16 ggo_fix16_div(uint32_t* status, GGO_Fix16 a, GGO_Fix16 b);

// The product with all its bits: the status is always 0, since nothing can be lost.
GGO_Fix32 ggo_fix16_mul_wide(uint32_t* status, GGO_Fix16 a, GGO_Fix16 b);

int32_t ggo_fix16_compare(GGO_Fix16 a, GGO_Fix16 b);  // -1, 0 or 1
GGO_Fix16 ggo_fix16_negate(GGO_Fix16 value);          // wraps: -2^31 stays
int32_t ggo_fix16_sign(GGO_Fix16 value);              // -1, 0 or 1
int32_t ggo_fix16_floor(GGO_Fix16 value);             // the largest integer not above the value
uint32_t ggo_fix16_fraction(GGO_Fix16 value);         // the low 16 bits
GGO_Fix16 ggo_fix16_max(void);                        // 0x7FFFFFFF
double ggo_fix16_to_double(GGO_Fix16 value);
double ggo_fix8_to_double(GGO_Fix8 value);

// The value with its sign bit cleared, a NaN's too.
double ggo_abs_double(double value);
float ggo_abs_float(float value);

// d times a, less c times b. The single form rounds each step to single precision.
double ggo_det_double(double a, double b, double c, double d);
float ggo_det_float(float a, float b, float c, float d);

// The same determinant of GGO_Fix16 values. The status joins what the two products and the difference
// report, and so may hold overflow and underflow at once. Note that it comes last.
GGO_Fix32 ggo_det_fix16(GGO_Fix16 a, GGO_Fix16 b, GGO_Fix16 c, GGO_Fix16 d, uint32_t* status);

// 1 if the determinant's magnitude is greater than ((y / x) / 10) squared, otherwise 0. The single form
// rounds each step to single precision.
uint32_t ggo_regular_double(double a, double b, double c, double d, double x, double y);
uint32_t ggo_regular_float(float a, float b, float c, float d, float x, float y);

#ifdef __cplusplus
}
#endif

#endif
