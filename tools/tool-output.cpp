#include "tools/tool-output.h"

#include <cerrno>

namespace tool
{

Output::Output(const std::string& name)
    : name_(name), part_(name == "-" ? "" : name + ".part"),
      file_(part_.empty() ? stdout : std::fopen(part_.c_str(), "wb"))
{
    reason_ = file_ == nullptr ? errno : 0;
    ops_.gio_Write = [](const void* data, uint64_t item_size, uint64_t item_count, void* c) -> uint64_t
    { return static_cast<Output*>(c)->write(data, item_size * item_count) ? item_count : 0; };
    ops_.gio_Flush = [](void*) -> int32_t { return 0; };
    handle_ = {this, GIO_KIND_FORWARD_ONLY, &ops_};
}

Output::~Output()
{
    if (file_ == nullptr || file_ == stdout)
        return;
    std::fclose(file_);
    std::remove(part_.c_str());
}

bool Output::write(const void* data, size_t size)
{
    if (failed_ || std::fwrite(data, 1, size, file_) == size)
        return !failed_;
    failed_ = true;
    reason_ = errno;
    return false;
}

bool Output::finish()
{
    errno = 0;
    const bool flushed = file_ != nullptr && std::fflush(file_) == 0;
    if (!flushed || failed_)
    {
        errno = failed_ || file_ == nullptr ? reason_ : errno;
        return false;
    }
    if (file_ == stdout)
        return true;
    const bool closed = std::fclose(file_) == 0;
    file_ = nullptr;
    if (closed && std::rename(part_.c_str(), name_.c_str()) == 0)
        return true;
    const int reason = errno;
    std::remove(part_.c_str());
    errno = reason;
    return false;
}

}  // namespace tool
