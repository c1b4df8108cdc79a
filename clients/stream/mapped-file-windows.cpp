#include "clients/stream/mapped-file.h"

#include <algorithm>
#include <cerrno>
#include <cstdlib>
#include <cstring>

#include <windows.h>

namespace orvlog::log_stream
{

namespace
{

// No file has this name; other systems have one for it.
constexpr const char* kOutput = "\\\\.\\STDOUT";

HANDLE handle_of(const HostFile* file)
{
    return reinterpret_cast<HANDLE>(file->handle);
}

int error_of(DWORD code)
{
    switch (code)
    {
    case ERROR_FILE_NOT_FOUND:
    case ERROR_PATH_NOT_FOUND:
    case ERROR_INVALID_NAME:
    case ERROR_BAD_NETPATH:
        return ENOENT;
    case ERROR_ACCESS_DENIED:
    case ERROR_WRITE_PROTECT:
        return EACCES;
    case ERROR_SHARING_VIOLATION:
    case ERROR_LOCK_VIOLATION:
    case ERROR_USER_MAPPED_FILE:
        return EBUSY;
    case ERROR_NOT_ENOUGH_MEMORY:
    case ERROR_OUTOFMEMORY:
    case ERROR_COMMITMENT_LIMIT:
        return ENOMEM;
    case ERROR_DISK_FULL:
    case ERROR_HANDLE_DISK_FULL:
        return ENOSPC;
    case ERROR_FILE_TOO_LARGE:
        return EFBIG;
    case ERROR_TOO_MANY_OPEN_FILES:
        return EMFILE;
    case ERROR_BROKEN_PIPE:
    case ERROR_NO_DATA:
        return EPIPE;
    default:
        return EIO;
    }
}

int last_error()
{
    return error_of(GetLastError());
}

// UTF-8 as the system's wide text, from the heap; null with `*error` set.
wchar_t* wide_path(const char* path, int* error)
{
    const int size = MultiByteToWideChar(CP_UTF8, MB_ERR_INVALID_CHARS, path, -1, nullptr, 0);
    *error = size > 0 ? ENOMEM : EINVAL;
    auto* wide = size > 0 ? static_cast<wchar_t*>(std::malloc(sizeof(wchar_t) * static_cast<size_t>(size))) : nullptr;
    if (wide != nullptr)
        MultiByteToWideChar(CP_UTF8, MB_ERR_INVALID_CHARS, path, -1, wide, size);
    return wide;
}

// A file of another machine tells by which protocol it is had.
bool is_local(HANDLE handle)
{
    FILE_REMOTE_PROTOCOL_INFO remote;
    return GetFileInformationByHandleEx(handle, FileRemoteProtocolInfo, &remote, sizeof remote) == 0;
}

OVERLAPPED place_of(uint64_t offset)
{
    OVERLAPPED place = {};
    place.Offset = static_cast<DWORD>(offset);
    place.OffsetHigh = static_cast<DWORD>(offset >> 32);
    return place;
}

DWORD piece_of(size_t size)
{
    return static_cast<DWORD>(std::min<size_t>(size, size_t{1} << 30));
}

// What it is goes on where it stands.
int open_output(HostFile* file)
{
    HANDLE handle = INVALID_HANDLE_VALUE;
    if (DuplicateHandle(GetCurrentProcess(), GetStdHandle(STD_OUTPUT_HANDLE), GetCurrentProcess(), &handle, 0, FALSE,
                        DUPLICATE_SAME_ACCESS) == 0)
        return last_error();
    file->handle = reinterpret_cast<intptr_t>(handle);
    return 0;
}

}  // namespace

int open_file(HostFile* file, const char* path)
{
    *file = {};
    if (std::strcmp(path, kOutput) == 0)
        return open_output(file);
    int error = 0;
    wchar_t* wide = wide_path(path, &error);
    if (wide == nullptr)
        return error;
    // Others may read it while it is written.
    HANDLE handle = CreateFileW(wide, GENERIC_READ | GENERIC_WRITE, FILE_SHARE_READ | FILE_SHARE_DELETE, nullptr,
                                OPEN_ALWAYS, FILE_ATTRIBUTE_NORMAL, nullptr);
    if (handle == INVALID_HANDLE_VALUE && GetLastError() == ERROR_ACCESS_DENIED)
        handle = CreateFileW(wide, GENERIC_WRITE, FILE_SHARE_READ | FILE_SHARE_WRITE, nullptr, OPEN_EXISTING,
                             FILE_ATTRIBUTE_NORMAL, nullptr);
    error = handle != INVALID_HANDLE_VALUE ? 0 : last_error();
    std::free(wide);
    if (error != 0)
        return error;
    file->handle = reinterpret_cast<intptr_t>(handle);
    file->is_file = GetFileType(handle) == FILE_TYPE_DISK;
    file->can_map = file->is_file && is_local(handle);
    return 0;
}

int open_ordinary_file(HostFile* file, const char* path)
{
    const int error = open_file(file, path);
    if (error != 0 || file->is_file)
        return error;
    close_file(file);
    return EEXIST;
}

int close_file(HostFile* file)
{
    const bool closed = file->handle == -1 || CloseHandle(handle_of(file)) != 0;
    file->handle = -1;
    return closed ? 0 : last_error();
}

int remove_file(const char* path)
{
    int error = 0;
    wchar_t* wide = wide_path(path, &error);
    if (wide == nullptr)
        return error;
    error = DeleteFileW(wide) != 0 ? 0 : last_error();
    std::free(wide);
    return error;
}

bool is_full(int error)
{
    return error == ENOSPC || error == EFBIG;
}

int reserve_file(HostFile* file, uint64_t, uint64_t end, bool changes_size)
{
    return changes_size ? cut_file(file, end) : ENOSYS;
}

void warm_file(HostFile*, uint64_t, uint64_t) {}

uint64_t longest_file()
{
    return INT64_MAX;
}

int cut_file(HostFile* file, uint64_t length)
{
    LARGE_INTEGER place;
    place.QuadPart = static_cast<LONGLONG>(length);
    if (SetFilePointerEx(handle_of(file), place, nullptr, FILE_BEGIN) == 0 || SetEndOfFile(handle_of(file)) == 0)
        return last_error();
    return 0;
}

void* map_file(HostFile* file, uint64_t offset, size_t length)
{
    const uint64_t end = offset + length;
    HANDLE mapping = CreateFileMappingW(handle_of(file), nullptr, PAGE_READWRITE, static_cast<DWORD>(end >> 32),
                                        static_cast<DWORD>(end), nullptr);
    void* piece = mapping != nullptr ? MapViewOfFile(mapping, FILE_MAP_WRITE, static_cast<DWORD>(offset >> 32),
                                                     static_cast<DWORD>(offset), length)
                                     : nullptr;
    const int error = piece != nullptr ? 0 : last_error();
    if (mapping != nullptr)
        CloseHandle(mapping);
    errno = error;
    return piece;
}

void unmap_file(void* piece, size_t)
{
    if (piece != nullptr)
        UnmapViewOfFile(piece);
}

size_t map_granularity()
{
    SYSTEM_INFO info;
    GetSystemInfo(&info);
    return info.dwAllocationGranularity;
}

size_t read_at(HostFile* file, void* bytes, size_t size, uint64_t offset)
{
    size_t done = 0;
    for (DWORD count = 1; done < size && count > 0;)
    {
        OVERLAPPED place = place_of(offset + done);
        if (ReadFile(handle_of(file), static_cast<char*>(bytes) + done, piece_of(size - done), &count, &place) == 0)
            break;
        done += count;
    }
    return done;
}

int write_at(HostFile* file, const void* bytes, size_t size, uint64_t offset)
{
    DWORD count = 0;
    for (size_t done = 0; done < size; done += count)
    {
        OVERLAPPED place = place_of(offset + done);
        const char* rest = static_cast<const char*>(bytes) + done;
        if (WriteFile(handle_of(file), rest, piece_of(size - done), &count, &place) == 0)
            return last_error();
        if (count == 0)
            return EIO;
    }
    return 0;
}

int write_next(HostFile* file, const void* bytes, size_t size, size_t* done)
{
    DWORD count = 0;
    for (*done = 0; *done < size; *done += count)
    {
        const char* rest = static_cast<const char*>(bytes) + *done;
        if (WriteFile(handle_of(file), rest, piece_of(size - *done), &count, nullptr) == 0)
            return last_error();
        if (count == 0)
            return EIO;
        file->written += count;
    }
    return 0;
}

}  // namespace orvlog::log_stream
