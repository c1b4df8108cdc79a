#include "clients/renderer-library/loaded-file.h"

#include <dlfcn.h>

#include <filesystem>
#include <system_error>

namespace orvlog::renderer_library
{

// A name without a slash would be searched for.
std::unique_ptr<LoadedFile> LoadedFile::open(const std::string& path, std::string* why)
{
    std::error_code failed;
    const std::filesystem::path file = std::filesystem::absolute(path, failed);
    if (failed)
    {
        *why = failed.message();
        return nullptr;
    }
    void* handle = dlopen(file.c_str(), RTLD_NOW | RTLD_LOCAL);
    if (handle != nullptr)
        return std::unique_ptr<LoadedFile>(new LoadedFile(handle));
    const char* reason = dlerror();
    *why = reason != nullptr ? reason : "can't be loaded";
    return nullptr;
}

LoadedFile::~LoadedFile()
{
    dlclose(handle_);
}

LoadedFile::Function LoadedFile::function(const std::string& name) const
{
    return reinterpret_cast<Function>(dlsym(handle_, name.c_str()));
}

}  // namespace orvlog::renderer_library
