// SPDX-License-Identifier: GPL-2.0-or-later
//
// How long something takes, by the clock and in processor time of the whole process.

#pragma once

#include <chrono>
#include <ctime>

namespace orvlog::pdf_client
{

struct TimeSpent
{
    double seconds = 0;
    double processor_seconds = 0;

    // What has been spent since some fixed moment.
    static TimeSpent now()
    {
        timespec processor{};
        clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &processor);
        const std::chrono::duration<double> elapsed = std::chrono::steady_clock::now().time_since_epoch();
        constexpr double kSecondsOfNanosecond = 1e-9;
        return {elapsed.count(),
                static_cast<double>(processor.tv_sec) + static_cast<double>(processor.tv_nsec) * kSecondsOfNanosecond};
    }

    TimeSpent operator-(const TimeSpent& other) const
    {
        return {seconds - other.seconds, processor_seconds - other.processor_seconds};
    }

    TimeSpent& operator+=(const TimeSpent& other)
    {
        seconds += other.seconds;
        processor_seconds += other.processor_seconds;
        return *this;
    }
};

}  // namespace orvlog::pdf_client
