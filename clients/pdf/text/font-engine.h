// SPDX-License-Identifier: GPL-2.0-or-later
//
// Text shapes, and the font engine from which a renderer pulls their glyphs: outlines, bitmaps at the size of
// the page's pixels, run lengths and row edges of those bitmaps, and the entries of TrueType fonts.

#pragma once

#include "clients/pdf/content/graphics.h"
#include "clients/pdf/records/path-record.h"
#include "orvlog/interface/orv-interface.h"

#include <map>
#include <memory>
#include <set>
#include <vector>

namespace orvlog::pdf_client
{

class TextShape;

class FontEngine
{
public:
    FontEngine();
    FontEngine(const FontEngine&) = delete;
    FontEngine& operator=(const FontEngine&) = delete;

    // The table, valid as long as the engine. Its functions know the strings of text shapes that are alive.
    const GFI_FontEngineTable* table() const;

    struct Functions;

private:
    friend class TextShape;

    // What the last call gave out, kept until the next one.
    struct Answer
    {
        std::vector<std::byte> description;
        GFI_GlyphDescPointer pointer{};
    };

    bool describe(const Glyph& glyph, uint32_t type, GGO_Matrix* to_pixels);
    bool describe_path(const Glyph& glyph);
    bool describe_outline_pixels(const Glyph& glyph, uint32_t type, GGO_Matrix* to_pixels);
    bool describe_stored_bitmap(const Glyph& glyph, GGO_Matrix* to_pixels);
    bool describe_true_type(const Glyph& glyph);
    const PathRecord& outline_record(const Glyph& glyph);
    const Glyph* present_glyph() const;
    void hand_out(const GGO_Matrix& to_pixels, uint32_t* changed, GGO_Matrix* matrix, uint32_t* flags,
                  GFI_GlyphDescPointer** glyph);

    GFI_FontEngineTable table_{};
    std::set<const GFI_StringDescPointer*> strings_;
    const GlyphRun* run_ = nullptr;
    size_t next_ = 0;
    GGO_Matrix em_to_pixels_{};
    GGO_Matrix in_force_{};
    Answer answer_;
    std::map<const Glyph*, std::pair<std::shared_ptr<const Glyph>, std::unique_ptr<PathRecord>>> outlines_;
};

// A run of glyphs as a shape. Its space is as large as the font: one em is the font's size.
class TextShape
{
public:
    TextShape(FontEngine& engine, const GlyphRun& run);
    ~TextShape();
    TextShape(const TextShape&) = delete;
    TextShape& operator=(const TextShape&) = delete;

    const GSH_ShapePointer* get() const;
    // Where the pen stands after the last glyph, in the shape's space.
    GGO_Point end_point() const;

private:
    friend class FontEngine;

    struct FontSpec
    {
        GFI_FontSpecPointer head;
        GFI_FontSpec spec;
    };

    // What the engine finds behind the record that the interface knows.
    struct String
    {
        GFI_StringDescPointer head;
        const GlyphRun* run;
    };

    FontEngine& engine_;
    const GlyphRun& run_;
    GSH_GlyphShape header_{};
    GSH_ShapePointer pointer_{};
    FontSpec font_spec_{};
    String string_{};
    GFI_StringDesc description_{};
    std::vector<uint8_t> text_;
    std::vector<GFI_GlyphSpec> glyphs_;
    std::vector<GFI_GlyphClusterSpec> clusters_;
};

}  // namespace orvlog::pdf_client
