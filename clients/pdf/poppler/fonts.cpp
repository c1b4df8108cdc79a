// SPDX-License-Identifier: GPL-2.0-or-later

#include "clients/pdf/poppler/fonts.h"

#include "clients/pdf/poppler/paths.h"

#include <climits>
#include <cmath>
#include <optional>

#include <GfxState.h>
#include <fofi/FoFiTrueType.h>
#include <goo/gmem.h>
#include <splash/SplashFontFile.h>
#include <splash/SplashPath.h>

namespace orvlog::pdf_client
{

namespace
{

// Glyph outlines are taken from the font at this size, in pixels for each em.
constexpr double kOutlineSize = 2048.0;

}  // namespace

TrueTypeData::TrueTypeData(GfxFont& font, XRef* references)
{
    const GfxFontType type = font.getType();
    Ref embedded;
    if ((type != fontTrueType && type != fontCIDType2) || !font.getEmbeddedFontID(&embedded))
        return;
    const std::optional<std::vector<unsigned char>> bytes = font.readEmbFontFile(references);
    if (!bytes || bytes->size() > INT_MAX)
        return;
    if (type == fontTrueType)
    {
        const std::unique_ptr<FoFiTrueType> file = FoFiTrueType::make(bytes->data(), static_cast<int>(bytes->size()));
        int* map = file != nullptr ? static_cast<Gfx8BitFont&>(font).getCodeToGIDMap(file.get()) : nullptr;
        if (map != nullptr)
        {
            codes_.assign(map, map + 256);
            gfree(map);
        }
    }
    else
    {
        GfxCIDFont& cid_font = static_cast<GfxCIDFont&>(font);
        const int* map = cid_font.getCIDToGID();
        const unsigned int count = cid_font.getCIDToGIDLen();
        identity_ = map == nullptr;
        codes_.assign(map, map + (map != nullptr ? count : 0));
    }
    glyphs_ = TrueTypeGlyphs(*bytes);
}

std::vector<uint8_t> TrueTypeData::entry(CharCode code) const
{
    if (identity_)
        return glyphs_.entry(code);
    return code < codes_.size() && codes_[code] > 0 ? glyphs_.entry(static_cast<uint32_t>(codes_[code]))
                                                    : std::vector<uint8_t>();
}

FontEntry::FontEntry(SplashFontFile* file, int32_t id, TrueTypeData true_type)
    : id_(id), true_type_(std::move(true_type))
{
    SplashCoord size[4] = {kOutlineSize, 0, 0, kOutlineSize};
    const SplashCoord text[4] = {1, 0, 0, 1};
    font_.reset(file->makeFont(size, text));
}

int32_t FontEntry::id() const
{
    return id_;
}

std::shared_ptr<const Glyph> FontEntry::glyph(CharCode code)
{
    std::shared_ptr<const Glyph>& entry = glyphs_[code];
    if (entry == nullptr)
    {
        auto glyph = std::make_shared<Glyph>();
        glyph->code = code;
        const std::unique_ptr<SplashPath> outline(font_ != nullptr ? font_->getGlyphPath(static_cast<int>(code))
                                                                   : nullptr);
        if (outline != nullptr)
            glyph->outline = path_of(*outline);
        glyph->true_type = true_type_.entry(code);
        entry = std::move(glyph);
    }
    return entry;
}

double pixels_of_font(GfxState* state)
{
    const double* text = state->getTextMat();
    const double size = std::abs(state->getFontSize()) * std::sqrt(std::abs(text[0] * text[3] - text[1] * text[2]));
    return size > 0 && std::isfinite(size) ? std::exp2(std::round(std::log2(64 / size))) : 1;
}

void choose_font(Fonts& fonts, GfxFont& source, SplashFont& made, double pixels, XRef* references)
{
    const SplashCoord* mat = made.getMatrix();
    // The font's own matrix leads to pixels whose rows run downwards.
    fonts.em_to_user = {{mat[0] / pixels, -mat[1] / pixels, mat[2] / pixels, -mat[3] / pixels, 0, 0}};
    std::shared_ptr<FontEntry>& entry = fonts.known[{source.getID()->num, source.getID()->gen}];
    if (entry == nullptr)
    {
        entry = std::make_shared<FontEntry>(made.getFontFile(), static_cast<int32_t>(fonts.known.size()),
                                            TrueTypeData(source, references));
    }
    fonts.current = entry;
}

}  // namespace orvlog::pdf_client
