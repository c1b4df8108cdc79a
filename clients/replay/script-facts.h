// What has to be known of a whole log before its calls can be made as they were.

#pragma once

#include "reader/tree/element.h"

#include <array>
#include <cstdint>
#include <map>
#include <optional>
#include <set>
#include <string>
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

private:
    void call(const reader::Element& call);
    void callback(const reader::Element& callback);
    void engine(const reader::Element& element, bool wrapped_now);
    void correct(uint32_t number);
    void end_drawing(uint32_t number);
    void resource(const reader::Element& call);

    ScriptFacts& facts_;
    std::set<uint32_t> resources_;  // that have been started and not been destroyed
    struct MemoryContext
    {
        uint32_t number;
        bool open;
    };
    std::vector<MemoryContext> memory_contexts_;  // of which it's not yet known whether they had an engine
    std::set<uint32_t> ended_;                    // drawings, of those that have come with such an engine
    uint32_t next_engine_ = 0;
};

}  // namespace orvlog::replay
