// A file that is read while another process writes it.

#pragma once

#include <cstddef>
#include <cstdint>
#include <string>

namespace orvlog::system
{

class FollowedFile
{
public:
    explicit FollowedFile(std::string path) : path_(std::move(path)) {}
    FollowedFile(const FollowedFile&) = delete;
    FollowedFile& operator=(const FollowedFile&) = delete;
    ~FollowedFile();

    // False with the reason in `why`.
    bool open(std::string* why);
    // Up to `size` bytes from a place on; -1 with errno set on failure. 0 at the end.
    int64_t read(void* bytes, size_t size, int64_t position) const;
    // Whether the file under the name still is the one that is read, with at least `size` bytes. False with the reason
    // in `why`.
    bool is_there(int64_t size, std::string* why) const;

private:
    std::string path_;
    intptr_t file_ = -1;
};

}  // namespace orvlog::system
