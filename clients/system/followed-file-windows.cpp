#include "clients/system/followed-file.h"

#include "clients/system/errors-windows.h"

#include <cerrno>
#include <cstring>
#include <filesystem>

#include <windows.h>

namespace orvlog::system
{

namespace
{

HANDLE handle_of(intptr_t file)
{
    return reinterpret_cast<HANDLE>(file);
}

// For reading, whatever others do with it meanwhile.
HANDLE open_shared(const std::string& path, DWORD access)
{
    return CreateFileW(std::filesystem::path(path).c_str(), access,
                       FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE, nullptr, OPEN_EXISTING,
                       FILE_FLAG_BACKUP_SEMANTICS, nullptr);
}

bool is_same(const BY_HANDLE_FILE_INFORMATION& one, const BY_HANDLE_FILE_INFORMATION& other)
{
    return one.dwVolumeSerialNumber == other.dwVolumeSerialNumber && one.nFileIndexHigh == other.nFileIndexHigh &&
           one.nFileIndexLow == other.nFileIndexLow;
}

}  // namespace

FollowedFile::~FollowedFile()
{
    if (file_ != -1)
        CloseHandle(handle_of(file_));
}

bool FollowedFile::open(std::string* why)
{
    HANDLE handle = open_shared(path_, GENERIC_READ);
    file_ = reinterpret_cast<intptr_t>(handle);
    BY_HANDLE_FILE_INFORMATION found;
    if (!noted(handle != INVALID_HANDLE_VALUE))
        *why = std::strerror(errno);
    else if (GetFileType(handle) != FILE_TYPE_DISK || GetFileInformationByHandle(handle, &found) == 0 ||
             (found.dwFileAttributes & FILE_ATTRIBUTE_DIRECTORY) != 0)
        *why = "is no file, which alone can be followed";
    else
        return true;
    return false;
}

int64_t FollowedFile::read(void* bytes, size_t size, int64_t position) const
{
    OVERLAPPED place = {};
    place.Offset = static_cast<DWORD>(position);
    place.OffsetHigh = static_cast<DWORD>(position >> 32);
    DWORD got = 0;
    const bool good = ReadFile(handle_of(file_), bytes, static_cast<DWORD>(size), &got, &place) != 0;
    if (!good && GetLastError() == ERROR_HANDLE_EOF)
        return 0;
    return noted(good) ? got : -1;
}

bool FollowedFile::is_there(int64_t size, std::string* why) const
{
    LARGE_INTEGER present = {};
    if (GetFileSizeEx(handle_of(file_), &present) == 0 || present.QuadPart < size)
    {
        *why = "has become shorter while it was followed";
        return false;
    }
    HANDLE named = open_shared(path_, FILE_READ_ATTRIBUTES);
    BY_HANDLE_FILE_INFORMATION mine;
    BY_HANDLE_FILE_INFORMATION other;
    const bool same = named != INVALID_HANDLE_VALUE && GetFileInformationByHandle(named, &other) != 0 &&
                      GetFileInformationByHandle(handle_of(file_), &mine) != 0 && is_same(mine, other);
    if (named != INVALID_HANDLE_VALUE)
        CloseHandle(named);
    if (!same)
        *why = "is gone, or another file, since it is followed";
    return same;
}

}  // namespace orvlog::system
