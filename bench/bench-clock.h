// Time for benchmarks, which print ratios taken in one run.

#pragma once

#include <algorithm>
#include <ctime>

namespace orvlog::bench
{

// Seconds of processor time that the process has used.
inline double processor_seconds()
{
    return static_cast<double>(std::clock()) / CLOCKS_PER_SEC;
}

// Seconds of processor time of the quickest of `runs` runs.
template <typename Work> double quickest(int runs, Work work)
{
    double best = 1e300;
    for (int i = 0; i < runs; ++i)
    {
        const double start = processor_seconds();
        work();
        best = std::min(best, processor_seconds() - start);
    }
    return best;
}

}  // namespace orvlog::bench
