#include "inspect/reduce/log-scan.h"

#include <algorithm>

namespace orvlog::inspect
{

namespace
{

constexpr size_t kBlock = size_t{1} << 16;

}  // namespace

KeptText::KeptText(std::istream& source) : log_(source), block_(kBlock) {}

void KeptText::forget(uint64_t begin)
{
    const auto count = static_cast<size_t>(begin - std::min(begin, begin_));
    if (count < kept_.size() / 2 || count < kBlock)
        return;
    kept_.erase(0, count);
    if (kept_.capacity() > 64 * kBlock && kept_.size() < kept_.capacity() / 8)
        kept_.shrink_to_fit();
    begin_ += count;
}

std::string_view KeptText::text(uint64_t begin, uint64_t end) const
{
    const uint64_t most = begin_ + kept_.size();
    begin = std::clamp(begin, begin_, most);
    end = std::clamp(end, begin, most);
    return std::string_view(kept_).substr(static_cast<size_t>(begin - begin_), static_cast<size_t>(end - begin));
}

KeptText::int_type KeptText::underflow()
{
    log_.look(1);
    const std::string_view seen = log_.seen();
    const size_t count = std::min(seen.size(), kBlock);
    std::copy_n(seen.begin(), count, block_.begin());
    kept_.append(seen.substr(0, count));
    log_.skip(count);
    setg(block_.data(), block_.data(), block_.data() + count);
    return count == 0 ? traits_type::eof() : traits_type::to_int_type(*gptr());
}

LogScan::LogScan(std::istream& source, reader::LogForm form) : text_(source), stream_(&text_), events_(stream_, form) {}

bool LogScan::next(reader::Event& event)
{
    begin_ = end_;
    text_.forget(begin_);
    const bool there = events_.next(event);
    end_ = events_.text_bytes();
    own_ = there && event.place.byte >= begin_ ? std::min(event.place.byte, end_) : begin_;
    if (there && event.kind == reader::EventKind::damage)
        own_ = end_;
    damage_ += there && event.kind == reader::EventKind::damage ? 1 : 0;
    return there;
}

uint64_t LogScan::damage() const
{
    const uint64_t others = damage_ - std::min<uint64_t>(damage_, events_.is_cut() ? 1 : 0);
    return others + (text_.log().is_damaged() ? 1 : 0);
}

const std::string_view* find_attribute(const reader::Event& event, std::string_view name)
{
    for (const reader::Attribute& one : event.attributes)
        if (one.name == name)
            return &one.value;
    return nullptr;
}

std::string_view attribute(const reader::Event& event, std::string_view name)
{
    const std::string_view* found = find_attribute(event, name);
    return found != nullptr ? *found : std::string_view();
}

bool is_callback_name(std::string_view name)
{
    return name.ends_with("Fn") && (name.starts_with("GOP_Image") || name.starts_with("GFI_"));
}

}  // namespace orvlog::inspect
