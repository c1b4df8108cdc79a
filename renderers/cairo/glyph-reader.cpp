#include "renderers/cairo/glyph-reader.h"

#include "holv-core/ggo/ggo-geometry.h"
#include "renderers/cairo/path-reader.h"

#include <array>
#include <cmath>
#include <cstddef>
#include <cstring>

namespace orvlog::cairo_renderer
{
namespace
{

constexpr uint32_t kMaxGlyphs = 1U << 20;

GGO_Matrix record_of(const cairo_matrix_t& matrix)
{
    return {{matrix.xx, matrix.yx, matrix.xy, matrix.yy, matrix.x0, matrix.y0}};
}

cairo_matrix_t linear_part(const GGO_Matrix& matrix)
{
    return {matrix.m[0], matrix.m[1], matrix.m[2], matrix.m[3], 0.0, 0.0};
}

cairo_matrix_t translation(Point point)
{
    return {1.0, 0.0, 0.0, 1.0, point.x, point.y};
}

// Bits of a row, highest first, to bytes of 0 or 255.
SurfacePtr unpack_bitmap(const GFI_GlyphDescBitmap& bitmap)
{
    const auto* payload = reinterpret_cast<const uint8_t*>(&bitmap) + GFI_GLYPH_DESC_BITMAP_PAYLOAD;
    SurfacePtr surface = own_surface(cairo_image_surface_create(CAIRO_FORMAT_A8, bitmap.gdb_Width, bitmap.gdb_Height));
    if (cairo_surface_status(surface.get()) != CAIRO_STATUS_SUCCESS)
        return nullptr;
    cairo_surface_flush(surface.get());
    uint8_t* data = cairo_image_surface_get_data(surface.get());
    const auto stride = static_cast<size_t>(cairo_image_surface_get_stride(surface.get()));
    for (size_t row = 0; row < bitmap.gdb_Height; ++row)
        for (size_t column = 0; column < bitmap.gdb_Width; ++column)
        {
            const unsigned byte = payload[row * bitmap.gdb_Rowstep + column / 8];
            const bool one = ((byte >> (7 - column % 8)) & 1U) != 0;
            data[row * stride + column] = one == (bitmap.gdb_BlackIsOne != 0) ? 255 : 0;
        }
    cairo_surface_mark_dirty(surface.get());
    return surface;
}

class Puller
{
public:
    Puller(const GFI_FontEngineTable& engine, GlyphForm form, Complaints& complaints)
        : engine_(engine), form_(form), complaints_(complaints)
    {
    }

    void run(const GFI_FontSpecPointer* font, const GFI_StringDescPointer* string, const cairo_matrix_t& to_pixels);
    GlyphRun take(const cairo_matrix_t& from_pixels);

private:
    bool next(GGO_Vector& advance);
    void glyph();
    void ask_in_turn();
    bool get(uint32_t type, GFI_GlyphDescPointer& glyph);
    void take_matrix(uint32_t changed, const GGO_Matrix& matrix);
    bool add(const GFI_GlyphDescPointer& glyph);
    bool add_bitmap(const GFI_GlyphDesc& glyph, const cairo_matrix_t& place);

    const GFI_FontEngineTable& engine_;
    GlyphForm form_;
    Complaints& complaints_;
    cairo_matrix_t glyph_matrix_ = identity();
    GlyphRun result_;
    Path outlines_;  // of glyphs of the winding rule
    uint32_t turn_ = 0;
};

void Puller::run(const GFI_FontSpecPointer* font, const GFI_StringDescPointer* string, const cairo_matrix_t& to_pixels)
{
    result_.pen = {to_pixels.x0, to_pixels.y0};
    const GGO_Matrix record = record_of(to_pixels);
    GGO_Matrix matrix = ggo_identity();
    uint32_t flags = 0;
    int32_t font_id = 0;
    if (engine_.GFI_StringStartFn(engine_.fe_Context, font, &record, ggo_classify_matrix(&record), 1, string, &font_id,
                                  &matrix, &flags) == 0)
        return complaints_.say_once("texts that the font engine refuses are left out");
    const cairo_matrix_t advance_matrix = linear_part(matrix);
    glyph_matrix_ = advance_matrix;
    GGO_Vector advance{};
    for (uint32_t i = 0; next(advance); ++i)
    {
        if (i == kMaxGlyphs)
            return complaints_.lose_once("texts of more than a million glyphs are cut short");
        glyph();
        const Point step = transform(advance_matrix, {advance.gvf_X, advance.gvf_Y});
        result_.pen = {result_.pen.x + step.x, result_.pen.y + step.y};
    }
}

bool Puller::next(GGO_Vector& advance)
{
    uint32_t returned = 0;
    uint32_t index = 0;
    uint16_t variant = 0;
    GGO_BoxFloat box{};
    ggo_make_empty_box(&box);
    advance = GGO_Vector{};
    if (engine_.GFI_GlyphIndexGetFn(engine_.fe_Context, &returned, &index, &variant, &advance, &box) == 0)
    {
        complaints_.say_once("texts whose glyphs cannot be counted are cut short");
        return false;
    }
    return returned != 0;
}

void Puller::take_matrix(uint32_t changed, const GGO_Matrix& matrix)
{
    if (changed != 0)
        glyph_matrix_ = linear_part(matrix);
}

bool Puller::get(uint32_t type, GFI_GlyphDescPointer& glyph)
{
    uint32_t changed = 0;
    uint32_t flags = 0;
    GGO_Matrix matrix = ggo_identity();
    GFI_GlyphDescPointer* given = nullptr;
    if (engine_.GFI_GlyphGetFn(engine_.fe_Context, type, &changed, &matrix, &flags, &given) == 0)
        return false;
    take_matrix(changed, matrix);
    glyph = given != nullptr ? *given : GFI_GlyphDescPointer{};
    return glyph.gdp_GlyphDesc != nullptr;
}

// What comes is not painted: the path that is asked for next is.
void Puller::ask_in_turn()
{
    constexpr std::array<uint32_t, 4> kOthers{GFI_GDT_BITMAP, GFI_GDT_TRUETYPE, GFI_GDT_RLE, GFI_GDT_FBE};
    if (engine_.GFI_GlyphGetFixedFormatFn == nullptr)
        return;
    uint32_t returned = 0;
    uint32_t changed = 0;
    uint32_t flags = 0;
    GGO_Matrix matrix = ggo_identity();
    GFI_GlyphDescPointer* glyph = nullptr;
    const uint32_t result = engine_.GFI_GlyphGetFixedFormatFn(engine_.fe_Context, kOthers[turn_++ % kOthers.size()],
                                                              &returned, &changed, &matrix, &flags, &glyph);
    if (result != 0 && returned != 0)
        take_matrix(changed, matrix);
}

void Puller::glyph()
{
    if (form_ == GlyphForm::in_turn)
        ask_in_turn();
    const uint32_t first = form_ == GlyphForm::bitmap ? GFI_GDT_BITMAP : GFI_GDT_PATH;
    const uint32_t second = form_ == GlyphForm::bitmap ? GFI_GDT_PATH : GFI_GDT_BITMAP;
    GFI_GlyphDescPointer description{};
    if (get(first, description) && add(description))
        return;
    if (get(second, description) && add(description))
        return;
    complaints_.say_once("glyphs that come neither as a path nor as a bitmap are left out");
}

bool Puller::add(const GFI_GlyphDescPointer& glyph)
{
    const GFI_GlyphDesc& head = *glyph.gdp_GlyphDesc;
    const cairo_matrix_t place = multiply(
        multiply(translation({head.gd_Offset.gvf_X, head.gd_Offset.gvf_Y}), glyph_matrix_), translation(result_.pen));
    if (head.gd_Type == GFI_GDT_BITMAP)
        return add_bitmap(head, place);
    if (head.gd_Type != GFI_GDT_PATH)
        return false;
    Path path = read_path(glyph.gdp_Path, PathUse::fill, complaints_);
    path.transform(place);
    const void* record = &head;
    const cairo_fill_rule_t rule = read_winding_rule(static_cast<const GFI_GlyphDescPath*>(record)->gdp_WindingRule);
    if (rule == CAIRO_FILL_RULE_WINDING)
        outlines_.append(path);
    else if (!path.verbs.empty())
        result_.pieces.emplace_back(FillPiece{std::move(path), rule, identity()});
    return true;
}

bool Puller::add_bitmap(const GFI_GlyphDesc& glyph, const cairo_matrix_t& place)
{
    const void* record = &glyph;
    const auto& bitmap = *static_cast<const GFI_GlyphDescBitmap*>(record);
    if (bitmap.gdb_Width == 0 || bitmap.gdb_Height == 0)
        return true;
    if (bitmap.gdb_Rowstep * 8U < bitmap.gdb_Width)
        return false;
    SurfacePtr surface = unpack_bitmap(bitmap);
    if (surface == nullptr)
        return false;
    result_.pieces.emplace_back(BitmapPiece{surface, place});
    return true;
}

GlyphRun Puller::take(const cairo_matrix_t& from_pixels)
{
    if (!outlines_.verbs.empty())
        result_.pieces.emplace_back(FillPiece{std::move(outlines_), CAIRO_FILL_RULE_WINDING, identity()});
    for (Piece& piece : result_.pieces)
        std::visit([&](auto& any) { any.to_content = multiply(any.to_content, from_pixels); }, piece);
    return std::move(result_);
}

}  // namespace

GlyphRun pull_glyphs(const GFI_FontEngineTable* engine, const GFI_FontSpecPointer* font,
                     const GFI_StringDescPointer* string, const cairo_matrix_t& to_pixels,
                     const cairo_matrix_t& from_pixels, GlyphForm form, Complaints& complaints)
{
    GlyphRun none;
    none.pen = {to_pixels.x0, to_pixels.y0};
    const bool usable = engine != nullptr && engine->GFI_StringStartFn != nullptr &&
                        engine->GFI_GlyphIndexGetFn != nullptr && engine->GFI_GlyphGetFn != nullptr;
    if (!usable || font == nullptr || string == nullptr)
    {
        complaints.say_once("texts without a font engine, a font or a string are left out");
        return none;
    }
    Puller puller(*engine, form, complaints);
    puller.run(font, string, to_pixels);
    return puller.take(from_pixels);
}

}  // namespace orvlog::cairo_renderer
