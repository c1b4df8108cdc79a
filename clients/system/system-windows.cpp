#include "clients/system/system.h"

#include <cerrno>
#include <random>

#include <fcntl.h>
#include <io.h>
#include <windows.h>

namespace orvlog::system
{

namespace fs = std::filesystem;

namespace
{

constexpr int kMostNames = 100;

int error_of(DWORD code)
{
    switch (code)
    {
    case ERROR_FILE_NOT_FOUND:
    case ERROR_PATH_NOT_FOUND:
        return ENOENT;
    case ERROR_DISK_FULL:
        return ENOSPC;
    case ERROR_FILE_EXISTS:
    case ERROR_ALREADY_EXISTS:
        return EEXIST;
    default:
        return EACCES;
    }
}

bool done(BOOL result)
{
    if (result == 0)
        errno = error_of(GetLastError());
    return result != 0;
}

HANDLE handle_of(Stream stream)
{
    return GetStdHandle(stream == Stream::output ? STD_OUTPUT_HANDLE : STD_ERROR_HANDLE);
}

std::string random_digits()
{
    std::random_device random;
    char digits[20];
    std::snprintf(digits, sizeof digits, "%08x%08x", random(), random());
    return digits;
}

}  // namespace

void begin_program()
{
    for (std::FILE* stream : {stdin, stdout, stderr})
        _setmode(_fileno(stream), _O_BINARY);
    // Texts are UTF-8.
    SetConsoleOutputCP(CP_UTF8);
    // What fails is told by the program, and not by a window.
    SetErrorMode(SEM_FAILCRITICALERRORS | SEM_NOGPFAULTERRORBOX | SEM_NOOPENFILEERRORBOX);
}

bool is_terminal(Stream stream)
{
    DWORD mode = 0;
    return GetConsoleMode(handle_of(stream), &mode) != 0;
}

bool is_pipe(Stream stream)
{
    return GetFileType(handle_of(stream)) == FILE_TYPE_PIPE;
}

size_t terminal_width()
{
    CONSOLE_SCREEN_BUFFER_INFO info;
    if (GetConsoleScreenBufferInfo(handle_of(Stream::output), &info) == 0)
        return 0;
    return static_cast<size_t>(info.srWindow.Right - info.srWindow.Left + 1);
}

const char* null_device()
{
    return "\\\\.\\NUL";
}

bool replace_file(const std::string& from, const std::string& to)
{
    return done(MoveFileExW(fs::path(from).c_str(), fs::path(to).c_str(), MOVEFILE_REPLACE_EXISTING));
}

// A link by name takes a right that users don't have.
void link_file(const fs::path& file, const fs::path& name, std::error_code& error)
{
    fs::create_hard_link(file, name, error);
    if (error)
        fs::copy_file(file, name, error);
}

bool can_write_in(const fs::path& folder)
{
    const DWORD attributes = GetFileAttributesW(folder.c_str());
    if (attributes == INVALID_FILE_ATTRIBUTES)
        return done(0);
    if ((attributes & FILE_ATTRIBUTE_DIRECTORY) == 0)
        errno = ENOTDIR;
    return (attributes & FILE_ATTRIBUTE_DIRECTORY) != 0;
}

fs::path temporary_base()
{
    std::error_code none;
    return fs::temp_directory_path(none);
}

std::string make_folder(const fs::path& beginning)
{
    for (int i = 0; i < kMostNames; ++i)
    {
        const std::string name = beginning.string() + random_digits();
        if (CreateDirectoryW(fs::path(name).c_str(), nullptr) != 0)
            return name;
        if (GetLastError() != ERROR_ALREADY_EXISTS)
            break;
    }
    done(0);
    return {};
}

// The system removes it when it is closed.
std::FILE* open_unnamed_file()
{
    const fs::path name = temporary_base() / ("orvlog-" + random_digits());
    HANDLE handle = CreateFileW(name.c_str(), GENERIC_READ | GENERIC_WRITE | DELETE, FILE_SHARE_DELETE, nullptr,
                                CREATE_NEW, FILE_ATTRIBUTE_TEMPORARY | FILE_FLAG_DELETE_ON_CLOSE, nullptr);
    if (!done(handle != INVALID_HANDLE_VALUE))
        return nullptr;
    const int file = _open_osfhandle(reinterpret_cast<intptr_t>(handle), _O_BINARY);
    return file >= 0 ? _fdopen(file, "w+b") : nullptr;
}

bool seek(std::FILE* file, int64_t offset, int whence)
{
    return _fseeki64(file, offset, whence) == 0;
}

int64_t tell(std::FILE* file)
{
    return _ftelli64(file);
}

}  // namespace orvlog::system
