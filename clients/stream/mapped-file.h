// A file of the host as the log streams need it: reserved ahead, mapped in pieces, written at a place, cut. Nothing
// here throws or takes memory from C++. Functions that can fail give 0 or a value of errno.

#ifndef CLIENTS_STREAM_MAPPED_FILE_H
#define CLIENTS_STREAM_MAPPED_FILE_H

#include <cstddef>
#include <cstdint>

namespace orvlog::log_stream
{

struct HostFile
{
    intptr_t handle = -1;
    bool is_file = false;  // an ordinary file, and not a pipe or a device
    bool can_map = false;  // and on a disk of this machine
    uint64_t written = 0;  // bytes by write_next
    uint64_t longest = 0;  // that it may be
};

// Opens for writing, or makes. An ordinary file keeps what is in it, and is held against other writers of this kind
// (EBUSY).
int open_file(HostFile* file, const char* path);
// The same for an ordinary file of that very name: a link, a folder, a pipe or a device is not touched (EEXIST).
int open_ordinary_file(HostFile* file, const char* path);
// Closes; keeps what is there.
int close_file(HostFile* file);
int remove_file(const char* path);
// Whether a failure tells that the disk, or what may be used of it, is full.
bool is_full(int error);

// Makes sure that the disk has room for the bytes up to `end`, which read as zero where the file hasn't been written.
// `changes_size` also makes the file that long.
int reserve_file(HostFile* file, uint64_t from, uint64_t end, bool changes_size);
// Writes zero bytes over reserved ones that nobody has written, where this makes their mapping cheaper: the system
// takes them into memory many pages at a time, and not one at each first touch. What can't be written stays as it is.
void warm_file(HostFile* file, uint64_t from, uint64_t end);
// No file of this process may be longer.
uint64_t longest_file();
int cut_file(HostFile* file, uint64_t length);

// `offset` is a multiple of the granularity and the piece is within the file. Null with errno set on failure.
void* map_file(HostFile* file, uint64_t offset, size_t length);
void unmap_file(void* piece, size_t length);
size_t map_granularity();

// Reads up to `size` bytes; fewer only at the end of the file or after a failure.
size_t read_at(HostFile* file, void* bytes, size_t size, uint64_t offset);
int write_at(HostFile* file, const void* bytes, size_t size, uint64_t offset);
// Behind what was written so. `done` is what was written, also on failure.
int write_next(HostFile* file, const void* bytes, size_t size, size_t* done);

}  // namespace orvlog::log_stream

#endif
