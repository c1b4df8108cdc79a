#include "clients/renderer-library/loaded-file.h"

#include <windows.h>

#include <filesystem>
#include <system_error>

namespace orvlog::renderer_library
{

namespace
{

// Without the end of line that the system puts behind it.
std::string system_text(DWORD error)
{
    std::string text = std::system_category().message(static_cast<int>(error));
    while (!text.empty() && (text.back() == '\n' || text.back() == '\r' || text.back() == ' ' || text.back() == '.'))
        text.pop_back();
    return text;
}

}  // namespace

// With its own folder searched for what it needs itself.
std::unique_ptr<LoadedFile> LoadedFile::open(const std::string& path, std::string* why)
{
    std::error_code failed;
    const std::filesystem::path file = std::filesystem::absolute(std::filesystem::path(path), failed);
    if (failed)
    {
        *why = failed.message();
        return nullptr;
    }
    HMODULE handle = LoadLibraryExW(file.c_str(), nullptr, LOAD_WITH_ALTERED_SEARCH_PATH);
    if (handle != nullptr)
        return std::unique_ptr<LoadedFile>(new LoadedFile(handle));
    const DWORD error = GetLastError();
    *why = "can't be loaded: " + system_text(error) + " (error " + std::to_string(error) + ")";
    return nullptr;
}

LoadedFile::~LoadedFile()
{
    FreeLibrary(static_cast<HMODULE>(handle_));
}

LoadedFile::Function LoadedFile::function(const std::string& name) const
{
    return reinterpret_cast<Function>(
        reinterpret_cast<void*>(GetProcAddress(static_cast<HMODULE>(handle_), name.c_str())));
}

}  // namespace orvlog::renderer_library
