// SPDX-License-Identifier: GPL-2.0-or-later

#include "clients/pdf/poppler/glyph-runs.h"

#include <algorithm>
#include <utility>

#include <GfxFont.h>

namespace orvlog::pdf_client
{

namespace
{

constexpr size_t kGreatestRun = 60000;

bool same_linear_part(const GGO_Matrix& one, const GGO_Matrix& other)
{
    return std::equal(one.m, one.m + 4, other.m);
}

void begin_run(Canvas& canvas, GfxState* state, const NewGlyph& first)
{
    GlyphRun& run = canvas.text.run;
    run.em_to_content = first.em_to_content;
    run.font_id = first.font_id;
    run.font_size = mean_scale(first.em_to_content) * kPointsPerInch;
    run.vertical = state->getFont()->getWMode() != 0;
    canvas.text.colour = fill_colour(canvas, state);
    canvas.text.paint = fill_state(canvas, state);
}

}  // namespace

void add_to_run(Canvas& canvas, GfxState* state, NewGlyph added)
{
    GlyphRun& run = canvas.text.run;
    if (!run.glyphs.empty() &&
        (run.font_id != added.font_id || !same_linear_part(run.em_to_content, added.em_to_content) ||
         run.glyphs.size() >= kGreatestRun))
        flush_text(canvas);
    const GGO_Point origin = {added.em_to_content.m[4], added.em_to_content.m[5]};
    if (run.glyphs.empty())
    {
        begin_run(canvas, state, added);
    }
    else
    {
        const GGO_Point last = canvas.text.last_origin;
        const GGO_Vector step = {origin.gpf_X - last.gpf_X, origin.gpf_Y - last.gpf_Y};
        run.glyphs.back().advance = transform(inverse(run.em_to_content), step);
    }
    canvas.text.last_origin = origin;
    PlacedGlyph placed;
    placed.glyph = std::move(added.glyph);
    placed.advance = transform(inverse(run.em_to_content), added.advance);
    for (int i = std::min(added.byte_count, 4) - 1; i >= 0; --i)
        placed.text.push_back(static_cast<uint8_t>(added.code >> (8 * i)));
    run.glyphs.push_back(std::move(placed));
}

void flush_text(Canvas& canvas)
{
    if (canvas.text.run.glyphs.empty())
        return;
    const GlyphRun run = std::exchange(canvas.text.run, {});
    canvas.painter->text(run, canvas.text.colour, canvas.text.paint);
}

}  // namespace orvlog::pdf_client
