// Jobs recorded and replayed by the programs, as a user does.

#pragma once

#include "tests/tools/run-tool.h"

#include <map>
#include <string>
#include <vector>

namespace orvlog::test
{

using Words = std::vector<std::string>;

// Runs a program in a folder.
ToolResult run_in(const std::string& folder, const Words& words);

std::string sample();
// A document of the folder shared/pdfs beside the project.

// The files right in a folder, their content by their name.
std::map<std::string, std::string> files_of(const std::string& folder);
// The files of page images, in order.
std::vector<std::string> pages_of(const std::string& folder);

// The names of the logs of kept images hold the number of the session.
std::string without_session_ids(const std::string& log);

}  // namespace orvlog::test
