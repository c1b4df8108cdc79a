// SPDX-License-Identifier: GPL-2.0-or-later
//
// Pages of the document, one after the other, into a painter.

#pragma once

#include "clients/colour/colour-manager.h"
#include "clients/pdf/job/job-state.h"
#include "clients/pdf/painter/painter.h"

#include <string>
#include <vector>

namespace orvlog::pdf_client
{

// One walk through the document's pages.
struct Run
{
    int pages = 0;
    CallCounts counts;
    std::vector<std::string> errors;
    orvlog::colour::ColourManager* colours = nullptr;
};

// Paints the page of this number, counted from 1, with a colour ticket of its own. False if it wasn't painted whole:
// what went wrong is then in the run's errors, unless a signal has come.
bool paint_page(JobState& state, PdfDocument& document, int page, Painter& painter, Run& run);

}  // namespace orvlog::pdf_client
