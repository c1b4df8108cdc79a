// SPDX-License-Identifier: GPL-2.0-or-later
//
// Compares the pages of two runs as they come, first the page of one, then the same page of the other. No more than
// one page is held, and one that comes in bands is held in a temporary file.

#pragma once

#include "renderers/cairo/cairo-renderer.h"

#include <cstdint>
#include <cstdio>
#include <memory>
#include <string>
#include <vector>

namespace pdf_client
{

class PageCheck
{
public:
    // What both runs' renderers give their pages to. The check must outlive them.
    cairo_renderer::PageSink first();
    cairo_renderer::PageSink second();

    // Both runs are through with the page of this number.
    void end_page(int number);

    uint64_t pages_compared() const;
    uint64_t pixels_different() const;
    bool differ() const;
    // Which pages could not be compared, and why.
    const std::vector<std::string>& not_compared() const;

private:
    void hold(const cairo_renderer::Page& page);
    void compare(const cairo_renderer::Page& page);
    bool fetch(const cairo_renderer::Page& page, cairo_renderer::PagePixels& held);

    std::unique_ptr<std::FILE, int (*)(std::FILE*)> file_{nullptr, std::fclose};
    cairo_renderer::PagePixels held_;
    uint64_t rows_held_ = 0;
    uint64_t rows_compared_ = 0;
    bool alone_ = false;  // the other run has no such page
    bool lost_ = false;
    uint64_t pages_ = 0;
    uint64_t different_ = 0;
    std::vector<std::string> not_compared_;
};

}  // namespace pdf_client
