// A file that is added to, and whose bytes can be brought to the disk.

#pragma once

#include <cstdio>
#include <filesystem>
#include <string>
#include <string_view>

namespace orvlog::inspect
{

class DurableFile
{
public:
    // Makes the file if there is none. All of it throws std::runtime_error with the file's name.
    explicit DurableFile(const std::filesystem::path& path);
    DurableFile(const DurableFile&) = delete;
    DurableFile& operator=(const DurableFile&) = delete;
    ~DurableFile();

    void append(std::string_view bytes);
    void sync();
    void close();

private:
    [[noreturn]] void fail() const;

    std::string name_;
    std::FILE* file_;
};

}  // namespace orvlog::inspect
