// A report, from its logs to its file.

#pragma once

#include "tools/report/reported-log.h"

#include <string>
#include <vector>

namespace orvlog::tool
{

// Of one log or of two. What goes wrong, and what the report lacks, is said in lines; gives the exit status.
int make_report(const std::vector<std::string>& logs, const std::string& output, const ReportSettings& settings);

}  // namespace orvlog::tool
