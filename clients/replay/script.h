// What was called back while a call was made, in the order of the log: by the renderer, and by the logger itself.

#pragma once

#include "reader/tree/element.h"

#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace orvlog::replay
{

// Callbacks of images and of font engines: "GOP_ImageReadFn", "GFI_GlyphGetFn".
bool is_image_callback(const reader::Element& element);
bool is_font_callback(const reader::Element& element);

// What the script has others do.
struct ScriptTasks
{
    std::function<void(const reader::Element& call)> play;         // a call that was made from within another one
    std::function<void(const reader::Element& callback)> perform;  // a callback of the renderer's
    std::function<void(const std::string& text)> comment;          // the client's, within a call
    std::function<void(const std::string& line)> differ;           // told of what can't be made as it was
    std::function<const reader::Element*()> next_between;          // the next callback between two calls, or null
    std::function<void(const reader::Element& keep)> after_keep;   // of an image that has a log of its own
    // Gives a piece of a file beside the log by the name that the log has for it: at most `count` bytes from `begin`
    // on.
    std::function<std::vector<uint8_t>(std::string_view name, uint64_t begin, uint64_t count)> side_file;
};

class Script
{
public:
    Script() = default;
    Script(const Script&) = delete;
    Script& operator=(const Script&) = delete;

    // First of all.
    void set_tasks(ScriptTasks tasks)
    {
        tasks_ = std::move(tasks);
    }

    // A call is about to be made; calls from within it nest. `comments` are those that stand in it. The element must
    // be good until all that stands in it has been made.
    void begin_call(const reader::Element& call, const std::vector<reader::Comment>& comments);
    void end_call();
    // The call that is being made; null between calls.
    const reader::Element* call() const;
    // Comments behind this place are those of the calls within.
    std::vector<reader::Comment> comments_within(const reader::Element& nested) const;

    // The next callback that the renderer made in the present call. What stands before it is made first, but for what
    // the client did while it answered. Null when there are no more.
    const reader::Element* next_of_renderer();
    // What stands before the callback that is about to be made, and will be made while the client answers it.
    std::vector<const reader::Element*> within_answer() const;
    // The next one behind the present call, if the element of that is closed before it is passed on; null where a call
    // follows.
    const reader::Element* next_between();

    // The renderer is about to make this callback, and has made it.
    void expect(const reader::Element& callback)
    {
        expected_ = &callback;
    }
    void settle(const reader::Element& callback);
    // The callback will be made later.
    void put_off()
    {
        expected_ = nullptr;
    }

    // What the client is to answer to a callback of that name: what the renderer makes now, or the next of the logger's
    // own. Null if the log has none.
    const reader::Element* answer(std::string_view name);

    // Whether the logger's next callback in the present call has that name.
    bool next_is(std::string_view name) const;

    void differ(const reader::Element& element, const std::string& what) const;
    const ScriptTasks& tasks() const
    {
        return tasks_;
    }

private:
    enum class Kind : uint8_t
    {
        callback,
        call,
        comment
    };

    struct Item
    {
        Kind kind = Kind::callback;
        bool own = false;  // the logger's
        uint64_t byte = 0;
        const reader::Element* element = nullptr;
        std::string text;
        size_t answered = 0;  // the keep while the client of which answers this and what follows is made; 0 for none
        bool made = false;
    };

    struct Frame
    {
        const reader::Element* call = nullptr;
        std::vector<Item> items;
        std::vector<reader::Comment> comments;
        size_t next = 0;
        size_t answered = 0;  // the keep that is being made before what stands before it; 0 for none
    };

    static void gather(const reader::Element& element, bool own, std::vector<Item>& items);
    static void add_comments(Frame& frame);
    static void find_answers(Frame& frame);
    Item* next_callback();
    void make(Item& item);
    void make_answer(const reader::Element& callback);

    ScriptTasks tasks_;
    std::vector<std::unique_ptr<Frame>> frames_;
    const reader::Element* expected_ = nullptr;
};

}  // namespace orvlog::replay
