#include "reader/text/log-files.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <ext/stdio_filebuf.h>

namespace orvlog::reader
{

namespace
{

class DescriptorStream : public std::istream
{
public:
    explicit DescriptorStream(int descriptor)
        : std::istream(nullptr), buffer_(descriptor, std::ios::in | std::ios::binary, 1 << 16)
    {
        rdbuf(&buffer_);
    }

private:
    __gnu_cxx::stdio_filebuf<char> buffer_;
};

// Goes down from the root of the path one name at a time, so that no link on the way is followed.
int open_without_links(const std::filesystem::path& path)
{
    int folder = open("/", O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    for (auto name = path.begin(); folder >= 0 && name != path.end(); ++name)
    {
        if (*name == "/")
            continue;
        // Neither waits for the other end of a pipe nor does anything to a device.
        const bool last = std::next(name) == path.end();
        const int how = last ? O_RDONLY | O_NONBLOCK | O_NOCTTY : O_PATH | O_DIRECTORY;
        const int inner = openat(folder, name->c_str(), how | O_NOFOLLOW | O_CLOEXEC);
        const int reason = errno;
        close(folder);
        errno = reason;
        folder = inner;
    }
    return folder;
}

}  // namespace

std::unique_ptr<std::istream> open_ordinary_file(const std::filesystem::path& path, std::error_code& error)
{
    error.clear();
    // What opening alone would disturb is not opened; what has changed since is seen once it is open.
    struct stat status = {};
    if (lstat(path.c_str(), &status) == 0 && !S_ISREG(status.st_mode))
        return nullptr;
    const int descriptor = open_without_links(path);
    if (descriptor < 0)
    {
        error.assign(errno, std::generic_category());
        return nullptr;
    }
    if (fstat(descriptor, &status) != 0 || !S_ISREG(status.st_mode))
    {
        close(descriptor);
        return nullptr;
    }
    return std::make_unique<DescriptorStream>(descriptor);
}

}  // namespace orvlog::reader
