// Logs of which calls are left out: of a foreign text, too, what comes out has an end, and a part of it that is left
// out doesn't come back.

#include "fuzz/fuzz.h"
#include "inspect/reduce/trimmed-text.h"

#include <iterator>
#include <sstream>
#include <string>

using orvlog::fuzz::expect;
using namespace orvlog::inspect;

namespace
{

std::string trim(const std::string& log, uint64_t every, bool whole)
{
    KeepPlan plan([every](const CallTag& call) { return call.ordinal % every == 0; }, whole);
    std::istringstream first(log);
    LogScan scan(first);
    for (orvlog::reader::Event event; scan.next(event);)
        plan.event(event, scan.text());
    plan.finish();
    expect(plan.kept() <= plan.calls(), "no more calls stay than there are");
    std::istringstream second(log);
    TrimOptions options;
    options.plan = &plan;
    TrimmedText text(second, std::move(options));
    return {std::istreambuf_iterator<char>(&text), {}};
}

}  // namespace

int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    const std::string log(reinterpret_cast<const char*>(data), size);
    for (const uint64_t every : {1U, 2U, 5U})
    {
        for (const bool whole : {false, true})
        {
            const std::string once = trim(log, every, whole);
            trim(once, 1, whole);
        }
    }
    return 0;
}
