// The text of a log as a stream of events: tags, rows of numbers, comments, ticket text, and damage. Memory is one
// block, the longest line and the names of the open elements.
//
// Events are balanced: each open is followed by its close, given by the reader itself (`implied`) where the log lacks
// it. What is not as a log should be comes as a damage event with its place, and reading goes on at the next line.

#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <istream>
#include <memory>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace orvlog::reader
{

// Where something stands in the text of a log, which for a coded log is the decoded text.
struct Place
{
    uint64_t byte = 0;  // from 0
    uint64_t line = 1;  // from 1

    bool operator==(const Place&) const = default;
};

// Where the text that is read goes on elsewhere in the log's: for one who reads parts of it.
struct Jump
{
    uint64_t read = 0;  // bytes of what is read before it
    Place place;        // where it goes on, at the beginning of a tag's or a comment's line
};

struct Attribute
{
    std::string_view name;
    std::string_view value;  // as it stands between the quotes, escapes and all
};

enum class EventKind
{
    open,     // a tag, with all its attributes; the comments that stood inside it follow
    close,    // its end, also after a tag that closes itself
    row,      // a line that is no tag: numbers, or a line of ticket text as it stands
    comment,  // what stands between its marks, as it stands
    damage    // `text` says what is wrong
};

// The views are good until the next call of next().
struct Event
{
    EventKind kind = EventKind::close;
    Place place;
    std::string_view name;  // open, close
    std::span<const Attribute> attributes;
    std::string_view text;     // row, comment, damage
    bool self_closed = false;  // open, of the form <name .../>
    bool implied = false;      // close, of a tag whose end the log lacks
    uint64_t indent = 0;       // open: blanks between the place and the tag
};

enum class LogForm
{
    log,      // an element ORV, plain or coded
    fragment  // elements without a root: the log of a kept image
};

class LogEvents
{
public:
    // `source` must be in binary mode, and lives as long as this. Nothing is read before the first next(). Of LogPieces
    // places are those in the whole log.
    explicit LogEvents(std::istream& source, LogForm form = LogForm::log);
    ~LogEvents();
    LogEvents(const LogEvents&) = delete;
    LogEvents& operator=(const LogEvents&) = delete;

    // What is read are parts of a log; before the first next().
    void set_jumps(std::vector<Jump> jumps)
    {
        jumps_ = std::move(jumps);
    }

    // False when the log has ended. A file that is no log gives false at once.
    bool next(Event& event);

    // What follows tells something once next() has given false.
    bool is_log() const;  // the text began as a log does
    bool is_cut() const;  // it ended before its root element was closed
    // It did, and had lines before that no log has: of a coded log, the coded bytes are damaged. Of such a log is_cut()
    // gives false.
    bool is_garbled() const;

    bool is_coded() const;
    bool is_compressed() const;  // in Zstandard frames
    // Bytes of the file that have been used, which for a coded log are fewer than those of its text.
    uint64_t bytes_used() const;
    // Bytes of the text that have been read; of parts of a log, those before the place that reading has come to.
    uint64_t text_bytes() const
    {
        return place_.byte;
    }

    static constexpr size_t kLongestLine = size_t{64} << 20;
    static constexpr size_t kLongestComment = size_t{16} << 20;
    static constexpr size_t kDeepest = 4096;

private:
    class Text;
    struct Pending;

    std::string_view line_at(size_t from);
    bool read_event(Event& event);
    bool read_row(Event& event, std::string_view line);
    bool read_tag(Event& event, std::string_view line);
    bool read_open(Event& event, std::string_view line, size_t indent);
    bool read_unended(Event& event, std::string_view tag, size_t indent);
    bool read_open_in_parts(Event& event, std::string_view line, size_t indent);
    void finish_open(Event& event, std::string_view tag, bool whole);
    bool read_attribute(std::string_view text, size_t& at);
    bool read_attributes(std::string_view tag);
    bool read_close(Event& event, std::string_view line, size_t indent);
    bool read_comment(Event& event);
    bool read_ticket(Event& event, std::string_view line, size_t indent);
    size_t comment_end(size_t from);
    size_t cut_comment_end();
    Place place_of(size_t at);
    bool may_follow_comment(size_t at);
    bool finish();
    void step(size_t count, size_t lines);
    void jump();
    void damage(std::string text, Place place);
    void strange(std::string text, Place place);
    void imply_closes(size_t depth, Place place);
    bool take_pending(Event& event);

    std::unique_ptr<Text> text_;
    LogForm form_;
    std::vector<std::string> open_;
    size_t depth_ = 0;
    size_t ticket_depth_ = 0;
    std::vector<Attribute> attributes_;
    std::vector<Pending> pending_;
    size_t next_pending_ = 0;
    std::string held_;     // a tag that comments have broken
    std::string comment_;  // the last comment
    std::string closed_;   // the last element that closed itself
    bool close_next_ = false;
    Place place_;
    std::vector<Jump> jumps_;
    size_t next_jump_ = 0;
    uint64_t read_ = 0;  // bytes of the text, whatever their place
    bool began_ = false;
    bool root_closed_ = false;
    bool ended_ = false;
    bool cut_ = false;
    bool garbled_ = false;
    uint64_t strange_line_ = 0;  // the first that no log has; 0 while there was none
};

}  // namespace orvlog::reader
