// Jobs drawn by processes of their own: each is `orvlog` with other words, so that a renderer that crashes, hangs or
// takes all memory ends its process and nothing else.

#pragma once

#include "clients/system/waited-signals.h"

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <string>
#include <sys/types.h>
#include <vector>

namespace orvlog::tool
{

struct RenderJob
{
    std::vector<std::string> words;  // behind "orvlog"
    std::string renderer;            // as these name it
    std::string errors;              // the file that takes what it says on standard error
    unsigned seconds = 0;            // of time that it may take; 0: as long as it takes
    uint64_t megabytes = 0;          // of memory that it may map; 0: as much as there is

    // What came of it.
    int status = -1;  // exit status; 128 and the signal that ended it
    bool timed_out = false;
};

class RenderProcesses
{
public:
    RenderProcesses() = default;
    RenderProcesses(const RenderProcesses&) = delete;
    RenderProcesses& operator=(const RenderProcesses&) = delete;
    ~RenderProcesses();

    // Runs all jobs, `at_once` side by side at most, and tells of each that has ended. False when a signal broke the
    // work off, or there was no process to be had; what ran has been ended then.
    bool run(std::vector<RenderJob>& jobs, size_t at_once, const std::function<void(size_t)>& on_end);

    // The signal that broke the work off; 0 if none did.
    int signal_received() const
    {
        return signals_.received();
    }
    const std::string& why() const
    {
        return why_;
    }

private:
    using Clock = std::chrono::steady_clock;

    struct Running
    {
        size_t job = 0;
        pid_t process = 0;
        Clock::time_point due;
    };

    bool start(const RenderJob& job, size_t number);
    [[noreturn]] void become(const RenderJob& job) const;
    bool collect(Running& one, RenderJob& job);
    void stop_all();

    system::WaitedSignals signals_;
    std::vector<Running> running_;
    std::string why_;
};

// A job that draws the pages of a log to a folder of pictures, with a limit of time. A shared library is watched by the
// process that draws as well, which can say in which call it was ended.
RenderJob render_job(const std::string& log, const std::string& renderer, const std::string& folder, unsigned seconds);

// The lines of such a file, without "orvlog: " in front and without those that count what was done: the last one and 19
// before it, the first ones.
std::vector<std::string> lines_said(const std::string& errors);

enum class RenderEnd
{
    done,
    failed,
    crashed,
    timeout
};

// How a job came to its end, and a line for it: "ended by signal 11", "took more than 30 seconds", or what it said
// last; empty if it said nothing.
RenderEnd end_of(const RenderJob& job, std::string* line);

}  // namespace orvlog::tool
