#include "clients/replay/script.h"

#include "reader/tree/values.h"

#include <algorithm>
#include <charconv>
#include <optional>
#include <utility>

namespace orvlog::replay
{

namespace
{

using reader::Children;
using reader::Element;

// Records that hold no callbacks.
bool is_closed_record(const Element& element)
{
    return element.name == "GSH_ShapePointer" || element.name.starts_with("GOP_Operand") ||
           element.name.starts_with("GFI_") || element.name == "GCM_ColorTicket";
}

// The last part of "orvlog-S-async-image-N.tmp".
std::optional<uint32_t> number_of_log(std::string_view name)
{
    const size_t end = name.rfind(".tmp");
    const size_t begin = end != std::string_view::npos ? name.find_last_not_of("0123456789", end - 1) + 1 : 0;
    uint32_t number = 0;
    if (end == std::string_view::npos ||
        std::from_chars(name.data() + begin, name.data() + end, number).ec != std::errc{})
        return std::nullopt;
    return number;
}

// Whether it is, or has in it, a prepare that gave an image that number.
bool gives_number(const Element& element, uint32_t number, uint64_t indent)
{
    const bool prepare = element.name == "GOP_ImagePrepareFn";
    if (prepare && element.indent == indent)
        if (const Element* left = element.child("GOP_OperandImagePointer"); left != nullptr)
            return reader::read_uint(*left, "Id") == number;
    for (const Element& child : Children(element))
        if (!prepare && gives_number(child, number, indent))
            return true;
    return false;
}

}  // namespace

bool is_image_callback(const Element& element)
{
    return element.name.starts_with("GOP_Image") && element.name.ends_with("Fn");
}

bool is_font_callback(const Element& element)
{
    return element.name.starts_with("GFI_") && element.name.ends_with("Fn");
}

// What stands in a member is the logger's own.
void Script::gather(const Element& element, bool own, std::vector<Item>& items)
{
    for (const Element& child : Children(element))
        if (is_image_callback(child) || is_font_callback(child))
            items.push_back({Kind::callback, own, child.place.byte, &child, ""});
        else if (reader::is_call_name(child.name))
            items.push_back({Kind::call, own, child.place.byte, &child, ""});
        else if (!is_closed_record(child))
            gather(child, own || child.name.find('.') != std::string_view::npos, items);
}

// Each before what follows it; those in a call within belong to that one.
void Script::add_comments(Frame& frame)
{
    for (const reader::Comment& comment : frame.comments)
    {
        if (comment.warning || comment.place.byte < frame.call->place.byte)
            continue;
        const auto behind = std::ranges::upper_bound(frame.items, comment.place.byte, {}, &Item::byte);
        const Item* before = behind != frame.items.begin() ? &*std::prev(behind) : nullptr;
        if (before != nullptr && before->kind == Kind::call && comment.place.byte < before->element->end_byte)
            continue;
        frame.items.insert(behind, {Kind::comment, false, comment.place.byte, nullptr, comment.text});
    }
}

// The log of a kept image has the number that the image would have given next when it was kept. Where that was given
// to a prepare which stands before the keep, the client had the image prepared while it answered the keep.
void Script::find_answers(Frame& frame)
{
    size_t from = 0;
    for (size_t place = 0; place < frame.items.size(); ++place)
    {
        const Item& keep = frame.items[place];
        if (keep.kind != Kind::callback || keep.own || !keep.element->has("async_img_log_file_name"))
            continue;
        const auto number = number_of_log(keep.element->value("async_img_log_file_name"));
        size_t call = frame.items.size();
        for (size_t i = from; i < place && number; ++i)
        {
            call = frame.items[i].kind == Kind::call ? i : call;
            const Element* element = frame.items[i].element;
            if (element == nullptr || call > i || !gives_number(*element, *number, keep.element->indent))
                continue;
            frame.items[call].answered = place;
            break;
        }
        from = place + 1;
    }
}

void Script::begin_call(const Element& call, const std::vector<reader::Comment>& comments)
{
    auto frame = std::make_unique<Frame>();
    frame->call = &call;
    frame->comments = comments;
    gather(call, false, frame->items);
    add_comments(*frame);
    find_answers(*frame);
    frames_.push_back(std::move(frame));
}

// What a call leaves over stood behind it, though the log has it inside: its end is missing.
void Script::end_call()
{
    frames_.pop_back();
}

const Element* Script::call() const
{
    return frames_.empty() ? nullptr : frames_.back()->call;
}

std::vector<reader::Comment> Script::comments_within(const Element& nested) const
{
    std::vector<reader::Comment> within;
    if (frames_.empty())
        return within;
    for (const reader::Comment& comment : frames_.back()->comments)
        if (comment.place.byte > nested.place.byte && comment.place.byte < nested.end_byte)
            within.push_back(comment);
    return within;
}

// Of a call from within another one it stands in that.
const Element* Script::next_between()
{
    if (frames_.size() <= 1)
        return tasks_.next_between();
    Frame& outer = *frames_[frames_.size() - 2];
    const size_t end = outer.answered != 0 ? outer.answered : outer.items.size();
    for (; outer.next < end; ++outer.next)
    {
        Item& item = outer.items[outer.next];
        if (item.made)
            continue;
        if (item.kind == Kind::call || item.own)
            return nullptr;
        make(item);
        if (item.kind == Kind::callback)
            return item.element;
    }
    return nullptr;
}

// Comments and calls; callbacks are for others to make.
void Script::make(Item& item)
{
    item.made = true;
    if (item.kind == Kind::comment)
        tasks_.comment(item.text);
    else if (item.kind == Kind::call)
        tasks_.play(*item.element);
}

// Makes what stands before it.
Script::Item* Script::next_callback()
{
    if (frames_.empty())
        return nullptr;
    Frame& frame = *frames_.back();
    while (frame.next < frame.items.size())
    {
        Item& item = frame.items[frame.next];
        if (item.made)
        {
            ++frame.next;
            continue;
        }
        if (item.kind == Kind::callback)
            return &item;
        if (item.answered != 0 && !frame.items[item.answered].made)
        {
            frame.answered = item.answered;
            return &frame.items[item.answered];
        }
        make(item);
    }
    return nullptr;
}

const Element* Script::next_of_renderer()
{
    Item* item = next_callback();
    for (; item != nullptr && item->own; item = next_callback())
    {
        differ(*item->element, "was the logger's own, and isn't made again");
        make(*item);
    }
    if (item == nullptr)
        return nullptr;
    make(*item);
    return item->element;
}

std::vector<const Element*> Script::within_answer() const
{
    std::vector<const Element*> elements;
    if (frames_.empty())
        return elements;
    const Frame& frame = *frames_.back();
    for (size_t i = frame.next; i < frame.answered; ++i)
        if (frame.items[i].element != nullptr)
            elements.push_back(frame.items[i].element);
    return elements;
}

// What stands before a keep that is answered.
void Script::make_answer(const Element& callback)
{
    if (frames_.empty() || frames_.back()->answered == 0)
        return;
    Frame& frame = *frames_.back();
    if (frame.items[frame.answered].element != &callback)
        return;
    for (; frame.next < frame.answered; ++frame.next)
    {
        Item& item = frame.items[frame.next];
        if (item.made)
            continue;
        make(item);
        if (item.kind == Kind::callback)
            tasks_.perform(*item.element);
    }
    frame.answered = 0;
}

void Script::settle(const Element& callback)
{
    if (expected_ == &callback)
        differ(callback, "finds nothing to call");
    expected_ = nullptr;
    make_answer(callback);
}

const Element* Script::answer(std::string_view name)
{
    const Element* told = std::exchange(expected_, nullptr);
    if (told != nullptr)
        make_answer(*told);
    else
    {
        Item* item = next_callback();
        if (item == nullptr || !item->own)
            return nullptr;
        make(*item);
        told = item->element;
    }
    if (told->name == name)
        return told;
    differ(*told, "is asked for as " + std::string(name));
    return nullptr;
}

bool Script::next_is(std::string_view name) const
{
    if (frames_.empty())
        return false;
    const Frame& frame = *frames_.back();
    for (size_t i = frame.next; i < frame.items.size(); ++i)
        if (frame.items[i].kind == Kind::callback && !frame.items[i].made)
            return frame.items[i].own && frame.items[i].element->name == name;
    return false;
}

void Script::differ(const Element& element, const std::string& what) const
{
    if (tasks_.differ)
        tasks_.differ("line " + std::to_string(element.place.line) + ": " + std::string(element.name) + " " + what);
}

}  // namespace orvlog::replay
