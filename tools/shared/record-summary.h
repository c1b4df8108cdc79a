// The summary of a recorded job, which orvlog-record leaves as a JSON file for whoever started it.

#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace orvlog::tool
{

struct RecordSummary
{
    std::vector<std::pair<std::string, uint64_t>> calls;  // name of the call and how often it was made
    std::optional<uint64_t> pages;
    std::optional<uint64_t> page_images;  // files of pages that were written, all of them whole
    std::string log;                      // name of the log file
    std::optional<uint64_t> log_bytes;
    std::optional<double> seconds;            // the job with the logger
    std::optional<double> processor_seconds;  // of these, what the processor was used
    std::optional<double> seconds_without_logger;
    std::optional<double> processor_seconds_without_logger;
    std::optional<uint64_t> pages_compared;  // by --check: pages drawn with and without the logger
    std::optional<uint64_t> pixels_different;
};

// Reads a summary file. What the file doesn't hold stays empty; nothing at all when it is no JSON object.
std::optional<RecordSummary> read_record_summary(const std::string& file);

// The summary as the text that `orvlog record` prints: a table of calls, the most frequent first, then what
// else is known, a line each.
std::string format_record_summary(const RecordSummary& summary);

}  // namespace orvlog::tool
