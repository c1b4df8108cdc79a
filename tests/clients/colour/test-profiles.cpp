#include "tests/clients/colour/test-profiles.h"

#include <lcms2.h>

#include <algorithm>

namespace orvlog::test
{

namespace
{

// The header's date, which is that of the call: profiles must be the same whenever they are made.
constexpr ptrdiff_t kDateBegin = 24;
constexpr ptrdiff_t kDateEnd = 36;

colour::Bytes bytes_of(cmsHPROFILE profile)
{
    cmsUInt32Number size = 0;
    cmsSaveProfileToMem(profile, nullptr, &size);
    colour::Bytes bytes(size);
    cmsSaveProfileToMem(profile, bytes.data(), &size);
    cmsCloseProfile(profile);
    std::fill(bytes.begin() + kDateBegin, bytes.begin() + kDateEnd, uint8_t{0});
    return bytes;
}

}  // namespace

colour::Bytes gray_profile()
{
    cmsToneCurve* curve = cmsBuildGamma(nullptr, 2.2);
    const cmsHPROFILE profile = cmsCreateGrayProfile(cmsD50_xyY(), curve);
    cmsSetHeaderRenderingIntent(profile, INTENT_SATURATION);
    cmsFreeToneCurve(curve);
    return bytes_of(profile);
}

colour::Bytes rgb_profile()
{
    const cmsHPROFILE profile = cmsCreate_sRGBProfile();
    cmsSetHeaderRenderingIntent(profile, INTENT_RELATIVE_COLORIMETRIC);
    return bytes_of(profile);
}

colour::Bytes cmyk_profile()
{
    const cmsHPROFILE profile = cmsCreateInkLimitingDeviceLink(cmsSigCmykData, 300);
    cmsSetHeaderRenderingIntent(profile, INTENT_ABSOLUTE_COLORIMETRIC);
    return bytes_of(profile);
}

colour::Bytes lab_profile()
{
    return bytes_of(cmsCreateLab4Profile(nullptr));
}

}  // namespace orvlog::test
