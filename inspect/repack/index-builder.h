// What the index of a repacked log tells of its calls, gathered call by call.

#pragma once

#include "clients/replay/replay.h"
#include "reader/text/log-index.h"
#include "reader/tree/element.h"

#include <cstdint>
#include <functional>
#include <map>
#include <optional>
#include <string_view>
#include <unordered_set>
#include <vector>

namespace orvlog::inspect
{

class IndexBuilder
{
public:
    using Text = std::function<std::optional<std::string_view>(uint64_t begin, uint64_t end)>;

    // `text` gives what stands between two places of the log, of which the first is not before the begin of the call or
    // comment that was told last; null if it is gone.
    explicit IndexBuilder(Text text);

    // What stands in the root, in the order of the log.
    void add(const reader::Element& element);
    void add(const reader::Comment& comment);
    void add(const reader::Damage& damage);
    // All that is missing in the index but its frames.
    void finish(uint64_t text_size, const reader::Element& root);

    reader::LogIndex& index()
    {
        return index_;
    }
    // Whether the index has the text of what was told last.
    bool keeps_last() const
    {
        return last_.owner == reader::kNobody;
    }

private:
    uint32_t owner_of(const reader::Element& element);
    void start_drawing(const reader::Element& element);
    void paint_resource(const reader::Element& element, uint32_t owner);
    void follow_calls(const reader::Element& element);
    void take_nested(const reader::Element& call);
    void end_last(uint64_t byte);
    void begin(uint32_t owner, const reader::Place& place);

    // What was told last, up to what comes next.
    struct Part
    {
        uint32_t owner = reader::kNobody;
        reader::Place place;
    };

    Text text_;
    reader::LogIndex index_;
    replay::Examination examination_;
    std::map<uint64_t, uint32_t> by_context_;
    std::map<uint64_t, uint32_t> by_resource_;
    std::unordered_set<uint64_t> painted_;  // the drawing, and in the low 32 bits that of a resource that it paints
    std::vector<uint32_t> with_tickets_;    // resources in which the text of a ticket stands
    Part last_;
    std::optional<uint64_t> damaged_;  // the first place in what isn't dealt with yet
    bool torn_ = false;                // the last element ended with the next one's begin
    uint64_t next_id_ = 0;
    bool nested_ = false;       // in the last element
    bool nested_page_ = false;  // in any
    bool too_large_ = false;
};

}  // namespace orvlog::inspect
