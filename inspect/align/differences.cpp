#include "inspect/align/differences.h"

#include "reader/text/character-set.h"
#include "reader/tree/values.h"

#include <algorithm>
#include <cmath>
#include <map>
#include <utility>

namespace orvlog::inspect
{

namespace
{

using reader::Children;
using reader::Element;

constexpr size_t kLongestPiece = 64;   // bytes or characters of data that are shown
constexpr size_t kMostFound = 100000;  // differences of one call

constexpr reader::CharacterSet kBetweenWords(" \n");

std::string_view next_word(std::string_view& text)
{
    text.remove_prefix(kBetweenWords.first_not_in(text));
    const std::string_view word = text.substr(0, kBetweenWords.first_in(text));
    text.remove_prefix(word.size());
    return word;
}

std::string hexadecimal(std::span<const uint8_t> bytes)
{
    constexpr char kDigits[] = "0123456789abcdef";
    std::string text;
    for (const uint8_t byte : bytes.first(std::min(bytes.size(), kLongestPiece / 4)))
    {
        if (!text.empty())
            text += ' ';
        text += kDigits[byte >> 4];
        text += kDigits[byte & 15];
    }
    return text;
}

// The children by name, each name with the place among its like where there are several.
std::vector<std::pair<const Element*, std::string>> steps_of(const Element& element)
{
    std::map<std::string_view, uint64_t> count;
    for (const Element& child : Children(element))
        ++count[child.name];
    std::map<std::string_view, uint64_t> seen;
    std::vector<std::pair<const Element*, std::string>> steps;
    for (const Element& child : Children(element))
    {
        std::string step(child.name);
        if (count[child.name] > 1)
        {
            step += '[';
            step += std::to_string(++seen[child.name]);
            step += ']';
        }
        steps.emplace_back(&child, std::move(step));
    }
    return steps;
}

bool same_order(const Element& a, const Element& b)
{
    const Element* one = a.first;
    const Element* other = b.first;
    for (; one != nullptr && other != nullptr; one = one->next, other = other->next)
        if (one->name != other->name)
            return false;
    return one == nullptr && other == nullptr;
}

}  // namespace

bool CallComparer::same_measures(std::string_view a, std::string_view b) const
{
    if (a == b || tolerance_ <= 0)
        return a == b;
    while (true)
    {
        const std::string_view one = next_word(a);
        const std::string_view other = next_word(b);
        if (one.empty() || other.empty())
            return one.empty() && other.empty();
        const double x = reader::to_double(one);
        const double y = reader::to_double(other);
        const double room = tolerance_ * std::max({1.0, std::fabs(x), std::fabs(y)});
        if (one != other && !(std::fabs(x - y) <= room))
            return false;
    }
}

bool CallComparer::same_value(std::string_view element, std::string_view attribute, std::string_view a,
                              std::string_view b, bool follow_names)
{
    const NameSpace space = name_space_of(element, attribute);
    if (space == NameSpace::none)
        return is_measure(attribute) ? same_measures(a, b) : a == b;
    const bool known = space == NameSpace::counter || space == NameSpace::ticket || !follow_names;
    return known || names_.agree(space, a, b);
}

void CallComparer::compare_attributes(const Element& a, const Element& b)
{
    const auto add = [this](std::string_view name, std::optional<std::string> one, std::optional<std::string> other) {
        found_.push_back({path_, std::string(name), std::move(one), std::move(other), 0, 0});
    };
    for (size_t i = 0; i < a.attributes.size(); ++i)
    {
        const reader::Attribute& one = a.attributes[i];
        const bool same_place = i < b.attributes.size() && b.attributes[i].name == one.name;
        const reader::Attribute* other = same_place ? &b.attributes[i] : b.find(one.name);
        if (other == nullptr)
            add(one.name, std::string(one.value), std::nullopt);
        else if (!same_value(a.name, one.name, one.value, other->value, true))
            add(one.name, std::string(one.value), std::string(other->value));
    }
    for (size_t i = 0; i < b.attributes.size(); ++i)
    {
        const reader::Attribute& other = b.attributes[i];
        const bool same_place = i < a.attributes.size() && a.attributes[i].name == other.name;
        if (!same_place && !a.has(other.name))
            add(other.name, std::nullopt, std::string(other.value));
    }
}

void CallComparer::compare_bytes(const Element& a, const Element& b)
{
    if (std::ranges::equal(a.bytes, b.bytes))
        return;
    const size_t both = std::min(a.bytes.size(), b.bytes.size());
    size_t first = both;
    uint64_t count = std::max(a.bytes.size(), b.bytes.size()) - both;
    for (size_t i = both; i-- > 0;)
    {
        if (a.bytes[i] == b.bytes[i])
            continue;
        first = i;
        ++count;
    }
    found_.push_back(
        {path_, "", hexadecimal(a.bytes.subspan(first)), hexadecimal(b.bytes.subspan(first)), first, count});
}

void CallComparer::compare_rows(const Element& a, const Element& b)
{
    const bool measures = a.name == "BufferFloat";
    if (measures ? same_measures(a.rows, b.rows) : a.rows == b.rows)
        return;
    std::string_view rest_a = a.rows;
    std::string_view rest_b = b.rows;
    Difference found{path_, "", std::string(), std::string(), 0, 0};
    const auto next_line = [](std::string_view& text)
    {
        const std::string_view line = text.substr(0, text.find('\n'));
        text.remove_prefix(std::min(line.size() + 1, text.size()));
        return line;
    };
    for (uint64_t line = 0; !rest_a.empty() || !rest_b.empty(); ++line)
    {
        const std::string_view one = next_line(rest_a);
        const std::string_view other = next_line(rest_b);
        if (measures ? same_measures(one, other) : one == other)
            continue;
        if (found.count++ > 0)
            continue;
        found.at = line;
        const auto shown = [](std::string_view text)
        {
            text.remove_prefix(std::min(text.find_first_not_of(" \t"), text.size()));
            return std::string(text.substr(0, kLongestPiece));
        };
        found.a = shown(one);
        found.b = shown(other);
    }
    found_.push_back(std::move(found));
}

// A log has the text of a ticket only once: in what tickets differ is told where both have it. False if there is
// nothing in it to look at.
bool CallComparer::compare_tickets(const Element& a, const Element& b)
{
    const uint64_t one = tickets_a_.text_hash(a);
    const uint64_t other = tickets_b_.text_hash(b);
    const bool known = names_.agree(NameSpace::ticket, a.value("id"), b.value("id"));
    const bool texts = a.first != nullptr && b.first != nullptr;
    if (one == other || (known && !texts))
        return false;
    if (texts)
        return true;
    found_.push_back({path_, "id", std::string(a.value("id")), std::string(b.value("id")), 0, 0});
    return false;
}

// Whether the elements are the same, names of things left aside.
bool CallComparer::is_same(const Element& a, const Element& b) const
{
    if (a.name != b.name || a.attributes.size() != b.attributes.size() || !std::ranges::equal(a.bytes, b.bytes) ||
        a.rows != b.rows)
        return false;
    for (size_t i = 0; i < a.attributes.size(); ++i)
    {
        const reader::Attribute& one = a.attributes[i];
        const reader::Attribute& other = b.attributes[i];
        if (one.name != other.name)
            return false;
        const bool value = name_space_of(a.name, one.name) == NameSpace::none;
        if (value && !(is_measure(one.name) ? same_measures(one.value, other.value) : one.value == other.value))
            return false;
    }
    const Element* x = a.first;
    const Element* y = b.first;
    for (; x != nullptr && y != nullptr; x = x->next, y = y->next)
        if (!is_same(*x, *y))
            return false;
    return x == nullptr && y == nullptr;
}

void CallComparer::compare_child(const Element& a, const Element& b, const std::string& step)
{
    const size_t before = path_.size();
    if (!path_.empty())
        path_ += '/';
    path_ += step;
    compare_elements(a, b);
    path_.resize(before);
}

// Children at the beginning and at the end that are the same are left aside; of the others those belong together that
// have the same name, in their order.
void CallComparer::compare_children(const Element& a, const Element& b)
{
    const auto steps_a = steps_of(a);
    if (same_order(a, b))
    {
        const Element* other = b.first;
        for (const auto& [one, step] : steps_a)
        {
            compare_child(*one, *other, step);
            other = other->next;
        }
        return;
    }
    const auto steps_b = steps_of(b);
    const auto only = [this](const std::string& step, bool in_a)
    {
        std::string path = path_;
        if (!path.empty())
            path += '/';
        path += step;
        const std::optional<std::string> there("");
        found_.push_back({path, "", in_a ? there : std::nullopt, in_a ? std::nullopt : there, 0, 0});
    };
    size_t end_a = steps_a.size();
    size_t end_b = steps_b.size();
    while (end_a > 0 && end_b > 0 && is_same(*steps_a[end_a - 1].first, *steps_b[end_b - 1].first))
    {
        --end_a;
        --end_b;
    }
    size_t i = 0;
    size_t j = 0;
    const auto name_ahead = [](const auto& steps, size_t from, size_t end, std::string_view name)
    {
        return std::any_of(steps.begin() + static_cast<std::ptrdiff_t>(from),
                           steps.begin() + static_cast<std::ptrdiff_t>(std::min(end, from + 64)),
                           [name](const auto& step) { return step.first->name == name; });
    };
    while (i < end_a && j < end_b)
    {
        const Element& one = *steps_a[i].first;
        const Element& other = *steps_b[j].first;
        if (one.name == other.name)
        {
            compare_child(one, other, steps_a[i].second);
            ++i;
            ++j;
        }
        else if (name_ahead(steps_b, j, end_b, one.name) && !name_ahead(steps_a, i, end_a, other.name))
            only(steps_b[j++].second, false);
        else
            only(steps_a[i++].second, true);
    }
    for (; i < end_a; ++i)
        only(steps_a[i].second, true);
    for (; j < end_b; ++j)
        only(steps_b[j].second, false);
    for (; end_a < steps_a.size(); ++end_a, ++end_b)
        compare_child(*steps_a[end_a].first, *steps_b[end_b].first, steps_a[end_a].second);
}

void CallComparer::compare_elements(const Element& a, const Element& b)
{
    if (found_.size() >= kMostFound)
        return;
    compare_attributes(a, b);
    if (a.name == "GCM_ColorTicket" && !compare_tickets(a, b))
        return;
    compare_bytes(a, b);
    compare_rows(a, b);
    compare_children(a, b);
}

std::vector<Difference> CallComparer::compare(const Element& a, const Element& b)
{
    names_.start_call();
    path_.clear();
    found_.clear();
    compare_elements(a, b);
    return std::move(found_);
}

void CallComparer::note_tickets(const Element& call, TicketTexts& tickets)
{
    for (const Element& child : Children(call))
        if (child.name == "GCM_ColorTicket")
            tickets.text_hash(child);
}

}  // namespace orvlog::inspect
