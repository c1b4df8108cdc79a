#include "orvlog/colour/gxc/gxc-layout.h"

namespace
{

constexpr GXC_Field kFixedFields[] = {
    {GXC_OPEN, "FixedSizeData", nullptr},
    {GXC_BOOL, "PreRenderOverrideGrayPreserve", nullptr},
    {GXC_BOOL, "PostRenderGrayPreserve", nullptr},
    {GXC_BOOL, "PureBlackTextPreserve", nullptr},
    {GXC_BOOL, "PostConvInRenderer", nullptr},
    {GXC_BOOL, "UseOutputGbd", nullptr},
    {GXC_BOOL, "UseOverride", nullptr},
    {GXC_BOOL, "PreConvInPdl", nullptr},
    {GXC_BOOL, "PreConvImageOverrideInPdl", nullptr},
    {GXC_ENUM, "XformQuality", "GCM_QualityHint"},
    {GXC_ENUM, "XformPerformance", "GCM_PerformanceHint"},
    {GXC_CLOSE, nullptr, nullptr},
};

constexpr GXC_Field kHeadFields[] = {
    {GXC_ENUM, "Type", "GCM_CsdType"},       {GXC_UINT8, "NumBaseChans", nullptr},
    {GXC_UINT8, "NumNamedChans", nullptr},   {GXC_BOOL, "HasSecondaryProfile", nullptr},
    {GXC_BOOL, "HasAlternateDefn", nullptr}, {GXC_ENUM, "DefaultRenderIntent", "GCM_RenderIntent"},
};

constexpr GXC_Field kAnalyticalFields[] = {
    {GXC_OPEN, "Defn", nullptr},
    {GXC_OPEN, "Analytical", nullptr},
    {GXC_ENUM, "ColorSpace", "GCM_AnalyticalColorSpaceType"},
    {GXC_OPEN, "WhitePoint", nullptr},
    {GXC_FLOAT, "WhitePoint_X", nullptr},
    {GXC_FLOAT, "WhitePoint_Y", nullptr},
    {GXC_FLOAT, "WhitePoint_Z", nullptr},
    {GXC_CLOSE, nullptr, nullptr},
    {GXC_CLOSE, nullptr, nullptr},
    {GXC_CLOSE, nullptr, nullptr},
};

constexpr GXC_Field kBlackPointFields[] = {
    {GXC_OPEN, "BlackPoint", nullptr},    {GXC_FLOAT, "BlackPoint_X", nullptr}, {GXC_FLOAT, "BlackPoint_Y", nullptr},
    {GXC_FLOAT, "BlackPoint_Z", nullptr}, {GXC_CLOSE, nullptr, nullptr},
};

constexpr GXC_Field kPoints[] = {
    {GXC_OPEN, "WhitePoint", nullptr},    {GXC_FLOAT, "WhitePoint_X", nullptr}, {GXC_FLOAT, "WhitePoint_Y", nullptr},
    {GXC_FLOAT, "WhitePoint_Z", nullptr}, {GXC_CLOSE, nullptr, nullptr},        {GXC_OPEN, "BlackPoint", nullptr},
    {GXC_FLOAT, "BlackPoint_X", nullptr}, {GXC_FLOAT, "BlackPoint_Y", nullptr}, {GXC_FLOAT, "BlackPoint_Z", nullptr},
    {GXC_CLOSE, nullptr, nullptr},
};

constexpr GXC_Field kRanges[] = {
    {GXC_OPEN, "HIJKRange", nullptr}, {GXC_FLOAT, "H_Lower", nullptr}, {GXC_FLOAT, "H_Upper", nullptr},
    {GXC_FLOAT, "I_Lower", nullptr},  {GXC_FLOAT, "I_Upper", nullptr}, {GXC_FLOAT, "J_Lower", nullptr},
    {GXC_FLOAT, "J_Upper", nullptr},  {GXC_FLOAT, "K_Lower", nullptr}, {GXC_FLOAT, "K_Upper", nullptr},
    {GXC_CLOSE, nullptr, nullptr},
};

template <size_t Count> constexpr GXC_FieldList list_of(const GXC_Field (&fields)[Count])
{
    return {fields, Count};
}

constexpr uint32_t bit(uint32_t family)
{
    return 1U << family;
}

constexpr uint32_t kEveryFamily = UINT32_MAX;

// base^exponent as a double gives it, through 64 bits into 32; what passes 63 bits gives 0.
uint32_t power(uint8_t base, uint8_t exponent)
{
    constexpr uint64_t kLimit = uint64_t{1} << 63;
    uint64_t product = 1;
    for (uint8_t i = 0; i < exponent; ++i)
    {
        if (base != 0 && product > (kLimit - 1) / base)
            return 0;
        product *= base;
    }
    return static_cast<uint32_t>(static_cast<uint64_t>(static_cast<double>(product)));
}

}  // namespace

const GXC_FieldList gxc_fixed_fields = list_of(kFixedFields);
const GXC_FieldList gxc_csd_head_fields = list_of(kHeadFields);
const GXC_FieldList gxc_analytical_fields = list_of(kAnalyticalFields);
const GXC_FieldList gxc_black_point_fields = list_of(kBlackPointFields);
const GXC_FieldList gxc_cie_point_fields = list_of(kPoints);
const GXC_FieldList gxc_cie_range_fields = list_of(kRanges);

// Table G goes with the family that has three dimensions: readers of the log rely on it.
const GXC_DecodeTable gxc_decode_tables[GXC_DECODE_TABLE_COUNT] = {
    {"DecodeABC_A", kEveryFamily},
    {"DecodeABC_B", bit(GXC_CIE_ABC) | bit(GXC_CIE_DEF) | bit(GXC_CIE_DEFG) | bit(GXC_CIE_CALRGB)},
    {"DecodeABC_C", bit(GXC_CIE_ABC) | bit(GXC_CIE_DEF) | bit(GXC_CIE_DEFG) | bit(GXC_CIE_CALRGB)},
    {"DecodeLMN_L", bit(GXC_CIE_ABC) | bit(GXC_CIE_A) | bit(GXC_CIE_DEF) | bit(GXC_CIE_DEFG)},
    {"DecodeLMN_M", bit(GXC_CIE_ABC) | bit(GXC_CIE_A) | bit(GXC_CIE_DEF) | bit(GXC_CIE_DEFG)},
    {"DecodeLMN_N", bit(GXC_CIE_ABC) | bit(GXC_CIE_A) | bit(GXC_CIE_DEF) | bit(GXC_CIE_DEFG)},
    {"DecodeDEFG_D", bit(GXC_CIE_DEF) | bit(GXC_CIE_DEFG)},
    {"DecodeDEFG_E", bit(GXC_CIE_DEF) | bit(GXC_CIE_DEFG)},
    {"DecodeDEFG_F", bit(GXC_CIE_DEF) | bit(GXC_CIE_DEFG)},
    {"DecodeDEFG_G", bit(GXC_CIE_DEF)},
};

bool gxc_family_has_table(const GXC_DecodeTable* table, uint32_t family)
{
    return table->families == kEveryFamily || (family <= GXC_CIE_CALGRAY && (table->families & bit(family)) != 0);
}

uint32_t gxc_decode_entries(uint32_t bit_depth)
{
    return (1U << (bit_depth & 31)) - 1;
}

uint64_t gxc_hijk_size(uint32_t family, const uint8_t* dimensions)
{
    if (family != GXC_CIE_DEF && family != GXC_CIE_DEFG)
        return 0;
    return uint64_t{3} * dimensions[0] * dimensions[1] * dimensions[2] * (family == GXC_CIE_DEFG ? dimensions[3] : 1);
}

uint32_t gxc_lut_size(uint8_t dimensions, uint8_t size, uint8_t bit_depth, uint8_t num_base_chans)
{
    return ((power(size, dimensions) * bit_depth) >> 3) * num_base_chans;
}
