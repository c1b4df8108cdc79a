// The files that lie beside a log: the data of its images and the logs of kept images.

#pragma once

#include <filesystem>
#include <istream>
#include <memory>
#include <string>

namespace orvlog::reader
{

// The folder in which the files of a log lie, by the path of the log: empty for one of the current folder, "." for
// "-", which is the standard input.
std::filesystem::path folder_of_log(const std::string& log);

// The file that the log knows by this name, in its folder; a name with folders is looked for without them, too.
// Null if there is none.
std::unique_ptr<std::istream> open_beside(const std::filesystem::path& folder, const std::string& name);

// Opens a log. Where a journal lies beside it, the file ends in what the journal holds, as a frame. Null with errno set
// if it can't be opened; `*foreign_journal` says that what lies there doesn't belong to this log.
std::unique_ptr<std::istream> open_log(const std::string& log, bool* foreign_journal = nullptr);

}  // namespace orvlog::reader
