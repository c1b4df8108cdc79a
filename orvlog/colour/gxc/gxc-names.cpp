#include "orvlog/colour/gxc/gxc-names.h"

#include <cstring>

namespace
{

// The five families that colour space definitions have, too, by the one list of their names: for each the places of the
// names, and the rows. The kinds 1, 7 and 8 of definitions have no row, and readers of the log rely on the "(null)"
// that they print.
// clang-format off
#define ORVLOG_ENUMERATION(list) namespace list { enum Place : uint32_t {
#define ORVLOG_NAME(name) name,
#define ORVLOG_NAME_NOT_IN_TICKETS(name) name,
#define ORVLOG_END_ENUMERATION }; }
#include "orvlog/names/colour-enumerations.inc"
#undef ORVLOG_ENUMERATION
#undef ORVLOG_NAME
#undef ORVLOG_NAME_NOT_IN_TICKETS
#undef ORVLOG_END_ENUMERATION

#define ORVLOG_ENUMERATION(list) namespace list { constexpr GXC_EnumRow kRows[] = {
#define ORVLOG_NAME(name) {#name, name},
#define ORVLOG_NAME_NOT_IN_TICKETS(name)
#define ORVLOG_END_ENUMERATION }; }
#include "orvlog/names/colour-enumerations.inc"
#undef ORVLOG_ENUMERATION
#undef ORVLOG_NAME
#undef ORVLOG_NAME_NOT_IN_TICKETS
#undef ORVLOG_END_ENUMERATION
// clang-format on

constexpr GXC_EnumRow kQualityHint[] = {
    {"GCM_QUAL_LOWEST", 0}, {"GCM_QUAL_LOW", 1}, {"GCM_QUAL_MEDIUM", 2}, {"GCM_QUAL_HIGH", 3}, {"GCM_QUAL_HIGHEST", 4},
};

constexpr GXC_EnumRow kPerformanceHint[] = {
    {"GCM_PERF_LOWEST", 0}, {"GCM_PERF_LOW", 1}, {"GCM_PERF_MEDIUM", 2}, {"GCM_PERF_HIGH", 3}, {"GCM_PERF_HIGHEST", 4},
};

constexpr GXC_EnumRow kLampGroup[] = {
    {"GCM_LAMP_GROUP_NORMAL", 0},
    {"GCM_LAMP_GROUP_BROAD_BAND", 1},
    {"GCM_LAMP_GROUP_THREE_BAND", 2},
};

// Seven rows stand twice: the order of the table is the format's own.
constexpr GXC_EnumRow kSerMarker[] = {
    {"GCM_SER_MARKER_END_VARIABLE_DATA", 0},
    {"GCM_SER_MARKER_RENDER_SPACE", 1},
    {"GCM_SER_MARKER_RGB_INPUT", 2},
    {"GCM_SER_MARKER_CMYK_INPUT", 3},
    {"GCM_SER_MARKER_GRAY_INPUT", 4},
    {"GCM_SER_MARKER_NAMED_INPUT", 5},
    {"GCM_SER_MARKER_OUTPUT_SPACE", 6},
    {"GCM_SER_MARKER_POST_RENDER_SIM", 7},
    {"GCM_SER_MARKER_PRE_RENDER_OVERRIDE_SIM", 8},
    {"GCM_SER_MARKER_RGB_SPOT_COLOR", 9},
    {"GCM_SER_MARKER_CMYK_SPOT_COLOR", 10},
    {"GCM_SER_MARKER_GRAY_DETECT", 11},
    {"GCM_SER_MARKER_RGB_PRE_SIM", 12},
    {"GCM_SER_MARKER_CMYK_PRE_SIM", 13},
    {"GCM_SER_MARKER_GRAY_PRE_SIM", 14},
    {"GCM_SER_MARKER_NAMED_PRE_SIM", 15},
    {"GCM_SER_MARKER_NAMED_PROFILES", 16},
    {"GCM_SER_MARKER_ILLUM_WHITE_PT", 17},
    {"GCM_SER_MARKER_ILLUM_TEMP", 18},
    {"GCM_SER_MARKER_GRAY_PRESERVE_PRE_OVERRIDE", 19},
    {"GCM_SER_MARKER_GRAY_PRESERVE_RENDER_CSD", 20},
    {"GCM_SER_MARKER_PURE_BLACK_PRESERVE", 21},
    {"GCM_SER_MARKER_PURE_BLACK_PROCESS", 22},
    {"GCM_SER_MARKER_PURE_BLACK_PROCESS", 22},
    {"GCM_SER_MARKER_INPUT_IN_DEVICE_RGB", 23},
    {"GCM_SER_MARKER_NAMED_COLOR_LOOKUP_DISABLE", 24},
    {"GCM_SER_MARKER_RGB_TO_MONO_PARAMS", 25},
    {"GCM_SER_MARKER_IGNORE_COLORIMETRIC_DATA", 26},
    {"GCM_SER_MARKER_RECOMBINE_SEPARATIONS", 27},
    {"GCM_SER_MARKER_RGB_SPOT_COLOR", 9},
    {"GCM_SER_MARKER_CMYK_SPOT_COLOR", 10},
    {"GCM_SER_MARKER_RGB_PRE_SIM", 12},
    {"GCM_SER_MARKER_CMYK_PRE_SIM", 13},
    {"GCM_SER_MARKER_GRAY_PRE_SIM", 14},
    {"GCM_SER_MARKER_NAMED_PRE_SIM", 15},
    {"GCM_SER_MARKER_RGB_VIRTUAL_PROFILE_PLUGINS", 28},
    {"GCM_SER_MARKER_RGB_PRINTER_PROFILE_PLUGINS", 29},
    {"GCM_SER_MARKER_INPUT_DEVICE_PROFILE_PLUGINS", 30},
    {"GCM_SER_MARKER_CMYK_PRINTER_PROFILE_PLUGINS", 31},
    {"GCM_SER_MARKER_SET_PRE_RGB_GAMMA_ADJUSTMENT", 32},
    {"GCM_SER_MARKER_SET_STD_OVERRIDE_RENDER_INTENTS", 33},
    {"GCM_SER_MARKER_RGB_TO_MONO_CSD", 34},
};

constexpr GXC_EnumRow kColorSpaceFamily[] = {
    {"GrayRenderColorSpace", 0},
    {"RGBRenderColorSpace", 1},
    {"CMYKRenderColorSpace", 2},
    {"NamedRenderColorSpace", 3},
};

template <uint32_t Count> constexpr GXC_EnumFamily family(const char* name, const GXC_EnumRow (&rows)[Count])
{
    return {name, rows, Count};
}

}  // namespace

const GXC_EnumFamily gxc_enum_families[GXC_FAMILY_COUNT] = {
    family("GCM_QualityHint", kQualityHint),
    family("GCM_PerformanceHint", kPerformanceHint),
    family("GCM_CsdType", CSD_TYPE::kRows),
    family("GCM_RenderIntent", RENDER_INTENT::kRows),
    family("GCM_AnalyticalColorSpaceType", ANALYTICAL_SPACE::kRows),
    family("GNC_Format", PIXEL_FORMAT::kRows),
    family("GCM_CieFamily", CIE_FAMILY::kRows),
    family("GCM_IlluminantLampGroup", kLampGroup),
    family("GCM_SerMarker", kSerMarker),
    family("GCM_ColorSpaceFamily", kColorSpaceFamily),
};

const char* gxc_name_of_value(const char* family_name, uint32_t value)
{
    for (const GXC_EnumFamily& family : gxc_enum_families)
    {
        if (std::strcmp(family.name, family_name) != 0)
            continue;
        for (uint32_t i = 0; i < family.count; ++i)
            if (family.rows[i].value == value)
                return family.rows[i].name;
    }
    return nullptr;
}

uint32_t gxc_value_of_name(const char* family_name, const char* value_name, uint32_t* out_value)
{
    for (const GXC_EnumFamily& family : gxc_enum_families)
    {
        if (std::strcmp(family.name, family_name) != 0)
            continue;
        for (uint32_t i = 0; i < family.count; ++i)
        {
            if (std::strcmp(family.rows[i].name, value_name) != 0)
                continue;
            *out_value = family.rows[i].value;
            return 1;
        }
    }
    return 0;
}
