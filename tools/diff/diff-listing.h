// What `orvlog diff` writes of the calls of two logs.

#pragma once

#include "inspect/align/log-alignment.h"
#include "reader/look/call-summary.h"

#include <nlohmann/json.hpp>

#include <cstdint>
#include <deque>
#include <string>
#include <vector>

namespace orvlog::tool
{

struct ListingOptions
{
    bool json = false;
    bool all = false;      // each difference of a call, however many there are
    unsigned context = 0;  // equal calls before and behind others
};

struct StepCounts
{
    uint64_t same = 0;
    uint64_t changed = 0;
    uint64_t missing = 0;
    uint64_t added = 0;
    uint64_t moved = 0;

    bool any() const
    {
        return changed + missing + added + moved > 0;
    }
};

// Writes to the standard output as the steps come.
class DiffListing
{
public:
    explicit DiffListing(const ListingOptions& options) : options_(options) {}

    // False once nothing can be written.
    bool add(const orvlog::inspect::Step& step);
    void add_roots(const std::vector<orvlog::inspect::Difference>& roots);
    // The counts; of JSON the rest of the object, with what was found of the pages if they were compared.
    void finish(const nlohmann::ordered_json* pages);

    const StepCounts& counts() const
    {
        return counts_;
    }
    bool differs() const
    {
        return counts_.any() || roots_differ_;
    }

private:
    struct Call
    {
        std::string address;
        std::string kind;
        uint32_t page = 0;
    };

    static Call look(const orvlog::reader::Element* call, orvlog::reader::CallSummaries& summaries);
    bool count(const orvlog::inspect::Step& step);
    bool write(const orvlog::inspect::Step& step, const Call& a, const Call& b);
    bool write_json(const orvlog::inspect::Step& step, const Call& a, const Call& b);
    bool write_line(const Call& a, const Call& b, const std::string& what);
    bool write_context(std::string line);

    ListingOptions options_;
    orvlog::reader::CallSummaries calls_a_;
    orvlog::reader::CallSummaries calls_b_;
    StepCounts counts_;
    std::deque<std::string> before_;
    unsigned behind_ = 0;  // equal calls that are still to be written
    bool first_ = true;
    bool roots_differ_ = false;
};

// "GOP_Operator op_Operator: 3 -> 12", "img_buf/BufferUInt8 at 7: 00 -> 02, 2 differ" and the like.
std::string difference_text(const orvlog::inspect::Difference& difference);

}  // namespace orvlog::tool
