// What stands in the place of what a redacted log doesn't tell: of the same form and, in bytes, of the same size.

#pragma once

#include "holv-core/ggo/ggo-geometry.h"

#include <cstdint>
#include <map>
#include <string>
#include <string_view>
#include <vector>

namespace orvlog::inspect
{

// Every character but blanks and line ends becomes an x.
std::string masked_text(std::string_view text);
// Every character becomes an x but for those that part a path.
std::string masked_path(std::string_view name);
// "PREFIX-img-10.bin" keeps what stands behind the prefix.
std::string masked_file(std::string_view name);
// The value of a text attribute, with its escapes: one x for each byte.
std::string masked_value(std::string_view value);
// Colourants of processes keep their names, all others are masked.
std::string masked_colourant(std::string_view value);
// "80 97 0 " becomes "120 120 0 ".
std::string masked_numbers(std::string_view value);

// A byte of an image, by its place.
uint8_t image_stand_in(uint64_t place);

// An outline in the place of a glyph's: the edge of its box, in as many edges and segments.
class OutlineStandIn
{
public:
    void start(const GGO_BoxFloat& box, uint32_t edges);
    // Where the next edge begins.
    GGO_Point next_start();
    // The next edge, of so many segments.
    void start_edge(uint32_t segments);
    // The next segment of it, from where the one before ended.
    GGO_Vector next_segment();
    // A box as it may be told: less exact, and not smaller.
    static GGO_BoxFloat rounded(const GGO_BoxFloat& box);

private:
    GGO_Point at(double part) const;

    GGO_BoxFloat box_{};
    uint32_t edges_ = 1;
    uint32_t starts_ = 0;
    uint32_t edge_ = 0;
    uint32_t segments_ = 1;
    uint32_t segment_ = 0;
};

// Glyphs by numbers in the order in which they come first: the same glyph has the same number.
class GlyphNumbers
{
public:
    uint32_t of(uint32_t index);

private:
    std::map<uint32_t, uint32_t> numbers_;
    uint32_t next_ = 1;
    uint32_t next_large_ = 0x10000;
};

// The texts of an ICC profile are taken out, all of it where its parts can't be told. Gives how many texts there were.
uint64_t redact_profile(std::vector<uint8_t>& profile);

// As C's %.17g.
std::string double_text(double value);

}  // namespace orvlog::inspect
