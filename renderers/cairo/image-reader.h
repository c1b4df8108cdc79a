// Pulls images: from memory, or through their callbacks.

#pragma once

#include "orvlog/interface/gop-image.h"
#include "renderers/cairo/colour.h"
#include "renderers/cairo/complaints.h"
#include "renderers/cairo/image-part.h"
#include "renderers/cairo/scene.h"

#include <memory>

namespace orvlog::cairo_renderer
{

enum class BrushUse
{
    colour,
    mask  // alpha holds the mask: luminance times alpha
};

// Prepares the image, reads all of its rows, finishes it, and fills `image`. On failure the surface holds
// the rows that came, or is null when there were none. Of a large image no more is held than `window` shows, if that
// isn't null.
void pull_image(GOP_OperandImagePointer* record, BrushUse use, uint32_t object_type, ColourSpaces& spaces,
                Complaints& complaints, const Window* window, Image& image);

// Asks to keep the image beyond the call. False if it isn't to be kept; then pull it now.
bool keep_image(GOP_OperandImagePointer* record);

// Ends a keep; the record is gone afterwards.
void release_image(GOP_OperandImagePointer* record);

}  // namespace orvlog::cairo_renderer
