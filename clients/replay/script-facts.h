// What has to be known of a whole log before its calls can be made as they were.

#pragma once

#include "reader/tree/element.h"

#include <array>
#include <cstdint>
#include <map>
#include <optional>
#include <set>
#include <string>
#include <utility>
#include <vector>

namespace orvlog::replay
{

struct ScriptFacts
{
    // The number of the session, as the names of the logs of kept images tell it: the part "S" of
    // "orvlog-S-async-image-N.tmp". Empty if the log names none.
    std::string session;
    bool merged = false;  // the logs of kept images have been put in
    // Drawings in which the renderer had no ORV_resource_paint.
    std::set<uint32_t> without_resource_paint;
    // Resources that the renderer didn't open.
    std::set<uint32_t> refused_resources;
    // The numbers of the font engines that came with memory contexts, by the drawing's.
    std::map<uint32_t, uint32_t> memory_engines;
};

// The sixteen bytes that a name tells as "e56b00c2-3c37c89d-471dbc71-4ce2f506"; nothing for other texts.
std::optional<std::array<uint8_t, 16>> session_number(const std::string& told);

// Reads the facts off the calls of a log, from the first to the last.
class FactFinder
{
public:
    explicit FactFinder(ScriptFacts& facts) : facts_(facts) {}

    // Each element of the root.
    void add(const reader::Element& element);
    // Behind the last one: finds which memory contexts came with a font engine.
    void finish();

private:
    // A memory context, and from which to which call it was there. Calls are counted from 1.
    struct MemoryContext
    {
        uint32_t number = 0;
        uint64_t begun = 0;
        uint64_t ended = UINT64_MAX;
    };
    // A font engine that came with none of the calls which tell theirs, and between which calls it was asked; none if
    // it never was.
    struct SilentEngine
    {
        uint64_t first_asked = UINT64_MAX;
        uint64_t last_asked = 0;
    };
    // What began between two engines whose calls tell of them. The numbers that are missing there are those of memory
    // contexts, in their order.
    struct Span
    {
        uint32_t first_engine = 0;
        std::vector<MemoryContext> contexts;
        std::vector<SilentEngine> engines;
    };

    void call(const reader::Element& call);
    void callback(const reader::Element& callback);
    void wrap(uint32_t number);
    void ask(uint32_t number);
    Span& span_with(uint32_t number);
    void start_memory_context(uint32_t number);
    void end_drawing(uint32_t number);
    void resource(const reader::Element& call);
    void settle(const Span& span);

    ScriptFacts& facts_;
    // Resources that have been started and not been destroyed, and the drawings that they were painted on in an element
    // that has an end.
    std::map<uint32_t, std::set<uint32_t>> resources_;
    uint64_t calls_ = 0;
    std::vector<Span> spans_{Span{}};  // those with engines that no call tells of, and the present one
    // The memory contexts that are there, by the drawing's number: which span and which of its contexts.
    std::map<uint32_t, std::pair<size_t, size_t>> open_;
};

}  // namespace orvlog::replay
