// The option --files-from, of the commands that read the files that a log names.

#pragma once

#include <CLI/CLI.hpp>

#include <string>
#include <vector>

namespace orvlog::tool
{

// `folders` takes what is given, in its order.
void add_files_from(CLI::App& app, std::vector<std::string>& folders);

}  // namespace orvlog::tool
