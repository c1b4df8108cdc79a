// orvlog watch: the logs of a spool folder as they come, each exported once.

#include "inspect/export/spool.h"
#include "tools/shared/command.h"
#include "tools/shared/compression-word.h"
#include "tools/shared/left-out.h"
#include "tools/shared/look.h"

#include <algorithm>
#include <chrono>
#include <filesystem>
#include <memory>
#include <set>
#include <string>
#include <thread>
#include <vector>

namespace orvlog::tool
{

namespace
{

using orvlog::inspect::ExportResult;
using orvlog::inspect::JobState;
using orvlog::inspect::SpoolLog;
using orvlog::inspect::SpoolView;

struct WatchCommand
{
    std::string spool;
    std::string jsonl;
    std::string compression;
    orvlog::inspect::ExportOptions options;
    orvlog::inspect::SpoolOptions rest;
    double interval = 1;
    unsigned threads = 0;
    bool once = false;
};

class Watch
{
public:
    explicit Watch(const WatchCommand& command)
        : command_(command), folder_(command.jsonl, read_compression(command.compression)),
          spool_(command.spool, folder_, command.rest)
    {
    }

    int run()
    {
        for (;;)
        {
            const SpoolView view = spool_.look();
            for (const std::string& name : view.journals)
                complain(name, "has a journal beside it; orvlog unpack makes a log of both, which is picked up");
            look_at(view.logs);
            spool_.forget_gone();
            if (command_.once)
                return finish(view);
            std::this_thread::sleep_for(std::chrono::duration<double>(command_.interval));
        }
    }

private:
    void look_at(const std::vector<SpoolLog>& logs)
    {
        std::vector<orvlog::inspect::ExportInput> inputs;
        for (const SpoolLog& log : logs)
            inputs.push_back(spool_.input_of(log));
        orvlog::inspect::ExportPlan plan;
        plan.options = command_.options;
        plan.threads = command_.threads != 0 ? command_.threads : std::max(1U, std::thread::hardware_concurrency());
        std::vector<SpoolLog> done;
        unfinished_ = 0;
        plan.on_result = [&](size_t input, const ExportResult& result)
        {
            if (take(logs[input], result))
                done.push_back(logs[input]);
            return true;
        };
        run_export(inputs, folder_, plan);
        spool_.note(done);
        put(lines_);
        lines_.clear();
        std::fflush(stdout);
    }

    // Whether the file needs no other look.
    bool take(const SpoolLog& log, const ExportResult& result)
    {
        switch (result.kind)
        {
        case ExportResult::Kind::added:
            lines_ += printable(log.name) + ": " + std::to_string(result.rows) + " rows" +
                      (result.state == JobState::whole ? ""
                       : result.state == JobState::cut ? "; the log is cut short"
                                                       : "; the log is damaged") +
                      "\n";
            return true;
        case ExportResult::Kind::known:
        case ExportResult::Kind::no_log:
            return true;
        case ExportResult::Kind::unfinished:
        case ExportResult::Kind::changed:
            ++unfinished_;
            return false;
        case ExportResult::Kind::failed:
            break;
        }
        std::error_code error;
        if (std::filesystem::exists(std::filesystem::path(command_.spool) / log.name, error))
            complain(log.name, result.why);
        return false;
    }

    // Once for each name, up to a bound.
    void complain(const std::string& name, const std::string& why)
    {
        constexpr size_t kMost = 1000;
        failed_ = true;
        if (complained_.size() < kMost && complained_.insert(name).second)
            say(printable(name) + ": " + printable(why));
    }

    int finish(const SpoolView& view) const
    {
        const uint64_t left = view.moving + unfinished_;
        if (left > 0)
            say(std::to_string(left) + (left == 1 ? " file is" : " files are") + " not finished, and may be later");
        return finish_output(failed_ ? EXIT_FAILED : EXIT_DONE);
    }

    const WatchCommand& command_;
    orvlog::inspect::TableFolder folder_;
    orvlog::inspect::Spool spool_;
    std::set<std::string> complained_;
    std::string lines_;
    uint64_t unfinished_ = 0;
    bool failed_ = false;
};

}  // namespace

Run declare_watch(CLI::App& app)
{
    auto command = std::make_shared<WatchCommand>();
    app.add_option("DIR", command->spool, "the folder that jobs leave their logs in")->required();
    app.add_option("--jsonl", command->jsonl, "add the rows to the files of this folder, one for each table")
        ->type_name("DIR")
        ->required();
    app.add_flag("--once", command->once, "look once, and end");
    app.add_option("--compress", command->compression, "how the files of a new folder are compressed")
        ->check(CLI::IsMember({"none", "gzip", "zstd"}));
    app.add_flag("--texts", command->options.texts, "with what texts say, and which glyphs they take");
    app.add_flag("--content", command->options.content,
                 "with each segment of paths, and with bytes of images and profiles");
    app.add_option("--interval", command->interval, "seconds between two looks")
        ->type_name("S")
        ->check(CLI::Range(0.01, 86400.0))
        ->capture_default_str();
    app.add_option("--rest", command->rest.rest_seconds, "seconds for which a closed log has to be at rest")
        ->type_name("S")
        ->check(CLI::Range(0.0, 86400.0))
        ->capture_default_str();
    app.add_option("--settle", command->rest.settle_seconds,
                   "seconds of rest after which a log that isn't closed is taken as cut short")
        ->type_name("S")
        ->check(CLI::Range(0.0, 8640000.0))
        ->capture_default_str();
    app.add_option("--threads", command->threads, "logs that are read side by side")
        ->type_name("N")
        ->check(CLI::Range(1, 64));
    app.footer(
        "Exports the logs of a folder as they are finished, as orvlog export --jsonl does, until it is stopped. A "
        "ledger in the folder of the tables says which logs they hold: each is there once and whole, whenever the "
        "command is stopped, by whatever means, and started again. Links, pipes and other things in the folder "
        "are left alone.");
    return [command]
    { return is_left_out(command->compression) ? left_out("Zstandard", "--compress zstd") : Watch(*command).run(); };
}

}  // namespace orvlog::tool
