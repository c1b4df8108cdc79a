// SPDX-License-Identifier: GPL-2.0-or-later

#include "clients/pdf/records/clip.h"

#include <algorithm>
#include <limits>
#include <vector>

namespace orvlog::pdf_client
{

ClipNode::ClipNode(std::shared_ptr<const FilledShape> shape, uint32_t unique_id, Clip parent_clip)
    : fill(std::move(shape)), parent(std::move(parent_clip))
{
    link(unique_id);
}

ClipNode::ClipNode(std::shared_ptr<const StrokedShape> shape, uint32_t unique_id, Clip parent_clip)
    : stroke(std::move(shape)), parent(std::move(parent_clip))
{
    link(unique_id);
}

ClipNode::ClipNode(const ClipNode& other, Clip parent_clip)
    : fill(other.fill), stroke(other.stroke), parent(std::move(parent_clip))
{
    link(other.record.sl_UniqueId);
}

// A long list is taken apart in a loop, so that its destruction doesn't recurse.
ClipNode::~ClipNode()
{
    Clip next = std::move(parent);
    while (next != nullptr && next.use_count() == 1)
    {
        Clip after = std::move(const_cast<ClipNode&>(*next).parent);
        next = std::move(after);
    }
}

void ClipNode::link(uint32_t unique_id)
{
    record.sl_ClipIn = 1;
    record.sl_Shape = fill != nullptr ? *fill->get() : *stroke->get();
    record.sl_Next = clip_list(parent);
    record.sl_UniqueId = unique_id;
}

const GSH_ShapeList* clip_list(const Clip& clip)
{
    return clip != nullptr ? &clip->record : nullptr;
}

GGO_BoxFloat clip_bounds(const Clip& clip)
{
    constexpr double kFar = std::numeric_limits<double>::max();
    GGO_BoxFloat box{-kFar, -kFar, kFar, kFar};
    for (const ClipNode* node = clip.get(); node != nullptr; node = node->parent.get())
    {
        if (node->fill != nullptr)
        {
            const GGO_BoxFloat& shape = node->fill->bounds();
            box.gbf_MinX = std::max(box.gbf_MinX, shape.gbf_MinX);
            box.gbf_MinY = std::max(box.gbf_MinY, shape.gbf_MinY);
            box.gbf_MaxX = std::min(box.gbf_MaxX, shape.gbf_MaxX);
            box.gbf_MaxY = std::min(box.gbf_MaxY, shape.gbf_MaxY);
        }
    }
    return box;
}

Clip clips_above(const Clip& clip, const Clip& base)
{
    std::vector<const ClipNode*> nodes;
    for (const ClipNode* node = clip.get(); node != nullptr && node != base.get(); node = node->parent.get())
        nodes.push_back(node);
    Clip result;
    for (auto node = nodes.rbegin(); node != nodes.rend(); ++node)
        result = std::make_shared<const ClipNode>(**node, result);
    return result;
}

}  // namespace orvlog::pdf_client
