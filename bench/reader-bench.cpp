// Reads a log as events, as elements with and without their data, and as records, beside a count of its line feeds.
//
//   reader-bench LOG

#include "reader/records/records.h"
#include "reader/text/log-events.h"
#include "reader/tree/element.h"

#include <algorithm>
#include <cstdio>
#include <ctime>
#include <fstream>
#include <string>
#include <vector>

namespace
{

using namespace orvlog::reader;

constexpr int kRuns = 3;

// Of this process alone.
double processor_seconds()
{
    return static_cast<double>(std::clock()) / CLOCKS_PER_SEC;
}

uint64_t count_lines(std::istream& log)
{
    std::vector<char> block(1 << 18);
    uint64_t lines = 0;
    while (log.read(block.data(), static_cast<std::streamsize>(block.size())), log.gcount() > 0)
        lines += static_cast<uint64_t>(std::count(block.begin(), block.begin() + log.gcount(), '\n'));
    return lines;
}

uint64_t count_events(std::istream& log)
{
    LogEvents events(log);
    uint64_t count = 0;
    for (Event event; events.next(event);)
        ++count;
    return count;
}

uint64_t count_elements(std::istream& log, Data data)
{
    ElementReader elements(log, LogForm::log, data);
    uint64_t count = 0;
    while (elements.next() != nullptr)
        ++count;
    return count;
}

uint64_t make_records(std::istream& log)
{
    ElementReader elements(log);
    Arena arena;
    RecordReader records(arena);
    uint64_t made = 0;
    while (const Element* call = elements.next())
    {
        arena.clear();
        records.start_call();
        made += records.shape_member(*call, "paint_path") != nullptr ? 1 : 0;
        made += records.clip_member(*call, "clip") != nullptr ? 1 : 0;
        for (const char* name : {"operand1", "operand2", "fill_operand1", "stroke_operand1"})
            made += records.operand_member(*call, name) != nullptr ? 1 : 0;
    }
    return made;
}

template <typename Work> void measure(const char* what, const char* name, Work work)
{
    double best = 1e9;
    uint64_t found = 0;
    double size = 0;
    for (int i = 0; i < kRuns; ++i)
    {
        std::ifstream log(name, std::ios::binary);
        log.seekg(0, std::ios::end);
        size = static_cast<double>(log.tellg());
        log.seekg(0);
        const double start = processor_seconds();
        found = work(log);
        best = std::min(best, processor_seconds() - start);
    }
    std::printf("%-28s %8.1f MB/s  %llu\n", what, size / 1e6 / best, static_cast<unsigned long long>(found));
}

}  // namespace

int main(int argc, char** argv)
{
    if (argc != 2)
    {
        std::fprintf(stderr, "reader-bench LOG\n");
        return 2;
    }
    measure("lines", argv[1], count_lines);
    measure("events", argv[1], count_events);
    measure("elements without data", argv[1], [](std::istream& log) { return count_elements(log, Data::skip); });
    measure("elements", argv[1], [](std::istream& log) { return count_elements(log, Data::keep); });
    measure("records of paints", argv[1], make_records);
    return 0;
}
