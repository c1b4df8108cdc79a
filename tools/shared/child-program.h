// Programs of the project that a command runs, each in a process of its own.

#pragma once

#include <string>
#include <vector>

namespace orvlog::tool
{

// The path that this program was started by, for a system without /proc, as one in an empty folder may be; empty where
// the system doesn't tell.
const char* name_of_start();

// The path of a program that belongs to `orvlog`; empty when there is none. Looked for in this order: the
// folder that the environment variable ORVLOG_EXEC_PATH names, the folder of this executable, `build_folder`
// beside it (where the build tree has the program), libexec/orvlog beside that folder, the folders of PATH.
std::string find_program(const std::string& name, const std::string& build_folder);

// Runs a program with the standard streams of this process, and waits for it. Gives its exit status, or
// EXIT_SIGNAL plus the signal that ended it, or -1 with errno set when it could not be started. Signals are passed on
// to it, see signals.h.
int run_program(const std::string& path, const std::vector<std::string>& arguments);

}  // namespace orvlog::tool
