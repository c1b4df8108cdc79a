// The shapes and clips of calls as SVG path data, in pixels.

#pragma once

#include "holv-core/ggo/ggo-geometry.h"
#include "reader/tree/element.h"

#include <optional>
#include <string>
#include <vector>

namespace orvlog::inspect
{

struct Outline
{
    std::string data;
    std::string rule;              // "nonzero", "evenodd"; empty: it isn't filled
    std::optional<double> stroke;  // the width of the line in pixels
    bool inside = true;            // of a clip: what lies inside is painted
    bool cut = false;              // the data ends early
};

// The data of a GPA_PathPointer in the space that `matrix` leads to, with two decimals; `cut` is set where it is too
// long. Coordinates that are no numbers are left out.
std::string path_data(const reader::Element& path, const GGO_Matrix& matrix, bool& cut);

// What a call paints: its shape, the rectangle of its image, the box of its text.
std::vector<Outline> outlines_of(const reader::Element& call, const GGO_Matrix& to_pixels);
// Its clips, of longer lists the first.
std::vector<Outline> clips_of(const reader::Element& call, const GGO_Matrix& to_pixels);

std::string outline_json(const Outline& outline);

}  // namespace orvlog::inspect
