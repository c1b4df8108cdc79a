#include "tests/renderers/cairo/font-records.h"

#include <array>
#include <cstring>

namespace orvlog::records
{
namespace
{

const std::array<const char*, 5> type_names{"FBE", "BITMAP", "PATH", "TRUETYPE", "RLE"};

std::string name_of(uint32_t type)
{
    return type < type_names.size() ? type_names[type] : "?";
}

}  // namespace

SquareFont::SquareFont()
{
    table_.GFI_StringStartFn = string_start;
    table_.GFI_GlyphIndexGetFn = index_get;
    table_.GFI_GlyphGetFixedFormatFn = fixed_get;
    table_.GFI_GlyphGetFn = glyph_get;
    table_.fe_Context = this;
    font_pointer_.fsp_FontSpec = &font_;
    string_pointer_.gsp_StringDesc = &string_;
    // In units of a tenth of the glyph: a square of 8 by 8, then an advance of 10.
    path_.box(0, 0, 8, 8);
}

uint32_t SquareFont::string_start(void* context, const GFI_FontSpecPointer*, const GGO_Matrix* matrix, uint32_t,
                                  uint32_t scaled, const GFI_StringDescPointer*, int32_t* font_id, GGO_Matrix* out,
                                  uint32_t* flags)
{
    SquareFont& self = of(context);
    self.diary.emplace_back(scaled == 1 ? "string" : "string unscaled");
    self.seen_matrix = *matrix;
    self.step_ = 0;
    *font_id = 3;
    *flags = 0;
    for (int i = 0; i < 4; ++i)
        out->m[i] = matrix->m[i] / 10.0;
    // The shift of the glyph matrix doesn't count.
    out->m[4] = 1000;
    out->m[5] = 1000;
    self.matrix_ = *out;
    return self.refuse_string ? 0 : 1;
}

uint32_t SquareFont::index_get(void* context, uint32_t* returned, uint32_t* index, uint16_t* variant,
                               GGO_Vector* advance, GGO_BoxFloat*)
{
    SquareFont& self = of(context);
    if (++self.step_ == self.fail_index_get)
        return 0;
    *returned = self.step_ <= self.glyphs || self.never_ends ? 1 : 0;
    *index = self.step_;
    *variant = 0;
    *advance = {10, 0};
    return 1;
}

uint32_t SquareFont::fixed_get(void* context, uint32_t type, uint32_t* returned, uint32_t* changed, GGO_Matrix*,
                               uint32_t*, GFI_GlyphDescPointer**)
{
    of(context).diary.push_back("fixed " + name_of(type));
    *returned = 0;
    *changed = 0;
    return 1;
}

void SquareFont::fill_bitmap(GFI_GlyphDescPointer& glyph)
{
    // Two by three pixels, the last of each row empty, in rows of two bytes.
    bitmap_.assign(8, 0);
    const GFI_GlyphDescBitmap head{{GFI_GDT_BITMAP, offset}, 3, 2, 2, static_cast<uint16_t>(black_is_one ? 1 : 0)};
    std::memcpy(bitmap_.data(), &head, sizeof head);
    auto* payload = reinterpret_cast<uint8_t*>(bitmap_.data()) + GFI_GLYPH_DESC_BITMAP_PAYLOAD;
    payload[0] = payload[2] = black_is_one ? 0xC0 : 0x3F;
    glyph.gdp_GlyphDesc = reinterpret_cast<const GFI_GlyphDesc*>(bitmap_.data());
}

uint32_t SquareFont::glyph_get(void* context, uint32_t type, uint32_t* changed, GGO_Matrix* matrix, uint32_t*,
                               GFI_GlyphDescPointer** glyph)
{
    SquareFont& self = of(context);
    self.diary.push_back("get " + name_of(type));
    if (self.null_glyphs)
        return 1;
    *changed = 0;
    if (type == GFI_GDT_BITMAP ? !self.has_bitmaps : !self.has_paths)
        return 0;
    if (type == GFI_GDT_BITMAP)
    {
        *changed = 1;
        *matrix = kUnit;
        self.given_ = {};
        self.fill_bitmap(self.given_);
        *glyph = &self.given_;
        return 1;
    }
    if (self.change_matrix && self.step_ > 1)
    {
        *changed = 1;
        for (int i = 0; i < 6; ++i)
            matrix->m[i] = self.matrix_.m[i] * 2;
    }
    self.path_desc_ = {{GFI_GDT_PATH, self.offset}, self.winding_rule};
    self.given_ = {&self.path_desc_.gdp_Desc, self.path_.record()};
    *glyph = &self.given_;
    return 1;
}

}  // namespace orvlog::records
