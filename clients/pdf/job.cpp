// SPDX-License-Identifier: GPL-2.0-or-later

#include "clients/pdf/job.h"

#include "clients/pdf/null-renderer.h"
#include "clients/pdf/page-tickets.h"
#include "clients/pdf/poppler/pdf-document.h"
#include "clients/stream/file-stream.h"
#include "clients/stream/log-file.h"
#include "orvlog/core/orvlog-entry.h"
#include "renderers/cairo/cairo-renderer.h"

#include <algorithm>
#include <chrono>
#include <cmath>
#include <cstring>
#include <filesystem>
#include <memory>

namespace pdf_client
{

namespace
{

constexpr double points_per_inch = 72.0;
constexpr double greatest_side = 32767;
constexpr double greatest_area = 1U << 27;

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

// The logger between the painter and a renderer, for the time of one job.
class LoggedInterface
{
public:
    // Null if the session can't be had.
    static std::unique_ptr<LoggedInterface> create(const JobOptions& options, const ORV_Interface* renderer,
                                                   GIO_Stream* log)
    {
        std::unique_ptr<LoggedInterface> result(new LoggedInterface);
        ORVLOG_SessionOptions session{};
        session.interface_out = &result->table_;
        session.interface_in = renderer;
        session.allocator = result->allocator_.allocator();
        session.identity = result->identity_.source();
        session.log_stream = log;
        session.file_prefix = options.image_prefix.empty() ? nullptr : options.image_prefix.c_str();
        session.ticket_functions = orvlog::colour::ColourManager::ticket_functions();
        session.ticket_serial_functions = orvlog::colour::ColourManager::ticket_serial_functions();
        session.compress = options.compressed ? 1 : 0;
        session.mode = ORVLOG_MODE_TRANSPARENT;
        // Images that are kept while a log is coded on the fly would take bits out of its stream.
        session.via_temporary_log = options.via_temporary_log || (options.compressed && options.keep_images) ? 1 : 0;
        if (orvlog_create_session_with(&session) == 0)
        {
            return nullptr;
        }
        result->session_ = result->table_.document_start.context;
        if (options.base_mode)
        {
            const ORVLOG_Params params{};
            ORVLOG_DLL_set_parameters(result->session_, &params);
            auto* session_record = static_cast<ORVLOG_Session*>(result->session_);
            session_record->glyph_fixed_format = options.glyphs == JobOptions::Glyphs::all ? 1 : 0;
            if (options.glyphs == JobOptions::Glyphs::outlines)
            {
                session_record->glyph_get_format = GFI_GDT_PATH;
            }
        }
        return result;
    }

    ~LoggedInterface()
    {
        shut_down();
    }

    bool shut_down()
    {
        const bool good = session_ == nullptr || ORVLOG_DLL_shutdown(session_) != 0;
        session_ = nullptr;
        return good;
    }

    const ORV_Interface* table() const
    {
        return &table_;
    }

private:
    LoggedInterface() = default;

    client_stream::MallocAllocator allocator_;
    client_stream::RandomIdentity identity_;
    ORV_Interface table_{};
    void* session_ = nullptr;
};

// One walk through the document's pages.
struct Run
{
    int pages = 0;
    double seconds = 0;
    CallCounts counts;
    std::vector<std::string> errors;
};

class Job
{
public:
    explicit Job(const JobOptions& options) : options_(options) {}

    JobResult run()
    {
        if (!run_with_logger())
        {
            return result_;
        }
        finish_tickets();
        run_without_logger();
        if (options_.check)
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

    std::unique_ptr<cairo_renderer::Renderer> make_renderer(cairo_renderer::PageCollector& collector, bool pictures)
    {
        cairo_renderer::Options options;
        if (options_.check)
        {
            options.page_sink = collector.sink();
        }
        if (pictures && !options_.png_folder.empty())
        {
            const std::filesystem::path folder(options_.png_folder);
            options.png_prefix = (folder / std::filesystem::path(options_.document).stem()).string();
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
        std::unique_ptr<PdfDocument> document = PdfDocument::open(options_.document, sink(), reason);
        if (document == nullptr)
        {
            result_.errors.push_back(options_.document + " " + reason);
        }
        return document;
    }

    bool run_with_logger()
    {
        const std::unique_ptr<PdfDocument> document = open_document();
        if (document == nullptr)
        {
            return false;
        }
        if (options_.first_page > document->page_count())
        {
            result_.errors.push_back(options_.document + " has only " + std::to_string(document->page_count()) +
                                     " pages");
            return false;
        }
        std::error_code none;
        if (std::filesystem::equivalent(options_.log, options_.document, none))
        {
            result_.errors.push_back(options_.log + ": is the document to be logged");
            return false;
        }
        const std::unique_ptr<client_stream::LogFile> log = client_stream::LogFile::open(options_.log, options_.stream);
        if (log == nullptr)
        {
            result_.errors.push_back(options_.log + ": " + std::strerror(errno));
            return false;
        }
        result_.started = true;
        result_.summary.log = options_.log;
        std::unique_ptr<cairo_renderer::Renderer> renderer;
        if (options_.renderer)
        {
            renderer = make_renderer(logged_pages_, true);
        }
        const std::unique_ptr<LoggedInterface> logger =
            LoggedInterface::create(options_, renderer != nullptr ? renderer->interface() : nullptr, log->stream());
        if (logger == nullptr)
        {
            result_.errors.push_back("the logger can't be started");
            return false;
        }
        const auto start = Clock::now();
        Run run = walk(*document, logger->table(), true);
        const bool completed = logger->shut_down();
        result_.summary.seconds = std::chrono::duration<double>(Clock::now() - start).count();
        if (finish_log(*log) && !completed)
        {
            result_.errors.push_back("the log could not be completed");
        }
        if (renderer != nullptr && !renderer->all_pages_written())
        {
            result_.errors.push_back("not all page images could be written");
        }
        result_.errors.insert(result_.errors.end(), run.errors.begin(), run.errors.end());
        result_.summary.calls = run.counts;
        result_.summary.pages = run.pages;
        return true;
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

    bool finish_log(client_stream::LogFile& log)
    {
        const bool whole = log.close();
        if (!whole)
        {
            result_.errors.push_back(options_.log + ": " + std::strerror(log.first_error()) +
                                     "; the log is incomplete" +
                                     (log.has_journal() ? ", and its end is in " + options_.log + ".journal" : ""));
        }
        result_.summary.log_bytes = log.size();
        return whole;
    }

    void run_without_logger()
    {
        const std::unique_ptr<PdfDocument> document = open_document();
        if (document == nullptr)
        {
            return;
        }
        std::unique_ptr<cairo_renderer::Renderer> renderer;
        if (options_.renderer)
        {
            renderer = make_renderer(plain_pages_, false);
        }
        const auto start = Clock::now();
        walk(*document, renderer != nullptr ? renderer->interface() : null_renderer(), false);
        result_.summary.seconds_without_logger = std::chrono::duration<double>(Clock::now() - start).count();
    }

    Run walk(PdfDocument& document, const ORV_Interface* table, bool with_progress)
    {
        Run run;
        Painter painter(table, sink());
        if (!painter.begin_document(1))
        {
            run.errors.push_back("the renderer doesn't take the document");
            return run;
        }
        const int last = std::min(options_.last_page, document.page_count());
        for (int page = options_.first_page; page <= last; page++)
        {
            paint_page(document, page, painter, run);
            if (with_progress && options_.progress)
            {
                options_.progress(page - options_.first_page + 1, last - options_.first_page + 1);
            }
        }
        painter.end_document();
        run.counts = painter.counts();
        return run;
    }

    void paint_page(PdfDocument& document, int page, Painter& painter, Run& run)
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
            return;
        }
        if (width > greatest_side || height > greatest_side || width * height > greatest_area)
        {
            run.errors.push_back(name + " is too large at " + std::to_string(options_.dpi) + " dots per inch");
            return;
        }
        geometry.width = static_cast<uint32_t>(width);
        geometry.height = static_cast<uint32_t>(height);
        geometry.colour_ticket = make_page_ticket(colour_manager_, document.page_colours(page), sink());
        paint_with_ticket(document, geometry, name, painter, run);
        orvlog::colour::ColourManager::release(geometry.colour_ticket);
    }

    void paint_with_ticket(PdfDocument& document, const PageGeometry& geometry, const std::string& name,
                           Painter& painter, Run& run)
    {
        if (!painter.begin_page(geometry))
        {
            run.errors.push_back("the renderer doesn't take " + name);
            return;
        }
        if (!document.paint_page(static_cast<int>(geometry.number), painter, options_.seconds_for_page))
        {
            run.errors.push_back(name + " took too long and was broken off");
        }
        painter.end_page();
        run.pages++;
    }

    void compare()
    {
        CheckResult check;
        const std::vector<cairo_renderer::PagePixels>& logged = logged_pages_.pages();
        const std::vector<cairo_renderer::PagePixels>& plain = plain_pages_.pages();
        check.same = logged.size() == plain.size();
        for (size_t i = 0; i < std::min(logged.size(), plain.size()); i++)
        {
            const cairo_renderer::PixelDifference difference = cairo_renderer::compare_pixels(logged[i], plain[i]);
            check.pages_compared++;
            check.pixels_different += difference.pixels_different;
            check.same = check.same && logged[i] == plain[i];
        }
        if (!check.same)
        {
            result_.errors.push_back("the pages differ from those drawn without the logger");
        }
        result_.summary.check = check;
    }

    const JobOptions& options_;
    JobResult result_;
    orvlog::colour::ColourManager colour_manager_;
    Messages messages_;
    cairo_renderer::PageCollector logged_pages_;
    cairo_renderer::PageCollector plain_pages_;
};

}  // namespace

JobResult run_job(const JobOptions& options)
{
    return Job(options).run();
}

}  // namespace pdf_client
