// orvlog repack: a log in Zstandard frames, with an index of its calls and pages.

#include "inspect/repack/log-repacker.h"
#include "reader/text/log-frames.h"
#include "tools/shared/command.h"
#include "tools/shared/left-out.h"
#include "tools/shared/new-log.h"
#include "tools/shared/output.h"
#include "tools/shared/source.h"

#include <cerrno>
#include <cstring>
#include <memory>
#include <string>

namespace orvlog::tool
{

namespace
{

using orvlog::inspect::RepackOutcome;
using orvlog::reader::Ending;

struct Options
{
    std::string log;
    std::string output;
    int level = 9;
    bool dedupe = false;
};

// Nothing is written before the log has shown that it is one.
class LateOutput
{
public:
    explicit LateOutput(const std::string& name) : name_(name) {}

    bool write(const void* data, size_t size)
    {
        if (output_ == nullptr)
            output_ = std::make_unique<Output>(name_);
        const bool good = output_->open() && output_->write(data, size);
        reason_ = good || reason_ != 0 ? reason_ : errno;
        return good;
    }
    bool finish()
    {
        const bool good = output_ != nullptr && output_->finish();
        reason_ = good ? 0 : errno;
        return good;
    }
    // The error number of what failed.
    int reason() const
    {
        return reason_;
    }

private:
    std::string name_;
    std::unique_ptr<Output> output_;
    int reason_ = 0;
};

// What the log lacks is told once all of it that is there stands in the new one.
int say_what_lacks(const Options& options, const RepackOutcome& outcome)
{
    const std::string given = std::to_string(outcome.text_bytes) + " bytes of text are in " + options.output;
    if (outcome.ending == Ending::damaged || outcome.ending == Ending::other)
        return fail(options.log + ": the coded stream is damaged; " + given);
    if (outcome.ending == Ending::cut)
        return fail(options.log + ": the log is cut short; " + given);
    if (!outcome.has_pages)
        say(options.log + ": " +
            (outcome.damage > 0 ? "is damaged in " + std::to_string(outcome.damage) + " places"
                                : std::string("its calls are not in the order of its pages")) +
            ", so the index has no pages; all of the text is in " + options.output);
    return EXIT_DONE;
}

int repack(const Options& options)
{
    if (options.output != "-" && is_same_file(options.log, options.output))
        return fail(options.output + ": is the log to be repacked");
    if (!orvlog::reader::Frames::can_be_read())
        return left_out("Zstandard", "orvlog repack");
    Source source(options.log);
    if (!source.open())
        return fail(options.log + ": " + source.why());
    Progress progress(source.size());
    LateOutput output(options.output);
    orvlog::inspect::RepackOptions wanted;
    wanted.level = options.level;
    wanted.dedupe = options.dedupe;
    wanted.write = [&output](const void* data, size_t size) { return output.write(data, size); };
    wanted.progress = [&progress](uint64_t done) { progress.show(done); };
    const RepackOutcome outcome = orvlog::inspect::repack(source.stream(), wanted);
    if (!outcome.written)
        return fail(options.output + ": " + std::strerror(output.reason()));
    if (!outcome.is_log)
        return fail(options.log + ": not a log");
    if (!output.finish())
        return fail(options.output + ": " + std::strerror(output.reason()));
    return say_what_lacks(options, outcome);
}

}  // namespace

Run declare_repack(CLI::App& app)
{
    auto options = std::make_shared<Options>();
    app.add_option("LOG", options->log, "the log, plain or coded: a path, a URL, or - for standard input")->required();
    app.add_option("-o,--output", options->output, "the repacked log, or - for standard output")
        ->type_name("LOG.xml.zst")
        ->required();
    app.add_option("--level", options->level, "how hard Zstandard tries")
        ->type_name("N")
        ->check(CLI::Range(1, 19))
        ->capture_default_str();
    app.add_flag("--dedupe", options->dedupe,
                 "data of images and profiles that comes again refers to where it stood; zstd -d leaves it out then");
    app.footer("Writes the text of a log as Zstandard frames that begin where pages and calls begin, with a table for "
               "seeking and an index behind them, so that other commands read single pages and calls without the "
               "rest. All commands read it, orvlog unpack brings back the text byte for byte, and so does zstd -d, "
               "but for what --dedupe has put aside. A log that is cut short or damaged is repacked as far as it can "
               "be read, with one line that says so and the exit status 1.");
    return [options] { return repack(*options); };
}

}  // namespace orvlog::tool
