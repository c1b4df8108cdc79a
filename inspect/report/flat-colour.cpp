#include "inspect/report/flat-colour.h"

#include "reader/look/call-summary.h"
#include "reader/tree/values.h"

#include <algorithm>
#include <cmath>
#include <string>
#include <vector>

namespace orvlog::inspect
{

namespace
{

int64_t channel(double light)
{
    return std::isfinite(light) ? std::lround(std::clamp(light, 0.0, 1.0) * 255) : 0;
}

int64_t colour_of(double red, double green, double blue)
{
    return channel(red) << 16 | channel(green) << 8 | channel(blue);
}

}  // namespace

int64_t shown_colour(const reader::Element& color, std::string_view space)
{
    std::vector<double> values = reader::to_doubles(color.value("base_n"));
    const uint32_t depth = reader::read_uint(color, "bit_depth");
    const double most = depth < 32 ? static_cast<double>((uint64_t{1} << depth) - 1) : 1.0;
    for (double& value : values)
        value /= std::max(most, 1.0);
    const auto holds = [space](std::string_view name) { return space.find(name) != std::string_view::npos; };
    if (holds("cmyk") && values.size() >= 4)
        return colour_of((1 - values[0]) * (1 - values[3]), (1 - values[1]) * (1 - values[3]),
                         (1 - values[2]) * (1 - values[3]));
    if (holds("rgb") && values.size() >= 3)
        return colour_of(values[0], values[1], values[2]);
    if ((holds("gray") || holds("grey")) && !values.empty())
        return colour_of(values[0], values[0], values[0]);
    return -1;
}

int64_t flat_colour(const reader::Element* operand)
{
    const reader::Element* flat = operand != nullptr ? operand->child("GOP_OperandFlat") : nullptr;
    const reader::Element* holder = flat != nullptr ? flat->member("fl_Color") : nullptr;
    const reader::Element* color = holder != nullptr ? holder->child("GBC_Color") : nullptr;
    if (color == nullptr)
        return -1;
    const std::string text = reader::operand_text(operand);
    return shown_colour(*color, std::string_view(text).substr(0, text.find('(')));
}

}  // namespace orvlog::inspect
