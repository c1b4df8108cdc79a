#include "inspect/export/beside-files.h"

#include <algorithm>
#include <array>

namespace orvlog::inspect
{

namespace
{

using reader::LogFileKind;

constexpr size_t kMostFiles = 1 << 16;

// Gives up to `count` bytes; how many were there.
uint64_t read_some(std::istream& file, uint64_t count, const BesideFiles::Take& take)
{
    std::array<uint8_t, 1 << 14> piece;
    uint64_t done = 0;
    while (done < count)
    {
        const auto most = static_cast<std::streamsize>(std::min<uint64_t>(piece.size(), count - done));
        file.read(reinterpret_cast<char*>(piece.data()), most);
        const auto got = static_cast<size_t>(std::max<std::streamsize>(file.gcount(), 0));
        if (got == 0)
            break;
        take({piece.data(), got});
        done += got;
    }
    return done;
}

}  // namespace

// Null for one that was opened before.
std::unique_ptr<std::istream> BesideFiles::open_once(std::string_view name, LogFileKind kind)
{
    if (!files_ || had_.size() >= kMostFiles)
        return nullptr;
    reader::LogFile file = files_->open(std::string(name), kind);
    const bool good = file.stream != nullptr && had_.insert(file.path.string()).second;
    return good ? std::move(file.stream) : nullptr;
}

bool BesideFiles::next(std::string_view name, uint64_t count, const Take& take)
{
    if (!files_)
        return false;
    if (present_name_ != name)
    {
        present_name_ = name;
        present_ = files_->open(present_name_, LogFileKind::image_data);
    }
    const std::string path = present_.path.string();
    if (present_.stream == nullptr || (places_.size() >= kMostFiles && !places_.contains(path)))
        return false;
    uint64_t& place = places_[path];
    const uint64_t begin = place;
    place += count;
    if (!take)
        return true;
    present_.stream->clear();
    present_.stream->seekg(static_cast<std::streamoff>(begin));
    return read_some(*present_.stream, count, take) == count;
}

bool BesideFiles::all(std::string_view name, const Take& take)
{
    const std::unique_ptr<std::istream> file = open_once(name, LogFileKind::image_data);
    if (file == nullptr)
        return false;
    read_some(*file, UINT64_MAX, take);
    return true;
}

std::unique_ptr<std::istream> BesideFiles::kept_log(std::string_view name)
{
    return open_once(name, LogFileKind::image_log);
}

}  // namespace orvlog::inspect
