// How the data of an image lies in memory.

#pragma once

#include "orvlog/interface/gop-image.h"
#include "renderers/cairo/colour.h"

#include <cstdint>
#include <memory>

namespace orvlog::cairo_renderer
{

// The shape of the data of one image.
struct Layout
{
    uint32_t width = 0;
    uint32_t height = 0;
    uint32_t channels = 0;  // stored in a pixel, alpha included
    uint32_t bits = 0;
    bool planar = false;
    bool indexed = false;
    bool alpha = false;
    bool premultiplied = false;
    bool big_endian = false;
    double constant_alpha = 1.0;
    uint64_t row_bytes = 0;
    uint64_t rows = 0;
};

// How many bits a depth code stands for; 0 for a code without a meaning.
uint32_t depth_bits(uint32_t code);

// How many channels a pixel has, alpha not counted, and the space that they are in.
uint32_t colour_channels(const GOP_OperandImagePointer& record, ColourSpaces& spaces,
                         std::shared_ptr<const ColourSpace>& space);

// False for data that cannot be taken apart.
bool make_layout(const GOP_OperandImagePointer& record, uint32_t colour_count, Layout& layout);

}  // namespace orvlog::cairo_renderer
