// The calls of a log as a report lists them.

#pragma once

#include "inspect/report/blocks.h"
#include "inspect/report/call-places.h"
#include "inspect/report/call-record.h"
#include "inspect/report/call-tree.h"
#include "inspect/report/columns.h"
#include "reader/look/call-summary.h"
#include "reader/tree/element.h"

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

namespace orvlog::inspect
{

struct CallListOptions
{
    uint64_t most_calls = 0;
    uint64_t most_bytes = 0;                    // of the report: behind them records are left out, then outlines
    std::function<bool(uint32_t page)> wanted;  // calls of other pages are left out; 0 is asked for, too
    // The places of the objects that a call uses.
    std::function<std::vector<int64_t>(const reader::Element& call, int64_t place)> objects;
};

class CallList
{
public:
    CallList(Blocks& blocks, CallListOptions options);

    // The calls of the log in its order, with the text of each.
    void add(const reader::Element& call, std::string_view record);
    // A warning of the logger's, in the call that is added next or behind the one that was added last.
    void warn(const reader::Comment& comment);
    // No call is added behind this.
    void finish();

    const CallPlaces& places() const
    {
        return places_;
    }
    // As JSON: the object `calls`, the list of blocks with records.
    const std::string& calls_json() const
    {
        return calls_;
    }
    const std::string& texts_json() const
    {
        return texts_;
    }
    uint64_t calls() const
    {
        return all_;
    }
    uint64_t records_left_out() const
    {
        return records_.left_out();
    }
    uint32_t pages() const
    {
        return summaries_.pages();
    }

private:
    // What is told of a call once the next one is there.
    struct Row
    {
        std::string address;
        reader::Place place;
        int64_t kind = 0;
        uint32_t page = 0;
        int64_t parent = -1;
        std::string op;
        std::string paint;
        std::string text;
        int64_t colour = -1;
        std::optional<GGO_BoxFloat> box;
        std::optional<GGO_BoxFloat> clip;
        int64_t clips = 0;
        std::vector<std::string> warnings;
        std::vector<int64_t> objects;
        RecordPlace record;
        uint64_t whole = 0;
        std::string shape{"0"};  // as JSON
        std::string outline_of_clips{"0"};
    };

    Row row_of(const reader::Element& call, const reader::CallSummary& summary, const GGO_Matrix* around);
    void add_outlines(const reader::Element& call, const GGO_Matrix* around, Row& row);
    std::string outline_places(const std::vector<struct Outline>& outlines);
    void end_row();
    void add_values(const Row& row);
    void begin_block();
    void end_block();

    Blocks& blocks_;
    CallListOptions options_;
    CallRecords records_;
    CallPlaces places_;
    CallTree tree_;
    reader::CallSummaries summaries_;
    std::unique_ptr<Columns> list_;
    std::unique_ptr<Columns> shapes_;
    std::string outlines_;
    std::unordered_map<std::string, int64_t> outline_places_;
    std::optional<Row> row_;
    std::vector<std::string> inside_;  // warnings of the call that comes next
    uint64_t first_ = 0;               // of the block
    uint64_t all_ = 0;
    std::string blocks_json_;
    std::string calls_;
    std::string texts_;
};

}  // namespace orvlog::inspect
