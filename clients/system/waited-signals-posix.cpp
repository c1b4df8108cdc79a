#include "clients/system/waited-signals.h"

#include "clients/system/signal-set-posix.h"

#include <ctime>

namespace orvlog::system
{

namespace
{

constexpr int kEnding[] = {SIGINT, SIGTERM, SIGHUP, SIGQUIT};
constexpr long kNanoseconds = 1'000'000;  // in a millisecond

}  // namespace

WaitedSignals::WaitedSignals() : waited_(std::make_unique<SignalSet>()), before_(std::make_unique<SignalSet>())
{
    sigemptyset(&waited_->signals);
    sigaddset(&waited_->signals, SIGCHLD);
    for (const int signal : kEnding)
    {
        struct sigaction known = {};
        sigaction(signal, nullptr, &known);
        if (known.sa_handler != SIG_IGN)
            sigaddset(&waited_->signals, signal);
    }
    sigprocmask(SIG_BLOCK, &waited_->signals, &before_->signals);
}

WaitedSignals::~WaitedSignals()
{
    sigprocmask(SIG_SETMASK, &before_->signals, nullptr);
}

void WaitedSignals::wait(long milliseconds)
{
    const timespec most{milliseconds / 1000, milliseconds % 1000 * kNanoseconds};
    const int signal = sigtimedwait(&waited_->signals, nullptr, &most);
    if (signal > 0 && signal != SIGCHLD)
        received_ = signal;
}

void WaitedSignals::give_back() const
{
    for (const int signal : kEnding)
        std::signal(signal, SIG_DFL);
    std::signal(SIGPIPE, SIG_DFL);
    std::signal(SIGXFSZ, SIG_DFL);
    sigprocmask(SIG_SETMASK, &before_->signals, nullptr);
}

}  // namespace orvlog::system
