// SPDX-License-Identifier: GPL-2.0-or-later
//
// The decoded data of images that a document paints again and again, so that it is decoded twice at most.

#pragma once

#include <compare>
#include <cstddef>
#include <cstdint>
#include <list>
#include <memory>
#include <vector>

namespace orvlog::pdf_client
{

// Which stream of the document: an image's, or that of the mask that belongs to it.
struct ImageKey
{
    int number = 0;
    int generation = 0;
    bool is_mask = false;

    auto operator<=>(const ImageKey&) const = default;
};

// Holds 64 MB at most, and gives up first what wasn't asked for the longest.
class DecodedImages
{
public:
    using Bytes = std::vector<uint8_t>;

    static constexpr size_t kMostBytes = size_t{64} << 20;

    // What is held of a stream of which `size` bytes are wanted; null if that isn't held.
    std::shared_ptr<const Bytes> find(const ImageKey& key, size_t size);

    // To be told of each painting of an image. True if it is one of the last 256 that were painted, and small enough
    // to be held: then it's worth while to keep what is decoded.
    bool is_painted_again(const ImageKey& key, size_t size);

    // Takes what came of the `size` bytes that are wanted; fewer if the data ends early.
    void keep(const ImageKey& key, size_t size, Bytes bytes);

    size_t bytes_held() const
    {
        return bytes_held_;
    }

private:
    struct Entry
    {
        ImageKey key;
        size_t size;
        std::shared_ptr<const Bytes> bytes;
    };

    std::list<Entry> entries_;     // the latest first
    std::list<ImageKey> painted_;  // the latest first
    size_t bytes_held_ = 0;
};

}  // namespace orvlog::pdf_client
