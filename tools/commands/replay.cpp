// orvlog replay: the job of a log once more, from the log alone.

#include "clients/command-line/number-range.h"
#include "tools/replay/replay-job.h"
#include "tools/replay/replay-options.h"
#include "tools/shared/address.h"
#include "tools/shared/command.h"
#include "tools/shared/files-from.h"

#include <memory>
#include <string>

namespace orvlog::tool
{

namespace
{

// Empty if the options go together.
std::string contradiction(const ReplayOptions& options)
{
    const bool pictures = !options.png.empty() || !options.svg.empty() || !options.pdf.empty();
    if (pictures && options.renderer == "none")
        return "--renderer none draws no pages for --png, --svg or --pdf";
    if (options.as_logged && (pictures || (!options.renderer.empty() && options.renderer != "none")))
        return "--as-logged draws nothing, and takes no other renderer";
    if (has_library(options) && (!options.svg.empty() || !options.pdf.empty()))
        return "a renderer that is a library draws no pages for --svg or --pdf";
    return options.renderer_options && !has_library(options) ? "--renderer-options is for a renderer that is a library"
                                                             : "";
}

int replay(const ReplayOptions& options)
{
    const std::string wrong = contradiction(options);
    if (wrong.empty())
        return run_replay(options);
    std::fprintf(stderr, "orvlog replay: %s (see orvlog replay --help)\n", wrong.c_str());
    return EXIT_BAD_USE;
}

}  // namespace

Run declare_replay(CLI::App& app)
{
    auto options = std::make_shared<ReplayOptions>();
    app.add_option("LOG", options->log, "the log, plain or coded; a path, or - for standard input")->required();
    app.add_option("--log", options->new_log, "log the replay to NEWLOG, or - for standard output")
        ->type_name("NEWLOG");
    app.add_option("--png", options->png, "draw the pages, as PNG files in DIR")->type_name("DIR");
    auto* svg = app.add_option("--svg", options->svg, "draw the pages, as SVG files in DIR")
                    ->type_name("DIR")
                    ->expected(0, 1)
                    ->default_str(".");
    app.add_option("--pdf", options->pdf, "draw the pages, as one PDF file; in a folder it has the log's name")
        ->type_name("FILE")
        ->expected(0, 1)
        ->default_str(".")
        ->excludes(svg);
    app.add_option_function<std::string>(
           "--pages", [options](const std::string& text) { command_line::read_pages(text, &options->pages); },
           "only these pages, from 1")
        ->type_name("A-B")
        ->check(command_line::check_pages);
    app.add_option("--dpi", options->dpi, "resolution of the pages instead of their own")
        ->type_name("N")
        ->check(CLI::Range(1u, 2400u));
    add_address(app, "--up-to", options->up_to, "stop behind this call: the id of a paint, line:N or byte:N");
    app.add_option(
           "--renderer", options->renderer,
           "draw on cairo, on none, or on the shared library FILE, or FILE:SYMBOL; without it as the job was drawn")
        ->type_name("FILE");
    app.add_option("--renderer-options", options->renderer_options, "a text that is given to the library's renderer")
        ->type_name("TEXT");
    app.add_option("--call-limit", options->call_limit, "end a library that takes longer for one call; 0 for never")
        ->type_name("SECONDS")
        ->capture_default_str();
    app.add_option("--time", options->time_limit, "end a library that takes longer in all; 0 for never")
        ->type_name("SECONDS")
        ->capture_default_str();
    app.add_flag("--as-logged", options->as_logged,
                 "do what the job's renderer did; with --renderer none and --log anyhow");
    app.add_option("--images-beside", options->image_prefix, "image data goes to files PREFIX-..., not into NEWLOG")
        ->type_name("PREFIX");
    app.add_flag("--compressed", options->compressed, "write NEWLOG coded");
    app.add_flag("--via-temporary-log", options->via_temporary_log, "log to a temporary file first, then merge");
    app.add_flag("--allow-missing", options->allow_missing, "be content with what there is if image data is missing");
    add_files_from(app, options->folders);
    app.footer(
        "The job is made again from the log and the files beside it: image data and the logs of kept images are "
        "looked for in the log's folder, and in those of --files-from. Pages drawn from a log are those of its job, "
        "pixel by pixel, and the "
        "log of a replay is the log, if the job was drawn by the renderer that orvlog record has. Pages are named "
        "by their own numbers if these rise from page to page.\n\n"
        "Image data that is missing is an error, unless it is allowed. "
        "A log that is cut short or damaged is played as far as it goes; the exit status is then 1.");
    return [options] { return replay(*options); };
}

}  // namespace orvlog::tool
