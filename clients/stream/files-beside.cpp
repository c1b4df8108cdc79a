#include "clients/stream/files-beside.h"

#include "clients/system/system.h"

#include <cerrno>
#include <cstring>

namespace orvlog::client_stream
{

namespace
{

namespace fs = std::filesystem;

constexpr size_t kLongestPrefix = 999;  // the session keeps no more

fs::path folder_of(const std::string& log)
{
    std::error_code error;
    const fs::file_status status = fs::status(log, error);
    const fs::path present = fs::current_path(error);
    const bool no_file = fs::exists(status) && !fs::is_regular_file(status);
    return no_file ? present : (present / log).parent_path();
}

std::string trouble_with(const FilesBeside& files)
{
    const fs::path folder = (files.folder / files.prefix).parent_path();
    if (!system::can_write_in(folder))
        return folder.string() + ": " + std::strerror(errno);
    return files.prefix.size() > kLongestPrefix ? "the prefix of image files is longer than 999 bytes" : "";
}

}  // namespace

FilesBeside files_beside(const std::string& log, const std::string& prefix)
{
    FilesBeside files = {folder_of(log), prefix, {}};
    const fs::path given(prefix);
    std::error_code error;
    const fs::path present = fs::current_path(error);
    if (given.has_parent_path() && given.is_relative() && !fs::equivalent(present, files.folder, error))
    {
        const fs::path seen = fs::relative(present / given.parent_path(), files.folder, error);
        files.prefix = error ? (present / given).string() : (seen / given.filename()).lexically_normal().string();
    }
    if (!prefix.empty())
        files.trouble = trouble_with(files);
    return files;
}

}  // namespace orvlog::client_stream
