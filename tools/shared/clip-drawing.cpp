#include "tools/shared/clip-drawing.h"

#include "inspect/history/clip-picture.h"
#include "tools/shared/command.h"
#include "tools/shared/output.h"
#include "tools/shared/source.h"

#include <cairo.h>

#include <cerrno>
#include <cstring>
#include <filesystem>
#include <memory>

namespace orvlog::tool
{

namespace
{

using orvlog::inspect::CallState;
using orvlog::inspect::ClipPicture;
using orvlog::inspect::ClipPictureOptions;

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
bool is_the_log(const ClipDrawing& options)
{
    std::error_code none;
    return std::filesystem::equivalent(options.file, options.log, none);
}

}  // namespace

int draw_clip(const ClipDrawing& options, const CallState& state, LogAgain& log)
{
    const std::string named = options.log + ": the call " + state.call.address;
    ClipPictureOptions drawing;
    drawing.files = orvlog::reader::LogFiles(options.log, options.folders);
    if (!drawing.files.why().empty())
        return fail(drawing.files.why());
    drawing.call = state.byte;
    drawing.dpi = options.dpi;
    if (state.call.page != 0)
        drawing.first_page = drawing.last_page = state.call.page;
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
        return fail(options.file + ": is the log");
    Output output(options.file);
    if (!output.open())
        return fail(options.file + ": " + std::strerror(errno));
    if (!write_png(picture.surface.get(), output) || !output.finish())
        return fail(options.file + ": " + std::strerror(output.reason() != 0 ? output.reason() : errno));
    return EXIT_DONE;
}

}  // namespace orvlog::tool
