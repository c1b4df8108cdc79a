#include "clients/renderer-library/loaded-file.h"

#include <windows.h>

#include <filesystem>

namespace orvlog::renderer_library
{

// With its own folder searched for what it needs itself.
std::unique_ptr<LoadedFile> LoadedFile::open(const std::string& path, std::string* why)
{
    const std::filesystem::path file = std::filesystem::absolute(std::filesystem::path(path));
    HMODULE handle = LoadLibraryExW(file.c_str(), nullptr, LOAD_WITH_ALTERED_SEARCH_PATH);
    if (handle != nullptr)
        return std::unique_ptr<LoadedFile>(new LoadedFile(handle));
    *why = "can't be loaded: error " + std::to_string(GetLastError());
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
