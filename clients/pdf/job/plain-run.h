// SPDX-License-Identifier: GPL-2.0-or-later
//
// The job once more without the logger, for its time and for the check.

#pragma once

#include "clients/pdf/call-digest.h"
#include "clients/pdf/job/job-state.h"
#include "clients/pdf/job/page-run.h"
#include "clients/pdf/time-spent.h"

#include <memory>

namespace orvlog::pdf_client
{

// The pages drawn again. With a check each is drawn right after the logged one, so that one page of each run is held;
// else they are all drawn after the log.
class PlainRun
{
public:
    // Opens the document again. If that can't be done no page is painted, and the result has an error. The state must
    // outlive the run.
    explicit PlainRun(JobState& state);
    // Ends the document and leaves the time in the result.
    ~PlainRun();
    PlainRun(const PlainRun&) = delete;
    PlainRun& operator=(const PlainRun&) = delete;

    // False if it wasn't painted whole.
    bool page(int number);
    // What the last page asked for; nothing without a check.
    CallDigest& calls();
    // The last page to paint; 0 if there is none.
    int pages() const;
    const TimeSpent& time() const;

private:
    void note_time(const TimeSpent& start);

    JobState& state_;
    orvlog::colour::ColourManager colours_;
    std::unique_ptr<PdfDocument> document_;
    std::unique_ptr<cairo_renderer::Renderer> renderer_;
    std::unique_ptr<Painter> painter_;
    CallDigest calls_;
    Run run_;
    bool begun_ = false;
    TimeSpent time_;
};

}  // namespace orvlog::pdf_client
