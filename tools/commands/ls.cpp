// orvlog ls: a line for each call of a log.

#include "clients/command-line/number-range.h"
#include "reader/look/call-summary.h"
#include "tools/shared/command.h"
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

using nlohmann::ordered_json;
using orvlog::reader::CallSummary;

struct LsOptions
{
    std::string log;
    std::string pages;  // empty: all, and calls that are on no page
    std::string ids;    // likewise
    std::vector<std::string> kinds;
    bool places = false;
    bool json = false;
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

std::string text_line(const CallSummary& call, bool places)
{
    std::string line;
    char text[200];
    if (places)
    {
        std::snprintf(text, sizeof text, "%12llu %9llu ", static_cast<unsigned long long>(call.place.byte),
                      static_cast<unsigned long long>(call.place.line));
        line += text;
    }
    const std::string id = call.id ? std::to_string(*call.id) : "-";
    const std::string page = call.page != 0 ? std::to_string(call.page) : "-";
    const std::string kind(call.kind.substr(0, 60));
    const std::string op = call.op.empty() ? "-" : call.op;
    std::snprintf(text, sizeof text, "%8s %5s %-23s %-22s %-14s ", id.c_str(), page.c_str(), printable(kind).c_str(),
                  box_text(call.box).c_str(), op.c_str());
    return line + text + (call.colour.empty() ? "-" : printable(call.colour)) + "\n";
}

std::string json_line(const CallSummary& call)
{
    ordered_json object;
    object["id"] = call.id ? ordered_json(*call.id) : ordered_json(nullptr);
    object["page"] = call.page != 0 ? ordered_json(call.page) : ordered_json(nullptr);
    object["kind"] = call.kind;
    object["box"] = box_json(call.box);
    object["operator"] = call.op.empty() ? ordered_json(nullptr) : ordered_json(call.op);
    object["colour"] = call.colour.empty() ? ordered_json(nullptr) : ordered_json(call.colour);
    object["byte"] = call.place.byte;
    object["line"] = call.place.line;
    return json_text(object);
}

// What was asked for and is nowhere in the log; empty if nothing is amiss. Of a range one is enough.
std::string missing(const LsOptions& options, const Filter& filter, uint32_t pages)
{
    if (filter.by_page && filter.pages.first > pages)
        return "has no page " + options.pages + ", but " + std::to_string(pages) + " in all";
    if (filter.by_id && !filter.met_id)
        return "has no paint " + options.ids;
    return {};
}

int list(const LsOptions& options)
{
    Filter filter(options);
    LogInput input(options.log);
    if (!input.open())
        return input.fail_to_open();
    orvlog::reader::ElementReader elements(input.stream(), orvlog::reader::LogForm::log, orvlog::reader::Data::skip);
    elements.split_nested = true;
    uint64_t damage = 0;
    elements.on_damage = [&damage](const orvlog::reader::Damage&) { ++damage; };
    orvlog::reader::CallSummaries summaries;
    bool first = true;
    bool good = true;
    while (const orvlog::reader::Element* element = good ? elements.next() : nullptr)
    {
        input.show(elements.events().bytes_used());
        if (!orvlog::reader::is_call_name(element->name))
            continue;
        const CallSummary call = summaries.next(*element);
        filter.met_id = filter.met_id || (filter.by_id && call.id && filter.ids.holds(*call.id));
        if (!filter.holds(call))
            continue;
        if (options.json)
            good = put(first ? "[\n" : ",\n") && put(json_line(call));
        else
            good = put(text_line(call, options.places));
        first = false;
    }
    if (good && !elements.events().is_log())
        return input.fail_as_no_log();
    if (options.json)
        put(first ? "[]\n" : "\n]\n");
    const int status = finish_output(EXIT_DONE);
    if (status != EXIT_DONE)
        return status;
    if (damage > 0)
        say(options.log + ": damaged in " + std::to_string(damage) + " places" +
            (elements.events().is_cut() ? ", cut short" : ""));
    const std::string none = missing(options, filter, summaries.pages());
    return none.empty() ? EXIT_DONE : fail(options.log + ": " + none);
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
    app.add_flag("--places", options->places, "begin each line with the call's byte and line in the log's text");
    app.add_flag("--json", options->json, "write an array of objects instead, with unrounded boxes");
    app.footer("A line has the id of a paint, the page, the kind of the call, the box that it paints, in whole pixels "
               "around it (minimum x, minimum y, maximum x, maximum y), the operator, and what paints: a colour, a "
               "gradient or an image. A - stands for what a call doesn't have, or the log doesn't tell. Clips don't "
               "narrow boxes, but of calls without a shape; mitered corners and what stands in resources have none. "
               "Of a damaged or cut log it lists what can be read. Pages and paints that the log doesn't have are an "
               "error.");
    return [options] { return list(*options); };
}

}  // namespace orvlog::tool
