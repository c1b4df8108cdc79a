#include "orvlog/colour/gxc/gxc-names.h"

#include <gtest/gtest.h>

#include <string>

namespace
{

// All rows of a family, as "value name" with ends of line between.
std::string rows(const char* family_name)
{
    std::string text;
    for (const GXC_EnumFamily& family : gxc_enum_families)
        if (std::string(family.name) == family_name)
            for (uint32_t i = 0; i < family.count; ++i)
                text += std::to_string(family.rows[i].value) + " " + family.rows[i].name + "\n";
    return text;
}

TEST(GxcNames, TenFamiliesStandInTheirOrder)
{
    const char* const names[] = {"GCM_QualityHint",     "GCM_PerformanceHint",          "GCM_CsdType",
                                 "GCM_RenderIntent",    "GCM_AnalyticalColorSpaceType", "GNC_Format",
                                 "GCM_CieFamily",       "GCM_IlluminantLampGroup",      "GCM_SerMarker",
                                 "GCM_ColorSpaceFamily"};
    const uint32_t counts[] = {5, 5, 6, 5, 8, 7, 6, 3, 42, 4};
    for (int i = 0; i < 10; ++i)
    {
        EXPECT_STREQ(gxc_enum_families[i].name, names[i]);
        EXPECT_EQ(gxc_enum_families[i].count, counts[i]) << names[i];
    }
}

TEST(GxcNames, EachFamilyHasItsRows)
{
    EXPECT_EQ(rows("GCM_QualityHint"), "0 GCM_QUAL_LOWEST\n1 GCM_QUAL_LOW\n2 GCM_QUAL_MEDIUM\n3 GCM_QUAL_HIGH\n"
                                       "4 GCM_QUAL_HIGHEST\n");
    EXPECT_EQ(rows("GCM_PerformanceHint"), "0 GCM_PERF_LOWEST\n1 GCM_PERF_LOW\n2 GCM_PERF_MEDIUM\n3 GCM_PERF_HIGH\n"
                                           "4 GCM_PERF_HIGHEST\n");
    EXPECT_EQ(rows("GCM_CsdType"),
              "0 GCM_CSDTYPE_FILE\n2 GCM_CSDTYPE_PROFILE_BUFFER\n3 GCM_CSDTYPE_ANALYTICAL\n"
              "4 GCM_CSDTYPE_NONCOLORIMETRIC\n5 GCM_CSDTYPE_CIELUT_DATA\n6 GCM_CSDTYPE_NO_BASE_CHANS\n");
    EXPECT_EQ(rows("GCM_RenderIntent"), "0 GCM_RI_PERCEPTUAL\n1 GCM_RI_SATURATION\n2 GCM_RI_COLORIMETRIC_ABS\n"
                                        "3 GCM_RI_COLORIMETRIC_REL\n4 GCM_RI_USER_DEFINED_1\n");
    EXPECT_EQ(rows("GCM_AnalyticalColorSpaceType"),
              "0 GCM_ACS_XYZ\n1 GCM_ACS_LAB\n2 GCM_ACS_ADOBE_RGB\n3 GCM_ACS_LINEAR_SRGB\n4 GCM_ACS_SRGB\n"
              "5 GCM_ACS_SCRGB\n6 GCM_ACS_SCRGB16\n7 GCM_ACS_HVN_RGB\n");
    EXPECT_EQ(rows("GNC_Format"), "0 GNC_FORMAT_RGB\n1 GNC_FORMAT_BGR\n2 GNC_FORMAT_GRAY\n3 GNC_FORMAT_CMYK\n"
                                  "4 GNC_FORMAT_YMCK\n5 GNC_FORMAT_K\n6 GNC_FORMAT_NONE\n");
    EXPECT_EQ(rows("GCM_CieFamily"), "0 GCM_CIE_FAMILY_ABC\n1 GCM_CIE_FAMILY_A\n2 GCM_CIE_FAMILY_DEF\n"
                                     "3 GCM_CIE_FAMILY_DEFG\n4 GCM_CIE_FAMILY_CALRGB\n5 GCM_CIE_FAMILY_CALGRAY\n");
    EXPECT_EQ(rows("GCM_IlluminantLampGroup"),
              "0 GCM_LAMP_GROUP_NORMAL\n1 GCM_LAMP_GROUP_BROAD_BAND\n2 GCM_LAMP_GROUP_THREE_BAND\n");
    EXPECT_EQ(rows("GCM_ColorSpaceFamily"), "0 GrayRenderColorSpace\n1 RGBRenderColorSpace\n2 CMYKRenderColorSpace\n"
                                            "3 NamedRenderColorSpace\n");
    EXPECT_EQ(rows("GCM_SerMarker"),
              "0 GCM_SER_MARKER_END_VARIABLE_DATA\n1 GCM_SER_MARKER_RENDER_SPACE\n2 GCM_SER_MARKER_RGB_INPUT\n"
              "3 GCM_SER_MARKER_CMYK_INPUT\n4 GCM_SER_MARKER_GRAY_INPUT\n5 GCM_SER_MARKER_NAMED_INPUT\n"
              "6 GCM_SER_MARKER_OUTPUT_SPACE\n7 GCM_SER_MARKER_POST_RENDER_SIM\n"
              "8 GCM_SER_MARKER_PRE_RENDER_OVERRIDE_SIM\n9 GCM_SER_MARKER_RGB_SPOT_COLOR\n"
              "10 GCM_SER_MARKER_CMYK_SPOT_COLOR\n11 GCM_SER_MARKER_GRAY_DETECT\n12 GCM_SER_MARKER_RGB_PRE_SIM\n"
              "13 GCM_SER_MARKER_CMYK_PRE_SIM\n14 GCM_SER_MARKER_GRAY_PRE_SIM\n15 GCM_SER_MARKER_NAMED_PRE_SIM\n"
              "16 GCM_SER_MARKER_NAMED_PROFILES\n17 GCM_SER_MARKER_ILLUM_WHITE_PT\n18 GCM_SER_MARKER_ILLUM_TEMP\n"
              "19 GCM_SER_MARKER_GRAY_PRESERVE_PRE_OVERRIDE\n20 GCM_SER_MARKER_GRAY_PRESERVE_RENDER_CSD\n"
              "21 GCM_SER_MARKER_PURE_BLACK_PRESERVE\n22 GCM_SER_MARKER_PURE_BLACK_PROCESS\n"
              "22 GCM_SER_MARKER_PURE_BLACK_PROCESS\n23 GCM_SER_MARKER_INPUT_IN_DEVICE_RGB\n"
              "24 GCM_SER_MARKER_NAMED_COLOR_LOOKUP_DISABLE\n25 GCM_SER_MARKER_RGB_TO_MONO_PARAMS\n"
              "26 GCM_SER_MARKER_IGNORE_COLORIMETRIC_DATA\n27 GCM_SER_MARKER_RECOMBINE_SEPARATIONS\n"
              "9 GCM_SER_MARKER_RGB_SPOT_COLOR\n10 GCM_SER_MARKER_CMYK_SPOT_COLOR\n12 GCM_SER_MARKER_RGB_PRE_SIM\n"
              "13 GCM_SER_MARKER_CMYK_PRE_SIM\n14 GCM_SER_MARKER_GRAY_PRE_SIM\n15 GCM_SER_MARKER_NAMED_PRE_SIM\n"
              "28 GCM_SER_MARKER_RGB_VIRTUAL_PROFILE_PLUGINS\n29 GCM_SER_MARKER_RGB_PRINTER_PROFILE_PLUGINS\n"
              "30 GCM_SER_MARKER_INPUT_DEVICE_PROFILE_PLUGINS\n31 GCM_SER_MARKER_CMYK_PRINTER_PROFILE_PLUGINS\n"
              "32 GCM_SER_MARKER_SET_PRE_RGB_GAMMA_ADJUSTMENT\n33 GCM_SER_MARKER_SET_STD_OVERRIDE_RENDER_INTENTS\n"
              "34 GCM_SER_MARKER_RGB_TO_MONO_CSD\n");
}

TEST(GxcNames, LooksUpBothWays)
{
    EXPECT_STREQ(gxc_name_of_value("GCM_CsdType", 6), "GCM_CSDTYPE_NO_BASE_CHANS");
    EXPECT_EQ(gxc_name_of_value("GCM_CsdType", 1), nullptr);
    EXPECT_EQ(gxc_name_of_value("GCM_CsdType", 7), nullptr);
    EXPECT_EQ(gxc_name_of_value("GCM_CsdType", 8), nullptr);
    EXPECT_EQ(gxc_name_of_value("GCM_ColorSpaceFamily", 0xFFFFFFFF), nullptr);
    EXPECT_EQ(gxc_name_of_value("gcm_csdtype", 6), nullptr);
    uint32_t value = 77;
    EXPECT_EQ(gxc_value_of_name("GCM_SerMarker", "GCM_SER_MARKER_NAMED_PRE_SIM", &value), 1u);
    EXPECT_EQ(value, 15u);
    EXPECT_EQ(gxc_value_of_name("GCM_SerMarker", "GCM_QUAL_LOW", &value), 0u);
    EXPECT_EQ(gxc_value_of_name("GCM_Serial", "GCM_SER_MARKER_NAMED_PRE_SIM", &value), 0u);
    EXPECT_EQ(value, 15u);
}

}  // namespace
