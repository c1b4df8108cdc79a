#include "tools/replay/cairo-pages.h"

#include "inspect/drawing/glyph-form.h"
#include "renderers/cairo/cairo-renderer.h"
#include "tools/shared/vector-pages.h"

#include <filesystem>
#include <utility>

namespace orvlog::tool
{

namespace
{

namespace fs = std::filesystem;

class Pages : public CairoPages
{
public:
    explicit Pages(CairoPagesOptions options)
        : options_(std::move(options)), vectors_(options_.svg, options_.pdf, options_.name)
    {
    }

    bool would_replace(const std::string& file) const override
    {
        return vectors_.would_replace(file);
    }

    void begin() override
    {
        cairo_renderer::Options drawing;
        if (!options_.png.empty())
        {
            fs::create_directories(options_.png);
            drawing.png_prefix = (fs::absolute(options_.png) / options_.name).string();
        }
        if (vectors_.wanted())
        {
            if (!options_.svg.empty())
                fs::create_directories(options_.svg);
            const double dpi = options_.dpi > 0 ? options_.dpi : options_.kind.dpi;
            drawing.surface_factory = [this, dpi](const cairo_renderer::Page& page)
            { return vectors_.surface(page, dpi); };
            drawing.page_sink = [this](const cairo_renderer::Page& page) { vectors_.finish(page); };
        }
        drawing.page_number = [this](const cairo_renderer::Page&) { return options_.page_number(); };
        drawing.keep_images = options_.kind.kept_images;
        drawing.glyph_form = orvlog::inspect::glyph_form(options_.kind);
        drawing.complaint_sink = options_.complain;
        drawing.loss_sink = options_.lose;
        renderer_ = std::make_unique<cairo_renderer::Renderer>(std::move(drawing));
    }

    const ORV_Interface* interface() const override
    {
        return renderer_ != nullptr ? renderer_->interface() : nullptr;
    }

    bool close() override
    {
        const bool drawn = renderer_ == nullptr || renderer_->all_pages_written();
        return vectors_.close() && drawn;
    }

private:
    const CairoPagesOptions options_;
    VectorPages vectors_;
    std::unique_ptr<cairo_renderer::Renderer> renderer_;
};

}  // namespace

std::unique_ptr<CairoPages> make_cairo_pages(CairoPagesOptions options)
{
    return std::make_unique<Pages>(std::move(options));
}

}  // namespace orvlog::tool
