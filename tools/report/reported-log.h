// A log as a report has it.

#pragma once

#include "clients/command-line/number-range.h"
#include "clients/replay/replay.h"
#include "inspect/report/blocks.h"
#include "inspect/report/call-list.h"
#include "inspect/report/page-recorder.h"
#include "reader/look/log-info.h"
#include "reader/text/log-files.h"
#include "tools/shared/log-again.h"

#include <cstdint>
#include <memory>
#include <set>
#include <string>
#include <vector>

namespace orvlog::tool
{

struct ReportSettings
{
    std::vector<std::string> folders;              // with files that the log names
    std::vector<command_line::NumberRange> pages;  // empty: all
    bool steps = true;
};

class ReportedLog
{
public:
    ReportedLog(std::string name, const ReportSettings& settings);

    // False with the line of reason in why(): it can't be read, is no log, or has none of the pages.
    bool open();
    const std::string& why() const
    {
        return why_;
    }
    // Writes its blocks. False if the log can't be read again.
    bool add(orvlog::inspect::Blocks& blocks);
    // Its object in the index.
    std::string json() const;

    // The file's name without its folder.
    std::string title() const;
    const std::string& name() const
    {
        return name_;
    }
    const orvlog::inspect::CallPlaces& places() const
    {
        return list_->places();
    }
    LogAgain& log()
    {
        return log_;
    }
    const orvlog::replay::LogKind& kind() const
    {
        return kind_;
    }
    bool wants(uint32_t page) const;
    // Lines that tell why the report hasn't all of the job; none if it has.
    std::vector<std::string> lacks() const;

private:
    void complain(const std::string& line);
    void read_info();
    bool read_calls(orvlog::inspect::Blocks& blocks);
    void draw_pages(orvlog::inspect::Blocks& blocks);
    void note(const std::string& line);
    std::string pages_json() const;
    std::string figures_json() const;
    std::string head_json() const;

    std::string name_;
    const ReportSettings& settings_;
    LogAgain log_;
    orvlog::reader::LogFiles files_;
    orvlog::replay::LogKind kind_;
    orvlog::reader::LogInfo info_;
    std::string hash_;
    std::string why_;
    std::unique_ptr<orvlog::inspect::CallList> list_;
    orvlog::inspect::RecordedPages pages_;
    std::string objects_;
    int64_t in_flight_ = -1;  // its place
    std::vector<std::string> notes_;
    std::set<std::string> noted_;
};

}  // namespace orvlog::tool
