// orvlog minimise: the smallest log for which a command still succeeds.

#include "clients/system/system.h"
#include "inspect/reduce/minimiser.h"
#include "inspect/reduce/trimmed-text.h"
#include "tools/minimise/replay-check.h"
#include "tools/minimise/trial-runner.h"
#include "tools/shared/command.h"
#include "tools/shared/files-from.h"
#include "tools/shared/look.h"
#include "tools/shared/new-log.h"

#include <algorithm>
#include <iterator>
#include <memory>
#include <sstream>
#include <string>
#include <thread>
#include <vector>

namespace orvlog::tool
{

namespace
{

using orvlog::inspect::Minimiser;
using orvlog::inspect::TrimmedText;

struct MinimiseCommand
{
    std::string log;
    std::string output;
    std::string command;
    unsigned jobs = 0;
    uint64_t limit = UINT64_MAX;
    unsigned timeout = 0;
    std::vector<std::string> folders;
};

TrialOptions trial_options(const MinimiseCommand& command)
{
    TrialOptions options;
    options.command = command.command;
    options.name = "log.orvlog.xml";
    options.state = command.output == "-" ? "" : command.output + ".minimise";
    options.jobs = command.jobs > 0 ? command.jobs : std::max(1U, std::thread::hardware_concurrency());
    options.limit = command.limit;
    options.timeout = command.timeout;
    return options;
}

class MinimiseJob
{
public:
    explicit MinimiseJob(const MinimiseCommand& command) : command_(command), files_(command.log, command.folders) {}

    int run()
    {
        if (!files_.why().empty())
            return fail(files_.why());
        if (is_same_file(command_.output, command_.log))
            return fail(command_.output + ": is the log to be made smaller");
        std::string log;
        if (const std::string why = read(&log); !why.empty())
            return fail(command_.log + ": " + why);
        if (const ReplayCheck check = check_replay(log); !check.good)
            return fail(command_.log + ": can't be replayed: " + printable(check.why));
        TrialRunner runner(trial_options(command_));
        if (!runner.open(log))
            return fail(runner.why());
        const int status = runner.run_first(log);
        if (runner.signal_received() != 0)
            return broken_off(runner);
        if (!runner.why().empty())
            return fail(runner.why());
        if (status != EXIT_DONE)
        {
            runner.forget();
            return fail(command_.log + ": the command doesn't succeed on it, but ends with the status " +
                        std::to_string(status));
        }
        return minimise(runner, std::move(log));
    }

private:
    // All of the log, with what stands beside it.
    std::string read(std::string* log)
    {
        Source source(command_.log);
        if (!source.open())
            return source.why();
        orvlog::inspect::TrimOptions options;
        options.open_file = [this](const std::string& name, orvlog::reader::LogFileKind kind)
        { return files_.open(name, kind); };
        options.complain = [this](const std::string& line) { say(printable(command_.log + ": " + line)); };
        TrimmedText text(source.stream(), std::move(options));
        log->assign(std::istreambuf_iterator<char>(&text), std::istreambuf_iterator<char>());
        if (!text.is_log())
            return "not a log";
        if (text.is_cut())
            return "is cut short";
        return text.damage() > 0 ? "is damaged" : text.missing() > 0 ? "lacks data" : "";
    }

    int minimise(TrialRunner& runner, std::string log)
    {
        const size_t bytes = log.size();
        const uint64_t calls = orvlog::inspect::count_calls(log);
        Minimiser minimiser(std::move(log), runner);
        const bool terminal = system::is_terminal(system::Stream::error);
        minimiser.on_smaller = [&](const std::string& smaller)
        {
            if (terminal)
                std::fprintf(stderr, "\r%llu runs, %zu of %zu bytes ", static_cast<unsigned long long>(runner.runs()),
                             smaller.size(), bytes);
        };
        minimiser.run();
        if (terminal)
            std::fprintf(stderr, "\r\033[K");
        if (runner.signal_received() != 0)
            return broken_off(runner);
        std::istringstream text(minimiser.log());
        const std::string why = write_new_log(text, command_.output, {});
        if (!why.empty())
            return fail(why);
        std::fprintf(stderr, "%llu of %llu calls, %zu of %zu bytes, %llu runs\n",
                     static_cast<unsigned long long>(orvlog::inspect::count_calls(minimiser.log())),
                     static_cast<unsigned long long>(calls), minimiser.log().size(), bytes,
                     static_cast<unsigned long long>(runner.runs()));
        if (!runner.why().empty())
            return fail(runner.why());
        if (runner.limit_reached())
            say(command_.output == "-"
                    ? "the limit of runs is reached"
                    : "the limit of runs is reached; the same command line with a higher one goes on");
        else
            runner.forget();
        return EXIT_DONE;
    }

    int broken_off(const TrialRunner& runner) const
    {
        say(command_.output == "-" ? "broken off" : "broken off; the same command line goes on");
        return EXIT_SIGNAL + runner.signal_received();
    }

    const MinimiseCommand& command_;
    orvlog::reader::LogFiles files_;
};

}  // namespace

Run declare_minimise(CLI::App& app)
{
    auto command = std::make_shared<MinimiseCommand>();
    app.add_option("LOG", command->log, "the log, plain or coded; a path, or - for standard input")->required();
    app.add_option("--while", command->command, "what has to succeed: a command line for the shell, with {} for a log")
        ->required()
        ->type_name("COMMAND");
    app.add_option("-o,--output", command->output, "the smallest log")->required()->type_name("NEWLOG");
    app.add_option("--jobs", command->jobs, "so many runs side by side; without it one for each processor")
        ->type_name("N")
        ->check(CLI::Range(1U, 256U));
    app.add_option("--limit", command->limit, "so many runs at most")
        ->type_name("N")
        ->check(CLI::Range(uint64_t{1}, UINT64_MAX - 512));
    app.add_option("--timeout", command->timeout, "a run that takes longer than so many seconds has failed")
        ->type_name("S")
        ->check(CLI::Range(1U, 1000000U));
    add_files_from(app, command->folders);
    app.footer(
        "Leaves out pages, calls, groups, clips, edges and segments of paths, and blanks areas of images, for as long "
        "as COMMAND ends with the status 0. It is run by the shell with the path of a log in the place of each {}, or "
        "behind it where there is none. Each log is alone in a folder, which is gone behind the run. What the command "
        "writes is not shown, but for its standard error on LOG itself.\n\n"
        "A log that can't be replayed is never tried. The result is the same whatever --jobs is, if COMMAND says the "
        "same of the same log.\n\n"
        "What was found is remembered in NEWLOG.minimise until the work is done: broken off and begun again it goes "
        "on. With -o - nothing is remembered. The log and the smaller ones are held in memory.");
    return [command] { return MinimiseJob(*command).run(); };
}

}  // namespace orvlog::tool
