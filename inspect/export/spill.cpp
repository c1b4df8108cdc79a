#include "inspect/export/spill.h"

#include <cerrno>
#include <cstring>
#include <stdexcept>
#include <vector>

namespace orvlog::inspect
{

namespace
{

[[noreturn]] void no_room()
{
    throw std::runtime_error(std::string("temporary file: ") + std::strerror(errno != 0 ? errno : EIO));
}

}  // namespace

void Spill::put_out()
{
    errno = 0;
    if (file_ == nullptr)
        file_ = make_temporary_file();
    if (file_ == nullptr || std::fwrite(bytes_.data(), 1, bytes_.size(), file_.get()) != bytes_.size())
        no_room();
    bytes_.clear();
}

void Spill::add(std::string_view bytes)
{
    bytes_ += bytes;
    size_ += bytes.size();
    if (bytes_.size() > kMost)
        put_out();
}

void Spill::read(const std::function<void(std::string_view)>& take)
{
    if (file_ != nullptr)
    {
        put_out();
        if (std::fflush(file_.get()) != 0 || std::fseek(file_.get(), 0, SEEK_SET) != 0)
            no_room();
        std::vector<char> piece(kMost);
        uint64_t left = size_;
        while (left > 0)
        {
            const size_t got = std::fread(piece.data(), 1, piece.size(), file_.get());
            if (got == 0)
                no_room();
            take({piece.data(), got});
            left -= got;
        }
        return;
    }
    if (!bytes_.empty())
        take(bytes_);
}

}  // namespace orvlog::inspect
