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

bool holds_frames(std::istream& file)
{
    char head[4] = {};
    file.read(head, sizeof head);
    return orvlog::reader::Frames::begin_with({head, static_cast<size_t>(file.gcount())});
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
    if (index_ == nullptr)
        return nullptr;
    constexpr size_t kLookedAt = 2;
    switch (address.kind)
    {
    case CallAddress::Kind::id:
        return open(pieces_from_id(*index_, address.number), kLookedAt);
    case CallAddress::Kind::line:
        return open(pieces_from_line(*index_, address.number), kLookedAt);
    case CallAddress::Kind::byte:
        return open(pieces_from_byte(*index_, address.number), kLookedAt);
    }
    return nullptr;
}

}  // namespace orvlog::tool
