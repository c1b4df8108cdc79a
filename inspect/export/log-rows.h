// A log as rows of all tables, in one pass. Memory goes with the largest call without its bytes, and not with the log.

#pragma once

#include "inspect/export/export-job.h"
#include "inspect/export/row-writer.h"
#include "reader/text/log-files.h"

#include <cstdint>
#include <functional>
#include <istream>
#include <optional>
#include <string>

namespace orvlog::inspect
{

// What a log is, from its text: the same for one log in all its forms.
struct LogKey
{
    bool is_log = false;
    bool is_whole = false;
    std::string key;  // 32 digits of the SHA-256 of the text
    uint64_t text_bytes = 0;
};

// Reads the log from where it stands to its end.
LogKey read_log_key(std::istream& log);

enum class JobState
{
    whole,
    cut,
    damaged
};

struct RowsOutcome
{
    bool is_log = false;
    JobState state = JobState::whole;
    uint64_t damage = 0;      // places
    uint64_t text_bytes = 0;  // that were read: others than the key's where the log has changed meanwhile
};

// What is told of a log that its text doesn't tell.
struct LogOrigin
{
    std::string name;                       // of its file
    std::optional<reader::LogFiles> files;  // that it names; without them they are taken as missing
};

// `progress` is told how many bytes of the file have been used, and may be empty.
RowsOutcome write_log_rows(std::istream& log, const LogKey& key, const LogOrigin& origin, const ExportOptions& options,
                           RowWriter& rows, const std::function<void(uint64_t)>& progress);

}  // namespace orvlog::inspect
