#include "inspect/align/temporary-file.h"

#include <unistd.h>

#include <cstdlib>
#include <filesystem>
#include <string>
#include <system_error>

namespace orvlog::inspect
{

FilePtr make_temporary_file()
{
    std::error_code none;
    std::string name = (std::filesystem::temp_directory_path(none) / "orvlog-XXXXXX").string();
    const int file = none ? -1 : mkstemp(name.data());
    if (file < 0)
        return nullptr;
    unlink(name.c_str());
    FilePtr opened(fdopen(file, "w+b"));
    if (opened == nullptr)
        close(file);
    return opened;
}

}  // namespace orvlog::inspect
