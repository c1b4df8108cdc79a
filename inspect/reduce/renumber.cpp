#include "inspect/reduce/renumber.h"

#include "inspect/reduce/keep-plan.h"
#include "inspect/reduce/log-scan.h"
#include "reader/tree/element.h"
#include "reader/tree/values.h"

#include <algorithm>

namespace orvlog::inspect
{

namespace
{

using reader::Event;

constexpr size_t kMostOthers = 1 << 16;  // only logs that are none have so many

uint32_t number(const Event& event, std::string_view name)
{
    return static_cast<uint32_t>(reader::to_uint(attribute(event, name)));
}

bool has(const Event& event, std::string_view name)
{
    return find_attribute(event, name) != nullptr;
}

}  // namespace

void NumberMap::set(uint32_t number, uint32_t stands)
{
    if (rising_.empty() || rising_.back().first < number)
    {
        rising_.emplace_back(number, stands);
        return;
    }
    const auto known = std::lower_bound(rising_.begin(), rising_.end(), std::pair(number, 0U));
    if (known != rising_.end() && known->first == number)
        known->second = stands;
    else if (others_.size() < kMostOthers)
        others_[number] = stands;
}

std::optional<uint32_t> NumberMap::find(uint32_t number) const
{
    const auto known = std::lower_bound(rising_.begin(), rising_.end(), std::pair(number, 0U));
    if (known != rising_.end() && known->first == number)
        return known->second;
    const auto other = others_.find(number);
    return other != others_.end() ? std::optional(other->second) : std::nullopt;
}

std::optional<std::pair<uint32_t, uint32_t>> NumberMap::at_or_below(uint32_t number) const
{
    const auto behind = std::upper_bound(rising_.begin(), rising_.end(), std::pair(number, UINT32_MAX));
    return behind != rising_.begin() ? std::optional(*std::prev(behind)) : std::nullopt;
}

void NumberMap::clear()
{
    rising_.clear();
    others_.clear();
}

void Renumber::reference(const Event& event, const char* name, const NumberMap& numbers, TagEdit& tag) const
{
    const std::optional<uint32_t> known = numbers.find(number(event, name));
    if (has(event, name) && known)
        tag.set(name, *known);
}

void Renumber::start(const Event& event, const char* name, NumberMap& numbers, uint32_t& next, TagEdit& tag)
{
    if (!has(event, name))
        return;
    numbers.set(number(event, name), next);
    tag.set(name, next++);
}

void Renumber::call(const Event& event, TagEdit& tag)
{
    const CallKind kind = call_kind(event.name);
    const bool starts_drawing =
        kind == CallKind::face_start || kind == CallKind::resource_start || kind == CallKind::memory_context_start;
    if (kind == CallKind::document_start)
        start(event, "document_context", documents_, next_document_, tag);
    else
        reference(event, "document_context", documents_, tag);
    reference(event, "parent_drawing", drawings_, tag);
    if (starts_drawing)
        start(event, "drawing_context", drawings_, next_drawing_, tag);
    else
        reference(event, "drawing_context", drawings_, tag);
    if (kind == CallKind::resource_start)
        start(event, "resource_id", resources_, next_resource_, tag);
    else
        reference(event, "resource_id", resources_, tag);
    if (kind == CallKind::paint)
        tag.set("id", next_paint_++);
    hidden_engines_ += kind == CallKind::memory_context_start ? 1 : 0;
    if (has(event, "GfpId"))
        engine(event, tag);
}

// Numbers that are passed over in the log are those of memory contexts.
void Renumber::engine(const Event& event, TagEdit& tag)
{
    const uint32_t before = number(event, "GfpId");
    const uint32_t gap = before - std::min(before, next_engine_before_);
    next_engine_ += std::min(gap, hidden_engines_);
    hidden_engines_ = 0;
    next_engine_before_ = before + 1;
    engines_.set(before, next_engine_);
    tag.set("GfpId", next_engine_++);
}

// An engine that a memory context has brought stands nowhere but in its callbacks.
void Renumber::engine_of_callback(const Event& event, TagEdit& tag)
{
    const uint32_t before = number(event, "GfpId");
    if (!engines_.find(before))
    {
        next_engine_before_ = std::max(next_engine_before_, before + 1);
        engines_.set(before, next_engine_++);
        hidden_engines_ -= std::min(hidden_engines_, 1U);
    }
    tag.set("GfpId", engines_.find(before).value_or(before));
}

Renumber::Image Renumber::image(uint32_t id) const
{
    const auto known = images_.at_or_below(id);
    return known && id != 0 ? Image{known->first, known->second} : Image{};
}

void Renumber::image_number(const Event& event, bool is_operand, TagEdit& tag)
{
    const uint32_t id = number(event, "Id");
    if (id == 0 || !has(event, "Id"))
        return;
    if (is_operand)
    {
        last_image_ += 10;
        images_.set(id, last_image_);
    }
    if (const Image known = image(id); known.now != 0)
        tag.set("Id", uint64_t{known.now} + (id - known.before));
}

void Renumber::text_ids(const Event& event, TagEdit& tag)
{
    const auto one = [&](const char* name, NumberMap& known, uint32_t& next)
    {
        if (!has(event, name))
            return;
        const uint32_t before = number(event, name);
        if (!known.find(before))
            known.set(before, next++);
        tag.set(name, known.find(before).value_or(before));
    };
    one("orvlog_font_spec_id", fonts_, next_font_);
    one("orvlog_string_desc_id", strings_, next_string_);
}

void Renumber::keep(const Event& event, bool in_callback, TagEdit& tag)
{
    const std::string_view name = event.name;
    if (reader::is_call_name(name))
        call(event, tag);
    else if (name == "GCM_ColorTicket")
    {
        const uint32_t id = number(event, "id");
        if (id != 0 && !tickets_.find(id))
            tickets_.set(id, next_ticket_++);
        if (id != 0)
            tag.set("id", tickets_.find(id).value_or(id));
    }
    else if (name == "GOP_OperandImagePointer")
        image_number(event, !in_callback, tag);
    else if (name.starts_with("GOP_Image"))
        image_number(event, false, tag);
    else if (name == "GSH_ShapePointer.sp_U.glyph")
        text_ids(event, tag);
    else if (name.starts_with("GFI_") && is_callback_name(name))
    {
        engine_of_callback(event, tag);
        text_ids(event, tag);
    }
}

void Renumber::leave_out(const Event& event, bool in_callback)
{
    if (event.name == "GOP_OperandImagePointer" && !in_callback && number(event, "Id") != 0)
        images_.set(number(event, "Id"), 0);
    else if (reader::is_call_name(event.name) && has(event, "GfpId"))
        next_engine_before_ = number(event, "GfpId") + 1;
}

// What the logger remembers of texts is forgotten behind these.
void Renumber::end_call(std::string_view name)
{
    const CallKind kind = call_kind(name);
    if (kind == CallKind::paint || kind == CallKind::resource_paint || kind == CallKind::group_finish ||
        kind == CallKind::face_start)
    {
        fonts_.clear();
        strings_.clear();
    }
}

}  // namespace orvlog::inspect
