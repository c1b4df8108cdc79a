#include "orvlog/colour/gxc/gxc-variable.h"

namespace
{

enum : uint32_t
{
    kEndVariableData = 0,
    kLastMarker = 34
};

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

// What stands behind the fields of a section, if anything does.
using TailFn = bool (*)(GXC_Writer* writer, GXC_Input* input);

struct Section
{
    const char* element;
    const GXC_Field* fields;
    size_t count;
    TailFn tail;
};

template <size_t Count>
constexpr Section section(const char* element, const GXC_Field (&fields)[Count], TailFn tail = nullptr)
{
    return {element, fields, Count, tail};
}

bool read_count(GXC_Writer* writer, GXC_Input* input, const char* name, uint32_t* count)
{
    if (!gxc_read_uint32(input, count))
        return false;
    gxc_begin(writer, name);
    gxc_value_uint32(writer, *count);
    gxc_end(writer);
    return true;
}

bool write_spot_colors(GXC_Writer* writer, GXC_Input* input, const char* element, uint64_t key_size)
{
    constexpr uint64_t kTargetSize = 4;
    uint32_t count = 0;
    if (!read_count(writer, input, "NumCols", &count))
        return false;
    for (uint32_t i = 0; i < count; ++i)
    {
        gxc_open(writer, element);
        const bool whole = gxc_write_array(writer, input, "Key", GXC_ENTRY_UINT16, key_size, 0) &&
                           gxc_write_array(writer, input, "Target", GXC_ENTRY_UINT16, kTargetSize, 0);
        gxc_close(writer, element);
        if (!whole)
            return false;
    }
    return true;
}

bool write_rgb_spot_colors(GXC_Writer* writer, GXC_Input* input)
{
    return write_spot_colors(writer, input, "RGBSpotColorDefn", 3);
}

bool write_cmyk_spot_colors(GXC_Writer* writer, GXC_Input* input)
{
    return write_spot_colors(writer, input, "CMYKSpotColorDefn", 4);
}

// All names stand as attributes of one element, under the same name: readers of the log rely on it.
bool write_named_profiles(GXC_Writer* writer, GXC_Input* input)
{
    uint32_t count = 0;
    if (!read_count(writer, input, "NumNamedProfiles", &count) ||
        !gxc_write_array(writer, input, "UseDeviceValues", GXC_ENTRY_BOOL, count, 0))
        return false;
    bool whole = true;
    gxc_begin(writer, "ProfileNames");
    for (uint32_t i = 0; i < count && whole; ++i)
        whole = gxc_write_string_value(writer, input);
    gxc_end(writer);
    return whole;
}

constexpr Section kSections[kLastMarker + 1] = {
    /*  0 */ {nullptr, nullptr, 0, nullptr},
    /*  1 */ section("RenderColorSpace", kRenderSpace),
    /*  2 */ section("InputRGB", kInput),
    /*  3 */ section("InputCMYK", kInput),
    /*  4 */ section("InputGray", kInput),
    /*  5 */ section("InputNamed", kInput),
    /*  6 */ section("Output", kOutput),
    /*  7 */ section("PostRenderSim", kSimulation),
    /*  8 */ section("PreRenderOverrideSim", kSimulation),
    /*  9 */ section("RGBSpotColor", kSpotHead, write_rgb_spot_colors),
    /* 10 */ section("CMYKSpotColor", kSpotHead, write_cmyk_spot_colors),
    /* 11 */ section("GrayDetect", kGrayDetect),
    /* 12 */ section("RGBPreSim", kPreSim),
    /* 13 */ section("CMYKPreSim", kPreSim),
    /* 14 */ section("GrayPreSim", kPreSim),
    /* 15 */ section("NamedPreSim", kPreSim),
    /* 16 */ {"NamedProfiles", nullptr, 0, write_named_profiles},
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

bool write_section(GXC_Writer* writer, GXC_Input* input, uint32_t marker)
{
    const Section* known = &kSections[marker];
    uint32_t size = 0;
    gxc_open(writer, known->element);
    gxc_begin(writer, "GCM_SerMarker");
    gxc_value_enum(writer, "GCM_SerMarker", marker);
    gxc_end(writer);
    const bool whole = read_count(writer, input, "Size", &size) &&
                       gxc_write_fields(writer, input, known->fields, known->count) &&
                       (known->tail == nullptr || known->tail(writer, input));
    gxc_close(writer, known->element);
    return whole;
}

bool skip_section(GXC_Input* input)
{
    uint32_t size = 0;
    return gxc_read_uint32(input, &size) && gxc_skip(input, size);
}

}  // namespace

bool gxc_write_variable_data(GXC_Writer* writer, GXC_Input* input)
{
    uint32_t marker = 0;
    gxc_open(writer, "VariableSizedData");
    bool whole = gxc_read_uint32(input, &marker);
    while (whole && marker != kEndVariableData)
    {
        whole = marker > kLastMarker ? skip_section(input) : write_section(writer, input, marker);
        whole = whole && gxc_read_uint32(input, &marker);
    }
    gxc_close(writer, "VariableSizedData");
    return whole;
}
