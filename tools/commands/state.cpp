// orvlog state: what holds when a call of a log is made.

#include "inspect/history/call-state.h"
#include "inspect/history/clip-picture.h"
#include "tools/shared/address.h"
#include "tools/shared/command.h"
#include "tools/shared/files-from.h"
#include "tools/shared/indexed-log.h"
#include "tools/shared/log-again.h"
#include "tools/shared/look.h"
#include "tools/shared/output.h"
#include "tools/shared/state-text.h"

#include <cairo.h>

#include <cerrno>
#include <cstring>
#include <filesystem>
#include <memory>
#include <string>
#include <vector>

namespace orvlog::tool
{

namespace
{

using orvlog::inspect::CallState;
using orvlog::inspect::ClipPicture;
using orvlog::inspect::ClipPictureOptions;

struct StateOptions
{
    std::string log;
    std::optional<orvlog::reader::CallAddress> address;
    std::string clip_png;
    unsigned dpi = 0;
    bool json = false;
    std::vector<std::string> folders;
};

// White where the clips let through, black elsewhere.
bool write_png(cairo_surface_t* alpha, Output& output)
{
    const std::shared_ptr<cairo_surface_t> picture(cairo_image_surface_create(CAIRO_FORMAT_RGB24,
                                                                              cairo_image_surface_get_width(alpha),
                                                                              cairo_image_surface_get_height(alpha)),
                                                   cairo_surface_destroy);
    const std::shared_ptr<cairo_t> cr(cairo_create(picture.get()), cairo_destroy);
    cairo_surface_set_device_offset(alpha, 0.0, 0.0);
    cairo_set_source_rgb(cr.get(), 1.0, 1.0, 1.0);
    cairo_mask_surface(cr.get(), alpha, 0.0, 0.0);
    const auto put_bytes = [](void* to, const unsigned char* bytes, unsigned count)
    { return static_cast<Output*>(to)->write(bytes, count) ? CAIRO_STATUS_SUCCESS : CAIRO_STATUS_WRITE_ERROR; };
    return cairo_surface_write_to_png_stream(picture.get(), put_bytes, &output) == CAIRO_STATUS_SUCCESS;
}

// Whether two names lead to the same file.
bool is_the_log(const StateOptions& options)
{
    std::error_code none;
    return std::filesystem::equivalent(options.clip_png, options.log, none);
}

int draw_clip(const StateOptions& options, const CallState& state, LogAgain& log)
{
    const std::string named = options.log + ": the call " + state.call.address;
    ClipPictureOptions drawing;
    drawing.files = orvlog::reader::LogFiles(options.log, options.folders);
    if (!drawing.files.why().empty())
        return fail(drawing.files.why());
    drawing.call = state.byte;
    drawing.dpi = options.dpi;
    if (state.call.page != 0)
    {
        drawing.first_page = drawing.last_page = state.call.page;
        log.keep_to_page(state.call.page);
    }
    const orvlog::replay::LogKind kind = orvlog::replay::examine(log.from_start());
    Progress progress(log.size());
    drawing.progress = [&progress](uint64_t done) { progress.show(done); };
    const ClipPicture picture = orvlog::inspect::clip_picture(log.from_start(), kind, drawing);
    if (picture.too_large)
        return fail(named + " is on a page of too many pixels for a picture; --dpi makes it smaller");
    if (picture.surface == nullptr && picture.repeated)
        return fail(named + " paints a cell that is repeated, so there is no picture of its clip");
    if (picture.surface == nullptr)
        return fail(named + " paints on no page, so there is no picture of its clip");
    if (is_the_log(options))
        return fail(options.clip_png + ": is the log");
    Output output(options.clip_png);
    if (!output.open())
        return fail(options.clip_png + ": " + std::strerror(errno));
    if (!write_png(picture.surface.get(), output) || !output.finish())
        return fail(options.clip_png + ": " + std::strerror(output.reason() != 0 ? output.reason() : errno));
    return EXIT_DONE;
}

CallState read_state(const StateOptions& options, LogAgain& log)
{
    Progress progress(log.size());
    // Warnings stand anywhere in the log, and count.
    const IndexedLog indexed(log.path());
    std::unique_ptr<std::istream> part;
    if (indexed.warnings() == 0U)
        part = indexed.up_to_call(*options.address, 1, 0, orvlog::reader::Resources::none);
    return orvlog::inspect::state_at(part != nullptr ? *part : log.from_start(), *options.address,
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
    return options.clip_png.empty() ? EXIT_DONE : draw_clip(options, found, log);
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
