#include "holv-core/gio/gio-file-utils-host.h"

#include "holv-core/gio/gio-file-utils.h"
#include "holv-core/gio/gio-stream.h"

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <sys/stat.h>
#include <unistd.h>

const char gio_host_separator = '/';

namespace
{

constexpr size_t kLongestPath = 4096;
constexpr char kSuffix[] = ".moving";

// Across volumes: copies beside the target first, so that a copy that fails leaves the target as it was.
int32_t move_by_copy(const char* source, const char* target)
{
    char beside[kLongestPath];
    const size_t length = std::strlen(target);
    if (length + sizeof kSuffix > kLongestPath)
        return -1;
    std::memcpy(beside, target, length);
    std::memcpy(beside + length, kSuffix, sizeof kSuffix);
    if (GIO_FileCopyPlain(source, beside) != GIO_OK || std::rename(beside, target) != 0)
    {
        std::remove(beside);
        return -1;
    }
    return std::remove(source);
}

}  // namespace

FILE* gio_host_open_binary(const char* path, uint32_t for_writing)
{
    return std::fopen(path, for_writing != 0 ? "wb" : "rb");
}

int32_t gio_host_status(const char* path, uint32_t* is_directory)
{
    struct stat status;
    if (stat(path, &status) != 0)
        return -1;
    *is_directory = S_ISDIR(status.st_mode) ? 1 : 0;
    return 0;
}

int32_t gio_host_move(const char* source, const char* target)
{
    if (std::rename(source, target) == 0)
        return 0;
    return errno == EXDEV ? move_by_copy(source, target) : -1;
}
