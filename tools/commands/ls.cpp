// orvlog ls: a line for each call of a log.

#include "clients/command-line/number-range.h"
#include "clients/system/system.h"
#include "reader/look/call-address.h"
#include "reader/look/call-in-flight.h"
#include "reader/look/call-summary.h"
#include "reader/look/call-text.h"
#include "tools/ls/call-values.h"
#include "tools/ls/columns.h"
#include "tools/ls/log-tail.h"
#include "tools/ls/terminal.h"
#include "tools/shared/command.h"
#include "tools/shared/indexed-log.h"
#include "tools/shared/look.h"

#include <cstdio>
#include <memory>
#include <set>
#include <string>
#include <vector>

namespace orvlog::tool
{

namespace
{

using orvlog::reader::CallSummary;
using orvlog::reader::Element;

struct LsOptions
{
    std::string log;
    std::string pages;  // empty: all, and calls that are on no page
    std::string ids;    // likewise
    std::vector<std::string> kinds;
    bool places = false;
    bool json = false;
    bool follow = false;
    std::string columns;  // empty: those by default
    std::string colour = "auto";
};

// What is listed.
struct Filter
{
    explicit Filter(const LsOptions& options)
        : kinds(options.kinds.begin(), options.kinds.end()), by_page(!options.pages.empty()),
          by_id(!options.ids.empty())
    {
        command_line::read_pages(options.pages, &pages);
        command_line::read_ids(options.ids, &ids);
    }

    command_line::NumberRange pages;
    command_line::NumberRange ids;
    std::set<std::string, std::less<>> kinds;
    bool by_page;
    bool by_id;
    bool met_id = false;  // a paint of these ids, listed or not

    bool holds(const CallSummary& call) const
    {
        return (!by_page || (call.page != 0 && pages.holds(call.page))) &&
               (!by_id || (call.id && ids.holds(*call.id))) && (kinds.empty() || kinds.contains(call.kind));
    }
};

// What was asked for and is nowhere in the log; empty if nothing is amiss. Of a range one is enough.
std::string missing(const LsOptions& options, const Filter& filter, uint32_t pages)
{
    if (filter.by_page && filter.pages.first > pages)
        return "has no page " + options.pages + ", but " + std::to_string(pages) + " in all";
    if (filter.by_id && !filter.met_id)
        return "has no paint " + options.ids;
    return {};
}

// Writes what is listed as it comes.
class CallList
{
public:
    explicit CallList(const LsOptions& options) : options_(options), filter_(options)
    {
        form_.width = terminal_width();
        form_.columns =
            options.columns.empty() ? default_columns(options.places, form_.width) : read_columns(options.columns);
        form_.colour = wants_colour(options.colour);
    }

    // False when nothing more can be written.
    bool add(const Element& element)
    {
        if (!orvlog::reader::is_call_name(element.name))
            return true;
        const GGO_Matrix* around = summaries_.to_pixels(element);
        const std::optional<GGO_BoxFloat> clip =
            around != nullptr ? orvlog::reader::clip_box(element, *around) : std::nullopt;
        const CallSummary call = summaries_.next(element);
        filter_.met_id = filter_.met_id || (filter_.by_id && call.id && filter_.ids.holds(*call.id));
        if (!filter_.holds(call))
            return true;
        const CallRow row{call, orvlog::reader::call_address_text(element), clip, orvlog::reader::text_of(element)};
        if (!options_.json)
            return begin() && put(row_line(row, form_));
        // Nothing but ASCII: a text may have marks that turn what stands around it.
        const std::string object =
            call_values(row, element).dump(-1, ' ', true, nlohmann::ordered_json::error_handler_t::replace);
        if (options_.follow)
            return put(object + "\n");
        const bool good = put(begun_ ? ",\n" : "[\n") && put(object);
        begun_ = true;
        return good;
    }

    // The header, if it isn't there yet.
    bool begin()
    {
        const bool good = begun_ || options_.json || put(header_line(form_));
        begun_ = true;
        return good;
    }

    bool finish()
    {
        if (options_.json && !options_.follow)
            return put(begun_ ? "\n]\n" : "[]\n");
        return begin();
    }

    // What was asked for and is nowhere in the log; empty if nothing is amiss.
    std::string missing() const
    {
        return tool::missing(options_, filter_, summaries_.pages());
    }

private:
    const LsOptions& options_;
    Filter filter_;
    LineForm form_;
    orvlog::reader::CallSummaries summaries_;
    bool begun_ = false;
};

int end_list(const LsOptions& options, CallList& list)
{
    const std::string none = list.missing();
    return none.empty() ? EXIT_DONE : fail(options.log + ": " + none);
}

// What is listed of a repacked log, without the rest; null if all of it is to be read.
std::unique_ptr<std::istream> parts_of(const LsOptions& options)
{
    command_line::NumberRange range;
    if (!options.ids.empty())
    {
        command_line::read_ids(options.ids, &range);
        return IndexedLog(options.log).up_to_paints(range.first, range.last);
    }
    if (options.pages.empty())
        return nullptr;
    command_line::read_pages(options.pages, &range);
    return IndexedLog(options.log).pages(range.first, range.last, orvlog::reader::Resources::none);
}

int list_log(const LsOptions& options)
{
    LogInput input(options.log);
    if (!input.open())
        return input.fail_to_open();
    input.read_instead(parts_of(options));
    orvlog::reader::ElementReader elements(input.stream(), orvlog::reader::LogForm::log, orvlog::reader::Data::skip);
    elements.split_nested = true;
    uint64_t damage = 0;
    elements.on_damage = [&damage](const orvlog::reader::Damage&) { ++damage; };
    orvlog::reader::CallInFlight in_flight;
    CallList list(options);
    bool good = true;
    while (const Element* element = good ? elements.next() : nullptr)
    {
        input.show(elements.events().bytes_used());
        in_flight.next(*element);
        good = list.add(*element);
    }
    if (good && !elements.events().is_log())
        return input.fail_as_no_log();
    if (good)
        list.finish();
    const int status = finish_output(EXIT_DONE);
    if (status != EXIT_DONE)
        return status;
    if (damage > 0)
        say(options.log + ": damaged in " + std::to_string(damage) + " places" +
            (elements.events().is_cut() ? ", cut short" : ""));
    if (elements.events().is_cut() && !in_flight.text().empty())
        say(options.log + ": in flight: " + printable(in_flight.text()));
    return end_list(options, list);
}

// The mark of the call in flight: on a terminal it goes when the next line comes.
class FlightMark
{
public:
    void show(const std::string& call)
    {
        if (call == shown_)
            return;
        clear();
        shown_ = call;
        if (!call.empty())
            put("in flight: " + printable(call) + (terminal_ ? "" : "\n"));
    }

    void clear()
    {
        if (terminal_ && !shown_.empty())
            put("\r\x1b[K");
        shown_.clear();
    }

private:
    bool terminal_ = is_terminal();
    std::string shown_;
};

int follow_log(const LsOptions& options)
{
    CallList list(options);
    FlightMark mark;
    bool gone = false;
    LogTail tail(options.log);
    tail.on_call = [&](const Element& call)
    {
        mark.clear();
        return list.add(call);
    };
    tail.on_wait = [&](const std::string& call)
    {
        if (!options.json && list.begin())
            mark.show(call);
        if (std::fflush(stdout) != 0)
            return false;
        // As a write would end it, which there may be none of for a long time.
        gone = system::is_reader_gone();
        if (gone)
            system::end_without_reader();
        return !gone;
    };
    const bool whole = tail.follow();
    mark.clear();
    if (whole)
        list.finish();
    const int status = finish_output(EXIT_DONE);
    if (status != EXIT_DONE)
        return status;
    if (gone)
        return fail("standard output: nobody reads it");
    if (!whole)
        return fail(options.log + ": " + tail.why());
    return end_list(options, list);
}

std::string check_columns(const std::string& columns)
{
    return read_columns(columns).empty() ? "columns are some of " + column_names() + ", with commas between them" : "";
}

// What can be followed is a file.
std::string check_followed(const LsOptions& options)
{
    if (!options.follow || (options.log != "-" && options.log.find("://") == std::string::npos))
        return {};
    return "--follow: a file alone can be followed, not " +
           std::string(options.log == "-" ? "the standard input" : "a URL");
}

int list(const LsOptions& options)
{
    if (const std::string why = check_followed(options); !why.empty())
    {
        std::fprintf(stderr, "orvlog ls: %s (see orvlog ls --help)\n", why.c_str());
        return EXIT_BAD_USE;
    }
    return options.follow ? follow_log(options) : list_log(options);
}

}  // namespace

Run declare_ls(CLI::App& app)
{
    const std::span<const std::string_view> kinds = orvlog::reader::call_kinds();
    const auto without_prefix = [](const std::string& kind)
    { return kind.starts_with("ORV_") ? kind.substr(4) : kind; };
    auto options = std::make_shared<LsOptions>();
    app.add_option("LOG", options->log, "the log, plain or coded: a path, a URL, or - for standard input")->required();
    app.add_option("--page", options->pages, "only what is on these pages, from 1")
        ->type_name("A-B")
        ->check(command_line::check_pages);
    app.add_option("--kind", options->kinds, "only calls of this kind; may be given again")
        ->type_name("NAME")
        ->expected(1)
        ->take_all()
        ->transform(without_prefix)
        ->check(CLI::IsMember(std::vector<std::string>(kinds.begin(), kinds.end())));
    app.add_option("--id", options->ids, "only paints of these ids")->type_name("A-B")->check(command_line::check_ids);
    CLI::Option* places =
        app.add_flag("--places", options->places, "begin each line with the call's byte and line in the log's text");
    app.add_option("--columns", options->columns, "these columns instead, in this order: " + column_names())
        ->type_name("LIST")
        ->check(check_columns)
        ->excludes(places);
    app.add_option("--colour", options->colour, "colours: on a terminal, unless NO_COLOR is set, always or never")
        ->type_name("WHEN")
        ->check(CLI::IsMember({"auto", "always", "never"}));
    app.add_flag("--json", options->json, "write an array of objects instead, with values as the log has them");
    app.add_flag("--follow", options->follow,
                 "go on while a job writes the log, to the log's end; with --json an object a line");
    app.footer(
        "Behind a header a line for each call: its id, or line:N for what has none; the page; the kind of the "
        "call; the box that it paints, in whole pixels around it (minimum x, minimum y, maximum x, maximum y); the "
        "box that its clips leave; the operator; what paints: a colour, a gradient or an image; and what a text "
        "says. A - stands for what a call doesn't have, or the log doesn't tell. Clips don't narrow boxes, but "
        "of calls without a shape; mitered corners and what stands in resources have none. On a terminal lines "
        "end at its edge. Of a damaged or cut log it lists what can be read, and names the call that was in "
        "flight. Pages and paints that the log doesn't have are an error.\n\nWith --follow calls come as the job "
        "makes them, and the one in flight is named when nothing has come for a tenth of a second; the log is "
        "a plain one in a file. It ends with the log, with a signal, and with status 1 when the file is gone, "
        "replaced or shorter than before.");
    return [options] { return list(*options); };
}

}  // namespace orvlog::tool
