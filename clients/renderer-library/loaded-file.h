// A shared library that is loaded, from a path and never by a search.

#pragma once

#include <memory>
#include <string>

namespace orvlog::renderer_library
{

class LoadedFile
{
public:
    // Null with the reason in `why`.
    static std::unique_ptr<LoadedFile> open(const std::string& path, std::string* why);
    ~LoadedFile();
    LoadedFile(const LoadedFile&) = delete;
    LoadedFile& operator=(const LoadedFile&) = delete;

    using Function = void (*)();
    // Null if the library has none of that name.
    Function function(const std::string& name) const;

private:
    explicit LoadedFile(void* handle) : handle_(handle) {}
    void* handle_;
};

}  // namespace orvlog::renderer_library
