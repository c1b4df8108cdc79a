// A repacked log, of which some pages or what follows from a call on are read without the rest.

#pragma once

#include "reader/look/call-address.h"
#include "reader/text/log-pieces.h"

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace orvlog::tool
{

class IndexedLog
{
public:
    // Looks for the index of a log: only files that are repacked have one. What is wrong with one that doesn't fit is
    // said on standard error; such a log has none then.
    explicit IndexedLog(const std::string& name);

    // The pages; null if they can't be read alone. The log has more pages than `last` or just so many, or `last` is as
    // high as can be.
    std::unique_ptr<reader::LogPieces> pages(uint32_t first, uint32_t last, reader::Resources resources) const;
    // What stands from the call on, or from a little before; null likewise.
    std::unique_ptr<reader::LogPieces> from_call(const reader::CallAddress& address) const;
    // What the drawing of the call has up to it, and perhaps some more, besides what the pages have up to it; without
    // pages none. Null likewise, and if there is no such call.
    std::unique_ptr<reader::LogPieces> up_to_call(const reader::CallAddress& address, uint32_t first, uint32_t last,
                                                  reader::Resources resources) const;
    // The same of the drawings in which paints of these ids are, if there are any.
    std::unique_ptr<reader::LogPieces> up_to_paints(uint64_t first, uint64_t last) const;
    // Warnings of the logger in it; nothing if the index doesn't tell.
    std::optional<uint64_t> warnings() const;

private:
    bool has_call(const reader::CallAddress& address, const reader::Stretch& stretch) const;
    std::unique_ptr<reader::LogPieces> open(std::vector<reader::LogPiece> pieces, size_t looked_at) const;
    void refuse(const std::string& why) const;

    std::string name_;
    std::shared_ptr<const reader::LogIndex> index_;
};

}  // namespace orvlog::tool
