#include "tools/shared/indexed-log.h"

#include "reader/text/log-frames.h"
#include "tools/shared/command.h"

#include <filesystem>
#include <fstream>
#include <optional>
#include <string_view>
#include <system_error>
#include <utility>
#include <vector>

namespace orvlog::tool
{

namespace
{

using orvlog::reader::CallAddress;
using orvlog::reader::LogIndex;
using orvlog::reader::LogPiece;
using orvlog::reader::LogPieces;
using orvlog::reader::Stretch;

bool holds_frames(std::istream& file)
{
    char head[4] = {};
    file.read(head, sizeof head);
    return orvlog::reader::Frames::begin_with({head, static_cast<size_t>(file.gcount())});
}

std::optional<Stretch> stretch_of(const LogIndex& index, const CallAddress& address)
{
    switch (address.kind)
    {
    case CallAddress::Kind::id:
        return stretch_of_ids(index, address.number, address.number);
    case CallAddress::Kind::line:
        return stretch_of_line(index, address.number);
    case CallAddress::Kind::byte:
        break;
    }
    return stretch_of_byte(index, address.number);
}

}  // namespace

IndexedLog::IndexedLog(const std::string& name) : name_(name)
{
    std::error_code none;
    if (name == "-" || !std::filesystem::is_regular_file(name, none))
        return;
    std::ifstream file(name, std::ios::binary);
    if (!holds_frames(file))
        return;
    std::string why;
    std::optional<LogIndex> index = orvlog::reader::read_log_index(file, why);
    if (index)
        index_ = std::make_shared<const LogIndex>(*std::move(index));
    else if (!why.empty())
        refuse(why);
}

void IndexedLog::refuse(const std::string& why) const
{
    say(name_ + ": " + why + "; the log is read from its beginning");
}

std::unique_ptr<LogPieces> IndexedLog::open(std::vector<LogPiece> pieces, size_t looked_at) const
{
    if (pieces.empty())
        return nullptr;
    auto found = std::make_unique<LogPieces>(std::make_unique<std::ifstream>(name_, std::ios::binary), index_,
                                             std::move(pieces));
    if (found->fit(looked_at))
        return found;
    refuse("the index does not fit the frames");
    return nullptr;
}

std::unique_ptr<LogPieces> IndexedLog::pages(uint32_t first, uint32_t last, reader::Resources resources) const
{
    if (index_ == nullptr || !index_->has_pages || first > index_->pages)
        return nullptr;
    return open(pieces_of_pages(*index_, first, last, resources), SIZE_MAX);
}

std::unique_ptr<LogPieces> IndexedLog::from_call(const CallAddress& address) const
{
    constexpr size_t kLookedAt = 2;
    const std::optional<Stretch> stretch = index_ != nullptr ? stretch_of(*index_, address) : std::nullopt;
    return stretch ? open(pieces_from(*index_, *stretch), kLookedAt) : nullptr;
}

bool IndexedLog::has_call(const CallAddress& address, const Stretch& stretch) const
{
    const std::unique_ptr<LogPieces> there = open(pieces_of(*index_, stretch), SIZE_MAX);
    if (there == nullptr)
        return false;
    reader::ElementReader elements(*there, reader::LogForm::log, reader::Data::skip);
    elements.split_nested = true;
    while (const reader::Element* element = elements.next())
        if (reader::is_at(*element, address))
            return true;
    return false;
}

std::unique_ptr<LogPieces> IndexedLog::up_to_call(const CallAddress& address, uint32_t first, uint32_t last,
                                                  reader::Resources resources) const
{
    if (index_ == nullptr || !index_->has_pages)
        return nullptr;
    const std::optional<Stretch> stretch = stretch_of(*index_, address);
    if (!stretch || !has_call(address, *stretch))
        return nullptr;
    return open(pieces_of_pages(*index_, first, last, resources, stretch), SIZE_MAX);
}

std::unique_ptr<LogPieces> IndexedLog::up_to_paints(uint64_t first, uint64_t last) const
{
    if (index_ == nullptr || !index_->has_pages)
        return nullptr;
    const std::optional<Stretch> stretch = stretch_of_ids(*index_, first, last);
    return stretch ? open(pieces_of_pages(*index_, 1, 0, reader::Resources::none, stretch), SIZE_MAX) : nullptr;
}

std::optional<uint64_t> IndexedLog::warnings() const
{
    return index_ != nullptr && index_->has_pages ? std::optional(index_->warnings) : std::nullopt;
}

}  // namespace orvlog::tool
