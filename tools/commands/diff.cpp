// orvlog diff: where two logs of a job differ.

#include "inspect/align/log-alignment.h"
#include "tools/diff/against.h"
#include "tools/diff/diff-input.h"
#include "tools/diff/diff-listing.h"
#include "tools/diff/pixel-pass.h"
#include "tools/shared/command.h"
#include "tools/shared/files-from.h"
#include "tools/shared/left-out.h"
#include "tools/shared/look.h"
#include "tools/shared/source.h"

#include <cstdio>
#include <memory>
#include <string>
#include <vector>

namespace orvlog::tool
{

namespace
{

using namespace orvlog::inspect;

struct DiffOptions
{
    std::string a;
    std::string b;
    std::string against;
    std::string pictures;
    std::vector<std::string> folders;
    double tolerance = 0;
    unsigned dpi = 0;
    unsigned context = 0;
    bool pixels = false;
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

// Both logs, call by call and, if that is wanted, pixel by pixel.
class DiffJob
{
public:
    explicit DiffJob(const DiffOptions& options)
        : options_(options), a_(options.a), b_(options.b), listing_({options.json, options.all, options.context})
    {
    }

    int run()
    {
        if (options_.pixels)
            pages_ = make_pixel_pass(
                {options_.pictures, options_.folders, static_cast<double>(options_.dpi), options_.json, a_, b_});
        if (options_.pixels && pages_ == nullptr)
            return left_out("Cairo", "--pixels");
        for (const DiffInput* input : {&a_, &b_})
            if (!input->open())
                return fail(input->why());
        const AlignOutcome outcome = align_calls();
        if (outcome.no_room)
            return fail("no room for a temporary file with a digest of each call");
        if (!outcome.a.is_log)
            return fail(options_.a + ": not a log");
        if (!outcome.b.is_log)
            return fail(options_.b + ": not a log");
        listing_.add_roots(outcome.roots);
        if (pages_ != nullptr)
            pages_->draw(lacks_);
        listing_.finish(pages_ != nullptr ? &pages_->json() : nullptr);
        return finish(outcome);
    }

private:
    AlignOutcome align_calls()
    {
        Progress progress(2 * a_.size());
        AlignOptions align;
        align.tolerance = options_.tolerance;
        align.progress = [this, &progress](int pass, uint64_t bytes)
        { progress.show(pass == 1 ? bytes : a_.size() + bytes); };
        return align_logs(a_.opener(), b_.opener(), align,
                          [this](const Step& step)
                          {
                              if (pages_ != nullptr)
                                  pages_->number(step);
                              return listing_.add(step);
                          });
    }

    int finish(const AlignOutcome& outcome)
    {
        const bool differs = listing_.differs() || (pages_ != nullptr && pages_->differ());
        const int status = finish_output(differs ? EXIT_FAILED : EXIT_DONE);
        bool sound = !say_state(options_.a, outcome.a);
        sound = !say_state(options_.b, outcome.b) && sound;
        for (const std::string& line : lacks_)
            say(line);
        return sound && lacks_.empty() ? status : EXIT_FAILED;
    }

    const DiffOptions& options_;
    DiffInput a_;
    DiffInput b_;
    DiffListing listing_;
    std::unique_ptr<PixelPass> pages_;  // null if pixels aren't compared
    std::vector<std::string> lacks_;
};

// Empty if the options go together.
std::string contradiction(const DiffOptions& options)
{
    if (options.b.empty() == options.against.empty())
        return options.b.empty() ? "needs another log, or --against a folder of pictures"
                                 : "--against takes the place of the other log";
    if (options.a == "-" && options.b == "-")
        return "the standard input can be one of the logs, not both";
    if (!options.pictures.empty() && !options.pixels && options.against.empty())
        return "--png goes with --pixels or --against";
    if (options.dpi > 0 && !options.pixels && options.against.empty())
        return "--dpi goes with --pixels or --against";
    if (!options.against.empty() && (options.pixels || options.all || options.context > 0))
        return "--against compares pages only";
    return !options.against.empty() && options.tolerance > 255 ? "--tolerance of pixels goes up to 255" : "";
}

int against(const DiffOptions& options)
{
    const DiffInput log(options.a);
    if (!log.open())
        return fail(log.why());
    return compare_against(log, {options.against, options.pictures, static_cast<uint32_t>(options.tolerance),
                                 static_cast<double>(options.dpi), options.json, options.folders});
}

int diff(const DiffOptions& options)
{
    const std::string wrong = contradiction(options);
    if (wrong.empty())
        return options.against.empty() ? DiffJob(options).run() : against(options);
    std::fprintf(stderr, "orvlog diff: %s (see orvlog diff --help)\n", wrong.c_str());
    return EXIT_BAD_USE;
}

}  // namespace

Run declare_diff(CLI::App& app)
{
    auto options = std::make_shared<DiffOptions>();
    app.add_option("LOG", options->a, "the one log, plain or coded: a path, a URL, or - for standard input")
        ->required();
    app.add_option("LOG2", options->b, "the other log");
    app.add_flag("--pixels", options->pixels, "draw both, and tell behind which call each page differs first");
    app.add_option("--against", options->against, "hold the pages of LOG against the pictures in DIR instead")
        ->type_name("DIR");
    app.add_option("--png", options->pictures, "write pictures of pages that differ to FOLDER")->type_name("FOLDER");
    app.add_option("--tolerance", options->tolerance,
                   "let coordinates, colours and widths differ by as much; with --against, channels of pixels")
        ->type_name("T")
        ->check(CLI::Range(0.0, 1e9));
    app.add_option("--dpi", options->dpi, "resolution of the pages instead of their own")
        ->type_name("N")
        ->check(CLI::Range(1u, 2400u));
    app.add_option("--context", options->context, "show as many calls before and behind those that differ")
        ->type_name("N")
        ->check(CLI::Range(0u, 1000u));
    app.add_flag("--all", options->all, "write each difference of a call, however many there are");
    app.add_flag("--json", options->json, "write an object instead");
    add_files_from(app, options->folders);
    app.footer(
        "Calls are aligned by what they are. Numbers that only name something (contexts, ids, unique ids, numbers of "
        "faces, file names) may be others in the other log, as long as the same ones stand for the same things; ids of "
        "paints only count. A line has the call's address in LOG and in LOG2, its page, its kind, and the elements "
        "down to the attribute that differs with both values; or that the call is missing in LOG2, was added, or was "
        "moved. Comments aren't compared. A measure is within the tolerance T if it differs by no more than T, or, "
        "where it is above 1, by no more than that part of it.\n\n"
        "With --pixels a line for each page that differs tells the first call behind which it does, be it on the page "
        "or in the layer of a group, how many pixels do and in which box (minimum x, minimum y, maximum x, maximum y), "
        "and the same for the end of the page. The pictures are what was drawn to behind that call, by LOG (-a), by "
        "LOG2 (-b), and what differs (-marked); with -end- the same of the whole page.\n\n"
        "Pictures for --against are named as orvlog replay --png names them, after LOG; if there are none, those of "
        "the only other name are taken.\n\n"
        "The exit status is 0 if nothing differs, and 1 if something does, or if not all could be compared; then a "
        "line on standard error says why.");
    return [options] { return diff(*options); };
}

}  // namespace orvlog::tool
