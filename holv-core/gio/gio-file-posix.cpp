#include "holv-core/gio/gio-file-host.h"

#include <cstdio>
#include <sys/stat.h>

FILE* gio_host_open(const char* path, uint32_t mode_index, uint64_t, uint32_t, GMM_Allocator*, uint32_t* no_memory)
{
    static constexpr const char* const kModes[] = {"rb",  "r",  "wb",  "w",  "ab",  "a",
                                                   "r+b", "r+", "w+b", "w+", "a+b", "a+"};
    *no_memory = 0;
    return std::fopen(path, kModes[mode_index]);
}

int32_t gio_host_seek(FILE* file, int64_t offset, int32_t origin)
{
    return fseeko(file, offset, origin);
}

int64_t gio_host_tell(FILE* file)
{
    return ftello(file);
}

int64_t gio_host_size(FILE* file)
{
    struct stat status;
    return fstat(fileno(file), &status) == 0 ? static_cast<int64_t>(status.st_size) : -1;
}

int32_t gio_host_remove(const char* path)
{
    return std::remove(path);
}
