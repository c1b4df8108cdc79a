// orvlog diff: where two logs of a job differ.

#include "tools/diff/diff-input.h"
#include "tools/diff/diff-listing.h"
#include "tools/shared/command.h"
#include "tools/shared/look.h"
#include "tools/shared/source.h"

#include <memory>
#include <string>

namespace tool
{

namespace
{

using namespace orvlog::inspect;

struct DiffOptions
{
    std::string a;
    std::string b;
    double tolerance = 0;
    unsigned context = 0;
    bool json = false;
    bool all = false;
};

// What isn't sound in a log. True if not all of it could be compared.
bool say_state(const std::string& name, const LogState& state)
{
    if (state.damage == 0 && !state.cut)
        return false;
    std::string line = name + ": " + (state.cut ? "is cut short" : "is damaged");
    if (state.damage > 0)
        line += std::string(state.cut ? ", damaged" : "") + " in " + std::to_string(state.damage) + " places";
    say(line + "; what could be read is compared");
    return true;
}

class DiffJob
{
public:
    explicit DiffJob(const DiffOptions& options) : options_(options), a_(options.a), b_(options.b) {}

    int run()
    {
        for (const DiffInput* input : {&a_, &b_})
            if (!input->open())
                return fail(input->why());
        return compare_calls();
    }

private:
    int compare_calls()
    {
        Progress progress(2 * a_.size());
        AlignOptions align;
        align.tolerance = options_.tolerance;
        align.progress = [this, &progress](int pass, uint64_t bytes)
        { progress.show(pass == 1 ? bytes : a_.size() + bytes); };
        DiffListing listing({options_.json, options_.all, options_.context, true});
        const AlignOutcome outcome =
            align_logs(a_.opener(), b_.opener(), align, [&](const Step& step) { return listing.add(step); });
        if (const int status = why_not(outcome); status != EXIT_DONE)
            return status;
        listing.add_roots(outcome.roots);
        listing.finish();
        const int status = finish_output(listing.differs() ? EXIT_FAILED : EXIT_DONE);
        const bool unsound_a = say_state(options_.a, outcome.a);
        const bool unsound_b = say_state(options_.b, outcome.b);
        return unsound_a || unsound_b ? EXIT_FAILED : status;
    }

    int why_not(const AlignOutcome& outcome) const
    {
        if (outcome.no_room)
            return fail("no room for a temporary file with a digest of each call");
        if (!outcome.a.is_log)
            return fail(options_.a + ": not a log");
        return outcome.b.is_log ? EXIT_DONE : fail(options_.b + ": not a log");
    }

    const DiffOptions& options_;
    DiffInput a_;
    DiffInput b_;
};

// Empty if the options go together.
std::string contradiction(const DiffOptions& options)
{
    if (options.a == "-" && options.b == "-")
        return "the standard input can be one of the logs, not both";
    return {};
}

int diff(const DiffOptions& options)
{
    const std::string wrong = contradiction(options);
    if (wrong.empty())
        return DiffJob(options).run();
    std::fprintf(stderr, "orvlog diff: %s (see orvlog diff --help)\n", wrong.c_str());
    return EXIT_BAD_USE;
}

}  // namespace

Run declare_diff(CLI::App& app)
{
    auto options = std::make_shared<DiffOptions>();
    app.add_option("LOG", options->a, "the one log, plain or coded: a path, a URL, or - for standard input")->required();
    app.add_option("LOG2", options->b, "the other log")->required();
    app.add_option("--tolerance", options->tolerance, "let coordinates, colours and widths differ by as much")
        ->type_name("T")
        ->check(CLI::Range(0.0, 1e9));
    app.add_option("--context", options->context, "show as many calls before and behind those that differ")
        ->type_name("N")
        ->check(CLI::Range(0u, 1000u));
    app.add_flag("--all", options->all, "write each difference of a call, however many there are");
    app.add_flag("--json", options->json, "write an object instead");
    app.footer("");
    return [options] { return diff(*options); };
}

}  // namespace tool
