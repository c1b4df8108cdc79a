// What a log is and what is in it, counted in one pass with little memory, whatever its size.

#pragma once

#include "reader/tree/element.h"

#include <cstdint>
#include <functional>
#include <istream>
#include <map>
#include <string>
#include <utility>
#include <vector>

namespace orvlog::reader
{

// How often each of some texts was met. Beyond the most that are remembered, others are only counted.
struct TextCounts
{
    std::map<std::string, uint64_t, std::less<>> texts;
    uint64_t others = 0;

    void add(std::string_view text, size_t most = 1000);
    uint64_t all() const;
};

// Pages that follow one another with the same size.
struct PageRun
{
    uint32_t first = 1;
    uint32_t last = 1;
    uint32_t width = 0;  // pixels
    uint32_t height = 0;
    double width_inches = 0;
    double height_inches = 0;
    double dpi_x = 0;
    double dpi_y = 0;

    bool same_size(const PageRun& other) const;
};

// How often a log has what the tables of an export have a row for, callbacks left aside.
struct RecordCounts
{
    uint64_t operators = 0;
    uint64_t operands = 0;
    uint64_t colours = 0;
    uint64_t paths = 0;
    uint64_t shapes = 0;
    uint64_t clips = 0;
    uint64_t fonts = 0;
};

struct LogInfo
{
    bool is_log = false;
    bool cut = false;
    bool coded = false;
    bool garbled = false;     // the coded bytes are damaged; it is not cut then
    bool compressed = false;  // in Zstandard frames
    uint64_t bytes = 0;       // of the file, without unused room behind the text
    uint64_t text_bytes = 0;
    std::string in_flight;     // the call that a log cut short ends in; empty if it ends between two
    std::string in_flight_id;  // empty if it has none
    uint64_t in_flight_line = 0;
    std::vector<std::pair<std::string, std::string>> versions;  // the attributes of the root
    uint32_t pages = 0;
    std::vector<PageRun> sizes;  // the first 1000
    TextCounts calls;            // by name
    TextCounts callbacks;        // by name
    TextCounts images;           // operands by size and kind
    uint64_t direct_images = 0;
    uint64_t image_bytes = 0;                 // delivered in the log
    uint64_t side_file_bytes = 0;             // delivered in files beside it
    uint64_t kept_logs = 0;                   // logs of kept images that are named
    TextCounts engines;                       // font engines by name
    uint64_t strings = 0;                     // text shapes
    TextCounts glyphs;                        // delivered, by type
    uint64_t ticket_uses = 0;                 // calls that bring one
    TextCounts tickets;                       // with text, by their family
    uint64_t comments = 0;                    // the client's
    std::vector<std::string> first_comments;  // 20 at most, cut behind 200 bytes
    TextCounts warnings;
    uint64_t damage = 0;
    std::vector<Damage> first_damage;  // 100 at most
    RecordCounts records;
};

// `progress` is told how many bytes of the file have been used, and may be empty.
LogInfo read_info(std::istream& log, const std::function<void(uint64_t)>& progress);

}  // namespace orvlog::reader
