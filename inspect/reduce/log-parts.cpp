#include "inspect/reduce/log-parts.h"

#include "inspect/reduce/keep-plan.h"
#include "inspect/reduce/log-scan.h"
#include "inspect/reduce/trimmed-text.h"
#include "reader/tree/element.h"
#include "reader/tree/values.h"

#include <algorithm>
#include <functional>
#include <iterator>
#include <map>
#include <sstream>

namespace orvlog::inspect
{

namespace
{

using reader::Event;
using reader::EventKind;

// An element that is open, and where its tag stands.
struct Open
{
    std::string name;
    size_t begin = 0;
    size_t tag_end = 0;
};

using OnElement = std::function<void(const std::vector<Open>& open, size_t end)>;
using OnRow = std::function<void(const std::vector<Open>& open, size_t begin, std::string_view row)>;

// Tells of each element at its end, when it is the last of those that are open.
void walk(const std::string& log, const OnElement& on_element, const OnRow& on_row = {})
{
    std::istringstream source(log);
    LogScan scan(source);
    std::vector<Open> open;
    for (Event event; scan.next(event);)
    {
        const auto begin = static_cast<size_t>(scan.begin());
        const auto end = static_cast<size_t>(scan.end());
        if (event.kind == EventKind::open)
            open.push_back({std::string(event.name), begin, end});
        else if (event.kind == EventKind::row && on_row)
            on_row(open, begin, event.text);
        if (event.kind != EventKind::close || open.empty())
            continue;
        on_element(open, end);
        open.pop_back();
    }
}

Counter counter_in(const std::string& log, const Open& tag, std::string_view name)
{
    const std::string sought = std::string(" ").append(name).append("=\"");
    const size_t found = log.find(sought, tag.begin);
    if (found == std::string::npos || found >= tag.tag_end)
        return {};
    return {found + sought.size(), log.find('"', found + sought.size())};
}

bool is_clip(std::string_view name)
{
    return name.ends_with(".clip") || name.ends_with(".group_clip");
}

bool is_image(const std::vector<Open>& open)
{
    const auto holds = [](const Open& one)
    { return one.name == "img_buf" || one.name == "attr_buf" || one.name == "imp_DirectImageData"; };
    return !open.empty() && open.back().name == "BufferUInt8" && std::any_of(open.begin(), open.end(), holds);
}

}  // namespace

// A member goes whole, or one of its lists.
std::vector<Part> find_clips(const std::string& log)
{
    std::vector<Part> parts;
    std::vector<Part> lists;
    walk(log,
         [&](const std::vector<Open>& open, size_t end)
         {
             const Open& one = open.back();
             if (open.size() > 1 && one.name == "GSH_ShapeList" && is_clip(open[open.size() - 2].name))
                 lists.push_back({{{one.begin, end, ""}}, {}});
             if (!is_clip(one.name))
                 return;
             // The last list can't go without its member.
             parts.push_back({{{one.begin, end, ""}}, {}});
             if (lists.size() > 1)
                 parts.insert(parts.end(), lists.begin(), std::prev(lists.end()));
             lists.clear();
         });
    return parts;
}

std::vector<Part> find_edges(const std::string& log)
{
    struct Path
    {
        Counter count;
        std::vector<Cut> points;
        std::vector<Cut> edges;
    };
    std::vector<Part> parts;
    Path path;
    walk(log,
         [&](const std::vector<Open>& open, size_t end)
         {
             const Open& one = open.back();
             if (one.name == "GPA_Path")
                 path.count = counter_in(log, one, "pa_NumEdges");
             else if (one.name == "GGO_Point")
                 path.points.push_back({one.begin, end, ""});
             else if (one.name == "GPA_EdgePointer")
                 path.edges.push_back({one.begin, end, ""});
             if (one.name != "GPA_PathPointer")
                 return;
             const size_t count = path.points.size() == path.edges.size() && path.count.end > 0 ? path.edges.size() : 0;
             for (size_t i = 0; i < count; ++i)
                 parts.push_back({{path.points[i], path.edges[i]}, {path.count}});
             path = {};
         });
    return parts;
}

std::vector<Part> find_segments(const std::string& log)
{
    std::vector<Part> parts;
    Counter count;
    walk(log,
         [&](const std::vector<Open>& open, size_t end)
         {
             const Open& one = open.back();
             if (one.name == "GPA_Edge")
                 count = counter_in(log, one, "ed_SegmentCount");
             const bool segment = open.size() > 1 && (open[open.size() - 2].name.ends_with("Segment") ||
                                                      open[open.size() - 2].name.ends_with(".sc_Field"));
             if (segment && count.end > 0)
                 parts.push_back({{{one.begin, end, ""}}, {count}});
         });
    return parts;
}

// Rows of bytes that may be zero, some of them together.
std::vector<Part> find_image_areas(const std::string& log)
{
    constexpr size_t kMost = 256;
    std::vector<Cut> rows;
    walk(
        log, [](const std::vector<Open>&, size_t) {},
        [&](const std::vector<Open>& open, size_t begin, std::string_view row)
        {
            if (!is_image(open))
                return;
            Cut cut{begin, begin + row.size(), std::string(row)};
            for (char& c : cut.stands)
                c = c == ' ' ? ' ' : '0';
            if (cut.stands != row)
                rows.push_back(std::move(cut));
        });
    const size_t together = (rows.size() + kMost - 1) / kMost;
    std::vector<Part> parts;
    for (size_t i = 0; i < rows.size(); ++i)
    {
        if (i % together == 0)
            parts.emplace_back();
        parts.back().cuts.push_back(std::move(rows[i]));
    }
    return parts;
}

std::string without_parts(const std::string& log, const std::vector<Part>& parts, const std::vector<bool>& left_out)
{
    std::vector<Cut> cuts;
    std::map<size_t, std::pair<size_t, uint64_t>> counters;  // by where they begin: where they end, how many less
    for (size_t i = 0; i < parts.size(); ++i)
    {
        if (!left_out[i])
            continue;
        cuts.insert(cuts.end(), parts[i].cuts.begin(), parts[i].cuts.end());
        for (const Counter& counter : parts[i].counters)
        {
            counters[counter.begin].first = counter.end;
            ++counters[counter.begin].second;
        }
    }
    for (const auto& [begin, less] : counters)
    {
        const uint64_t number = reader::to_uint(std::string_view(log).substr(begin, less.first - begin));
        cuts.push_back({begin, less.first, std::to_string(number - std::min(number, less.second))});
    }
    // Of two that overlap the outer one comes first.
    std::stable_sort(cuts.begin(), cuts.end(),
                     [](const Cut& a, const Cut& b) { return a.begin != b.begin ? a.begin < b.begin : a.end > b.end; });
    std::string result;
    size_t at = 0;
    for (const Cut& cut : cuts)
    {
        if (cut.begin < at)
            continue;
        result.append(log, at, cut.begin - at).append(cut.stands);
        at = cut.end;
    }
    return result.append(log, at);
}

std::vector<CallPart> find_calls(const std::string& log)
{
    std::vector<CallPart> calls;
    std::map<uint64_t, std::vector<size_t>> groups;  // open ones, by drawing
    KeepPlan pages(
        [&calls](const CallTag& tag)
        {
            const CallKind kind = call_kind(tag.name);
            const bool is_end = kind == CallKind::drawing_end || kind == CallKind::group_finish ||
                                kind == CallKind::document_finish || kind == CallKind::resource_destroy;
            calls.push_back({tag.ordinal, tag.page, is_end, {}});
            return false;
        },
        false);
    std::istringstream source(log);
    LogScan scan(source);
    for (Event event; scan.next(event);)
    {
        pages.event(event, scan.text());
        if (event.kind != EventKind::open || !reader::is_call_name(event.name))
            continue;
        const CallKind kind = call_kind(event.name);
        std::vector<size_t>& open = groups[reader::to_uint(attribute(event, "drawing_context"))];
        if (kind == CallKind::group_start)
        {
            calls.back().group.push_back(calls.back().ordinal);
            open.push_back(calls.size() - 1);
        }
        else if (kind == CallKind::group_finish && !open.empty())
        {
            calls[open.back()].group.push_back(calls.back().ordinal);
            if (!reader::to_bool(attribute(event, "replay_group")))
                open.pop_back();
        }
        else if (kind == CallKind::drawing_end)
            open.clear();
    }
    return calls;
}

std::string with_calls(const std::string& log, const std::vector<bool>& wanted, const std::vector<uint64_t>& dropped)
{
    KeepPlan plan([&wanted](const CallTag& tag) { return tag.ordinal < wanted.size() && wanted[tag.ordinal]; }, false);
    std::istringstream first(log);
    LogScan scan(first);
    for (Event event; scan.next(event);)
        plan.event(event, scan.text());
    plan.finish();
    for (const uint64_t ordinal : dropped)
        plan.leave_out(ordinal);
    std::istringstream second(log);
    TrimOptions options;
    options.plan = &plan;
    TrimmedText trimmed(second, std::move(options));
    return {std::istreambuf_iterator<char>(&trimmed), std::istreambuf_iterator<char>()};
}

}  // namespace orvlog::inspect
