// UTF-8 for file names and URLs.

#ifndef HOLV_CORE_GIO_UTF8_H
#define HOLV_CORE_GIO_UTF8_H

#include <stdint.h>

#ifdef __cplusplus
extern "C" {
#endif

// What may follow a first byte: the well-formed byte sequences of the Unicode Standard. `descriptor` has its high
// bit set if the first byte is valid, the number of continuation bytes in bits 5 and 6, and the bits that the
// first byte adds to the code point in bits 0 to 4.
typedef struct GIO_Utf8Row
{
    uint8_t descriptor;
    uint8_t range[3][2];  // lowest and highest value of each continuation byte
} GIO_Utf8Row;

#define GIO_UTF8_IS_VALID(row) (((row)->descriptor & 0x80) != 0)
#define GIO_UTF8_CONTINUATIONS(row) (((row)->descriptor >> 5) & 0x3)
#define GIO_UTF8_PAYLOAD(row) ((row)->descriptor & 0x1F)

// The row of a first byte from 0xC0 up; null for any other.
const GIO_Utf8Row* gio_utf8_row(uint8_t first);

// Decodes one code point of a terminated text; -1 if no well-formed sequence stands there. `length_out` takes its
// length in bytes.
int32_t gio_utf8_decode(const char* text, uint32_t* length_out);

#ifdef __cplusplus
}
#endif

#endif
