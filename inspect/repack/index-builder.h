// What the index of a repacked log tells of its calls, gathered call by call.

#pragma once

#include "clients/replay/replay.h"
#include "reader/text/log-index.h"
#include "reader/tree/element.h"

#include <cstdint>
#include <functional>
#include <map>
#include <string_view>
#include <unordered_set>
#include <vector>

namespace orvlog::inspect
{

class IndexBuilder
{
public:
    // `text` gives what stands between two places of the log, of which the first is not before the begin of the call or
    // comment that was told last.
    explicit IndexBuilder(std::function<std::string_view(uint64_t begin, uint64_t end)> text);

    // What stands in the root, in the order of the log.
    void add(const reader::Element& element);
    void add(const reader::Comment& comment);
    // All that is missing in the index but its frames. `is_sound`: nothing is damaged or missing.
    void finish(uint64_t text_size, bool is_sound, const reader::Element& root);

    reader::LogIndex& index()
    {
        return index_;
    }
    // Whether it is a call whose text the index has.
    static bool is_kept(const reader::Element& element);

private:
    uint32_t owner_of(const reader::Element& element);
    void start_drawing(const reader::Element& element);
    void paint_resource(const reader::Element& element, uint32_t owner);
    void follow_ids(const reader::Element& element);
    void begin_run(uint32_t owner, const reader::Place& place);
    void end_kept(uint64_t byte);

    std::function<std::string_view(uint64_t begin, uint64_t end)> text_;
    reader::LogIndex index_;
    replay::Examination examination_;
    std::map<uint64_t, uint32_t> by_context_;
    std::map<uint64_t, uint32_t> by_resource_;
    std::unordered_set<uint64_t> painted_;  // the drawing, and in the low 32 bits that of a resource that it paints
    std::vector<uint32_t> with_tickets_;    // resources in which the text of a ticket stands
    uint64_t kept_to_ = 0;                  // so far the text of the present run is in the index
    uint64_t next_id_ = 0;
    bool nested_ = false;
    bool too_large_ = false;
};

}  // namespace orvlog::inspect
