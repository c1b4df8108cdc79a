// SPDX-License-Identifier: GPL-2.0-or-later
//
// The file of the log and the files beside it: before the job, and after it.

#pragma once

#include "clients/pdf/job/job-state.h"
#include "clients/pdf/logged-interface.h"
#include "clients/stream/files-beside.h"
#include "clients/stream/log-file.h"

#include <filesystem>
#include <memory>

namespace pdf_client
{

// The log, opened, and where the files beside it go.
struct OpenLog
{
    std::unique_ptr<client_stream::LogFile> file;
    client_stream::FilesBeside beside;
};

// Without a file, and with an error in the result, where a log can't be written; a log of before has then stayed.
OpenLog open_log(JobState& state);

// Merges a temporary log, closes the log, and says of each file what of it isn't there. The logger has been shut down;
// `from` is the folder that the log's name starts from.
void finish_log(JobState& state, const LoggedInterface& logger, client_stream::LogFile& log,
                const std::filesystem::path& from);

}  // namespace pdf_client
