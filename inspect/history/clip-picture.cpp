#include "inspect/history/clip-picture.h"

#include "inspect/drawing/glyph-form.h"
#include "renderers/cairo/cairo-renderer.h"
#include "renderers/cairo/watch.h"

namespace orvlog::inspect
{

using cairo_renderer::WatchStep;

ClipPicture clip_picture(std::istream& log, const replay::LogKind& kind, const ClipPictureOptions& options)
{
    ClipPicture picture;
    cairo_renderer::PixelBox all;
    uint64_t present = 0;
    uint32_t cells = 0;
    cairo_renderer::Options drawing;
    drawing.keep_images = kind.kept_images;
    drawing.glyph_form = glyph_form(kind);
    drawing.complaint_sink = options.complain ? options.complain : [](const std::string&) {};
    drawing.page_number = [&all](const cairo_renderer::Page& page)
    {
        all = {0, 0, static_cast<int>(page.width), static_cast<int>(page.height)};
        return page.number;
    };
    drawing.watch.emplace();
    drawing.watch->box = {0, 0, INT32_MAX, INT32_MAX};
    drawing.watch->call = [&present] { return present; };
    drawing.watch->step = [&](const WatchStep& step)
    {
        cells += step.kind == WatchStep::Kind::cell_begins ? 1 : 0;
        cells -= step.kind == WatchStep::Kind::cell_ends ? 1 : 0;
        picture.repeated = picture.repeated || (cells > 0 && step.call == options.call);
        if (cells > 0 || step.call != options.call || !step.clips || picture.surface != nullptr || picture.too_large)
            return;
        picture.too_large = static_cast<uint64_t>(all.x1) * static_cast<uint64_t>(all.y1) > kMostClipPixels;
        if (!picture.too_large)
            picture.surface = std::shared_ptr<cairo_surface_t>(step.clips(all), cairo_surface_destroy);
    };
    cairo_renderer::Renderer renderer(std::move(drawing));
    replay::Options play;
    play.files = options.files;
    play.first_page = options.first_page;
    play.last_page = options.last_page;
    play.dpi = options.dpi;
    play.progress = options.progress;
    play.page_begins = [&picture](uint32_t page, uint32_t) { picture.page = page; };
    const uint32_t pages = options.last_page - options.first_page;
    play.before_call = [&](const reader::Element& call)
    {
        present = call.place.byte;
        return picture.surface == nullptr && !picture.too_large && renderer.pages_finished() <= pages;
    };
    replay::ReplayTickets tickets;
    replay::play(log, renderer.interface(), tickets, play);
    return picture;
}

}  // namespace orvlog::inspect
