#include "holv-core/gio/gio-file-utils-host.h"

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

const char gio_host_separator = '/';

namespace
{

constexpr size_t kLongestPath = 4096;
constexpr size_t kPiece = 16384;
constexpr char kBeside[] = ".gio-moving-XXXXXX";

bool is_same_file(const struct stat& source, const char* target)
{
    struct stat status;
    return stat(target, &status) == 0 && status.st_dev == source.st_dev && status.st_ino == source.st_ino;
}

// Opens a new file in the folder of `target`, under a name that none has; 0 when it can't be had.
bool open_beside(const char* target, char* path, int* file)
{
    const char* last = std::strrchr(target, '/');
    const size_t folder = last != nullptr ? static_cast<size_t>(last - target) + 1 : 0;
    if (folder + sizeof kBeside > kLongestPath)
        return false;
    std::memcpy(path, target, folder);
    std::memcpy(path + folder, kBeside, sizeof kBeside);
    *file = mkstemp(path);
    return *file >= 0;
}

bool write_all(int to, const char* bytes, size_t count)
{
    while (count != 0)
    {
        const ssize_t written = write(to, bytes, count);
        if (written < 0 && errno == EINTR)
            continue;
        if (written <= 0)
            return false;
        bytes += written;
        count -= static_cast<size_t>(written);
    }
    return true;
}

bool copy_bytes(int from, int to)
{
    char piece[kPiece];
    for (;;)
    {
        const ssize_t count = read(from, piece, sizeof piece);
        if (count < 0 && errno == EINTR)
            continue;
        if (count < 0 || !write_all(to, piece, static_cast<size_t>(count)))
            return false;
        if (count == 0)
            return true;
    }
}

// Owner, permissions and times, as far as the volume and the process's rights go. A program that runs with its owner's
// rights is not to run with another's.
void copy_status(int to, const struct stat& source)
{
    const bool owned = fchown(to, source.st_uid, source.st_gid) == 0;
    const mode_t kept = owned ? S_ISUID | S_ISGID | S_ISVTX | ACCESSPERMS : ACCESSPERMS;
    const struct timespec times[2] = {source.st_atim, source.st_mtim};
    if (fchmod(to, source.st_mode & kept) == 0)
        futimens(to, times);
}

bool copy_file(int from, const struct stat& source, int to)
{
    const bool copied = copy_bytes(from, to);
    if (copied)
        copy_status(to, source);
    return close(to) == 0 && copied;
}

// Copies into a new file beside the target first, so that a copy that fails leaves the target as it was, and so that
// the target is never there in part.
bool replace_by_copy(int from, const struct stat& status, const char* target)
{
    char beside[kLongestPath];
    int to = -1;
    if (!open_beside(target, beside, &to))
        return false;
    if (copy_file(from, status, to) && std::rename(beside, target) == 0)
        return true;
    unlink(beside);
    return false;
}

// Across volumes. A source that can't be removed stays, and the move has succeeded: the target is what was asked for.
int32_t move_by_copy(const char* source, const char* target)
{
    struct stat status;
    // A pipe or a device would be read for ever.
    if (stat(source, &status) != 0 || !S_ISREG(status.st_mode))
        return -1;
    // Two ways to one file, as a rename within a volume has it; removing the source would remove the target.
    if (is_same_file(status, target))
        return 0;
    const int from = open(source, O_RDONLY | O_NONBLOCK | O_CLOEXEC);
    if (from < 0)
        return -1;
    const bool moved = replace_by_copy(from, status, target);
    close(from);
    if (!moved)
        return -1;
    unlink(source);
    return 0;
}

}  // namespace

FILE* gio_host_open_binary(const char* path, uint32_t for_writing)
{
    return std::fopen(path, for_writing != 0 ? "wb" : "rb");
}

int32_t gio_host_status(const char* path, uint32_t* is_directory)
{
    struct stat status;
    if (stat(path, &status) != 0)
        return -1;
    *is_directory = S_ISDIR(status.st_mode) ? 1 : 0;
    return 0;
}

int32_t gio_host_move(const char* source, const char* target)
{
    if (std::rename(source, target) == 0)
        return 0;
    return errno == EXDEV ? move_by_copy(source, target) : -1;
}
