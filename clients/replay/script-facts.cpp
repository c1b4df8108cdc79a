#include "clients/replay/script-facts.h"

#include "clients/replay/script.h"
#include "reader/tree/values.h"

#include <algorithm>
#include <charconv>
#include <string_view>

namespace orvlog::replay
{

namespace
{

using reader::Children;
using reader::Element;

constexpr std::string_view kBefore = "orvlog-";
constexpr std::string_view kBehind = "-async-image-";

std::string session_of(const std::string& name)
{
    const size_t end = name.find(kBehind);
    if (!name.starts_with(kBefore) || end == std::string::npos)
        return "";
    return name.substr(kBefore.size(), end - kBefore.size());
}

}  // namespace

// Four words with the last one first, each with its highest byte first.
std::optional<std::array<uint8_t, 16>> session_number(const std::string& told)
{
    std::array<uint8_t, 16> number{};
    if (told.size() != 35)
        return std::nullopt;
    for (size_t word = 0; word < 4; ++word)
    {
        const char* from = told.data() + word * 9;
        uint32_t value = 0;
        const auto [end, error] = std::from_chars(from, from + 8, value, 16);
        if (error != std::errc{} || end != from + 8 || (word < 3 && *end != '-'))
            return std::nullopt;
        for (size_t i = 0; i < 4; ++i)
            number[(3 - word) * 4 + i] = static_cast<uint8_t>(value >> (8 * i));
    }
    return number;
}

// An engine that a call tells of.
void FactFinder::wrap(uint32_t number)
{
    Span& last = spans_.back();
    if (number < last.first_engine)
        return;
    const uint32_t missing = number - last.first_engine;
    last.engines.resize(std::min<size_t>(missing, last.contexts.size()));
    if (last.engines.empty())
        spans_.pop_back();
    spans_.push_back({number + 1, {}, {}});
}

// The one that the engine stands in, which is the last one or one with gaps.
FactFinder::Span& FactFinder::span_with(uint32_t number)
{
    const auto behind = std::ranges::upper_bound(spans_, number, {}, &Span::first_engine);
    return behind == spans_.begin() ? *behind : *std::prev(behind);
}

void FactFinder::ask(uint32_t number)
{
    Span& span = span_with(number);
    if (number < span.first_engine || number - span.first_engine >= span.contexts.size())
        return;
    const size_t place = number - span.first_engine;
    if (&span == &spans_.back() && place >= span.engines.size())
        span.engines.resize(place + 1);
    if (place >= span.engines.size())
        return;
    SilentEngine& engine = span.engines[place];
    engine.first_asked = std::min(engine.first_asked, calls_);
    engine.last_asked = std::max(engine.last_asked, calls_);
}

// Each engine to the first context behind the one before that was there whenever it was asked.
void FactFinder::settle(const Span& span)
{
    size_t next = 0;
    for (size_t i = 0; i < span.engines.size(); ++i)
    {
        const SilentEngine& engine = span.engines[i];
        const size_t last = span.contexts.size() - (span.engines.size() - i);
        size_t chosen = next;
        while (chosen < last &&
               (span.contexts[chosen].begun > engine.first_asked || span.contexts[chosen].ended < engine.last_asked))
            ++chosen;
        facts_.memory_engines[span.contexts[chosen].number] = span.first_engine + static_cast<uint32_t>(i);
        next = chosen + 1;
    }
}

void FactFinder::finish()
{
    for (const Span& span : spans_)
        settle(span);
}

void FactFinder::callback(const Element& callback)
{
    if (callback.has("GfpId"))
        ask(reader::read_uint(callback, "GfpId"));
    if (callback.name != "GOP_ImageKeepFn")
        return;
    facts_.merged |= !callback.has("async_img_log_file_name");
    if (facts_.session.empty())
        facts_.session = session_of(reader::to_text(callback.value("async_img_log_file_name")));
}

// The element of a paint stays open where the renderer could have painted and the resource isn't known to it: one that
// the client never started, or that the renderer refused.
void FactFinder::resource(const Element& call)
{
    const uint32_t number = reader::read_uint(call, "resource_id");
    if (call.name == "ORV_resource_start")
        resources_[number] = {};
    if (call.name == "ORV_resource_destroy")
        resources_.erase(number);
    if (call.name != "ORV_resource_paint")
        return;
    const uint32_t drawing = reader::read_uint(call, "drawing_context");
    const auto known = resources_.find(number);
    if (!call.implied_end && known != resources_.end())
        known->second.insert(drawing);
    else if (!call.implied_end)
        facts_.without_resource_paint.insert(drawing);
    else if (known != resources_.end())
    {
        facts_.refused_resources.insert(number);
        facts_.without_resource_paint.merge(known->second);
        resources_.erase(known);
    }
}

// What is called back while it ends stands behind the element.
void FactFinder::end_drawing(uint32_t number)
{
    const auto known = open_.find(number);
    if (known == open_.end())
        return;
    const auto [span, context] = known->second;
    open_.erase(known);
    // The span is gone if none of its contexts had an engine.
    if (span < spans_.size() && context < spans_[span].contexts.size() &&
        spans_[span].contexts[context].number == number)
        spans_[span].contexts[context].ended = calls_;
}

void FactFinder::start_memory_context(uint32_t number)
{
    open_[number] = {spans_.size() - 1, spans_.back().contexts.size()};
    spans_.back().contexts.push_back({number, calls_});
}

void FactFinder::call(const Element& call)
{
    ++calls_;
    if (call.has("GfpId"))
        wrap(reader::read_uint(call, "GfpId"));
    if (call.name == "ORV_memory_context_start")
        start_memory_context(reader::read_uint(call, "drawing_context"));
    if (call.name == "ORV_drawing_finish" || call.name == "ORV_drawing_discard")
        end_drawing(reader::read_uint(call, "drawing_context"));
    if (call.name.starts_with("ORV_resource_"))
        resource(call);
    for (const Element& child : Children(call))
        add(child);
}

void FactFinder::add(const Element& element)
{
    if (reader::is_call_name(element.name))
        return call(element);
    if (is_image_callback(element) || is_font_callback(element))
        return callback(element);
    for (const Element& child : Children(element))
        add(child);
}

}  // namespace orvlog::replay
