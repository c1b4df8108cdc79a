// orvlog report: a log as a page for a browser.

#include "clients/command-line/number-range.h"
#include "inspect/report/columns.h"
#include "tools/report/report-compare.h"
#include "tools/report/report-frame.h"
#include "tools/report/reported-log.h"
#include "tools/shared/command.h"
#include "tools/shared/files-from.h"
#include "tools/shared/look.h"
#include "tools/shared/output.h"
#include "tools/shared/touch-text.h"

#include <cerrno>
#include <cstring>
#include <memory>
#include <string>
#include <vector>

namespace orvlog::tool
{

namespace
{

using orvlog::inspect::text_json;

struct ReportCommand
{
    std::string log;
    std::string other;
    std::string output;
    std::vector<std::string> pages;
    std::vector<std::string> folders;
    bool no_steps = false;
};

std::string reasons_json()
{
    using cairo_renderer::Unchanged;
    std::string json = "[";
    for (uint8_t reason = 0; reason <= static_cast<uint8_t>(Unchanged::faint); ++reason)
        json.append(text_json(reason_text(static_cast<Unchanged>(reason)))).append(",");
    json.append(text_json("outside of the page or its clips")).append(",");
    return json.append(text_json("not looked for")).append("]");
}

ReportSettings settings_of(const ReportCommand& command)
{
    ReportSettings settings;
    settings.folders = command.folders;
    settings.steps = !command.no_steps;
    for (const std::string& text : command.pages)
        command_line::read_pages(text, &settings.pages.emplace_back());
    return settings;
}

class ReportJob
{
public:
    explicit ReportJob(const ReportCommand& command) : command_(command), settings_(settings_of(command))
    {
        logs_.push_back(std::make_unique<ReportedLog>(command.log, settings_));
        if (!command.other.empty())
            logs_.push_back(std::make_unique<ReportedLog>(command.other, settings_));
        if (logs_.size() == 2)
            compare_ = std::make_unique<ReportCompare>(*logs_[0], *logs_[1], settings_);
    }

    int run()
    {
        for (const auto& log : logs_)
            if (!log->open())
                return fail(log->why());
        Output output(command_.output);
        if (!output.open())
            return fail_to_write(errno);
        ReportFrame frame(output);
        frame.begin(title());
        for (const auto& log : logs_)
            if (!log->add(frame.blocks()))
                return fail(log->why());
        if (compare_ != nullptr && !compare_->add(frame.blocks()))
            return fail(compare_->why());
        const bool good = frame.end(index()) && output.finish();
        if (!good)
            return fail_to_write(output.reason() != 0 ? output.reason() : errno);
        return say_lacks();
    }

private:
    std::string title() const
    {
        std::string title = logs_[0]->title();
        if (logs_.size() == 2)
            title += " and " + logs_[1]->title();
        return title + " - report";
    }

    int fail_to_write(int reason) const
    {
        const std::string name = command_.output == "-" ? "standard output" : command_.output;
        return fail(name + ": " + std::strerror(reason != 0 ? reason : EIO));
    }

    std::string index() const
    {
        std::string json = "{\"format\":1,\"program\":\"orvlog\",\"version\":";
        json.append(text_json(ORVLOG_VERSION)).append(",\n\"logs\":[");
        for (const auto& log : logs_)
            json.append(log == logs_[0] ? "" : ",\n").append(log->json());
        json.append("],\n\"compare\":").append(compare_ != nullptr ? compare_->json() : "null");
        return json.append(",\n\"reasons\":").append(reasons_json()).append("}");
    }

    int say_lacks() const
    {
        int status = EXIT_DONE;
        for (const auto& log : logs_)
            for (const std::string& line : log->lacks())
                status = fail(log->name() + ": " + line);
        return status;
    }

    const ReportCommand& command_;
    ReportSettings settings_;
    std::vector<std::unique_ptr<ReportedLog>> logs_;
    std::unique_ptr<ReportCompare> compare_;
};

int report(const ReportCommand& command)
{
    if (command.log != "-" || command.other != "-")
        return ReportJob(command).run();
    fail("the standard input can be one of the logs, not both");
    return EXIT_BAD_USE;
}

}  // namespace

Run declare_report(CLI::App& app)
{
    auto command = std::make_shared<ReportCommand>();
    app.add_option("LOG", command->log, "the log, plain or coded: a path, a URL, or - for standard input")->required();
    app.add_option("OTHERLOG", command->other, "another log of the job, to be held against the first")->type_name("LOG");
    app.add_option("-o,--output", command->output, "the report, or - for standard output")
        ->required()
        ->type_name("FILE.html");
    app.add_option("--pages", command->pages, "only these pages, from 1")
        ->type_name("A-B,...")
        ->delimiter(',')
        ->take_all()
        ->expected(1)
        ->check(command_line::check_pages);
    app.add_flag("--no-steps", command->no_steps,
                 "leave out what each call changed: pages are shown as they are in the end");
    add_files_from(app, command->folders);
    app.footer(
        "Writes one file that any browser opens, without a network: the pages as pictures, the calls as a tree with "
        "search and filters, the record of each, and the images, glyphs, gradients and tickets that they use. A click "
        "on the page lists the calls that changed that pixel, as orvlog at does; a click on a call shows its outline, "
        "its clips and the pixels that it changed; the page can be drawn call by call.\n\n"
        "With two logs their calls stand side by side as orvlog diff aligns them, with the attributes that differ, and "
        "the pages with what differs marked.\n\n"
        "What comes from a log is shown as text, and the file loads nothing. Long records are abridged; of very large "
        "logs records, pictures and steps are left out, which is said on the page, on standard error and by the exit "
        "status 1. A log that is cut short or damaged is shown as far as it goes; the exit status is then 1, too.");
    return [command] { return report(*command); };
}

}  // namespace orvlog::tool
