// Zstandard frames as text. Memory: a block of input, and the decoder's window of at most 128 MB.

#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

namespace orvlog::reader
{

class Frames
{
public:
    // `source` gives the next bytes of the file, fewer than asked for only at its end.
    using Source = std::function<size_t(char* bytes, size_t size)>;
    // The text of a repeat that begins at a place in the file, told what follows its first eight bytes.
    using Repeats = std::function<std::optional<std::string>(uint64_t place, std::string_view frame)>;
    Frames(Source source, Repeats repeats);
    ~Frames();
    Frames(const Frames&) = delete;
    Frames& operator=(const Frames&) = delete;

    // Whether a file that begins like that consists of frames.
    static bool begin_with(std::string_view head);
    // False in a build without Zstandard: all frames are damaged to it.
    static bool can_be_read();

    // The next bytes of text, fewer than `size` only at the end or where the frames are damaged.
    size_t read(char* bytes, size_t size);

    bool is_damaged() const
    {
        return damaged_;
    }
    // Bytes of the frames that have been used.
    uint64_t bytes_used() const
    {
        return used_;
    }

private:
    struct Decoder;

    bool is_at_repeat();
    bool take_repeat();

    Source source_;
    Repeats repeats_;
    std::unique_ptr<Decoder> decoder_;
    uint64_t used_ = 0;
    bool damaged_ = false;
};

// The text of a whole frame, which has `size` bytes, and `prefix` before it when it was made. Nothing if it has others.
std::optional<std::string> frame_text(std::string_view frame, size_t size, std::string_view prefix = {});

// Text as a frame that tells its size and ends in a checksum; nothing where there is no Zstandard. What it has in
// common with `prefix` takes next to no room.
std::string compressed_frame(std::string_view text, int level, std::string_view prefix = {});

}  // namespace orvlog::reader
