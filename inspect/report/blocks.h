// The blocks of data in a report.

#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <span>
#include <string>
#include <string_view>

namespace orvlog::inspect
{

// Bytes that are deflated as they come.
class Deflated
{
public:
    Deflated();
    ~Deflated();
    Deflated(const Deflated&) = delete;
    Deflated& operator=(const Deflated&) = delete;

    void add(const void* data, size_t size);
    void add(std::string_view text)
    {
        add(text.data(), text.size());
    }
    // How many bytes were added.
    uint64_t size() const
    {
        return size_;
    }
    // How many bytes have come of them so far.
    size_t deflated() const
    {
        return bytes_.size();
    }
    // What has come of them, with zlib's head. Nothing is added behind this.
    const std::string& finish();

private:
    struct Stream;

    void run(int flush);

    std::unique_ptr<Stream> stream_;
    std::string bytes_;
    uint64_t size_ = 0;
    bool finished_ = false;
};

// Bytes in base64, with its end filled up.
std::string base64(std::string_view bytes);

// Writes blocks into the file. They are named in the order in which they come: "b0", "b1" and so on.
class Blocks
{
public:
    // `write` gives false when the file can take no more; nothing is written behind this.
    using Write = std::function<bool(std::string_view text)>;

    explicit Blocks(Write write) : write_(std::move(write)) {}

    // Gives the block's name.
    std::string add(Deflated& block);
    std::string add_deflated(std::string_view bytes);
    // As it is; for what is compressed already.
    std::string add_plain(std::string_view bytes);

    // Of the file.
    uint64_t written() const
    {
        return written_;
    }
    bool good() const
    {
        return good_;
    }

private:
    std::string put(std::string_view bytes, const char* coding);
    void put_base64(std::string_view bytes);
    void write(std::string_view text);

    Write write_;
    uint64_t written_ = 0;
    uint64_t count_ = 0;
    bool good_ = true;
};

}  // namespace orvlog::inspect
