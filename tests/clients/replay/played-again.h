// A log that is played once more as it was logged, and the files that jobs leave.

#pragma once

#include <map>
#include <string>

namespace orvlog::test
{

// By their names.
using Files = std::map<std::string, std::string>;
// What lies in the present folder.
Files files_here();
// The first file that isn't the same in both, with what they have of it; empty if there is none.
std::string first_other(const Files& one, const Files& other);

// The log of the replay of `log`; the files that it names lie in `folder`. Adds to `differences` what could not be made
// as it was, a line each.
std::string play_again(const std::string& log, const std::string& folder, bool side_files, std::string* differences);

// Why a job's log need not tell enough of it, as far as it shows in the log and the files beside it; empty if it
// doesn't.
std::string limit_of(const std::string& log, const Files& beside);

}  // namespace orvlog::test
