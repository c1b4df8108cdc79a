// The clips of a call as numbers.

#pragma once

#include "holv-core/ggo/ggo-geometry.h"
#include "reader/tree/element.h"

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace orvlog::inspect
{

// One entry of a list of clips.
struct ClipEntry
{
    bool inside = true;                 // what lies inside the shape is painted; else what lies outside
    std::string shape;                  // "filled path", "rectangles" and so on; "nothing" without a shape
    std::string winding;                // of paths: "odd-even", "non-zero"; else empty
    uint64_t parts = 0;                 // segments of paths, rectangles, rows
    std::optional<GGO_BoxFloat> box;    // around the shape; nothing for texts and shapes without extent
    std::optional<uint32_t> unique_id;  // of the entry
    bool collection = false;            // it stands in the collection of the entry before it
};

// The list in the member `name` ("clip", "group_clip") of a call, in the space that `to_pixels` leads to. Of longer
// lists the first 10000.
std::vector<ClipEntry> clip_entries(const reader::Element& call, const GGO_Matrix& to_pixels);

// What all entries together let through at most; nothing if they don't tell.
std::optional<GGO_BoxFloat> box_of(const std::vector<ClipEntry>& entries);

}  // namespace orvlog::inspect
