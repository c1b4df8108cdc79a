// Signals that end a command: they are passed on to the program that it runs, and temporary folders go first.

#pragma once

#include <cstdint>
#include <memory>
#include <string>

namespace orvlog::system
{

// What a process is known by to the system.
using ProcessId = int64_t;

// Exit statuses above it tell the signal that ended a command.
constexpr int kSignalStatus = 128;

// A set of signals, as the system has it.
struct SignalSet;

// From the first call on SIGINT, SIGTERM, SIGHUP, SIGQUIT and SIGPIPE are handled here, but for those that are ignored.
// One that comes while a program runs is passed on to that program, and the command goes on as if nothing had come:
// who runs the program asks `signal_received` when it has ended. Otherwise all folders that are noted are removed, with
// the files in them, and the command ends with kSignalStatus plus the signal.
void catch_signals();

// The first signal that came while a program ran; 0 if there was none.
int signal_received();

// The program that signals are passed on to; 0 for none.
void set_running_program(ProcessId program);

// Notes a folder, and forgets it. A few at a time; more than there is room for are not removed by a signal.
void note_folder(const std::string& folder);
void forget_folder(const std::string& folder);

// No signal is delivered while there is one of these.
class SignalsHeld
{
public:
    SignalsHeld();
    SignalsHeld(const SignalsHeld&) = delete;
    SignalsHeld& operator=(const SignalsHeld&) = delete;
    ~SignalsHeld();

    // What was held before.
    const SignalSet& before() const
    {
        return *before_;
    }

private:
    std::unique_ptr<SignalSet> before_;
};

}  // namespace orvlog::system
