#include "clients/system/processes.h"

#include <fcntl.h>
#include <sys/mman.h>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <cstdio>
#include <cstring>
#include <ctime>

namespace orvlog::system
{

namespace
{

constexpr long kNanosecondsOfALook = 10'000'000;

// Waits for the end of the child.
void wait_for(pid_t child, const std::function<bool()>& goes_on, int* status)
{
    for (pid_t ended = 0; (ended = waitpid(child, status, WNOHANG)) == 0 || (ended < 0 && errno == EINTR);)
    {
        if (!goes_on())
        {
            kill(child, SIGKILL);
            while (waitpid(child, status, 0) < 0 && errno == EINTR)
                continue;
            return;
        }
        const timespec pause{0, kNanosecondsOfALook};
        nanosleep(&pause, nullptr);
    }
}

}  // namespace

WorkApart::WorkApart(size_t size) : size_(size)
{
    void* shared = mmap(nullptr, size, PROT_READ | PROT_WRITE, MAP_SHARED | MAP_ANONYMOUS, -1, 0);
    block_ = shared == MAP_FAILED ? nullptr : shared;
}

WorkApart::~WorkApart()
{
    if (block_ != nullptr)
        munmap(block_, size_);
}

bool WorkApart::run(const std::function<int()>& work, const std::function<bool()>& goes_on, ProcessEnd* end)
{
    std::fflush(nullptr);
    const pid_t parent = getpid();
    const pid_t child = fork();
    if (child < 0)
        return false;
    if (child == 0)
    {
        is_apart_ = true;
        prctl(PR_SET_PDEATHSIG, SIGKILL);
        const int status = getppid() == parent ? work() : EXIT_FAILURE;
        std::fflush(nullptr);
        _exit(status);
    }
    int status = 0;
    wait_for(child, goes_on, &status);
    end->status = WIFEXITED(status) ? WEXITSTATUS(status) : 0;
    if (!WIFSIGNALED(status))
        return true;
    end->how = "ended by signal " + std::to_string(WTERMSIG(status));
    end->name = strsignal(WTERMSIG(status));
    return true;
}

// The new process leads a group of its own, so that all that it starts can be ended.
bool ShellRun::start(const std::string& command, bool show_errors, const std::function<bool()>& before,
                     const WaitedSignals& signals)
{
    std::fflush(nullptr);
    const pid_t child = fork();
    if (child == 0)
    {
        setpgid(0, 0);
        if (!before())
            _exit(kRefused);
        signals.give_back();
        const int nothing = ::open("/dev/null", O_RDWR | O_CLOEXEC);
        dup2(nothing, STDIN_FILENO);
        dup2(nothing, STDOUT_FILENO);
        if (!show_errors)
            dup2(nothing, STDERR_FILENO);
        execl("/bin/sh", "sh", "-c", command.c_str(), static_cast<char*>(nullptr));
        _exit(127);
    }
    if (child < 0)
        return false;
    setpgid(child, child);
    process_ = child;
    group_ = child;
    return true;
}

bool ShellRun::has_ended()
{
    if (status_ >= 0)
        return true;
    const auto process = static_cast<pid_t>(process_);
    int status = 0;
    const pid_t ended = waitpid(process, &status, WNOHANG);
    if (ended == 0)
        return false;
    status_ = ended > 0 && WIFEXITED(status) ? WEXITSTATUS(status) : kSignalStatus;
    // What the command has left running would go on for ever.
    kill(static_cast<pid_t>(-group_), SIGKILL);
    return true;
}

void ShellRun::stop()
{
    if (status_ >= 0 || process_ <= 0)
        return;
    const auto process = static_cast<pid_t>(process_);
    kill(static_cast<pid_t>(-group_), SIGKILL);
    kill(process, SIGKILL);
    while (waitpid(process, nullptr, 0) < 0 && errno == EINTR)
        continue;
    status_ = kSignalStatus + SIGKILL;
}

}  // namespace orvlog::system
