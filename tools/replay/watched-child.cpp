#include "tools/replay/watched-child.h"

#include "clients/system/processes.h"
#include "tools/shared/command.h"

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <cstdio>
#include <cstring>
#include <exception>

namespace orvlog::tool
{

namespace
{

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

// Whether the work stays at one place for too long.
class Patience
{
public:
    Patience(const WorkPlace& place, unsigned seconds) : place_(place), steps_(place.steps()), seconds_(seconds) {}

    bool lasts()
    {
        const uint64_t steps = place_.steps();
        if (steps != steps_)
            since_ = Clock::now();
        steps_ = steps;
        return seconds_ == 0 || Clock::now() - since_ <= std::chrono::seconds(seconds_);
    }

private:
    using Clock = std::chrono::steady_clock;

    const WorkPlace& place_;
    uint64_t steps_;
    unsigned seconds_;
    Clock::time_point since_ = Clock::now();
};

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

int run_watched(const std::function<int(WorkPlace&)>& work, unsigned seconds, std::string* why)
{
    system::WorkApart apart(sizeof(WorkPlace));
    auto* place = static_cast<WorkPlace*>(apart.block());
    if (place == nullptr)
    {
        *why = std::strerror(errno);
        return EXIT_FAILED;
    }
    const auto in_child = [&work, place]
    {
        const int result = guarded(work, *place);
        std::fflush(nullptr);
        place->stage_ = WorkPlace::Stage::done;
        return result;
    };
    Patience patience(*place, seconds);
    system::ProcessEnd end;
    if (!apart.run(
            in_child, [&patience] { return patience.lasts(); }, &end))
        *why = std::string("no process: ") + std::strerror(errno);
    else if (!end.in_time)
        *why = "did not come back within " + std::to_string(seconds) + " s, " + place->told();
    else if (!end.how.empty())
        *why = end.how + " (" + end.name + "), " + place->told();
    else if (place->stage_ != WorkPlace::Stage::done)
        *why = "ended the process with the status " + std::to_string(end.status) + ", " + place->told();
    else
        return end.status;
    return EXIT_FAILED;
}

}  // namespace orvlog::tool
