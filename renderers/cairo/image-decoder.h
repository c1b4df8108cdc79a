// Turns the stored values of an image into pixels.

#pragma once

#include "orvlog/interface/gop-image.h"
#include "renderers/cairo/colour.h"
#include "renderers/cairo/image-layout.h"
#include "renderers/cairo/image-reader.h"

#include <cstdint>
#include <vector>

namespace orvlog::cairo_renderer
{

struct Pixel
{
    double red = 0.0;  // premultiplied
    double green = 0.0;
    double blue = 0.0;
    double alpha = 0.0;
};

// Turns stored values into pixels of the surface, row by row. What it is made of is borrowed.
class Decoder
{
public:
    Decoder(const GOP_OperandImagePointer& record, const Layout& layout, const ColourSpace& space, BrushUse use)
        : record_(record), layout_(layout), space_(space), use_(use), values_(layout.channels),
          last_(layout.channels, -1.0F)
    {
    }

    // `rows` holds the bytes of one row of pixels: one stored row, or one of each channel.
    void decode(const uint8_t* rows, std::vector<Pixel>& pixels);

    // The pixel of a stored value, for images with one value of at most eight bits for each pixel.
    Pixel pixel_of(uint32_t value);

private:
    void gather(const uint8_t* rows, uint32_t column);
    Pixel convert() const;

    const GOP_OperandImagePointer& record_;
    const Layout& layout_;
    const ColourSpace& space_;
    BrushUse use_;
    std::vector<float> values_;
    std::vector<float> last_;
    Pixel last_pixel_;
};

}  // namespace orvlog::cairo_renderer
