#include "tools/diff/diff-input.h"

#include "tools/shared/source.h"

#include <cerrno>
#include <cstring>
#include <utility>

namespace orvlog::tool
{

DiffInput::DiffInput(std::string name) : name_(std::move(name)), path_(name_)
{
    Source source(name_);
    if (!source.open())
    {
        why_ = name_ + ": " + source.why();
        return;
    }
    size_ = source.size();
    if (name_ != "-")
        return;
    kept_ = std::make_unique<TemporaryFolder>();
    path_ = kept_->path("log");
    if (!kept_->keep(source.stream(), "log"))
        why_ = path_ + ": " + std::strerror(errno != 0 ? errno : EIO);
}

orvlog::inspect::OpenLog DiffInput::opener() const
{
    return [path = path_]() -> std::shared_ptr<std::istream>
    {
        const auto source = std::make_shared<Source>(path);
        return source->open() ? std::shared_ptr<std::istream>(source, &source->stream()) : nullptr;
    };
}

}  // namespace orvlog::tool
