// GXC: the ten families of names that a serialised colour ticket uses.

#pragma once

#include <cstdint>

struct GXC_EnumRow
{
    const char* name;
    uint32_t value;
};

struct GXC_EnumFamily
{
    const char* name;
    const GXC_EnumRow* rows;
    uint32_t count;
};

enum
{
    GXC_FAMILY_COUNT = 10
};

// The families in the order in which a lookup walks them. Values may stand in several rows: the first counts.
extern const GXC_EnumFamily gxc_enum_families[GXC_FAMILY_COUNT];

// The name of `value` in the family called `family_name`; null when the family or the value is not known.
const char* gxc_name_of_value(const char* family_name, uint32_t value);

// Stores the value called `value_name` of the family called `family_name` and gives 1, or gives 0.
uint32_t gxc_value_of_name(const char* family_name, const char* value_name, uint32_t* out_value);
