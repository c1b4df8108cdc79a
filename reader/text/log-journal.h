// The journal beside a log of Zstandard frames: what was logged and is in no frame yet.

#pragma once

#include <cstdint>
#include <filesystem>
#include <optional>
#include <string>

namespace orvlog::reader
{

struct Journal
{
    uint64_t frames_end = 0;  // bytes of the log that are whole frames; what follows there doesn't count
    std::string text;         // of the log, behind these frames
};

enum class JournalState
{
    none,
    belongs,  // to the log
    foreign   // is none, or of another log
};

// Looks for the journal of the log at `path`, which has to consist of frames or be empty.
JournalState read_journal(const std::filesystem::path& path, Journal& journal);

// Text as a Zstandard frame that isn't smaller than the text.
std::string stored_frame(const std::string& text);

}  // namespace orvlog::reader
