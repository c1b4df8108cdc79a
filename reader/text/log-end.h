// Where a log ends. The text of a log is one element ORV and the comments right behind its closing tag; bytes
// after these are not the log's.

#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

namespace orvlog::reader
{

// Follows the text of a log from its first byte, given in pieces of any length.
class LogEnd
{
public:
    // Appends to `out` what of `text` is sure to be the log's. A few bytes behind the root element are held back
    // until it shows whether they begin a comment. False when the log has ended: no further text is wanted.
    bool follow(std::string_view text, std::string& out);

    // What was held back, to be asked for when the text is at its end.
    std::string take_held();

    // The text so far begins as a log does.
    bool is_log() const
    {
        return state_ != State::other;
    }
    // The text so far is a log with its end, and nothing is held back.
    bool is_whole() const;

private:
    enum class State
    {
        start,            // within the first bytes
        other,            // no log
        body,             // within the root element
        body_comment,     // in a comment there
        between,          // behind the root element or a comment behind it
        closing_comment,  // in a comment there
        past              // beyond the log
    };

    size_t follow_start(std::string_view text);
    size_t follow_lines(std::string_view text);
    size_t follow_between(std::string_view text, std::string& out);
    void end_line();
    void note(std::string_view part);
    std::string_view line_head() const
    {
        return {head_.data(), head_size_};
    }

    State state_ = State::start;
    std::array<char, 8> head_{};  // the first bytes of the present line
    size_t head_size_ = 0;
    uint64_t line_size_ = 0;
    std::string tail_;  // the last bytes of the present line, at most four
    std::string held_;
};

}  // namespace orvlog::reader
