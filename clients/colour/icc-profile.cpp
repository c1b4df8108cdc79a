#include "clients/colour/icc-profile.h"

#include <lcms2.h>

#include <memory>

namespace orvlog::colour
{

namespace
{

struct CloseProfile
{
    void operator()(void* profile) const
    {
        cmsCloseProfile(profile);
    }
};

struct DeleteContext
{
    void operator()(cmsContext context) const
    {
        cmsDeleteContext(context);
    }
};

std::optional<Family> family_of(cmsColorSpaceSignature space)
{
    switch (space)
    {
    case cmsSigGrayData:
        return Family::gray;
    case cmsSigRgbData:
        return Family::rgb;
    case cmsSigCmykData:
        return Family::cmyk;
    default:
        return std::nullopt;
    }
}

uint32_t intent_of(cmsUInt32Number intent)
{
    switch (intent)
    {
    case INTENT_RELATIVE_COLORIMETRIC:
        return GCM_RI_COLORIMETRIC_REL;
    case INTENT_SATURATION:
        return GCM_RI_SATURATION;
    case INTENT_ABSOLUTE_COLORIMETRIC:
        return GCM_RI_COLORIMETRIC_ABS;
    default:
        return GCM_RI_PERCEPTUAL;
    }
}

std::string description_of(cmsHPROFILE profile)
{
    const cmsUInt32Number size = cmsGetProfileInfoASCII(profile, cmsInfoDescription, "en", "US", nullptr, 0);
    if (size == 0)
        return "";
    std::string text(size, '\0');
    cmsGetProfileInfoASCII(profile, cmsInfoDescription, "en", "US", text.data(), size);
    text.resize(text.find('\0') != std::string::npos ? text.find('\0') : text.size());
    return text;
}

}  // namespace

std::optional<double> lightness_of_black(const Bytes& icc)
{
    const std::unique_ptr<_cmsContext_struct, DeleteContext> context(cmsCreateContext(nullptr, nullptr));
    const std::unique_ptr<void, CloseProfile> profile(
        cmsOpenProfileFromMemTHR(context.get(), icc.data(), static_cast<cmsUInt32Number>(icc.size())));
    if (profile == nullptr || cmsGetColorSpace(profile.get()) != cmsSigCmykData)
        return std::nullopt;
    const std::unique_ptr<void, CloseProfile> screen(cmsCreate_sRGBProfileTHR(context.get()));
    cmsHTRANSFORM transform =
        cmsCreateTransformTHR(context.get(), profile.get(), TYPE_CMYK_16, screen.get(), TYPE_RGB_16,
                              INTENT_RELATIVE_COLORIMETRIC, cmsFLAGS_BLACKPOINTCOMPENSATION);
    if (transform == nullptr)
        return std::nullopt;
    const uint16_t ink[4] = {0, 0, 0, UINT16_MAX};
    uint16_t shown[3] = {};
    cmsDoTransform(transform, ink, shown, 1);
    cmsDeleteTransform(transform);
    return (0.3 * shown[0] + 0.59 * shown[1] + 0.11 * shown[2]) / UINT16_MAX;
}

std::optional<ProfileFacts> read_profile(const Bytes& icc, std::string* why)
{
    // A context of its own keeps errors to itself: nothing goes to a global handler.
    const std::unique_ptr<_cmsContext_struct, DeleteContext> context(cmsCreateContext(nullptr, nullptr));
    const std::unique_ptr<void, CloseProfile> profile(
        icc.size() <= UINT32_MAX
            ? cmsOpenProfileFromMemTHR(context.get(), icc.data(), static_cast<cmsUInt32Number>(icc.size()))
            : nullptr);
    if (profile == nullptr)
    {
        *why = "not an ICC profile";
        return std::nullopt;
    }
    const std::optional<Family> family = family_of(cmsGetColorSpace(profile.get()));
    if (!family)
    {
        *why = "a profile of another space than gray, RGB or CMYK";
        return std::nullopt;
    }
    ProfileFacts facts;
    facts.family = *family;
    facts.description = description_of(profile.get());
    facts.intent = intent_of(cmsGetHeaderRenderingIntent(profile.get()));
    facts.is_device_link = cmsGetDeviceClass(profile.get()) == cmsSigLinkClass;
    return facts;
}

}  // namespace orvlog::colour
