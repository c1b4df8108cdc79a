// The records of calls as the log has them, in blocks of a report.

#pragma once

#include "inspect/report/blocks.h"

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>

namespace orvlog::inspect
{

// Where a record stands.
struct RecordPlace
{
    int64_t block = -1;  // place in the list of blocks; -1: it is left out
    uint64_t at = 0;     // the first byte in it
    uint64_t size = 0;
};

class CallRecords
{
public:
    // Behind `most_bytes` of the report, records are left out.
    CallRecords(Blocks& blocks, uint64_t most_bytes) : blocks_(blocks), most_bytes_(most_bytes) {}

    RecordPlace add(std::string_view record);

    // The names of the blocks, as JSON. Nothing is added behind this.
    std::string finish();
    uint64_t left_out() const
    {
        return left_out_;
    }

private:
    void end_block();

    Blocks& blocks_;
    uint64_t most_bytes_;
    std::unique_ptr<Deflated> block_;
    std::string list_;
    int64_t count_ = 0;
    uint64_t left_out_ = 0;
};

// The record with long runs of rows cut short, and no longer than some 64 KiB; lines in square brackets tell of it.
std::string abridged(std::string_view record);

}  // namespace orvlog::inspect
