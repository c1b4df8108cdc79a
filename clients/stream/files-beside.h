// Where a job leaves the files that lie beside its log: the data of its images and the logs of kept images.

#pragma once

#include <filesystem>
#include <string>

namespace orvlog::client_stream
{

// The logger makes such files by relative names, so a program goes to their folder for the time of the job.
struct FilesBeside
{
    // The log's, as an absolute path; the present one for a log that is no file: a device, a pipe.
    std::filesystem::path folder;
    // The prefix by which the session names the files of images, seen from there. One without a folder is taken as it
    // stands, so that these files lie beside the log; any other is what the user meant from the present folder.
    std::string prefix;
    // What stands in the way; empty if nothing does.
    std::string trouble;
};

// `prefix` is empty if image data goes into the log. Nothing is made.
FilesBeside files_beside(const std::string& log, const std::string& prefix);

}  // namespace orvlog::client_stream
