#include "inspect/c-source/c-prelude.h"

namespace orvlog::inspect
{

const char* const kCAskFonts = R"c(
/* The renderer, which does what the log says that the job's renderer did. */

void ask_font(const Step* step, const GFI_FontEngineTable* engine)
{
    GGO_Matrix matrix = {{1, 0, 0, 1, 0, 0}};
    uint32_t flags = 0, returned = 0, changed = 0;
    if (step->kind == STRING_START_STEP)
    {
        const StringStart* about = step->about;
        int32_t font_id = 0;
        GGO_Matrix* to = about->result && about->glyph_to_pixels == NULL ? NULL : &matrix;
        engine->GFI_StringStartFn(engine->fe_Context, about->font, about->to_pixels, about->flags, about->scaled, about->string, &font_id, to, &flags);
    }
    else if (step->kind == GLYPH_INDEX_STEP)
    {
        const GlyphIndex* about = step->about;
        uint32_t index = 0;
        uint16_t variant = 0;
        GGO_Vector advance = {0, 0};
        GGO_BoxFloat box = {1, 1, -1, -1};
        const int came = about->result && about->returned;
        engine->GFI_GlyphIndexGetFn(engine->fe_Context, &returned, &index, &variant, came && about->advance == NULL ? NULL : &advance, came && about->box == NULL ? NULL : &box);
    }
    else
    {
        const Glyph* about = step->about;
        GFI_GlyphDescPointer* glyph = NULL;
        GGO_Matrix* to = about->changed && about->to_pixels == NULL ? NULL : &matrix;
        if (step->kind == GLYPH_FIXED_STEP)
            engine->GFI_GlyphGetFixedFormatFn(engine->fe_Context, about->type, &returned, &changed, to, &flags, &glyph);
        else
            engine->GFI_GlyphGetFn(engine->fe_Context, about->type, &changed, to, &flags, &glyph);
    }
}
)c";

const char* const kCAskImages = R"c(
void ask_read(const Read* about, GOP_OperandImagePointer* image)
{
    uint8_t* bytes = calloc(about->size + 1U, 1);
    uint8_t* attributes = about->with_attributes ? calloc(about->attr_size + 1U, 1) : NULL;
    int32_t returned = 0, attr_returned = 0;
    if (bytes == NULL)
        complain("no memory");
    else
        image->imp_ImageReadFn(image, image->imp_Context, about->skip, bytes, about->size, about->row_step, &returned, attributes, about->attr_size, about->attr_row_step, &attr_returned);
    free(bytes);
    free(attributes);
}

void ask_finish(const Plain* about, GOP_OperandImagePointer* image)
{
    GOP_OperandImagePointer record = *image;
    if (about->given != NULL)
    {
        record = *about->given;
        record.imp_Context = image->imp_Context;
        record.imp_ImageResetFn = record.imp_ImageResetFn != NULL ? image->imp_ImageResetFn : NULL;
        record.imp_ImageKeepFn = image->imp_ImageKeepFn;
        record.imp_ImageReleaseFn = image->imp_ImageReleaseFn;
    }
    image->imp_ImageFinishFn(&record, record.imp_Context);
}

void ask_image(const Step* step, GOP_OperandImagePointer* image)
{
    if (step->kind == PREPARE_STEP)
    {
        const Prepare* about = step->about;
        image->imp_ImagePrepareFn(&image, about->object_type, about->decompress, about->rescale, about->max_width, about->min_width, about->max_height, about->min_height, about->render_space, about->depth, about->attributes);
        images[about->now] = image;
    }
    else if (step->kind == READ_STEP)
    {
        const Read* about = step->about;
        const uint32_t times = about->times != 0 ? about->times : 1;
        for (present->repeated = 0; present->repeated < times; ++present->repeated)
            ask_read(about, image);
        present->repeated = 0;
    }
    else if (step->kind == FINISH_STEP)
        ask_finish(step->about, image);
    else if (step->kind == RESET_STEP && image->imp_ImageResetFn != NULL)
        image->imp_ImageResetFn(image, image->imp_Context);
    else if (step->kind == KEEP_STEP && image->imp_ImageKeepFn != NULL)
        image->imp_ImageKeepFn(image);
    else if (step->kind == RELEASE_STEP && image->imp_ImageReleaseFn != NULL)
        image->imp_ImageReleaseFn(image);
    else
        complain("an image has no such callback");
}
)c";

const char* const kCRun = R"c(
void ask(const Step* step)
{
    if (step->kind <= GLYPH_STEP)
    {
        const GFI_FontEngineTable* engine = engines[*(const uint32_t*)step->about];
        if (engine != NULL)
            ask_font(step, engine);
        else
            complain("the renderer has no such font engine");
    }
    else
    {
        const uint32_t* about = step->about;
        GOP_OperandImagePointer* image = images[step->kind == READ_STEP ? about[1] : about[0]];
        if (image != NULL)
            ask_image(step, image);
        else
            complain("the renderer has no such image");
    }
}

uint32_t run(const GFI_FontEngineTable* engine, GOP_OperandPointer* const* operands, size_t count)
{
    const Call* call = present->call;
    Present* now = present;
    make_asides();
    if (engine != NULL && call->engine != 0)
        engines[call->engine] = engine;
    for (size_t i = 0; i < count; ++i)
        if (call->images[i] != 0)
            images[call->images[i]] = (GOP_OperandImagePointer*)operands[i];
    for (size_t i = 0; i < call->renderer_steps; ++i)
    {
        const Step* step = &call->by_renderer[i];
        if (is_aside(step))
            make_aside(step);
        else
        {
            now->asked = step;
            ask(step);
            now->asked = NULL;
        }
    }
    return 1;
}

uint32_t object_paint(const ORV_DrawingInterface* table, uint8_t object_type, uint32_t hints, const GOP_Operator* op, const GSH_ShapePointer* path, uint32_t placement, const GSH_ShapeList* clip, GOP_OperandPointer* operand1, GOP_OperandPointer* operand2, GOP_OperandPointer* operand3)
{
    GOP_OperandPointer* const operands[] = {operand1, operand2, operand3};
    (void)table, (void)object_type, (void)hints, (void)op, (void)path, (void)placement, (void)clip;
    return run(NULL, operands, 3);
}

uint32_t object_paint_and_stroke(const ORV_DrawingInterface* table, uint8_t fill_type, uint8_t stroke_type, uint32_t hints, const GOP_Operator* fill_op, const GOP_Operator* stroke_op, const GSH_ShapePointer* path, const GPA_PathStrokingParams* params, const GGO_Matrix* transform, uint32_t placement, const GSH_ShapeList* clip, uint32_t flags, GGO_Point* end_point, GOP_OperandPointer* fill1, GOP_OperandPointer* fill2, GOP_OperandPointer* fill3, GOP_OperandPointer* stroke1, GOP_OperandPointer* stroke2, GOP_OperandPointer* stroke3)
{
    GOP_OperandPointer* const operands[] = {fill1, fill2, fill3, stroke1, stroke2, stroke3};
    (void)table, (void)fill_type, (void)stroke_type, (void)hints, (void)fill_op, (void)stroke_op, (void)path;
    (void)params, (void)transform, (void)placement, (void)clip, (void)flags, (void)end_point;
    return run(NULL, operands, 6);
}

uint32_t group_start(const ORV_DrawingInterface* table, uint32_t unique_id, uint32_t* group, const GFI_FontEngineTable* engine, uint32_t hints, uint32_t type, uint32_t knockout, uint32_t replayable, void* ticket, uint32_t orientation, uint32_t has_placement, uint32_t placement, const GGO_Matrix* retransform, const GOP_Operator* op, GOP_OperandPointer* operand2, const GSH_ShapeList* clip, uint32_t tiling, double x_interval, double y_interval, const GBC_Color* mask, const GBC_Color* color, const GGO_BoxFloat* box)
{
    (void)table, (void)unique_id, (void)group, (void)hints, (void)type, (void)knockout, (void)replayable, (void)ticket;
    (void)orientation, (void)has_placement, (void)placement, (void)retransform, (void)op, (void)clip, (void)tiling;
    (void)x_interval, (void)y_interval, (void)mask, (void)color, (void)box;
    return run(engine, &operand2, 1);
}

uint32_t group_finish(const ORV_DrawingInterface* table, uint32_t* again)
{
    (void)table;
    run(NULL, NULL, 0);
    *again = present->call->again;
    return 1;
}

uint32_t resource_paint(const ORV_DrawingInterface* table, uint32_t resource, uint32_t hints, uint32_t type, const GGO_Matrix* retransform, const GOP_Operator* op, GOP_OperandPointer* operand2, const GSH_ShapeList* clip, uint32_t tiling, double x_interval, double y_interval, const GBC_Color* mask, const GBC_Color* color, uint32_t orientation)
{
    (void)table, (void)resource, (void)hints, (void)type, (void)retransform, (void)op, (void)clip, (void)tiling;
    (void)x_interval, (void)y_interval, (void)mask, (void)color, (void)orientation;
    return run(NULL, &operand2, 1);
}

uint32_t drawing_end(const ORV_DrawingInterface* table)
{
    (void)table;
    return run(NULL, NULL, 0);
}

void* drawing_error_context(const ORV_DrawingInterface* table)
{
    (void)table;
    return NULL;
}

static const ORV_DrawingInterface renderer_drawing = {{object_paint, NULL}, {object_paint_and_stroke, NULL}, {group_start, NULL}, {group_finish, NULL}, {resource_paint, NULL}, {drawing_error_context, NULL}, {drawing_end, NULL}, {drawing_end, NULL}};

uint32_t open_drawing(ORV_DrawingInterface* drawing, const GFI_FontEngineTable* engine)
{
    *drawing = renderer_drawing;
    if (present->call->without_resource_paint)
        drawing->resource_paint.fn = NULL;
    run(engine, NULL, 0);
    return !present->call->refused;
}

uint32_t document_start(void* err, const ORV_Interface* table, void** document, uint32_t id, const GFI_FontEngineTable* engine, void* extra)
{
    (void)err, (void)table, (void)id, (void)extra;
    *document = &orv;
    return run(engine, NULL, 0);
}

uint32_t document_finish(const ORV_Interface* table, void* document)
{
    (void)table, (void)document;
    return run(NULL, NULL, 0);
}

uint32_t resource_destroy(void* err, const ORV_Interface* table, void* document, const ORV_DrawingInterface* parent, uint32_t resource)
{
    (void)err, (void)table, (void)document, (void)parent, (void)resource;
    return run(NULL, NULL, 0);
}

uint32_t face_start(void* err, const ORV_Interface* table, void* document, ORV_DrawingInterface* drawing, const GFI_FontEngineTable* engine, uint32_t number, const ORV_FaceProperties* properties, void* ticket, uint32_t orientation, uint32_t placement)
{
    (void)err, (void)table, (void)document, (void)number, (void)properties, (void)ticket, (void)orientation, (void)placement;
    return open_drawing(drawing, engine);
}

uint32_t resource_start(void* err, const ORV_Interface* table, void* document, ORV_DrawingInterface* drawing, const ORV_DrawingInterface* parent, const GFI_FontEngineTable* engine, const ORV_ResourceProperties* properties, void* ticket, uint32_t* resource)
{
    (void)err, (void)table, (void)document, (void)parent, (void)properties, (void)ticket;
    *resource = present->call->resource;
    return open_drawing(drawing, engine);
}

uint32_t memory_context_start(void* err, const ORV_Interface* table, void* document, ORV_DrawingInterface* drawing, uintptr_t word1, uintptr_t word2, uintptr_t word3, uintptr_t word4, uintptr_t word5, const GFI_FontEngineTable* engine, void* ticket, uintptr_t word8, uintptr_t word9, uintptr_t word10, uintptr_t word11, uintptr_t word12, uintptr_t word13)
{
    (void)err, (void)table, (void)document, (void)word1, (void)word2, (void)word3, (void)word4, (void)word5, (void)ticket;
    (void)word8, (void)word9, (void)word10, (void)word11, (void)word12, (void)word13;
    return open_drawing(drawing, engine);
}

static const ORV_Interface renderer = {{NULL, 0}, {document_start, NULL}, {document_finish, NULL}, {resource_destroy, NULL}, {face_start, NULL}, {resource_start, NULL}, {memory_context_start, NULL}};
)c";

const char* const kCHost = R"c(
/* What the logger needs: memory, a stream, a number for the session. */

void* allocate(GMM_Allocator* allocator, uint64_t size, uint32_t channel)
{
    (void)allocator, (void)channel;
    return malloc((size_t)size);
}

void* resize(GMM_Allocator* allocator, void* block, uint64_t size)
{
    (void)allocator;
    return realloc(block, (size_t)size);
}

void release(GMM_Allocator* allocator, void* block)
{
    (void)allocator;
    free(block);
}

int32_t print(void* file, const char* format, va_list args)
{
    return vfprintf(file, format, args);
}

uint64_t write_items(const void* items, uint64_t size, uint64_t count, void* file)
{
    return fwrite(items, (size_t)size, (size_t)count, file);
}

int32_t flush(void* file)
{
    return fflush(file) == 0 ? 0 : -1;
}

uint32_t session_number(ORVLOG_IdentityObject* object, uint8_t* number)
{
    (void)object;
    memcpy(number, session, sizeof session);
    return 1;
}

/* The calls. */

)c";

}  // namespace orvlog::inspect
