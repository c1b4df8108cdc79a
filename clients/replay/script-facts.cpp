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

// Numbers that are passed over are those of memory contexts, which don't tell theirs.
void FactFinder::engine(const Element& element, bool wrapped_now)
{
    if (!element.has("GfpId"))
        return;
    const uint32_t number = reader::read_uint(element, "GfpId");
    const uint32_t end = wrapped_now ? number : number + 1;
    while (next_engine_ < end && !memory_contexts_.empty())
    {
        // One that is asked is open. Those before it, which are not, had none.
        const bool asked = !wrapped_now && next_engine_ == number;
        const auto open = std::ranges::find(memory_contexts_, true, &MemoryContext::open);
        const auto chosen = !asked || open == memory_contexts_.end() ? memory_contexts_.begin() : open;
        facts_.memory_engines[chosen->number] = next_engine_++;
        memory_contexts_.erase(memory_contexts_.begin(), chosen + 1);
    }
    if (!wrapped_now)
        return correct(number);
    next_engine_ = number + 1;
    memory_contexts_.clear();
}

// An engine that is asked behind the end of the memory context that it was taken to have come with is that of a later
// one.
void FactFinder::correct(uint32_t number)
{
    const auto owner =
        std::ranges::find(facts_.memory_engines, number, [](const auto& engine) { return engine.second; });
    if (owner == facts_.memory_engines.end() || !ended_.contains(owner->first))
        return;
    const auto open = std::ranges::find(memory_contexts_, true, &MemoryContext::open);
    if (open == memory_contexts_.end())
        return;
    facts_.memory_engines.erase(owner);
    facts_.memory_engines[open->number] = number;
    memory_contexts_.erase(memory_contexts_.begin(), open + 1);
}

void FactFinder::callback(const Element& callback)
{
    engine(callback, false);
    if (callback.name != "GOP_ImageKeepFn")
        return;
    facts_.merged |= !callback.has("async_img_log_file_name");
    if (facts_.session.empty())
        facts_.session = session_of(reader::to_text(callback.value("async_img_log_file_name")));
}

// The element of a paint stays open where the renderer could have painted and the resource isn't known to it.
void FactFinder::resource(const Element& call)
{
    const uint32_t number = reader::read_uint(call, "resource_id");
    if (call.name == "ORV_resource_start")
        resources_.insert(number);
    else if (call.name == "ORV_resource_destroy")
        resources_.erase(number);
    else if (call.implied_end && resources_.erase(number) != 0)
        facts_.refused_resources.insert(number);
    else if (!call.implied_end && !resources_.contains(number))
        facts_.without_resource_paint.insert(reader::read_uint(call, "drawing_context"));
}

void FactFinder::end_drawing(uint32_t number)
{
    for (MemoryContext& context : memory_contexts_)
        context.open &= context.number != number;
    if (facts_.memory_engines.contains(number))
        ended_.insert(number);
}

void FactFinder::call(const Element& call)
{
    engine(call, true);
    if (call.name == "ORV_memory_context_start")
        memory_contexts_.push_back({reader::read_uint(call, "drawing_context"), true});
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
