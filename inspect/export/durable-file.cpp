#include "inspect/export/durable-file.h"

#include "clients/system/system.h"

#include <cerrno>
#include <cstring>
#include <stdexcept>

namespace orvlog::inspect
{

DurableFile::DurableFile(const std::filesystem::path& path)
    : name_(path.string()), file_(std::fopen(name_.c_str(), "ab"))
{
    if (file_ == nullptr)
        fail();
}

DurableFile::~DurableFile()
{
    if (file_ != nullptr)
        std::fclose(file_);
}

void DurableFile::fail() const
{
    throw std::runtime_error(name_ + ": " + std::strerror(errno != 0 ? errno : EIO));
}

void DurableFile::append(std::string_view bytes)
{
    if (std::fwrite(bytes.data(), 1, bytes.size(), file_) != bytes.size())
        fail();
}

void DurableFile::sync()
{
    if (std::fflush(file_) != 0 || !system::write_through(file_))
        fail();
}

void DurableFile::close()
{
    std::FILE* file = file_;
    file_ = nullptr;
    if (std::fclose(file) != 0)
        fail();
}

}  // namespace orvlog::inspect
