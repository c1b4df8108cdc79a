// SPDX-License-Identifier: GPL-2.0-or-later
//
// Soft masks of CMYK groups: how light they are is told by the profile, and black ink is 0.

#include "tests/clients/pdf/small-document.h"

#include <gtest/gtest.h>
#include <lcms2.h>

namespace orvlog
{

namespace
{

using namespace orvlog::small_document;

// Black ink darkens by its square, down to a lightness of 20; all inks together come to 8.
cmsInt32Number lab_of(const cmsUInt16Number* ink, cmsUInt16Number* lab, void*)
{
    const double others = (ink[0] + ink[1] + ink[2]) / 3.0 / 65535;
    const double black = ink[3] / 65535.0;
    const cmsCIELab colour = {100 * (1 - 0.6 * others) * (1 - 0.8 * black * black), 0, 0};
    cmsFloat2LabEncodedV2(lab, &colour);
    return 1;
}

// Of half a megabyte, as those of presses are.
std::string cmyk_profile()
{
    const cmsHPROFILE profile = cmsCreateProfilePlaceholder(nullptr);
    cmsSetProfileVersion(profile, 2.1);
    cmsSetDeviceClass(profile, cmsSigOutputClass);
    cmsSetColorSpace(profile, cmsSigCmykData);
    cmsSetPCS(profile, cmsSigLabData);
    cmsPipeline* pipeline = cmsPipelineAlloc(nullptr, 4, 3);
    cmsStage* table = cmsStageAllocCLut16bit(nullptr, 17, 4, 3, nullptr);
    cmsStageSampleCLut16bit(table, lab_of, nullptr, 0);
    cmsPipelineInsertStage(pipeline, cmsAT_BEGIN, table);
    EXPECT_TRUE(cmsWriteTag(profile, cmsSigAToB0Tag, pipeline));
    cmsPipelineFree(pipeline);
    cmsUInt32Number size = 0;
    cmsSaveProfileToMem(profile, nullptr, &size);
    std::string bytes(size, '\0');
    cmsSaveProfileToMem(profile, bytes.data(), &size);
    cmsCloseProfile(profile);
    return bytes;
}

// Black through a mask of four quarters: no ink and half of black above, black and all inks below.
std::string page_with_mask(const std::string& space, const std::string& paint)
{
    const std::string group =
        stream("/Type /XObject /Subtype /Form /BBox [0 0 100 100] /Group << /S /Transparency /CS " + space +
                   " >> /Resources << /ColorSpace << /P [/ICCBased 6 0 R] >> >>",
               "/P cs 0 0 0 0 " + paint + " 0 50 50 50 re f 0 0 0 0.5 " + paint + " 50 50 50 50 re f 0 0 0 1 " + paint +
                   " 0 0 50 50 re f 1 1 1 1 " + paint + " 50 0 50 50 re f");
    return page("/M gs 0 g 0 0 100 100 re f", "/ExtGState << /M << /SMask << /S /Luminosity /G 5 0 R >> >> >>",
                {group, stream("/N 4", cmyk_profile())});
}

void expect_by_profile(const std::string& document)
{
    const cairo_renderer::PagePixels drawn = draw(document);
    EXPECT_EQ(pixel(drawn, 25, 25), 0U);
    // A lightness of 80 is a mask of 0.73, and black shows through by as much.
    EXPECT_NEAR(pixel(drawn, 75, 25) & 0xFFU, 255 * (1 - 0.73), 4);
    EXPECT_EQ(pixel(drawn, 25, 75), 0xFFFFFFU);
    EXPECT_EQ(pixel(drawn, 75, 75), 0xFFFFFFU);
}

TEST(CmykMask, GoesByTheProfileOfItsGroup)
{
    expect_by_profile(page_with_mask("[/ICCBased 6 0 R]", "sc"));
}

TEST(CmykMask, TakesDeviceColoursByTheProfileOfItsGroup)
{
    expect_by_profile(page_with_mask("[/ICCBased 6 0 R]", "k"));
}

TEST(CmykMask, GoesByTheOutputIntent)
{
    std::string document = page_with_mask("/DeviceCMYK", "k");
    const std::string catalog = "/Type /Catalog";
    document.insert(document.find(catalog) + catalog.size(),
                    " /OutputIntents [<< /Type /OutputIntent /S /GTS_PDFX /DestOutputProfile 6 0 R >>]");
    expect_by_profile(document);
}

// 50 % black is then half way from the paper to the ink.
TEST(CmykMask, WithoutAProfileIsThatOfDeviceColours)
{
    const cairo_renderer::PagePixels drawn = draw(page_with_mask("/DeviceCMYK", "k"));
    EXPECT_EQ(pixel(drawn, 25, 25), 0U);
    EXPECT_NEAR(pixel(drawn, 75, 25) & 0xFFU, 255 * 0.5, 2);
    EXPECT_EQ(pixel(drawn, 25, 75), 0xFFFFFFU);
    EXPECT_EQ(pixel(drawn, 75, 75), 0xFFFFFFU);
}

}  // namespace

}  // namespace orvlog
