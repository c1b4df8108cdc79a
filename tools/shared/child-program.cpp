#include "tools/shared/child-program.h"

#include "clients/system/signal-set-posix.h"
#include "tools/shared/command.h"

#include <spawn.h>
#include <sys/auxv.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>
#include <filesystem>
#include <sstream>

extern char** environ;

namespace orvlog::tool
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
    path program = std::filesystem::read_symlink("/proc/self/exe", error);
    if (error)
        program = std::filesystem::canonical(name_of_start(), error);
    return program.parent_path();
}

std::vector<path> folders_of(const char* list)
{
    std::vector<path> folders;
    std::istringstream parts(list == nullptr ? "" : list);
    for (std::string part; std::getline(parts, part, ':');)
        if (!part.empty())
            folders.emplace_back(part);
    return folders;
}

// Gives 0, or what was wrong. The program begins with the signals that this process began with.
int start(const std::string& path, char** arguments, pid_t* child)
{
    const system::SignalsHeld held;
    posix_spawnattr_t attributes;
    if (const int error = posix_spawnattr_init(&attributes); error != 0)
        return error;
    posix_spawnattr_setsigmask(&attributes, &held.before().signals);
    posix_spawnattr_setflags(&attributes, POSIX_SPAWN_SETSIGMASK);
    const int error = posix_spawn(child, path.c_str(), nullptr, &attributes, arguments, environ);
    posix_spawnattr_destroy(&attributes);
    if (error == 0)
        system::set_running_program(*child);
    return error;
}

// Its number is nobody else's until it has been waited for, and no signal goes to it from then on.
int wait_for(pid_t child)
{
    siginfo_t ended;
    while (waitid(P_PID, static_cast<id_t>(child), &ended, WEXITED | WNOWAIT) < 0 && errno == EINTR)
        continue;
    const system::SignalsHeld held;
    system::set_running_program(0);
    int status = 0;
    if (waitpid(child, &status, 0) < 0)
        return -1;
    return WIFSIGNALED(status) ? EXIT_SIGNAL + WTERMSIG(status) : WEXITSTATUS(status);
}

}  // namespace

const char* name_of_start()
{
    const auto* name = reinterpret_cast<const char*>(getauxval(AT_EXECFN));
    return name != nullptr ? name : "";
}

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
        if (is_program(folder / name))
            return (folder / name).string();
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

    system::catch_signals();
    pid_t child = 0;
    if (const int error = start(path, argv.data(), &child); error != 0)
    {
        errno = error;
        return -1;
    }
    return wait_for(child);
}

}  // namespace orvlog::tool
