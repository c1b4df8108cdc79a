// A font engine for tests: a string of squares, each glyph `size` pixels high and wide, in any form.

#pragma once

#include "orvlog/interface/gfi-font.h"
#include "tests/renderers/cairo/drawing-records.h"

#include <cstdint>
#include <string>
#include <vector>

namespace orvlog::records
{

class SquareFont
{
public:
    SquareFont();
    SquareFont(const SquareFont&) = delete;
    SquareFont& operator=(const SquareFont&) = delete;

    const GFI_FontEngineTable* table() const
    {
        return &table_;
    }
    const GFI_FontSpecPointer* font() const
    {
        return &font_pointer_;
    }
    const GFI_StringDescPointer* string() const
    {
        return &string_pointer_;
    }

    uint32_t glyphs = 2;
    bool has_paths = true;
    bool has_bitmaps = false;
    bool black_is_one = true;
    uint32_t winding_rule = GPA_WINDING_NON_ZERO;
    GGO_Vector offset{0, 0};     // gd_Offset of each glyph
    bool change_matrix = false;  // glyphs after the first come with a matrix twice as large
    bool refuse_string = false;
    uint32_t fail_index_get = 0;  // this call, from 1
    bool never_ends = false;
    bool null_glyphs = false;
    std::vector<std::string> diary;
    GGO_Matrix seen_matrix{};

private:
    static SquareFont& of(void* context)
    {
        return *static_cast<SquareFont*>(context);
    }
    static uint32_t string_start(void* context, const GFI_FontSpecPointer*, const GGO_Matrix* matrix, uint32_t,
                                 uint32_t scaled, const GFI_StringDescPointer*, int32_t* font_id, GGO_Matrix* out,
                                 uint32_t* flags);
    static uint32_t index_get(void* context, uint32_t* returned, uint32_t* index, uint16_t* variant,
                              GGO_Vector* advance, GGO_BoxFloat*);
    static uint32_t fixed_get(void* context, uint32_t type, uint32_t* returned, uint32_t* changed, GGO_Matrix*,
                              uint32_t*, GFI_GlyphDescPointer**);
    static uint32_t glyph_get(void* context, uint32_t type, uint32_t* changed, GGO_Matrix* matrix, uint32_t*,
                              GFI_GlyphDescPointer** glyph);
    void fill_bitmap(GFI_GlyphDescPointer& glyph);
    GFI_GlyphDescPointer given_{};

    GFI_FontEngineTable table_{};
    GFI_FontSpec font_{};
    GFI_FontSpecPointer font_pointer_{};
    GFI_StringDesc string_{};
    GFI_StringDescPointer string_pointer_{};
    GGO_Matrix matrix_{};
    uint32_t step_ = 0;
    GFI_GlyphDescPath path_desc_{};
    Path path_;
    std::vector<uint64_t> bitmap_;
};

}  // namespace orvlog::records
