// Where the pages of a replay go as vectors: one PDF file, or an SVG file for each page.

#pragma once

#include "renderers/cairo/cairo-renderer.h"

#include <cairo.h>

#include <string>

namespace orvlog::tool
{

class VectorPages
{
public:
    // The folder of SVG files, or the PDF file or the folder in which it gets the name of the pages; both are empty if
    // no such pages are wanted. `name` is what files of pages begin with.
    VectorPages(const std::string& svg, const std::string& pdf, const std::string& name);
    VectorPages(const VectorPages&) = delete;
    VectorPages& operator=(const VectorPages&) = delete;
    ~VectorPages();

    bool wanted() const
    {
        return !svg_.empty() || !pdf_.empty();
    }
    // True if the PDF file is this one.
    bool would_replace(const std::string& file) const;

    // The surface of a page that is about to be drawn, `dpi` pixels to the inch.
    cairo_surface_t* surface(const cairo_renderer::Page& page, double dpi);
    // To be told of a finished page.
    void finish(const cairo_renderer::Page& page);
    // False if a file could not be written.
    bool close();

private:
    std::string svg_;
    std::string pdf_;
    std::string name_;
    cairo_surface_t* document_ = nullptr;
    bool good_ = true;
};

}  // namespace orvlog::tool
