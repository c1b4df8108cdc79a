// SPDX-License-Identifier: GPL-2.0-or-later

#include "clients/pdf/interruption.h"

#include <csignal>
#include <ctime>
#include <unistd.h>

namespace orvlog::pdf_client
{

namespace
{

constexpr unsigned kSecondsToStop = 3;
constexpr int kSignals[] = {SIGINT, SIGTERM, SIGHUP};

volatile sig_atomic_t received = 0;
volatile time_t received_at = 0;

void end_by(int signal)
{
    std::signal(signal, SIG_DFL);
    std::raise(signal);
}

time_t now()
{
    timespec time = {};
    clock_gettime(CLOCK_MONOTONIC, &time);
    return time.tv_sec;
}

// A terminal and the program that started this one may both pass on what the user did once.
void on_signal(int signal)
{
    if (received != 0)
    {
        if (now() - received_at > 1)
            end_by(signal);
        return;
    }
    received = signal;
    received_at = now();
    alarm(kSecondsToStop);
}

void on_alarm(int)
{
    end_by(received);
}

}  // namespace

void watch_for_interruption()
{
    for (const int signal : kSignals)
        if (std::signal(signal, on_signal) == SIG_IGN)
            std::signal(signal, SIG_IGN);
    std::signal(SIGALRM, on_alarm);
}

int interrupting_signal()
{
    return received;
}

void painting_has_ended()
{
    alarm(0);
}

}  // namespace orvlog::pdf_client
