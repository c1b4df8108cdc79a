#include "inspect/repack/data-runs.h"

#include "inspect/align/hash.h"

#include <algorithm>

namespace orvlog::inspect
{

namespace
{

using reader::Element;

constexpr uint64_t kShortest = uint64_t{1} << 14;
// A longer one is taken apart behind so many bytes of rows, so that equal data comes apart in the same places.
constexpr uint64_t kLongest = uint64_t{1} << 23;

struct Stretch
{
    uint64_t begin = 0;
    uint64_t end = 0;
};

// The rows of a buffer, or the reads of an image that follow one another; 0 as the end is that of what is around them.
void find_stretches(const Element& element, uint64_t end, std::vector<Stretch>& found)
{
    for (const Element* child = element.first; child != nullptr; child = child->next)
    {
        const bool reads = child->name == "GOP_ImageReadFn";
        const Element* first = child;
        while (reads && child->next != nullptr && child->next->name == "GOP_ImageReadFn")
            child = child->next;
        const uint64_t behind = child->next != nullptr ? child->next->place.byte : end;
        if (reads || child->name == "BufferUInt8")
            found.push_back({first->place.byte, behind});
        else if (child->first != nullptr)
            find_stretches(*child, behind, found);
    }
}

bool is_row(std::string_view line)
{
    return !line.empty() && line[0] != ' ' && line[0] != '<' && line[0] != '\r';
}

void take_apart(const Stretch& stretch, std::string_view text, std::vector<DataRun>& runs)
{
    Hash hash;
    uint64_t rows = 0;
    size_t begin = 0;
    size_t at = 0;
    const auto end_run = [&]
    {
        if (at - begin >= kShortest)
            runs.push_back({stretch.begin + begin, stretch.begin + at, hash.value()});
        hash = {};
        rows = 0;
        begin = at;
    };
    while (at < text.size())
    {
        const size_t end = std::min(text.find('\n', at), text.size() - 1) + 1;
        const std::string_view line = text.substr(at, end - at);
        at = end;
        if (!is_row(line))
            continue;
        hash.add(line);
        rows += line.size();
        if (rows >= kLongest || at - begin >= 4 * kLongest)
            end_run();
    }
    end_run();
}

}  // namespace

std::vector<DataRun> data_runs(const Element& call,
                               const std::function<std::string_view(uint64_t begin, uint64_t end)>& text)
{
    std::vector<Stretch> stretches;
    find_stretches(call, 0, stretches);
    std::vector<DataRun> runs;
    for (const Stretch& stretch : stretches)
    {
        std::string_view found = text(stretch.begin, stretch.end != 0 ? stretch.end : UINT64_MAX);
        // The last thing in the call ends with a tag at its end.
        if (stretch.end == 0)
            found = found.substr(0, std::min(found.find("</BufferUInt8>"), found.size()));
        if (found.size() >= kShortest)
            take_apart(stretch, found, runs);
    }
    return runs;
}

}  // namespace orvlog::inspect
