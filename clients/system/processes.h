// Processes that a program starts: its own work apart from it, and command lines of the user's.

#pragma once

#include "clients/system/waited-signals.h"

#include <cstddef>
#include <cstdint>
#include <functional>
#include <string>

namespace orvlog::system
{

// How a process came to its end.
struct ProcessEnd
{
    int status = 0;    // its exit status, if `how` is empty
    std::string how;   // "ended by signal 11"; empty if it left by itself
    std::string name;  // of that, "Segmentation fault"
};

// Work of this program in a process of its own, with a block of memory that both see. On a system that can't double a
// process this program is started again with the same command line, and the new one goes on from the constructor: what
// comes before it happens twice, so nothing may be read from the standard input or written until then.
class WorkApart
{
public:
    // The block is `size` bytes, all zero.
    explicit WorkApart(size_t size);
    WorkApart(const WorkApart&) = delete;
    WorkApart& operator=(const WorkApart&) = delete;
    ~WorkApart();

    // Null with errno set if there is none.
    void* block() const
    {
        return block_;
    }
    // Waits for the end of the work, whose result is the exit status of its process; it may throw nothing. `goes_on` is
    // asked time and again meanwhile, and ends the process by false. False with errno set if there is no
    // process to be had.
    bool run(const std::function<int()>& work, const std::function<bool()>& goes_on, ProcessEnd* end);

private:
    void* block_ = nullptr;
    size_t size_;
    [[maybe_unused]] intptr_t section_ = 0;  // where a block is had by a handle
    bool is_apart_ = false;
};

// A command line that the system's shell runs, with no input and its output thrown away.
class ShellRun
{
public:
    // The status of a run that `before` refused.
    static constexpr int kRefused = 125;

    // `before` is run ahead of the command, beside this process where that can be. False with errno set if there is no
    // process to be had.
    bool start(const std::string& command, bool show_errors, const std::function<bool()>& before,
               const WaitedSignals& signals);
    // Whether the command has ended by itself. Then what it has left running is ended, too.
    bool has_ended();
    // Ends it, with all that it has started.
    void stop();
    // Of one that has ended: its exit status, or from kSignalStatus on.
    int status() const
    {
        return status_;
    }

private:
    intptr_t process_ = 0;
    intptr_t group_ = 0;
    int status_ = -1;
};

}  // namespace orvlog::system
