// SPDX-License-Identifier: GPL-2.0-or-later

#include "clients/pdf/poppler/type3-glyphs.h"

#include "clients/pdf/poppler/glyph-runs.h"

#include <algorithm>

#include <GfxFont.h>

namespace orvlog::pdf_client
{

namespace
{

// Rows that are in memory.
class HeldRows : public ImageRows
{
public:
    HeldRows(std::vector<uint8_t> rows, size_t row_bytes) : rows_(std::move(rows)), row_bytes_(row_bytes) {}

    bool restart() override
    {
        position_ = 0;
        return true;
    }

    size_t read_row(uint8_t* row, size_t size) override
    {
        if (position_ + row_bytes_ > rows_.size())
            return 0;
        const size_t count = std::min(size, row_bytes_);
        std::copy_n(&rows_[position_], count, row);
        position_ += row_bytes_;
        return count;
    }

private:
    std::vector<uint8_t> rows_;
    size_t row_bytes_;
    size_t position_ = 0;
};

void give_up(const Type3Capture& capture, Canvas& canvas)
{
    flush_text(canvas);
    capture.font->glyphs[capture.code] = nullptr;
    for (const std::function<void(Painter&)>& paint : capture.held_back)
        paint(*canvas.painter);
}

std::shared_ptr<Type3Font> font_of(Type3Glyphs& type3, GfxFont& source)
{
    std::shared_ptr<Type3Font>& font = type3.fonts[{source.getID()->num, source.getID()->gen}];
    if (font == nullptr)
    {
        font = std::make_shared<Type3Font>();
        font->id = -static_cast<int32_t>(type3.fonts.size());
    }
    return font;
}

void add_glyph(Canvas& canvas, GfxState* state, NewGlyph glyph)
{
    const bool pattern = state->getFillColorSpace()->getMode() == csPattern;
    if (!pattern && !state->getFillColorSpace()->isNonMarking())
        add_to_run(canvas, state, std::move(glyph));
}

void copy_bitmap(const Image& stencil, Glyph& glyph)
{
    const size_t row = stencil.row_bytes();
    glyph.bitmap.resize(row * stencil.height);
    bool more = stencil.rows->restart();
    for (uint32_t y = 0; y < stencil.height && more; ++y)
        more = stencil.rows->read_row(&glyph.bitmap[y * row], row) == row;
    glyph.bitmap_width = stencil.width;
    glyph.bitmap_height = stencil.height;
}

}  // namespace

bool begin_type3_glyph(Type3Glyphs& type3, Canvas& canvas, GfxState* state, GGO_Vector advance, CharCode code)
{
    flush_capture(type3, canvas);
    if (state->getRender() == 3)
        return true;
    const GGO_Matrix place = user_to_content(canvas, state);
    const std::shared_ptr<GfxFont>& source = state->getFont();
    if (source == nullptr || !finite(place) || determinant(place) == 0)
    {
        type3.open.emplace_back();
        return false;
    }
    const std::shared_ptr<Type3Font> font = font_of(type3, *source);
    const std::vector<SavedState>& saved = canvas.content.saved;
    const GGO_Vector step = transform(saved.empty() ? place : saved.back().user_to_content, advance);
    const auto known = font->glyphs.find(code);
    if (known == font->glyphs.end())
    {
        type3.capture = std::make_unique<Type3Capture>();
        type3.capture->glyph = std::make_shared<Glyph>();
        type3.capture->glyph->code = code;
        type3.capture->font = font;
        type3.capture->glyph_to_content = place;
        type3.capture->advance = step;
        type3.capture->code = code;
        type3.open.emplace_back();
        return false;
    }
    if (known->second == nullptr)
    {
        flush_text(canvas);
        type3.open.emplace_back();
        return false;
    }
    add_glyph(canvas, state, {known->second, font->id, place, step, code, 1});
    return true;
}

void note_uncoloured(Type3Glyphs& type3, Canvas& canvas, GfxState* state)
{
    if (type3.capture != nullptr)
        type3.capture->uncoloured = true;
    // A pattern is no colour that could be handed on.
    if (!type3.open.empty() && state->getFillColorSpace()->getMode() != csPattern)
        type3.open.back() = fill_colour(canvas, state);
}

const Colour* colour_of_glyph(const Type3Glyphs& type3)
{
    return !type3.open.empty() && type3.open.back() ? &*type3.open.back() : nullptr;
}

void end_type3_glyph(Type3Glyphs& type3, Canvas& canvas, GfxState* state)
{
    const std::unique_ptr<Type3Capture> capture = std::move(type3.capture);
    if (!type3.open.empty())
        type3.open.pop_back();
    if (capture == nullptr)
        return;
    if (!capture->uncoloured)
    {
        give_up(*capture, canvas);
        return;
    }
    capture->font->glyphs[capture->code] = capture->glyph;
    add_glyph(canvas, state,
              {capture->glyph, capture->font->id, capture->glyph_to_content, capture->advance, capture->code, 1});
}

bool capture_fill(Type3Glyphs& type3, Canvas& canvas, const Path& path, Winding winding, const Colour& colour,
                  const PaintState& state)
{
    if (type3.capture == nullptr)
        return false;
    Type3Capture& capture = *type3.capture;
    Glyph& glyph = *capture.glyph;
    const bool fits = capture.uncoloured && glyph.bitmap_width == 0 &&
                      (!capture.has_fill || (glyph.winding == winding && winding == Winding::non_zero));
    if (!fits)
    {
        flush_capture(type3, canvas);
        return false;
    }
    capture.has_fill = true;
    glyph.winding = winding;
    glyph.outline.append(path.transformed(inverse(capture.glyph_to_content)));
    capture.held_back.push_back([path, winding, colour, state](Painter& painter)
                                { painter.fill(path, winding, colour, state); });
    return true;
}

bool capture_stencil(Type3Glyphs& type3, Canvas& canvas, const Image& stencil, const GGO_Matrix& pixels_to_content,
                     const Colour& colour, const PaintState& state)
{
    constexpr uint32_t kGreatestSide = 4096;
    if (type3.capture == nullptr)
        return false;
    Type3Capture& capture = *type3.capture;
    Glyph& glyph = *capture.glyph;
    if (!capture.uncoloured || capture.has_fill || glyph.bitmap_width > 0 || stencil.width > kGreatestSide ||
        stencil.height > kGreatestSide)
    {
        flush_capture(type3, canvas);
        return false;
    }
    copy_bitmap(stencil, glyph);
    glyph.bitmap_to_em = multiply(pixels_to_content, inverse(capture.glyph_to_content));
    Image held = stencil;
    held.rows = std::make_shared<HeldRows>(glyph.bitmap, stencil.row_bytes());
    capture.held_back.push_back([held, pixels_to_content, colour, state](Painter& painter)
                                { painter.stencil(held, pixels_to_content, colour, state); });
    return true;
}

void flush_capture(Type3Glyphs& type3, Canvas& canvas)
{
    const std::unique_ptr<Type3Capture> capture = std::move(type3.capture);
    if (capture != nullptr)
        give_up(*capture, canvas);
}

}  // namespace orvlog::pdf_client
