// SPDX-License-Identifier: GPL-2.0-or-later
//
// Clips as lists of shapes.

#pragma once

#include "clients/pdf/content/graphics.h"
#include "clients/pdf/records/shape-records.h"
#include "orvlog/interface/orv-interface.h"

#include <cstdint>
#include <memory>

namespace orvlog::pdf_client
{

// A clip and all that it narrows down: a node of a list that grows at its head.
struct ClipNode
{
    ClipNode(std::shared_ptr<const FilledShape> shape, uint32_t unique_id, Clip parent);
    ClipNode(std::shared_ptr<const StrokedShape> shape, uint32_t unique_id, Clip parent);
    // The same shape on top of another clip.
    ClipNode(const ClipNode& other, Clip parent);
    ~ClipNode();
    ClipNode(const ClipNode&) = delete;
    ClipNode& operator=(const ClipNode&) = delete;

    std::shared_ptr<const FilledShape> fill;
    std::shared_ptr<const StrokedShape> stroke;
    Clip parent;
    GSH_ShapeList record{};

private:
    void link(uint32_t unique_id);
};

// The list for a call; null for no clip.
const GSH_ShapeList* clip_list(const Clip& clip);

// A box, in content space, that holds all that the clip lets through: unbounded for no clip; one whose minimum
// exceeds its maximum if nothing is let through.
GGO_BoxFloat clip_bounds(const Clip& clip);

// The clips that `clip` has above `base`, on their own; all of them if `base` isn't among them.
Clip clips_above(const Clip& clip, const Clip& base);

}  // namespace orvlog::pdf_client
