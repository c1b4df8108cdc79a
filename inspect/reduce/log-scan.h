// A log as events, each with the text that it stands in, so that parts of a log can be copied as they are.

#pragma once

#include "reader/text/log-events.h"
#include "reader/text/log-text.h"

#include <cstdint>
#include <istream>
#include <string>
#include <string_view>
#include <vector>

namespace orvlog::inspect
{

// The plain text of a log, of which what was read last is kept.
class KeptText : public std::streambuf
{
public:
    explicit KeptText(std::istream& source);

    // Forgets what stands before `begin`, a place in the text.
    void forget(uint64_t begin);
    // What is kept of the text between two places.
    std::string_view text(uint64_t begin, uint64_t end) const;
    const reader::LogText& log() const
    {
        return log_;
    }

private:
    int_type underflow() override;

    reader::LogText log_;
    std::vector<char> block_;
    std::string kept_;
    uint64_t begin_ = 0;
};

class LogScan
{
public:
    // `source` must be in binary mode, and lives as long as this.
    explicit LogScan(std::istream& source, reader::LogForm form = reader::LogForm::log);

    // False when the log has ended. Views are good until the next call.
    bool next(reader::Event& event);

    // What stands ahead of the event and is none: empty lines, and lines that no log has.
    std::string_view before() const
    {
        return text_.text(begin_, own_);
    }
    // The event as it stands, with its line end; empty for one without text of its own.
    std::string_view text() const
    {
        return text_.text(own_, end_);
    }

    // Where text() stands in the plain text of the log.
    uint64_t begin() const
    {
        return own_;
    }
    uint64_t end() const
    {
        return end_;
    }

    // What follows tells something once next() has given false.
    bool is_log() const
    {
        return events_.is_log();
    }
    bool is_cut() const
    {
        return events_.is_cut();
    }
    // Places where the log is not as a log should be, its being cut left aside.
    uint64_t damage() const;

    // Bytes of the file that have been used.
    uint64_t bytes_used() const
    {
        return text_.log().bytes_used();
    }

private:
    KeptText text_;
    std::istream stream_;
    reader::LogEvents events_;
    uint64_t begin_ = 0;
    uint64_t own_ = 0;
    uint64_t end_ = 0;
    uint64_t damage_ = 0;
};

// The value of an attribute of an event as it stands; null if there is none of that name.
const std::string_view* find_attribute(const reader::Event& event, std::string_view name);
// Empty if there is none.
std::string_view attribute(const reader::Event& event, std::string_view name);
// Whether an element is a callback of an image or of a font engine.
bool is_callback_name(std::string_view name);

}  // namespace orvlog::inspect
