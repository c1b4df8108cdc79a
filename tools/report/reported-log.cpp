#include "tools/report/reported-log.h"

#include "inspect/reduce/log-scan.h"
#include "inspect/report/columns.h"
#include "inspect/report/file-hash.h"
#include "reader/look/call-in-flight.h"
#include "tools/report/report-objects.h"
#include "tools/shared/source.h"

#include <algorithm>
#include <filesystem>
#include <fstream>

namespace orvlog::tool
{

namespace
{

using orvlog::inspect::Blocks;
using orvlog::inspect::number_json;
using orvlog::inspect::RecordedPage;
using orvlog::inspect::text_json;
using orvlog::reader::TextCounts;

// What a report may grow to with each part of a log, in bytes of its file.
constexpr uint64_t kMostWithRecords = uint64_t{96} << 20;
constexpr uint64_t kMostWithPictures = uint64_t{144} << 20;
constexpr uint64_t kMostWithSteps = uint64_t{320} << 20;
constexpr uint64_t kMostCalls = 400000;
constexpr size_t kMostNotes = 100;
constexpr size_t kLongestNote = 1000;

std::string counts_json(const TextCounts& counts)
{
    std::vector<std::pair<std::string, uint64_t>> rows(counts.texts.begin(), counts.texts.end());
    std::ranges::stable_sort(rows, [](const auto& a, const auto& b) { return a.second > b.second; });
    if (counts.others > 0)
        rows.emplace_back("others", counts.others);
    std::string json = "[";
    for (const auto& [text, count] : rows)
        json.append(json.size() > 1 ? ",[" : "[").append(text_json(text)).append(",").append(std::to_string(count)) +=
            ']';
    return json.append("]");
}

const char* truth(bool value)
{
    return value ? "true" : "false";
}

// `name` is of this program, `json` a value.
void add_member(std::string& object, const char* name, const std::string& json)
{
    object.append(object.size() > 1 ? ",\"" : "\"").append(name).append("\":").append(json);
}

}  // namespace

ReportedLog::ReportedLog(std::string name, const ReportSettings& settings)
    : name_(std::move(name)), settings_(settings), log_(name_), files_(name_, settings.folders)
{
}

bool ReportedLog::wants(uint32_t page) const
{
    return settings_.pages.empty() || page == 0 ||
           std::ranges::any_of(settings_.pages, [page](const auto& range) { return range.holds(page); });
}

bool ReportedLog::open()
{
    if (!log_.open())
        why_ = name_ + ": " + log_.why();
    else if (!files_.why().empty())
        why_ = files_.why();
    else
    {
        kind_ = orvlog::replay::examine(log_.from_start());
        if (!kind_.is_log)
            why_ = name_ + ": not a log";
    }
    for (const command_line::NumberRange& range : settings_.pages)
        if (why_.empty() && range.first > kind_.faces)
            why_ = name_ + ": has no page " + std::to_string(range.first) + ", but " + std::to_string(kind_.faces) +
                   " in all";
    return why_.empty();
}

void ReportedLog::note(const std::string& line)
{
    if (notes_.size() < kMostNotes && noted_.insert(line).second)
        notes_.push_back(line.substr(0, kLongestNote));
}

std::string ReportedLog::title() const
{
    if (name_ == "-")
        return "standard input";
    return std::filesystem::path(name_).filename().string();
}

void ReportedLog::read_info()
{
    info_ = orvlog::reader::read_info(log_.from_start(), {});
    std::ifstream file(log_.path(), std::ios::binary);
    hash_ = file ? orvlog::inspect::sha256_text(file) : std::string();
}

bool ReportedLog::read_calls(Blocks& blocks)
{
    const uint64_t before = blocks.written();
    JobFiles files(files_);
    ReportObjects objects(blocks, files, before + kMostWithPictures);
    orvlog::inspect::CallListOptions options;
    options.most_calls = kMostCalls;
    options.most_bytes = before + kMostWithRecords;
    options.wanted = [this](uint32_t page) { return wants(page); };
    options.objects = [&objects](const orvlog::reader::Element& call, int64_t place)
    { return objects.of(call, place); };
    list_ = std::make_unique<orvlog::inspect::CallList>(blocks, std::move(options));
    orvlog::inspect::KeptText kept(log_.from_start());
    std::istream text(&kept);
    orvlog::reader::ElementReader elements(text);
    elements.split_nested = true;
    elements.on_comment = [this](const orvlog::reader::Comment& comment) { list_->warn(comment); };
    orvlog::reader::CallInFlight in_flight;
    Progress progress(log_.size());
    while (const orvlog::reader::Element* element = blocks.good() ? elements.next() : nullptr)
    {
        const uint64_t end = elements.events().text_bytes();
        in_flight.next(*element);
        list_->add(*element, kept.text(element->place.byte, end));
        kept.forget(end);
        progress.show(kept.log().bytes_used());
    }
    list_->finish();
    objects_ = objects.finish();
    if (info_.cut && !in_flight.text().empty())
        in_flight_ = list_->places().of(in_flight.place().byte);
    for (const std::string& file : files.missing())
        note("the file " + file);
    return elements.events().is_log();
}

void ReportedLog::draw_pages(Blocks& blocks)
{
    orvlog::inspect::PageOptions options;
    options.files = files_;
    options.wanted = [this](uint32_t page) { return wants(page); };
    options.steps = settings_.steps;
    options.most_bytes = blocks.written() + kMostWithSteps;
    options.complain = [this](const std::string& line) { note(line); };
    if (!settings_.pages.empty())
    {
        options.first_page = std::ranges::min(settings_.pages, {}, &command_line::NumberRange::first).first;
        options.last_page = std::ranges::max(settings_.pages, {}, &command_line::NumberRange::last).last;
    }
    Progress progress(log_.size());
    options.progress = [&progress](uint64_t done) { progress.show(done); };
    const auto open = [this]() -> std::shared_ptr<std::istream> { return log_.pass(); };
    pages_ = orvlog::inspect::record_pages(open, kind_, list_->places(), blocks, options);
}

bool ReportedLog::add(Blocks& blocks)
{
    read_info();
    if (!read_calls(blocks))
    {
        why_ = name_ + ": can't be read again";
        return false;
    }
    draw_pages(blocks);
    return true;
}

std::vector<std::string> ReportedLog::lacks() const
{
    std::vector<std::string> lines;
    if (pages_.outcome.missing > 0)
        lines.push_back("lacks data in " + std::to_string(pages_.outcome.missing) +
                        " places; what could be found is drawn");
    if (list_->places().count() < list_->calls() && settings_.pages.empty())
        lines.push_back(std::string("has ")
                            .append(std::to_string(list_->calls()))
                            .append(" calls, of which ")
                            .append(std::to_string(list_->places().count()))
                            .append(" are listed (--pages takes some of its pages)"));
    if (list_->records_left_out() > 0)
        lines.push_back("the records of " + std::to_string(list_->records_left_out()) +
                        " calls are left out, they would make the report too large (--pages takes some of its pages)");
    if (info_.cut)
        lines.emplace_back("is cut short; what it has is shown");
    if (info_.garbled)
        lines.emplace_back("its coded bytes are damaged; what could be read is shown");
    const uint64_t damage = info_.damage - std::min<uint64_t>(info_.damage, info_.cut || info_.garbled ? 1 : 0);
    if (damage > 0)
        lines.push_back("is damaged in " + std::to_string(damage) + " places; what could be read is shown");
    return lines;
}

std::string ReportedLog::figures_json() const
{
    std::string json = "[";
    const auto add = [&json](const char* title, const TextCounts& counts)
    {
        if (counts.all() > 0)
            json.append(json.size() > 1 ? ",{\"title\":\"" : "{\"title\":\"")
                .append(title)
                .append("\",\"rows\":")
                .append(counts_json(counts))
                .append("}");
    };
    add("calls", info_.calls);
    add("callbacks", info_.callbacks);
    add("images", info_.images);
    add("engines", info_.engines);
    add("glyphs", info_.glyphs);
    add("tickets", info_.tickets);
    return json.append("]");
}

std::string ReportedLog::head_json() const
{
    std::string json = "{";
    add_member(json, "name", text_json(title()));
    add_member(json, "bytes", std::to_string(info_.bytes));
    add_member(json, "sha256", hash_.empty() ? "null" : text_json(hash_));
    add_member(json, "form", text_json(info_.coded ? "coded" : info_.compressed ? "compressed" : "plain"));
    add_member(json, "cut", truth(info_.cut));
    add_member(json, "garbled", truth(info_.garbled));
    std::string damage("{\"count\":");
    damage.append(std::to_string(info_.damage)).append(",\"first\":[");
    for (const orvlog::reader::Damage& one : info_.first_damage)
        damage.append(damage.ends_with('[') ? "{\"line\":" : ",{\"line\":")
            .append(std::to_string(one.place.line))
            .append(",\"byte\":")
            .append(std::to_string(one.place.byte))
            .append(",\"text\":")
            .append(text_json(one.text.substr(0, kLongestNote)))
            .append("}");
    add_member(json, "damage", damage + "]}");
    std::string flight("null");
    if (info_.cut && !info_.in_flight.empty())
    {
        std::string text = info_.in_flight;
        text.append(info_.in_flight_id.empty() ? "" : " ").append(info_.in_flight_id);
        text.append(", line ").append(std::to_string(info_.in_flight_line));
        flight.assign("{\"text\":").append(text_json(text)).append(",\"call\":");
        flight.append(in_flight_ >= 0 ? std::to_string(in_flight_) : std::string("null")).append("}");
    }
    add_member(json, "in_flight", flight);
    std::string warnings("{\"count\":");
    warnings.append(std::to_string(info_.warnings.all())).append(",\"texts\":").append(counts_json(info_.warnings));
    add_member(json, "warnings", warnings.append("}"));
    return json;
}

std::string ReportedLog::pages_json() const
{
    std::string json = "[";
    for (const RecordedPage& page : pages_.pages)
    {
        std::string one = "{";
        double dpi_x = 0;
        double dpi_y = 0;
        for (const orvlog::reader::PageRun& run : info_.sizes)
            if (run.first <= page.page && page.page <= run.last)
            {
                dpi_x = run.dpi_x;
                dpi_y = run.dpi_y;
            }
        add_member(one, "page", std::to_string(page.page));
        add_member(one, "call", std::to_string(list_->places().of(page.call)));
        add_member(one, "width", std::to_string(page.width));
        add_member(one, "height", std::to_string(page.height));
        std::string dpi("[");
        add_member(one, "dpi", dpi.append(number_json(dpi_x)).append(",").append(number_json(dpi_y)).append("]"));
        add_member(one, "picture", page.picture);
        add_member(one, "note", page.note.empty() ? "null" : text_json(page.note));
        add_member(one, "steps", page.steps);
        add_member(one, "effects", page.effects);
        json.append(json.size() > 1 ? ",\n" : "").append(one).append("}");
    }
    return json.append("]");
}

std::string ReportedLog::json() const
{
    std::string json = head_json();
    std::string notes = "[";
    const auto add_note = [&notes](const std::string& line)
    { notes.append(notes.size() > 1 ? "," : "").append(text_json(line)); };
    for (const std::string& line : lacks())
        add_note(line);
    if (!settings_.pages.empty())
        add_note(
            std::string("has ").append(std::to_string(list_->pages())).append(" pages, of which some were asked for"));
    for (const std::string& line : notes_)
        add_note(line);
    add_member(json, "notes", notes + "]");
    std::string versions = "[";
    for (const auto& [name, value] : info_.versions)
        versions.append(versions.size() > 1 ? ",[" : "[")
            .append(text_json(name))
            .append(",")
            .append(text_json(value)) += ']';
    add_member(json, "versions", versions + "]");
    add_member(json, "figures", figures_json());
    std::string kinds = "[";
    for (const std::string_view kind : orvlog::reader::call_kinds())
        kinds.append(kinds.size() > 1 ? "," : "").append(text_json(kind));
    kinds.append(",\"other\"]");
    add_member(json, "kinds", kinds);
    add_member(json, "page_count", std::to_string(list_->pages()));
    add_member(json, "calls", list_->calls_json());
    add_member(json, "texts", list_->texts_json());
    add_member(json, "objects", objects_);
    add_member(json, "pages", pages_json());
    return json.append("}");
}

}  // namespace orvlog::tool
