// SPDX-License-Identifier: GPL-2.0-or-later
//
// Records with a part of varying length at their end lie in blocks of bytes.

#pragma once

#include <cstddef>
#include <vector>

namespace orvlog::pdf_client
{

using Block = std::vector<std::byte>;

template <typename Record> Record* record_in(Block& block)
{
    return reinterpret_cast<Record*>(block.data());
}

template <typename Record> const Record* record_in(const Block& block)
{
    return reinterpret_cast<const Record*>(block.data());
}

// What begins at that offset.
template <typename Part> Part* part_in(Block& block, size_t offset)
{
    return reinterpret_cast<Part*>(block.data() + offset);
}

}  // namespace orvlog::pdf_client
