// SPDX-License-Identifier: GPL-2.0-or-later
//
// Poppler's images as the painter has them: their rows are read when they are asked for.

#pragma once

#include "clients/pdf/content/graphics.h"
#include "clients/pdf/poppler/colours.h"
#include "clients/pdf/poppler/decoded-images.h"

#include <memory>
#include <optional>

class GfxImageColorMap;
class Stream;

namespace orvlog::pdf_client
{

// Where what is decoded of an image is held when it's painted again.
struct StoredImage
{
    std::shared_ptr<DecodedImages> images;
    std::optional<ImageKey> key;  // none: nothing is held of it
};

// An image with all that the colour map says, its samples untouched wherever the records can say them. The pairs
// of `mask_colours`, one for each component, bound the samples that are transparent; null for none.
Image image_of(Stream* stream, int width, int height, GfxImageColorMap* map, const int* mask_colours,
               SpaceStore& spaces, const StoredImage& stored);
// Zeros paint, or ones if it is inverted.
Image stencil_of(Stream* stream, int width, int height, bool inverted, const StoredImage& stored);

// Image rows begin at the top of the unit square.
GGO_Matrix pixels_to(const Image& image, const GGO_Matrix& unit_square_to_content);
// False for an image without pixels, or one that would come out as a line or less.
bool paintable(const Image& image, const GGO_Matrix& unit_square_to_content);

}  // namespace orvlog::pdf_client
