#include "tools/diff/diff-listing.h"

#include "reader/look/call-address.h"
#include "tools/shared/look.h"

#include <algorithm>
#include <cstdio>

namespace orvlog::tool
{

namespace
{

using nlohmann::ordered_json;
using orvlog::inspect::CallPlace;
using orvlog::inspect::Difference;
using orvlog::inspect::Step;
using orvlog::inspect::StepKind;
using orvlog::reader::Element;

constexpr size_t kMostOfACall = 10;
constexpr size_t kLongestValue = 160;

std::string value_text(const std::optional<std::string>& value)
{
    if (!value)
        return "nothing";
    std::string text = printable(std::string_view(*value).substr(0, kLongestValue));
    if (value->size() > kLongestValue)
        text += "...";
    if (!text.empty() && text.find(' ') == std::string::npos)
        return text;
    std::string quoted(1, '"');
    quoted += text;
    quoted += '"';
    return quoted;
}

std::string place_text(const CallPlace& place)
{
    return place.id ? std::to_string(*place.id) : "line:" + std::to_string(place.line);
}

ordered_json value_json(const std::optional<std::string>& value)
{
    return value ? ordered_json(*value) : ordered_json(nullptr);
}

ordered_json difference_json(const Difference& difference)
{
    ordered_json object;
    object["path"] = difference.path;
    object["attribute"] = difference.attribute.empty() ? ordered_json(nullptr) : ordered_json(difference.attribute);
    object["a"] = value_json(difference.a);
    object["b"] = value_json(difference.b);
    if (difference.count > 0)
    {
        object["at"] = difference.at;
        object["count"] = difference.count;
    }
    return object;
}

const char* kind_text(const Step& step)
{
    if (step.moved)
        return "moved";
    switch (step.kind)
    {
    case StepKind::same:
        return "same";
    case StepKind::changed:
        return "changed";
    case StepKind::missing:
        return "missing";
    case StepKind::added:
        return "added";
    }
    return "";
}

}  // namespace

std::string difference_text(const Difference& difference)
{
    std::string text = printable(difference.path);
    if (!difference.attribute.empty())
    {
        if (!text.empty())
            text += ' ';
        text += printable(difference.attribute);
    }
    if (difference.attribute.empty() && difference.count == 0)
        return text + (difference.a ? ": missing" : ": added");
    if (difference.count > 0)
        text.append(" at ").append(std::to_string(difference.at));
    text.append(": ").append(value_text(difference.a)).append(" -> ").append(value_text(difference.b));
    if (difference.count > 1)
        text.append(", ").append(std::to_string(difference.count)).append(" differ");
    return text;
}

DiffListing::Call DiffListing::look(const Element* call, orvlog::reader::CallSummaries& summaries)
{
    Call seen;
    if (call == nullptr)
        return seen;
    seen.address = orvlog::reader::call_address_text(*call);
    seen.kind = call->name.starts_with("ORV_") ? call->name.substr(4) : call->name;
    if (orvlog::reader::is_call_name(call->name))
        seen.page = summaries.next(*call).page;
    return seen;
}

// False for a step that has been told already: the other end of a move.
bool DiffListing::count(const Step& step)
{
    if (step.moved)
    {
        counts_.moved += step.kind == StepKind::missing ? 1 : 0;
        return step.kind == StepKind::missing;
    }
    counts_.same += step.kind == StepKind::same ? 1 : 0;
    counts_.changed += step.kind == StepKind::changed ? 1 : 0;
    counts_.missing += step.kind == StepKind::missing ? 1 : 0;
    counts_.added += step.kind == StepKind::added ? 1 : 0;
    return true;
}

bool DiffListing::add(const Step& step)
{
    const Call a = look(step.a, calls_a_);
    Call b = look(step.b, calls_b_);
    if (!count(step))
        return true;
    if (step.kind == StepKind::same)
    {
        if (options_.json || options_.context == 0)
            return true;
        char line[200];
        std::snprintf(line, sizeof line, "%-12s %-12s %5u %-23s same\n", a.address.c_str(), b.address.c_str(), a.page,
                      printable(a.kind.substr(0, 60)).c_str());
        return write_context(line);
    }
    if (step.moved)
        b.address = place_text(*step.moved);
    if (options_.json)
        return write_json(step, a, b);
    for (const std::string& line : before_)
        put(line);
    before_.clear();
    behind_ = options_.context;
    return write(step, a, b);
}

bool DiffListing::write_context(std::string line)
{
    if (behind_ > 0)
    {
        --behind_;
        return put(line);
    }
    before_.push_back(std::move(line));
    if (before_.size() > options_.context)
        before_.pop_front();
    return true;
}

bool DiffListing::write_line(const Call& a, const Call& b, const std::string& what)
{
    const Call& seen = a.kind.empty() ? b : a;
    char line[200];
    std::snprintf(line, sizeof line, "%-12s %-12s %5s %-23s ", a.address.empty() ? "-" : a.address.c_str(),
                  b.address.empty() ? "-" : b.address.c_str(), seen.page > 0 ? std::to_string(seen.page).c_str() : "-",
                  printable(seen.kind.substr(0, 60)).c_str());
    return put(line + what + "\n");
}

bool DiffListing::write(const Step& step, const Call& a, const Call& b)
{
    if (step.kind != StepKind::changed)
        return write_line(a, b, std::string(kind_text(step)) + (step.twice ? ", the same as the call beside it" : ""));
    const size_t count = options_.all ? step.differences.size() : std::min(step.differences.size(), kMostOfACall);
    bool good = true;
    for (size_t i = 0; i < count; ++i)
        good = write_line(a, b, difference_text(step.differences[i])) && good;
    if (count < step.differences.size())
        good = write_line(a, b, "and " + std::to_string(step.differences.size() - count) + " further differences");
    return good;
}

bool DiffListing::write_json(const Step& step, const Call& a, const Call& b)
{
    const auto address = [](const std::string& text)
    { return text.empty() ? ordered_json(nullptr) : ordered_json(text); };
    const Call& seen = a.kind.empty() ? b : a;
    ordered_json object;
    object["what"] = kind_text(step);
    object["a"] = address(a.address);
    object["b"] = address(b.address);
    object["page"] = seen.page > 0 ? ordered_json(seen.page) : ordered_json(nullptr);
    object["kind"] = seen.kind;
    if (step.twice)
        object["twice"] = true;
    if (step.kind == StepKind::changed)
    {
        object["differences"] = ordered_json::array();
        for (const Difference& one : step.differences)
            object["differences"].push_back(difference_json(one));
    }
    const bool first = first_;
    first_ = false;
    return put((first ? "{\"calls\": [\n" : ",\n") + json_text(object));
}

void DiffListing::add_roots(const std::vector<Difference>& roots)
{
    roots_differ_ = !roots.empty();
    if (options_.json)
        return;
    for (const Difference& one : roots)
        put("ORV " + difference_text(one) + "\n");
}

void DiffListing::finish(const ordered_json* pages)
{
    if (options_.json)
    {
        ordered_json object;
        object["same"] = counts_.same;
        object["changed"] = counts_.changed;
        object["missing"] = counts_.missing;
        object["added"] = counts_.added;
        object["moved"] = counts_.moved;
        if (pages != nullptr)
            object["pages"] = *pages;
        object["equal"] = !differs() && (pages == nullptr || pages->empty());
        std::string rest = json_text(object);
        rest.erase(0, 1);
        put(first_ ? "{\"calls\": [],\n" : "\n],\n");
        put(rest);
        put("\n");
        return;
    }
    std::string line = std::to_string(counts_.same) + " calls are the same";
    const auto tell = [&line](uint64_t count, const char* what)
    {
        if (count > 0)
            line.append(", ").append(std::to_string(count)).append(what);
    };
    tell(counts_.changed, " changed");
    tell(counts_.missing, " missing");
    tell(counts_.added, " added");
    tell(counts_.moved, " moved");
    if (!counts_.any())
        line += roots_differ_ ? ", the logs' versions or modes differ" : ", nothing differs";
    put(line + "\n");
}

}  // namespace orvlog::tool
