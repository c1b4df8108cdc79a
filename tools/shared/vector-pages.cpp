#include "tools/shared/vector-pages.h"

#include <cairo-pdf.h>
#include <cairo-svg.h>

#include <cstdio>
#include <filesystem>

namespace orvlog::tool
{

namespace
{

namespace fs = std::filesystem;

// The job may be played in another folder than the present one.
std::string absolute(const std::string& file)
{
    return file.empty() ? file : fs::absolute(file).string();
}

}  // namespace

VectorPages::VectorPages(const std::string& svg, const std::string& pdf, const std::string& name)
    : svg_(absolute(svg)), pdf_(absolute(pdf)), name_(name)
{
    std::error_code none;
    if (fs::is_directory(pdf_, none))
        pdf_ = (fs::path(pdf_) / (name_ + ".pdf")).string();
}

VectorPages::~VectorPages()
{
    close();
}

bool VectorPages::would_replace(const std::string& file) const
{
    std::error_code none;
    return !pdf_.empty() && fs::equivalent(pdf_, file, none);
}

// Surfaces of both kinds have 72 units to the inch; pages have pixels.
cairo_surface_t* VectorPages::surface(const cairo_renderer::Page& page, double dpi)
{
    const double scale = dpi > 0 ? 72 / dpi : 1;
    const double width = page.width * scale;
    const double height = page.height * scale;
    if (!svg_.empty())
    {
        char number[16];
        std::snprintf(number, sizeof number, "-%03u.svg", page.number);
        cairo_surface_t* made = cairo_svg_surface_create((fs::path(svg_) / (name_ + number)).c_str(), width, height);
        cairo_surface_set_device_scale(made, scale, scale);
        return made;
    }
    if (document_ == nullptr)
        document_ = cairo_pdf_surface_create(pdf_.c_str(), width, height);
    cairo_pdf_surface_set_size(document_, width, height);
    cairo_surface_set_device_scale(document_, scale, scale);
    return cairo_surface_reference(document_);
}

// An SVG file is written when its surface is finished, and only then is it known whether it could be.
void VectorPages::finish(const cairo_renderer::Page& page)
{
    if (svg_.empty() || page.surface == nullptr || cairo_surface_get_type(page.surface) != CAIRO_SURFACE_TYPE_SVG)
        return;
    cairo_surface_finish(page.surface);
    good_ = cairo_surface_status(page.surface) == CAIRO_STATUS_SUCCESS && good_;
}

bool VectorPages::close()
{
    if (document_ == nullptr)
        return good_;
    cairo_surface_finish(document_);
    good_ = cairo_surface_status(document_) == CAIRO_STATUS_SUCCESS && good_;
    cairo_surface_destroy(document_);
    document_ = nullptr;
    return good_;
}

}  // namespace orvlog::tool
