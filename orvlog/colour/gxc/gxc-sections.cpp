#include "orvlog/colour/gxc/gxc-layout.h"

namespace
{

#define GXC_GROUP(name)                                                                                                \
    {                                                                                                                  \
        GXC_OPEN, name, nullptr                                                                                        \
    }
#define GXC_GROUP_END                                                                                                  \
    {                                                                                                                  \
        GXC_CLOSE, nullptr, nullptr                                                                                    \
    }
#define GXC_FLAG(name)                                                                                                 \
    {                                                                                                                  \
        GXC_BOOL, name, nullptr                                                                                        \
    }
#define GXC_BYTE(name)                                                                                                 \
    {                                                                                                                  \
        GXC_UINT8, name, nullptr                                                                                       \
    }
#define GXC_NUMBER(name)                                                                                               \
    {                                                                                                                  \
        GXC_UINT32, name, nullptr                                                                                      \
    }
#define GXC_REAL(name)                                                                                                 \
    {                                                                                                                  \
        GXC_FLOAT, name, nullptr                                                                                       \
    }
#define GXC_TEXT(name)                                                                                                 \
    {                                                                                                                  \
        GXC_STRING, name, nullptr                                                                                      \
    }
#define GXC_INTENT(name)                                                                                               \
    {                                                                                                                  \
        GXC_ENUM, name, "GCM_RenderIntent"                                                                             \
    }
#define GXC_FOUR_FLAGS GXC_FLAG("TextFlag"), GXC_FLAG("LineFlag"), GXC_FLAG("GraphicsFlag"), GXC_FLAG("ImageFlag")
#define GXC_FOUR_REFS                                                                                                  \
    GXC_NUMBER("TextCsdRef"), GXC_NUMBER("LineCsdRef"), GXC_NUMBER("GraphicsCsdRef"), GXC_NUMBER("ImageCsdRef")
#define GXC_FOUR_INTENTS                                                                                               \
    GXC_INTENT("TextRenderIntent"), GXC_INTENT("LineRenderIntent"), GXC_INTENT("GraphicsRenderIntent"),                \
        GXC_INTENT("ImageRenderIntent")
#define GXC_INPUT_GROUP(name) GXC_GROUP(name), GXC_FLAG("GrayPreserve"), GXC_BYTE("PrebuildXforms"), GXC_GROUP_END

constexpr GXC_Field kRenderSpace[] = {
    GXC_GROUP("PostRenderIntents"), GXC_FOUR_INTENTS,           GXC_GROUP_END,
    GXC_NUMBER("RenderBitDepth"),   GXC_FLAG("RenderHasAlpha"), GXC_FLAG("RenderChansPremul"),
    GXC_NUMBER("RenderCsdRef"),
};

constexpr GXC_Field kInput[] = {
    GXC_GROUP("InputDefn"),
    GXC_GROUP("GCM_InputFamilyDefinition"),
    GXC_INPUT_GROUP("Text"),
    GXC_INPUT_GROUP("Line"),
    GXC_INPUT_GROUP("Graphics"),
    GXC_INPUT_GROUP("Image"),
    GXC_GROUP_END,
    GXC_GROUP_END,
    GXC_FOUR_REFS,
};

constexpr GXC_Field kOutput[] = {
    GXC_NUMBER("OutputBitDepth"),
    GXC_FLAG("OutputChansHasAlpha"),
    GXC_FLAG("OutputChansPremul"),
    GXC_NUMBER("OutputCsdRef"),
};

constexpr GXC_Field kSimulation[] = {GXC_NUMBER("PostSimulationCsdRef")};

constexpr GXC_Field kSpotHead[] = {
    GXC_GROUP("EnableSpotImage"),
    GXC_FOUR_FLAGS,
    GXC_GROUP_END,
    GXC_NUMBER("MaxImagePixels"),
    GXC_NUMBER("MaxImageWidth"),
    GXC_NUMBER("MaxImageHeight"),
    GXC_NUMBER("SpotColorType"),
    GXC_NUMBER("UseWhitePoint"),
    GXC_NUMBER("KeyBitDepth"),
};

constexpr GXC_Field kGrayDetect[] = {
    GXC_FLAG("GrayscaleDetect"),
    GXC_REAL("RgbGrayThreshold"),
    GXC_REAL("CmyGrayThreshold"),
};

constexpr GXC_Field kPreSim[] = {GXC_FOUR_REFS};

constexpr GXC_Field kIllumWhitePt[] = {
    GXC_FLAG("DefaultIllumMode"), {GXC_ENUM, "IllumLampGroup", "GCM_IlluminantLampGroup"},
    GXC_REAL("IllumWhitePointX"), GXC_REAL("IllumWhitePointY"),
    GXC_REAL("IllumWhitePointZ"),
};

constexpr GXC_Field kIllumTemp[] = {
    GXC_FLAG("DefaultIllumMode"),
    {GXC_ENUM, "IllumLampGroup", "GCM_IlluminantLampGroup"},
    GXC_NUMBER("IllumColorTemp"),
    GXC_REAL("IllumLuminance"),
};

constexpr GXC_Field kFourFlags[] = {GXC_FOUR_FLAGS};
constexpr GXC_Field kCsdRef[] = {GXC_NUMBER("CsdRef")};

constexpr GXC_Field kPureBlackProcess[] = {
    GXC_GROUP("ProcessRGB"), GXC_FOUR_FLAGS, GXC_GROUP_END, GXC_GROUP("ProcessCMYK"), GXC_FOUR_FLAGS, GXC_GROUP_END,
};

constexpr GXC_Field kDeviceRgb[] = {GXC_FLAG("DeviceRGB")};
constexpr GXC_Field kIgnore[] = {GXC_FLAG("Ignore")};
constexpr GXC_Field kRecombine[] = {GXC_FLAG("Recombine")};

constexpr GXC_Field kRgbToMono[] = {
    GXC_NUMBER("TextConversion"),
    GXC_NUMBER("LineConversion"),
    GXC_NUMBER("GraphicsConversion"),
    GXC_NUMBER("ImageConversion"),
};

constexpr GXC_Field kPlugIns[] = {
    GXC_TEXT("DmpPlugIn"),   GXC_TEXT("Gmmp0PlugIn"), GXC_TEXT("Gmmp1PlugIn"),
    GXC_TEXT("Gmmp2PlugIn"), GXC_TEXT("Gmmp3PlugIn"),
};

constexpr GXC_Field kGamma[] = {
    GXC_FLAG("GammaEnabledDefaultPreRender"),
    GXC_FLAG("GammaEnabledPreRenderOverride"),
    GXC_REAL("RgbTextGamma"),
    GXC_REAL("RgbLineGamma"),
    GXC_REAL("RgbGraphicsGamma"),
    GXC_REAL("RgbImageGamma"),
};

constexpr GXC_Field kOverrideIntents[] = {
    GXC_FLAG("EnableStdOverrideRenderIntents"),
    GXC_GROUP("MiscStdOverrideRenderIntents"),
    GXC_FOUR_INTENTS,
    GXC_GROUP_END,
};

template <size_t Count>
constexpr GXC_Section section(const char* element, const GXC_Field (&fields)[Count], GXC_Tail tail = GXC_NO_TAIL)
{
    return {element, {fields, Count}, tail};
}

}  // namespace

const GXC_Section gxc_sections[GXC_LAST_MARKER + 1] = {
    /*  0 */ {nullptr, {nullptr, 0}, GXC_NO_TAIL},
    /*  1 */ section("RenderColorSpace", kRenderSpace),
    /*  2 */ section("InputRGB", kInput),
    /*  3 */ section("InputCMYK", kInput),
    /*  4 */ section("InputGray", kInput),
    /*  5 */ section("InputNamed", kInput),
    /*  6 */ section("Output", kOutput),
    /*  7 */ section("PostRenderSim", kSimulation),
    /*  8 */ section("PreRenderOverrideSim", kSimulation),
    /*  9 */ section("RGBSpotColor", kSpotHead, GXC_RGB_SPOT_COLORS),
    /* 10 */ section("CMYKSpotColor", kSpotHead, GXC_CMYK_SPOT_COLORS),
    /* 11 */ section("GrayDetect", kGrayDetect),
    /* 12 */ section("RGBPreSim", kPreSim),
    /* 13 */ section("CMYKPreSim", kPreSim),
    /* 14 */ section("GrayPreSim", kPreSim),
    /* 15 */ section("NamedPreSim", kPreSim),
    /* 16 */ {"NamedProfiles", {nullptr, 0}, GXC_PROFILE_NAMES},
    /* 17 */ section("IllumWhitePt", kIllumWhitePt),
    /* 18 */ section("IllumTemp", kIllumTemp),
    /* 19 */ section("GrayPreservePreOverride", kFourFlags),
    /* 20 */ section("GrayPreserveRenderCsd", kCsdRef),
    /* 21 */ section("PureBlackPreserve", kFourFlags),
    /* 22 */ section("PureBlackProcess", kPureBlackProcess),
    /* 23 */ section("InputInDeviceRgb", kDeviceRgb),
    /* 24 */ section("NamedColorLookupDisable", kFourFlags),
    /* 25 */ section("RgbToMonoParams", kRgbToMono),
    /* 26 */ section("IgnoreColorimetricData", kIgnore),
    /* 27 */ section("RecombineSeparations", kRecombine),
    /* 28 */ section("RGBVirtualProfilePlugins", kPlugIns),
    /* 29 */ section("RGBPrinterProfilePlugins", kPlugIns),
    /* 30 */ section("InputDeviceProfilePlugins", kPlugIns),
    /* 31 */ section("CMYKPrinterProfilePlugins", kPlugIns),
    /* 32 */ section("Pre-renderRgbGammaAdjustment", kGamma),
    /* 33 */ section("StandardOverrideRenderIntents", kOverrideIntents),
    /* 34 */ section("RgbToMonoCsd", kCsdRef),
};
