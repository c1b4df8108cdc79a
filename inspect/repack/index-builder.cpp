#include "inspect/repack/index-builder.h"

#include "reader/tree/values.h"

#include <algorithm>
#include <array>

namespace orvlog::inspect
{

namespace
{

using reader::Element;
using reader::kNobody;

constexpr size_t kMostKept = reader::kLargestIndex / 2;
constexpr size_t kMostRuns = reader::kLargestIndex / 64;

constexpr std::array<std::string_view, 3> kStarts = {"ORV_face_start", "ORV_resource_start",
                                                     "ORV_memory_context_start"};
constexpr std::array<std::string_view, 5> kOthers = {
    "ORV_document_start", "ORV_document_finish", "ORV_resource_destroy", "ORV_drawing_finish", "ORV_drawing_discard"};

bool is_start(const Element& element)
{
    return std::ranges::find(kStarts, element.name) != kStarts.end();
}

bool may_hold_calls(const Element& element)
{
    return element.name.starts_with("ORV_") || element.name == "GSH_ShapeList" ||
           element.name == "GSH_ShapeList.sl_Shape";
}

}  // namespace

IndexBuilder::IndexBuilder(std::function<std::string_view(uint64_t begin, uint64_t end)> text) : text_(std::move(text))
{
    index_.ids_rise = true;
    index_.runs.push_back({});
}

bool IndexBuilder::is_kept(const Element& element)
{
    return is_start(element) || std::ranges::find(kOthers, element.name) != kOthers.end();
}

void IndexBuilder::end_kept(uint64_t byte)
{
    if (index_.runs.back().owner == kNobody && !too_large_)
        index_.kept += text_(kept_to_, byte);
    kept_to_ = byte;
    too_large_ = too_large_ || index_.kept.size() > kMostKept || index_.runs.size() > kMostRuns;
}

void IndexBuilder::begin_run(uint32_t owner, const reader::Place& place)
{
    if (index_.head_size == 0)
        index_.head_size = place.byte;
    end_kept(place.byte);
    if (index_.runs.back().owner != owner && !too_large_)
        index_.runs.push_back({owner, place.byte, place.line});
}

void IndexBuilder::start_drawing(const Element& element)
{
    const auto number = static_cast<uint32_t>(index_.drawings.size());
    reader::LogIndex::Drawing drawing;
    if (element.name == "ORV_face_start")
    {
        drawing.page = ++index_.pages;
        drawing.paints = with_tickets_;
    }
    if (element.name == "ORV_resource_start")
        by_resource_[reader::read_uint(element, "resource_id")] = number;
    by_context_[reader::read_uint(element, "drawing_context")] = number;
    index_.drawings.push_back(std::move(drawing));
}

void IndexBuilder::paint_resource(const Element& element, uint32_t owner)
{
    const auto known = by_resource_.find(reader::read_uint(element, "resource_id"));
    if (known == by_resource_.end() || owner == kNobody)
        return;
    if (painted_.emplace(uint64_t{owner} << 32 | known->second).second)
        index_.drawings[owner].paints.push_back(known->second);
    too_large_ = too_large_ || painted_.size() > kMostRuns;
}

uint32_t IndexBuilder::owner_of(const Element& element)
{
    if (is_kept(element))
        return kNobody;
    if (!reader::is_call_name(element.name))
        return index_.runs.back().owner;
    const auto known = by_context_.find(reader::read_uint(element, "drawing_context"));
    return known != by_context_.end() ? known->second : kNobody;
}

// Of the call and of calls that stand in it.
void IndexBuilder::follow_ids(const Element& element)
{
    if (reader::is_call_name(element.name) && element.has("id"))
    {
        const uint64_t id = reader::to_uint(element.value("id"));
        index_.ids_rise = index_.ids_rise && id >= next_id_;
        next_id_ = id + 1;
    }
    for (const Element& child : reader::Children(element))
    {
        nested_ = nested_ || reader::is_call_name(child.name);
        if (may_hold_calls(child))
            follow_ids(child);
    }
}

void IndexBuilder::add(const Element& element)
{
    const uint32_t owner = owner_of(element);
    begin_run(owner, element.place);
    examination_.add(element);
    follow_ids(element);
    index_.calls += reader::is_call_name(element.name) ? 1 : 0;
    if (is_start(element))
        start_drawing(element);
    if (element.name == "ORV_resource_paint")
        paint_resource(element, owner);
    const Element* ticket = element.child("GCM_ColorTicket");
    const bool tells = ticket != nullptr && ticket->first != nullptr;
    const bool new_one = with_tickets_.empty() || with_tickets_.back() != owner;
    if (tells && new_one && owner != kNobody && index_.drawings[owner].page == 0)
        with_tickets_.push_back(owner);
}

void IndexBuilder::add(const reader::Comment& comment)
{
    examination_.add(comment);
    if (comment.inside)
        return;
    begin_run(comment.warning ? index_.runs.back().owner : kNobody, comment.place);
}

void IndexBuilder::finish(uint64_t text_size, bool is_sound, const Element& root)
{
    if (index_.head_size == 0)
        index_.head_size = text_size;
    // What ends the root belongs to nobody, whatever comes before it.
    const reader::LogIndex::Run& last = index_.runs.back();
    if (last.owner != kNobody)
        is_sound = false;
    end_kept(text_size);
    index_.text_size = text_size;
    index_.facts = replay::facts_of(examination_.finish(true, root));
    index_.has_pages = is_sound && !nested_ && !too_large_;
}

}  // namespace orvlog::inspect
