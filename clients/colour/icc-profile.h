// What a ticket says of an ICC profile.

#pragma once

#include "clients/colour/colour-manager.h"

#include <cstdint>
#include <optional>
#include <string>

namespace orvlog::colour
{

struct ProfileFacts
{
    std::string description;
    Family family = Family::rgb;
    uint32_t intent = 0;  // GCM_RI_*, the profile's own
    bool is_device_link = false;
};

// Nothing, and a reason in `why`, for bytes that are no profile of a gray, RGB or CMYK space.
std::optional<ProfileFacts> read_profile(const Bytes& icc, std::string* why);

// How light full black ink is that nothing else is under, as this is shown on a screen: the luma of its sRGB values, 0
// to 1, colorimetric and with the black points on one another. Nothing for bytes that are no profile of a CMYK space.
std::optional<double> lightness_of_black(const Bytes& icc);

}  // namespace orvlog::colour
