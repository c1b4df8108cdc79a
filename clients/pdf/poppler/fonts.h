// SPDX-License-Identifier: GPL-2.0-or-later
//
// The glyphs of poppler's fonts, each made once. Type 3 fonts, whose glyphs are page content, are in type3-glyphs.

#pragma once

#include "clients/pdf/content/graphics.h"
#include "clients/pdf/text/true-type.h"

#include <map>
#include <memory>
#include <utility>
#include <vector>

#include <CharTypes.h>
#include <GfxFont.h>
#include <splash/SplashFont.h>

class GfxState;
class XRef;

namespace orvlog::pdf_client
{

// The TrueType data behind a font's codes; nothing for fonts of other kinds.
class TrueTypeData
{
public:
    TrueTypeData(GfxFont& font, XRef* references);

    std::vector<uint8_t> entry(CharCode code) const;

private:
    TrueTypeGlyphs glyphs_;
    std::vector<int> codes_;
    bool identity_ = false;
};

class FontEntry
{
public:
    FontEntry(SplashFontFile* file, int32_t id, TrueTypeData true_type);

    int32_t id() const;
    std::shared_ptr<const Glyph> glyph(CharCode code);

private:
    int32_t id_;
    TrueTypeData true_type_;
    std::unique_ptr<SplashFont> font_;
    std::map<CharCode, std::shared_ptr<const Glyph>> glyphs_;
};

// A document's fonts, and the one that the state asks for.
struct Fonts
{
    std::map<std::pair<int, int>, std::shared_ptr<FontEntry>> known;
    std::shared_ptr<FontEntry> current;  // null for a font without outlines
    GGO_Matrix em_to_user{};             // of the current font; no translation
    bool stale = true;                   // the state may ask for another one
};

// The factor between user space and the pixels for which the state's font is made. Matrices of the size of pixels
// keep small fonts from counting as singular; a power of two takes nothing from their precision.
double pixels_of_font(GfxState* state);

// Makes the font current that was made from `source` for so many pixels for each unit of user space.
void choose_font(Fonts& fonts, GfxFont& source, SplashFont& made, double pixels, XRef* references);

}  // namespace orvlog::pdf_client
