#include "inspect/reduce/keep-plan.h"

#include "inspect/reduce/log-scan.h"
#include "reader/tree/element.h"
#include "reader/tree/values.h"

#include <algorithm>
#include <array>

namespace orvlog::inspect
{

namespace
{

using reader::Event;
using reader::EventKind;

uint32_t number(const Event& event, std::string_view name)
{
    return static_cast<uint32_t>(reader::to_uint(attribute(event, name)));
}

std::optional<uint32_t> number_if_there(const Event& event, std::string_view name)
{
    const std::string_view* value = find_attribute(event, name);
    return value != nullptr ? std::optional(static_cast<uint32_t>(reader::to_uint(*value))) : std::nullopt;
}

}  // namespace

CallKind call_kind(std::string_view name)
{
    static constexpr std::array<std::pair<std::string_view, CallKind>, 13> kKinds = {{
        {"ORV_document_start", CallKind::document_start},
        {"ORV_document_finish", CallKind::document_finish},
        {"ORV_resource_destroy", CallKind::resource_destroy},
        {"ORV_face_start", CallKind::face_start},
        {"ORV_resource_start", CallKind::resource_start},
        {"ORV_memory_context_start", CallKind::memory_context_start},
        {"ORV_drawing_finish", CallKind::drawing_end},
        {"ORV_drawing_discard", CallKind::drawing_end},
        {"ORV_group_start", CallKind::group_start},
        {"ORV_group_finish", CallKind::group_finish},
        {"ORV_resource_paint", CallKind::resource_paint},
        {"ORV_object_paint", CallKind::paint},
        {"ORV_object_paint_and_stroke", CallKind::paint},
    }};
    for (const auto& [known, kind] : kKinds)
        if (known == name)
            return kind;
    return CallKind::other;
}

void KeepPlan::event(const Event& event, std::string_view text)
{
    if (event.kind == EventKind::open)
    {
        ++depth_;
        if (reader::is_call_name(event.name))
            open_call(event, text);
    }
    else if (event.kind == EventKind::close && depth_ > 0)
    {
        --depth_;
        while (!levels_.empty() && levels_.back().depth > depth_)
            levels_.pop_back();
    }
}

uint64_t KeepPlan::kept() const
{
    return static_cast<uint64_t>(std::count(keep_.begin(), keep_.end(), true));
}

void KeepPlan::keep(uint64_t ordinal)
{
    if (ordinal < keep_.size())
        keep_[static_cast<size_t>(ordinal)] = true;
}

void KeepPlan::keep_drawing(uint32_t drawing)
{
    drawings_[drawing].kept = true;
}

// Something stays that is drawn now into an open drawing: so do the groups around it.
void KeepPlan::keep_in(uint32_t context)
{
    const auto known = open_drawings_.find(context);
    if (known == open_drawings_.end())
        return;
    keep_drawing(known->second.drawing);
    std::vector<Group>& groups = known->second.groups;
    for (auto group = groups.rbegin(); group != groups.rend() && !group->kept; ++group)
    {
        group->kept = true;
        keep(group->start);
        for (const uint64_t end : group->ends)
            keep(end);
    }
}

// A call that stands in another one is made from within it.
void KeepPlan::want(const Level& level)
{
    keep(level.ordinal);
    if (level.context)
        keep_in(*level.context);
}

void KeepPlan::add_content(uint32_t drawing, uint64_t ordinal)
{
    if (!content_.empty() && content_.back().drawing == drawing && content_.back().last + 1 == ordinal)
        content_.back().last = ordinal;
    else
        content_.push_back({ordinal, ordinal, drawing});
}

bool KeepPlan::is_wanted(const Event& event, CallKind kind, std::string_view text, uint64_t ordinal)
{
    CallTag tag;
    tag.ordinal = ordinal;
    tag.name = event.name;
    tag.place = event.place;
    tag.tag_byte = event.place.byte + std::min(text.find('<'), text.size());
    if (kind == CallKind::paint)
        tag.id = number_if_there(event, "id");
    if (kind == CallKind::face_start)
        tag.page = pages_ + 1;
    const auto drawing = open_drawings_.find(number(event, "drawing_context"));
    const bool drawn = drawing != open_drawings_.end() && find_attribute(event, "drawing_context") != nullptr &&
                       kind != CallKind::face_start && kind != CallKind::resource_start &&
                       kind != CallKind::memory_context_start;
    if (drawn)
        tag.page = drawing->second.page;
    if (wanted_(tag))
    {
        ++wanted_count_;
        return true;
    }
    if (!drawn || !whole_)
        return false;
    const std::vector<Group>& groups = drawing->second.groups;
    return drawing->second.whole || (!groups.empty() && groups.back().whole);
}

void KeepPlan::open_call(const Event& event, std::string_view text)
{
    const uint64_t ordinal = keep_.size();
    keep_.push_back(false);
    const CallKind kind = call_kind(event.name);
    const bool wanted = is_wanted(event, kind, text, ordinal);
    const std::optional<uint32_t> context = number_if_there(event, "drawing_context");
    if (kind == CallKind::document_start)
        start_document(event, ordinal);
    else if (kind == CallKind::face_start || kind == CallKind::resource_start || kind == CallKind::memory_context_start)
        start_drawing(event, kind, ordinal);
    levels_.push_back({ordinal, depth_, context});
    if (wanted)
        for (const Level& level : levels_)
            want(level);
    const auto drawing = context ? open_drawings_.find(*context) : open_drawings_.end();
    if (drawing != open_drawings_.end() && whole_)
        add_content(drawing->second.drawing, ordinal);
    switch (kind)
    {
    case CallKind::document_start:
        documents_.back().kept = wanted;
        documents_.back().whole = wanted && whole_;
        break;
    case CallKind::document_finish:
        if (const auto known = open_documents_.find(number(event, "document_context")); known != open_documents_.end())
        {
            documents_[known->second].end = ordinal;
            documents_[known->second].kept |= wanted;
            open_documents_.erase(known);
        }
        break;
    case CallKind::resource_destroy:
        if (const auto known = resources_.find(number(event, "resource_id")); known != resources_.end())
        {
            drawings_[known->second].destroy = ordinal;
            drawings_[known->second].kept |= wanted;
            resources_.erase(known);
        }
        break;
    case CallKind::drawing_end:
        if (context)
            end_drawing(*context, ordinal);
        break;
    case CallKind::group_start:
        if (context)
            start_group(*context, ordinal, wanted);
        break;
    case CallKind::group_finish:
        if (context)
            finish_group(event, *context, ordinal);
        break;
    case CallKind::resource_paint:
        if (context)
            paint_resource(event, *context, wanted);
        break;
    case CallKind::face_start:
    case CallKind::resource_start:
    case CallKind::memory_context_start:
        drawings_.back().kept |= wanted;
        if (context && wanted && whole_)
            open_drawings_[*context].whole = true;
        break;
    case CallKind::paint:
    case CallKind::other:
        break;
    }
}

void KeepPlan::start_document(const Event& event, uint64_t ordinal)
{
    Document document;
    document.start = ordinal;
    open_documents_[number(event, "document_context")] = static_cast<uint32_t>(documents_.size());
    documents_.push_back(document);
}

void KeepPlan::start_drawing(const Event& event, CallKind kind, uint64_t ordinal)
{
    Drawing drawing;
    drawing.start = ordinal;
    Open open;
    open.drawing = static_cast<uint32_t>(drawings_.size());
    const auto document = open_documents_.find(number(event, "document_context"));
    if (find_attribute(event, "document_context") != nullptr && document != open_documents_.end())
    {
        drawing.document = document->second;
        open.whole = documents_[document->second].whole;
    }
    const auto parent = open_drawings_.find(number(event, "parent_drawing"));
    if (find_attribute(event, "parent_drawing") != nullptr && parent != open_drawings_.end())
        drawing.parent = parent->second.drawing;
    if (kind == CallKind::face_start)
        open.page = ++pages_;
    if (kind == CallKind::resource_start)
        resources_[number(event, "resource_id")] = open.drawing;
    drawing.kept = open.whole;
    drawings_.push_back(drawing);
    open_drawings_[number(event, "drawing_context")] = std::move(open);
}

void KeepPlan::end_drawing(uint32_t context, uint64_t ordinal)
{
    const auto known = open_drawings_.find(context);
    if (known == open_drawings_.end())
        return;
    drawings_[known->second.drawing].end = ordinal;
    open_drawings_.erase(known);
}

void KeepPlan::start_group(uint32_t context, uint64_t ordinal, bool wanted)
{
    const auto known = open_drawings_.find(context);
    if (known == open_drawings_.end())
        return;
    Group group;
    group.start = ordinal;
    group.kept = wanted;
    group.whole = wanted && whole_;
    known->second.groups.push_back(std::move(group));
}

void KeepPlan::finish_group(const Event& event, uint32_t context, uint64_t ordinal)
{
    const auto known = open_drawings_.find(context);
    if (known == open_drawings_.end() || known->second.groups.empty())
        return;
    Group& group = known->second.groups.back();
    if (group.kept)
        keep(ordinal);
    if (reader::to_bool(attribute(event, "replay_group")))
        group.ends.push_back(ordinal);
    else
        known->second.groups.pop_back();
}

void KeepPlan::paint_resource(const Event& event, uint32_t context, bool wanted)
{
    const auto resource = resources_.find(number(event, "resource_id"));
    if (resource == resources_.end())
        return;
    if (wanted)
    {
        drawings_[resource->second].kept = true;
        drawings_[resource->second].filled = whole_;
    }
    const auto known = open_drawings_.find(context);
    const bool again = !painted_in_.empty() && known != open_drawings_.end() &&
                       painted_in_.back() == std::pair(known->second.drawing, resource->second);
    if (whole_ && known != open_drawings_.end() && known->second.page == 0 && !again)
        painted_in_.emplace_back(known->second.drawing, resource->second);
}

// What is painted in a drawing of which all stays stays whole itself.
void KeepPlan::fill_drawings()
{
    std::sort(painted_in_.begin(), painted_in_.end());
    std::vector<uint32_t> due;
    for (uint32_t i = 0; i < drawings_.size(); ++i)
        if (drawings_[i].filled)
            due.push_back(i);
    while (!due.empty())
    {
        const uint32_t drawing = due.back();
        due.pop_back();
        auto painted = std::lower_bound(painted_in_.begin(), painted_in_.end(), std::pair(drawing, 0U));
        for (; painted != painted_in_.end() && painted->first == drawing; ++painted)
        {
            Drawing& resource = drawings_[painted->second];
            resource.kept = true;
            if (!resource.filled)
                due.push_back(painted->second);
            resource.filled = true;
        }
    }
    for (const Run& run : content_)
        for (uint64_t i = run.first; drawings_[run.drawing].filled && i <= run.last; ++i)
            keep(i);
}

void KeepPlan::keep_starts_and_ends()
{
    // A parent comes ahead of what is in it.
    for (size_t i = drawings_.size(); i-- > 0;)
    {
        const Drawing& drawing = drawings_[i];
        if (!drawing.kept)
            continue;
        for (const uint64_t ordinal : {drawing.start, drawing.end, drawing.destroy})
            keep(ordinal);
        if (drawing.parent != kNone)
            drawings_[drawing.parent].kept = true;
        if (drawing.document != kNone)
            documents_[drawing.document].kept = true;
    }
    for (const Document& document : documents_)
    {
        if (!document.kept)
            continue;
        keep(document.start);
        keep(document.end);
    }
}

void KeepPlan::finish()
{
    fill_drawings();
    keep_starts_and_ends();
}

}  // namespace orvlog::inspect
