// The text of a log, decoded where it is coded, with a look ahead of any length.

#pragma once

#include "reader/text/coded-input.h"
#include "reader/text/log-bytes.h"

#include <cstddef>
#include <cstdint>
#include <istream>
#include <optional>
#include <streambuf>
#include <string>
#include <string_view>
#include <vector>

namespace orvlog::reader
{

// Bytes that were read ahead of a stream, and then the stream.
class RejoinedBytes : public std::streambuf
{
public:
    RejoinedBytes(std::string head, std::istream& rest);

private:
    int_type underflow() override;

    std::string block_;
    std::istream& rest_;
};

class LogText
{
public:
    explicit LogText(std::istream& source);

    // What stands at the place that skip() has come to: at least `wanted` bytes, unless the text ends before. Views
    // are good until the next call.
    std::string_view look(size_t wanted);
    // From `from` to the next line feed, without it, or to the end of the text, or to `longest` bytes.
    std::string_view line(size_t from, size_t longest);
    // What has been looked at and not yet skipped; keeps views good.
    std::string_view seen() const
    {
        return {block_.data() + next_, end_ - next_};
    }
    void skip(size_t count)
    {
        next_ += count;
    }
    bool at_end()
    {
        return look(1).empty();
    }

    bool is_coded() const
    {
        return coded_.has_value();
    }
    // The file holds Zstandard frames.
    bool is_compressed() const
    {
        return bytes_.is_compressed();
    }
    // A coded or compressed log that is none from some place on.
    bool is_damaged() const
    {
        return bytes_.is_damaged() || (coded_ && coded_->ending() == Ending::damaged);
    }
    uint64_t bytes_used() const
    {
        if (bytes_.is_compressed())
            return bytes_.bytes_used();
        return coded_ ? coded_->bytes_used() : read_ - (end_ - next_);
    }

private:
    void start();
    bool fill();

    static constexpr size_t kBlockSize = size_t{1} << 18;

    LogBytes bytes_;
    std::istream source_;
    std::optional<RejoinedBytes> rejoined_;
    std::optional<std::istream> whole_;
    std::optional<CodedInput> coded_;
    std::vector<char> block_;
    size_t next_ = 0;
    size_t end_ = 0;
    uint64_t read_ = 0;
    bool started_ = false;
    bool at_end_ = false;
};

}  // namespace orvlog::reader
