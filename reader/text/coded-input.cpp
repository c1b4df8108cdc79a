#include "reader/text/coded-input.h"

#include "orvlog/log/orvlog-compressed-stream.h"

#include <algorithm>
#include <string_view>

namespace orvlog::reader
{

namespace
{

constexpr std::string_view kCodedPrefix(ORVLOG_CODED_PREFIX, ORVLOG_CODED_PREFIX_SIZE);
// How a log's text begins behind the prefix when there was no memory for a coder.
constexpr std::string_view kPlainStart = "<ORV MIRDA_TOLMA_VERSION=\"";

}  // namespace

CodedInput::CodedInput(std::istream& source) : bytes_(source), text_bytes_(&bytes_), raw_(text_bytes_)
{
    const std::string_view head = raw_.look(kCodedPrefix.size());
    if (head.starts_with(kCodedPrefix))
    {
        raw_.skip(kCodedPrefix.size());
        if (!raw_.look(kPlainStart.size()).starts_with(kPlainStart))
            coded_.emplace(raw_);
    }
    else if (head.size() > 5 && kCodedPrefix.starts_with(head))
    {
        // No plain log begins like that: a coded log of which no text is left.
        raw_.skip(head.size());
    }
}

size_t CodedInput::read(char* buffer, size_t size)
{
    while (next_ == text_.size() && !at_end_)
        fill();
    const size_t count = std::min(size, text_.size() - next_);
    std::copy_n(text_.data() + next_, count, buffer);
    next_ += count;
    given_ += count;
    return count;
}

bool CodedInput::next_text(std::string& text)
{
    if (coded_)
        return coded_->read(text);
    const std::string_view raw = raw_.look(1);
    text = raw;
    raw_.skip(raw.size());
    return !raw.empty();
}

void CodedInput::fill()
{
    text_.clear();
    next_ = 0;
    std::string text;
    at_end_ = !next_text(text);
    if (!end_.follow(text, text_))
        at_end_ = true;
    if (!coded_ && !end_.is_log())
    {
        text_.clear();
        at_end_ = true;
    }
    if (at_end_)
        finish();
}

void CodedInput::finish()
{
    if (bytes_.is_damaged() || (coded_ && coded_->damaged()))
        ending_ = Ending::damaged;
    else if (coded_ && (!end_.is_log() || coded_->of_nothing()))
        ending_ = Ending::other;
    else if (!end_.is_log())
        ending_ = Ending::not_a_log;
    else
        ending_ = end_.is_whole() ? Ending::whole : Ending::cut;
    text_ += end_.take_held();
}

}  // namespace orvlog::reader
