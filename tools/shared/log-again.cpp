#include "tools/shared/log-again.h"

#include "tools/shared/input.h"

#include <cerrno>
#include <filesystem>
#include <system_error>

namespace tool
{

LogAgain::LogAgain(const std::string& name) : name_(name), source_(std::make_unique<Source>(name))
{
    std::error_code error;
    const bool again = name != "-" && !is_url(name) && std::filesystem::is_regular_file(name, error);
    if (!source_->open() || again)
        return;
    held_ = std::make_unique<std::stringstream>(std::ios::in | std::ios::out | std::ios::binary);
    *held_ << source_->stream().rdbuf();
}

std::istream& LogAgain::from_start()
{
    if (held_ != nullptr)
    {
        held_->clear();
        held_->seekg(0);
        return *held_;
    }
    if (!fresh_)
        source_ = std::make_unique<Source>(name_);
    fresh_ = false;
    if (!source_->open())
        throw std::system_error(errno, std::generic_category(), name_);
    return source_->stream();
}

}  // namespace tool
