// Colour spaces that are told by the light they stand for.

#pragma once

#include "orvlog/interface/gcm-csd.h"
#include "renderers/cairo/colour.h"

#include <memory>

namespace orvlog::cairo_renderer
{

std::shared_ptr<const ColourSpace> linear_rgb_space();

// In both the white point of `space` becomes the white of the page; one that isn't positive is taken as D50.
std::shared_ptr<const ColourSpace> xyz_space(const GCM_AnalyticalColorSpace& space);
std::shared_ptr<const ColourSpace> lab_space(const GCM_AnalyticalColorSpace& space);

// The space of GCM_CIE_FAMILY_CALGRAY or GCM_CIE_FAMILY_CALRGB; black points are left out of account. Null for
// other families and where tables are missing. The tables are copied.
std::shared_ptr<const ColourSpace> calibrated_space(uint32_t family, const GCM_CieLutsPointer* tables);

}  // namespace orvlog::cairo_renderer
