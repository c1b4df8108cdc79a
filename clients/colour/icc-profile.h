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

}  // namespace orvlog::colour
