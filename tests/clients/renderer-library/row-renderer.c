/* A renderer in C, from the installed headers alone. It reads images by single rows, and asks for each glyph in all
 * forms. Its page is white; each paint leaves a dark pixel for what it read.
 *
 * As "fumbling_renderer" it does all that a renderer shouldn't: it prepares twice, reads too little and behind the end,
 * goes on behind the finish, keeps images and releases them late, and answers 0. As "crashing_renderer" it ends in the
 * tenth paint, as "hanging_renderer" it stays there, and as "leaving_renderer" it ends the process. */

#include "orvlog/interface/orvlog-renderer.h"

#include <stdint.h>
#include <stdlib.h>
#include <string.h>

enum
{
    ORDINARY,
    FUMBLING,
    CRASHING,
    HANGING,
    LEAVING
};

enum
{
    SIDE = 16,
    MOST_KEPT = 64
};

typedef struct Renderer
{
    ORVLOG_RendererHost host;
    int kind;
    const GFI_FontEngineTable* engine;
    uint32_t paints;
    uint32_t face;
    uint32_t pixels[SIDE * SIDE];
    GOP_OperandImagePointer kept[MOST_KEPT];
    uint32_t kept_count;
} Renderer;

static void read_rows(Renderer* self, GOP_OperandImagePointer* record, uint32_t rows, uint32_t row_bytes)
{
    uint8_t* row = (uint8_t*)malloc((size_t)row_bytes + 1);
    uint32_t i;
    for (i = 0; row != NULL && i < rows; ++i)
    {
        int32_t returned = 0;
        if (record->imp_ImageReadFn(record, record->imp_Context, 0, row, row_bytes, (int32_t)row_bytes, &returned, NULL,
                                    0, 0, NULL) == 0 ||
            returned <= 0)
            break;
        self->pixels[i % (SIDE * SIDE)] = row[0];
    }
    free(row);
}

static void draw_image(Renderer* self, GOP_OperandImagePointer* record)
{
    const uint32_t rows = record->imp_Image->im_ImageHeightPixels;
    const uint32_t row_bytes = record->imp_Image->im_ImageWidthPixels * 4 + 4;
    if (record->imp_ImagePrepareFn(&record, 8, 0, 0, 0, 0, 0, 0, 0, GNC_BMP_DEPTH_8, 0) == 0)
        return;
    read_rows(self, record, rows, row_bytes);
    record->imp_ImageFinishFn(record, record->imp_Context);
}

static void fumble(Renderer* self, GOP_OperandImagePointer* record)
{
    GOP_OperandImagePointer copy = *record;
    GOP_OperandImagePointer* held = &copy;
    held->imp_ImagePrepareFn(&held, 8, 0, 1, 2, 1, 2, 1, 1, GNC_BMP_DEPTH_16, 1);
    held->imp_ImagePrepareFn(&held, 0xFF, 1, 0, 0, 0, 0, 0, 0, 9, 0);
    read_rows(self, held, 2, 3);
    if (held->imp_ImageResetFn != NULL)
        held->imp_ImageResetFn(held, held->imp_Context);
    read_rows(self, held, 100000, 4096);
    held->op_UniqueId = 4711;
    held->imp_ImageFinishFn(held, held->imp_Context);
    read_rows(self, held, 1, 7);
    if (held->imp_ImageKeepFn != NULL && self->kept_count < MOST_KEPT && held->imp_ImageKeepFn(held) != 0)
        self->kept[self->kept_count++] = *held;
}

/* Images of earlier calls, every third time. */
static void use_kept(Renderer* self)
{
    GOP_OperandImagePointer* held;
    if (self->kept_count == 0 || self->paints % 3 != 0)
        return;
    held = &self->kept[self->kept_count - 1];
    held->imp_ImagePrepareFn(&held, 1, 0, 0, 0, 0, 0, 0, 0, GNC_BMP_DEPTH_1, 0);
    read_rows(self, held, 3, 5);
    held->imp_ImageFinishFn(held, held->imp_Context);
    if (self->paints % 2 != 0)
        return;
    held->imp_ImageReleaseFn(held);
    --self->kept_count;
}

/* The last ones long behind their pages. */
static void release_kept(Renderer* self)
{
    for (; self->kept_count > 0; --self->kept_count)
    {
        GOP_OperandImagePointer* held = &self->kept[self->kept_count - 1];
        held->imp_ImageReleaseFn(held);
    }
}

static void take_operand(Renderer* self, GOP_OperandPointer* operand)
{
    const GOP_Operand* head =
        operand != NULL ? (const GOP_Operand*)((GOP_OperandImagePointer*)operand)->imp_Image : NULL;
    if (head == NULL || (head->go_OpType != GOP_OPERAND_IMAGE && head->go_OpType != GOP_OPERAND_IMAGE_TILE))
        return;
    if (self->kind == FUMBLING)
        fumble(self, (GOP_OperandImagePointer*)operand);
    else
        draw_image(self, (GOP_OperandImagePointer*)operand);
}

static void draw_glyphs(Renderer* self, const GSH_ShapePointer* shape)
{
    static const GGO_Matrix to_pixels = {{3.5, 0.25, 0, -3.5, 12, 0.1}};
    const GFI_FontEngineTable* engine = self->engine;
    GGO_Matrix matrix;
    uint32_t flags = 0;
    int32_t font = 0;
    uint32_t returned = 1;
    if (engine == NULL || shape == NULL || shape->sp_HeaderPtr == NULL)
        return;
    if (shape->sp_HeaderPtr->sh_ShapeType != GSH_SHAPE_GLYPHS &&
        shape->sp_HeaderPtr->sh_ShapeType != GSH_SHAPE_STROKE_GLYPHS)
        return;
    if (engine->GFI_StringStartFn(engine->fe_Context, shape->sp_U.glyph.font_spec_ptr, &to_pixels, 6, 1,
                                  shape->sp_U.glyph.string_desc, &font, &matrix, &flags) == 0)
        return;
    while (returned != 0)
    {
        uint32_t index = 0;
        uint16_t variant = 0;
        uint32_t type;
        GGO_Vector advance;
        GGO_BoxFloat box;
        if (engine->GFI_GlyphIndexGetFn(engine->fe_Context, &returned, &index, &variant, &advance,
                                        self->paints % 2 != 0 ? &box : NULL) == 0 ||
            returned == 0)
            break;
        for (type = 0; type < 5; ++type)
        {
            GFI_GlyphDescPointer* glyph = NULL;
            uint32_t delivered = 0;
            uint32_t changed = 0;
            engine->GFI_GlyphGetFixedFormatFn(engine->fe_Context, type, &delivered, &changed, &matrix, &flags, &glyph);
            engine->GFI_GlyphGetFn(engine->fe_Context, type, &changed, &matrix, &flags, &glyph);
        }
    }
    if (self->kind == FUMBLING)
        engine->GFI_StringStartFn(engine->fe_Context, NULL, &to_pixels, 0, 0, NULL, &font, &matrix, &flags);
}

static uint32_t answer(Renderer* self)
{
    return self->kind == FUMBLING && self->paints % 2 == 0 ? 0 : 1;
}

static void count_paint(Renderer* self)
{
    volatile uint32_t always = 1;
    if (++self->paints == 10)
    {
        if (self->kind == CRASHING)
            abort();
        if (self->kind == LEAVING)
            exit(0);
        while (self->kind == HANGING && always != 0)
            continue;
    }
    if (self->kind == FUMBLING)
        use_kept(self);
}

static uint32_t object_paint(const ORV_DrawingInterface* table, uint8_t type, uint32_t hints, const GOP_Operator* op,
                             const GSH_ShapePointer* shape, uint32_t placement, const GSH_ShapeList* clip,
                             GOP_OperandPointer* one, GOP_OperandPointer* two, GOP_OperandPointer* three)
{
    Renderer* self = (Renderer*)table->object_paint.context;
    (void)type, (void)hints, (void)placement, (void)clip, (void)three;
    count_paint(self);
    draw_glyphs(self, shape);
    take_operand(self, one);
    if (op != NULL && op->op_MaskMode != GOP_MASK_NONE)
        take_operand(self, two);
    return answer(self);
}

static uint32_t object_paint_and_stroke(const ORV_DrawingInterface* table, uint8_t fill, uint8_t stroke, uint32_t hints,
                                        const GOP_Operator* fill_op, const GOP_Operator* stroke_op,
                                        const GSH_ShapePointer* shape, const GPA_PathStrokingParams* params,
                                        const GGO_Matrix* transform, uint32_t placement, const GSH_ShapeList* clip,
                                        uint32_t flags, GGO_Point* end, GOP_OperandPointer* f1, GOP_OperandPointer* f2,
                                        GOP_OperandPointer* f3, GOP_OperandPointer* s1, GOP_OperandPointer* s2,
                                        GOP_OperandPointer* s3)
{
    Renderer* self = (Renderer*)table->object_paint_and_stroke.context;
    (void)fill, (void)stroke, (void)hints, (void)fill_op, (void)stroke_op, (void)params, (void)transform;
    (void)placement, (void)clip, (void)flags, (void)end, (void)f2, (void)f3, (void)s2, (void)s3;
    count_paint(self);
    draw_glyphs(self, shape);
    take_operand(self, f1);
    take_operand(self, s1);
    return answer(self);
}

static uint32_t group_start(const ORV_DrawingInterface* table, uint32_t id, uint32_t* group_out,
                            const GFI_FontEngineTable* engine, uint32_t hints, uint32_t type, uint32_t knockout,
                            uint32_t replayable, void* ticket, uint32_t orientation, uint32_t has_placement,
                            uint32_t placement, const GGO_Matrix* retransform, const GOP_Operator* op,
                            GOP_OperandPointer* mask, const GSH_ShapeList* clip, uint32_t tiling, double x, double y,
                            const GBC_Color* separation_mask, const GBC_Color* separation_color,
                            const GGO_BoxFloat* box)
{
    Renderer* self = (Renderer*)table->group_start.context;
    (void)id, (void)engine, (void)hints, (void)type, (void)knockout, (void)replayable, (void)ticket, (void)orientation;
    (void)has_placement, (void)placement, (void)retransform, (void)clip, (void)tiling, (void)x, (void)y;
    (void)separation_mask, (void)separation_color, (void)box;
    if (group_out != NULL)
        *group_out = 0;
    if (op != NULL && op->op_MaskMode != GOP_MASK_NONE)
        take_operand(self, mask);
    return answer(self);
}

static uint32_t group_finish(const ORV_DrawingInterface* table, uint32_t* replay)
{
    *replay = 0;
    return answer((Renderer*)table->group_finish.context);
}

static uint32_t resource_paint(const ORV_DrawingInterface* table, uint32_t id, uint32_t hints, uint32_t type,
                               const GGO_Matrix* retransform, const GOP_Operator* op, GOP_OperandPointer* mask,
                               const GSH_ShapeList* clip, uint32_t tiling, double x, double y,
                               const GBC_Color* separation_mask, const GBC_Color* separation_color,
                               uint32_t orientation)
{
    Renderer* self = (Renderer*)table->resource_paint.context;
    (void)id, (void)hints, (void)type, (void)retransform, (void)clip, (void)tiling, (void)x, (void)y;
    (void)separation_mask, (void)separation_color, (void)orientation;
    if (op != NULL && op->op_MaskMode != GOP_MASK_NONE)
        take_operand(self, mask);
    return answer(self);
}

static void* drawing_error_context(const ORV_DrawingInterface* table)
{
    (void)table;
    return NULL;
}

static uint32_t drawing_finish(const ORV_DrawingInterface* table)
{
    Renderer* self = (Renderer*)table->drawing_finish.context;
    ORVLOG_RendererPage page = {0, SIDE, SIDE, 0, SIDE, SIDE, NULL};
    if (self->face == 0)
        return 1;
    page.face_seq_number = self->face;
    page.pixels = self->pixels;
    self->face = 0;
    return self->host.take_page(self->host.context, &page);
}

static uint32_t drawing_discard(const ORV_DrawingInterface* table)
{
    ((Renderer*)table->drawing_discard.context)->face = 0;
    return 1;
}

static void fill(ORV_DrawingInterface* out, Renderer* self)
{
    out->object_paint.fn = object_paint;
    out->object_paint_and_stroke.fn = object_paint_and_stroke;
    out->group_start.fn = group_start;
    out->group_finish.fn = group_finish;
    out->resource_paint.fn = resource_paint;
    out->drawing_error_context.fn = drawing_error_context;
    out->drawing_finish.fn = drawing_finish;
    out->drawing_discard.fn = drawing_discard;
    out->object_paint.context = out->object_paint_and_stroke.context = out->group_start.context = self;
    out->group_finish.context = out->resource_paint.context = out->drawing_error_context.context = self;
    out->drawing_finish.context = out->drawing_discard.context = self;
}

static uint32_t document_start(void* err, const ORV_Interface* table, void** document_out, uint32_t id,
                               const GFI_FontEngineTable* engine, void* extra)
{
    Renderer* self = (Renderer*)table->document_start.context;
    (void)err, (void)id, (void)extra;
    *document_out = self;
    self->engine = engine;
    return 1;
}

static uint32_t document_finish(const ORV_Interface* table, void* document)
{
    (void)document;
    release_kept((Renderer*)table->document_finish.context);
    ((Renderer*)table->document_finish.context)->engine = NULL;
    return 1;
}

static uint32_t resource_destroy(void* err, const ORV_Interface* table, void* document,
                                 const ORV_DrawingInterface* parent, uint32_t id)
{
    (void)err, (void)table, (void)document, (void)parent, (void)id;
    return 1;
}

static uint32_t face_start(void* err, const ORV_Interface* table, void* document, ORV_DrawingInterface* out,
                           const GFI_FontEngineTable* engine, uint32_t number, const ORV_FaceProperties* properties,
                           void* ticket, uint32_t orientation, uint32_t placement)
{
    Renderer* self = (Renderer*)table->face_start.context;
    (void)err, (void)document, (void)engine, (void)properties, (void)ticket, (void)orientation, (void)placement;
    memset(self->pixels, 0xFF, sizeof self->pixels);
    self->face = number;
    fill(out, self);
    return 1;
}

static uint32_t resource_start(void* err, const ORV_Interface* table, void* document, ORV_DrawingInterface* out,
                               const ORV_DrawingInterface* parent, const GFI_FontEngineTable* engine,
                               const ORV_ResourceProperties* properties, void* ticket, uint32_t* id)
{
    (void)err, (void)document, (void)parent, (void)engine, (void)properties, (void)ticket;
    *id = 1;
    fill(out, (Renderer*)table->resource_start.context);
    return 1;
}

static uint32_t memory_context_start(void* err, const ORV_Interface* table, void* document, ORV_DrawingInterface* out,
                                     uintptr_t w1, uintptr_t w2, uintptr_t w3, uintptr_t w4, uintptr_t w5,
                                     const GFI_FontEngineTable* engine, void* ticket, uintptr_t w8, uintptr_t w9,
                                     uintptr_t w10, uintptr_t w11, uintptr_t w12, uintptr_t w13)
{
    (void)err, (void)document, (void)engine, (void)ticket, (void)w1, (void)w2, (void)w3, (void)w4, (void)w5, (void)w8;
    (void)w9, (void)w10, (void)w11, (void)w12, (void)w13;
    fill(out, (Renderer*)table->memory_context_start.context);
    return 1;
}

static uint32_t end(void* context)
{
    free(context);
    return 1;
}

static uint32_t make(const ORVLOG_RendererHost* host, const char* options, ORVLOG_Renderer* renderer, int kind)
{
    Renderer* self = (Renderer*)calloc(1, sizeof *self);
    if (host->version != ORVLOG_RENDERER_VERSION || self == NULL || (options != NULL && strcmp(options, "no") == 0))
    {
        free(self);
        host->complain(host->context, "nothing is made");
        return 0;
    }
    self->host = *host;
    self->kind = kind;
    renderer->version = ORVLOG_RENDERER_VERSION;
    renderer->context = self;
    renderer->end = end;
    renderer->table.document_start.fn = document_start;
    renderer->table.document_finish.fn = document_finish;
    renderer->table.resource_destroy.fn = resource_destroy;
    renderer->table.face_start.fn = face_start;
    renderer->table.resource_start.fn = resource_start;
    renderer->table.memory_context_start.fn = memory_context_start;
    renderer->table.document_start.context = renderer->table.document_finish.context = self;
    renderer->table.resource_destroy.context = renderer->table.face_start.context = self;
    renderer->table.resource_start.context = renderer->table.memory_context_start.context = self;
    return 1;
}

#define RENDERER(name, kind)                                                                                           \
    ORVLOG_RENDERER_EXPORT uint32_t name(const ORVLOG_RendererHost* host, const char* options,                         \
                                         ORVLOG_Renderer* renderer);                                                   \
    uint32_t name(const ORVLOG_RendererHost* host, const char* options, ORVLOG_Renderer* renderer)                     \
    {                                                                                                                  \
        return make(host, options, renderer, kind);                                                                    \
    }

RENDERER(orvlog_renderer, ORDINARY)
RENDERER(fumbling_renderer, FUMBLING)
RENDERER(crashing_renderer, CRASHING)
RENDERER(hanging_renderer, HANGING)
RENDERER(leaving_renderer, LEAVING)
