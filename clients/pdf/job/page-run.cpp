// SPDX-License-Identifier: GPL-2.0-or-later

#include "clients/pdf/job/page-run.h"

#include "clients/pdf/interruption.h"
#include "clients/pdf/records/page-tickets.h"

#include <chrono>
#include <cmath>

namespace orvlog::pdf_client
{

namespace
{

constexpr double kPointsPerInch = 72.0;
constexpr double kGreatestUndrawnSide = INT32_MAX;

using Clock = std::chrono::steady_clock;

bool paint_with_ticket(const JobOptions& options, PdfDocument& document, const PageGeometry& geometry,
                       const std::string& name, Painter& painter, Run& run)
{
    if (!painter.begin_page(geometry))
    {
        run.errors.push_back("the renderer doesn't take " + name);
        return false;
    }
    const auto start = Clock::now();
    bool late = false;
    bool stopped = false;
    document.paint_page(static_cast<int>(geometry.number), painter,
                        [&]
                        {
                            const std::chrono::duration<double> taken = Clock::now() - start;
                            late = options.seconds_for_page > 0 && taken.count() > options.seconds_for_page;
                            stopped = late || interrupting_signal() != 0;
                            return stopped;
                        });
    if (late)
        run.errors.push_back(name + " took too long and was broken off");
    painter.end_page();
    ++run.pages;
    return !stopped;
}

}  // namespace

bool paint_page(JobState& state, PdfDocument& document, int page, Painter& painter, Run& run)
{
    const PageSize size = document.page_size(page);
    PageGeometry geometry;
    geometry.number = static_cast<uint32_t>(page);
    geometry.pixels_per_inch = state.options.dpi;
    geometry.inches_wide = size.width / kPointsPerInch;
    geometry.inches_high = size.height / kPointsPerInch;
    const double width = std::ceil(geometry.inches_wide * state.options.dpi);
    const double height = std::ceil(geometry.inches_high * state.options.dpi);
    const std::string name = "page " + std::to_string(page);
    if (!(width >= 1) || !(height >= 1))
    {
        run.errors.push_back(name + " can't be read");
        return false;
    }
    const double greatest_side = state.options.renderer ? cairo_renderer::kGreatestPageSide : kGreatestUndrawnSide;
    if (width > greatest_side || height > greatest_side)
    {
        run.errors.push_back(name + " is too large at " + std::to_string(state.options.dpi) + " dots per inch");
        return false;
    }
    geometry.width = static_cast<uint32_t>(width);
    geometry.height = static_cast<uint32_t>(height);
    geometry.colour_ticket = make_page_ticket(*run.colours, document.page_colours(page), state.sink());
    const bool whole = paint_with_ticket(state.options, document, geometry, name, painter, run);
    orvlog::colour::ColourManager::release(geometry.colour_ticket);
    return whole;
}

}  // namespace orvlog::pdf_client
