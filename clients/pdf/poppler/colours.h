// SPDX-License-Identifier: GPL-2.0-or-later
//
// Poppler's colours and colour spaces as the painter has them.

#pragma once

#include "clients/pdf/content/graphics.h"

#include <map>
#include <memory>
#include <optional>
#include <vector>

#include <GfxState.h>
#include <Object.h>

class PDFDoc;

namespace orvlog::pdf_client
{

// The definitions of colour spaces, each made once.
class SpaceStore
{
public:
    explicit SpaceStore(PDFDoc* document);

    // The space of a colour whose channels are passed as they stand.
    ColourSpace space_of(GfxColorSpace& space);

    // From here to end_mask device CMYK is that of the profile of `blending_space`, which may be null, or else of the
    // document's output intent, if these have one; and flat colours carry their profile whatever its size.
    void begin_mask(GfxColorSpace* blending_space);
    void end_mask();
    // Ends the masks that a page left open which was broken off.
    void forget_masks();
    // The profile of the CMYK space that begin_mask would take; null if there is none.
    std::shared_ptr<const SpaceDefinition> cmyk_profile(GfxColorSpace* blending_space);
    // The greatest profile that a flat colour carries, in bytes.
    size_t greatest_flat_profile() const;

private:
    std::shared_ptr<const SpaceDefinition> profile_of(GfxICCBasedColorSpace& space);
    std::shared_ptr<const SpaceDefinition> kept(const SpaceDefinition& definition);

    PDFDoc* document_;
    std::map<int, std::shared_ptr<const SpaceDefinition>> profiles_;
    std::vector<std::shared_ptr<const SpaceDefinition>> calibrated_;
    std::optional<std::shared_ptr<const SpaceDefinition>> output_intent_;  // once it is known; null if there is none
    std::vector<std::shared_ptr<const SpaceDefinition>> masks_;            // device CMYK in those that are open
};

// The colour in its own space where the drawing interface has one, else in the family of its alternate space.
// Patterns, and no space at all, come out black.
Colour colour_of(GfxColorSpace* space, const GfxColor& value, SpaceStore& spaces);
Colour rgb_of(const GfxColorSpace& space, const GfxColor& value);
Colour gray(float value);

// True if the channels of such a space are passed as they stand.
bool passes_as_channels(GfxColorSpaceMode mode);

// The bytes of a profile of so many channels; empty if that isn't what the stream holds.
std::vector<uint8_t> read_profile(const Object& object, int channels);

}  // namespace orvlog::pdf_client
