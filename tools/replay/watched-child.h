// Work on code of others, in a process of its own: what ends that process doesn't end the command.

#pragma once

#include <functional>
#include <string>
#include <string_view>

namespace orvlog::tool
{

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
    friend int run_watched(const std::function<int(WorkPlace&)>& work, unsigned seconds, std::string* why);

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

// Runs the work in a new process, and gives its exit status. Where the process came to another end, or stayed at one
// place for longer than `seconds` (0: for ever) and was ended, gives EXIT_FAILED with what happened, and where, in
// `why`: to stand behind the name of who is to blame.
int run_watched(const std::function<int(WorkPlace&)>& work, unsigned seconds, std::string* why);

}  // namespace orvlog::tool
