// SPDX-License-Identifier: GPL-2.0-or-later
//
// What is painted into, and who draws it.

#pragma once

#include "clients/pdf/content/graphics.h"
#include "orvlog/interface/orv-interface.h"

#include <cstddef>
#include <cstdint>
#include <map>
#include <string>
#include <vector>

namespace orvlog::pdf_client
{

// A pattern cell or a form that is drawn once and painted many times.
struct ResourceGeometry
{
    GGO_BoxFloat box{};
    double scale = 0;  // pixels for each unit of its space when it is painted
    bool tiled = false;
};

// Someone who draws: the renderer behind the painter, or one of the mask studios.
struct Server
{
    const ORV_Interface* table = nullptr;
    void* document = nullptr;
    bool counted = false;
    std::map<std::string, uint32_t> resources;
};

struct Drawing
{
    Server* server = nullptr;
    ORV_DrawingInterface calls{};
    uint32_t resource_id = 0;
};

// What is painted into: a page, the two pictures of a mask, a resource.
struct Layer
{
    std::vector<Drawing> drawings;
    GGO_Matrix content_to_pixels{};
    uint32_t width = 0;
    uint32_t height = 0;
    size_t open_groups = 0;
    bool is_mask = false;
    std::string resource_key;
    Clip last_clip;
};

// The layer as a face of its size, wholly seen.
ORV_FaceProperties face_of(const Layer& layer);

// A layer for a mask: the part of `whole` that shows `seen`, a box in its content space, in whole pixels of it; all of
// it if the box has no size that is a number.
Layer mask_layer(const Layer& whole, const GGO_BoxFloat& seen);

// A layer for a resource, as large as it is painted, but no side above 8192 pixels.
Layer resource_layer(const std::string& key, const ResourceGeometry& geometry);

}  // namespace orvlog::pdf_client
