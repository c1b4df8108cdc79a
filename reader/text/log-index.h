// The index of a repacked log: where its frames, its calls and its pages stand. It is a help and no more: what doesn't
// fit the file is refused, and the log is then read from its beginning.

#pragma once

#include <cstddef>
#include <cstdint>
#include <istream>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace orvlog::reader
{

// One more than any number of a call, and the owner of what belongs to no drawing.
inline constexpr uint64_t kNoNumber = UINT64_MAX;
inline constexpr uint32_t kNobody = UINT32_MAX;

struct LogIndex
{
    // Stands one behind the other, in the file as in the text.
    struct Frame
    {
        uint64_t place = 0;             // of its first byte in the file
        uint32_t file_size = 0;         // bytes of the file
        uint32_t text_size = 0;         // bytes of text
        uint32_t checksum = 0;          // of the text, as the frame itself ends in it
        uint64_t byte = 0;              // of the text, where it begins
        uint64_t line = 1;              // likewise, from 1
        uint64_t calls = 0;             // that begin before it
        uint64_t first_id = kNoNumber;  // of the first paint that begins in it
        bool within = false;            // it begins within a call
        bool repeated = false;          // it is one that decoders skip, since its text stands before, or most of it
    };
    // A page, a resource or a memory context.
    struct Drawing
    {
        uint32_t page = 0;             // from 1; 0 for all others
        std::vector<uint32_t> paints;  // drawings of the resources that it paints, each once, all before it or in it
    };
    // Text up to the next run: calls of one drawing, or what belongs to none, of which the index has a copy.
    struct Run
    {
        uint32_t owner = kNobody;
        uint64_t byte = 0;
        uint64_t line = 1;
    };

    std::vector<Frame> frames;
    uint64_t text_size = 0;
    uint64_t head_size = 0;  // of the text before the first call or comment
    uint64_t calls = 0;
    bool ids_rise = false;   // each paint has a higher id than those before it
    bool has_pages = false;  // what follows is there
    uint64_t warnings = 0;   // of the logger
    uint32_t pages = 0;
    std::vector<Drawing> drawings;
    std::vector<Run> runs;        // from the text's first byte to its last
    std::string kept;             // the text of the runs that belong to nobody, one behind the other
    std::vector<uint64_t> facts;  // what a replay has to know of the whole log
};

// The bytes of the frame, to be skipped by decoders, that holds all but what the table for seeking has.
std::string write_log_index(const LogIndex& index);

// The table for seeking, which ends the file: the frames, and the index's own, if it has a size.
std::string write_seek_table(const LogIndex& index, uint32_t index_size);

// The index of a file, which must be in binary mode and can be read anywhere; its place is lost. Nothing if it has
// none; then `why` tells what is wrong if it isn't just missing.
std::optional<LogIndex> read_log_index(std::istream& file, std::string& why);

// The greatest size that an index is written and read with, unpacked.
inline constexpr size_t kLargestIndex = size_t{64} << 20;

}  // namespace orvlog::reader
