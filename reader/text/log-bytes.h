// The bytes of a log, whatever its file is: out of Zstandard frames where they are in such, and without the zero bytes
// that stand behind a log whose process was killed. Any other bytes come as they are. Memory: a block, and for frames
// what their decoder wants.

#pragma once

#include <cstddef>
#include <cstdint>
#include <istream>
#include <memory>
#include <optional>
#include <streambuf>
#include <string>
#include <string_view>
#include <vector>

namespace orvlog::reader
{

class Frames;

class LogBytes : public std::streambuf
{
public:
    // Reads `source`, which must be in binary mode and live as long as this, from where it stands. Nothing is read
    // before the first byte is asked for.
    explicit LogBytes(std::istream& source);
    ~LogBytes() override;
    LogBytes(const LogBytes&) = delete;
    LogBytes& operator=(const LogBytes&) = delete;

    // The next bytes, fewer than `size` only at the end.
    size_t read(char* bytes, size_t size);

    // The file holds Zstandard frames.
    bool is_compressed() const
    {
        return frames_ != nullptr;
    }
    // What is behind some frame, or within it, is none.
    bool is_damaged() const;
    // Bytes of the file that have been used.
    uint64_t bytes_used() const;

private:
    int_type underflow() override;
    std::streamsize xsgetn(char* bytes, std::streamsize size) override;
    void start();
    size_t take(char* bytes, size_t size);
    size_t read_text(char* bytes, size_t size);
    size_t read_source(char* bytes, size_t size);
    std::optional<std::string> read_repeat(uint64_t place, std::string_view frame);

    std::istream& source_;
    std::unique_ptr<Frames> frames_;
    std::string head_;  // the first bytes of the file, until they have been given
    size_t head_next_ = 0;
    uint64_t source_read_ = 0;
    uint64_t fewest_zeros_ = 1;  // so many zero bytes at the end are not the log's
    uint64_t zeros_ = 0;         // zero bytes that have been read, and perhaps end the log
    uint64_t zeros_due_ = 0;     // that do not, and are to be given
    std::string behind_;         // what follows these
    size_t behind_next_ = 0;
    bool started_ = false;
    bool at_end_ = false;
    std::vector<char> block_;  // for one who asks for a byte at a time
};

}  // namespace orvlog::reader
