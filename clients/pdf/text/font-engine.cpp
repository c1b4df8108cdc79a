// SPDX-License-Identifier: GPL-2.0-or-later

#include "clients/pdf/text/font-engine.h"

#include "clients/pdf/painter/raster.h"

#include <algorithm>
#include <cmath>
#include <cstring>

namespace orvlog::pdf_client
{

namespace
{

constexpr uint32_t kGreatestBitmapSide = 2000;
constexpr size_t kGreatestPayload = 65535;

GGO_Matrix linear_part(const GGO_Matrix& matrix)
{
    return {{matrix.m[0], matrix.m[1], matrix.m[2], matrix.m[3], 0, 0}};
}

bool same(const GGO_Matrix& one, const GGO_Matrix& other)
{
    return std::equal(std::begin(one.m), std::end(one.m), std::begin(other.m));
}

// The flags of a transform, as far as they can be told without a doubt.
uint32_t transform_flags(const GGO_Matrix& matrix)
{
    const double* m = matrix.m;
    const bool shifted = m[4] != 0 || m[5] != 0;
    const uint32_t shift = shifted ? static_cast<uint32_t>(GGO_XFLAG_XLATE) : 0U;
    if (m[1] == 0 && m[2] == 0)
    {
        if (m[0] == 1 && m[3] == 1)
            return shift != 0 ? shift : static_cast<uint32_t>(GGO_XFLAG_IDENTITY);
        if (m[0] > 0 && m[3] > 0)
            return GGO_XFLAG_SCALE | shift;
        if (m[0] > 0 && m[3] < 0)
            return GGO_XFLAG_SCALE | GGO_XFLAG_FLIP_HORZ | shift;
    }
    return GGO_XFLAG_GENERAL;
}

GGO_BoxFloat box_of(const Glyph& glyph)
{
    if (glyph.bitmap_width > 0)
    {
        const GGO_BoxFloat pixels{0, 0, static_cast<double>(glyph.bitmap_width),
                                  static_cast<double>(glyph.bitmap_height)};
        return rectangle(pixels).transformed(glyph.bitmap_to_em).bounds();
    }
    return glyph.outline.bounds();
}

// A description record with a payload behind it.
template <typename Record>
std::vector<std::byte> with_payload(const Record& record, size_t offset, const std::vector<uint8_t>& payload)
{
    std::vector<std::byte> block(std::max(sizeof(Record), offset + payload.size()));
    std::memcpy(block.data(), &record, sizeof(Record));
    if (!payload.empty())
        std::memcpy(block.data() + offset, payload.data(), payload.size());
    return block;
}

std::vector<std::byte> pixels_as(uint32_t type, const Bitmap& bitmap, GGO_Vector offset)
{
    const uint16_t width = static_cast<uint16_t>(bitmap.width);
    const uint16_t height = static_cast<uint16_t>(bitmap.height);
    if (type == GFI_GDT_FBE)
    {
        const std::vector<uint8_t> payload = row_edges(bitmap);
        const GFI_GlyphDescFBE record = {{type, offset}, width, height, static_cast<uint32_t>(payload.size())};
        return with_payload(record, GFI_GLYPH_DESC_FBE_PAYLOAD, payload);
    }
    if (type == GFI_GDT_RLE)
    {
        const std::vector<uint8_t> payload = run_lengths(bitmap);
        if (payload.size() > kGreatestPayload)
            return {};
        const GFI_GlyphDescRLE record = {{type, offset}, width, height, static_cast<uint16_t>(payload.size())};
        return with_payload(record, GFI_GLYPH_DESC_RLE_PAYLOAD, payload);
    }
    const GFI_GlyphDescBitmap record = {
        {GFI_GDT_BITMAP, offset}, width, height, static_cast<uint16_t>(bitmap.row_bytes()), 1};
    return with_payload(record, GFI_GLYPH_DESC_BITMAP_PAYLOAD, bitmap.rows);
}

}  // namespace

struct FontEngine::Functions
{
    static FontEngine* self(void* context)
    {
        return static_cast<FontEngine*>(context);
    }

    static uint32_t start(void* context, const GFI_FontSpecPointer*, const GGO_Matrix* stringdesc_to_face_pixel,
                          uint32_t, uint32_t, const GFI_StringDescPointer* string_desc, int32_t* unique_font_id,
                          GGO_Matrix* glyphdesc_to_face_pixel, uint32_t* glyphdesc_transform_flags)
    {
        FontEngine* engine = self(context);
        engine->run_ = nullptr;
        if (engine->strings_.count(string_desc) == 0)
            return 0;
        const GlyphRun* run = reinterpret_cast<const TextShape::String*>(string_desc)->run;
        engine->run_ = run;
        engine->next_ = 0;
        engine->em_to_pixels_ = multiply(scaling(run->font_size, run->font_size), *stringdesc_to_face_pixel);
        engine->in_force_ = engine->em_to_pixels_;
        *unique_font_id = run->font_id;
        *glyphdesc_to_face_pixel = engine->em_to_pixels_;
        *glyphdesc_transform_flags = transform_flags(engine->em_to_pixels_);
        return 1;
    }

    static uint32_t next(void* context, uint32_t* glyph_returned, uint32_t* glyph_index_out,
                         uint16_t* glyph_sub_pixel_variant, GGO_Vector* advance_vector,
                         GGO_BoxFloat* quick_bounding_box)
    {
        FontEngine* engine = self(context);
        if (engine->run_ == nullptr)
            return 0;
        *glyph_returned = engine->next_ < engine->run_->glyphs.size() ? 1 : 0;
        if (*glyph_returned == 0)
        {
            engine->next_ = engine->run_->glyphs.size() + 1;
            return 1;
        }
        const PlacedGlyph& placed = engine->run_->glyphs[engine->next_++];
        *glyph_index_out = placed.glyph->code;
        *glyph_sub_pixel_variant = 0;
        *advance_vector = placed.advance;
        if (quick_bounding_box != nullptr)
            *quick_bounding_box = box_of(*placed.glyph);
        return 1;
    }

    static uint32_t get_fixed(void* context, uint32_t required_desc_type, uint32_t* glyph_returned,
                              uint32_t* glyphdesc_transform_changed, GGO_Matrix* glyphdesc_to_face_pixel,
                              uint32_t* glyphdesc_transform_flags, GFI_GlyphDescPointer** glyph)
    {
        FontEngine* engine = self(context);
        *glyph_returned = 0;
        const Glyph* present = engine->present_glyph();
        if (present == nullptr)
            return 0;
        GGO_Matrix to_pixels = engine->em_to_pixels_;
        if (engine->describe(*present, required_desc_type, &to_pixels))
        {
            *glyph_returned = 1;
            engine->hand_out(to_pixels, glyphdesc_transform_changed, glyphdesc_to_face_pixel, glyphdesc_transform_flags,
                             glyph);
        }
        return 1;
    }

    static uint32_t get(void* context, uint32_t requested_desc_type, uint32_t* glyphdesc_transform_changed,
                        GGO_Matrix* glyphdesc_to_face_pixel, uint32_t* glyphdesc_transform_flags,
                        GFI_GlyphDescPointer** glyph)
    {
        FontEngine* engine = self(context);
        const Glyph* present = engine->present_glyph();
        if (present == nullptr)
            return 0;
        GGO_Matrix to_pixels = engine->em_to_pixels_;
        if (!engine->describe(*present, requested_desc_type, &to_pixels) &&
            !engine->describe(*present, GFI_GDT_PATH, &to_pixels) &&
            !engine->describe(*present, GFI_GDT_BITMAP, &to_pixels))
            return 0;
        engine->hand_out(to_pixels, glyphdesc_transform_changed, glyphdesc_to_face_pixel, glyphdesc_transform_flags,
                         glyph);
        return 1;
    }

    static const char* name(void*)
    {
        return "orvlog-record";
    }
};

FontEngine::FontEngine()
{
    table_.GFI_StringStartFn = Functions::start;
    table_.GFI_GlyphIndexGetFn = Functions::next;
    table_.GFI_GlyphGetFixedFormatFn = Functions::get_fixed;
    table_.GFI_GlyphGetFn = Functions::get;
    table_.fp_EngineIdGet = Functions::name;
    table_.fe_Context = this;
}

const GFI_FontEngineTable* FontEngine::table() const
{
    return &table_;
}

const Glyph* FontEngine::present_glyph() const
{
    const bool within = run_ != nullptr && next_ >= 1 && next_ <= run_->glyphs.size();
    return within ? run_->glyphs[next_ - 1].glyph.get() : nullptr;
}

void FontEngine::hand_out(const GGO_Matrix& to_pixels, uint32_t* changed, GGO_Matrix* matrix, uint32_t* flags,
                          GFI_GlyphDescPointer** glyph)
{
    *changed = same(to_pixels, in_force_) ? 0 : 1;
    in_force_ = to_pixels;
    *matrix = to_pixels;
    *flags = transform_flags(to_pixels);
    answer_.pointer.gdp_GlyphDesc = reinterpret_cast<const GFI_GlyphDesc*>(answer_.description.data());
    *glyph = &answer_.pointer;
}

bool FontEngine::describe(const Glyph& glyph, uint32_t type, GGO_Matrix* to_pixels)
{
    answer_.pointer = {};
    const bool stored = glyph.bitmap_width > 0;
    switch (type)
    {
    case GFI_GDT_PATH:
        return !stored && describe_path(glyph);
    case GFI_GDT_BITMAP:
        return stored ? describe_stored_bitmap(glyph, to_pixels) : describe_outline_pixels(glyph, type, to_pixels);
    case GFI_GDT_FBE:
    case GFI_GDT_RLE:
        return !stored && describe_outline_pixels(glyph, type, to_pixels);
    case GFI_GDT_TRUETYPE:
        return describe_true_type(glyph);
    default:
        return false;
    }
}

const PathRecord& FontEngine::outline_record(const Glyph& glyph)
{
    auto& entry = outlines_[&glyph];
    if (entry.second == nullptr)
    {
        entry.first = run_->glyphs[next_ - 1].glyph;
        entry.second = std::make_unique<PathRecord>(glyph.outline);
    }
    return *entry.second;
}

bool FontEngine::describe_path(const Glyph& glyph)
{
    GFI_GlyphDescPath record{};
    record.gdp_Desc.gd_Type = GFI_GDT_PATH;
    record.gdp_WindingRule = glyph.winding == Winding::odd_even ? GPA_WINDING_ODD_EVEN : GPA_WINDING_NON_ZERO;
    answer_.description = with_payload(record, sizeof(record), {});
    answer_.pointer.gdp_Path = outline_record(glyph).get();
    return true;
}

bool FontEngine::describe_outline_pixels(const Glyph& glyph, uint32_t type, GGO_Matrix* to_pixels)
{
    const Bitmap bitmap =
        rasterise(glyph.outline.transformed(linear_part(em_to_pixels_)), glyph.winding, kGreatestBitmapSide);
    if (bitmap.width == 0 && !glyph.outline.empty())
        return false;
    *to_pixels = identity();
    const GGO_Vector offset = {static_cast<double>(bitmap.left), static_cast<double>(bitmap.top)};
    answer_.description = pixels_as(type, bitmap, offset);
    return !answer_.description.empty();
}

bool FontEngine::describe_stored_bitmap(const Glyph& glyph, GGO_Matrix* to_pixels)
{
    Bitmap bitmap;
    bitmap.width = glyph.bitmap_width;
    bitmap.height = glyph.bitmap_height;
    bitmap.rows = glyph.bitmap;
    *to_pixels = multiply(linear_part(glyph.bitmap_to_em), linear_part(em_to_pixels_));
    const GGO_Vector shift = {glyph.bitmap_to_em.m[4], glyph.bitmap_to_em.m[5]};
    const GGO_Vector offset = transform(inverse(linear_part(glyph.bitmap_to_em)), shift);
    answer_.description = pixels_as(GFI_GDT_BITMAP, bitmap, offset);
    return true;
}

bool FontEngine::describe_true_type(const Glyph& glyph)
{
    if (glyph.true_type.empty() || glyph.true_type.size() > kGreatestPayload)
        return false;
    GFI_GlyphDescTrueType record{};
    record.gdt_Desc.gd_Type = GFI_GDT_TRUETYPE;
    record.gdt_TrueTypeSize = static_cast<uint16_t>(glyph.true_type.size());
    answer_.description = with_payload(record, GFI_GLYPH_DESC_TRUETYPE_PAYLOAD, glyph.true_type);
    return true;
}

TextShape::TextShape(FontEngine& engine, const GlyphRun& run) : engine_(engine), run_(run)
{
    const double size = run.font_size;
    header_.gs_Shape.sh_ShapeType = GSH_SHAPE_GLYPHS;
    header_.gs_Shape.sh_Hints = GSH_SH_FONT_HAS_DOC_SCOPE;
    header_.gs_Shape.sh_Transform = multiply(scaling(1 / size, 1 / size), run.em_to_content);
    font_spec_.spec.ufs_FontSize = static_cast<float>(size);
    font_spec_.spec.ufs_Direction = run.vertical ? GFI_TD_TOP_TO_BOTTOM : GFI_TD_LEFT_TO_RIGHT;
    font_spec_.spec.ufs_FontVolatility = GFI_FV_STATIC;
    font_spec_.head.fsp_FontSpec = &font_spec_.spec;
    glyphs_.reserve(run.glyphs.size());
    for (const PlacedGlyph& placed : run.glyphs)
    {
        const double advance = run.vertical ? placed.advance.gvf_Y : placed.advance.gvf_X;
        text_.insert(text_.end(), placed.text.begin(), placed.text.end());
        glyphs_.push_back({0, static_cast<uint16_t>(placed.glyph->code), 0, 0, static_cast<float>(advance * size)});
        clusters_.push_back({1, 1, &glyphs_.back()});
    }
    description_.gsd_TextLen = static_cast<uint32_t>(text_.size());
    description_.gsd_GlyphMappingLen = static_cast<uint32_t>(clusters_.size());
    string_.head.gsp_StringDesc = &description_;
    string_.head.gsp_TextPtr = text_.data();
    string_.head.gsp_GlyphMapping = clusters_.data();
    string_.run = &run_;
    pointer_.sp_HeaderPtr = &header_.gs_Shape;
    pointer_.sp_U.glyph.font_spec_ptr = &font_spec_.head;
    pointer_.sp_U.glyph.string_desc = &string_.head;
    engine_.strings_.insert(&string_.head);
}

TextShape::~TextShape()
{
    engine_.strings_.erase(&string_.head);
    if (engine_.run_ == &run_)
        engine_.run_ = nullptr;
}

const GSH_ShapePointer* TextShape::get() const
{
    return &pointer_;
}

GGO_Point TextShape::end_point() const
{
    GGO_Point end{0, 0};
    for (const PlacedGlyph& placed : run_.glyphs)
    {
        end.gpf_X += placed.advance.gvf_X * run_.font_size;
        end.gpf_Y += placed.advance.gvf_Y * run_.font_size;
    }
    return end;
}

}  // namespace orvlog::pdf_client
