// SPDX-License-Identifier: GPL-2.0-or-later
//
// Compares the pages of two runs as they come, first the page of one, then the same page of the other. No more than
// one page is held, and one that comes in bands is held in a temporary file.

#pragma once

#include "clients/pdf/call-digest.h"
#include "renderers/cairo/cairo-renderer.h"

#include <cstdint>
#include <cstdio>
#include <memory>
#include <string>
#include <vector>

namespace orvlog::pdf_client
{

class PageCheck
{
public:
    // What both runs' renderers give their pages to. The check must outlive them.
    cairo_renderer::PageSink first();
    cairo_renderer::PageSink second();

    // Both runs are through with the page of this number, and were asked for these calls.
    void end_page(int number, const CallDigest& logged, const CallDigest& plain);

    uint64_t pages_compared() const;
    uint64_t pixels_different() const;
    // True if a page differs for which both runs were asked for the same.
    bool differ() const;
    // Which pages the document asks for differently each time it is read: a line each, those whose pixels differ too
    // apart from those that come out the same.
    const std::vector<std::string>& differing_by_document() const;
    const std::vector<std::string>& other_calls() const;
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
    uint64_t different_before_ = 0;  // on the pages before this one
    bool differ_ = false;
    std::vector<std::string> differing_by_document_;
    std::vector<std::string> other_calls_;
    std::vector<std::string> not_compared_;
};

}  // namespace orvlog::pdf_client
