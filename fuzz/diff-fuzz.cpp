// Two logs held against each other, the one made from the other: each call is told once, in order.

#include "fuzz/fuzz.h"
#include "inspect/align/log-alignment.h"

#include <memory>
#include <sstream>
#include <string>

using orvlog::fuzz::Choices;
using orvlog::fuzz::expect;
using namespace orvlog::inspect;

namespace
{

OpenLog opener(const std::string& text)
{
    return [text]() -> std::shared_ptr<std::istream> { return std::make_shared<std::istringstream>(text); };
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    Choices choices(data, size);
    const unsigned how = choices.byte();
    const size_t from = choices.byte() * size_t{256} + choices.byte();
    const size_t count = choices.byte() * size_t{8};
    const std::string a(reinterpret_cast<const char*>(choices.rest()), choices.rest_size());
    std::string b = a;
    const size_t at = a.empty() ? 0 : from % a.size();
    if (how % 4 == 0)
        b.erase(at, count);
    else if (how % 4 == 1)
        b.insert(at, a.substr(at, count));
    else if (how % 4 == 2 && !b.empty())
        b[at] = static_cast<char>(count);
    AlignOptions options;
    options.window = 2 + how / 16;
    options.tolerance = (how & 8) != 0 ? 0.01 : 0;
    uint64_t in_a = 0;
    uint64_t in_b = 0;
    const AlignOutcome outcome = align_logs(opener(a), opener(b), options,
                                            [&](const Step& step)
                                            {
                                                in_a += step.a != nullptr ? 1 : 0;
                                                in_b += step.b != nullptr ? 1 : 0;
                                                expect(a != b || step.kind == StepKind::same, "a log is as itself");
                                                return true;
                                            });
    const bool both = outcome.a.is_log && outcome.b.is_log;
    expect(!both || (in_a == outcome.a.calls && in_b == outcome.b.calls), "each call is told once");
    return 0;
}
