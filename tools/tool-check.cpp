// orvlog check: whether a log holds together.

#include "reader/log-check.h"
#include "reader/log-files.h"
#include "tools/command.h"
#include "tools/tool-look.h"

#include <cstdio>
#include <memory>
#include <string>

namespace tool
{

namespace
{

using nlohmann::ordered_json;
using orvlog::reader::CheckOutcome;
using orvlog::reader::Finding;

struct CheckCommand
{
    std::string log;
    bool json = false;
    bool no_files = false;
};

std::string finding_text(const Finding& finding, bool json, bool first)
{
    if (!json)
        return "line " + std::to_string(finding.place.line) + ": " + printable(finding.text) + "\n";
    ordered_json object;
    object["line"] = finding.place.line;
    object["byte"] = finding.place.byte;
    object["text"] = finding.text;
    return (first ? "[\n" : ",\n") + json_text(object);
}

int check(const CheckCommand& command)
{
    LogInput input(command.log);
    if (!input.open())
        return input.fail_to_open();
    bool first = true;
    orvlog::reader::CheckOptions options;
    options.on_finding = [&](const Finding& finding)
    {
        put(finding_text(finding, command.json, first));
        first = false;
    };
    if (!command.no_files)
        options.open_beside = [folder = orvlog::reader::folder_of_log(command.log)](const std::string& name)
        { return orvlog::reader::open_beside(folder, name); };
    options.progress = [&input](uint64_t done) { input.show(done); };
    const CheckOutcome outcome = orvlog::reader::check_log(input.stream(), options);
    if (!outcome.is_log)
        return input.fail_as_no_log();
    if (command.json)
        put(first ? "[]\n" : "\n]\n");
    return finish_output(outcome.findings == 0 ? EXIT_DONE : EXIT_FAILED);
}

}  // namespace

Run declare_check(CLI::App& app)
{
    auto command = std::make_shared<CheckCommand>();
    app.add_option("LOG", command->log, "the log, plain or coded: a path, a URL, or - for standard input")->required();
    app.add_flag("--no-files", command->no_files, "don't look for the files that the log names");
    app.add_flag("--json", command->json, "write an array of objects instead");
    app.footer("Writes a line for each finding: damaged text, numbers out of order, documents, drawings, groups and "
               "resources that are not begun or not ended, engines, images and tickets that are not known, images and "
               "buffers with too few bytes, files beside the log that are missing or too short, numbers that are not "
               "finite, and empty clips. The exit status is 0 if there is nothing to be found, and 1 if there is, or "
               "if it is no log.");
    return [command] { return check(*command); };
}

}  // namespace tool
