// GXC: what a serialised ticket is made of: its fields in order, its markers and its sizes. Both those who write a
// ticket as text and those who make a ticket of its text go by these tables.

#pragma once

#include "orvlog/colour/gxc/gxc-fields.h"

#include <cstddef>
#include <cstdint>

// The fixed data, and the parts of a definition that are the same wherever they stand.
extern const GXC_FieldList gxc_fixed_fields;
extern const GXC_FieldList gxc_csd_head_fields;
extern const GXC_FieldList gxc_analytical_fields;
extern const GXC_FieldList gxc_black_point_fields;
extern const GXC_FieldList gxc_cie_point_fields;
extern const GXC_FieldList gxc_cie_range_fields;

// The marker behind the last definition.
constexpr uint32_t GXC_TABLE_END = 0xFFFFFFFF;

// Versions of extensions.
enum : uint32_t
{
    GXC_EXTENSIONS_END = 0,
    GXC_USE_ILLUMINANT_INFO = 71,
    GXC_IS_DEVICE_LINK_PROFILE = 74,
    GXC_BY_TYPE = 80  // a black point or a post-render LUT
};

// Families of a definition by CIE values.
enum : uint32_t
{
    GXC_CIE_ABC,
    GXC_CIE_A,
    GXC_CIE_DEF,
    GXC_CIE_DEFG,
    GXC_CIE_CALRGB,
    GXC_CIE_CALGRAY
};

struct GXC_DecodeTable
{
    const char* name;
    uint32_t families;  // one bit for each; all bits: those without a name too
};

enum
{
    GXC_DECODE_TABLE_COUNT = 10
};

// The decode tables in their order.
extern const GXC_DecodeTable gxc_decode_tables[GXC_DECODE_TABLE_COUNT];

bool gxc_family_has_table(const GXC_DecodeTable* table, uint32_t family);

// Entries of each decode table: 2 to the depth, whose lowest five bits count, less 1.
uint32_t gxc_decode_entries(uint32_t bit_depth);

// Bytes of the HIJK table; 0 for families that have none. `dimensions` are four.
uint64_t gxc_hijk_size(uint32_t family, const uint8_t* dimensions);

// Bytes of the table of a post-render LUT: size^dimensions, modulo 2^32, times the depth divided by 8, times the
// number of channels, all modulo 2^32.
uint32_t gxc_lut_size(uint8_t dimensions, uint8_t size, uint8_t bit_depth, uint8_t num_base_chans);

// What stands behind the fields of a section.
enum GXC_Tail : uint8_t
{
    GXC_NO_TAIL,
    GXC_RGB_SPOT_COLORS,   // a count and entries of a key and a target
    GXC_CMYK_SPOT_COLORS,  // the same
    GXC_PROFILE_NAMES      // a count, so many booleans, so many strings
};

enum : uint64_t
{
    GXC_RGB_KEY_SIZE = 3,
    GXC_CMYK_KEY_SIZE = 4,
    GXC_TARGET_SIZE = 4
};

struct GXC_Section
{
    const char* element;
    GXC_FieldList fields;
    GXC_Tail tail;
};

enum : uint32_t
{
    GXC_END_VARIABLE_DATA = 0,
    GXC_LAST_MARKER = 34
};

// By marker; 0 is empty.
extern const GXC_Section gxc_sections[GXC_LAST_MARKER + 1];
