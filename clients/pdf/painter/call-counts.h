// SPDX-License-Identifier: GPL-2.0-or-later
//
// The calls of the drawing interface that a painter makes, and how many of each.

#pragma once

#include <array>
#include <cstddef>
#include <cstdint>

namespace orvlog::pdf_client
{

enum class Call
{
    document_start,
    document_finish,
    face_start,
    resource_start,
    resource_destroy,
    object_paint,
    object_paint_and_stroke,
    group_start,
    group_finish,
    resource_paint,
    drawing_finish,
    drawing_discard,
    count
};

// The name of the call in the interface, "ORV_face_start" for example.
const char* name_of(Call call);

struct CallCounts
{
    std::array<uint64_t, static_cast<size_t>(Call::count)> made{};
    uint64_t refused = 0;
    // The ends of text runs, as the calls gave them back, against the client's own: how many, and the greatest
    // distance in inches.
    uint64_t end_points = 0;
    double worst_end_point = 0;
};

}  // namespace orvlog::pdf_client
