#include "holv-core/gio/gio-file-host.h"
#include "holv-core/gio/gio-wide-path-windows.h"
#include "holv-core/gmm/gmm-typed.h"

#include <io.h>
#include <sys/stat.h>
#include <wchar.h>

FILE* gio_host_open(const char* path, uint32_t mode_index, uint64_t units, uint32_t is_ascii, GMM_Allocator* allocator,
                    uint32_t* no_memory)
{
    static constexpr const char* const kModes[] = {"rb",  "r",  "wb",  "w",  "ab",  "a",
                                                   "r+b", "r+", "w+b", "w+", "a+b", "a+"};
    static constexpr const wchar_t* const kWideModes[] = {L"rb",  L"r",  L"wb",  L"w",  L"ab",  L"a",
                                                          L"r+b", L"r+", L"w+b", L"w+", L"a+b", L"a+"};
    *no_memory = 0;
    if (is_ascii != 0)
        return fopen(path, kModes[mode_index]);
    auto* wide = gmm_alloc_array<wchar_t>(allocator, units + 1);
    if (wide == nullptr)
    {
        *no_memory = 1;
        return nullptr;
    }
    gio_wide_convert(path, wide);
    FILE* file = _wfopen(wide, kWideModes[mode_index]);
    allocator->gmm_Free(allocator, wide);
    return file;
}

int32_t gio_host_seek(FILE* file, int64_t offset, int32_t origin)
{
    return _fseeki64(file, offset, origin);
}

int64_t gio_host_tell(FILE* file)
{
    return _ftelli64(file);
}

int64_t gio_host_size(FILE* file)
{
    struct _stat64 status;
    return _fstat64(_fileno(file), &status) == 0 ? static_cast<int64_t>(status.st_size) : -1;
}

int32_t gio_host_remove(const char* path)
{
    wchar_t wide[GIO_WIDE_PATH_LIMIT + 1];
    return gio_wide_path(path, wide) != 0 ? _wremove(wide) : remove(path);
}
