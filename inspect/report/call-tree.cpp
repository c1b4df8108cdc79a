#include "inspect/report/call-tree.h"

#include "reader/tree/values.h"

namespace orvlog::inspect
{

namespace
{

constexpr size_t kMostOpen = 65536;
constexpr size_t kDeepest = 1024;  // deeper groups stand in the last one that is followed

}  // namespace

int64_t CallTree::document_of(const reader::Element& call) const
{
    const auto known = documents_.find(reader::read_uint(call, "document_context"));
    return call.has("document_context") && known != documents_.end() ? known->second : last_document_;
}

int64_t CallTree::drawing_of(const reader::Element& call) const
{
    const auto known = drawings_.find(reader::read_uint(call, "drawing_context"));
    const bool there = call.has("drawing_context") && known != drawings_.end() && !known->second.empty();
    return there ? known->second.back() : document_of(call);
}

int64_t CallTree::next(const reader::Element& call, int64_t place)
{
    if (call.name == "ORV_document_start")
    {
        if (documents_.size() < kMostOpen)
            documents_[reader::read_uint(call, "document_context")] = place;
        last_document_ = place;
        return -1;
    }
    if (call.name == "ORV_face_start" || call.name == "ORV_resource_start" || call.name == "ORV_memory_context_start")
    {
        const int64_t parent = document_of(call);
        if (drawings_.size() < kMostOpen)
            drawings_[reader::read_uint(call, "drawing_context")] = {place};
        return parent;
    }
    const int64_t parent = drawing_of(call);
    if (call.name == "ORV_document_finish")
    {
        documents_.erase(reader::read_uint(call, "document_context"));
        last_document_ = -1;
    }
    const auto drawing = drawings_.find(reader::read_uint(call, "drawing_context"));
    if (drawing == drawings_.end() || !call.has("drawing_context"))
        return parent;
    if (call.name == "ORV_drawing_finish" || call.name == "ORV_drawing_discard")
    {
        const int64_t began = drawing->second.front();
        drawings_.erase(drawing);
        return began;
    }
    if (call.name == "ORV_group_start")
        drawing->second.push_back(drawing->second.size() < kDeepest ? place : drawing->second.back());
    else if (call.name == "ORV_group_finish" && reader::read_bool(call, "replay_group") == 0 &&
             drawing->second.size() > 1)
        drawing->second.pop_back();
    return parent;
}

}  // namespace orvlog::inspect
