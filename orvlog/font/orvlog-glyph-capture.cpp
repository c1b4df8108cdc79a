#include "orvlog/font/orvlog-glyph-capture.h"

#include "holv-core/ggo/ggo-geometry.h"

namespace
{

// What the engine gives besides the glyph is logged by its wrapper, and of no use here.
struct GlyphAnswer
{
    uint32_t transform_changed;
    GGO_Matrix to_face_pixel;
    uint32_t transform_flags;
    GFI_GlyphDescPointer* glyph;
};

// One of the fixed formats. Gives whether a glyph was delivered.
bool pull_fixed(ORVLOG_Session* session, uint32_t type, uint32_t* glyph_returned, uint32_t* warned, const char* text)
{
    const GFI_FontEngineTable* engine = session->current_font_wrapper;
    GlyphAnswer answer = {};
    *glyph_returned = 0;
    const uint32_t result =
        engine->GFI_GlyphGetFixedFormatFn(engine->fe_Context, type, glyph_returned, &answer.transform_changed,
                                          &answer.to_face_pixel, &answer.transform_flags, &answer.glyph);
    if (result == 0)
        orvlog_writer_warn_once(&session->writer, warned, text);
    return result != 0 && *glyph_returned != 0;
}

// Gives whether the glyph has still to be asked for in another way: no call delivered it, and the last one says so.
bool pull_fixed_formats(ORVLOG_Session* session)
{
    uint32_t glyph_returned = 0;
    bool delivered = pull_fixed(session, GFI_GDT_FBE, &glyph_returned, &session->glyph_warned_fixed_fbe,
                                "GFI_GlyphGetFixedFormatFn FBE call returned failure. This msg logged once only.");
    delivered |= pull_fixed(session, GFI_GDT_BITMAP, &glyph_returned, &session->glyph_warned_fixed_bitmap,
                            "GFI_GlyphGetFixedFormatFn BITMAP call returned failure. This msg logged once only.");
    delivered |= pull_fixed(session, GFI_GDT_PATH, &glyph_returned, &session->glyph_warned_fixed_path,
                            "GFI_GlyphGetFixedFormatFn PATH call returned failure. This msg logged once only.");
    return !delivered && glyph_returned == 0;
}

void pull_glyph(ORVLOG_Session* session)
{
    const GFI_FontEngineTable* engine = session->current_font_wrapper;
    if (session->glyph_fixed_format != 0 && !pull_fixed_formats(session))
        return;
    GlyphAnswer answer = {};
    if (engine->GFI_GlyphGetFn(engine->fe_Context, session->glyph_get_format, &answer.transform_changed,
                               &answer.to_face_pixel, &answer.transform_flags, &answer.glyph) == 0)
        orvlog_writer_warn_once(&session->writer, &session->glyph_warned_glyph_get,
                                "GFI_GlyphGetFn returned failure. This msg logged once only.");
}

uint64_t glyph_limit(const GFI_StringDescPointer* string)
{
    const bool has_text = string != nullptr && string->gsp_StringDesc != nullptr && string->gsp_TextPtr != nullptr;
    return ORVLOG_MAX_CAPTURED_GLYPHS + (has_text ? uint64_t{string->gsp_StringDesc->gsd_TextLen} : 0);
}

// Steps through the string. False when a step failed or the string would not end.
bool pull_string(ORVLOG_Session* session, uint64_t limit, const GGO_Matrix* to_face_pixel, GGO_Point* pen)
{
    const GFI_FontEngineTable* engine = session->current_font_wrapper;
    // An engine that leaves the word alone has a glyph.
    uint32_t glyph_returned = 1;
    for (uint64_t count = 0; count < limit; ++count)
    {
        uint32_t glyph_index = 0;
        uint16_t sub_pixel_variant = 0;
        GGO_Vector advance = {0, 0};
        GGO_BoxFloat box;
        ggo_make_empty_box(&box);
        if (engine->GFI_GlyphIndexGetFn(engine->fe_Context, &glyph_returned, &glyph_index, &sub_pixel_variant, &advance,
                                        &box) == 0)
        {
            orvlog_writer_warn_once(&session->writer, &session->glyph_warned_index_get,
                                    "GFI_GlyphIndexGetFn call returned failure. This msg logged once only.");
            return false;
        }
        if (glyph_returned == 0)
            return true;
        const GGO_Vector step = ggo_transform_vector(to_face_pixel, advance);
        pen->gpf_X += step.gvf_X;
        pen->gpf_Y += step.gvf_Y;
        pull_glyph(session);
    }
    orvlog_writer_warn(&session->writer, "String of glyphs does not end.");
    return false;
}

bool is_text(const GSH_ShapePointer* pointer)
{
    const uint16_t type = pointer->sp_HeaderPtr->sh_ShapeType;
    return type == GSH_SHAPE_GLYPHS || type == GSH_SHAPE_STROKE_GLYPHS;
}

}  // namespace

void capture_shape_glyphs(ORVLOG_Session* session, const GSH_ShapePointer* pointer)
{
    if (pointer->sp_HeaderPtr == nullptr || !is_text(pointer) || !orvlog_session_is_base(session))
        return;
    const GFI_FontEngineTable* engine = session->current_font_wrapper;
    if (engine == nullptr)
        return orvlog_writer_warn(&session->writer, "Text without a font engine. Its glyphs will not be logged.");
    const GGO_Matrix transform = session->object_transform;
    GGO_Point pen = ggo_transform_point(&transform, {0, 0});
    int32_t unique_font_id = 0;
    GGO_Matrix to_face_pixel = ggo_identity();
    uint32_t flags = 0;
    if (engine->GFI_StringStartFn(engine->fe_Context, pointer->sp_U.glyph.font_spec_ptr, &transform,
                                  ggo_classify_matrix(&transform), 1, pointer->sp_U.glyph.string_desc, &unique_font_id,
                                  &to_face_pixel, &flags) == 0)
        return;
    if (!pull_string(session, glyph_limit(pointer->sp_U.glyph.string_desc), &to_face_pixel, &pen))
        return;
    // A transform without an inverse stands in for it; readers of the log rely on where its texts end.
    uint32_t invertible = 0;
    const GGO_Matrix back = ggo_inverse(&transform, &invertible);
    session->glyph_end_point = ggo_transform_point(&back, pen);
}
