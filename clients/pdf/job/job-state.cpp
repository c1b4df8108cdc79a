// SPDX-License-Identifier: GPL-2.0-or-later

#include "clients/pdf/job/job-state.h"

#include "clients/pdf/interruption.h"

#include <algorithm>
#include <filesystem>

namespace orvlog::pdf_client
{

void Messages::add(const std::string& line)
{
    if (std::find(lines_.begin(), lines_.end(), line) == lines_.end())
        lines_.push_back(line);
}

std::function<void(const std::string&)> JobState::sink()
{
    return [this](const std::string& line) { messages.add(line); };
}

std::function<void(const std::string&)> JobState::loss_sink()
{
    return [this](const std::string& line) { losses.add(line); };
}

std::unique_ptr<cairo_renderer::Renderer> JobState::make_renderer(cairo_renderer::PageSink page_sink, bool pictures)
{
    cairo_renderer::Options made;
    if (options.check)
        made.page_sink = std::move(page_sink);
    if (pictures && !options.png_folder.empty())
    {
        const std::filesystem::path folder(options.png_folder);
        const std::filesystem::path prefix = folder / std::filesystem::path(options.document).stem();
        made.png_prefix = std::filesystem::absolute(prefix).string();
        made.page_number = [](const cairo_renderer::Page& page) { return page.face_seq_number; };
    }
    made.keep_images = options.keep_images;
    if (options.glyphs != JobOptions::Glyphs::outlines)
    {
        made.glyph_form = options.glyphs == JobOptions::Glyphs::all ? cairo_renderer::GlyphForm::in_turn
                                                                    : cairo_renderer::GlyphForm::bitmap;
    }
    made.complaint_sink = sink();
    made.loss_sink = loss_sink();
    return std::make_unique<cairo_renderer::Renderer>(std::move(made));
}

std::unique_ptr<PdfDocument> JobState::open_document()
{
    std::string reason;
    std::unique_ptr<PdfDocument> document = PdfDocument::open(options.document, sink(), reason, &unlocking);
    if (document == nullptr && interrupting_signal() != 0)
    {
        result.interrupted = interrupting_signal();
        result.errors.push_back("interrupted before the document was open");
    }
    else if (document == nullptr)
    {
        result.errors.push_back(options.document + " " + reason);
    }
    return document;
}

}  // namespace orvlog::pdf_client
