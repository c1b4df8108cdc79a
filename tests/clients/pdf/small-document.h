// SPDX-License-Identifier: GPL-2.0-or-later
//
// Documents of one page, written for a test, and what becomes of them.

#pragma once

#include "clients/pdf/job.h"
#include "renderers/cairo/cairo-renderer.h"

#include <cstdint>
#include <string>
#include <vector>

namespace orvlog::small_document
{

// A stream object with what `entries` adds to its dictionary.
std::string stream(const std::string& entries, const std::string& bytes);

// A page of 100 points each way with this content; `resources` are the entries of its dictionary. The further objects
// count from 5.
std::string page(const std::string& content, const std::string& resources = "",
                 const std::vector<std::string>& objects = {});

std::string from_hex(const std::string& digits);

// A JPEG 2000 image of 48 by 40 pixels in RGB, each (200, 40, 90).
std::string jpeg_2000();

// A font of two glyphs, of which "A" is a square as large as the em and " " is blank: three objects, the first of them
// the font, to be numbered from `number` on.
std::vector<std::string> square_font(int number);

struct Made
{
    pdf_client::JobResult result;
    std::string log;
    std::vector<std::string> pages;  // the PNG files
};

// Records the document as `options` say, at 72 dots to the inch; what names files is set here.
Made record(const std::string& document, pdf_client::JobOptions options);

// The page as it is drawn without a logger, 72 pixels to the inch; `messages` takes what is said of it.
cairo_renderer::PagePixels draw(const std::string& document, std::vector<std::string>* messages = nullptr);

// 0xRRGGBB.
uint32_t pixel(const cairo_renderer::PagePixels& page, uint32_t x, uint32_t y);

}  // namespace orvlog::small_document
