// orvlog replay: the job of a log once more, from the log alone.

#include "clients/command-line/number-range.h"
#include "clients/replay/replay.h"
#include "clients/stream/file-stream.h"
#include "orvlog/core/orvlog-entry.h"
#include "reader/log-files.h"
#include "renderers/cairo/cairo-renderer.h"
#include "tools/command.h"
#include "tools/files-from.h"
#include "tools/tool-look.h"
#include "tools/tool-source.h"

#include <cairo-pdf.h>
#include <cairo-svg.h>

#include <cerrno>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <memory>
#include <set>
#include <sstream>
#include <string>
#include <vector>

namespace tool
{

namespace
{

namespace fs = std::filesystem;
using orvlog::replay::LogKind;

struct ReplayOptions
{
    std::string log;
    std::string new_log;
    std::string image_prefix;
    bool compressed = false;
    bool via_temporary_log = false;
    std::string png;
    std::string svg;
    std::string pdf;
    std::string renderer;
    std::vector<std::string> folders;
    command_line::NumberRange pages = {1, UINT32_MAX};
    unsigned dpi = 0;
    int64_t up_to = -1;
};

// Lines for the user, each once.
class Complaints
{
public:
    void say(const std::string& line)
    {
        constexpr size_t most = 100;
        if (said_.size() < most && said_.insert(line).second)
            tool::say(printable(line));
    }

private:
    std::set<std::string> said_;
};

// Where pages go as vectors: one PDF file, or an SVG file for each page.
class VectorPages
{
public:
    explicit VectorPages(const ReplayOptions& options) : svg_(options.svg), pdf_(options.pdf)
    {
        name_ = fs::path(options.log == "-" ? "log" : options.log).stem().string();
        if (fs::is_directory(pdf_))
            pdf_ = (fs::path(pdf_) / (name_ + ".pdf")).string();
    }
    VectorPages(const VectorPages&) = delete;
    VectorPages& operator=(const VectorPages&) = delete;
    ~VectorPages()
    {
        close();
    }

    bool wanted() const
    {
        return !svg_.empty() || !pdf_.empty();
    }

    bool would_replace(const std::string& file) const
    {
        std::error_code none;
        return !pdf_.empty() && fs::equivalent(pdf_, file, none);
    }

    // Surfaces of both kinds have 72 units to the inch; pages have pixels.
    cairo_surface_t* surface(const cairo_renderer::Page& page, double dpi)
    {
        const double scale = dpi > 0 ? 72 / dpi : 1;
        const double width = page.width * scale;
        const double height = page.height * scale;
        if (!svg_.empty())
        {
            char number[16];
            std::snprintf(number, sizeof number, "-%03u.svg", page.number);
            cairo_surface_t* made =
                cairo_svg_surface_create((fs::path(svg_) / (name_ + number)).c_str(), width, height);
            cairo_surface_set_device_scale(made, scale, scale);
            return made;
        }
        if (document_ == nullptr)
            document_ = cairo_pdf_surface_create(pdf_.c_str(), width, height);
        cairo_pdf_surface_set_size(document_, width, height);
        cairo_surface_set_device_scale(document_, scale, scale);
        return cairo_surface_reference(document_);
    }

    // False if the file could not be written.
    bool close()
    {
        if (document_ == nullptr)
            return true;
        cairo_surface_finish(document_);
        const bool good = cairo_surface_status(document_) == CAIRO_STATUS_SUCCESS;
        cairo_surface_destroy(document_);
        document_ = nullptr;
        return good;
    }

private:
    std::string svg_;
    std::string pdf_;
    std::string name_;
    cairo_surface_t* document_ = nullptr;
};

// The logger behind which the job is played.
class Session
{
public:
    ~Session()
    {
        end();
    }

    bool begin(const ReplayOptions& options, const LogKind& kind, const ORV_Interface* renderer, GIO_Stream* log)
    {
        ORVLOG_SessionOptions session{};
        session.interface_out = &table_;
        session.interface_in = renderer;
        session.allocator = memory_.allocator();
        session.identity = identity_.source();
        session.log_stream = log;
        session.file_prefix = options.image_prefix.empty() ? nullptr : options.image_prefix.c_str();
        session.ticket_functions = orvlog::replay::ReplayTickets::functions();
        session.ticket_serial_functions = orvlog::replay::ReplayTickets::serial_functions();
        session.comment_fn_out = &comment_;
        session.comment_ctx_out = &comment_context_;
        session.compress = options.compressed ? 1 : 0;
        session.mode = kind.base_mode ? ORVLOG_MODE_BASE : ORVLOG_MODE_TRANSPARENT;
        session.via_temporary_log = options.via_temporary_log ? 1 : 0;
        if (orvlog_create_session_with(&session) == 0)
            return false;
        session_ = table_.document_start.context;
        const ORVLOG_Params base{};
        if (kind.base_content && !kind.base_mode)
            ORVLOG_DLL_set_parameters(session_, &base);
        auto* inside = static_cast<ORVLOG_Session*>(session_);
        inside->glyph_fixed_format = kind.fixed_formats ? 1 : 0;
        inside->glyph_get_format = kind.glyph_get_type;
        inside->image.image_dump_flag = kind.image_attributes ? 1 : 0;
        return true;
    }

    bool end()
    {
        const bool good = session_ == nullptr || ORVLOG_DLL_shutdown(session_) != 0;
        session_ = nullptr;
        return good;
    }

    const ORV_Interface* table() const
    {
        return &table_;
    }

    void comment(const std::string& text)
    {
        print_comment("%s", text.c_str());
    }

private:
    void print_comment(const char* format, ...)
    {
        va_list args;
        va_start(args, format);
        comment_(comment_context_, format, args);
        va_end(args);
    }

    client_stream::MallocAllocator memory_;
    client_stream::RandomIdentity identity_;
    ORV_Interface table_{};
    void* session_ = nullptr;
    orvlog_comment_fn_type comment_ = nullptr;
    void* comment_context_ = nullptr;
};

// A log is read twice, once to see what it is and once to play it.
std::unique_ptr<std::istream> open_again(const ReplayOptions& options, Source& source)
{
    if (auto* file = dynamic_cast<std::ifstream*>(&source.stream()); file != nullptr && options.log != "-")
        return std::make_unique<std::ifstream>(options.log, std::ios::binary);
    auto held = std::make_unique<std::stringstream>(std::ios::in | std::ios::out | std::ios::binary);
    *held << source.stream().rdbuf();
    return held;
}

class ReplayJob
{
public:
    explicit ReplayJob(const ReplayOptions& options) : options_(options), vectors_(options) {}

    int run()
    {
        orvlog::replay::Options play;
        play.first_page = options_.pages.first;
        play.last_page = options_.pages.last;
        Source source(options_.log);
        if (!source.open())
            return fail(options_.log + ": " + source.why());
        std::unique_ptr<std::istream> log = open_again(options_, source);
        kind_ = orvlog::replay::examine(*log);
        if (!kind_.is_log)
            return fail(options_.log + ": is not a log");
        if (vectors_.would_replace(options_.log))
            return fail(options_.pdf + ": is the log to be replayed");
        log->clear();
        log->seekg(0);
        make_renderer();
        const ORV_Interface* table = renderer_ != nullptr ? renderer_->interface() : nullptr;
        std::unique_ptr<client_stream::FileStream> output;
        if (const int status = open_log(&table, output); status != EXIT_DONE)
            return status;
        Progress progress(source.size());
        play.files = orvlog::reader::LogFiles(options_.log, options_.folders);
        if (!play.files.why().empty())
            return fail(play.files.why());
        play.dpi = options_.dpi;
        if (options_.up_to >= 0)
            play.up_to = static_cast<uint32_t>(options_.up_to);
        play.complain = [this](const std::string& line) { complaints_.say(options_.log + ": " + line); };
        play.progress = [&progress](uint64_t done) { progress.show(done); };
        if (output != nullptr)
            play.comment = [this](const std::string& text) { session_.comment(text); };
        orvlog::replay::ReplayTickets tickets;
        const orvlog::replay::Outcome outcome = orvlog::replay::play(*log, table, tickets, play);
        session_.end();
        return finish(outcome, output.get());
    }

private:
    void make_renderer()
    {
        const bool pictures = !options_.png.empty() || vectors_.wanted();
        const bool wanted = pictures || options_.renderer == "cairo" || (options_.renderer.empty() && kind_.rendered);
        if (!wanted)
            return;
        cairo_renderer::Options options;
        if (!options_.png.empty())
        {
            fs::create_directories(options_.png);
            const std::string name = fs::path(options_.log == "-" ? "log" : options_.log).stem().string();
            options.png_prefix = (fs::path(options_.png) / name).string();
        }
        if (vectors_.wanted())
        {
            if (!options_.svg.empty())
                fs::create_directories(options_.svg);
            const double dpi = options_.dpi > 0 ? options_.dpi : kind_.dpi;
            options.surface_factory = [this, dpi](const cairo_renderer::Page& page)
            { return vectors_.surface(page, dpi); };
        }
        options.keep_images = kind_.kept_images;
        options.glyph_form = glyph_form();
        options.complaint_sink = [this](const std::string& line) { complaints_.say(line); };
        renderer_ = std::make_unique<cairo_renderer::Renderer>(std::move(options));
    }

    // That of the job's renderer.
    cairo_renderer::GlyphForm glyph_form() const
    {
        constexpr uint32_t others = 1U << GFI_GDT_FBE | 1U << GFI_GDT_TRUETYPE | 1U << GFI_GDT_RLE;
        if ((kind_.rendered_types & others) != 0)
            return cairo_renderer::GlyphForm::in_turn;
        const bool bitmaps = (kind_.rendered_types & 1U << GFI_GDT_BITMAP) != 0;
        return bitmaps ? cairo_renderer::GlyphForm::bitmap : cairo_renderer::GlyphForm::path;
    }

    // Puts the logger in front of the renderer, if a log is wanted or there is no renderer at all.
    int open_log(const ORV_Interface** table, std::unique_ptr<client_stream::FileStream>& output)
    {
        if (options_.new_log.empty() && renderer_ != nullptr)
            return EXIT_DONE;
        std::string name = options_.new_log.empty() ? "/dev/null" : options_.new_log;
        if (name == "-")
            name = "/dev/stdout";
        std::error_code none;
        if (fs::equivalent(name, options_.log, none))
            return fail(options_.new_log + ": is the log to be replayed");
        output = client_stream::FileStream::open(name, name.starts_with("/dev/") ? "wb" : "w+b");
        if (output == nullptr)
            return fail(options_.new_log + ": " + std::strerror(errno));
        if (!session_.begin(options_, kind_, *table, output->stream()))
            return fail(options_.new_log + ": the log cannot be begun");
        *table = session_.table();
        return EXIT_DONE;
    }

    int finish(const orvlog::replay::Outcome& outcome, client_stream::FileStream* output)
    {
        const bool drawn = renderer_ == nullptr || renderer_->all_pages_written();
        if (!drawn || !vectors_.close())
            return fail("a page could not be written");
        if (output != nullptr && !output->close())
            return fail(options_.new_log + ": " + std::strerror(output->first_error()));
        std::fprintf(stderr, "%llu calls, %u pages", static_cast<unsigned long long>(outcome.calls), outcome.pages);
        if (outcome.not_played > 0)
            std::fprintf(stderr, ", %llu not played", static_cast<unsigned long long>(outcome.not_played));
        std::fputs("\n", stderr);
        if (!outcome.reached)
            return fail(options_.log + ": has no paint " + std::to_string(options_.up_to));
        if (outcome.cut)
            return fail(options_.log + ": is cut short; what it has is played");
        if (outcome.damage > 0)
            return fail(options_.log + ": is damaged in " + std::to_string(outcome.damage) +
                        " places; what could be read is played");
        return EXIT_DONE;
    }

    const ReplayOptions& options_;
    Complaints complaints_;
    VectorPages vectors_;
    LogKind kind_;
    std::unique_ptr<cairo_renderer::Renderer> renderer_;
    Session session_;
};

}  // namespace

Run declare_replay(CLI::App& app)
{
    auto options = std::make_shared<ReplayOptions>();
    app.add_option("LOG", options->log, "the log, plain or coded; a path, or - for standard input")->required();
    app.add_option("--log", options->new_log, "log the replay to NEWLOG, or - for standard output")
        ->type_name("NEWLOG");
    app.add_option("--png", options->png, "draw the pages, as PNG files in DIR")->type_name("DIR");
    auto* svg = app.add_option("--svg", options->svg, "draw the pages, as SVG files in DIR")
                    ->type_name("DIR")
                    ->expected(0, 1)
                    ->default_str(".");
    app.add_option("--pdf", options->pdf, "draw the pages, as one PDF file; in a folder it has the log's name")
        ->type_name("FILE")
        ->expected(0, 1)
        ->default_str(".")
        ->excludes(svg);
    app.add_option_function<std::string>(
           "--pages", [options](const std::string& text) { command_line::read_pages(text, &options->pages); },
           "only these pages, from 1")
        ->type_name("A-B")
        ->check(command_line::check_pages);
    app.add_option("--dpi", options->dpi, "resolution of the pages instead of their own")
        ->type_name("N")
        ->check(CLI::Range(1u, 2400u));
    app.add_option("--up-to", options->up_to, "stop behind the paint of this id")
        ->type_name("ID")
        ->check(CLI::Range(int64_t{0}, int64_t{UINT32_MAX}));
    app.add_option("--renderer", options->renderer, "draw on this one; without it as the job was drawn")
        ->check(CLI::IsMember({"cairo", "none"}));
    app.add_option("--images-beside", options->image_prefix, "image data goes to files PREFIX-..., not into NEWLOG")
        ->type_name("PREFIX");
    app.add_flag("--compressed", options->compressed, "write NEWLOG coded");
    app.add_flag("--via-temporary-log", options->via_temporary_log, "log to a temporary file first, then merge");
    add_files_from(app, options->folders);
    app.footer("The job is made again from the log and the files beside it: image data and the logs of kept images are "
               "looked for in the log's folder, and in those of --files-from. Pages drawn from a log are those of its "
               "job, pixel by pixel, and the "
               "log of a replay is the log.\n\n"
               "A log that is cut short or damaged is played as far as it goes; the exit status is then 1.");
    return [options] { return ReplayJob(*options).run(); };
}

}  // namespace tool
