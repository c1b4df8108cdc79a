// Two logs in a report: which calls are the same, and where pages differ.

#pragma once

#include "inspect/align/log-alignment.h"
#include "inspect/pixels/pixel-diff.h"
#include "inspect/report/blocks.h"
#include "inspect/report/columns.h"
#include "tools/report/reported-log.h"

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

namespace orvlog::tool
{

class ReportCompare
{
public:
    // Of both logs the blocks have been added.
    ReportCompare(ReportedLog& a, ReportedLog& b, const ReportSettings& settings);

    // False with the line of reason in why(), where there is no room for temporary files.
    bool add(orvlog::inspect::Blocks& blocks);
    const std::string& why() const
    {
        return why_;
    }
    // The object `compare`.
    std::string json() const;

private:
    bool align(orvlog::inspect::Blocks& blocks);
    bool compare_pages(orvlog::inspect::Blocks& blocks);
    void add_step(orvlog::inspect::Blocks& blocks, const orvlog::inspect::Step& step);
    void number(const orvlog::inspect::Step& step);
    void end_block(orvlog::inspect::Blocks& blocks);
    void add_page(orvlog::inspect::Blocks& blocks, const orvlog::inspect::PageDifference& page);
    void add_same_pages(uint32_t up_to);

    ReportedLog& a_;
    ReportedLog& b_;
    const ReportSettings& settings_;
    std::string why_;
    std::unique_ptr<orvlog::inspect::Columns> rows_;
    uint64_t row_ = 0;        // steps so far
    uint64_t first_row_ = 0;  // of the block
    uint64_t counts_[4] = {};
    uint64_t differences_ = 0;
    std::string blocks_;
    std::string roots_ = "[]";
    std::string pages_;
    uint32_t pages_told_ = 0;
    std::string note_;
    orvlog::inspect::NumberFile numbers_a_;
    orvlog::inspect::NumberFile numbers_b_;
};

}  // namespace orvlog::tool
