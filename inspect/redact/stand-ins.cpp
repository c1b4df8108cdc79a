#include "inspect/redact/stand-ins.h"

#include "reader/tree/values.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>
#include <cstdio>

namespace orvlog::inspect
{

std::string masked_text(std::string_view text)
{
    std::string masked(text);
    for (char& c : masked)
        c = c == ' ' || c == '\n' || c == '\r' || c == '\t' ? c : 'x';
    return masked;
}

std::string masked_path(std::string_view name)
{
    std::string masked(name);
    for (char& c : masked)
        c = c == '/' || c == '\\' || c == ':' || c == '.' ? c : 'x';
    return masked;
}

std::string masked_file(std::string_view name)
{
    static constexpr std::array<std::string_view, 3> kKinds = {"-dir-", "-img-", "-attr-"};
    for (const std::string_view kind : kKinds)
    {
        const size_t found = name.rfind(kind);
        const std::string_view rest = found != std::string_view::npos ? name.substr(found + kind.size()) : "";
        if (!rest.empty() && rest.ends_with(".bin") && rest.find_first_not_of("0123456789") == rest.size() - 4)
            return masked_path(name.substr(0, found)) + std::string(name.substr(found));
    }
    return masked_path(name);
}

std::string masked_value(std::string_view value)
{
    return masked_text(reader::to_text(value));
}

std::string masked_colourant(std::string_view value)
{
    static constexpr std::array<std::string_view, 10> kProcesses = {"Cyan",  "Magenta", "Yellow", "Black", "Red",
                                                                    "Green", "Blue",    "Gray",   "All",   "None"};
    const bool process = std::find(kProcesses.begin(), kProcesses.end(), value) != kProcesses.end();
    return process ? std::string(value) : masked_value(value);
}

std::string masked_numbers(std::string_view value)
{
    std::string masked;
    for (const uint32_t number : reader::to_uints(value))
        masked += number == 0 ? "0 " : "120 ";
    return masked;
}

// As floats, these are ordinary numbers, too.
uint8_t image_stand_in(uint64_t place)
{
    return place / 8 % 2 == 0 ? 0x3e : 0x3f;
}

void OutlineStandIn::start(const GGO_BoxFloat& box, uint32_t edges)
{
    box_ = box;
    edges_ = std::max(edges, 1U);
    starts_ = edge_ = segment_ = 0;
    segments_ = 1;
}

// `part` runs from 0 to 1 once around the box, a little within it.
GGO_Point OutlineStandIn::at(double part) const
{
    constexpr double kMargin = 0.0631;  // of no font's grid, so that no point is one of the outline
    const double side = std::clamp(part, 0.0, 1.0) * 4;
    const double x = side < 1 ? side : side < 2 ? 1 : side < 3 ? 3 - side : 0;
    const double y = side < 1 ? 0 : side < 2 ? side - 1 : side < 3 ? 1 : 4 - side;
    const double width = box_.gbf_MaxX - box_.gbf_MinX;
    const double height = box_.gbf_MaxY - box_.gbf_MinY;
    return {box_.gbf_MinX + width * (kMargin + (1 - 2 * kMargin) * x),
            box_.gbf_MinY + height * (kMargin + (1 - 2 * kMargin) * y)};
}

GGO_Point OutlineStandIn::next_start()
{
    return at(static_cast<double>(starts_++) / edges_);
}

void OutlineStandIn::start_edge(uint32_t segments)
{
    ++edge_;
    segments_ = std::max(segments, 1U);
    segment_ = 0;
}

GGO_Vector OutlineStandIn::next_segment()
{
    const double edge = edge_ > 0 ? edge_ - 1 : 0;
    const GGO_Point from = at((edge + static_cast<double>(segment_) / segments_) / edges_);
    const GGO_Point to = at((edge + static_cast<double>(segment_ + 1) / segments_) / edges_);
    ++segment_;
    return {to.gpf_X - from.gpf_X, to.gpf_Y - from.gpf_Y};
}

GGO_BoxFloat OutlineStandIn::rounded(const GGO_BoxFloat& box)
{
    constexpr double kParts = 16;
    return {std::floor(box.gbf_MinX * kParts) / kParts, std::floor(box.gbf_MinY * kParts) / kParts,
            std::ceil(box.gbf_MaxX * kParts) / kParts, std::ceil(box.gbf_MaxY * kParts) / kParts};
}

// Those of 16 bits stay such, of which there are as many as numbers.
uint32_t GlyphNumbers::of(uint32_t index)
{
    constexpr size_t kMost = 1 << 20;
    const auto known = numbers_.find(index);
    if (known != numbers_.end())
        return known->second;
    const uint32_t number = index <= 0xFFFF ? next_++ & 0xFFFF : next_large_++;
    if (numbers_.size() < kMost)
        numbers_.emplace(index, number);
    return number;
}

std::string double_text(double value)
{
    if (std::isnan(value))
        return std::signbit(value) ? "-nan" : "nan";
    std::array<char, 40> text{};
    const auto end = std::to_chars(text.data(), text.data() + text.size(), value, std::chars_format::general, 17);
    return {text.data(), end.ptr};
}

}  // namespace orvlog::inspect
