// Channel values to RGB.

#pragma once

#include "orvlog/interface/gop-operand.h"
#include "renderers/cairo/complaints.h"

#include <cstddef>
#include <cstdint>
#include <map>
#include <memory>
#include <string>
#include <vector>

namespace orvlog::cairo_renderer
{

struct Rgb
{
    double red = 0.0;  // all from 0 to 1
    double green = 0.0;
    double blue = 0.0;
};

// A colour space: so many channels, alpha not counted, and the way to RGB.
class ColourSpace
{
public:
    virtual ~ColourSpace() = default;
    virtual uint32_t channels() const = 0;
    // `values` holds channels() values from 0 to 1.
    virtual Rgb convert(const float* values) const = 0;
};

// Device colours.
Rgb cmyk_to_rgb(double cyan, double magenta, double yellow, double black);

double luminance(const Rgb& colour);

// Finds colour spaces, and holds what is costly to make.
class ColourSpaces
{
public:
    explicit ColourSpaces(Complaints& complaints);
    ~ColourSpaces();

    // The space of an operand whose colours have `channels` channels without alpha (0: not known). `csd`
    // may be null. Never null: what isn't known is taken by its number of channels.
    std::shared_ptr<const ColourSpace> find(const GOP_Operand& operand, const GCM_CsdPointer* csd, uint32_t channels);

private:
    std::shared_ptr<const ColourSpace> from_definition(const GCM_CsdPointer& csd, uint32_t channels, int depth);
    std::shared_ptr<const ColourSpace> from_profile(std::vector<uint8_t> profile, uint32_t channels, uint32_t intent);
    std::shared_ptr<const ColourSpace> by_channels(uint32_t channels);

    Complaints& complaints_;
    std::map<std::pair<uint32_t, std::vector<uint8_t>>, std::shared_ptr<const ColourSpace>> profiles_;
};

// A colour record, taken apart.
struct Colour
{
    double alpha = 1.0;
    std::vector<float> values;  // without alpha, from 0 to 1
};

Colour read_colour(const GBC_Color& colour);

}  // namespace orvlog::cairo_renderer
