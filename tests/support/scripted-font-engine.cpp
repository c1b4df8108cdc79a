#include "tests/support/scripted-font-engine.h"

namespace orvlog::test
{

ScriptedFontEngine::ScriptedFontEngine()
{
    bitmap_.head = {{GFI_GDT_BITMAP, {0, 0}}, 8, 2, 1, 1};
    bitmap_.bytes[0] = 0x18;
    bitmap_.bytes[1] = 0x81;
    glyph = &bitmap_.head.gdb_Desc;
    table.fe_Context = this;
    table.GFI_StringStartFn = [](void* context, const GFI_FontSpecPointer*, const GGO_Matrix* to_pixel, uint32_t flags,
                                 uint32_t scaled, const GFI_StringDescPointer*, int32_t* font, GGO_Matrix* matrix_out,
                                 uint32_t* flags_out) -> uint32_t
    {
        ScriptedFontEngine* self = of(context);
        self->note("start ");
        self->next_ = 0;
        self->start_matrix = to_pixel != nullptr ? *to_pixel : GGO_Matrix{};
        self->start_flags = flags;
        self->start_scaled = scaled;
        *font = -7;
        *matrix_out = self->matrix;
        *flags_out = 0x6;
        return self->answer(self->start_result);
    };
    table.GFI_GlyphIndexGetFn = [](void* context, uint32_t* returned, uint32_t* index, uint16_t* variant,
                                   GGO_Vector* advance, GGO_BoxFloat* box) -> uint32_t
    {
        ScriptedFontEngine* self = of(context);
        self->note("index ");
        *returned = self->next_ < self->advances.size() || self->endless ? 1 : 0;
        if (*returned != 0)
        {
            *index = static_cast<uint32_t>(40 + self->next_);
            *variant = 3;
            *advance = self->next_ < self->advances.size() ? self->advances[self->next_] : GGO_Vector{0, 0};
            if (box != nullptr)
                box->gbf_MaxX = 9;
            ++self->next_;
        }
        return self->answer(self->index_result);
    };
    table.GFI_GlyphGetFixedFormatFn = [](void* context, uint32_t type, uint32_t* returned, uint32_t* changed_out,
                                         GGO_Matrix* matrix_out, uint32_t* flags_out,
                                         GFI_GlyphDescPointer** out) -> uint32_t
    {
        ScriptedFontEngine* self = of(context);
        self->note("fixed" + std::to_string(type) + " ");
        *returned = self->fixed_returned[type % 5];
        self->deliver(changed_out, matrix_out, flags_out, out);
        return self->answer(self->fixed_results[type % 5]);
    };
    table.GFI_GlyphGetFn = [](void* context, uint32_t type, uint32_t* changed_out, GGO_Matrix* matrix_out,
                              uint32_t* flags_out, GFI_GlyphDescPointer** out) -> uint32_t
    {
        ScriptedFontEngine* self = of(context);
        self->note("glyph" + std::to_string(type) + " ");
        self->deliver(changed_out, matrix_out, flags_out, out);
        return self->answer(self->glyph_result);
    };
}

void ScriptedFontEngine::note(const std::string& call)
{
    calls_ += call;
    if (on_call)
        on_call();
}

std::string ScriptedFontEngine::take_calls()
{
    std::string result = calls_;
    calls_.clear();
    return result;
}

void ScriptedFontEngine::deliver(uint32_t* changed_out, GGO_Matrix* matrix_out, uint32_t* flags_out,
                                 GFI_GlyphDescPointer** out)
{
    *changed_out = changed;
    *matrix_out = {{5, 0, 0, 5, 0, 0}};
    *flags_out = 0x4;
    given_ = {glyph, nullptr};
    *out = &given_;
}

}  // namespace orvlog::test
