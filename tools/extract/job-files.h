// The files that a log names, as those that take it apart read them.

#pragma once

#include "reader/text/log-files.h"

#include <cstdint>
#include <istream>
#include <memory>
#include <set>
#include <string>
#include <vector>

namespace orvlog::tool
{

class JobFiles
{
public:
    explicit JobFiles(const orvlog::reader::LogFiles& files) : files_(files) {}

    // Null if it is not to be had.
    std::unique_ptr<std::istream> open(const std::string& name, orvlog::reader::LogFileKind kind);
    // At most `count` bytes of a file of image data; what there is of them.
    std::vector<uint8_t> read(const std::string& name, uint64_t begin, uint64_t count);

    // Files that were not to be had, with the reason; the first 1000.
    const std::set<std::string>& missing() const
    {
        return missing_;
    }
    // Whether some of them are not to be read.
    bool refused() const
    {
        return refused_;
    }

private:
    const orvlog::reader::LogFiles& files_;
    std::string last_name_;
    std::unique_ptr<std::istream> last_;  // null if it was not to be had
    std::set<std::string> missing_;
    bool refused_ = false;
};

}  // namespace orvlog::tool
