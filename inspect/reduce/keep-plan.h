// Which calls of a log stay when some of them are wanted: those, and what they need to be made again.

#pragma once

#include "reader/text/log-events.h"

#include <cstdint>
#include <functional>
#include <map>
#include <optional>
#include <string_view>
#include <utility>
#include <vector>

namespace orvlog::inspect
{

// A call as its opening tag tells it.
struct CallTag
{
    uint64_t ordinal = 0;  // among all calls of the log, in the order of their opening tags, from 0
    std::string_view name;
    reader::Place place;         // where the tag's line begins
    std::optional<uint32_t> id;  // of a paint
    uint32_t page = 0;           // from 1; 0 for what is not on a page
    uint64_t tag_byte = 0;       // where its '<' stands
};

// What the calls are that tags name: "ORV_face_start" and so on.
enum class CallKind
{
    document_start,
    document_finish,
    resource_destroy,
    face_start,
    resource_start,
    memory_context_start,
    drawing_end,
    group_start,
    group_finish,
    resource_paint,
    paint,
    other
};
CallKind call_kind(std::string_view name);

// Made in one pass over the log. Memory: a bit for each call, and some words for each drawing and document.
class KeepPlan
{
public:
    using Wanted = std::function<bool(const CallTag&)>;

    // With `whole`, the start of a document, drawing or group stands for all up to its end, and a resource that is
    // painted stays with all that is drawn into it. Without it each call is asked for on its own, and a start or an end
    // stays where something between them does, or it is wanted itself.
    KeepPlan(Wanted wanted, bool whole) : wanted_(std::move(wanted)), whole_(whole) {}

    // The events of a log, in order.
    void event(const reader::Event& event, std::string_view text);
    // Behind the last event.
    void finish();

    // What follows is known behind finish().
    bool keeps(uint64_t ordinal) const
    {
        return ordinal < keep_.size() && keep_[static_cast<size_t>(ordinal)];
    }
    // A call that is left out whatever needs it.
    void leave_out(uint64_t ordinal)
    {
        if (ordinal < keep_.size())
            keep_[static_cast<size_t>(ordinal)] = false;
    }
    uint64_t calls() const
    {
        return keep_.size();
    }
    uint64_t kept() const;
    uint32_t pages() const
    {
        return pages_;
    }
    // Calls that were wanted themselves.
    uint64_t wanted() const
    {
        return wanted_count_;
    }

private:
    static constexpr uint32_t kNone = UINT32_MAX;

    struct Group
    {
        std::vector<uint64_t> ends;  // of it, as far as they have come
        uint64_t start = 0;
        bool kept = false;
        bool whole = false;
    };

    // A drawing that is open.
    struct Open
    {
        uint32_t drawing = 0;  // its place in drawings_
        uint32_t page = 0;
        bool whole = false;
        std::vector<Group> groups;
    };

    // What is remembered of each drawing.
    struct Drawing
    {
        uint64_t start = 0;
        uint64_t end = UINT64_MAX;
        uint64_t destroy = UINT64_MAX;
        uint32_t document = kNone;
        uint32_t parent = kNone;
        bool kept = false;
        bool filled = false;  // all that is drawn into it stays
    };

    struct Document
    {
        uint64_t start = 0;
        uint64_t end = UINT64_MAX;
        bool kept = false;
        bool whole = false;
    };

    // Calls of one drawing that follow one another.
    struct Run
    {
        uint64_t first;
        uint64_t last;
        uint32_t drawing;
    };

    // A call whose end has not come.
    struct Level
    {
        uint64_t ordinal;
        size_t depth;
        std::optional<uint32_t> context;  // the number of its drawing
    };

    void open_call(const reader::Event& event, std::string_view text);
    void keep(uint64_t ordinal);
    void keep_in(uint32_t context);
    void keep_drawing(uint32_t drawing);
    void want(const Level& level);
    void add_content(uint32_t drawing, uint64_t ordinal);
    void start_document(const reader::Event& event, uint64_t ordinal);
    void start_drawing(const reader::Event& event, CallKind kind, uint64_t ordinal);
    void end_drawing(uint32_t context, uint64_t ordinal);
    void start_group(uint32_t context, uint64_t ordinal, bool wanted);
    void finish_group(const reader::Event& event, uint32_t context, uint64_t ordinal);
    void paint_resource(const reader::Event& event, uint32_t context, bool wanted);
    bool is_wanted(const reader::Event& event, CallKind kind, std::string_view text, uint64_t ordinal);
    void fill_drawings();
    void keep_starts_and_ends();

    Wanted wanted_;
    bool whole_;
    std::vector<bool> keep_;
    std::vector<Drawing> drawings_;
    std::vector<Document> documents_;
    std::map<uint32_t, uint32_t> open_documents_;
    std::map<uint32_t, Open> open_drawings_;
    std::map<uint32_t, uint32_t> resources_;                 // resource_id to the place of its drawing
    std::vector<std::pair<uint32_t, uint32_t>> painted_in_;  // a drawing, and the resource that is painted in it
    std::vector<Run> content_;                               // the calls of resources
    std::vector<Level> levels_;
    size_t depth_ = 0;
    uint32_t pages_ = 0;
    uint64_t wanted_count_ = 0;
};

}  // namespace orvlog::inspect
