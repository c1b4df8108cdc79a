#include "clients/system/system.h"

#include "clients/system/errors-windows.h"

#include <cerrno>
#include <random>
#include <vector>

#include <fcntl.h>
#include <io.h>
#include <windows.h>

#include <psapi.h>
#include <shellapi.h>

namespace orvlog::system
{

namespace fs = std::filesystem;

namespace
{

constexpr int kMostNames = 100;

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

std::string narrowed(const wchar_t* wide)
{
    const int size = WideCharToMultiByte(CP_UTF8, 0, wide, -1, nullptr, 0, nullptr, nullptr);
    std::string text(static_cast<size_t>(size), '\0');
    WideCharToMultiByte(CP_UTF8, 0, wide, -1, text.data(), size, nullptr, nullptr);
    text.pop_back();
    return text;
}

// What GetFileType says of a console is true of any device.
bool is_console(HANDLE handle)
{
    DWORD mode = 0;
    return GetConsoleMode(handle, &mode) != 0;
}

std::FILE* stream_of(HANDLE handle, int flags, const char* mode)
{
    if (!noted(handle != INVALID_HANDLE_VALUE))
        return nullptr;
    const int file = _open_osfhandle(reinterpret_cast<intptr_t>(handle), flags);
    if (file < 0)
        CloseHandle(handle);
    return file >= 0 ? _fdopen(file, mode) : nullptr;
}

}  // namespace

void begin_program(int* argc, char*** argv)
{
    static std::vector<std::string> words;
    static std::vector<char*> pointers;
    int count = 0;
    wchar_t** wide = CommandLineToArgvW(GetCommandLineW(), &count);
    for (int i = 0; wide != nullptr && i < count; ++i)
        words.push_back(narrowed(wide[i]));
    LocalFree(wide);
    for (std::string& word : words)
        pointers.push_back(word.data());
    pointers.push_back(nullptr);
    if (count > 0)
    {
        *argc = count;
        *argv = pointers.data();
    }
    for (std::FILE* stream : {stdin, stdout, stderr})
        _setmode(_fileno(stream), _O_BINARY);
    // Texts are UTF-8.
    SetConsoleOutputCP(CP_UTF8);
    // What fails is told by the program, and not by a window.
    SetErrorMode(SEM_FAILCRITICALERRORS | SEM_NOGPFAULTERRORBOX | SEM_NOOPENFILEERRORBOX);
}

bool is_terminal(Stream stream)
{
    return is_console(handle_of(stream));
}

bool is_pipe(Stream stream)
{
    return GetFileType(handle_of(stream)) == FILE_TYPE_PIPE;
}

// No byte is written to a pipe that is whole.
bool is_reader_gone()
{
    DWORD written = 0;
    return is_pipe(Stream::output) && WriteFile(handle_of(Stream::output), "", 0, &written, nullptr) == 0;
}

void end_without_reader() {}

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

const char* output_device()
{
    return "\\\\.\\STDOUT";
}

// Others may take it away while it is open.
std::FILE* create_file(const std::string& name)
{
    HANDLE handle = CreateFileW(fs::path(name).c_str(), GENERIC_WRITE | DELETE, FILE_SHARE_READ | FILE_SHARE_DELETE,
                                nullptr, CREATE_NEW, FILE_ATTRIBUTE_NORMAL, nullptr);
    return stream_of(handle, _O_BINARY | _O_NOINHERIT, "wb");
}

bool replace_file(const std::string& from, const std::string& to)
{
    return noted(MoveFileExW(fs::path(from).c_str(), fs::path(to).c_str(), MOVEFILE_REPLACE_EXISTING) != 0);
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
    if (!noted(attributes != INVALID_FILE_ATTRIBUTES))
        return false;
    if ((attributes & FILE_ATTRIBUTE_DIRECTORY) == 0)
        errno = ENOTDIR;
    return (attributes & FILE_ATTRIBUTE_DIRECTORY) != 0;
}

std::FILE* open_alone(const std::string& name)
{
    HANDLE handle = CreateFileW(fs::path(name).c_str(), FILE_APPEND_DATA | SYNCHRONIZE, FILE_SHARE_READ, nullptr,
                                OPEN_ALWAYS, FILE_ATTRIBUTE_NORMAL, nullptr);
    const bool held = handle == INVALID_HANDLE_VALUE && GetLastError() == ERROR_SHARING_VIOLATION;
    std::FILE* file = stream_of(handle, _O_BINARY | _O_APPEND | _O_NOINHERIT, "ab");
    if (held)
        errno = EWOULDBLOCK;
    return file;
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
        if (noted(CreateDirectoryW(fs::path(name).c_str(), nullptr) != 0))
            return name;
        if (errno != EEXIST)
            break;
    }
    return {};
}

// The system removes it when it is closed.
std::FILE* open_unnamed_file()
{
    const fs::path name = temporary_base() / ("orvlog-" + random_digits());
    HANDLE handle = CreateFileW(name.c_str(), GENERIC_READ | GENERIC_WRITE | DELETE, FILE_SHARE_DELETE, nullptr,
                                CREATE_NEW, FILE_ATTRIBUTE_TEMPORARY | FILE_FLAG_DELETE_ON_CLOSE, nullptr);
    return stream_of(handle, _O_BINARY | _O_NOINHERIT, "w+b");
}

bool write_through(std::FILE* file)
{
    return _commit(_fileno(file)) == 0;
}

bool seek(std::FILE* file, int64_t offset, int whence)
{
    return _fseeki64(file, offset, whence) == 0;
}

int64_t tell(std::FILE* file)
{
    return _ftelli64(file);
}

// "/Z:/a" is of the drive Z.
std::string path_of_url(const std::string& path)
{
    const bool drive = path.size() > 2 && path[0] == '/' && path[2] == ':';
    return drive ? path.substr(1) : path;
}

int64_t heap_bytes()
{
    PROCESS_MEMORY_COUNTERS_EX memory = {};
    K32GetProcessMemoryInfo(GetCurrentProcess(), reinterpret_cast<PROCESS_MEMORY_COUNTERS*>(&memory), sizeof memory);
    return static_cast<int64_t>(memory.PrivateUsage);
}

// A name of a file has no quotes in it.
std::string shell_word(const std::string& text)
{
    const bool plain = !text.empty() && text.find_first_of(" \t&()[]{}^=;!'+,`~%@") == std::string::npos;
    return plain ? text : "\"" + text + "\"";
}

}  // namespace orvlog::system
