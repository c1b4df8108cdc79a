// The renderer as a shared library: the function that orvlog-renderer.h tells.

#include "orvlog/interface/orvlog-renderer.h"
#include "renderers/cairo/cairo-renderer.h"
#include "renderers/cairo/library-options.h"

#include <exception>
#include <memory>

namespace orvlog::cairo_renderer
{

namespace
{

// A renderer, and the page that it has open as far as it's known here.
struct Library
{
    explicit Library(const ORVLOG_RendererHost* offered) : host(*offered) {}

    bool hand_over(const Page& page)
    {
        cairo_surface_flush(page.surface);
        const unsigned char* data = cairo_image_surface_get_data(page.surface);
        if (data == nullptr)
            return false;
        ORVLOG_RendererPage told{};
        told.face_seq_number = page.face_seq_number;
        told.width = page.width;
        told.height = page.height;
        told.first_row = page.first_row;
        told.rows = page.rows;
        told.row_pixels = static_cast<uint32_t>(cairo_image_surface_get_stride(page.surface)) / 4;
        told.pixels = reinterpret_cast<const uint32_t*>(data);
        return host.take_page(host.context, &told) != 0;
    }

    ORVLOG_RendererHost host;
    std::unique_ptr<Renderer> renderer;
    bool all_taken = true;
};

uint32_t end(void* context)
{
    const std::unique_ptr<Library> library(static_cast<Library*>(context));
    return library->renderer->all_pages_written() && library->all_taken ? 1 : 0;
}

bool make(const ORVLOG_RendererHost* host, const char* text, ORVLOG_Renderer* renderer)
{
    Options options;
    std::string why;
    if (!read_library_options(text != nullptr ? text : "", &options, &why))
    {
        host->complain(host->context, why.c_str());
        return false;
    }
    auto library = std::make_unique<Library>(host);
    Library* const one = library.get();
    options.page_sink = [one](const Page& page) { one->all_taken = one->hand_over(page) && one->all_taken; };
    options.complaint_sink = [one](const std::string& line) { one->host.complain(one->host.context, line.c_str()); };
    library->renderer = std::make_unique<Renderer>(std::move(options));
    renderer->version = ORVLOG_RENDERER_VERSION;
    renderer->table = *library->renderer->interface();
    renderer->end = end;
    renderer->context = library.release();
    return true;
}

}  // namespace

}  // namespace orvlog::cairo_renderer

ORVLOG_RENDERER_EXPORT uint32_t orvlog_renderer(const ORVLOG_RendererHost* host, const char* options,
                                                ORVLOG_Renderer* renderer)
{
    if (host == nullptr || renderer == nullptr || host->version != ORVLOG_RENDERER_VERSION)
        return 0;
    try
    {
        return orvlog::cairo_renderer::make(host, options, renderer) ? 1 : 0;
    }
    catch (const std::exception& error)
    {
        host->complain(host->context, error.what());
        return 0;
    }
}
