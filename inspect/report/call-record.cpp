#include "inspect/report/call-record.h"

#include "inspect/report/columns.h"

#include <algorithm>

namespace orvlog::inspect
{

namespace
{

constexpr size_t kMostBytes = size_t{64} << 10;
constexpr size_t kLongestLine = size_t{16} << 10;
constexpr uint64_t kRowsShown = 4;
constexpr uint64_t kBlock = uint64_t{1} << 20;

bool is_row(std::string_view line)
{
    const size_t at = line.find_first_not_of(" \t");
    return at != std::string_view::npos && line[at] != '<';
}

void tell_bytes(std::string& text, size_t count)
{
    text.append("[").append(std::to_string(count)).append(" more bytes]\n");
}

// A comment or a tag may be as long as it likes.
void add_line(std::string& text, std::string_view line)
{
    if (line.size() <= kLongestLine)
    {
        text += line;
        return;
    }
    text.append(line.substr(0, kLongestLine)).append("\n");
    tell_bytes(text, line.size() - kLongestLine);
}

void tell_rows(std::string& text, uint64_t rows)
{
    if (rows > kRowsShown)
        text.append("[").append(std::to_string(rows - kRowsShown)).append(" more rows]\n");
}

}  // namespace

std::string abridged(std::string_view record)
{
    std::string text;
    uint64_t rows = 0;
    size_t at = 0;
    while (at < record.size() && text.size() < kMostBytes)
    {
        const size_t end = std::min(record.find('\n', at), record.size() - 1) + 1;
        const std::string_view line = record.substr(at, end - at);
        at = end;
        const bool row = is_row(line);
        if (!row)
        {
            tell_rows(text, rows);
            rows = 0;
        }
        if (!row || ++rows <= kRowsShown)
            add_line(text, line);
    }
    tell_rows(text, rows);
    if (at < record.size())
        tell_bytes(text, record.size() - at);
    return text;
}

RecordPlace CallRecords::add(std::string_view record)
{
    if (blocks_.written() >= most_bytes_)
    {
        ++left_out_;
        return {};
    }
    if (block_ == nullptr)
        block_ = std::make_unique<Deflated>();
    const std::string text = abridged(record);
    const RecordPlace place{count_, block_->size(), text.size()};
    block_->add(text);
    if (block_->size() >= kBlock)
        end_block();
    return place;
}

void CallRecords::end_block()
{
    if (block_ == nullptr)
        return;
    list_.append(list_.empty() ? "" : ",").append(text_json(blocks_.add(*block_)));
    ++count_;
    block_.reset();
}

std::string CallRecords::finish()
{
    end_block();
    return "[" + list_ + "]";
}

}  // namespace orvlog::inspect
