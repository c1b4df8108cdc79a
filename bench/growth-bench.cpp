// A job of 1,000 pages and 1,000,000 paints: what a call costs and what memory the process has after each tenth of it.
// Both are to stay as they are.

#include "bench/bench-clock.h"
#include "bench/null-stream.h"
#include "bench/stroke-job.h"

#include <unistd.h>

#include <cstdio>

namespace
{

constexpr int kTenths = 10;
constexpr uint32_t kPagesOfTenth = 100;
constexpr int kPaintsOfPage = 1000;

// Kilobytes of the process that are in memory.
long resident_kilobytes()
{
    long pages = 0;
    long resident = 0;
    std::FILE* file = std::fopen("/proc/self/statm", "r");
    if (file == nullptr)
        return 0;
    const int read = std::fscanf(file, "%ld %ld", &pages, &resident);
    std::fclose(file);
    return read == 2 ? resident * (sysconf(_SC_PAGESIZE) / 1024) : 0;
}

}  // namespace

int main()
{
    orvlog::bench::NullStream stream;
    orvlog::bench::StrokeJob job;
    if (!job.begin(stream.get()))
        return 1;
    uint32_t page = 0;
    double first_nanoseconds = 0;
    double last_nanoseconds = 0;
    long first_kilobytes = 0;
    for (int tenth = 1; tenth <= kTenths; ++tenth)
    {
        const double start = orvlog::bench::processor_seconds();
        for (uint32_t i = 0; i < kPagesOfTenth; ++i)
        {
            if (!job.begin_page(++page))
                return 1;
            job.draw(kPaintsOfPage);
            job.end_page();
        }
        const double seconds = orvlog::bench::processor_seconds() - start;
        last_nanoseconds = seconds * 1e9 / (kPagesOfTenth * kPaintsOfPage);
        std::printf("after %4u pages  %6.0f ns a paint  session %llu bytes  process %ld KB\n", page, last_nanoseconds,
                    static_cast<unsigned long long>(job.allocator.bytes_in_use()), resident_kilobytes());
        if (tenth == 1)
        {
            first_nanoseconds = last_nanoseconds;
            first_kilobytes = resident_kilobytes();
        }
    }
    std::printf("the last tenth against the first: %.2f times the time, %ld KB more\n",
                last_nanoseconds / first_nanoseconds, resident_kilobytes() - first_kilobytes);
    job.end();
    return 0;
}
