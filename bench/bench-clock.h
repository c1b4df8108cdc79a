// Time for benchmarks, which print ratios taken in one run.

#pragma once

#include <algorithm>
#include <chrono>

namespace orvlog::bench
{

// Seconds of the quickest of `runs` runs.
template <typename Work> double quickest(int runs, Work work)
{
    double best = 1e300;
    for (int i = 0; i < runs; ++i)
    {
        const auto start = std::chrono::steady_clock::now();
        work();
        best = std::min(best, std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count());
    }
    return best;
}

}  // namespace orvlog::bench
