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

double seconds_now()
{
    return std::chrono::duration<double>(std::chrono::steady_clock::now().time_since_epoch()).count();
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
    Patience patience(*place, limits);
    std::string ended;
    const auto goes_on = [&patience, &ended]
    {
        ended = patience.ended();
        return ended.empty();
    };
    system::ProcessEnd end;
    if (!apart.run(in_child, goes_on, &end))
        *why = std::string("no process: ") + std::strerror(errno);
    else if (!ended.empty())
        *why = ended + ", " + place->told();
    else if (!end.how.empty())
        *why = end.how + " (" + end.name + "), " + place->told();
    else if (place->stage_ != WorkPlace::Stage::done)
        *why = "ended the process with the status " + std::to_string(end.status) + ", " + place->told();
    else
        return end.status;
    return EXIT_FAILED;
}

}  // namespace orvlog::tool
