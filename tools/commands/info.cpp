// orvlog info: what a log is, and what is in it.

#include "reader/look/log-info.h"
#include "reader/text/log-files.h"
#include "tools/shared/command.h"
#include "tools/shared/look.h"

#include <algorithm>
#include <cstdio>
#include <filesystem>
#include <memory>
#include <regex>
#include <set>
#include <string>
#include <system_error>
#include <vector>

namespace orvlog::tool
{

namespace
{

using nlohmann::ordered_json;
using orvlog::reader::LogInfo;
using orvlog::reader::PageRun;
using orvlog::reader::TextCounts;

struct InfoOptions
{
    std::string log;
    bool versions = false;
    bool json = false;
    bool records = false;
};

// Counts, the largest first.
std::vector<std::pair<std::string, uint64_t>> sorted(const TextCounts& counts)
{
    std::vector<std::pair<std::string, uint64_t>> list(counts.texts.begin(), counts.texts.end());
    std::ranges::stable_sort(list, [](const auto& a, const auto& b) { return a.second > b.second; });
    if (counts.others > 0)
        list.emplace_back("others", counts.others);
    return list;
}

std::string rounded(double value)
{
    char text[40];
    const auto hundredths = static_cast<long long>(value * 100 + 0.5);
    std::snprintf(text, sizeof text, "%lld.%02lld", hundredths / 100, hundredths % 100);
    return text;
}

void append_line(std::string& text, std::string_view name, const std::string& value)
{
    text += name;
    text.append(name.size() < 12 ? 12 - name.size() : 1, ' ');
    text += value;
    text += '\n';
}

void append_counts(std::string& text, std::string_view title, const TextCounts& counts)
{
    if (counts.all() == 0)
        return;
    append_line(text, title, std::to_string(counts.all()));
    for (const auto& [name, count] : sorted(counts))
    {
        char number[32];
        std::snprintf(number, sizeof number, "%12llu  ", static_cast<unsigned long long>(count));
        text += number + (name.empty() ? std::string("(no name)") : printable(name)) + "\n";
    }
}

std::string page_text(const PageRun& run)
{
    std::string text = "page";
    text += run.first == run.last ? " " + std::to_string(run.first)
                                  : "s " + std::to_string(run.first) + "-" + std::to_string(run.last);
    text += ": " + std::to_string(run.width) + "x" + std::to_string(run.height) + " pixels";
    if (run.dpi_x > 0 && run.dpi_y > 0 && run.width_inches < 1e6 && run.height_inches < 1e6)
        text +=
            ", " + rounded(run.width_inches) + "x" + rounded(run.height_inches) + " inches at " +
            (run.dpi_x == run.dpi_y ? number_text(run.dpi_x) : number_text(run.dpi_x) + "x" + number_text(run.dpi_y)) +
            " dpi";
    return text;
}

std::string value_of(const LogInfo& info, std::string_view name)
{
    for (const auto& [key, value] : info.versions)
        if (key == name)
            return value;
    return "not told";
}

std::string form_of(const LogInfo& info)
{
    const std::string form = info.coded ? "coded" : "plain";
    return info.compressed ? form + " in Zstandard frames" : form;
}

std::string head_text(const LogInfo& info, const std::string& name)
{
    std::string text;
    append_line(text, "log", name);
    append_line(text, "form",
                form_of(info) + ", " + std::to_string(info.bytes) + " bytes, " +
                    (info.garbled ? "damaged"
                     : info.cut   ? "cut short"
                                  : "whole"));
    if (info.cut && !info.in_flight.empty())
        append_line(text, "in flight",
                    printable(info.in_flight) + (info.in_flight_id.empty() ? "" : " " + printable(info.in_flight_id)) +
                        ", line " + std::to_string(info.in_flight_line));
    if (info.compressed)
        append_line(text, "text", std::to_string(info.text_bytes) + " bytes");
    append_line(text, "content", "version " + printable(value_of(info, "ORVLOG_CONTENT_VERSION")));
    append_line(text, "mode", printable(value_of(info, "LoggingMode")));
    return text;
}

// The versions of the interfaces that the log was written with.
std::string version_text(const LogInfo& info)
{
    std::string versions;
    for (const auto& [key, value] : info.versions)
    {
        if (key.ends_with("_VERSION") && key != "ORVLOG_CONTENT_VERSION")
            versions +=
                (versions.empty() ? "" : ", ") + printable(key.substr(0, key.size() - 8)) + " " + printable(value);
    }
    std::string text;
    append_line(text, "versions", versions.empty() ? "not told" : versions);
    return text;
}

std::string body_text(const LogInfo& info)
{
    std::string text;
    append_line(text, "pages", std::to_string(info.pages));
    for (const PageRun& run : info.sizes)
        text += "  " + page_text(run) + "\n";
    append_counts(text, "calls", info.calls);
    append_counts(text, "callbacks", info.callbacks);
    append_counts(text, "images", info.images);
    if (info.images.all() > 0)
    {
        text += "  " + std::to_string(info.direct_images) + " direct, " + std::to_string(info.image_bytes) +
                " bytes in the log, " + std::to_string(info.side_file_bytes) + " in files beside it\n";
    }
    if (info.kept_logs > 0)
        text += "  " + std::to_string(info.kept_logs) + " logs of kept images beside it\n";
    append_counts(text, "engines", info.engines);
    append_line(text, "strings", std::to_string(info.strings));
    append_counts(text, "glyphs", info.glyphs);
    append_line(text, "tickets",
                std::to_string(info.tickets.all()) + ", brought by " + std::to_string(info.ticket_uses) + " calls");
    for (const auto& [name, count] : sorted(info.tickets))
        text += "  " + std::to_string(count) + " " + printable(name) + "\n";
    append_line(text, "comments", std::to_string(info.comments));
    for (const std::string& comment : info.first_comments)
        text += "  " + printable(comment) + "\n";
    append_counts(text, "warnings", info.warnings);
    append_line(text, "damage", info.damage == 0 ? "none" : std::to_string(info.damage));
    for (const auto& damage : info.first_damage)
        text += "  line " + std::to_string(damage.place.line) + ", byte " + std::to_string(damage.place.byte) + ": " +
                printable(damage.text) + "\n";
    return text;
}

ordered_json counts_json(const TextCounts& counts)
{
    ordered_json object = ordered_json::object();
    for (const auto& [name, count] : sorted(counts))
        object[name] = count;
    return object;
}

ordered_json pages_json(const LogInfo& info)
{
    ordered_json list = ordered_json::array();
    for (const PageRun& run : info.sizes)
    {
        list.push_back({{"first", run.first},
                        {"last", run.last},
                        {"width", run.width},
                        {"height", run.height},
                        {"width_inches", run.width_inches},
                        {"height_inches", run.height_inches},
                        {"dpi", ordered_json::array({run.dpi_x, run.dpi_y})}});
    }
    return list;
}

ordered_json records_json(const orvlog::reader::RecordCounts& records)
{
    return {{"operators", records.operators}, {"operands", records.operands}, {"colours", records.colours},
            {"paths", records.paths},         {"shapes", records.shapes},     {"clips", records.clips},
            {"fonts", records.fonts}};
}

std::string records_text(const ordered_json& records)
{
    std::string text;
    for (const auto& [name, count] : records.items())
        append_line(text, name, count.dump());
    return text;
}

ordered_json info_json(const LogInfo& info, const std::string& name)
{
    ordered_json object;
    object["log"] = name;
    object["coded"] = info.coded;
    object["cut"] = info.cut;
    if (info.garbled)
        object["garbled"] = true;
    if (info.cut && !info.in_flight.empty())
        object["in_flight"] = {{"call", info.in_flight}, {"id", info.in_flight_id}, {"line", info.in_flight_line}};
    object["bytes"] = info.bytes;
    if (info.compressed)
    {
        object["compressed"] = "zstd";
        object["text_bytes"] = info.text_bytes;
    }
    for (const auto& [key, value] : info.versions)
        object["root"][key] = value;
    object["page_count"] = info.pages;
    object["pages"] = pages_json(info);
    object["calls"] = counts_json(info.calls);
    object["callbacks"] = counts_json(info.callbacks);
    object["images"] = counts_json(info.images);
    object["direct_images"] = info.direct_images;
    object["image_bytes"] = info.image_bytes;
    object["side_file_bytes"] = info.side_file_bytes;
    object["kept_image_logs"] = info.kept_logs;
    object["engines"] = counts_json(info.engines);
    object["strings"] = info.strings;
    object["glyphs"] = counts_json(info.glyphs);
    object["ticket_uses"] = info.ticket_uses;
    object["tickets"] = counts_json(info.tickets);
    object["comment_count"] = info.comments;
    object["comments"] = info.first_comments;
    object["warnings"] = counts_json(info.warnings);
    object["damage_count"] = info.damage;
    object["damage"] = ordered_json::array();
    for (const auto& damage : info.first_damage)
        object["damage"].push_back({{"line", damage.place.line}, {"byte", damage.place.byte}, {"text", damage.text}});
    return object;
}

// A job that goes through a temporary log leaves its target empty until the end. Whether such logs lie where it
// would have left them: in the present folder, or in the log's.
bool tell_temporary_logs(const std::string& log)
{
    namespace fs = std::filesystem;
    std::set<std::string> found;
    std::error_code error;
    const fs::path own = orvlog::reader::folder_of_log(log);
    for (const fs::path& folder : {fs::path("."), own.empty() ? fs::path(".") : own})
    {
        for (const auto& entry : fs::directory_iterator(folder, error))
        {
            const std::string name = entry.path().filename().string();
            static const std::regex form("orvlog-[0-9a-f]{8}-[0-9a-f]{8}-[0-9a-f]{8}-[0-9a-f]{8}\\.tmp");
            if (entry.is_regular_file(error) && std::regex_match(name, form))
                found.insert((folder == "." ? fs::path(name) : entry.path()).string());
        }
    }
    for (const std::string& name : found)
        fail(log + ": empty; a job that was broken off is in " + name + ": orvlog merge " + name + " -o " + log);
    return !found.empty();
}

int print_info(const InfoOptions& options)
{
    LogInput input(options.log);
    if (!input.open())
        return input.fail_to_open();
    const LogInfo info = orvlog::reader::read_info(input.stream(), [&input](uint64_t done) { input.show(done); });
    if (!info.is_log)
        return info.text_bytes == 0 && info.bytes == 0 && tell_temporary_logs(options.log) ? EXIT_FAILED
                                                                                           : input.fail_as_no_log();
    const std::string name = options.log == "-" ? "standard input" : options.log;
    const ordered_json records = records_json(info.records);
    ordered_json object = options.json ? info_json(info, name) : ordered_json();
    if (options.records && options.json)
        object["records"] = records;
    put(options.json ? json_text(object, 2) + "\n"
                     : head_text(info, name) + (options.versions ? version_text(info) : "") + body_text(info) +
                           (options.records ? records_text(records) : ""));
    return finish_output(EXIT_DONE);
}

}  // namespace

Run declare_info(CLI::App& app)
{
    auto options = std::make_shared<InfoOptions>();
    app.add_option("LOG", options->log, "the log, plain or coded: a path, a URL, or - for standard input")->required();
    app.add_flag("--versions", options->versions, "tell the versions of the interfaces, too");
    app.add_flag("--json", options->json, "write an object instead, with all versions");
    app.add_flag("--records", options->records,
                 "count operators, operands, colours, paths, shapes, clips and fonts, too");
    app.footer("Tells whether the log is plain or coded, whole or cut short, in which mode it was "
               "written, the size of its pages, and how often it has each call, callback, kind of image, font "
               "engine, kind of glyph, ticket, comment and warning, and where it is damaged. A log of any size needs "
               "little memory.");
    return [options] { return print_info(*options); };
}

}  // namespace orvlog::tool
