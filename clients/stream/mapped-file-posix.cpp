#include "clients/stream/mapped-file.h"

#include <algorithm>
#include <cerrno>
#include <iterator>

#include <fcntl.h>
#include <sys/file.h>
#include <sys/mman.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/uio.h>
#include <unistd.h>

#ifdef __linux__
#include <sys/vfs.h>
#endif

namespace orvlog::log_stream
{

namespace
{

#ifdef __linux__
// File systems whose files another machine, or another program, may change under a mapping.
constexpr uint64_t kElsewhere[] = {
    0x6969,      // NFS
    0x517B,      // SMB
    0xFF534D42,  // CIFS
    0xFE534D42,  // SMB 2
    0x5346414F,  // AFS
    0x6B414653,  // AFS of the kernel
    0x73757245,  // Coda
    0x01021997,  // 9P
    0x00C36400,  // Ceph
    0x65735546,  // FUSE
    0x0BD00BD0,  // Lustre
    0x47504653,  // GPFS
    0x19830326,  // BeeGFS
    0x01161970,  // GFS2
    0x7461636F,  // OCFS2
};

bool is_local(int descriptor)
{
    struct statfs system;
    if (fstatfs(descriptor, &system) != 0)
        return false;
    const uint64_t type = static_cast<uint64_t>(system.f_type) & 0xFFFFFFFF;
    return std::find(std::begin(kElsewhere), std::end(kElsewhere), type) == std::end(kElsewhere);
}
#else
bool is_local(int)
{
    return true;
}
#endif

int descriptor_of(const HostFile* file)
{
    return static_cast<int>(file->handle);
}

int open_descriptor(const char* path, int flags)
{
    int descriptor = -1;
    do
        descriptor = open(path, flags | O_CREAT | O_CLOEXEC, 0666);
    while (descriptor < 0 && errno == EINTR);
    return descriptor;
}

// A pipe that were opened for reading too would never tell that its reader has gone.
int open_for_kind(const char* path, bool* readable)
{
    struct stat status;
    const bool ordinary = stat(path, &status) != 0 || S_ISREG(status.st_mode);
    int descriptor = ordinary ? open_descriptor(path, O_RDWR) : -1;
    *readable = descriptor >= 0;
    if (!ordinary || (descriptor < 0 && errno == EACCES))
        descriptor = open_descriptor(path, O_WRONLY);
    return descriptor;
}

// Holds an ordinary file against others, and closes what can't be held.
int take_descriptor(HostFile* file, int descriptor, bool readable)
{
    file->handle = descriptor;
    file->longest = longest_file();
    struct stat status;
    file->is_file = fstat(descriptor, &status) == 0 && S_ISREG(status.st_mode);
    file->can_map = file->is_file && readable && is_local(descriptor);
    if (!file->is_file || flock(descriptor, LOCK_EX | LOCK_NB) == 0 || errno != EWOULDBLOCK)
        return 0;
    close_file(file);
    return EBUSY;
}

// How much may be written at `offset`. Beyond the limit a write ends the process.
size_t allowed(const HostFile* file, size_t size, uint64_t offset)
{
    const uint64_t longest = file->longest;
    if (!file->is_file || (offset <= longest && size <= longest - offset))
        return size;
    return offset < longest ? static_cast<size_t>(longest - offset) : 0;
}

}  // namespace

int open_file(HostFile* file, const char* path)
{
    *file = {};
    bool readable = false;
    const int descriptor = open_for_kind(path, &readable);
    return descriptor >= 0 ? take_descriptor(file, descriptor, readable) : errno;
}

int open_ordinary_file(HostFile* file, const char* path)
{
    *file = {};
    // A pipe doesn't wait for its other end.
    const int descriptor = open_descriptor(path, O_RDWR | O_NOFOLLOW | O_NONBLOCK);
    if (descriptor < 0)
        return errno == ELOOP || errno == EISDIR || errno == ENXIO ? EEXIST : errno;
    const int error = take_descriptor(file, descriptor, true);
    if (error != 0 || file->is_file)
        return error;
    close_file(file);
    return EEXIST;
}

int close_file(HostFile* file)
{
    const int error = file->handle >= 0 && close(descriptor_of(file)) != 0 && errno != EINTR ? errno : 0;
    file->handle = -1;
    return error;
}

int remove_file(const char* path)
{
    return unlink(path) == 0 ? 0 : errno;
}

bool is_full(int error)
{
    return error == ENOSPC || error == EDQUOT || error == EFBIG;
}

int reserve_file(HostFile* file, uint64_t from, uint64_t end, bool changes_size)
{
    if (changes_size && end > longest_file())
        return EFBIG;
    const auto start = static_cast<off_t>(from);
    const auto length = static_cast<off_t>(end - from);
    int error = 0;
#ifdef __linux__
    if (!changes_size)
    {
        do
            error = fallocate(descriptor_of(file), FALLOC_FL_KEEP_SIZE, start, length) == 0 ? 0 : errno;
        while (error == EINTR);
        return error;
    }
#endif
    if (!changes_size)
        return EOPNOTSUPP;
    do
        error = posix_fallocate(descriptor_of(file), start, length);
    while (error == EINTR);
    return error;
}

void warm_file(HostFile* file, uint64_t from, uint64_t end)
{
    static constexpr char kZeros[4096] = {};
    constexpr size_t kMost = 64;
    iovec pieces[kMost];
    for (iovec& piece : pieces)
        piece = {const_cast<char*>(kZeros), sizeof kZeros};
    while (from < end)
    {
        const uint64_t left = end - from;
        const auto count = std::min<size_t>(kMost, static_cast<size_t>(left / sizeof kZeros));
        const ssize_t done =
            count > 0 ? pwritev(descriptor_of(file), pieces, static_cast<int>(count), static_cast<off_t>(from))
                      : pwrite(descriptor_of(file), kZeros, static_cast<size_t>(left), static_cast<off_t>(from));
        if (done <= 0)
            return;
        from += static_cast<uint64_t>(done);
    }
}

uint64_t longest_file()
{
    rlimit limit;
    if (getrlimit(RLIMIT_FSIZE, &limit) != 0 || limit.rlim_cur == RLIM_INFINITY)
        return INT64_MAX;
    return std::min(static_cast<uint64_t>(limit.rlim_cur), static_cast<uint64_t>(INT64_MAX));
}

int cut_file(HostFile* file, uint64_t length)
{
    int result = 0;
    do
        result = ftruncate(descriptor_of(file), static_cast<off_t>(length));
    while (result != 0 && errno == EINTR);
    return result == 0 ? 0 : errno;
}

void* map_file(HostFile* file, uint64_t offset, size_t length)
{
    void* piece =
        mmap(nullptr, length, PROT_READ | PROT_WRITE, MAP_SHARED, descriptor_of(file), static_cast<off_t>(offset));
    return piece != MAP_FAILED ? piece : nullptr;
}

void unmap_file(void* piece, size_t length)
{
    if (piece != nullptr)
        munmap(piece, length);
}

size_t map_granularity()
{
    return static_cast<size_t>(sysconf(_SC_PAGESIZE));
}

size_t read_at(HostFile* file, void* bytes, size_t size, uint64_t offset)
{
    size_t done = 0;
    while (done < size)
    {
        const ssize_t count = pread(descriptor_of(file), static_cast<char*>(bytes) + done, size - done,
                                    static_cast<off_t>(offset + done));
        if (count < 0 && errno == EINTR)
            continue;
        if (count <= 0)
            break;
        done += static_cast<size_t>(count);
    }
    return done;
}

int write_at(HostFile* file, const void* bytes, size_t size, uint64_t offset)
{
    if (allowed(file, size, offset) < size)
        return EFBIG;
    for (size_t done = 0; done < size;)
    {
        const ssize_t count = pwrite(descriptor_of(file), static_cast<const char*>(bytes) + done, size - done,
                                     static_cast<off_t>(offset + done));
        if (count < 0 && errno == EINTR)
            continue;
        if (count <= 0)
            return count < 0 ? errno : EIO;
        done += static_cast<size_t>(count);
    }
    return 0;
}

int write_next(HostFile* file, const void* bytes, size_t size, size_t* done)
{
    const size_t most = allowed(file, size, file->written);
    for (*done = 0; *done < most;)
    {
        const ssize_t count = write(descriptor_of(file), static_cast<const char*>(bytes) + *done, most - *done);
        if (count < 0 && errno == EINTR)
            continue;
        if (count <= 0)
            return count < 0 ? errno : EIO;
        *done += static_cast<size_t>(count);
        file->written += static_cast<uint64_t>(count);
    }
    return most < size ? EFBIG : 0;
}

}  // namespace orvlog::log_stream
