// The files that a log names: the data of its images and the logs of kept images.
//
// A log may come from anybody. What it names is opened only where its job can have left it: in the folder of the log or
// one that the user gave, or below these, under a name of the form that the library makes, and as an ordinary file.

#pragma once

#include <filesystem>
#include <istream>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace orvlog::reader
{

enum class LogFileKind
{
    image_data,  // "PREFIX-dir-10.bin", "PREFIX-img-10.bin", "PREFIX-attr-10.bin"; the prefix may have folders
    image_log    // "orvlog-S-async-image-0000000011.tmp"
};

// Whether the library makes names of this form; of folders it says nothing.
bool is_log_file_name(std::string_view name, LogFileKind kind);
// "orvlog-S.tmp".
bool is_temporary_log_name(std::string_view name);

// The folder in which the files of a log lie, by the path of the log: empty for one of the current folder, "." for
// "-", which is the standard input, and for a URL.
std::filesystem::path folder_of_log(const std::string& log);

struct LogFile
{
    std::unique_ptr<std::istream> stream;  // null if it is not there, or is not to be read
    std::filesystem::path path;            // where it was found
    // Without a stream: "is missing" or "is not read: ...", to stand behind the name.
    std::string why;
    bool refused = false;  // it is not to be read, whether it is there or not
};

class LogFiles
{
public:
    // `folders` are those that the user gave. They are looked into before the log's.
    explicit LogFiles(const std::string& log, const std::vector<std::string>& folders = {});

    // What is wrong with a folder of the user's; empty if nothing is.
    const std::string& why() const
    {
        return why_;
    }

    // The file that the log knows by this name. One with folders is looked for without them, too. Links are followed
    // as far as they stay in the folder and lead to a file with a name of the same kind.
    LogFile open(const std::string& name, LogFileKind kind) const;

private:
    std::vector<std::filesystem::path> folders_;  // with their links resolved
    std::string why_;
};

// A file that is read from its beginning and can be sought in. Null with the error set if it can't be opened, and
// without an error if it is no ordinary file. `path` has no links; none that comes up meanwhile is followed at its end.
std::unique_ptr<std::istream> open_ordinary_file(const std::filesystem::path& path, std::error_code& error);

// Opens a log. Where a journal lies beside it, the file ends in what the journal holds, as a frame. Null with errno set
// if it can't be opened; `*foreign_journal` says that what lies there doesn't belong to this log.
std::unique_ptr<std::istream> open_log(const std::string& log, bool* foreign_journal = nullptr);

}  // namespace orvlog::reader
