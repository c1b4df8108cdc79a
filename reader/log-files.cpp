#include "reader/log-files.h"

#include <fstream>
#include <system_error>

namespace orvlog::reader
{

std::filesystem::path folder_of_log(const std::string& log)
{
    return log == "-" ? std::filesystem::path(".") : std::filesystem::path(log).parent_path();
}

std::unique_ptr<std::istream> open_beside(const std::filesystem::path& folder, const std::string& name)
{
    const size_t last = name.find_last_of("/\\");
    for (const std::string& one : {name, name.substr(last == std::string::npos ? 0 : last + 1)})
    {
        std::error_code none;
        if (one.empty() || one.find('\0') != std::string::npos || !std::filesystem::is_regular_file(folder / one, none))
            continue;
        auto file = std::make_unique<std::ifstream>(folder / one, std::ios::binary);
        if (*file)
            return file;
    }
    return nullptr;
}

}  // namespace orvlog::reader
