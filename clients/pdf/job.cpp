// SPDX-License-Identifier: GPL-2.0-or-later

#include "clients/pdf/job.h"

#include "clients/pdf/interruption.h"
#include "clients/pdf/logged-interface.h"
#include "clients/pdf/null-renderer.h"
#include "clients/pdf/page-check.h"
#include "clients/pdf/poppler/pdf-document.h"
#include "clients/pdf/records/page-tickets.h"
#include "clients/stream/files-beside.h"
#include "clients/stream/log-file.h"
#include "reader/check/files-due.h"
#include "renderers/cairo/cairo-renderer.h"

#include <algorithm>
#include <chrono>
#include <cmath>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <memory>

namespace pdf_client
{

namespace
{

constexpr double points_per_inch = 72.0;
constexpr double greatest_undrawn_side = INT32_MAX;

using Clock = std::chrono::steady_clock;

// Everything said during a job, each thing once.
class Messages
{
public:
    void add(const std::string& line)
    {
        if (std::find(lines_.begin(), lines_.end(), line) == lines_.end())
        {
            lines_.push_back(line);
        }
    }

    const std::vector<std::string>& lines() const
    {
        return lines_;
    }

private:
    std::vector<std::string> lines_;
};

// One walk through the document's pages.
struct Run
{
    int pages = 0;
    CallCounts counts;
    std::vector<std::string> errors;
    orvlog::colour::ColourManager* colours = nullptr;
};

class Job
{
public:
    explicit Job(const JobOptions& options) : options_(options), unlocking_{options.password, options.ask_password} {}

    JobResult run()
    {
        if (!first_run())
        {
            return result_;
        }
        finish_tickets();
        if (options_.compare && !options_.check && result_.interrupted == 0)
        {
            run_without_logger();
        }
        if (options_.check && result_.interrupted == 0)
        {
            compare();
        }
        result_.summary.messages = messages_.lines();
        return result_;
    }

private:
    std::function<void(const std::string&)> sink()
    {
        return [this](const std::string& line) { messages_.add(line); };
    }

    std::unique_ptr<cairo_renderer::Renderer> make_renderer(cairo_renderer::PageSink check, bool pictures)
    {
        cairo_renderer::Options options;
        if (options_.check)
        {
            options.page_sink = std::move(check);
        }
        if (pictures && !options_.png_folder.empty())
        {
            const std::filesystem::path folder(options_.png_folder);
            const std::filesystem::path prefix = folder / std::filesystem::path(options_.document).stem();
            options.png_prefix = std::filesystem::absolute(prefix).string();
            options.page_number = [](const cairo_renderer::Page& page) { return page.face_seq_number; };
        }
        options.keep_images = options_.keep_images;
        if (options_.glyphs != JobOptions::Glyphs::outlines)
        {
            options.glyph_form = options_.glyphs == JobOptions::Glyphs::all ? cairo_renderer::GlyphForm::in_turn
                                                                            : cairo_renderer::GlyphForm::bitmap;
        }
        options.complaint_sink = sink();
        return std::make_unique<cairo_renderer::Renderer>(std::move(options));
    }

    std::unique_ptr<PdfDocument> open_document()
    {
        std::string reason;
        std::unique_ptr<PdfDocument> document = PdfDocument::open(options_.document, sink(), reason, &unlocking_);
        if (document == nullptr && interrupting_signal() != 0)
        {
            result_.interrupted = interrupting_signal();
            result_.errors.push_back("interrupted before the document was open");
        }
        else if (document == nullptr)
        {
            result_.errors.push_back(options_.document + " " + reason);
        }
        return document;
    }

    bool first_run()
    {
        const std::unique_ptr<PdfDocument> document = open_document();
        if (document == nullptr)
        {
            painting_has_ended();
            return false;
        }
        if (options_.first_page > document->page_count())
        {
            result_.errors.push_back(options_.document + " has only " + std::to_string(document->page_count()) +
                                     " pages");
            return false;
        }
        if (options_.no_log)
        {
            result_.started = true;
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
        {
            renderer = make_renderer({}, true);
        }
        const TimeSpent start = TimeSpent::now();
        const Run run = walk(document, renderer != nullptr ? renderer->interface() : null_renderer(), nullptr, nullptr);
        painting_has_ended();
        result_.summary.time_without_logger = TimeSpent::now() - start;
        take_over(run, renderer.get());
    }

    bool run_with_logger(PdfDocument& document)
    {
        std::error_code none;
        if (std::filesystem::equivalent(options_.log, options_.document, none))
        {
            result_.errors.push_back(options_.log + ": is the document to be logged");
            return false;
        }
        // A log of before stays when its files could not be made.
        const std::string place = options_.folder_beside.empty() ? options_.log : options_.folder_beside + "/log";
        const client_stream::FilesBeside beside = client_stream::files_beside(place, options_.image_prefix);
        if (!beside.trouble.empty())
        {
            result_.errors.push_back(beside.trouble);
            return false;
        }
        // The job runs in another folder than the present one.
        const std::string file = std::filesystem::absolute(options_.log).string();
        const std::unique_ptr<client_stream::LogFile> log = client_stream::LogFile::open(file, options_.stream);
        if (log == nullptr)
        {
            // Only a journal must not be there before.
            const char* ending = errno == EEXIST ? ".journal" : "";
            result_.errors.push_back(options_.log + ending + ": " + std::strerror(errno));
            return false;
        }
        result_.started = true;
        result_.summary.log = options_.log;
        record(document, *log, beside);
        return true;
    }

    // In the folder where the files beside the log go.
    void record(PdfDocument& document, client_stream::LogFile& log, const client_stream::FilesBeside& beside)
    {
        std::unique_ptr<cairo_renderer::Renderer> renderer;
        if (options_.renderer)
        {
            renderer = make_renderer(check_.first(), true);
        }
        const std::unique_ptr<PlainRun> plain = options_.check ? std::make_unique<PlainRun>(*this) : nullptr;
        const TimeSpent before = plain != nullptr ? plain->time() : TimeSpent();
        const std::filesystem::path from = std::filesystem::current_path();
        const client_stream::PresentFolder there(beside.folder);
        std::string why = there.error() ? beside.folder.string() + ": " + there.error().message() : "";
        const std::unique_ptr<LoggedInterface> logger =
            there.error()
                ? nullptr
                : LoggedInterface::create(options_, beside.prefix,
                                          renderer != nullptr ? renderer->interface() : nullptr, log.stream(), why);
        if (logger == nullptr)
        {
            result_.errors.push_back(why);
            return;
        }
        const TimeSpent start = TimeSpent::now();
        const Run run = walk(document, logger->table(), logger.get(), plain.get());
        painting_has_ended();
        logger->shut_down();
        finish_log(*logger, log, from);
        const TimeSpent plain_time = plain != nullptr ? plain->time() - before : TimeSpent();
        result_.summary.time = TimeSpent::now() - start - plain_time;
        take_over(run, renderer.get());
    }

    // What a run has come to. `renderer` may be null.
    void take_over(const Run& run, const cairo_renderer::Renderer* renderer)
    {
        if (renderer != nullptr && !renderer->all_pages_written())
        {
            result_.errors.push_back("not all page images could be written");
        }
        else if (renderer != nullptr && !options_.png_folder.empty())
        {
            result_.summary.page_images = renderer->pages_finished();
        }
        result_.errors.insert(result_.errors.end(), run.errors.begin(), run.errors.end());
        result_.summary.calls = run.counts;
        result_.summary.pages = run.pages;
    }

    void finish_tickets()
    {
        const orvlog::colour::TicketCounts& counts = colour_manager_.counts();
        result_.summary.tickets_retained = counts.retained;
        result_.summary.tickets_released = counts.released;
        if (!options_.ticket_folder.empty() && !save_tickets(colour_manager_, options_.ticket_folder))
        {
            result_.errors.push_back(options_.ticket_folder + ": the tickets can't be written");
        }
    }

    // Says of each file what of it isn't there.
    void finish_log(const LoggedInterface& logger, client_stream::LogFile& log, const std::filesystem::path& from)
    {
        client_stream::TemporaryLog* detour = logger.detour();
        std::string why;
        if (detour != nullptr)
        {
            look_for_files(detour->name());
        }
        const bool merged = detour == nullptr || detour->merge_into(log.stream(), options_.compressed, &why);
        const bool whole = log.close();
        if (!whole)
        {
            why = options_.log + ": " + std::strerror(log.first_error());
            result_.errors.push_back(why + "; the log is incomplete" +
                                     (log.has_journal() ? ", and its end is in " + options_.log + ".journal" : ""));
        }
        else if (!merged)
        {
            result_.errors.push_back(why + "; the log is incomplete");
        }
        if (!merged)
        {
            result_.errors.push_back("what was logged can be had by: " + detour->merge_command(from, wanted_log()));
        }
        if (detour == nullptr && whole)
        {
            look_for_files(from / options_.log);
        }
        result_.summary.log_bytes = log.size();
    }

    // For a user whose log goes to the standard output the file that it is until then has no name.
    std::string wanted_log() const
    {
        return options_.folder_beside.empty() ? options_.log : "LOG";
    }

    // The logger leaves unsaid what it could not write beside the log.
    void look_for_files(const std::filesystem::path& file)
    {
        std::error_code none;
        if ((options_.image_prefix.empty() && !options_.keep_images) || !std::filesystem::is_regular_file(file, none))
        {
            return;
        }
        std::ifstream input(file, std::ios::binary);
        const orvlog::reader::FilesLacking lacking = orvlog::reader::find_lacking_files(input, "");
        result_.errors.insert(result_.errors.end(), lacking.lines.begin(), lacking.lines.end());
        if (lacking.count > lacking.lines.size())
        {
            result_.errors.push_back("and as much of " + std::to_string(lacking.count - lacking.lines.size()) +
                                     " further files");
        }
    }

    // The pages drawn again without the logger. With a check each is drawn right after the logged one, so that one page
    // of each run is held; else they are all drawn after the log.
    class PlainRun
    {
    public:
        // Does nothing if the document can't be opened again.
        explicit PlainRun(Job& job) : job_(job), document_(job.open_document())
        {
            if (document_ == nullptr)
            {
                return;
            }
            const TimeSpent start = TimeSpent::now();
            if (job.options_.renderer)
            {
                renderer_ = job.make_renderer(job.check_.second(), false);
            }
            painter_ =
                std::make_unique<Painter>(renderer_ != nullptr ? renderer_->interface() : null_renderer(), job.sink());
            run_.colours = &colours_;
            painter_->tell(job.options_.check ? &calls_ : nullptr);
            begun_ = painter_->begin_document(1);
            note_time(start);
        }

        ~PlainRun()
        {
            const TimeSpent start = TimeSpent::now();
            if (begun_)
            {
                painter_->end_document();
                note_time(start);
                job_.result_.summary.time_without_logger = time_;
            }
        }

        PlainRun(const PlainRun&) = delete;
        PlainRun& operator=(const PlainRun&) = delete;

        // False if it wasn't painted whole.
        bool page(int number)
        {
            const TimeSpent start = TimeSpent::now();
            calls_.clear();
            const bool whole = begun_ && job_.paint_page(*document_, number, *painter_, run_);
            note_time(start);
            return whole;
        }

        // What the last page asked for; nothing without a check.
        CallDigest& calls()
        {
            return calls_;
        }

        int pages() const
        {
            return begun_ ? std::min(job_.options_.last_page, document_->page_count()) : 0;
        }

        const TimeSpent& time() const
        {
            return time_;
        }

    private:
        void note_time(const TimeSpent& start)
        {
            time_ += TimeSpent::now() - start;
        }

        Job& job_;
        orvlog::colour::ColourManager colours_;
        std::unique_ptr<PdfDocument> document_;
        std::unique_ptr<cairo_renderer::Renderer> renderer_;
        std::unique_ptr<Painter> painter_;
        CallDigest calls_;
        Run run_;
        bool begun_ = false;
        TimeSpent time_;
    };

    void run_without_logger()
    {
        PlainRun plain(*this);
        for (int page = options_.first_page; page <= plain.pages() && result_.interrupted == 0; page++)
        {
            plain.page(page);
            note_interruption(page, nullptr);
        }
        painting_has_ended();
    }

    // `logger` is null for a walk without it, `plain` without a check.
    Run walk(PdfDocument& document, const ORV_Interface* table, LoggedInterface* logger, PlainRun* plain)
    {
        Run run;
        run.colours = &colour_manager_;
        Painter painter(table, sink());
        CallDigest calls;
        painter.tell(plain != nullptr ? &calls : nullptr);
        if (!painter.begin_document(1))
        {
            run.errors.push_back("the renderer doesn't take the document");
            return run;
        }
        const int last = std::min(options_.last_page, document.page_count());
        for (int page = options_.first_page; page <= last && result_.interrupted == 0; page++)
        {
            calls.clear();
            const bool whole = paint_page(document, page, painter, run);
            if (plain != nullptr)
            {
                if (!plain->page(page) || !whole)
                {
                    calls.break_off();
                }
                check_.end_page(page, calls, plain->calls());
            }
            if (options_.progress)
            {
                options_.progress(page - options_.first_page + 1, last - options_.first_page + 1);
            }
            note_interruption(page, logger);
        }
        painter.end_document();
        run.counts = painter.counts();
        return run;
    }

    void note_interruption(int page, LoggedInterface* logger)
    {
        result_.interrupted = interrupting_signal();
        if (result_.interrupted == 0)
        {
            return;
        }
        const std::string what = "interrupted on page " + std::to_string(page);
        if (logger != nullptr)
        {
            logger->comment("The job was " + what + ".\n");
        }
        result_.errors.push_back(logger != nullptr ? what + "; the log has what was drawn until then"
                                 : options_.no_log ? what
                                                   : "interrupted when the log was written");
    }

    // False if it wasn't painted whole.
    bool paint_page(PdfDocument& document, int page, Painter& painter, Run& run)
    {
        const PageSize size = document.page_size(page);
        PageGeometry geometry;
        geometry.number = static_cast<uint32_t>(page);
        geometry.pixels_per_inch = options_.dpi;
        geometry.inches_wide = size.width / points_per_inch;
        geometry.inches_high = size.height / points_per_inch;
        const double width = std::ceil(geometry.inches_wide * options_.dpi);
        const double height = std::ceil(geometry.inches_high * options_.dpi);
        const std::string name = "page " + std::to_string(page);
        if (!(width >= 1) || !(height >= 1))
        {
            run.errors.push_back(name + " can't be read");
            return false;
        }
        const double greatest_side = options_.renderer ? cairo_renderer::greatest_page_side : greatest_undrawn_side;
        if (width > greatest_side || height > greatest_side)
        {
            run.errors.push_back(name + " is too large at " + std::to_string(options_.dpi) + " dots per inch");
            return false;
        }
        geometry.width = static_cast<uint32_t>(width);
        geometry.height = static_cast<uint32_t>(height);
        geometry.colour_ticket = make_page_ticket(*run.colours, document.page_colours(page), sink());
        const bool whole = paint_with_ticket(document, geometry, name, painter, run);
        orvlog::colour::ColourManager::release(geometry.colour_ticket);
        return whole;
    }

    bool paint_with_ticket(PdfDocument& document, const PageGeometry& geometry, const std::string& name,
                           Painter& painter, Run& run)
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
                                late = options_.seconds_for_page > 0 && taken.count() > options_.seconds_for_page;
                                stopped = late || interrupting_signal() != 0;
                                return stopped;
                            });
        if (late)
        {
            run.errors.push_back(name + " took too long and was broken off");
        }
        painter.end_page();
        run.pages++;
        return !stopped;
    }

    void compare()
    {
        CheckResult check;
        check.pages_compared = check_.pages_compared();
        check.pixels_different = check_.pixels_different();
        const std::vector<std::string>& by_document = check_.differing_by_document();
        check.same = check.pixels_different == 0 && check_.not_compared().empty();
        if (check_.differ())
        {
            result_.errors.push_back("the pages differ from those drawn without the logger");
        }
        result_.errors.insert(result_.errors.end(), by_document.begin(), by_document.end());
        std::for_each(check_.other_calls().begin(), check_.other_calls().end(), sink());
        result_.errors.insert(result_.errors.end(), check_.not_compared().begin(), check_.not_compared().end());
        result_.summary.check = check;
    }

    const JobOptions& options_;
    Unlocking unlocking_;
    JobResult result_;
    orvlog::colour::ColourManager colour_manager_;
    Messages messages_;
    PageCheck check_;
};

}  // namespace

JobResult run_job(const JobOptions& options)
{
    return Job(options).run();
}

}  // namespace pdf_client
