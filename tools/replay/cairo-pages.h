// The pages of a replay as the project's own renderer draws them.

#pragma once

#include "clients/replay/replay.h"
#include "orvlog/interface/orv-interface.h"

#include <cstdint>
#include <functional>
#include <memory>
#include <string>

namespace orvlog::tool
{

struct CairoPagesOptions
{
    std::string png;   // the folder of PNG files; empty for none
    std::string svg;   // likewise
    std::string pdf;   // the file, or the folder that it goes to; empty for none
    std::string name;  // what files of pages begin with
    double dpi = 0;    // of the replay; 0: the log's own
    replay::LogKind kind;
    std::function<uint32_t()> page_number;  // of the page that is about to be drawn
    std::function<void(const std::string& line)> complain;
    std::function<void(const std::string& line)> lose;  // what is missing on the pages
};

class CairoPages
{
public:
    CairoPages() = default;
    CairoPages(const CairoPages&) = delete;
    CairoPages& operator=(const CairoPages&) = delete;
    virtual ~CairoPages() = default;

    // True if the PDF file is this one.
    virtual bool would_replace(const std::string& file) const = 0;
    // Makes folders that aren't there, and the renderer.
    virtual void begin() = 0;
    // Null before `begin`.
    virtual const ORV_Interface* interface() const = 0;
    // False if a page couldn't be written.
    virtual bool close() = 0;
};

// Null in a build without Cairo.
std::unique_ptr<CairoPages> make_cairo_pages(CairoPagesOptions options);

}  // namespace orvlog::tool
