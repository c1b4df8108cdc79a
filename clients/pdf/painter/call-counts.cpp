// SPDX-License-Identifier: GPL-2.0-or-later

#include "clients/pdf/painter/call-counts.h"

#include <iterator>

namespace orvlog::pdf_client
{

const char* name_of(Call call)
{
    static constexpr const char* kNames[] = {
        "ORV_document_start",          "ORV_document_finish",  "ORV_face_start",
        "ORV_resource_start",          "ORV_resource_destroy", "ORV_object_paint",
        "ORV_object_paint_and_stroke", "ORV_group_start",      "ORV_group_finish",
        "ORV_resource_paint",          "ORV_drawing_finish",   "ORV_drawing_discard",
    };
    static_assert(std::size(kNames) == static_cast<size_t>(Call::count));
    return kNames[static_cast<size_t>(call)];
}

}  // namespace orvlog::pdf_client
