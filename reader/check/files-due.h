// The files that a finished job has left beside its log, held against the log: whether all bytes are there that it says
// went into them.

#pragma once

#include <cstdint>
#include <filesystem>
#include <istream>
#include <string>
#include <vector>

namespace orvlog::reader
{

struct FilesLacking
{
    std::vector<std::string> lines;  // of the first lacks, for the user
    uint64_t count = 0;              // of all

    static constexpr size_t kMostLines = 10;
};

// Reads a log from its beginning, whole, coded or cut short. A file lacks something if it isn't there, if it is shorter
// than the reads and direct images that the log has for it, or if it is the log of a kept image and doesn't end with
// the image's release. So it serves a job whose renderer has released what it kept. The names are those of the log,
// seen from `folder`, and are trusted: the log is one's own. Memory goes with the largest call.
FilesLacking find_lacking_files(std::istream& log, const std::filesystem::path& folder);

}  // namespace orvlog::reader
