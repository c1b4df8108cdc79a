// SPDX-License-Identifier: GPL-2.0-or-later

#include "clients/pdf/poppler/colours.h"

#include "clients/pdf/poppler/page-resources.h"

#include <algorithm>
#include <cmath>
#include <cstring>

#include <PDFDoc.h>
#include <Stream.h>

namespace orvlog::pdf_client
{

namespace
{

constexpr size_t kGreatestProfile = 16U << 20;
constexpr size_t kProfileHeader = 128;

// A flat colour carries its definition with each paint; a profile above this size stands in the page's colour
// ticket alone.
constexpr size_t kGreatestFlatProfile = 64U << 10;

float channel(GfxColorComp value)
{
    return static_cast<float>(std::clamp(colToDbl(value), 0.0, 1.0));
}

Colour cmyk_of(const GfxColorSpace& space, const GfxColor& value)
{
    GfxCMYK cmyk;
    space.getCMYK(&value, &cmyk);
    Colour colour;
    colour.space.channels = 4;
    colour.value[0] = channel(cmyk.c);
    colour.value[1] = channel(cmyk.m);
    colour.value[2] = channel(cmyk.y);
    colour.value[3] = channel(cmyk.k);
    return colour;
}

Colour gray_of(const GfxColorSpace& space, const GfxColor& value)
{
    GfxGray level;
    space.getGray(&value, &level);
    return gray(channel(level));
}

template <typename Space> void set_points(Space& space, SpaceDefinition& definition)
{
    const double white[3] = {space.getWhiteX(), space.getWhiteY(), space.getWhiteZ()};
    const double black[3] = {space.getBlackX(), space.getBlackY(), space.getBlackZ()};
    std::copy_n(white, 3, definition.white);
    std::copy_n(black, 3, definition.black);
}

SpaceDefinition calibrated(GfxCalGrayColorSpace& space)
{
    SpaceDefinition definition;
    definition.kind = SpaceDefinition::Kind::calibrated_gray;
    set_points(space, definition);
    definition.gamma[0] = space.getGamma();
    return definition;
}

SpaceDefinition calibrated(GfxCalRGBColorSpace& space)
{
    SpaceDefinition definition;
    definition.kind = SpaceDefinition::Kind::calibrated_rgb;
    set_points(space, definition);
    definition.gamma[0] = space.getGammaR();
    definition.gamma[1] = space.getGammaG();
    definition.gamma[2] = space.getGammaB();
    std::copy_n(space.getMatrix(), 9, definition.matrix);
    return definition;
}

Colour in_alternate(const GfxColorSpace& space, GfxColorSpace* alternate, const GfxColor& value)
{
    switch (alternate != nullptr ? alternate->getNComps() : 0)
    {
    case 1:
        return gray_of(space, value);
    case 4:
        return cmyk_of(space, value);
    default:
        return rgb_of(space, value);
    }
}

// The colour, in the base space, that an index stands for.
GfxColor entry_of(GfxIndexedColorSpace& indexed, const GfxColor& value)
{
    GfxColor entry;
    clearGfxColor(&entry);
    const int channels = std::min(indexed.getBase()->getNComps(), gfxColorMaxComps);
    const int index = std::clamp(static_cast<int>(std::lround(colToDbl(value.c[0]))), 0, indexed.getIndexHigh());
    double low[gfxColorMaxComps];
    double range[gfxColorMaxComps];
    indexed.getBase()->getDefaultRanges(low, range, indexed.getIndexHigh());
    for (int i = 0; i < channels; ++i)
        entry.c[i] = dblToCol(low[i] + indexed.getLookup()[index * channels + i] / 255.0 * range[i]);
    return entry;
}

}  // namespace

Colour gray(float value)
{
    Colour colour;
    colour.value[0] = value;
    return colour;
}

Colour rgb_of(const GfxColorSpace& space, const GfxColor& value)
{
    GfxRGB rgb;
    space.getRGB(&value, &rgb);
    Colour colour;
    colour.space.channels = 3;
    colour.value[0] = channel(rgb.r);
    colour.value[1] = channel(rgb.g);
    colour.value[2] = channel(rgb.b);
    return colour;
}

std::vector<uint8_t> read_profile(const Object& object, int channels)
{
    std::vector<uint8_t> bytes;
    if (!object.isStream())
        return bytes;
    Stream* stream = object.getStream();
    stream->reset();
    unsigned char piece[4096];
    int got = 0;
    while (bytes.size() < kGreatestProfile && (got = stream->doGetChars(sizeof piece, piece)) > 0)
        bytes.insert(bytes.end(), piece, piece + got);
    stream->close();
    const char* signature = channels == 1 ? "GRAY" : channels == 3 ? "RGB " : "CMYK";
    const bool sound = bytes.size() > 128 && bytes.size() < kGreatestProfile &&
                       std::memcmp(&bytes[36], "acsp", 4) == 0 && std::memcmp(&bytes[16], signature, 4) == 0;
    return sound ? bytes : std::vector<uint8_t>();
}

bool passes_as_channels(GfxColorSpaceMode mode)
{
    return mode == csDeviceGray || mode == csCalGray || mode == csDeviceRGB || mode == csCalRGB ||
           mode == csDeviceCMYK || mode == csICCBased;
}

SpaceStore::SpaceStore(PDFDoc* document) : document_(document) {}

ColourSpace SpaceStore::space_of(GfxColorSpace& space)
{
    ColourSpace result;
    result.channels = static_cast<uint16_t>(space.getNComps());
    switch (space.getMode())
    {
    case csICCBased:
        result.definition = profile_of(static_cast<GfxICCBasedColorSpace&>(space));
        break;
    case csCalGray:
        result.definition = kept(calibrated(static_cast<GfxCalGrayColorSpace&>(space)));
        break;
    case csCalRGB:
        result.definition = kept(calibrated(static_cast<GfxCalRGBColorSpace&>(space)));
        break;
    case csDeviceCMYK:
        result.definition = masks_.empty() ? nullptr : masks_.back();
        break;
    default:
        break;
    }
    return result;
}

void SpaceStore::begin_mask(GfxColorSpace* blending_space)
{
    masks_.push_back(cmyk_profile(blending_space));
}

void SpaceStore::end_mask()
{
    if (!masks_.empty())
        masks_.pop_back();
}

void SpaceStore::forget_masks()
{
    masks_.clear();
}

std::shared_ptr<const SpaceDefinition> SpaceStore::cmyk_profile(GfxColorSpace* blending_space)
{
    if (blending_space == nullptr || blending_space->getNComps() != 4)
        return nullptr;
    if (blending_space->getMode() == csICCBased)
        return profile_of(static_cast<GfxICCBasedColorSpace&>(*blending_space));
    if (blending_space->getMode() != csDeviceCMYK)
        return nullptr;
    if (!output_intent_)
    {
        std::shared_ptr<SpaceDefinition> definition;
        std::vector<uint8_t> bytes = output_intent_of(*document_);
        if (bytes.size() > kProfileHeader && std::memcmp(&bytes[16], "CMYK", 4) == 0)
        {
            definition = std::make_shared<SpaceDefinition>();
            definition->profile = std::move(bytes);
        }
        output_intent_ = std::move(definition);
    }
    return *output_intent_;
}

size_t SpaceStore::greatest_flat_profile() const
{
    // What is painted for a mask isn't logged.
    return masks_.empty() ? kGreatestFlatProfile : kGreatestProfile;
}

std::shared_ptr<const SpaceDefinition> SpaceStore::profile_of(GfxICCBasedColorSpace& space)
{
    const Ref reference = space.getRef();
    if (reference == Ref::INVALID())
        return nullptr;
    const auto known = profiles_.find(reference.num);
    if (known != profiles_.end())
        return known->second;
    std::shared_ptr<SpaceDefinition> definition;
    std::vector<uint8_t> bytes = read_profile(document_->getXRef()->fetch(reference), space.getNComps());
    if (!bytes.empty())
    {
        definition = std::make_shared<SpaceDefinition>();
        definition->profile = std::move(bytes);
    }
    profiles_[reference.num] = definition;
    return definition;
}

std::shared_ptr<const SpaceDefinition> SpaceStore::kept(const SpaceDefinition& definition)
{
    for (const std::shared_ptr<const SpaceDefinition>& known : calibrated_)
        if (*known == definition)
            return known;
    calibrated_.push_back(std::make_shared<const SpaceDefinition>(definition));
    return calibrated_.back();
}

Colour colour_of(GfxColorSpace* space, const GfxColor& value, SpaceStore& spaces)
{
    const GfxColorSpaceMode mode = space != nullptr ? space->getMode() : csPattern;
    if (passes_as_channels(mode))
    {
        Colour colour;
        colour.space = spaces.space_of(*space);
        if (colour.space.definition != nullptr &&
            colour.space.definition->profile.size() > spaces.greatest_flat_profile())
            colour.space.definition = nullptr;
        if (colour.space.channels != 1 && colour.space.channels != 3 && colour.space.channels != 4)
            return rgb_of(*space, value);
        for (int i = 0; i < colour.space.channels; ++i)
            colour.value[i] = channel(value.c[i]);
        return colour;
    }
    switch (mode)
    {
    case csLab:
        return rgb_of(*space, value);
    case csIndexed:
    {
        GfxIndexedColorSpace* indexed = static_cast<GfxIndexedColorSpace*>(space);
        return colour_of(indexed->getBase(), entry_of(*indexed, value), spaces);
    }
    case csSeparation:
        return in_alternate(*space, static_cast<GfxSeparationColorSpace*>(space)->getAlt(), value);
    case csDeviceN:
        return in_alternate(*space, static_cast<GfxDeviceNColorSpace*>(space)->getAlt(), value);
    default:
        return gray(0);
    }
}

}  // namespace orvlog::pdf_client
