// SPDX-License-Identifier: GPL-2.0-or-later

#include "clients/pdf/job.h"

#include "clients/pdf/interruption.h"
#include "clients/pdf/job/job-state.h"
#include "clients/pdf/job/log-writing.h"
#include "clients/pdf/job/page-run.h"
#include "clients/pdf/job/plain-run.h"
#include "clients/pdf/null-renderer.h"
#include "clients/pdf/records/page-tickets.h"

#include <algorithm>
#include <memory>

namespace orvlog::pdf_client
{

namespace
{

class Job
{
public:
    explicit Job(const JobOptions& options) : state_(options), options_(options) {}

    JobResult run()
    {
        if (!first_run())
            return state_.result;
        finish_tickets();
        if (options_.compare && !options_.check && state_.result.interrupted == 0)
            run_without_logger();
        if (options_.check && state_.result.interrupted == 0)
            compare();
        state_.result.summary.messages = state_.messages.lines();
        state_.result.errors.insert(state_.result.errors.end(), state_.losses.lines().begin(),
                                    state_.losses.lines().end());
        return state_.result;
    }

private:
    bool first_run()
    {
        const std::unique_ptr<PdfDocument> document = state_.open_document();
        if (document == nullptr)
        {
            painting_has_ended();
            return false;
        }
        if (options_.first_page > document->page_count())
        {
            state_.result.errors.push_back(options_.document + " has only " + std::to_string(document->page_count()) +
                                           " pages");
            return false;
        }
        if (options_.no_log)
        {
            state_.result.started = true;
            draw(*document);
            return true;
        }
        return run_with_logger(*document);
    }

    // Without the logger, and once only.
    void draw(PdfDocument& document)
    {
        std::unique_ptr<cairo_renderer::Renderer> renderer;
        if (options_.renderer)
            renderer = state_.make_renderer({}, true);
        const TimeSpent start = TimeSpent::now();
        const Run run = walk(document, renderer != nullptr ? renderer->interface() : null_renderer(), nullptr, nullptr);
        painting_has_ended();
        state_.result.summary.time_without_logger = TimeSpent::now() - start;
        take_over(run, renderer.get());
    }

    bool run_with_logger(PdfDocument& document)
    {
        const std::unique_ptr<client_session::LoggedSession> logger = open_log(state_);
        if (logger == nullptr)
            return false;
        state_.result.started = true;
        state_.result.summary.log = options_.log;
        log_pages(document, *logger);
        return true;
    }

    // In the folder where the files beside the log go.
    void log_pages(PdfDocument& document, client_session::LoggedSession& logger)
    {
        std::unique_ptr<cairo_renderer::Renderer> renderer;
        if (options_.renderer)
            renderer = state_.make_renderer(state_.check.first(), true);
        const std::unique_ptr<PlainRun> plain = options_.check ? std::make_unique<PlainRun>(state_) : nullptr;
        const TimeSpent before = plain != nullptr ? plain->time() : TimeSpent();
        std::string why;
        if (!logger.begin(renderer != nullptr ? renderer->interface() : nullptr, &why))
        {
            state_.result.errors.push_back(why);
            return;
        }
        const TimeSpent start = TimeSpent::now();
        const Run run = walk(document, logger.table(), &logger, plain.get());
        painting_has_ended();
        const std::vector<std::string> lacks = logger.close();
        state_.result.errors.insert(state_.result.errors.end(), lacks.begin(), lacks.end());
        state_.result.summary.log_bytes = logger.log_bytes();
        const TimeSpent plain_time = plain != nullptr ? plain->time() - before : TimeSpent();
        state_.result.summary.time = TimeSpent::now() - start - plain_time;
        take_over(run, renderer.get());
    }

    // What a run has come to. `renderer` may be null.
    void take_over(const Run& run, const cairo_renderer::Renderer* renderer)
    {
        if (renderer != nullptr && !renderer->all_pages_written())
            state_.result.errors.push_back("not all page images could be written");
        else if (renderer != nullptr && !options_.png_folder.empty())
            state_.result.summary.page_images = renderer->pages_finished();
        state_.result.errors.insert(state_.result.errors.end(), run.errors.begin(), run.errors.end());
        state_.result.summary.calls = run.counts;
        state_.result.summary.pages = run.pages;
    }

    void finish_tickets()
    {
        const orvlog::colour::TicketCounts& counts = colour_manager_.counts();
        state_.result.summary.tickets_retained = counts.retained;
        state_.result.summary.tickets_released = counts.released;
        if (!options_.ticket_folder.empty() && !save_tickets(colour_manager_, options_.ticket_folder))
            state_.result.errors.push_back(options_.ticket_folder + ": the tickets can't be written");
    }

    void run_without_logger()
    {
        PlainRun plain(state_);
        for (int page = options_.first_page; page <= plain.pages() && state_.result.interrupted == 0; ++page)
        {
            plain.page(page);
            note_interruption(page, nullptr);
        }
        painting_has_ended();
    }

    // `logger` is null for a walk without it, `plain` without a check.
    Run walk(PdfDocument& document, const ORV_Interface* table, client_session::LoggedSession* logger, PlainRun* plain)
    {
        Run run;
        run.colours = &colour_manager_;
        Painter painter(table, state_.sink(), state_.loss_sink());
        CallDigest calls;
        painter.tell(plain != nullptr ? &calls : nullptr);
        if (!painter.begin_document(1))
        {
            run.errors.push_back("the renderer doesn't take the document");
            return run;
        }
        const int last = std::min(options_.last_page, document.page_count());
        for (int page = options_.first_page; page <= last && state_.result.interrupted == 0; ++page)
        {
            calls.clear();
            const bool whole = paint_page(state_, document, page, painter, run);
            if (plain != nullptr)
            {
                if (!plain->page(page) || !whole)
                    calls.break_off();
                state_.check.end_page(page, calls, plain->calls());
            }
            if (options_.progress)
                options_.progress(page - options_.first_page + 1, last - options_.first_page + 1);
            note_interruption(page, logger);
        }
        painter.end_document();
        run.counts = painter.counts();
        return run;
    }

    void note_interruption(int page, client_session::LoggedSession* logger)
    {
        state_.result.interrupted = interrupting_signal();
        if (state_.result.interrupted == 0)
            return;
        const std::string what = "interrupted on page " + std::to_string(page);
        if (logger != nullptr)
            logger->comment("The job was " + what + ".\n");
        state_.result.errors.push_back(logger != nullptr ? what + "; the log has what was drawn until then"
                                       : options_.no_log ? what
                                                         : "interrupted when the log was written");
    }

    void compare()
    {
        CheckResult check;
        check.pages_compared = state_.check.pages_compared();
        check.pixels_different = state_.check.pixels_different();
        const std::vector<std::string>& by_document = state_.check.differing_by_document();
        check.same = check.pixels_different == 0 && state_.check.not_compared().empty();
        if (state_.check.differ())
            state_.result.errors.push_back("the pages differ from those drawn without the logger");
        state_.result.errors.insert(state_.result.errors.end(), by_document.begin(), by_document.end());
        std::for_each(state_.check.other_calls().begin(), state_.check.other_calls().end(), state_.sink());
        state_.result.errors.insert(state_.result.errors.end(), state_.check.not_compared().begin(),
                                    state_.check.not_compared().end());
        state_.result.summary.check = check;
    }

    JobState state_;
    const JobOptions& options_;
    orvlog::colour::ColourManager colour_manager_;
};

}  // namespace

JobResult run_job(const JobOptions& options)
{
    return Job(options).run();
}

}  // namespace orvlog::pdf_client
