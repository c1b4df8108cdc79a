#include "reader/text/log-text.h"

#include "orvlog/log/orvlog-compressed-stream.h"

#include <algorithm>
#include <cstring>

namespace orvlog::reader
{

RejoinedBytes::RejoinedBytes(std::string head, std::istream& rest) : block_(std::move(head)), rest_(rest)
{
    setg(block_.data(), block_.data(), block_.data() + block_.size());
}

RejoinedBytes::int_type RejoinedBytes::underflow()
{
    if (gptr() == egptr())
    {
        block_.resize(65536);
        rest_.read(block_.data(), static_cast<std::streamsize>(block_.size()));
        setg(block_.data(), block_.data(), block_.data() + rest_.gcount());
    }
    return gptr() == egptr() ? traits_type::eof() : traits_type::to_int_type(*gptr());
}

LogText::LogText(std::istream& source) : bytes_(source), source_(&bytes_), block_(kBlockSize) {}

// A coded log is known by its first bytes.
void LogText::start()
{
    started_ = true;
    constexpr std::string_view kPrefix(ORVLOG_CODED_PREFIX, ORVLOG_CODED_PREFIX_SIZE);
    source_.read(block_.data(), kPrefix.size());
    end_ = static_cast<size_t>(source_.gcount());
    read_ = end_;
    const std::string_view head = seen();
    const bool cut_prefix = head.size() > 5 && kPrefix.starts_with(head);
    if (!head.starts_with(kPrefix) && !cut_prefix)
        return;
    rejoined_.emplace(std::string(head), source_);
    whole_.emplace(&*rejoined_);
    coded_.emplace(*whole_);
    end_ = 0;
}

bool LogText::fill()
{
    if (!started_)
    {
        start();
        if (end_ > 0)
            return true;
    }
    if (at_end_)
        return false;
    if (next_ > 0)
    {
        std::memmove(block_.data(), block_.data() + next_, end_ - next_);
        end_ -= next_;
        next_ = 0;
    }
    if (end_ == block_.size())
        block_.resize(2 * block_.size());
    size_t count = 0;
    if (coded_)
        count = coded_->read(block_.data() + end_, block_.size() - end_);
    else
    {
        source_.read(block_.data() + end_, static_cast<std::streamsize>(block_.size() - end_));
        count = static_cast<size_t>(source_.gcount());
        read_ += count;
    }
    end_ += count;
    at_end_ = count == 0;
    return !at_end_;
}

std::string_view LogText::look(size_t wanted)
{
    while (end_ - next_ < wanted && fill())
        ;
    return seen();
}

std::string_view LogText::line(size_t from, size_t longest)
{
    size_t searched = from;
    while (true)
    {
        const std::string_view text = look(searched + 1);
        if (text.size() > searched)
        {
            const size_t end = text.find('\n', searched);
            if (end != std::string_view::npos)
                return text.substr(from, std::min(end - from, longest));
        }
        if (text.size() - std::min(from, text.size()) >= longest)
            return text.substr(from, longest);
        if (text.size() <= searched)
            return text.substr(std::min(from, text.size()));
        searched = text.size();
    }
}

}  // namespace orvlog::reader
