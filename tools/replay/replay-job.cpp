#include "tools/replay/replay-job.h"

#include "clients/renderer-library/renderer-library.h"
#include "clients/replay/as-logged.h"
#include "clients/replay/replay-tickets.h"
#include "clients/replay/replay.h"
#include "clients/session/logged-session.h"
#include "clients/system/system.h"
#include "reader/text/log-files.h"
#include "tools/replay/cairo-pages.h"
#include "tools/replay/library-pages.h"
#include "tools/replay/watched-child.h"
#include "tools/shared/command.h"
#include "tools/shared/indexed-log.h"
#include "tools/shared/left-out.h"
#include "tools/shared/look.h"
#include "tools/shared/source.h"

#include <filesystem>
#include <fstream>
#include <memory>
#include <set>
#include <sstream>
#include <string>
#include <utility>
#include <vector>

namespace orvlog::tool
{

namespace
{

namespace fs = std::filesystem;
using orvlog::replay::LogKind;

// Lines for the user, each once.
class Complaints
{
public:
    void say(const std::string& line)
    {
        constexpr size_t kMost = 100;
        if (said_.size() < kMost && said_.insert(line).second)
            tool::say(printable(line));
    }

private:
    std::set<std::string> said_;
};

// What the files of pages begin with.
std::string page_name(const ReplayOptions& options)
{
    fs::path name = options.log == "-" ? "log" : options.log;
    if (name.extension() == ".zst")
        name.replace_extension();
    return name.stem().string();
}

// A log is read twice, once to see what it is and once to play it.
std::unique_ptr<std::istream> open_again(const ReplayOptions& options, Source& source)
{
    if (auto* file = dynamic_cast<std::ifstream*>(&source.stream()); file != nullptr && options.log != "-")
        return std::make_unique<std::ifstream>(options.log, std::ios::binary);
    auto held = std::make_unique<std::stringstream>(std::ios::in | std::ios::out | std::ios::binary);
    *held << source.stream().rdbuf();
    return held;
}

// Some pages of a repacked log; null if all of it is to be read. A new log has all resources, as of any other log.
std::unique_ptr<std::istream> open_pages(const ReplayOptions& options)
{
    const bool all = options.pages.first == 1 && options.pages.last == UINT32_MAX;
    const bool draws = options.new_log.empty() && options.renderer != "none";
    if (options.up_to)
        return draws ? IndexedLog(options.log)
                           .up_to_call(*options.up_to, options.pages.first, options.pages.last,
                                       reader::Resources::painted)
                     : nullptr;
    if (all)
        return nullptr;
    return IndexedLog(options.log)
        .pages(options.pages.first, options.pages.last, draws ? reader::Resources::painted : reader::Resources::all);
}

class ReplayJob
{
public:
    // `place` is told of each call; may be null.
    ReplayJob(const ReplayOptions& options, WorkPlace* place) : options_(options), place_(place) {}

    int run()
    {
        orvlog::replay::Options play;
        play.first_page = options_.pages.first;
        play.last_page = options_.pages.last;
        // The job may be played in another folder than the present one.
        play.files = orvlog::reader::LogFiles(options_.log, options_.folders);
        if (!play.files.why().empty())
            return fail(play.files.why());
        Source source(options_.log);
        if (!source.open())
            return fail(options_.log + ": " + source.why());
        std::unique_ptr<std::istream> log = open_pages(options_);
        if (log == nullptr)
            log = open_again(options_, source);
        kind_ = orvlog::replay::examine(*log);
        if (!kind_.is_log)
            return fail(options_.log + ": is not a log");
        if (options_.pages.first > kind_.faces && kind_.faces > 0)
            return fail(options_.log + ": has no page " + std::to_string(options_.pages.first) + ", but " +
                        std::to_string(kind_.faces) + " in all");
        log->clear();
        log->seekg(0);
        if (std::string why; !make_renderer(&why))
            return fail(why);
        if (const int status = open_log(); status != EXIT_DONE)
            return status;
        Progress progress(source.size());
        play.as_logged = as_logged_.get();
        play.differ = [this](const std::string& line)
        {
            if (!std::exchange(differs_, true))
                complaints_.say(options_.log + ": " + line);
        };
        play.dpi = options_.dpi;
        play.up_to = options_.up_to;
        play.complain = [this](const std::string& line) { complaints_.say(options_.log + ": " + line); };
        play.progress = [&progress](uint64_t done) { progress.show(done); };
        play.page_begins = [this](uint32_t page, uint32_t number) { page_ = kind_.numbered ? number : page; };
        if (session_ != nullptr)
            play.comment = [this](const std::string& text) { session_->comment(text); };
        const ORV_Interface* table = session_ != nullptr ? session_->table() : renderer_table();
        orvlog::replay::ReplayTickets tickets;
        if (place_ != nullptr)
            play.before_call = [this](const reader::Element& call)
            {
                place_->enter_call(call.name, call.place.line);
                return true;
            };
        const orvlog::replay::Outcome outcome = orvlog::replay::play(*log, table, tickets, play);
        if (place_ != nullptr)
            place_->leave_calls();
        return finish(outcome);
    }

private:
    // False with the reason in `why`.
    bool make_renderer(std::string* why)
    {
        if (wants_as_logged(options_))
        {
            as_logged_ = std::make_unique<replay::AsLogged>(kind_.script);
            return true;
        }
        return has_library(options_) ? load_renderer(why) : make_cairo_renderer(why);
    }

    bool load_renderer(std::string* why)
    {
        pages_ = std::make_unique<LibraryPages>(page_prefix(), [this] { return page_; });
        renderer_library::Host host;
        host.take_page = [this](const ORVLOG_RendererPage& page) { return pages_->take(page); };
        host.complain = [this](const std::string& line) { complaints_.say(options_.renderer + ": " + line); };
        library_ = std::make_unique<renderer_library::RendererLibrary>(std::move(host));
        const bool opened = library_->open(
            options_.renderer, options_.renderer_options ? options_.renderer_options->c_str() : nullptr, why);
        *why = options_.renderer + ": " + *why;
        return opened;
    }

    const ORV_Interface* renderer_table() const
    {
        if (as_logged_ != nullptr)
            return as_logged_->renderer.interface();
        if (library_ != nullptr)
            return library_->interface();
        return cairo_ != nullptr ? cairo_->interface() : nullptr;
    }

    // What the files of pages begin with, in a folder that is there; empty if none are wanted.
    std::string page_prefix() const
    {
        if (options_.png.empty())
            return "";
        fs::create_directories(options_.png);
        return (fs::absolute(options_.png) / page_name(options_)).string();
    }

    // What of the replay is drawn by the project's own renderer; empty for nothing.
    std::string drawn_by_cairo() const
    {
        const std::pair<const std::string&, const char*> pictures[] = {
            {options_.png, "--png"}, {options_.svg, "--svg"}, {options_.pdf, "--pdf"}};
        for (const auto& [wanted, name] : pictures)
            if (!wanted.empty())
                return name;
        if (options_.renderer == "cairo")
            return "--renderer cairo";
        return options_.renderer.empty() && kind_.rendered ? "a replay without --renderer" : "";
    }

    // True without one, too, where none is wanted.
    bool make_cairo_renderer(std::string* why)
    {
        const std::string drawn = drawn_by_cairo();
        if (drawn.empty())
            return true;
        CairoPagesOptions wanted;
        wanted.png = options_.png;
        wanted.svg = options_.svg;
        wanted.pdf = options_.pdf;
        wanted.name = page_name(options_);
        wanted.dpi = options_.dpi;
        wanted.kind = kind_;
        wanted.page_number = [this] { return page_; };
        wanted.complain = [this](const std::string& line) { complaints_.say(line); };
        wanted.lose = [this](const std::string& line) { losses_.push_back(line); };
        cairo_ = make_cairo_pages(std::move(wanted));
        *why = cairo_ == nullptr ? text_of_left_out("Cairo", drawn) : options_.pdf + ": is the log to be replayed";
        if (cairo_ == nullptr || cairo_->would_replace(options_.log))
            return false;
        cairo_->begin();
        return true;
    }

    // Puts the logger in front of the renderer, if a log is wanted or there is no renderer at all.
    int open_log()
    {
        if (options_.new_log.empty() && renderer_table() != nullptr)
            return EXIT_DONE;
        std::error_code none;
        const std::string target = options_.new_log == "-" ? system::output_device() : options_.new_log;
        if (!target.empty() && fs::equivalent(target, options_.log, none))
            return fail(options_.new_log + ": is the log to be replayed");
        session_ = std::make_unique<client_session::LoggedSession>(session_options());
        std::string why;
        const bool begun = session_->open_log(&why) && session_->begin(renderer_table(), &why);
        return begun ? EXIT_DONE : fail(why);
    }

    // Those of the log that is replayed.
    client_session::LoggedSessionOptions session_options() const
    {
        client_session::LoggedSessionOptions session;
        session.log = options_.new_log;
        session.image_prefix = options_.image_prefix;
        session.compressed = options_.compressed;
        // Where the logs of kept images have been put in, this is how.
        session.via_temporary_log = options_.via_temporary_log || (as_logged_ != nullptr && kind_.script.merged);
        if (as_logged_ != nullptr)
            session.number = replay::session_number(kind_.script.session);
        session.keeps_images = renderer_table() != nullptr && kind_.kept_images;
        session.base_mode = kind_.base_mode;
        session.base_content = kind_.base_content;
        session.fixed_glyph_forms = kind_.fixed_formats;
        session.glyph_form = kind_.glyph_get_type;
        session.image_attributes = kind_.image_attributes;
        session.name_unknown_families = kind_.names_unknown_families;
        session.ticket_functions = orvlog::replay::ReplayTickets::functions();
        session.ticket_serial_functions = orvlog::replay::ReplayTickets::serial_functions();
        return session;
    }

    // Says all that is wrong, a line each.
    int finish(const orvlog::replay::Outcome& outcome)
    {
        std::vector<std::string> wrong = losses_;
        if (session_ != nullptr)
            for (const std::string& line : session_->close())
                wrong.push_back(line);
        const bool drawn = cairo_ == nullptr || cairo_->close();
        if (!end_library(&wrong) || !drawn)
            wrong.emplace_back("a page could not be written");
        std::string done = std::to_string(outcome.calls) + " calls, " + std::to_string(outcome.pages) + " pages";
        if (outcome.not_played > 0)
            done += ", " + std::to_string(outcome.not_played) + " not played";
        std::fprintf(stderr, "%s\n", done.c_str());
        for (const std::string& line : what_lacks(outcome))
            wrong.push_back(options_.log + ": " + line);
        for (const std::string& line : wrong)
            fail(line);
        return wrong.empty() ? EXIT_DONE : EXIT_FAILED;
    }

    // False if its pages couldn't be written.
    bool end_library(std::vector<std::string>* wrong)
    {
        if (library_ == nullptr)
            return true;
        if (!library_->end())
            wrong->push_back(options_.renderer + ": the renderer could not make all");
        if (!options_.png.empty() && pages_->count() == 0)
            wrong->push_back(options_.renderer + ": the renderer gave no pixels");
        return pages_->close();
    }

    // Of the log, and of what was made from it.
    std::vector<std::string> what_lacks(const orvlog::replay::Outcome& outcome) const
    {
        std::vector<std::string> lacks;
        if (outcome.pages_refused > 0)
            lacks.push_back(std::to_string(outcome.pages_refused) + " pages could not be drawn");
        if ((!options_.png.empty() || !options_.svg.empty() || !options_.pdf.empty()) && outcome.pages == 0 &&
            outcome.pages_refused == 0)
            lacks.emplace_back("has no page");
        if (!outcome.reached)
            lacks.push_back("has no " + orvlog::reader::describe(*options_.up_to));
        if (outcome.missing > 0 && !options_.allow_missing)
            lacks.push_back("lacks data in " + std::to_string(outcome.missing) +
                            " places; what could be found is played (--allow-missing is content with that)");
        if (outcome.differences > 0)
            lacks.push_back("can't be repeated as it was in " + std::to_string(outcome.differences) +
                            " places; the first is told above");
        if (outcome.cut)
            lacks.emplace_back("is cut short; what it has is played");
        else if (outcome.damage > 0)
            lacks.push_back("is damaged in " + std::to_string(outcome.damage) +
                            " places; what could be read is played");
        return lacks;
    }

    const ReplayOptions& options_;
    WorkPlace* const place_;
    Complaints complaints_;
    std::vector<std::string> losses_;  // what is missing on the pages, each kind once
    LogKind kind_;
    bool differs_ = false;
    uint32_t page_ = 0;  // the number of the page that is begun
    std::unique_ptr<CairoPages> cairo_;
    std::unique_ptr<replay::AsLogged> as_logged_;
    std::unique_ptr<LibraryPages> pages_;
    std::unique_ptr<renderer_library::RendererLibrary> library_;
    std::unique_ptr<client_session::LoggedSession> session_;
};

}  // namespace

int run_replay(const ReplayOptions& options)
{
    if (!has_library(options))
        return ReplayJob(options, nullptr).run();
    std::string why;
    const int status = run_watched([&options](WorkPlace& place) { return ReplayJob(options, &place).run(); },
                                   {.of_call = options.call_limit, .in_all = options.time_limit}, &why);
    if (why.empty())
        return status;
    fail(options.renderer + ": " + why);
    if (!options.new_log.empty() && options.new_log != "-")
        fail(options.new_log + ": is cut short there");
    return EXIT_FAILED;
}

}  // namespace orvlog::tool
