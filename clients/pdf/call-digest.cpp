// SPDX-License-Identifier: GPL-2.0-or-later

#include "clients/pdf/call-digest.h"

#include <algorithm>
#include <bit>

namespace orvlog::pdf_client
{

namespace
{

constexpr size_t kMostImages = 16384;

uint64_t mixed(uint64_t sum, uint64_t word)
{
    sum = (sum ^ word) * 0x9E3779B97F4A7C15U;
    return sum ^ sum >> 29;
}

bool agree(const ReadingMarks& one, const ReadingMarks& other)
{
    const size_t both = std::min(one.size(), other.size());
    return std::equal(one.begin(), one.begin() + static_cast<std::ptrdiff_t>(both), other.begin());
}

}  // namespace

void CallDigest::clear()
{
    *this = CallDigest();
}

void CallDigest::add(uint64_t word)
{
    value_ = mixed(value_, word);
}

void CallDigest::add(double value)
{
    add(std::bit_cast<uint64_t>(value));
}

void CallDigest::add(const GGO_Point& point)
{
    add(point.gpf_X);
    add(point.gpf_Y);
}

void CallDigest::add(const GGO_Matrix& matrix)
{
    for (const double value : matrix.m)
        add(value);
}

void CallDigest::add(const GGO_BoxFloat& box)
{
    add(GGO_Point{box.gbf_MinX, box.gbf_MinY});
    add(GGO_Point{box.gbf_MaxX, box.gbf_MaxY});
}

void CallDigest::add(const Path& path)
{
    add(uint64_t{path.subpaths.size()});
    for (const Subpath& subpath : path.subpaths)
    {
        add(uint64_t{subpath.closed});
        add(uint64_t{subpath.segments.size()});
        add(subpath.start);
        for (const Segment& segment : subpath.segments)
        {
            add(uint64_t{segment.curve});
            if (segment.curve)
            {
                add(segment.control1);
                add(segment.control2);
            }
            add(segment.end);
        }
    }
}

void CallDigest::add(const Colour& colour)
{
    add(uint64_t{colour.space.channels});
    for (const float value : colour.value)
        add(double{value});
    if (colour.space.definition != nullptr)
    {
        add(uint64_t{colour.space.definition->profile.size()});
        std::for_each(std::begin(colour.space.definition->gamma), std::end(colour.space.definition->gamma),
                      [this](double value) { add(value); });
    }
}

void CallDigest::add(const StrokeStyle& style)
{
    add(style.width);
    add(uint64_t{style.cap} << 8 | style.join);
    add(style.miter_limit);
    add(style.dash_start);
    for (const double dash : style.dashes)
        add(dash);
}

void CallDigest::add(const std::vector<GradientStop>& stops)
{
    for (const GradientStop& stop : stops)
    {
        add(stop.position);
        add(stop.colour);
    }
}

void CallDigest::add(const PaintState& state)
{
    add(state.alpha);
    add(static_cast<uint64_t>(state.blend));
    if (state.mask != nullptr)
    {
        add(uint64_t{state.mask->width} << 32 | state.mask->height);
        add(state.mask->pixels_to_content);
    }
}

void CallDigest::add(const GlyphRun& run)
{
    add(run.em_to_content);
    add(static_cast<uint64_t>(run.font_id));
    for (const PlacedGlyph& placed : run.glyphs)
    {
        add(uint64_t{placed.glyph->code});
        add(placed.glyph->outline);
        for (const uint8_t byte : placed.glyph->bitmap)
            add(uint64_t{byte});
        add(GGO_Point{placed.advance.gvf_X, placed.advance.gvf_Y});
    }
}

void CallDigest::add(const Image& image)
{
    add(uint64_t{image.width} << 32 | image.height);
    add(uint64_t{image.bits} << 32 | image.space.channels);
    for (const uint8_t entry : image.index_table)
        add(uint64_t{entry});
    std::shared_ptr<const ReadingMarks> marks = image.rows != nullptr ? image.rows->marks() : nullptr;
    if (marks != nullptr && images_.size() < kMostImages)
        images_.push_back(std::move(marks));
}

void CallDigest::add_answer(bool answer)
{
    answers_ = mixed(answers_, uint64_t{answer} + 1);
}

void CallDigest::break_off()
{
    broken_off_ = true;
}

bool CallDigest::differs_by_itself(const CallDigest& other) const
{
    if (broken_off_ || other.broken_off_ || answers_ != other.answers_)
        return false;
    return value_ != other.value_ ||
           !std::equal(images_.begin(), images_.end(), other.images_.begin(), other.images_.end(),
                       [](const auto& one, const auto& two) { return agree(*one, *two); });
}

}  // namespace orvlog::pdf_client
