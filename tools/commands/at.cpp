// orvlog at: the calls that changed a pixel of a page.

#include "inspect/history/pixel-history.h"
#include "inspect/history/touch-list.h"
#include "tools/shared/command.h"
#include "tools/shared/files-from.h"
#include "tools/shared/log-again.h"
#include "tools/shared/look.h"
#include "tools/shared/touch-text.h"

#include <algorithm>
#include <charconv>
#include <memory>
#include <set>
#include <string>
#include <vector>

namespace orvlog::tool
{

namespace
{

using nlohmann::ordered_json;
using orvlog::inspect::HistoryOptions;
using orvlog::inspect::HistoryOutcome;
using orvlog::inspect::PixelBox;
using orvlog::inspect::Touch;
using orvlog::inspect::TouchList;

struct AtOptions
{
    std::string log;
    std::string pixel;
    std::string box;
    uint32_t page = 1;
    unsigned dpi = 0;
    bool last_first = false;
    bool all = false;
    bool json = false;
    bool allow_missing = false;
    std::vector<std::string> folders;
};

// `count` whole numbers from 0 with commas between them; empty for any other text.
std::vector<int> read_numbers(std::string_view text, size_t count)
{
    std::vector<int> numbers;
    const char* at = text.data();
    const char* const end = text.data() + text.size();
    while (at != end && numbers.size() < count)
    {
        int number = 0;
        const auto read = std::from_chars(at, end, number);
        if (read.ec != std::errc() || number < 0 || *at == '-')
            return {};
        numbers.push_back(number);
        at = read.ptr;
        if (at == end)
            break;
        if (*at++ != ',' || at == end)
            return {};
    }
    return at == end && numbers.size() == count ? numbers : std::vector<int>();
}

std::string check_pixel(const std::string& text)
{
    return read_numbers(text, 2).empty() ? "a pixel is given as X,Y, counting from 0" : "";
}

std::string check_box(const std::string& text)
{
    const std::vector<int> numbers = read_numbers(text, 4);
    const bool good = !numbers.empty() && numbers[0] < numbers[2] && numbers[1] < numbers[3];
    return good ? "" : "a box is given as X0,Y0,X1,Y1, without the last column and row";
}

PixelBox box_of(const AtOptions& options)
{
    if (options.pixel.empty())
    {
        const std::vector<int> box = read_numbers(options.box, 4);
        return {box[0], box[1], box[2], box[3]};
    }
    const std::vector<int> pixel = read_numbers(options.pixel, 2);
    const auto next = [](int value) { return value < INT32_MAX ? value + 1 : value; };
    return {pixel[0], pixel[1], next(pixel[0]), next(pixel[1])};
}

constexpr uint64_t kMostAlike = 10;

// Calls that leave the pixel as it was, for the same reason.
bool are_alike(const Touch& one, const Touch& other)
{
    return !one.changed && !other.changed && one.why.reason == other.why.reason && one.why.group == other.why.group;
}

class AtJob
{
public:
    explicit AtJob(const AtOptions& options) : options_(options), box_(box_of(options)), log_(options.log) {}

    int run()
    {
        if (!log_.open())
            return fail(options_.log + ": " + log_.why());
        log_.keep_to_page(options_.page);
        orvlog::reader::LogFiles files(options_.log, options_.folders);
        if (!files.why().empty())
            return fail(files.why());
        const orvlog::replay::LogKind kind = orvlog::replay::examine(log_.from_start());
        if (!kind.is_log)
            return fail(options_.log + ": not a log");
        if (options_.page > kind.faces)
            return fail(options_.log + ": has no page " + std::to_string(options_.page) + ", but " +
                        std::to_string(kind.faces) + " in all");
        const HistoryOutcome outcome = follow(kind, files);
        if (!outcome.page_begun)
            return fail(options_.log + ": page " + std::to_string(options_.page) + " can't be drawn");
        if (box_.x1 > static_cast<int64_t>(outcome.width) || box_.y1 > static_cast<int64_t>(outcome.height))
            return fail(options_.log + ": page " + std::to_string(options_.page) + " has " +
                        std::to_string(outcome.width) + " by " + std::to_string(outcome.height) + " pixels");
        Progress progress(log_.size());
        calls_ = orvlog::inspect::describe_calls(log_.from_start(), list_.calls(),
                                                 [&progress](uint64_t done) { progress.show(done); });
        print(outcome);
        const int status = finish_output(EXIT_DONE);
        return status != EXIT_DONE ? status : say_what_lacks(outcome.replay);
    }

private:
    HistoryOutcome follow(const orvlog::replay::LogKind& kind, const orvlog::reader::LogFiles& files)
    {
        Progress progress(log_.size());
        HistoryOptions options;
        options.files = files;
        options.page = options_.page;
        options.dpi = options_.dpi;
        options.box = box_;
        options.reasons = !options_.pixel.empty();
        options.complain = [this](const std::string& line) { complain(line); };
        options.progress = [&progress](uint64_t done) { progress.show(done); };
        return orvlog::inspect::follow_pixels(log_.from_start(), kind, options,
                                              [this](const Touch& touch, auto, auto groups)
                                              { list_.add(touch, groups); });
    }

    void complain(const std::string& line)
    {
        constexpr size_t kMost = 100;
        if (said_.size() < kMost && said_.insert(line).second)
            say(options_.log + ": " + printable(line));
    }

    TouchView view(const Touch& touch) const
    {
        return {touch, list_.around(touch), calls_, !options_.pixel.empty()};
    }

    std::string head(const HistoryOutcome& outcome) const
    {
        const auto changed = std::ranges::count_if(list_.touches(), [](const Touch& touch) { return touch.changed; });
        const size_t kept = list_.touches().size() - static_cast<size_t>(changed);
        const bool pixel = !options_.pixel.empty();
        std::string text = "page " + std::to_string(options_.page) + ", " + std::to_string(outcome.width) + " by " +
                           std::to_string(outcome.height) + " pixels, " + (pixel ? "pixel " : "box ") +
                           (pixel ? options_.pixel : options_.box) + ": " + std::to_string(changed) + " changes";
        if (pixel)
            text += ", " + std::to_string(kept) + " without effect";
        if (list_.left_out() > 0)
            text += ", " + std::to_string(list_.left_out()) + " more that are not listed";
        return text + "\n";
    }

    void print(const HistoryOutcome& outcome)
    {
        std::vector<const Touch*> touches;
        for (const Touch& touch : list_.touches())
            touches.push_back(&touch);
        if (options_.last_first)
            std::ranges::reverse(touches);
        if (options_.json)
            return print_json(outcome, touches);
        put(head(outcome));
        uint64_t alike = 0;
        for (size_t i = 0; i < touches.size(); ++i)
        {
            const bool more = i > 0 && are_alike(*touches[i - 1], *touches[i]);
            alike = more ? alike + 1 : 0;
            if (options_.all || alike < kMostAlike)
                put(touch_line(view(*touches[i])));
            const bool last = i + 1 == touches.size() || !are_alike(*touches[i], *touches[i + 1]);
            if (!options_.all && last && alike >= kMostAlike)
                put("             " + std::to_string(alike - kMostAlike + 1) + " more that stay for this reason\n");
        }
    }

    void print_json(const HistoryOutcome& outcome, const std::vector<const Touch*>& touches)
    {
        ordered_json object;
        object["page"] = options_.page;
        object["width"] = outcome.width;
        object["height"] = outcome.height;
        object["box"] = ordered_json::array({box_.x0, box_.y0, box_.x1, box_.y1});
        object["not_listed"] = list_.left_out();
        std::string text = json_text(object);
        text.pop_back();
        put(text + ",\"calls\":[");
        for (size_t i = 0; i < touches.size(); ++i)
            put((i == 0 ? "\n" : ",\n") + json_text(touch_json(view(*touches[i]))));
        put("\n]}\n");
    }

    int say_what_lacks(const orvlog::replay::Outcome& outcome) const
    {
        int status = EXIT_DONE;
        if (outcome.missing > 0 && !options_.allow_missing)
            status = fail(options_.log + ": lacks data in " + std::to_string(outcome.missing) +
                          " places; what could be found is drawn (--allow-missing is content with that)");
        if (outcome.cut)
            return fail(options_.log + ": is cut short; what it has is drawn");
        if (outcome.damage > 0)
            return fail(options_.log + ": is damaged in " + std::to_string(outcome.damage) +
                        " places; what could be read is drawn");
        return status;
    }

    const AtOptions& options_;
    PixelBox box_;
    LogAgain log_;
    TouchList list_;
    Descriptions calls_;
    std::set<std::string> said_;
};

int at(const AtOptions& options)
{
    if (options.pixel.empty() != options.box.empty())
        return AtJob(options).run();
    fail("at takes either a pixel or a --box");
    return EXIT_BAD_USE;
}

}  // namespace

Run declare_at(CLI::App& app)
{
    auto options = std::make_shared<AtOptions>();
    app.add_option("LOG", options->log, "the log, plain or coded: a path, a URL, or - for standard input")->required();
    app.add_option("PIXEL", options->pixel, "column and row, from 0 at the top left")
        ->type_name("X,Y")
        ->check(check_pixel);
    app.add_option("--page", options->page, "the page, from 1")
        ->type_name("N")
        ->check(CLI::Range(uint32_t{1}, UINT32_MAX))
        ->capture_default_str();
    app.add_option("--box", options->box, "all pixels of this box instead, without the last column and row")
        ->type_name("X0,Y0,X1,Y1")
        ->check(check_box);
    app.add_option("--dpi", options->dpi, "resolution of the page instead of its own")
        ->type_name("N")
        ->check(CLI::Range(1u, 2400u));
    app.add_flag("--last-first", options->last_first, "list what happened last first");
    app.add_flag("--all", options->all,
                 "list each call without effect; otherwise ten that have the same reason, one after the other");
    app.add_flag("--json", options->json, "write an object instead");
    app.add_flag("--allow-missing", options->allow_missing, "be content with what there is if image data is missing");
    add_files_from(app, options->folders);
    app.footer(
        "The page is drawn once from the log, and the pixel looked at after each call, on the page and on the "
        "layers of its groups. A line for each call that changed it has the call's address, its kind, the "
        "colour before and after, the operator, what paints, and the box of its clips; of the end of a group the "
        "group's own. Calls whose shape covers the pixel but left it as it was are listed with the reason. "
        "Behind in stand the groups around the call, the innermost first; on their layers colours have alpha, "
        "#rrggbbaa. For a box the number of pixels that a call changed is told, and the box around them. A log "
        "that is cut short or damaged is drawn as far as it goes; the exit status is then 1.");
    return [options] { return at(*options); };
}

}  // namespace orvlog::tool
