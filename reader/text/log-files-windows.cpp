#include "reader/text/log-files.h"

#include <fstream>

namespace orvlog::reader
{

// A colon in the last name would lead to another stream of the file.
std::unique_ptr<std::istream> open_ordinary_file(const std::filesystem::path& path, std::error_code& error)
{
    const bool ordinary = std::filesystem::is_regular_file(path, error);
    if (error || !ordinary || path.filename().string().find(':') != std::string::npos)
        return nullptr;
    auto file = std::make_unique<std::ifstream>(path, std::ios::binary);
    if (*file)
        return file;
    error = std::make_error_code(std::errc::permission_denied);
    return nullptr;
}

}  // namespace orvlog::reader
