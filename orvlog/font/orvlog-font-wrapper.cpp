#include "orvlog/font/orvlog-font-wrapper.h"

namespace
{

const GFI_FontEngineTable* inner_of(void* fe_context)
{
    return static_cast<FontEngineWrapper*>(fe_context)->inner_table;
}

uint32_t string_start(void* fe_context, const GFI_FontSpecPointer* font_spec_ptr,
                      const GGO_Matrix* stringdesc_to_face_pixel, uint32_t stringdesc_transform_flags, uint32_t scaled,
                      const GFI_StringDescPointer* string_desc, int32_t* unique_font_id,
                      GGO_Matrix* glyphdesc_to_face_pixel, uint32_t* glyphdesc_transform_flags)
{
    const GFI_FontEngineTable* inner = inner_of(fe_context);
    if (inner->GFI_StringStartFn == nullptr)
        return 0;
    return inner->GFI_StringStartFn(inner->fe_Context, font_spec_ptr, stringdesc_to_face_pixel,
                                    stringdesc_transform_flags, scaled, string_desc, unique_font_id,
                                    glyphdesc_to_face_pixel, glyphdesc_transform_flags);
}

uint32_t glyph_index_get(void* fe_context, uint32_t* glyph_returned, uint32_t* glyph_index_out,
                         uint16_t* glyph_sub_pixel_variant, GGO_Vector* advance_vector,
                         GGO_BoxFloat* quick_bounding_box)
{
    const GFI_FontEngineTable* inner = inner_of(fe_context);
    if (inner->GFI_GlyphIndexGetFn == nullptr)
        return 0;
    return inner->GFI_GlyphIndexGetFn(inner->fe_Context, glyph_returned, glyph_index_out, glyph_sub_pixel_variant,
                                      advance_vector, quick_bounding_box);
}

uint32_t glyph_get_fixed_format(void* fe_context, uint32_t required_desc_type, uint32_t* glyph_returned,
                                uint32_t* glyphdesc_transform_changed, GGO_Matrix* glyphdesc_to_face_pixel,
                                uint32_t* glyphdesc_transform_flags, GFI_GlyphDescPointer* glyph)
{
    const GFI_FontEngineTable* inner = inner_of(fe_context);
    if (inner->GFI_GlyphGetFixedFormatFn == nullptr)
        return 0;
    return inner->GFI_GlyphGetFixedFormatFn(inner->fe_Context, required_desc_type, glyph_returned,
                                            glyphdesc_transform_changed, glyphdesc_to_face_pixel,
                                            glyphdesc_transform_flags, glyph);
}

uint32_t glyph_get(void* fe_context, uint32_t requested_desc_type, uint32_t* glyphdesc_transform_changed,
                   GGO_Matrix* glyphdesc_to_face_pixel, uint32_t* glyphdesc_transform_flags,
                   GFI_GlyphDescPointer* glyph)
{
    const GFI_FontEngineTable* inner = inner_of(fe_context);
    if (inner->GFI_GlyphGetFn == nullptr)
        return 0;
    return inner->GFI_GlyphGetFn(inner->fe_Context, requested_desc_type, glyphdesc_transform_changed,
                                 glyphdesc_to_face_pixel, glyphdesc_transform_flags, glyph);
}

const char* engine_id_get(void* fe_context)
{
    return font_engine_id(inner_of(fe_context));
}

void fill_table(GFI_FontEngineTable* table, FontEngineWrapper* wrapper)
{
    table->GFI_StringStartFn = string_start;
    table->GFI_GlyphIndexGetFn = glyph_index_get;
    table->GFI_GlyphGetFixedFormatFn = glyph_get_fixed_format;
    table->GFI_GlyphGetFn = glyph_get;
    table->fp_EngineIdGet = engine_id_get;
    table->fe_Reserved = wrapper->inner_table->fe_Reserved;
    table->fe_Context = wrapper;
}

void unlink(ORVLOG_Session* session, const FontEngineWrapper* wrapper)
{
    FontEngineWrapper** link = &session->live_font_wrappers;
    while (*link != nullptr && *link != wrapper)
        link = &(*link)->next_live;
    if (*link != nullptr)
        *link = wrapper->next_live;
}

}  // namespace

uint32_t font_wrapper_create(ORVLOG_Session* session, const GFI_FontEngineTable** table_slot,
                             const GFI_FontEngineTable* inner)
{
    GMM_Allocator* allocator = session->side_allocator;
    *table_slot = nullptr;
    auto* table = static_cast<GFI_FontEngineTable*>(allocator->gmm_Alloc(allocator, sizeof(GFI_FontEngineTable), 0));
    if (table == nullptr)
        return 0;
    auto* wrapper = static_cast<FontEngineWrapper*>(allocator->gmm_Alloc(allocator, sizeof(FontEngineWrapper), 0));
    if (wrapper == nullptr)
    {
        allocator->gmm_Free(allocator, table);
        return 0;
    }
    *wrapper = {session, session->next_font_wrapper_id++, allocator, inner, table, session->live_font_wrappers};
    session->live_font_wrappers = wrapper;
    fill_table(table, wrapper);
    *table_slot = table;
    return 1;
}

void font_wrapper_destroy(const GFI_FontEngineTable* table)
{
    if (table == nullptr || table->fe_Context == nullptr)
        return;
    auto* wrapper = static_cast<FontEngineWrapper*>(table->fe_Context);
    GMM_Allocator* allocator = wrapper->allocator;
    GFI_FontEngineTable* wrapped_table = wrapper->wrapped_table;
    unlink(wrapper->session, wrapper);
    allocator->gmm_Free(allocator, wrapper);
    allocator->gmm_Free(allocator, wrapped_table);
}

uint32_t font_wrapper_id(const GFI_FontEngineTable* table)
{
    return static_cast<const FontEngineWrapper*>(table->fe_Context)->GfpId;
}

const char* font_engine_id(const GFI_FontEngineTable* table)
{
    return table->fp_EngineIdGet != nullptr ? table->fp_EngineIdGet(table->fe_Context) : nullptr;
}

void font_wrapper_release(ORVLOG_Session* session, const GFI_FontEngineTable* table)
{
    font_wrapper_destroy(font_wrapper_if_live(session, table));
}

const GFI_FontEngineTable* font_wrapper_if_live(const ORVLOG_Session* session, const GFI_FontEngineTable* table)
{
    for (const FontEngineWrapper* wrapper = session->live_font_wrappers; wrapper != nullptr;
         wrapper = wrapper->next_live)
    {
        if (wrapper->wrapped_table == table)
            return table;
    }
    return nullptr;
}

void font_wrapper_release_all(ORVLOG_Session* session)
{
    while (session->live_font_wrappers != nullptr)
        font_wrapper_destroy(session->live_font_wrappers->wrapped_table);
}
