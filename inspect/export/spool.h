// A folder into which jobs leave their logs, looked through again and again: which of them are finished and haven't
// been exported.
//
// A log is finished when its root element is closed and its file has been at rest for a moment, since comments may
// follow; or when it has been at rest for so long that its job can't go on, and then it is cut short. The folder is
// anybody's: what is no ordinary file isn't opened, links aren't followed, and files come and go.

#pragma once

#include "inspect/export/export-run.h"
#include "inspect/export/table-folder.h"

#include <chrono>
#include <cstdint>
#include <filesystem>
#include <string>
#include <vector>

namespace orvlog::inspect
{

struct SpoolOptions
{
    double rest_seconds = 1;     // of a log that is closed
    double settle_seconds = 60;  // of one that isn't
};

// A file of the folder that may be a log.
struct SpoolLog
{
    std::string name;  // without the folder
    uint64_t size = 0;
    int64_t changed = 0;      // as the file system counts time
    bool may_be_cut = false;  // at rest for as long as a log needs that is cut short
};

struct SpoolView
{
    std::vector<SpoolLog> logs;         // at rest, and not dealt with, by name
    uint64_t moving = 0;                // that aren't at rest
    std::vector<std::string> journals;  // logs at rest whose job has left a journal beside them
};

class Spool
{
public:
    // Remembers in the ledger of `folder` which files were dealt with. Throws DatabaseError, and
    // std::filesystem::filesystem_error if the spool isn't a folder.
    Spool(const std::filesystem::path& spool, TableFolder& folder, const SpoolOptions& options);

    // Throws std::filesystem::filesystem_error if the folder can't be read.
    SpoolView look() const;
    ExportInput input_of(const SpoolLog& log) const;

    // They aren't looked at again before they change.
    void note(const std::vector<SpoolLog>& logs);
    // Files that are gone are forgotten.
    void forget_gone();

private:
    bool is_noted(const SpoolLog& log) const;
    void add(const std::filesystem::directory_entry& entry, std::filesystem::file_time_type now, SpoolView& view) const;

    std::filesystem::path spool_;
    TableFolder& folder_;
    SpoolOptions options_;
};

}  // namespace orvlog::inspect
