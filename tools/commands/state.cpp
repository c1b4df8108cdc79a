// orvlog state: what holds when a call of a log is made.

#include "inspect/history/call-state.h"
#include "tools/shared/address.h"
#include "tools/shared/clip-drawing.h"
#include "tools/shared/command.h"
#include "tools/shared/files-from.h"
#include "tools/shared/log-again.h"
#include "tools/shared/look.h"
#include "tools/shared/state-text.h"

#include <memory>
#include <string>
#include <vector>

namespace orvlog::tool
{

namespace
{

using orvlog::inspect::CallState;

struct StateOptions
{
    std::string log;
    std::optional<orvlog::reader::CallAddress> address;
    std::string clip_png;
    unsigned dpi = 0;
    bool json = false;
    std::vector<std::string> folders;
};

CallState read_state(const StateOptions& options, LogAgain& log)
{
    Progress progress(log.size());
    return orvlog::inspect::state_at(log.from_start(), *options.address,
                                     [&progress](uint64_t done) { progress.show(done); });
}

int state(const StateOptions& options)
{
    LogAgain log(options.log);
    if (!log.open())
        return fail(options.log + ": " + log.why());
    const CallState found = read_state(options, log);
    if (!found.is_log)
        return fail(options.log + ": not a log");
    if (!found.found)
        return fail(options.log + ": has no " + orvlog::reader::describe(*options.address));
    put(options.json ? json_text(state_json(found)) + "\n" : state_text(found));
    const int status = finish_output(EXIT_DONE);
    if (status != EXIT_DONE)
        return status;
    if (found.damage > 0)
        say(options.log + ": damaged in " + std::to_string(found.damage) + " places before the call");
    return options.clip_png.empty()
               ? EXIT_DONE
               : draw_clip({options.log, options.folders, options.clip_png, options.dpi}, found, log);
}

}  // namespace

Run declare_state(CLI::App& app)
{
    auto options = std::make_shared<StateOptions>();
    app.add_option("LOG", options->log, "the log, plain or coded: a path, a URL, or - for standard input")->required();
    add_address(app, "ADDRESS", options->address, "the id of a paint, or line:N or byte:N of any call")->required();
    app.add_option("--clip-png", options->clip_png, "draw what the clips let through, white on black, as FILE")
        ->type_name("FILE");
    app.add_option("--dpi", options->dpi, "resolution of that picture instead of the page's own")
        ->type_name("N")
        ->check(CLI::Range(1u, 2400u));
    app.add_flag("--json", options->json, "write an object instead");
    add_files_from(app, options->folders);
    app.footer("Tells what holds when the call is made, from the log alone: the document, the page or resource that it "
               "draws on, the groups that are open with their transforms and clips, the outermost first, the colour "
               "frames with their tickets, the font engines, of which the last is asked, the call's own clips, the "
               "resources that are there, and the warnings before it. Boxes are in pixels of the page, in resources in "
               "their own units. The picture has the clips of the groups around the call in it, and for the content of "
               "a resource those of where it is painted first.");
    return [options] { return state(*options); };
}

}  // namespace orvlog::tool
