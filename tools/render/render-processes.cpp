#include "tools/render/render-processes.h"

#include "tools/replay/watched-child.h"
#include "tools/shared/child-program.h"
#include "tools/shared/command.h"

#include <algorithm>
#include <cerrno>
#include <climits>
#include <cstring>
#include <fcntl.h>
#include <fstream>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

namespace orvlog::tool
{

namespace
{

constexpr size_t kMostLines = 20;
constexpr long kLookAgain = 100;  // milliseconds

}  // namespace

RenderProcesses::~RenderProcesses()
{
    stop_all();
}

// In the new process. It leads a group of its own, so that all that it starts can be ended.
void RenderProcesses::become(const RenderJob& job) const
{
    setpgid(0, 0);
    signals_.give_back();
    const rlim_t bytes = job.megabytes << 20U;
    const rlimit memory = {bytes, bytes};
    const rlimit no_core = {0, 0};
    if (job.megabytes > 0)
        setrlimit(RLIMIT_AS, &memory);
    setrlimit(RLIMIT_CORE, &no_core);
    const int nothing = ::open("/dev/null", O_RDWR | O_CLOEXEC);
    const int errors = ::open(job.errors.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0600);
    dup2(nothing, STDIN_FILENO);
    dup2(nothing, STDOUT_FILENO);
    dup2(errors >= 0 ? errors : nothing, STDERR_FILENO);
    std::vector<char*> words;
    std::string name = "orvlog";
    words.push_back(name.data());
    for (const std::string& word : job.words)
        words.push_back(const_cast<char*>(word.c_str()));
    words.push_back(nullptr);
    execv("/proc/self/exe", words.data());
    execv(name_of_start(), words.data());
    _exit(127);
}

bool RenderProcesses::start(const RenderJob& job, size_t number)
{
    Running one;
    one.job = number;
    one.due = job.seconds > 0 ? Clock::now() + std::chrono::seconds(job.seconds) : Clock::time_point::max();
    one.process = fork();
    if (one.process == 0)
        become(job);
    if (one.process < 0)
    {
        why_ = std::string("no process for a job: ") + std::strerror(errno);
        return false;
    }
    setpgid(one.process, one.process);
    running_.push_back(one);
    return true;
}

// True if the process has ended.
bool RenderProcesses::collect(Running& one, RenderJob& job)
{
    int status = 0;
    const pid_t ended = waitpid(one.process, &status, WNOHANG);
    if (ended == 0 && Clock::now() < one.due)
        return false;
    // With all that it has started.
    kill(-one.process, SIGKILL);
    if (ended == 0)
        kill(one.process, SIGKILL);
    while (ended == 0 && waitpid(one.process, &status, 0) < 0 && errno == EINTR)
        continue;
    job.timed_out = ended == 0;
    job.status = WIFEXITED(status) ? WEXITSTATUS(status) : EXIT_SIGNAL + WTERMSIG(status);
    return true;
}

void RenderProcesses::stop_all()
{
    for (const Running& one : running_)
    {
        kill(-one.process, SIGKILL);
        kill(one.process, SIGKILL);
        while (waitpid(one.process, nullptr, 0) < 0 && errno == EINTR)
            continue;
    }
    running_.clear();
}

bool RenderProcesses::run(std::vector<RenderJob>& jobs, size_t at_once, const std::function<void(size_t)>& on_end)
{
    std::fflush(nullptr);
    size_t next = 0;
    while ((next < jobs.size() || !running_.empty()) && signals_.received() == 0)
    {
        while (next < jobs.size() && running_.size() < std::max<size_t>(at_once, 1))
        {
            if (!start(jobs[next], next))
                return false;
            ++next;
        }
        bool ended = false;
        for (size_t i = running_.size(); i-- > 0;)
        {
            const size_t job = running_[i].job;
            if (!collect(running_[i], jobs[job]))
                continue;
            running_.erase(running_.begin() + static_cast<std::ptrdiff_t>(i));
            ended = true;
            on_end(job);
        }
        if (!ended)
            signals_.wait(kLookAgain);
    }
    stop_all();
    return signals_.received() == 0;
}

std::vector<std::string> lines_said(const std::string& errors)
{
    constexpr const char* kName = "orvlog: ";
    constexpr size_t kLongest = 1000;
    std::vector<std::string> lines;
    std::ifstream file(errors, std::ios::binary);
    for (std::string line; std::getline(file, line);)
    {
        if (!line.starts_with(kName))
            continue;
        if (lines.size() == kMostLines)
            lines.pop_back();
        lines.push_back(line.substr(std::strlen(kName), kLongest));
    }
    return lines;
}

RenderJob render_job(const std::string& log, const std::string& renderer, const std::string& folder, unsigned seconds)
{
    constexpr unsigned kGrace = 5;
    RenderJob job;
    job.words = {"replay", log, "--renderer", renderer, "--png", folder};
    job.renderer = renderer;
    job.seconds = seconds;
    if (renderer == "cairo")
        return job;
    job.words.insert(job.words.end(), {"--call-limit", "0", "--time", std::to_string(seconds)});
    job.seconds += kGrace;
    return job;
}

RenderEnd end_of(const RenderJob& job, std::string* line)
{
    const std::vector<std::string> said = lines_said(job.errors);
    *line = said.empty() ? "" : said.back();
    if (job.timed_out)
    {
        *line = std::string(kTookMoreThan) + std::to_string(job.seconds) + " seconds";
        return RenderEnd::timeout;
    }
    if (job.status >= EXIT_SIGNAL)
    {
        *line = std::string(kEndedBySignal) + std::to_string(job.status - EXIT_SIGNAL);
        return RenderEnd::crashed;
    }
    if (job.status == EXIT_DONE)
        return RenderEnd::done;
    const std::string blamed = job.renderer + ": ";
    const auto told = std::ranges::find_if(said,
                                           [&blamed](const std::string& one)
                                           {
                                               const std::string_view rest(one);
                                               return one.starts_with(blamed) &&
                                                      (rest.substr(blamed.size()).starts_with(kEndedBySignal) ||
                                                       rest.substr(blamed.size()).starts_with(kTookMoreThan));
                                           });
    if (told == said.end())
        return RenderEnd::failed;
    *line = told->substr(blamed.size());
    return line->starts_with(kTookMoreThan) ? RenderEnd::timeout : RenderEnd::crashed;
}

}  // namespace orvlog::tool
