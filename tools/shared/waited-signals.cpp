#include "tools/shared/waited-signals.h"

#include <ctime>

namespace orvlog::tool
{

namespace
{

constexpr int kEnding[] = {SIGINT, SIGTERM, SIGHUP, SIGQUIT};
constexpr long kNanoseconds = 1'000'000;  // in a millisecond

}  // namespace

WaitedSignals::WaitedSignals()
{
    sigemptyset(&waited_);
    sigaddset(&waited_, SIGCHLD);
    for (const int signal : kEnding)
    {
        struct sigaction known = {};
        sigaction(signal, nullptr, &known);
        if (known.sa_handler != SIG_IGN)
            sigaddset(&waited_, signal);
    }
    sigprocmask(SIG_BLOCK, &waited_, &before_);
}

WaitedSignals::~WaitedSignals()
{
    sigprocmask(SIG_SETMASK, &before_, nullptr);
}

void WaitedSignals::wait(long milliseconds)
{
    const timespec most{milliseconds / 1000, milliseconds % 1000 * kNanoseconds};
    const int signal = sigtimedwait(&waited_, nullptr, &most);
    if (signal > 0 && signal != SIGCHLD)
        received_ = signal;
}

void WaitedSignals::give_back() const
{
    for (const int signal : kEnding)
        std::signal(signal, SIG_DFL);
    std::signal(SIGPIPE, SIG_DFL);
    std::signal(SIGXFSZ, SIG_DFL);
    sigprocmask(SIG_SETMASK, &before_, nullptr);
}

}  // namespace orvlog::tool
