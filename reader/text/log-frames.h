// Zstandard frames as text. Memory: a block of input, and the decoder's window of at most 128 MB.

#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <string_view>

namespace orvlog::reader
{

class Frames
{
public:
    // `source` gives the next bytes of the file, fewer than asked for only at its end.
    using Source = std::function<size_t(char* bytes, size_t size)>;
    explicit Frames(Source source);
    ~Frames();
    Frames(const Frames&) = delete;
    Frames& operator=(const Frames&) = delete;

    // Whether a file that begins like that consists of frames.
    static bool begin_with(std::string_view head);

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

    Source source_;
    std::unique_ptr<Decoder> decoder_;
    uint64_t used_ = 0;
    bool damaged_ = false;
};

}  // namespace orvlog::reader
