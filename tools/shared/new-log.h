// A log that a command makes from another one, and the files beside it.

#pragma once

#include "inspect/reduce/trimmed-text.h"
#include "tools/shared/output.h"
#include "tools/shared/source.h"

#include <filesystem>
#include <functional>
#include <istream>
#include <map>
#include <set>
#include <string>
#include <vector>

namespace orvlog::tool
{

// Files of image data are copied to beside the new log, named after it. None is overwritten; those that were made go
// unless `keep` is called.
class FilesBeside
{
public:
    FilesBeside(const std::string& new_log, const orvlog::reader::LogFiles& files);
    FilesBeside(const FilesBeside&) = delete;
    FilesBeside& operator=(const FilesBeside&) = delete;
    ~FilesBeside();

    // As TrimOptions::take_file. A file that is asked for again is copied once. Throws std::runtime_error if the file
    // can't be written.
    std::string take(const std::string& name, const std::string& kind, uint64_t number);
    void keep()
    {
        made_.clear();
    }

    std::function<void(const std::string& line)> complain;

private:
    const orvlog::reader::LogFiles& files_;
    std::filesystem::path folder_;
    std::string stem_;
    std::set<std::string> made_;
    std::map<std::string, std::string> taken_;  // what was copied, and the name that it has here
};

// Whether the two names are those of one file.
bool is_same_file(const std::string& one, const std::string& other);

// Writes all of `text` to `name`, a path or "-"; `progress` is called now and then. Nothing, or why it failed.
std::string write_new_log(std::istream& text, const std::string& name, const std::function<void()>& progress);

}  // namespace orvlog::tool
