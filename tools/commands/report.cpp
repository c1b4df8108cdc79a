// orvlog report: a log as a page for a browser.

#include "clients/command-line/number-range.h"
#include "tools/report/report-job.h"
#include "tools/shared/command.h"
#include "tools/shared/files-from.h"

#include <memory>
#include <string>
#include <vector>

namespace orvlog::tool
{

namespace
{

struct ReportCommand
{
    std::string log;
    std::string other;
    std::string output;
    std::vector<std::string> pages;
    std::vector<std::string> folders;
    bool no_steps = false;
};

int report(const ReportCommand& command)
{
    if (command.log == "-" && command.other == "-")
    {
        fail("the standard input can be one of the logs, not both");
        return EXIT_BAD_USE;
    }
    ReportSettings settings;
    settings.folders = command.folders;
    settings.steps = !command.no_steps;
    for (const std::string& text : command.pages)
        command_line::read_pages(text, &settings.pages.emplace_back());
    std::vector<std::string> logs = {command.log};
    if (!command.other.empty())
        logs.push_back(command.other);
    return make_report(logs, command.output, settings);
}

}  // namespace

Run declare_report(CLI::App& app)
{
    auto command = std::make_shared<ReportCommand>();
    app.add_option("LOG", command->log, "the log, plain or coded: a path, a URL, or - for standard input")->required();
    app.add_option("OTHERLOG", command->other, "another log of the job, to be held against the first")
        ->type_name("LOG");
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
