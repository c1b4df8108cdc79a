// The text of a log that tells nothing of what its job said and showed: texts, glyphs, pixels, the descriptions of
// profiles, comments and names are stand-ins. Geometry, colours and structure stay.

#pragma once

#include "inspect/redact/stand-ins.h"
#include "inspect/reduce/log-scan.h"

#include <cstdint>
#include <istream>
#include <map>
#include <streambuf>
#include <string>
#include <string_view>
#include <vector>

namespace orvlog::inspect
{

// What was changed: how many places, by kind.
using Redactions = std::map<std::string, uint64_t>;

// Only what is understood is written; what a damaged log has besides is left out.
class RedactedText : public std::streambuf
{
public:
    // `log` must be in binary mode and lives as long as this. Files that it names are not looked for.
    explicit RedactedText(std::istream& log) : scan_(log) {}

    // What follows tells something once all has been read.
    const Redactions& redactions() const
    {
        return redactions_;
    }
    bool is_log() const
    {
        return scan_.is_log();
    }
    bool is_cut() const
    {
        return scan_.is_cut();
    }
    uint64_t damage() const
    {
        return scan_.damage();
    }

private:
    // What bytes in a BufferUInt8 are.
    enum class Data
    {
        image,
        bitmap,
        glyph,
        profile,
        table
    };

    struct Level
    {
        std::string name;
        bool written = true;
    };

    // Text that waits for its profile to be whole: ahead of its rows, and so many bytes of each row.
    struct Waiting
    {
        std::string text;
        size_t bytes = 0;
    };

    int_type underflow() override;
    void event(const reader::Event& event);
    void open(const reader::Event& event);
    void close(const reader::Event& event);
    void row(const reader::Event& event);
    void comment(const reader::Event& event);
    std::string value(const reader::Event& event, const reader::Attribute& attribute);
    std::string text_value(const reader::Attribute& attribute);
    std::string glyph_value(const reader::Event& event, const reader::Attribute& attribute);
    std::string outline_value(const reader::Event& event, const reader::Attribute& attribute);
    void note_element(const reader::Event& event);
    Data data_here() const;
    bool stands_in(std::string_view name) const;
    bool in_outline() const;
    void byte_row(std::string_view row, std::string_view end);
    void profile_row(std::string_view row, std::string_view end);
    void end_profile();
    void ticket_row(std::string_view line, std::string_view end);
    std::string ticket_line(std::string_view text);
    std::string ticket_string(std::string_view text, size_t begin);
    std::string ticket_profile(std::string_view text);
    void put(std::string_view text);
    void count(const char* kind, uint64_t more = 1)
    {
        redactions_[kind] += more;
    }

    LogScan scan_;
    Redactions redactions_;
    std::string out_;
    std::vector<Level> levels_;
    uint64_t place_ = 0;  // in the bytes of a BufferUInt8
    bool black_is_one_ = true;
    OutlineStandIn outline_;
    GGO_Vector segment_{};  // the present one of the outline
    GGO_Point start_{};
    GlyphNumbers glyphs_;
    bool in_profile_ = false;
    std::vector<Waiting> waiting_;
    std::vector<uint8_t> profile_;
    bool in_string_ = false;  // of a ticket, that goes on in the next line
    bool ended_ = false;
};

}  // namespace orvlog::inspect
