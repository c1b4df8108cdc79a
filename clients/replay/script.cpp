#include "clients/replay/script.h"

#include <algorithm>
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

void Script::begin_call(const Element& call, const std::vector<reader::Comment>& comments)
{
    auto frame = std::make_unique<Frame>();
    frame->call = &call;
    frame->comments = comments;
    gather(call, false, frame->items);
    add_comments(*frame);
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
    for (; outer.next < outer.items.size() && outer.items[outer.next].kind == Kind::comment; ++outer.next)
        tasks_.comment(outer.items[outer.next].text);
    if (outer.next >= outer.items.size())
        return nullptr;
    const Item& item = outer.items[outer.next];
    if (item.kind != Kind::callback || item.own)
        return nullptr;
    ++outer.next;
    return item.element;
}

// Makes what stands before it.
const Script::Item* Script::next_callback()
{
    if (frames_.empty())
        return nullptr;
    Frame& frame = *frames_.back();
    while (frame.next < frame.items.size())
    {
        const Item& item = frame.items[frame.next];
        if (item.kind == Kind::callback)
            return &item;
        ++frame.next;
        make(item);
    }
    return nullptr;
}

void Script::make(const Item& item)
{
    if (item.kind == Kind::comment)
        tasks_.comment(item.text);
    else
        tasks_.play(*item.element);
}

// The keep of the renderer's that comes next, if anything stands before it.
const Element* Script::next_named_keep()
{
    if (frames_.empty())
        return nullptr;
    Frame& frame = *frames_.back();
    const auto from = frame.items.begin() + static_cast<std::ptrdiff_t>(frame.next);
    const auto found = std::find_if(from, frame.items.end(), [](const Item& item) { return item.kind == Kind::callback; });
    if (found == from || found == frame.items.end() || found->own || !found->element->has("async_img_log_file_name"))
        return nullptr;
    frame.answered = static_cast<size_t>(found - frame.items.begin());
    return found->element;
}

std::vector<const Element*> Script::calls_within_answer() const
{
    std::vector<const Element*> calls;
    if (frames_.empty() || !frames_.back()->answered)
        return calls;
    const Frame& frame = *frames_.back();
    for (size_t i = frame.next; i < *frame.answered; ++i)
        if (frame.items[i].kind == Kind::call)
            calls.push_back(frame.items[i].element);
    return calls;
}

void Script::make_answer()
{
    if (frames_.empty() || !frames_.back()->answered)
        return;
    Frame& frame = *frames_.back();
    const size_t answered = *std::exchange(frame.answered, std::nullopt);
    while (frame.next < answered)
        make(frame.items[frame.next++]);
    frame.next = answered + 1;
}

const Element* Script::next_of_renderer()
{
    if (const Element* keep = next_named_keep(); keep != nullptr)
        return keep;
    const Item* item = next_callback();
    while (item != nullptr && item->own)
    {
        differ(*item->element, "was the logger's own, and isn't made again");
        ++frames_.back()->next;
        item = next_callback();
    }
    if (item != nullptr)
        ++frames_.back()->next;
    return item != nullptr ? item->element : nullptr;
}

void Script::settle(const Element& callback)
{
    if (expected_ == &callback)
        differ(callback, "finds nothing to call");
    expected_ = nullptr;
    make_answer();
}

const Element* Script::answer(std::string_view name)
{
    const Element* told = std::exchange(expected_, nullptr);
    if (told != nullptr)
        make_answer();
    else
    {
        const Item* item = next_callback();
        if (item == nullptr || !item->own)
            return nullptr;
        ++frames_.back()->next;
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
        if (frame.items[i].kind == Kind::callback)
            return frame.items[i].own && frame.items[i].element->name == name;
    return false;
}

void Script::differ(const Element& element, const std::string& what) const
{
    if (tasks_.differ)
        tasks_.differ("line " + std::to_string(element.place.line) + ": " + std::string(element.name) + " " + what);
}

}  // namespace orvlog::replay
