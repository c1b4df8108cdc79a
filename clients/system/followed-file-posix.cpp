#include "clients/system/followed-file.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>

namespace orvlog::system
{

namespace
{

int descriptor(intptr_t file)
{
    return static_cast<int>(file);
}

}  // namespace

FollowedFile::~FollowedFile()
{
    if (file_ >= 0)
        close(descriptor(file_));
}

bool FollowedFile::open(std::string* why)
{
    file_ = ::open(path_.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK);
    struct stat found = {};
    if (file_ < 0 || fstat(descriptor(file_), &found) != 0)
        *why = std::strerror(errno);
    else if (!S_ISREG(found.st_mode))
        *why = "is no file, which alone can be followed";
    else
        return true;
    return false;
}

int64_t FollowedFile::read(void* bytes, size_t size, int64_t position) const
{
    return pread(descriptor(file_), bytes, size, position);
}

bool FollowedFile::is_there(int64_t size, std::string* why) const
{
    struct stat mine = {};
    struct stat named = {};
    if (fstat(descriptor(file_), &mine) != 0 || mine.st_size < size)
        *why = "has become shorter while it was followed";
    else if (stat(path_.c_str(), &named) != 0 || named.st_ino != mine.st_ino || named.st_dev != mine.st_dev)
        *why = "is gone, or another file, since it is followed";
    else
        return true;
    return false;
}

}  // namespace orvlog::system
