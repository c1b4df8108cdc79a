// Logs into tables, some of them side by side, in the order in which they are named.

#pragma once

#include "inspect/export/log-rows.h"
#include "inspect/export/table-store.h"

#include <cstdint>
#include <functional>
#include <istream>
#include <memory>
#include <string>
#include <vector>

namespace orvlog::inspect
{

// A log to be exported.
struct ExportInput
{
    LogOrigin origin;
    // The log from its beginning, twice; null with the reason in `why`. Called by any thread, one at a time for a log.
    std::function<std::unique_ptr<std::istream>(std::string& why)> open;
    bool may_be_cut = true;  // otherwise it is left when it isn't whole
};

struct ExportResult
{
    enum class Kind
    {
        added,
        known,  // it was there already
        no_log,
        failed,     // for the reason in `why`
        changed,    // while it was read
        unfinished  // it isn't whole, and may not be cut
    };

    Kind kind = Kind::failed;
    std::string why;
    std::string key;
    JobState state = JobState::whole;
    uint64_t damage = 0;
    uint64_t rows = 0;  // that were added
};

struct ExportPlan
{
    ExportOptions options;
    unsigned threads = 1;
    // Told of each log in the order of the inputs. False ends the run.
    std::function<bool(size_t input, const ExportResult& result)> on_result;
};

// Memory goes with the threads and with the largest call of a log, not with logs and their number. Throws what the
// store throws.
void run_export(const std::vector<ExportInput>& inputs, TableStore& store, const ExportPlan& plan);

}  // namespace orvlog::inspect
