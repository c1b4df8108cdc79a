// A folder that is there for as long as its object, with all that is in it: files only. It goes when a signal ends the
// command, too.

#pragma once

#include <filesystem>
#include <istream>
#include <string>

namespace orvlog::tool
{

class TemporaryFolder
{
public:
    // Throws std::filesystem::filesystem_error when there can be none.
    TemporaryFolder();
    TemporaryFolder(const TemporaryFolder&) = delete;
    TemporaryFolder& operator=(const TemporaryFolder&) = delete;
    ~TemporaryFolder();

    // Path of a file in it.
    std::string path(const std::string& name) const
    {
        return (folder_ / name).string();
    }

    // Writes what is left of a stream to a file in it. False with errno set when it doesn't fit.
    bool keep(std::istream& bytes, const std::string& name) const;

private:
    std::filesystem::path folder_;
};

}  // namespace orvlog::tool
