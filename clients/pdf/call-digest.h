// SPDX-License-Identifier: GPL-2.0-or-later
//
// What a painter was asked to paint on a page, as a number and the sums of the images' bytes: two readings of a
// document that ask for the same have the same. What the renderer, and so the logger, does with it has no part in it.

#pragma once

#include "clients/pdf/content/graphics.h"

#include <cstdint>
#include <memory>
#include <vector>

namespace orvlog::pdf_client
{

class CallDigest
{
public:
    // Forgets everything, for the next page.
    void clear();

    void add(uint64_t word);
    void add(double value);
    void add(const GGO_Point& point);
    void add(const GGO_Matrix& matrix);
    void add(const GGO_BoxFloat& box);
    void add(const Path& path);
    void add(const Colour& colour);
    void add(const StrokeStyle& style);
    void add(const std::vector<GradientStop>& stops);
    // All but the clip, whose parts are added when it is made.
    void add(const PaintState& state);
    void add(const GlyphRun& run);
    // Its size and form, and its bytes as far as they are read by the time of a comparison. Of more than 16384 images
    // on a page the rest is taken by size and form only.
    void add(const Image& image);

    // A renderer's answer by which the painter goes on; without the same answers the calls can't be compared.
    void add_answer(bool answer);
    // The page was broken off, so that its calls can't be compared.
    void break_off();

    // True if both got the same answers and painted all, and still were asked for different things. Of an image only
    // what both runs have read counts.
    bool differs_by_itself(const CallDigest& other) const;

private:
    uint64_t value_ = 0;
    uint64_t answers_ = 0;
    bool broken_off_ = false;
    std::vector<std::shared_ptr<const ReadingMarks>> images_;
};

}  // namespace orvlog::pdf_client
