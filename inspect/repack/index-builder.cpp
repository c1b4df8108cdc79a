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

bool is_kept(const Element& element)
{
    return is_start(element) || std::ranges::find(kOthers, element.name) != kOthers.end();
}

}  // namespace

IndexBuilder::IndexBuilder(Text text) : text_(std::move(text))
{
    index_.ids_rise = true;
    index_.runs.push_back({});
}

// What was told last ends.
void IndexBuilder::end_last(uint64_t byte)
{
    // What stands behind an element belongs to it, and so does what is wrong there.
    if (damaged_ && *damaged_ < byte)
        last_.owner = kNobody;
    damaged_.reset();
    if (too_large_)
        return;
    if (index_.runs.back().owner != last_.owner)
        index_.runs.push_back({last_.owner, last_.place.byte, last_.place.line});
    if (last_.owner == kNobody)
    {
        const std::optional<std::string_view> text = text_(last_.place.byte, byte);
        index_.kept += text.value_or("");
        too_large_ = !text;
    }
    too_large_ = too_large_ || index_.kept.size() > kMostKept || index_.runs.size() > kMostRuns;
}

void IndexBuilder::begin(uint32_t owner, const reader::Place& place)
{
    if (index_.head_size == 0)
        index_.head_size = place.byte;
    const bool within = damaged_ && *damaged_ >= place.byte;
    end_last(place.byte);
    last_ = {within ? kNobody : owner, place};
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
        return last_.owner;
    const auto known = by_context_.find(reader::read_uint(element, "drawing_context"));
    return known != by_context_.end() ? known->second : kNobody;
}

// A call in another one draws anywhere. What it begins belongs to nobody, so that it is read with any part of the log.
void IndexBuilder::take_nested(const Element& call)
{
    nested_ = true;
    nested_page_ = nested_page_ || call.name == "ORV_face_start";
    if (!is_start(call))
        return;
    by_context_.erase(reader::read_uint(call, "drawing_context"));
    if (call.name == "ORV_resource_start")
        by_resource_.erase(reader::read_uint(call, "resource_id"));
}

// Of the call and of calls that stand in it.
void IndexBuilder::follow_calls(const Element& element)
{
    if (reader::is_call_name(element.name) && element.has("id"))
    {
        const uint64_t id = reader::to_uint(element.value("id"));
        index_.ids_rise = index_.ids_rise && id >= next_id_;
        next_id_ = id + 1;
    }
    for (const Element& child : reader::Children(element))
    {
        if (reader::is_call_name(child.name))
            take_nested(child);
        if (may_hold_calls(child))
            follow_calls(child);
    }
}

void IndexBuilder::add(const Element& element)
{
    nested_ = false;
    examination_.add(element);
    follow_calls(element);
    const uint32_t owner = owner_of(element);
    const bool apart = torn_ || element.implied_end || nested_;
    begin(apart ? kNobody : owner, element.place);
    torn_ = element.implied_end;
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
    index_.warnings += comment.warning ? 1 : 0;
    if (comment.inside)
        return;
    begin(comment.warning ? last_.owner : kNobody, comment.place);
}

void IndexBuilder::add(const reader::Damage& damage)
{
    if (!damaged_)
        damaged_ = damage.place.byte;
}

void IndexBuilder::finish(uint64_t text_size, const Element& root)
{
    if (index_.head_size == 0)
        index_.head_size = text_size;
    // What ends the root belongs to nobody, whatever comes before it; so does the call in which a log is cut short.
    last_.owner = kNobody;
    end_last(text_size);
    index_.text_size = text_size;
    index_.facts = replay::facts_of(examination_.finish(true, root));
    index_.has_pages = !nested_page_ && !too_large_;
}

}  // namespace orvlog::inspect
