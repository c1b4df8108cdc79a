// SPDX-License-Identifier: GPL-2.0-or-later
//
// An image as an operand whose rows a renderer pulls through callbacks. Small images, and those that can be
// read only once, lie in memory and are passed as direct images; of all others one row at a time is held. An image
// whose data ends before its time ends there: a read gives what there is of the last row, and the next one gives
// nothing.

#pragma once

#include "clients/pdf/content/graphics.h"
#include "clients/pdf/records/space-record.h"

#include <memory>

namespace orvlog::pdf_client
{

class ImageOperand
{
public:
    // `pixels_to_content` maps the image's pixels, y down from the first row, to the content space. An alpha
    // below 1 makes the whole image transparent by as much. Null for an image that is too large to be handled
    // (a row above 64 MB, or above 256 MB in all if it can be read only once).
    static std::shared_ptr<ImageOperand> make(const Image& image, const GGO_Matrix& pixels_to_content, double alpha,
                                              uint32_t unique_id);
    // A mask held in memory.
    static std::shared_ptr<ImageOperand> make(const std::shared_ptr<const MaskImage>& mask, double alpha,
                                              uint32_t unique_id);

    virtual ~ImageOperand() = default;
    // The record. A renderer that keeps the image keeps this object alive until it releases the image.
    virtual GOP_OperandPointer* get() = 0;
    virtual bool is_direct() const = 0;
};

}  // namespace orvlog::pdf_client
