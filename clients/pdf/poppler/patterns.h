// SPDX-License-Identifier: GPL-2.0-or-later
//
// Tiling patterns: their cells are drawn once, for each scale and colour, and painted many times.

#pragma once

#include "clients/pdf/poppler/canvas.h"

#include <cstddef>
#include <cstdint>
#include <functional>
#include <string>

class Gfx;
class OutputDev;
class PDFDoc;

namespace orvlog::pdf_client
{

struct Patterns
{
    size_t depth = 0;      // of those whose cells are being drawn
    uint64_t unnamed = 0;  // so far, which are drawn anew each time
};

// A pattern as an object is filled with it. The steps are positive.
struct PatternUse
{
    GfxTilingPattern& pattern;
    const double* to_user;
    double x_step;
    double y_step;
};

// `draw_cell` reads the cell's content onto the canvas, where it is called for at all.
void paint_pattern(Patterns& patterns, Canvas& canvas, GfxState* state, const PatternUse& use,
                   const std::function<void()>& draw_cell, const std::function<void(const std::string&)>& complain);

// Reads a cell's content with the reader `gfx`, in whose state the pattern is used.
void read_cell(PDFDoc* document, OutputDev* device, GfxState* state, Gfx* gfx, GfxTilingPattern& pattern);

}  // namespace orvlog::pdf_client
