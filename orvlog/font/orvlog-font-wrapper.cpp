#include "orvlog/font/orvlog-font-wrapper.h"

#include "holv-core/gmm/gmm-typed.h"
#include "orvlog/font/gfi-dump.h"
#include "orvlog/log/orvlog-attributes.h"
#include "orvlog/log/orvlog-scope.h"
#include "orvlog/records/ggo-dump.h"
#include "orvlog/session/orvlog-font-ids.h"
#include "orvlog/session/orvlog-frames.h"

namespace
{

FontEngineWrapper* wrapper_of(void* fe_context)
{
    return static_cast<FontEngineWrapper*>(fe_context);
}

void begin(const FontEngineWrapper* wrapper, const char* element, uint32_t result)
{
    ORVLOG_Writer* writer = &wrapper->session->writer;
    orvlog_writer_begin_element(writer, element);
    orvlog_attr_uint(writer, "GfpId", wrapper->GfpId);
    orvlog_attr_bool(writer, "result", result);
}

uint32_t value_of(const uint32_t* word)
{
    return word != nullptr ? *word : 0;
}

void close_string_start(ORVLOG_Session* session, const GFI_FontSpecPointer* font_spec,
                        const GFI_StringDescPointer* string_desc)
{
    ORVLOG_Writer* writer = &session->writer;
    // The numbering of shapes is content with one node for each; readers of the log rely on the warnings that follow.
    const font_id_pair* pair = orvlog_font_ids_find(session, font_spec, string_desc);
    if (pair != nullptr)
    {
        orvlog_attr_uint(writer, "orvlog_font_spec_id", pair->font_spec_id);
        orvlog_attr_uint(writer, "orvlog_string_desc_id", pair->string_desc_id);
    }
    orvlog_writer_self_close(writer);
    if (pair == nullptr)
        orvlog_writer_warn(
            writer, "Could not match font_spec_ptr and string_desc in GFI_StringStartFn to a valid GSH_ShapePointer.");
}

// A glyph as the engine gave it. `changed` says whether a new transform came with it.
void dump_glyph(ORVLOG_Writer* writer, const char* element, const uint32_t* changed, const GGO_Matrix* to_face_pixel,
                const uint32_t* flags, GFI_GlyphDescPointer* const* glyph)
{
    orvlog_attr_bool(writer, "glyphdesc_transform_changed", value_of(changed));
    if (value_of(changed) != 0)
    {
        ggo_attr_matrix(writer, "glyphdesc_to_face_pixel", to_face_pixel);
        ggo_attr_transform_flags(writer, "glyphdesc_transform_flags", value_of(flags));
    }
    const ORVLOG_Content content(writer, element);
    dump_GFI_GlyphDescPointer(writer, glyph != nullptr ? *glyph : nullptr);
}

// The wrapped functions: the engine first, then the element, then the engine's result. An engine without the
// function fails, and so does a call without the table's context.

uint32_t string_start(void* fe_context, const GFI_FontSpecPointer* font_spec_ptr,
                      const GGO_Matrix* stringdesc_to_face_pixel, uint32_t stringdesc_transform_flags, uint32_t scaled,
                      const GFI_StringDescPointer* string_desc, int32_t* unique_font_id,
                      GGO_Matrix* glyphdesc_to_face_pixel, uint32_t* glyphdesc_transform_flags)
{
    const FontEngineWrapper* wrapper = wrapper_of(fe_context);
    if (wrapper == nullptr)
        return 0;
    const GFI_FontEngineTable* inner = wrapper->inner_table;
    uint32_t result = 0;
    if (inner->GFI_StringStartFn != nullptr)
        result = inner->GFI_StringStartFn(inner->fe_Context, font_spec_ptr, stringdesc_to_face_pixel,
                                          stringdesc_transform_flags, scaled, string_desc, unique_font_id,
                                          glyphdesc_to_face_pixel, glyphdesc_transform_flags);
    ORVLOG_Writer* writer = &wrapper->session->writer;
    begin(wrapper, "GFI_StringStartFn", result);
    ggo_attr_matrix(writer, "stringdesc_to_face_pixel", stringdesc_to_face_pixel);
    ggo_attr_transform_flags(writer, "stringdesc_transform_flags", stringdesc_transform_flags);
    orvlog_attr_bool(writer, "scaled", scaled);
    if (result != 0)
    {
        orvlog_attr_int(writer, "unique_font_id", unique_font_id != nullptr ? *unique_font_id : 0);
        ggo_attr_matrix(writer, "glyphdesc_to_face_pixel", glyphdesc_to_face_pixel);
        ggo_attr_transform_flags(writer, "glyphdesc_transform_flags", value_of(glyphdesc_transform_flags));
    }
    close_string_start(wrapper->session, font_spec_ptr, string_desc);
    return result;
}

uint32_t glyph_index_get(void* fe_context, uint32_t* glyph_returned, uint32_t* glyph_index_out,
                         uint16_t* glyph_sub_pixel_variant, GGO_Vector* advance_vector,
                         GGO_BoxFloat* quick_bounding_box)
{
    const FontEngineWrapper* wrapper = wrapper_of(fe_context);
    if (wrapper == nullptr)
        return 0;
    const GFI_FontEngineTable* inner = wrapper->inner_table;
    uint32_t result = 0;
    if (inner->GFI_GlyphIndexGetFn != nullptr)
        result = inner->GFI_GlyphIndexGetFn(inner->fe_Context, glyph_returned, glyph_index_out, glyph_sub_pixel_variant,
                                            advance_vector, quick_bounding_box);
    ORVLOG_Writer* writer = &wrapper->session->writer;
    begin(wrapper, "GFI_GlyphIndexGetFn", result);
    if (result != 0)
        orvlog_attr_bool(writer, "glyph_returned", value_of(glyph_returned));
    if (result != 0 && value_of(glyph_returned) != 0)
    {
        orvlog_attr_uint(writer, "glyph_index_out", value_of(glyph_index_out));
        orvlog_attr_uint(writer, "glyph_sub_pixel_variant",
                         glyph_sub_pixel_variant != nullptr ? *glyph_sub_pixel_variant : 0);
        ggo_attr_vector(writer, "advance_vector", advance_vector);
        ggo_attr_box(writer, "quick_bounding_box", quick_bounding_box);
    }
    orvlog_writer_self_close(writer);
    return result;
}

uint32_t glyph_get_fixed_format(void* fe_context, uint32_t required_desc_type, uint32_t* glyph_returned,
                                uint32_t* glyphdesc_transform_changed, GGO_Matrix* glyphdesc_to_face_pixel,
                                uint32_t* glyphdesc_transform_flags, GFI_GlyphDescPointer** glyph)
{
    static constexpr const char* const kElement = "GFI_GlyphGetFixedFormatFn";
    const FontEngineWrapper* wrapper = wrapper_of(fe_context);
    if (wrapper == nullptr)
        return 0;
    const GFI_FontEngineTable* inner = wrapper->inner_table;
    uint32_t result = 0;
    if (inner->GFI_GlyphGetFixedFormatFn != nullptr)
        result = inner->GFI_GlyphGetFixedFormatFn(inner->fe_Context, required_desc_type, glyph_returned,
                                                  glyphdesc_transform_changed, glyphdesc_to_face_pixel,
                                                  glyphdesc_transform_flags, glyph);
    ORVLOG_Writer* writer = &wrapper->session->writer;
    begin(wrapper, kElement, result);
    gfi_attr_glyph_desc_type(writer, "required_desc_type", required_desc_type);
    if (result != 0)
        orvlog_attr_bool(writer, "glyph_returned", value_of(glyph_returned));
    if (result != 0 && value_of(glyph_returned) != 0)
        dump_glyph(writer, kElement, glyphdesc_transform_changed, glyphdesc_to_face_pixel, glyphdesc_transform_flags,
                   glyph);
    else
        orvlog_writer_self_close(writer);
    return result;
}

uint32_t glyph_get(void* fe_context, uint32_t requested_desc_type, uint32_t* glyphdesc_transform_changed,
                   GGO_Matrix* glyphdesc_to_face_pixel, uint32_t* glyphdesc_transform_flags,
                   GFI_GlyphDescPointer** glyph)
{
    static constexpr const char* const kElement = "GFI_GlyphGetFn";
    const FontEngineWrapper* wrapper = wrapper_of(fe_context);
    if (wrapper == nullptr)
        return 0;
    const GFI_FontEngineTable* inner = wrapper->inner_table;
    uint32_t result = 0;
    if (inner->GFI_GlyphGetFn != nullptr)
        result = inner->GFI_GlyphGetFn(inner->fe_Context, requested_desc_type, glyphdesc_transform_changed,
                                       glyphdesc_to_face_pixel, glyphdesc_transform_flags, glyph);
    ORVLOG_Writer* writer = &wrapper->session->writer;
    begin(wrapper, kElement, result);
    gfi_attr_glyph_desc_type(writer, "requested_desc_type", requested_desc_type);
    if (result != 0)
        dump_glyph(writer, kElement, glyphdesc_transform_changed, glyphdesc_to_face_pixel, glyphdesc_transform_flags,
                   glyph);
    else
        orvlog_writer_self_close(writer);
    return result;
}

const char* engine_id_get(void* fe_context)
{
    const FontEngineWrapper* wrapper = wrapper_of(fe_context);
    return wrapper != nullptr ? font_engine_id(wrapper->inner_table) : nullptr;
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

void exchange(const GFI_FontEngineTable** place, const GFI_FontEngineTable* table, const GFI_FontEngineTable* outer)
{
    if (*place == table)
        *place = outer;
}

}  // namespace

uint32_t font_wrapper_create(ORVLOG_Session* session, const GFI_FontEngineTable** table_slot,
                             const GFI_FontEngineTable* inner)
{
    GMM_Allocator* allocator = session->side_allocator;
    *table_slot = nullptr;
    auto* table = gmm_alloc_record<GFI_FontEngineTable>(allocator);
    if (table == nullptr)
        return 0;
    auto* wrapper = gmm_alloc_record<FontEngineWrapper>(allocator);
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

void font_wrapper_end_scope(ORVLOG_Session* session, const GFI_FontEngineTable* table, const GFI_FontEngineTable* outer)
{
    if (table == nullptr)
        return;
    exchange(&session->current_font_wrapper, table, outer);
    for (ORVLOG_DrawingContext* drawing = session->live_drawings; drawing != nullptr; drawing = drawing->next_live)
    {
        exchange(&drawing->saved_font_wrapper, table, outer);
        for (ORVLOG_GroupFrame* frame = drawing->group_frames; frame != nullptr; frame = frame->next)
            exchange(&frame->saved_font_wrapper, table, outer);
    }
    font_wrapper_destroy(table);
}

void font_wrapper_release_all(ORVLOG_Session* session)
{
    while (session->live_font_wrappers != nullptr)
        font_wrapper_destroy(session->live_font_wrappers->wrapped_table);
}
