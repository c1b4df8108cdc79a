#include "tools/shared/log-again.h"

#include "reader/text/log-files.h"
#include "tools/shared/source.h"

#include <cerrno>
#include <cstring>
#include <filesystem>
#include <system_error>

namespace orvlog::tool
{

bool LogAgain::open()
{
    std::error_code none;
    const bool again = name_ != "-" && std::filesystem::is_regular_file(name_, none);
    path_ = name_;
    if (!again && !hold())
        return false;
    const auto size = std::filesystem::file_size(path_, none);
    size_ = none ? 0 : size;
    const std::unique_ptr<std::istream> first = pass();
    if (first != nullptr)
        why_ = trouble_with_frames(*first);
    return first != nullptr && why_.empty();
}

bool LogAgain::hold()
{
    Source source(name_);
    if (!source.open())
    {
        why_ = source.why();
        return false;
    }
    folder_ = std::make_unique<TemporaryFolder>();
    path_ = folder_->path("log");
    if (folder_->keep(source.stream(), "log"))
        return true;
    why_ = std::strerror(errno != 0 ? errno : EIO);
    return false;
}

std::unique_ptr<std::istream> LogAgain::page_alone()
{
    if (page_ != 0 && indexed_ == nullptr)
        indexed_ = std::make_unique<IndexedLog>(path_);
    return page_ != 0 ? indexed_->pages(page_, page_, reader::Resources::painted) : nullptr;
}

std::unique_ptr<std::istream> LogAgain::pass()
{
    if (std::unique_ptr<std::istream> page = page_alone(); page != nullptr)
        return page;
    bool foreign_journal = false;
    errno = 0;
    std::unique_ptr<std::istream> log = orvlog::reader::open_log(path_, &foreign_journal);
    if (log == nullptr)
        why_ = std::strerror(errno != 0 ? errno : EIO);
    return log;
}

std::istream& LogAgain::from_start()
{
    stream_.reset();
    stream_ = pass();
    if (stream_ == nullptr)
        throw std::system_error(errno, std::generic_category(), name_);
    return *stream_;
}

}  // namespace orvlog::tool
