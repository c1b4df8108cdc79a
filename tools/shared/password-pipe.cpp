#include "tools/shared/password-pipe.h"

#include <unistd.h>

#include <cerrno>

namespace orvlog::tool
{

namespace
{

// Fits into every pipe, so that nobody has to read for the write to end.
constexpr size_t kLongest = 4096;

}  // namespace

PasswordPipe::PasswordPipe(const std::string& password)
{
    int ends[2];
    const std::string line = password + '\n';
    if (line.size() > kLongest)
        errno = EMSGSIZE;
    if (line.size() > kLongest || pipe(ends) != 0)
        return;
    end_ = ends[0];
    if (write(ends[1], line.data(), line.size()) == static_cast<ssize_t>(line.size()))
        name_ = "/dev/fd/" + std::to_string(end_);
    close(ends[1]);
}

PasswordPipe::~PasswordPipe()
{
    if (end_ >= 0)
        close(end_);
}

}  // namespace orvlog::tool
