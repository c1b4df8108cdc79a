#include "reader/tree/element.h"

#include <algorithm>
#include <cstring>

namespace orvlog::reader
{

namespace
{

constexpr size_t kBlock = size_t{1} << 18;
constexpr size_t kHead = size_t{1} << 16;
constexpr std::string_view kWarning = "ORVLOG: WARNING: ";

int hex_digit(char c)
{
    if (c >= '0' && c <= '9')
        return c - '0';
    if (c >= 'a' && c <= 'f')
        return c - 'a' + 10;
    return -1;
}

}  // namespace

void* Arena::take(size_t size)
{
    constexpr size_t kAlignment = alignof(std::max_align_t);
    size = (std::max<size_t>(size, 1) + kAlignment - 1) / kAlignment * kAlignment;
    if (blocks_.empty() || blocks_.back().size - used_ < size)
    {
        const size_t block = std::max(size, kBlock);
        blocks_.push_back({std::make_unique_for_overwrite<std::byte[]>(block), block});
        used_ = 0;
    }
    std::byte* taken = blocks_.back().bytes.get() + used_;
    used_ += size;
    size_ += size;
    std::memset(taken, 0, size);
    return taken;
}

std::string_view Arena::copy(std::string_view text)
{
    if (text.empty())
        return {};
    auto* bytes = static_cast<char*>(take(text.size()));
    std::memcpy(bytes, text.data(), text.size());
    return {bytes, text.size()};
}

void Arena::clear()
{
    if (!blocks_.empty() && blocks_.front().size == kBlock)
        blocks_.resize(1);
    else
        blocks_.clear();
    used_ = 0;
    size_ = 0;
}

const Attribute* Element::find(std::string_view attribute) const
{
    for (const Attribute& one : attributes)
        if (one.name == attribute)
            return &one;
    return nullptr;
}

std::string_view Element::value(std::string_view attribute) const
{
    const Attribute* found = find(attribute);
    return found != nullptr ? found->value : std::string_view();
}

const Element* Element::child(std::string_view child_name) const
{
    for (const Element* one = first; one != nullptr; one = one->next)
        if (one->name == child_name)
            return one;
    return nullptr;
}

const Element* Element::member(std::string_view member_name) const
{
    for (const Element* one = first; one != nullptr; one = one->next)
    {
        const std::string_view full = one->name;
        if (full.size() == name.size() + 1 + member_name.size() && full.starts_with(name) && full[name.size()] == '.' &&
            full.ends_with(member_name))
            return one;
    }
    return nullptr;
}

bool is_call_name(std::string_view name)
{
    return name.size() > 4 && name.starts_with("ORV_") && name[4] >= 'a' && name[4] <= 'z' &&
           name.find('.') == std::string_view::npos;
}

ElementReader::ElementReader(std::istream& source, LogForm form, Data data)
    : events_(source, form), form_(form), data_(data)
{
}

const Element* ElementReader::next()
{
    arena_.clear();
    depth_ = 0;
    if (nested_)
        open(*nested_);
    nested_.reset();
    for (Event event; events_.next(event);)
    {
        switch (event.kind)
        {
        case EventKind::open:
            if (const Element* outer = split(event); outer != nullptr)
                return outer;
            open(event);
            break;
        case EventKind::close:
            if (close(event))
                return levels_[0].element;
            break;
        case EventKind::row:
            row(event);
            break;
        case EventKind::comment:
        case EventKind::damage:
            report(event);
            break;
        }
    }
    return nullptr;
}

Element* ElementReader::make_element(const Event& event, Arena& arena)
{
    auto* element = new (arena.take(sizeof(Element))) Element;
    element->name = arena.copy(event.name);
    element->place = event.place;
    element->indent = event.indent;
    const std::span<Attribute> attributes = arena.make_array<Attribute>(event.attributes.size());
    for (size_t i = 0; i < attributes.size(); ++i)
        attributes[i] = {arena.copy(event.attributes[i].name), arena.copy(event.attributes[i].value)};
    element->attributes = attributes;
    return element;
}

void ElementReader::open(const Event& event)
{
    if (form_ == LogForm::log && !in_root_)
    {
        in_root_ = true;
        root_ = *make_element(event, root_arena_);
        return;
    }
    if (levels_.size() == depth_)
        levels_.emplace_back();
    Level& level = levels_[depth_];
    level.element = make_element(event, arena_);
    level.last = nullptr;
    level.data.clear();
    if (depth_ > 0)
    {
        Level& parent = levels_[depth_ - 1];
        (parent.last != nullptr ? parent.last->next : parent.element->first) = level.element;
        parent.last = level.element;
    }
    if (on_open)
        on_open(*level.element, depth_);
    ++depth_;
}

// The present call if `event` begins a call in it.
const Element* ElementReader::split(const Event& event)
{
    if (!split_nested || depth_ == 0 || !is_call_name(event.name))
        return nullptr;
    nested_ = event;
    Event end;
    end.implied = true;
    while (depth_ > 0)
        close(end);
    return levels_[0].element;
}

// True at the end of an element that stands in no other one.
bool ElementReader::close(const Event& event)
{
    if (depth_ == 0)
        return false;
    Level& level = levels_[--depth_];
    level.element->implied_end = event.implied;
    level.element->end_byte = event.place.byte;
    if (!level.data.empty())
    {
        auto* bytes = static_cast<uint8_t*>(arena_.take(level.data.size()));
        std::memcpy(bytes, level.data.data(), level.data.size());
        if (level.element->name == "BufferUInt8")
            level.element->bytes = {bytes, level.data.size()};
        else
            level.element->rows = {reinterpret_cast<const char*>(bytes), level.data.size()};
        if (level.data.capacity() > kBlock)
            level.data = {};
    }
    return depth_ == 0;
}

void ElementReader::row(const Event& event)
{
    if (depth_ == 0)
        return;
    Level& level = levels_[depth_ - 1];
    if (on_row)
        on_row(*level.element, event.text);
    std::vector<uint8_t>& data = level.data;
    if (level.element->name != "BufferUInt8")
    {
        level.element->data_size += event.text.size() + 1;
        if (data_ == Data::keep || (data_ == Data::heads && data.size() < kHead))
        {
            data.insert(data.end(), event.text.begin(), event.text.end());
            data.push_back('\n');
        }
        return;
    }
    const size_t before = data.size();
    const size_t most = (event.text.size() + 1) / 3;
    if (data_ != Data::keep)
    {
        level.element->data_size += most;
        return;
    }
    if (data.capacity() < before + most)
        data.reserve(2 * data.capacity() + most);
    for (size_t at = 0; at + 1 < event.text.size(); at += 3)
    {
        const int high = hex_digit(event.text[at]);
        const int low = hex_digit(event.text[at + 1]);
        if (high < 0 || low < 0)
            break;
        data.push_back(static_cast<uint8_t>(high << 4 | low));
    }
    level.element->data_size += data.size() - before;
}

void ElementReader::report(const Event& event)
{
    if (event.kind == EventKind::damage && on_damage)
        on_damage({event.place, std::string(event.text)});
    if (event.kind == EventKind::comment && on_comment)
        on_comment({event.place, std::string(event.text), event.text.starts_with(kWarning), depth_ > 0});
}

}  // namespace orvlog::reader
