// What the library alone costs for the commonest call of a map: a stroke of one segment, 4 KB of text, to a stream
// that drops it. With a count as argument it draws so many and prints nothing, to be run under an instruction
// counter; two counts taken from each other leave the strokes alone.

#include "bench/bench-clock.h"
#include "bench/null-stream.h"
#include "bench/stroke-job.h"

#include <cstdio>
#include <cstdlib>

namespace
{

using orvlog::bench::NullStream;
using orvlog::bench::quickest;
using orvlog::bench::StrokeJob;

constexpr int kStrokes = 20000;

}  // namespace

int main(int argc, char** argv)
{
    NullStream stream;
    StrokeJob job;
    if (!job.begin(stream.get()) || !job.begin_page(1))
        return 1;
    if (argc > 1)
    {
        job.draw(std::atoi(argv[1]));
        job.end_page();
        job.end();
        return 0;
    }
    job.draw(kStrokes / 10);
    stream.clear();
    const double seconds = quickest(7, [&job] { job.draw(kStrokes); });
    std::printf("a logged stroke     %8.0f ns, %.0f bytes, %.0f flushes\n", seconds * 1e9 / kStrokes,
                static_cast<double>(stream.bytes()) / (7.0 * kStrokes),
                static_cast<double>(stream.flushes()) / (7.0 * kStrokes));
    job.end_page();
    job.end();
    return 0;
}
