#include "inspect/reduce/trimmed-inserts.h"

#include <algorithm>
#include <array>

namespace orvlog::inspect
{

namespace
{

using reader::Event;
using reader::EventKind;

constexpr size_t kRow = 50;

void append_row(const char* bytes, size_t count, std::string& out)
{
    constexpr char kDigits[] = "0123456789abcdef";
    for (size_t i = 0; i < count; ++i)
    {
        const auto byte = static_cast<uint8_t>(bytes[i]);
        out += kDigits[byte >> 4];
        out += kDigits[byte & 15];
        out += ' ';
    }
    out += '\n';
}

}  // namespace

bool TrimmedText::TextInsert::step(TrimmedText& owner)
{
    owner.out_ += text_;
    return false;
}

bool TrimmedText::BytesInsert::step(TrimmedText& owner)
{
    if (count_ == 0)
        return false;
    if (!begun_)
        owner.out_ += indent_ + "<BufferUInt8 len=\"" + std::to_string(static_cast<int32_t>(count_)) + "\">\n";
    begun_ = true;
    std::array<char, 64 * kRow> block{};
    file_->read(block.data(), static_cast<std::streamsize>(std::min<uint64_t>(block.size(), left_)));
    const auto count = static_cast<size_t>(file_->gcount());
    for (size_t at = 0; at < count; at += kRow)
        append_row(block.data() + at, std::min(kRow, count - at), owner.out_);
    left_ -= count;
    if (left_ > 0 && count > 0)
        return true;
    owner.out_ += indent_ + "</BufferUInt8>\n";
    return false;
}

// What stands there is the callbacks of one image: all of it stays.
bool TrimmedText::FragmentInsert::step(TrimmedText& owner)
{
    Event event;
    if (!scan_.next(event))
    {
        if (scan_.is_cut() || scan_.damage() > 0)
            owner.miss("the log of a kept image is damaged or cut short: " + file_.path.string());
        return false;
    }
    owner.in_fragment_ = true;
    if (event.kind == EventKind::open)
        owner.open(event, scan_.before(), scan_.text());
    else if (event.kind == EventKind::close)
        owner.close(event, scan_.before(), scan_.text());
    else
        owner.out_ += scan_.text();
    owner.in_fragment_ = false;
    return true;
}

}  // namespace orvlog::inspect
