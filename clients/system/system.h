// What programs do in another way on another system: standard streams, and files. Names of files are UTF-8. What fails
// sets errno.

#pragma once

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <filesystem>
#include <string>
#include <system_error>

namespace orvlog::system
{

// Before anything else in main: the words of the command line are UTF-8, standard streams are bytes, and a file that
// may grow no further is an error.
void begin_program(int* argc, char*** argv);

enum class Stream
{
    output = 1,  // as the system counts them
    error = 2
};

bool is_terminal(Stream stream);
// Whether somebody may be reading along.
bool is_pipe(Stream stream);
// Whether the standard output is a pipe whose other end is closed, which a write alone would tell otherwise.
bool is_reader_gone();
// Ends the process as a write to such a pipe does, where such a write ends processes. Returns elsewhere.
void end_without_reader();
// Characters in a line of the terminal at the standard output; 0 if it doesn't say.
size_t terminal_width();

// Takes all bytes and gives none.
const char* null_device();
// The standard output, as a name to open.
const char* output_device();

// Makes a file that wasn't there, for writing. Null on failure.
std::FILE* create_file(const std::string& name);
// A rename that takes the place of a file that is there.
bool replace_file(const std::string& from, const std::string& to);
// Another name for a file, or where there can be none a copy.
void link_file(const std::filesystem::path& file, const std::filesystem::path& name, std::error_code& error);
// Whether files can be made in a folder.
bool can_write_in(const std::filesystem::path& folder);
// Opens a file for writing at its end, which no other process can do as long as it is open; makes it if it isn't there.
// Null on failure; EWOULDBLOCK says that another process has it.
std::FILE* open_alone(const std::string& name);

// Where files go that don't stay; it may not be there.
std::filesystem::path temporary_base();
// Makes a folder whose name begins with `beginning`, for this user alone. Empty on failure.
std::string make_folder(const std::filesystem::path& beginning);
// A file without a name in the folder for temporary files, for reading and writing; null on failure.
std::FILE* open_unnamed_file();

// What has been flushed is on the disk behind it.
bool write_through(std::FILE* file);

bool seek(std::FILE* file, int64_t offset, int whence);
// -1 on failure.
int64_t tell(std::FILE* file);

// A file by the path of its URL, without escapes.
std::string path_of_url(const std::string& path);

// Bytes that the process has in use of its heap or, where that can't be told, of memory that is its own.
int64_t heap_bytes();

// A word of a command line, so that the system's shell takes it as it is.
std::string shell_word(const std::string& text);

}  // namespace orvlog::system
