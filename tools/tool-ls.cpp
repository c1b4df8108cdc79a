// orvlog ls: a line for each call of a log.

#include "reader/call-summary.h"
#include "tools/command.h"
#include "tools/tool-look.h"

#include <cstdio>
#include <memory>
#include <set>
#include <string>
#include <vector>

namespace tool
{

namespace
{

using nlohmann::ordered_json;
using orvlog::reader::CallSummary;

struct LsOptions
{
    std::string log;
    std::string pages;
    std::string ids;
    std::vector<std::string> kinds;
    bool places = false;
    bool json = false;
};

// What is listed.
struct Filter
{
    NumberRange pages;
    NumberRange ids;
    std::set<std::string, std::less<>> kinds;
    bool by_page = false;
    bool by_id = false;

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

bool make_filter(const LsOptions& options, Filter* filter)
{
    filter->by_page = !options.pages.empty();
    filter->by_id = !options.ids.empty();
    for (const std::string& kind : options.kinds)
        filter->kinds.insert(kind.starts_with("ORV_") ? kind.substr(4) : kind);
    return (!filter->by_page || read_range(options.pages, &filter->pages)) &&
           (!filter->by_id || read_range(options.ids, &filter->ids));
}

int list(const LsOptions& options)
{
    Filter filter;
    if (!make_filter(options, &filter))
    {
        fail("--page and --id take a number or a range of numbers, like 2 or 2-5");
        return EXIT_BAD_USE;
    }
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
    if (damage > 0 && status == EXIT_DONE)
        std::fprintf(stderr, "orvlog: %s: damaged in %llu places%s\n", options.log.c_str(),
                     static_cast<unsigned long long>(damage), elements.events().is_cut() ? ", cut short" : "");
    return status;
}

}  // namespace

Run declare_ls(CLI::App& app)
{
    auto options = std::make_shared<LsOptions>();
    app.add_option("LOG", options->log, "the log, plain or coded: a path, a URL, or - for standard input")->required();
    app.add_option("--page", options->pages, "only what is on these pages, from 1")->type_name("A-B");
    app.add_option("--kind", options->kinds, "only calls of this kind, as object_paint; may be given again")
        ->type_name("NAME")
        ->expected(1)
        ->take_all();
    app.add_option("--id", options->ids, "only paints of these ids")->type_name("A-B");
    app.add_flag("--places", options->places, "begin each line with the call's byte and line in the log's text");
    app.add_flag("--json", options->json, "write an array of objects instead, with unrounded boxes");
    app.footer("A line has the id of a paint, the page, the kind of the call, the box that it paints, in whole pixels "
               "around it (minimum x, minimum y, maximum x, maximum y), the operator, and what paints: a colour, a "
               "gradient or an image. A - stands for what a call doesn't have, or the log doesn't tell. Clips don't "
               "narrow boxes, but of calls without a shape; mitered corners and what stands in resources have none. "
               "Of a damaged or cut log it lists what can be read.");
    return [options] { return list(*options); };
}

}  // namespace tool
