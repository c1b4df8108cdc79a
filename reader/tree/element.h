// Elements of a log as trees, one call at a time, and the blocks of memory that they lie in.

#pragma once

#include "reader/text/log-events.h"

#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace orvlog::reader
{

// Memory that is given back all at once. Everything in it is zero at first and aligned for any record.
class Arena
{
public:
    Arena() = default;
    Arena(const Arena&) = delete;
    Arena& operator=(const Arena&) = delete;

    void* take(size_t size);
    template <typename Record> Record* make(size_t trailing = 0)
    {
        return static_cast<Record*>(take(sizeof(Record) + trailing));
    }
    template <typename Record> std::span<Record> make_array(size_t count)
    {
        return {static_cast<Record*>(take(count * sizeof(Record))), count};
    }
    std::string_view copy(std::string_view text);
    // Forgets all that was taken; keeps some of the memory.
    void clear();
    size_t size() const
    {
        return size_;
    }

private:
    struct Block
    {
        std::unique_ptr<std::byte[]> bytes;
        size_t size;
    };

    std::vector<Block> blocks_;
    size_t used_ = 0;  // of the last block
    size_t size_ = 0;
};

// What an element holds beside its attributes and its children.
struct Element
{
    std::string_view name;
    Place place;
    uint64_t indent = 0;  // blanks between the place and the tag
    std::span<const Attribute> attributes;
    Element* first = nullptr;  // its first child
    Element* next = nullptr;   // its next sibling
    // BufferUInt8: the bytes that the rows tell. Other elements: the rows as they stand, each with a line feed.
    std::span<const uint8_t> bytes;
    std::string_view rows;
    uint64_t data_size = 0;  // of bytes or rows, told even if they are not kept
    bool implied_end = false;
    uint64_t end_byte = 0;  // where its end stands in the text

    // Null for what there is not.
    const Attribute* find(std::string_view attribute) const;
    bool has(std::string_view attribute) const
    {
        return find(attribute) != nullptr;
    }
    // As it stands between the quotes; empty if there is no such attribute.
    std::string_view value(std::string_view attribute) const;
    const Element* child(std::string_view child_name) const;
    // The child whose name is the element's own, a dot, and `member_name`.
    const Element* member(std::string_view member_name) const;
};

// The children of an element, for range-based loops.
class Children
{
public:
    class Iterator
    {
    public:
        explicit Iterator(const Element* element) : element_(element) {}
        const Element& operator*() const
        {
            return *element_;
        }
        Iterator& operator++()
        {
            element_ = element_->next;
            return *this;
        }
        bool operator!=(const Iterator& other) const
        {
            return element_ != other.element_;
        }

    private:
        const Element* element_;
    };

    explicit Children(const Element& parent) : first_(parent.first) {}
    Iterator begin() const
    {
        return Iterator(first_);
    }
    static Iterator end()
    {
        return Iterator(nullptr);
    }

private:
    const Element* first_;
};

struct Damage
{
    Place place;
    std::string text;
};

struct Comment
{
    Place place;
    std::string text;      // as it stands between its marks, the line feed before the end mark included
    bool warning = false;  // of the logger itself: "ORVLOG: WARNING: ..."
    bool inside = false;   // it stands in an element of the root, not between two
};

// The name of a call: "ORV_object_paint", and neither "ORV_object_paint.op" nor "ORV_FaceProperties".
bool is_call_name(std::string_view name);

enum class Data
{
    keep,   // bytes and rows are kept
    heads,  // of bytes the size is told; of other rows the first 64 KiB are kept
    skip    // only their size is told
};

// Reads a log element by element: the children of its root one after another, each as a tree. In a fragment, all
// elements that stand in no other one.
class ElementReader
{
public:
    explicit ElementReader(std::istream& source, LogForm form = LogForm::log, Data data = Data::keep);

    // The next element, good until the next call; null at the end of the log.
    const Element* next();

    // The attributes of the element ORV, and its place; known after the first next(). No children.
    const Element& root() const
    {
        return root_;
    }

    // Told as they are met, before the element that they stand in is given.
    std::function<void(const Damage&)> on_damage;
    std::function<void(const Comment&)> on_comment;
    // Told while an element is read, for who wants more than is kept of it: an element as its tag is met, with its
    // attributes and how many elements are around it within the root; and each row in it as it stands.
    std::function<void(const Element&, size_t depth)> on_open;
    std::function<void(const Element&, std::string_view row)> on_row;

    // Gives calls that stand in another call as elements of their own. The outer call comes before them, with what it
    // holds up to there; what it holds behind them comes as elements, too. So a call whose end is missing doesn't take
    // in the whole rest of a log.
    bool split_nested = false;

    const LogEvents& events() const
    {
        return events_;
    }
    // Where the element that next() has given ends in the log's text.
    uint64_t end_of_element() const
    {
        return nested_ ? nested_->place.byte : events_.text_bytes();
    }

private:
    struct Level
    {
        Element* element;
        Element* last = nullptr;
        std::vector<uint8_t> data;
    };

    Element* make_element(const Event& event, Arena& arena);
    void open(const Event& event);
    const Element* split(const Event& event);
    bool close(const Event& event);
    void row(const Event& event);
    void report(const Event& event);

    LogEvents events_;
    LogForm form_;
    Data data_;
    Arena arena_;
    Arena root_arena_;
    Element root_;
    std::vector<Level> levels_;
    size_t depth_ = 0;
    bool in_root_ = false;
    std::optional<Event> nested_;  // the start of a call that ended its outer one
};

}  // namespace orvlog::reader
