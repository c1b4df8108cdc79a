// orvlog trim: a smaller log that still replays.

#include "clients/command-line/number-range.h"
#include "inspect/reduce/keep-plan.h"
#include "inspect/reduce/trimmed-text.h"
#include "reader/look/call-address.h"
#include "tools/shared/command.h"
#include "tools/shared/files-from.h"
#include "tools/shared/log-again.h"
#include "tools/shared/look.h"
#include "tools/shared/new-log.h"

#include <algorithm>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace orvlog::tool
{

namespace
{

using command_line::NumberRange;
using orvlog::inspect::CallTag;
using orvlog::inspect::KeepPlan;
using orvlog::inspect::LogScan;
using orvlog::inspect::TrimmedText;
using orvlog::reader::CallAddress;

struct TrimCommand
{
    std::string log;
    std::string output;
    std::vector<std::string> pages;
    std::vector<std::string> ids;
    std::vector<std::string> calls;
    std::vector<std::string> folders;
};

std::string check_call(const std::string& text)
{
    return orvlog::reader::parse_call_address(text) ? "" : "calls are given as ID, line:N or byte:N";
}

// What is wanted of a log, and whether it was met.
class Wanted
{
public:
    explicit Wanted(const TrimCommand& command)
    {
        for (const std::string& text : command.pages)
            command_line::read_pages(text, &pages_.emplace_back().range);
        for (const std::string& text : command.ids)
            command_line::read_ids(text, &ids_.emplace_back().range);
        for (const std::string& text : command.calls)
            calls_.push_back({*orvlog::reader::parse_call_address(text), text, false});
    }

    bool holds(const CallTag& call)
    {
        bool wanted = false;
        for (Range& one : pages_)
            wanted |= call.page != 0 && meets(one, call.page);
        for (Range& one : ids_)
            wanted |= call.id && meets(one, *call.id);
        for (Call& one : calls_)
        {
            if (!is_at(call, one.address))
                continue;
            wanted = one.met = true;
        }
        return wanted;
    }

    // Empty if all was met.
    std::string lacking(const TrimCommand& command) const
    {
        for (size_t i = 0; i < pages_.size(); ++i)
            if (!pages_[i].met)
                return "no page " + command.pages[i];
        for (size_t i = 0; i < ids_.size(); ++i)
            if (!ids_[i].met)
                return "no paint " + command.ids[i];
        for (const Call& one : calls_)
            if (!one.met)
                return "no " + describe(one.address);
        return {};
    }

private:
    struct Range
    {
        NumberRange range;
        bool met = false;
    };
    struct Call
    {
        CallAddress address;
        std::string text;
        bool met;
    };

    static bool meets(Range& one, uint32_t number)
    {
        one.met |= one.range.holds(number);
        return one.range.holds(number);
    }
    static bool is_at(const CallTag& call, const CallAddress& address)
    {
        switch (address.kind)
        {
        case CallAddress::Kind::id:
            return call.id && *call.id == address.number;
        case CallAddress::Kind::line:
            return call.place.line == address.number;
        case CallAddress::Kind::byte:
            return call.place.byte <= address.number && address.number <= call.tag_byte;
        }
        return false;
    }

    std::vector<Range> pages_;
    std::vector<Range> ids_;
    std::vector<Call> calls_;
};

class TrimJob
{
public:
    explicit TrimJob(const TrimCommand& command)
        : command_(command), log_(command.log), files_(command.log, command.folders), wanted_(command),
          plan_([this](const CallTag& call) { return wanted_.holds(call); }, true)
    {
    }

    int run()
    {
        if (!files_.why().empty())
            return fail(files_.why());
        if (!log_.open())
            return fail(command_.log + ": " + log_.why());
        if (command_.output != "-" && is_same_file(command_.output, command_.log))
            return fail(command_.output + ": is the log to be trimmed");
        Progress progress(2 * log_.size());
        if (!make_plan(progress))
            return fail(command_.log + ": not a log");
        if (const std::string lacking = wanted_.lacking(command_); !lacking.empty())
            return fail(command_.log + ": has " + lacking);
        return write(progress);
    }

private:
    bool make_plan(Progress& progress)
    {
        const std::unique_ptr<std::istream> source = log_.pass();
        if (source == nullptr)
            return false;
        LogScan scan(*source);
        for (orvlog::reader::Event event; scan.next(event);)
        {
            plan_.event(event, scan.text());
            progress.show(scan.bytes_used());
        }
        plan_.finish();
        return scan.is_log();
    }

    int write(Progress& progress)
    {
        const std::unique_ptr<std::istream> source = log_.pass();
        if (source == nullptr)
            return fail(command_.log + ": " + log_.why());
        FilesBeside beside(command_.output, files_);
        beside.complain = [this](const std::string& line) { complain(line); };
        orvlog::inspect::TrimOptions options;
        options.plan = &plan_;
        options.open_file = [this](const std::string& name, orvlog::reader::LogFileKind kind)
        { return files_.open(name, kind); };
        options.complain = beside.complain;
        if (command_.output != "-")
            options.take_file = [&beside](const std::string& name, const std::string& kind, uint64_t number)
            { return beside.take(name, kind, number); };
        TrimmedText text(*source, std::move(options));
        std::istream stream(&text);
        stream.exceptions(std::ios::badbit);
        const std::string why =
            write_new_log(stream, command_.output, [&] { progress.show(log_.size() + text.bytes_used()); });
        if (!why.empty())
            return fail(why);
        beside.keep();
        return finish(text);
    }

    int finish(const TrimmedText& text) const
    {
        Progress::make_way_for_output();
        std::fprintf(stderr, "%llu of %llu calls\n", static_cast<unsigned long long>(plan_.kept()),
                     static_cast<unsigned long long>(plan_.calls()));
        int status = EXIT_DONE;
        if (text.missing() > 0)
            status = fail(command_.log + ": lacks data in " + std::to_string(text.missing()) +
                          " places; what could be found is written");
        if (text.is_cut())
            status = fail(command_.log + ": is cut short; what it has of these calls is written");
        else if (text.damage() > 0)
            status = fail(command_.log + ": is damaged in " + std::to_string(text.damage()) +
                          " places; what could be read is written");
        return status;
    }

    void complain(const std::string& line)
    {
        constexpr size_t kMost = 100;
        if (complaints_++ < kMost)
            say(printable(command_.log + ": " + line));
    }

    const TrimCommand& command_;
    LogAgain log_;
    orvlog::reader::LogFiles files_;
    Wanted wanted_;
    KeepPlan plan_;
    size_t complaints_ = 0;
};

int trim(const TrimCommand& command)
{
    if (!command.pages.empty() || !command.ids.empty() || !command.calls.empty())
        return TrimJob(command).run();
    std::fprintf(stderr, "orvlog trim: which calls? --pages, --ids or --calls (see orvlog trim --help)\n");
    return EXIT_BAD_USE;
}

}  // namespace

Run declare_trim(CLI::App& app)
{
    auto command = std::make_shared<TrimCommand>();
    app.add_option("LOG", command->log, "the log, plain or coded; a path, or - for standard input")->required();
    app.add_option("-o,--output", command->output, "the smaller log, or - for standard output")
        ->required()
        ->type_name("NEWLOG");
    const auto list = [&app](const char* name, std::vector<std::string>& values, const char* meaning, const char* type,
                             std::string (*check)(const std::string&))
    { app.add_option(name, values, meaning)->type_name(type)->delimiter(',')->take_all()->expected(1)->check(check); };
    list("--pages", command->pages, "what is on these pages, from 1", "A-B,...", command_line::check_pages);
    list("--ids", command->ids, "the paints of these ids", "A-B,...", command_line::check_ids);
    list("--calls", command->calls, "these calls: the id of a paint, line:N or byte:N", "CALL,...", check_call);
    add_files_from(app, command->folders);
    app.footer(
        "Writes a log with the calls that one of the options names, and with what they need to be made again: their "
        "documents, drawings and groups, the resources that they paint, their tickets. A call that starts a document, "
        "a drawing or a group stands for all up to its end. Numbers count again from the beginning, so that the new "
        "log is one as the logger makes it.\n\n"
        "Files with image data are copied to beside NEWLOG under names that begin like it; none is overwritten. On "
        "standard output the bytes stand in the log itself, as do the logs of kept images in any case.\n\n"
        "A log that is cut short or damaged gives what it has, and the exit status is then 1.");
    return [command] { return trim(*command); };
}

}  // namespace orvlog::tool
