// SPDX-License-Identifier: GPL-2.0-or-later
//
// What the rooms of a job share: what is asked for, what has come of it, and how to open the document and the renderer.

#pragma once

#include "clients/pdf/job.h"
#include "clients/pdf/page-check.h"
#include "clients/pdf/poppler/pdf-document.h"
#include "renderers/cairo/cairo-renderer.h"

#include <functional>
#include <memory>
#include <string>
#include <vector>

namespace orvlog::pdf_client
{

// Everything said during a job, each thing once.
class Messages
{
public:
    void add(const std::string& line);

    const std::vector<std::string>& lines() const
    {
        return lines_;
    }

private:
    std::vector<std::string> lines_;
};

struct JobState
{
    explicit JobState(const JobOptions& wanted) : options(wanted), unlocking{wanted.password, wanted.ask_password} {}
    JobState(const JobState&) = delete;
    JobState& operator=(const JobState&) = delete;

    // Take what is to be said once, and what is an error. The state must outlive them.
    std::function<void(const std::string&)> sink();
    std::function<void(const std::string&)> loss_sink();
    // Null, with an error in the result, if it can't be read.
    std::unique_ptr<PdfDocument> open_document();
    // With a check its pages go to `page_sink`. `pictures`: page images are written, if they are asked for.
    std::unique_ptr<cairo_renderer::Renderer> make_renderer(cairo_renderer::PageSink page_sink, bool pictures);

    const JobOptions& options;
    Unlocking unlocking;
    JobResult result;
    Messages messages;
    Messages losses;  // what is missing on the pages
    PageCheck check;
};

}  // namespace orvlog::pdf_client
