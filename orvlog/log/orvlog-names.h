// Names of enumerators and flags that more than one room writes. Tables are data: next to nothing else, and
// held against the enumerations of the interface.

#pragma once

#include "orvlog/interface/gpa-path.h"
#include "orvlog/log/orvlog-attributes.h"

#include <cstddef>
#include <cstdint>

// One row of a flag table.
#define ORVLOG_FLAG(name)                                                                                              \
    {                                                                                                                  \
#name, name                                                                                                    \
    }

template <size_t Count> constexpr ORVLOG_EnumTable orvlog_enum_table(const char* const (&names)[Count])
{
    return {names, static_cast<uint32_t>(Count - 1)};
}

template <size_t Count> constexpr ORVLOG_FlagTable orvlog_flag_table(const ORVLOG_FlagEntry (&entries)[Count])
{
    return {entries, static_cast<uint32_t>(Count)};
}

inline constexpr const char* ORVLOG_PLACEMENT_NAMES[] = {
    "GPA_PLACEMENT_GDI",
    "GPA_PLACEMENT_PS",
    "GPA_PLACEMENT_PCL",
    "GPA_PLACEMENT_GDI_MQP",
    "GPA_PLACEMENT_PATH_PCL_IMAGE_GDI",
    "GPA_PLACEMENT_PATH_PS_IMAGE_GDI",
    "GPA_PLACEMENT_PATH_GDI_IMAGE_PS",
    "GPA_PLACEMENT_AREA_INTERSECT",
    "GPA_PLACEMENT_CENTER_INTERSECT",
};
inline constexpr ORVLOG_EnumTable ORVLOG_PLACEMENT = orvlog_enum_table(ORVLOG_PLACEMENT_NAMES);
static_assert(ORVLOG_PLACEMENT.max_value == GPA_PLACEMENT_CENTER_INTERSECT);

inline constexpr const char* ORVLOG_ORIENTATION_NAMES[] = {
    "GPA_PP_ORIENTATION_0_DEG",          "GPA_PP_ORIENTATION_90_DEG",         "GPA_PP_ORIENTATION_180_DEG",
    "GPA_PP_ORIENTATION_270_DEG",        "GPA_PP_ORIENTATION_Y_FLIP_0_DEG",   "GPA_PP_ORIENTATION_Y_FLIP_90_DEG",
    "GPA_PP_ORIENTATION_Y_FLIP_180_DEG", "GPA_PP_ORIENTATION_Y_FLIP_270_DEG",
};
inline constexpr ORVLOG_EnumTable ORVLOG_ORIENTATION = orvlog_enum_table(ORVLOG_ORIENTATION_NAMES);
static_assert(ORVLOG_ORIENTATION.max_value == GPA_PP_ORIENTATION_Y_FLIP_270_DEG);

inline constexpr const char* ORVLOG_WINDING_NAMES[] = {
    "GPA_WINDING_ODD_EVEN",
    "GPA_WINDING_NON_ZERO",
};
inline constexpr ORVLOG_EnumTable ORVLOG_WINDING = orvlog_enum_table(ORVLOG_WINDING_NAMES);
static_assert(ORVLOG_WINDING.max_value == GPA_WINDING_NON_ZERO);
