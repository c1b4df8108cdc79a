#include "tools/replay/watched-child.h"

#include "tools/shared/command.h"

#include <sys/mman.h>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <csignal>
#include <cstdio>
#include <cstring>
#include <ctime>
#include <exception>

namespace orvlog::tool
{

namespace
{

constexpr long kNanosecondsOfALook = 10'000'000;

double seconds_now()
{
    timespec now{};
    clock_gettime(CLOCK_MONOTONIC, &now);
    return static_cast<double>(now.tv_sec) + static_cast<double>(now.tv_nsec) / 1e9;
}

int guarded(const std::function<int(WorkPlace&)>& work, WorkPlace& place)
{
    try
    {
        return work(place);
    }
    catch (const std::exception& error)
    {
        return fail(error.what());
    }
}

// Says which limit has been passed, if one has.
class Patience
{
public:
    Patience(const WorkPlace& place, const WorkLimits& limits)
        : place_(place), limits_(limits), steps_(place.steps()), begin_(seconds_now()), since_(begin_)
    {
    }

    std::string ended()
    {
        const double now = seconds_now();
        if (steps_ != place_.steps())
            since_ = now;
        steps_ = place_.steps();
        if (limits_.of_call > 0 && now - since_ > limits_.of_call)
            return "did not come back within " + std::to_string(limits_.of_call) + " s";
        if (limits_.in_all > 0 && now - begin_ > limits_.in_all)
            return std::string(kTookMoreThan) + std::to_string(limits_.in_all) + " seconds";
        return {};
    }

private:
    const WorkPlace& place_;
    const WorkLimits& limits_;
    uint64_t steps_;
    double begin_;
    double since_;
};

// Waits for the end of the child. Gives what it was ended for; empty if it has ended by itself.
std::string wait_for(pid_t child, const WorkPlace& place, const WorkLimits& limits, int* status)
{
    Patience patience(place, limits);
    while (waitpid(child, status, WNOHANG) == 0)
    {
        if (std::string ended = patience.ended(); !ended.empty())
        {
            kill(child, SIGKILL);
            while (waitpid(child, status, 0) < 0 && errno == EINTR)
                continue;
            return ended;
        }
        const timespec pause{0, kNanosecondsOfALook};
        nanosleep(&pause, nullptr);
    }
    return {};
}

}  // namespace

void WorkPlace::enter_call(std::string_view name, uint64_t line)
{
    const size_t length = std::min(name.size(), kLongestName - 1);
    std::memcpy(name_, name.data(), length);
    name_[length] = 0;
    line_ = line;
    stage_ = Stage::call;
    steps_ = steps_ + 1;
}

void WorkPlace::leave_calls()
{
    stage_ = Stage::behind;
    steps_ = steps_ + 1;
}

uint64_t WorkPlace::steps() const
{
    return steps_;
}

std::string WorkPlace::told() const
{
    if (stage_ == Stage::before)
        return "before the first call";
    if (stage_ != Stage::call)
        return "behind the last call";
    return "in " + std::string(name_) + ", line " + std::to_string(line_);
}

int run_watched(const std::function<int(WorkPlace&)>& work, const WorkLimits& limits, std::string* why)
{
    void* shared = mmap(nullptr, sizeof(WorkPlace), PROT_READ | PROT_WRITE, MAP_SHARED | MAP_ANONYMOUS, -1, 0);
    if (shared == MAP_FAILED)
    {
        *why = std::strerror(errno);
        return EXIT_FAILED;
    }
    auto* place = static_cast<WorkPlace*>(shared);
    std::fflush(nullptr);
    const pid_t parent = getpid();
    const pid_t child = fork();
    if (child == 0)
    {
        prctl(PR_SET_PDEATHSIG, SIGKILL);
        if (getppid() != parent)
            _exit(EXIT_FAILED);
        const int result = guarded(work, *place);
        std::fflush(nullptr);
        place->stage_ = WorkPlace::Stage::done;
        _exit(result);
    }
    int status = 0;
    int result = EXIT_FAILED;
    const std::string ended = child < 0 ? "" : wait_for(child, *place, limits, &status);
    if (child < 0)
        *why = std::string("no process: ") + std::strerror(errno);
    else if (!ended.empty())
        *why = ended + ", " + place->told();
    else if (WIFSIGNALED(status))
        *why = std::string(kEndedBySignal) + std::to_string(WTERMSIG(status)) + " (" + strsignal(WTERMSIG(status)) +
               "), " + place->told();
    else if (place->stage_ != WorkPlace::Stage::done)
        *why = "ended the process with the status " + std::to_string(WEXITSTATUS(status)) + ", " + place->told();
    else
        result = WEXITSTATUS(status);
    munmap(shared, sizeof(WorkPlace));
    return result;
}

}  // namespace orvlog::tool
