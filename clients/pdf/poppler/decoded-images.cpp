// SPDX-License-Identifier: GPL-2.0-or-later

#include "clients/pdf/poppler/decoded-images.h"

#include <algorithm>
#include <utility>

namespace orvlog::pdf_client
{

namespace
{

constexpr size_t kMostPainted = 256;

}  // namespace

std::shared_ptr<const DecodedImages::Bytes> DecodedImages::find(const ImageKey& key, size_t size)
{
    const auto found = std::find_if(entries_.begin(), entries_.end(),
                                    [&](const Entry& entry) { return entry.key == key && entry.size == size; });
    if (found == entries_.end())
        return nullptr;
    entries_.splice(entries_.begin(), entries_, found);
    return found->bytes;
}

bool DecodedImages::is_painted_again(const ImageKey& key, size_t size)
{
    const auto found = std::find(painted_.begin(), painted_.end(), key);
    if (found != painted_.end())
    {
        painted_.splice(painted_.begin(), painted_, found);
        return size <= kMostBytes;
    }
    painted_.push_front(key);
    if (painted_.size() > kMostPainted)
        painted_.pop_back();
    return false;
}

void DecodedImages::keep(const ImageKey& key, size_t size, Bytes bytes)
{
    if (bytes.size() > kMostBytes || find(key, size) != nullptr)
        return;
    bytes_held_ += bytes.size();
    entries_.push_front({key, size, std::make_shared<const Bytes>(std::move(bytes))});
    while (bytes_held_ > kMostBytes)
    {
        bytes_held_ -= entries_.back().bytes->size();
        entries_.pop_back();
    }
}

}  // namespace orvlog::pdf_client
