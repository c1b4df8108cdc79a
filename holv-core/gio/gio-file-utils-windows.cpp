#include "holv-core/gio/gio-file-utils-host.h"
#include "holv-core/gio/gio-wide-path-windows.h"

#include <errno.h>
#include <sys/stat.h>
#include <windows.h>

const char gio_host_separator = '\\';

namespace
{

constexpr int kDirectoryBit = 0x4000;
constexpr DWORD kReplaceAndCopy = 3;

// A path that does not fit is one that does not exist.
bool widen(const char* path, wchar_t* wide)
{
    if (gio_wide_path(path, wide) != 0)
        return true;
    errno = ENAMETOOLONG;
    return false;
}

}  // namespace

FILE* gio_host_open_binary(const char* path, uint32_t for_writing)
{
    wchar_t wide[GIO_WIDE_PATH_LIMIT + 1];
    return widen(path, wide) ? _wfopen(wide, for_writing != 0 ? L"wb" : L"rb") : nullptr;
}

int32_t gio_host_status(const char* path, uint32_t* is_directory)
{
    wchar_t wide[GIO_WIDE_PATH_LIMIT + 1];
    struct _stat64 status;
    if (!widen(path, wide) || _wstat64(wide, &status) != 0)
        return -1;
    *is_directory = (status.st_mode & kDirectoryBit) != 0 ? 1 : 0;
    return 0;
}

int32_t gio_host_move(const char* source, const char* target)
{
    wchar_t from[GIO_WIDE_PATH_LIMIT + 1];
    wchar_t to[GIO_WIDE_PATH_LIMIT + 1];
    if (!widen(source, from) || !widen(target, to))
        return -1;
    return MoveFileExW(from, to, kReplaceAndCopy) != 0 ? 0 : -1;
}
