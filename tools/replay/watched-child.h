// Work on code of others, in a process of its own: what ends that process doesn't end the command.

#pragma once

#include <functional>
#include <string>
#include <string_view>

namespace orvlog::tool
{

// Seconds; 0 is no limit.
struct WorkLimits
{
    unsigned of_call = 0;  // at one place
    unsigned in_all = 0;
};

// Where the work is, for who has to tell of its end. Shared by both processes.
class WorkPlace
{
public:
    // A call of a log is about to be made.
    void enter_call(std::string_view name, uint64_t line);
    // All calls have been made.
    void leave_calls();
    // "in ORV_object_paint, line 17", "before the first call", "behind the last call".
    std::string told() const;
    // Changes with each of these.
    uint64_t steps() const;

private:
    friend int run_watched(const std::function<int(WorkPlace&)>& work, const WorkLimits& limits, std::string* why);

    enum class Stage : uint8_t
    {
        before,
        call,
        behind,
        done
    };

    static constexpr size_t kLongestName = 64;

    volatile uint64_t steps_;
    volatile uint64_t line_;
    volatile Stage stage_;
    char name_[kLongestName];
};

// What `why` begins with where a signal ended the process, or a limit of time.
inline constexpr std::string_view kEndedBySignal = "ended by signal ";
inline constexpr std::string_view kTookMoreThan = "took more than ";

// Runs the work in a new process, and gives its exit status. Where the process came to another end, or took longer than
// a limit and was ended, gives EXIT_FAILED with what happened, and where, in `why`: to stand behind the name of who is
// to blame.
int run_watched(const std::function<int(WorkPlace&)>& work, const WorkLimits& limits, std::string* why);

}  // namespace orvlog::tool
