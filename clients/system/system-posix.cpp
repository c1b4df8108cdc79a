#include "clients/system/system.h"

#include <fcntl.h>
#include <malloc.h>
#include <poll.h>
#include <sys/file.h>
#include <sys/ioctl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cctype>
#include <cerrno>
#include <csignal>
#include <cstdlib>
#include <cstring>

namespace orvlog::system
{

namespace fs = std::filesystem;

void begin_program(int* /*argc*/, char*** /*argv*/)
{
    std::signal(SIGXFSZ, SIG_IGN);
}

bool is_terminal(Stream stream)
{
    return isatty(static_cast<int>(stream)) != 0;
}

bool is_pipe(Stream stream)
{
    struct stat status = {};
    return fstat(static_cast<int>(stream), &status) == 0 && (S_ISFIFO(status.st_mode) || S_ISSOCK(status.st_mode));
}

bool is_reader_gone()
{
    pollfd output = {STDOUT_FILENO, 0, 0};
    return poll(&output, 1, 0) > 0 && (output.revents & (POLLERR | POLLHUP)) != 0;
}

void end_without_reader()
{
    std::raise(SIGPIPE);
}

size_t terminal_width()
{
    winsize size = {};
    return ioctl(STDOUT_FILENO, TIOCGWINSZ, &size) == 0 ? size.ws_col : 0;
}

const char* null_device()
{
    return "/dev/null";
}

const char* output_device()
{
    return "/dev/stdout";
}

std::FILE* create_file(const std::string& name)
{
    return std::fopen(name.c_str(), "wbx");
}

bool replace_file(const std::string& from, const std::string& to)
{
    return std::rename(from.c_str(), to.c_str()) == 0;
}

void link_file(const fs::path& file, const fs::path& name, std::error_code& error)
{
    fs::create_symlink(file, name, error);
}

bool can_write_in(const fs::path& folder)
{
    return access(folder.c_str(), W_OK | X_OK) == 0;
}

// Who has it takes it away in the end: another one is not to wait at one that is gone.
std::FILE* open_alone(const std::string& name)
{
    struct stat held = {};
    struct stat named = {};
    std::FILE* file = nullptr;
    do
    {
        if (file != nullptr)
            std::fclose(file);
        file = std::fopen(name.c_str(), "abe");
        if (file == nullptr)
            return nullptr;
        if (flock(fileno(file), LOCK_EX | LOCK_NB) != 0 && errno == EWOULDBLOCK)
        {
            std::fclose(file);
            errno = EWOULDBLOCK;
            return nullptr;
        }
    } while (fstat(fileno(file), &held) == 0 && (stat(name.c_str(), &named) != 0 || held.st_ino != named.st_ino));
    return file;
}

// What TMPDIR names, whether it is there or not: a failure is to be told with its name.
fs::path temporary_base()
{
    const char* told = std::getenv("TMPDIR");
    return told != nullptr && *told != '\0' ? told : "/tmp";
}

std::string make_folder(const fs::path& beginning)
{
    std::string form = beginning.string() + "XXXXXX";
    return mkdtemp(form.data()) != nullptr ? form : "";
}

std::FILE* open_unnamed_file()
{
    std::error_code none;
    std::string name = (fs::temp_directory_path(none) / "orvlog-XXXXXX").string();
    const int file = none ? -1 : mkstemp(name.data());
    if (file < 0)
        return nullptr;
    unlink(name.c_str());
    std::FILE* opened = fdopen(file, "w+b");
    if (opened == nullptr)
        close(file);
    return opened;
}

bool write_through(std::FILE* file)
{
    return fdatasync(fileno(file)) == 0;
}

bool seek(std::FILE* file, int64_t offset, int whence)
{
    return fseeko(file, offset, whence) == 0;
}

int64_t tell(std::FILE* file)
{
    return ftello(file);
}

std::string path_of_url(const std::string& path)
{
    return path;
}

int64_t heap_bytes()
{
    const struct mallinfo2 heap = mallinfo2();
    return static_cast<int64_t>(heap.uordblks + heap.hblkhd);
}

std::string shell_word(const std::string& text)
{
    const auto plain = [](char c)
    { return std::isalnum(static_cast<unsigned char>(c)) != 0 || std::strchr("-_./+:,@%", c) != nullptr; };
    if (!text.empty() && std::all_of(text.begin(), text.end(), plain))
        return text;
    std::string word = "'";
    for (const char c : text)
        word += c == '\'' ? std::string("'\\''") : std::string(1, c);
    return word + "'";
}

}  // namespace orvlog::system
