// Signals that end a command which runs programs side by side: they are waited for, together with the programs' ends.

#pragma once

#include "clients/system/signals.h"

#include <memory>

namespace orvlog::system
{

// While there is one, SIGINT, SIGTERM, SIGHUP, SIGQUIT and SIGCHLD are held back and taken by `wait` alone, but for
// those that are ignored.
class WaitedSignals
{
public:
    WaitedSignals();
    WaitedSignals(const WaitedSignals&) = delete;
    WaitedSignals& operator=(const WaitedSignals&) = delete;
    ~WaitedSignals();

    // Until a program has ended or a signal has come, but no longer than this: what has a time limit is looked at then.
    void wait(long milliseconds);

    // The last signal that was to end the command; 0 if none came.
    int received() const
    {
        return received_;
    }

    // In a new process, before it becomes another program: signals reach it as they reached this one.
    void give_back() const;

private:
    std::unique_ptr<SignalSet> waited_;
    std::unique_ptr<SignalSet> before_;
    int received_ = 0;
};

}  // namespace orvlog::system
