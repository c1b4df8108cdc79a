// Lets a job fail in each of its places in turn, until a run meets no failure.

#pragma once

#include <gtest/gtest.h>

#include <cstdint>
#include <cstdio>

namespace orvlog::test
{

// Calls `meets_failure(n)` for n = 1, 1 + step, 1 + 2 * step and so on. It runs a job with failure number n set and
// gives whether the failure was met. The sweep ends with the first run that met none, and says how many runs met
// one, which it gives. If `cap` runs all did, the end of the job was not reached, and the test has failed; so it has,
// at once, when a run failed an expectation.
template <typename Run> uint64_t sweep_failures(const Run& meets_failure, uint64_t step = 1, uint64_t cap = 2000)
{
    uint64_t met = 0;
    uint64_t n = 1;
    for (; met < cap && meets_failure(n); n += step)
    {
        ++met;
        if (testing::Test::HasFailure())
        {
            ADD_FAILURE() << "in the run with failure number " << n;
            return met;
        }
    }
    if (met == cap)
        ADD_FAILURE() << "all of " << cap << " runs met a failure: the sweep has not reached the end of the job";
    std::printf("%llu runs met a failure, the run with number %llu met none\n", static_cast<unsigned long long>(met),
                static_cast<unsigned long long>(n));
    return met;
}

}  // namespace orvlog::test
