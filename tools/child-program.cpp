#include "tools/child-program.h"

#include "tools/command.h"

#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>
#include <filesystem>
#include <sstream>

extern char** environ;

namespace tool
{

namespace
{

using std::filesystem::path;

bool is_program(const path& file)
{
    std::error_code error;
    return std::filesystem::is_regular_file(file, error) && access(file.c_str(), X_OK) == 0;
}

path own_folder()
{
    std::error_code error;
    return std::filesystem::read_symlink("/proc/self/exe", error).parent_path();
}

std::vector<path> folders_of(const char* list)
{
    std::vector<path> folders;
    std::istringstream parts(list == nullptr ? "" : list);
    for (std::string part; std::getline(parts, part, ':');)
    {
        if (!part.empty())
            folders.emplace_back(part);
    }
    return folders;
}

}  // namespace

std::string find_program(const std::string& name, const std::string& build_folder)
{
    std::vector<path> folders = folders_of(std::getenv("ORVLOG_EXEC_PATH"));
    if (const path own = own_folder(); !own.empty())
    {
        folders.push_back(own);
        folders.push_back(own / build_folder);
        folders.push_back(own.parent_path() / "libexec" / "orvlog");
    }
    for (const path& folder : folders_of(std::getenv("PATH")))
        folders.push_back(folder);
    for (const path& folder : folders)
    {
        if (is_program(folder / name))
            return (folder / name).string();
    }
    return {};
}

int run_program(const std::string& path, const std::vector<std::string>& arguments)
{
    std::vector<std::string> words = {path};
    words.insert(words.end(), arguments.begin(), arguments.end());
    std::vector<char*> argv;
    for (std::string& word : words)
        argv.push_back(word.data());
    argv.push_back(nullptr);

    pid_t child = 0;
    if (const int error = posix_spawn(&child, path.c_str(), nullptr, nullptr, argv.data(), environ); error != 0)
    {
        errno = error;
        return -1;
    }
    int status = 0;
    while (waitpid(child, &status, 0) < 0)
    {
        if (errno != EINTR)
            return -1;
    }
    return WIFSIGNALED(status) ? EXIT_SIGNAL + WTERMSIG(status) : WEXITSTATUS(status);
}

}  // namespace tool
