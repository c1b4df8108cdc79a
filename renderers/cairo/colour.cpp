#include "renderers/cairo/colour.h"

#include "renderers/cairo/cie-space.h"

#include <lcms2.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdio>

namespace orvlog::cairo_renderer
{
namespace
{

constexpr uint32_t kMaxChannels = 32;
constexpr int kMaxDefinitionDepth = 8;
constexpr size_t kMaxProfileBytes = size_t{64} << 20;

double clamp01(double value)
{
    return value > 0.0 ? std::min(value, 1.0) : 0.0;
}

struct Gray : ColourSpace
{
    uint32_t channels() const override
    {
        return 1;
    }
    Rgb convert(const float* values) const override
    {
        const double gray = clamp01(values[0]);
        return {gray, gray, gray};
    }
};

struct Black : ColourSpace
{
    uint32_t channels() const override
    {
        return 1;
    }
    Rgb convert(const float* values) const override
    {
        return cmyk_to_rgb(0.0, 0.0, 0.0, values[0]);
    }
};

struct RedGreenBlue : ColourSpace
{
    explicit RedGreenBlue(bool is_reversed) : reversed(is_reversed) {}
    uint32_t channels() const override
    {
        return 3;
    }
    Rgb convert(const float* values) const override
    {
        return {clamp01(values[reversed ? 2 : 0]), clamp01(values[1]), clamp01(values[reversed ? 0 : 2])};
    }
    bool reversed;
};

struct Cmyk : ColourSpace
{
    explicit Cmyk(bool is_ymck) : ymck(is_ymck) {}
    uint32_t channels() const override
    {
        return 4;
    }
    Rgb convert(const float* values) const override
    {
        return ymck ? cmyk_to_rgb(values[2], values[1], values[0], values[3])
                    : cmyk_to_rgb(values[0], values[1], values[2], values[3]);
    }
    bool ymck;
};

// Inks of unknown colour: each darkens as black does.
struct Tints : ColourSpace
{
    explicit Tints(uint32_t channel_count) : count(channel_count) {}
    uint32_t channels() const override
    {
        return count;
    }
    Rgb convert(const float* values) const override
    {
        double light = 1.0;
        for (uint32_t i = 0; i < count; ++i)
            light *= 1.0 - clamp01(values[i]);
        return {light, light, light};
    }
    uint32_t count;
};

class Profile : public ColourSpace
{
public:
    Profile(uint32_t channel_count, cmsHTRANSFORM transform) : channels_(channel_count), transform_(transform) {}
    Profile(const Profile&) = delete;
    Profile& operator=(const Profile&) = delete;
    ~Profile() override
    {
        cmsDeleteTransform(transform_);
    }
    uint32_t channels() const override
    {
        return channels_;
    }
    Rgb convert(const float* values) const override
    {
        std::array<uint16_t, kMaxChannels> in{};
        for (uint32_t i = 0; i < channels_; ++i)
            in[i] = static_cast<uint16_t>(std::lround(clamp01(values[i]) * 65535.0));
        std::array<uint16_t, 3> out{};
        cmsDoTransform(transform_, in.data(), out.data(), 1);
        return {out[0] / 65535.0, out[1] / 65535.0, out[2] / 65535.0};
    }

private:
    uint32_t channels_;
    cmsHTRANSFORM transform_;
};

cmsUInt32Number lcms_intent(uint32_t intent)
{
    switch (intent)
    {
    case GCM_RI_PERCEPTUAL:
        return INTENT_PERCEPTUAL;
    case GCM_RI_SATURATION:
        return INTENT_SATURATION;
    case GCM_RI_COLORIMETRIC_ABS:
        return INTENT_ABSOLUTE_COLORIMETRIC;
    default:
        return INTENT_RELATIVE_COLORIMETRIC;
    }
}

std::shared_ptr<const ColourSpace> open_profile(const std::vector<uint8_t>& bytes, uint32_t intent)
{
    cmsHPROFILE profile = cmsOpenProfileFromMem(bytes.data(), static_cast<cmsUInt32Number>(bytes.size()));
    if (profile == nullptr)
        return nullptr;
    const uint32_t channels = cmsChannelsOf(cmsGetColorSpace(profile));
    const auto family = static_cast<uint32_t>(_cmsLCMScolorSpace(cmsGetColorSpace(profile)));
    cmsHPROFILE screen = cmsCreate_sRGBProfile();
    const cmsUInt32Number format = COLORSPACE_SH(family) | CHANNELS_SH(channels) | BYTES_SH(2);
    cmsHTRANSFORM transform = nullptr;
    if (channels >= 1 && channels <= 15)
        transform = cmsCreateTransform(profile, format, screen, TYPE_RGB_16, lcms_intent(intent),
                                       cmsFLAGS_BLACKPOINTCOMPENSATION);
    cmsCloseProfile(screen);
    cmsCloseProfile(profile);
    if (transform == nullptr)
        return nullptr;
    return std::make_shared<Profile>(channels, transform);
}

std::vector<uint8_t> read_stream(GIO_Stream* stream)
{
    std::vector<uint8_t> bytes;
    if (stream == nullptr || stream->ops == nullptr || stream->ops->gio_Read == nullptr)
        return bytes;
    if (stream->ops->gio_Seek != nullptr)
        stream->ops->gio_Seek(stream->instance, 0, GIO_SEEK_SET);
    std::array<uint8_t, 4096> block{};
    while (bytes.size() < kMaxProfileBytes)
    {
        const uint64_t got = stream->ops->gio_Read(block.data(), 1, block.size(), stream->instance);
        if (got == 0 || got > block.size())
            break;
        bytes.insert(bytes.end(), block.begin(), block.begin() + static_cast<std::ptrdiff_t>(got));
    }
    return bytes;
}

std::vector<uint8_t> read_profile_file(const char* name)
{
    std::vector<uint8_t> bytes;
    std::FILE* file = name == nullptr ? nullptr : std::fopen(name, "rb");
    if (file == nullptr)
        return bytes;
    std::array<uint8_t, 4096> block{};
    size_t got = 0;
    while (bytes.size() < kMaxProfileBytes && (got = std::fread(block.data(), 1, block.size(), file)) != 0)
        bytes.insert(bytes.end(), block.begin(), block.begin() + static_cast<std::ptrdiff_t>(got));
    std::fclose(file);
    return bytes;
}

std::shared_ptr<const ColourSpace> from_analytical(const GCM_AnalyticalColorSpace& space, Complaints& complaints)
{
    switch (space.acs_ColorSpace)
    {
    case GCM_ACS_XYZ:
        return xyz_space(space);
    case GCM_ACS_LAB:
        return lab_space(space);
    case GCM_ACS_LINEAR_SRGB:
    case GCM_ACS_SCRGB:
    case GCM_ACS_SCRGB16:
        return linear_rgb_space();
    case GCM_ACS_SRGB:
        return std::make_shared<RedGreenBlue>(false);
    default:
        complaints.say_once("Adobe RGB and other wide spaces are painted as sRGB");
        return std::make_shared<RedGreenBlue>(false);
    }
}

std::shared_ptr<const ColourSpace> from_format(uint32_t format)
{
    switch (format)
    {
    case GNC_FORMAT_RGB:
        return std::make_shared<RedGreenBlue>(false);
    case GNC_FORMAT_BGR:
        return std::make_shared<RedGreenBlue>(true);
    case GNC_FORMAT_GRAY:
        return std::make_shared<Gray>();
    case GNC_FORMAT_CMYK:
        return std::make_shared<Cmyk>(false);
    case GNC_FORMAT_YMCK:
        return std::make_shared<Cmyk>(true);
    case GNC_FORMAT_K:
        return std::make_shared<Black>();
    default:
        return nullptr;
    }
}

std::shared_ptr<const ColourSpace> from_family(uint32_t family, uint32_t channels)
{
    switch (family)
    {
    case GCM_CSF_GRAY:
        return std::make_shared<Gray>();
    case GCM_CSF_RGB:
        return std::make_shared<RedGreenBlue>(false);
    case GCM_CSF_CMYK:
        return std::make_shared<Cmyk>(false);
    case GCM_CSF_NAMED:
        return std::make_shared<Tints>(std::clamp(channels, 1U, kMaxChannels));
    default:
        return nullptr;
    }
}

// The colours of full inks, by bits: 8 cyan, 4 magenta, 2 yellow, 1 black.
constexpr std::array<std::array<double, 3>, 16> kInkCorners{{
    {255, 255, 255},
    {35, 31, 32},
    {255, 242, 0},
    {28, 26, 0},
    {236, 0, 140},
    {36, 0, 0},
    {237, 28, 36},
    {34, 0, 0},
    {0, 173, 239},
    {0, 15, 36},
    {0, 166, 80},
    {0, 19, 0},
    {46, 49, 146},
    {0, 0, 2},
    {54, 54, 57},
    {0, 0, 0},
}};

}  // namespace

Rgb cmyk_to_rgb(double cyan, double magenta, double yellow, double black)
{
    const std::array<double, 4> ink{clamp01(cyan), clamp01(magenta), clamp01(yellow), clamp01(black)};
    std::array<double, 3> light{};
    for (unsigned corner = 0; corner < 16; ++corner)
    {
        double weight = 1.0 / 255.0;
        for (unsigned i = 0; i < 4; ++i)
            weight *= (corner & (8U >> i)) != 0 ? ink[i] : 1.0 - ink[i];
        for (unsigned i = 0; i < 3; ++i)
            light[i] += weight * kInkCorners[corner][i];
    }
    return {clamp01(light[0]), clamp01(light[1]), clamp01(light[2])};
}

double luminance(const Rgb& colour)
{
    return 0.3 * colour.red + 0.59 * colour.green + 0.11 * colour.blue;
}

ColourSpaces::ColourSpaces(Complaints& complaints) : complaints_(complaints) {}

ColourSpaces::~ColourSpaces() = default;

std::shared_ptr<const ColourSpace> ColourSpaces::by_channels(uint32_t channels)
{
    switch (channels)
    {
    case 0:
    case 1:
        return std::make_shared<Gray>();
    case 3:
        return std::make_shared<RedGreenBlue>(false);
    case 4:
        return std::make_shared<Cmyk>(false);
    default:
        complaints_.say_once("colour spaces of 2 or more than 4 channels are painted as tints of black");
        return std::make_shared<Tints>(std::min(channels, kMaxChannels));
    }
}

std::shared_ptr<const ColourSpace> ColourSpaces::from_profile(std::vector<uint8_t> profile, uint32_t channels,
                                                              uint32_t intent)
{
    auto key = std::make_pair(intent, std::move(profile));
    const auto known = profiles_.find(key);
    if (known != profiles_.end())
        return known->second;
    auto space = open_profile(key.second, intent);
    if (space == nullptr || (channels != 0 && space->channels() != channels))
    {
        complaints_.say_once("colour profiles that cannot be read are taken by their number of channels");
        space = by_channels(channels);
    }
    profiles_[std::move(key)] = space;
    return space;
}

std::shared_ptr<const ColourSpace> ColourSpaces::from_definition(const GCM_CsdPointer& csd, uint32_t channels,
                                                                 int depth)
{
    if (csd.cp_Csd == nullptr || depth > kMaxDefinitionDepth)
        return nullptr;
    const GCM_Csd& definition = *csd.cp_Csd;
    if (definition.csd_NumNamedChans != 0)
    {
        complaints_.say_once("named inks are painted as tints of black");
        const uint32_t all = static_cast<uint32_t>(definition.csd_NumNamedChans) + definition.csd_NumBaseChans;
        return std::make_shared<Tints>(std::clamp(channels != 0 ? channels : all, 1U, kMaxChannels));
    }
    const uint32_t count = channels != 0 ? channels : definition.csd_NumBaseChans;
    switch (definition.csd_Type)
    {
    case GCM_CSDTYPE_FILE:
        return from_profile(read_profile_file(csd.cp_Filename), count, definition.csd_DefaultRenderIntent);
    case GCM_CSDTYPE_CALLBACK:
        return from_profile(read_stream(csd.cp_CallbackStream), count, definition.csd_DefaultRenderIntent);
    case GCM_CSDTYPE_PROFILE_BUFFER:
        if (csd.cp_ProfileBuffer == nullptr)
            return nullptr;
        return from_profile({csd.cp_ProfileBuffer, csd.cp_ProfileBuffer + definition.csd_Defn.ProfileBufferSize}, count,
                            definition.csd_DefaultRenderIntent);
    case GCM_CSDTYPE_ANALYTICAL:
        return from_analytical(definition.csd_Defn.Analytical, complaints_);
    case GCM_CSDTYPE_NONCOLORIMETRIC:
        return from_format(definition.csd_Defn.NonColorimetric);
    case GCM_CSDTYPE_INPUT:
        return from_family(definition.csd_Defn.Input, count);
    case GCM_CSDTYPE_CIELUT_DATA:
        if (auto space = calibrated_space(definition.csd_Defn.CieBased, csd.cp_CieLuts))
            return space;
        [[fallthrough]];
    default:
        if (definition.csd_HasAlternateDefn != 0 && csd.cp_AlternateDefn != nullptr)
            return from_definition(*csd.cp_AlternateDefn, channels, depth + 1);
        complaints_.say_once("table based colour spaces are taken by their number of channels");
        return nullptr;
    }
}

std::shared_ptr<const ColourSpace> ColourSpaces::find(const GOP_Operand& operand, const GCM_CsdPointer* csd,
                                                      uint32_t channels)
{
    std::shared_ptr<const ColourSpace> space;
    const uint32_t kind = GOP_COLOR_INFO_SPACE(operand.go_ColorInfo);
    if (kind == GOP_OCS_INPUT)
        space = from_family(operand.go_ColorSpaceFamily, channels);
    else if (kind == GOP_OCS_OTHER && csd != nullptr)
        space = from_definition(*csd, channels, 0);
    if (space != nullptr && (channels == 0 || space->channels() <= channels))
        return space;
    if (space != nullptr)
        complaints_.say_once("colours with fewer channels than their space are taken by their number of channels");
    return by_channels(channels);
}

Colour read_colour(const GBC_Color& colour)
{
    Colour result;
    const uint32_t count = std::min<uint32_t>(colour.num_chans, kMaxChannels + 1);
    const unsigned bits = colour.bit_depth >= 1 && colour.bit_depth <= 16 ? colour.bit_depth : 16U;
    const double full = static_cast<double>((1U << bits) - 1U);
    const float* floats = &colour.channels.as_float[0];
    const uint16_t* words = &colour.channels.as_uint16[0];
    for (uint32_t i = 0; i < count; ++i)
    {
        const double value = colour.bit_depth == 32 ? static_cast<double>(floats[i]) : words[i] / full;
        if (i == 0 && colour.has_alpha != 0)
            result.alpha = clamp01(value);
        else
            result.values.push_back(static_cast<float>(value));
    }
    return result;
}

}  // namespace orvlog::cairo_renderer
