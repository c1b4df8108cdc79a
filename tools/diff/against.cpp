#include "tools/diff/against.h"

#include "clients/replay/replay.h"
#include "inspect/drawing/glyph-form.h"
#include "reader/text/log-files.h"
#include "renderers/cairo/cairo-renderer.h"
#include "tools/diff/pixel-report.h"
#include "tools/shared/command.h"
#include "tools/shared/look.h"
#include "tools/shared/picture-file.h"

#include <cstdio>
#include <filesystem>
#include <map>
#include <optional>
#include <system_error>

namespace orvlog::tool
{

namespace
{

namespace fs = std::filesystem;
using nlohmann::ordered_json;
using orvlog::inspect::PixelArea;
using orvlog::inspect::PixelCopy;

class Against
{
public:
    Against(const DiffInput& log, const AgainstOptions& options)
        : log_(log), options_(options), stem_(page_stem(log.name()))
    {
    }

    int run()
    {
        if (const std::string why = find_pictures(); !why.empty())
            return fail(why);
        const orvlog::reader::LogFiles files(log_.name(), options_.folders);
        if (!files.why().empty())
            return fail(files.why());
        const auto first = log_.opener()();
        if (first == nullptr)
            return fail(log_.name() + ": can't be read");
        kind_ = orvlog::replay::examine(*first);
        if (!kind_.is_log)
            return fail(log_.name() + ": not a log");
        return finish(draw(files));
    }

private:
    // Pictures that bear the log's name, else those of the only name that there is.
    std::string find_pictures()
    {
        std::map<std::string, std::map<uint32_t, std::string>> found;
        std::error_code failed;
        for (fs::directory_iterator file(options_.pictures, failed), end; !failed && file != end;
             file.increment(failed))
            if (const std::optional<PageName> name = page_name(file->path()))
                found[name->stem][name->number] = file->path().string();
        if (failed)
            return options_.pictures + ": " + failed.message();
        const auto own = found.find(stem_);
        if (own == found.end() && found.size() != 1)
            return options_.pictures + ": has no pictures " + stem_ + "-001.png and onwards";
        pictures_ = own != found.end() ? own->second : found.begin()->second;
        return {};
    }

    orvlog::replay::Outcome draw(const orvlog::reader::LogFiles& files)
    {
        std::vector<cairo_renderer::PagePixels> pages;
        cairo_renderer::Options drawing;
        drawing.complaint_sink = [](const std::string&) {};
        drawing.glyph_form = orvlog::inspect::glyph_form(kind_);
        drawing.page_sink = [&](const cairo_renderer::Page& page)
        {
            cairo_renderer::collect_pixels(page, pages);
            if (page.first_row + page.rows < page.height)
                return;
            compare(pages.back());
            pages.clear();
        };
        cairo_renderer::Renderer renderer(std::move(drawing));
        orvlog::replay::Options play;
        play.files = files;
        play.dpi = options_.dpi;
        play.page_begins = [this](uint32_t page, uint32_t number) { number_ = kind_.numbered ? number : page; };
        Progress progress(log_.size());
        play.progress = [&progress](uint64_t done) { progress.show(done); };
        orvlog::replay::ReplayTickets tickets;
        const auto log = log_.opener()();
        return orvlog::replay::play(*log, renderer.interface(), tickets, play);
    }

    void compare(const cairo_renderer::PagePixels& page)
    {
        ++compared_;
        const auto file = pictures_.find(number_);
        if (file == pictures_.end())
            return tell(number_, "has no picture", nullptr);
        const cairo_renderer::PagePixels given = cairo_renderer::read_png(file->second);
        met_.insert({number_, true});
        if (given.pixels.empty())
            return tell(number_, file->second + " can't be read", nullptr);
        const PixelCopy a = orvlog::inspect::picture_of(page);
        const PixelCopy b = orvlog::inspect::picture_of(given);
        const PixelArea area = orvlog::inspect::area_between(a, b, options_.tolerance);
        std::string what = area_text(area) + " differ from " + file->second;
        if (a.width != b.width || a.height != b.height)
            what += ", which has another size";
        if (area.pixels > 0)
            tell(number_, what, &area);
        if (area.pixels > 0 && !options_.marked.empty())
            write(a, b);
    }

    void write(const PixelCopy& a, const PixelCopy& b)
    {
        std::error_code failed;
        fs::create_directories(options_.marked, failed);
        char number[16];
        std::snprintf(number, sizeof number, "-%03u", number_);
        const std::string name = (fs::path(options_.marked) / (stem_ + number)).string();
        if (const std::string why = write_pictures(a, b, options_.tolerance, name); !why.empty())
            lacks_.push_back(why);
    }

    void tell(uint32_t page, const std::string& what, const PixelArea* area)
    {
        ++different_;
        if (!options_.json)
        {
            put("page " + std::to_string(page) + ": " + printable(what) + "\n");
            return;
        }
        ordered_json object;
        object["page"] = page;
        object["what"] = what;
        if (area != nullptr)
            object["area"] = area_json(*area);
        put((different_ == 1 ? "{\"pages\": [\n" : ",\n") + json_text(object));
    }

    int finish(const orvlog::replay::Outcome& outcome)
    {
        for (const auto& [number, file] : pictures_)
            if (met_.count(number) == 0)
                tell(number, "is not in the log, but " + file + " is there", nullptr);
        if (options_.json)
        {
            put(different_ == 0 ? "{\"pages\": [],\n" : "\n],\n");
            put("\"compared\":" + std::to_string(compared_) + ",\"different\":" + std::to_string(different_) +
                ",\"equal\":" + (different_ == 0 ? "true" : "false") + "}\n");
        }
        else
            put(std::to_string(compared_) + " pages compared, " + std::to_string(different_) + " differ\n");
        if (outcome.pages_refused > 0)
            lacks_.push_back(log_.name() + ": " + std::to_string(outcome.pages_refused) + " pages could not be drawn");
        if (outcome.missing > 0)
            lacks_.push_back(log_.name() + ": lacks data in " + std::to_string(outcome.missing) + " places");
        if (outcome.cut)
            lacks_.push_back(log_.name() + ": is cut short; what it has is drawn");
        else if (outcome.damage > 0)
            lacks_.push_back(log_.name() + ": is damaged in " + std::to_string(outcome.damage) +
                             " places; what could be read is drawn");
        const int status = finish_output(different_ > 0 ? EXIT_FAILED : EXIT_DONE);
        for (const std::string& line : lacks_)
            say(line);
        return lacks_.empty() ? status : EXIT_FAILED;
    }

    const DiffInput& log_;
    const AgainstOptions& options_;
    std::string stem_;
    orvlog::replay::LogKind kind_;
    std::map<uint32_t, std::string> pictures_;
    std::map<uint32_t, bool> met_;
    std::vector<std::string> lacks_;
    uint32_t number_ = 0;
    uint64_t compared_ = 0;
    uint64_t different_ = 0;
};

}  // namespace

int compare_against(const DiffInput& log, const AgainstOptions& options)
{
    return Against(log, options).run();
}

}  // namespace orvlog::tool
