/* A renderer that paints a block of one colour for each paint, and can be told to do it otherwise.
 *
 * Options: wrong=N paints the Nth block of a page otherwise, by as much as by=N says (60 without it); crash=N, hang=N
 * and eat=N do so in the Nth paint of the job; slow=N takes 20 ms of the processor for it; small makes smaller pages.
 */

#include "orvlog/interface/orvlog-renderer.h"

#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <time.h>

enum
{
    SIDE = 200,
    BLOCK = 4
};

typedef struct Blocks
{
    const ORVLOG_RendererHost* host;
    uint32_t pixels[SIDE * SIDE];
    uint32_t side, number, paint, all, wrong, by, crash, hang, eat, slow, resources;
    int page;
} Blocks;

static uint32_t option(const char* text, const char* name)
{
    const char* found = text != NULL ? strstr(text, name) : NULL;
    return found != NULL ? (uint32_t)strtoul(found + strlen(name), NULL, 10) : 0;
}

static void misbehave(Blocks* blocks)
{
    ++blocks->all;
    if (blocks->all == blocks->crash)
        abort();
    while (blocks->all == blocks->hang)
        continue;
    while (blocks->all == blocks->eat)
        if (calloc(1, 1U << 20) == NULL)
            abort();
    if (blocks->all == blocks->slow)
    {
        const clock_t begin = clock();
        while (clock() - begin < CLOCKS_PER_SEC / 50)
            continue;
        free(malloc(1));
    }
}

static uint32_t paint(const ORV_DrawingInterface* table, GOP_OperandPointer* operand)
{
    Blocks* blocks = table->object_paint.context;
    const uint32_t row = SIDE / BLOCK;
    uint32_t colour;
    (void)operand;
    misbehave(blocks);
    if (!blocks->page)
        return 1;
    ++blocks->paint;
    colour = 0x10U * (blocks->paint % 8);
    if (blocks->paint == blocks->wrong)
        colour += blocks->by;
    for (uint32_t i = 0; i < BLOCK * BLOCK; ++i)
    {
        const uint32_t x = blocks->paint % row * BLOCK + i % BLOCK;
        const uint32_t y = blocks->paint / row % row * BLOCK + i / BLOCK;
        blocks->pixels[y * SIDE + x] = colour;
    }
    return 1;
}

static uint32_t object_paint(const ORV_DrawingInterface* table, uint8_t type, uint32_t hints, const GOP_Operator* op,
                             const GSH_ShapePointer* path, uint32_t placement, const GSH_ShapeList* clip,
                             GOP_OperandPointer* one, GOP_OperandPointer* two, GOP_OperandPointer* three)
{
    (void)type, (void)hints, (void)op, (void)path, (void)placement, (void)clip, (void)two, (void)three;
    return paint(table, one);
}

static uint32_t object_paint_and_stroke(const ORV_DrawingInterface* table, uint8_t fill_type, uint8_t stroke_type,
                                        uint32_t hints, const GOP_Operator* fill_op, const GOP_Operator* stroke_op,
                                        const GSH_ShapePointer* path, const GPA_PathStrokingParams* params,
                                        const GGO_Matrix* transform, uint32_t placement, const GSH_ShapeList* clip,
                                        uint32_t flags, GGO_Point* end_point, GOP_OperandPointer* one,
                                        GOP_OperandPointer* two, GOP_OperandPointer* three, GOP_OperandPointer* four,
                                        GOP_OperandPointer* five, GOP_OperandPointer* six)
{
    (void)fill_type, (void)stroke_type, (void)hints, (void)fill_op, (void)stroke_op, (void)path, (void)params;
    (void)transform, (void)placement, (void)clip, (void)flags, (void)end_point, (void)two, (void)three, (void)four;
    (void)five, (void)six;
    return paint(table, one);
}

static uint32_t group_start(const ORV_DrawingInterface* table, uint32_t id, uint32_t* group,
                            const GFI_FontEngineTable* engine, uint32_t hints, uint32_t type, uint32_t knockout,
                            uint32_t replayable, void* ticket, uint32_t orientation, uint32_t has_placement,
                            uint32_t placement, const GGO_Matrix* retransform, const GOP_Operator* op,
                            GOP_OperandPointer* operand, const GSH_ShapeList* clip, uint32_t tiling, double x, double y,
                            const GBC_Color* mask, const GBC_Color* color, const GGO_BoxFloat* box)
{
    (void)table, (void)id, (void)group, (void)engine, (void)hints, (void)type, (void)knockout, (void)replayable;
    (void)ticket, (void)orientation, (void)has_placement, (void)placement, (void)retransform, (void)op, (void)operand;
    (void)clip, (void)tiling, (void)x, (void)y, (void)mask, (void)color, (void)box;
    return 1;
}

static uint32_t group_finish(const ORV_DrawingInterface* table, uint32_t* again)
{
    (void)table;
    *again = 0;
    return 1;
}

static uint32_t resource_paint(const ORV_DrawingInterface* table, uint32_t resource, uint32_t hints, uint32_t type,
                               const GGO_Matrix* retransform, const GOP_Operator* op, GOP_OperandPointer* operand,
                               const GSH_ShapeList* clip, uint32_t tiling, double x, double y, const GBC_Color* mask,
                               const GBC_Color* color, uint32_t orientation)
{
    (void)table, (void)resource, (void)hints, (void)type, (void)retransform, (void)op, (void)operand, (void)clip;
    (void)tiling, (void)x, (void)y, (void)mask, (void)color, (void)orientation;
    return 1;
}

static void* error_context(const ORV_DrawingInterface* table)
{
    (void)table;
    return NULL;
}

static uint32_t resource_finish(const ORV_DrawingInterface* table)
{
    Blocks* blocks = table->object_paint.context;
    blocks->page = 1;
    return 1;
}

static uint32_t face_finish(const ORV_DrawingInterface* table)
{
    Blocks* blocks = table->object_paint.context;
    const ORVLOG_RendererPage page = {blocks->number, blocks->side, blocks->side,  0,
                                      blocks->side,   SIDE,         blocks->pixels};
    blocks->page = 0;
    return blocks->host->take_page(blocks->host->context, &page);
}

static void fill(ORV_DrawingInterface* drawing, Blocks* blocks, ORV_drawing_finish_fn finish)
{
    const ORV_DrawingInterface made = {
        {object_paint, blocks},   {object_paint_and_stroke, blocks}, {group_start, blocks}, {group_finish, blocks},
        {resource_paint, blocks}, {error_context, blocks},           {finish, blocks},      {finish, blocks}};
    *drawing = made;
}

static uint32_t document_start(void* err, const ORV_Interface* table, void** document, uint32_t id,
                               const GFI_FontEngineTable* engine, void* extra)
{
    (void)err, (void)id, (void)engine, (void)extra;
    *document = table->document_start.context;
    return 1;
}

static uint32_t document_finish(const ORV_Interface* table, void* document)
{
    (void)table, (void)document;
    return 1;
}

static uint32_t resource_destroy(void* err, const ORV_Interface* table, void* document,
                                 const ORV_DrawingInterface* parent, uint32_t resource)
{
    (void)err, (void)table, (void)document, (void)parent, (void)resource;
    return 1;
}

static uint32_t face_start(void* err, const ORV_Interface* table, void* document, ORV_DrawingInterface* drawing,
                           const GFI_FontEngineTable* engine, uint32_t number, const ORV_FaceProperties* properties,
                           void* ticket, uint32_t orientation, uint32_t placement)
{
    Blocks* blocks = table->face_start.context;
    (void)err, (void)document, (void)engine, (void)properties, (void)ticket, (void)orientation, (void)placement;
    memset(blocks->pixels, 0xFF, sizeof blocks->pixels);
    blocks->number = number;
    blocks->paint = 0;
    blocks->page = 1;
    fill(drawing, blocks, face_finish);
    return 1;
}

static uint32_t resource_start(void* err, const ORV_Interface* table, void* document, ORV_DrawingInterface* drawing,
                               const ORV_DrawingInterface* parent, const GFI_FontEngineTable* engine,
                               const ORV_ResourceProperties* properties, void* ticket, uint32_t* resource)
{
    Blocks* blocks = table->resource_start.context;
    (void)err, (void)document, (void)parent, (void)engine, (void)properties, (void)ticket;
    *resource = ++blocks->resources;
    blocks->page = 0;
    fill(drawing, blocks, resource_finish);
    return 1;
}

static uint32_t memory_context_start(void* err, const ORV_Interface* table, void* document, ORV_DrawingInterface* out,
                                     uintptr_t word1, uintptr_t word2, uintptr_t word3, uintptr_t word4,
                                     uintptr_t word5, const GFI_FontEngineTable* engine, void* ticket, uintptr_t word8,
                                     uintptr_t word9, uintptr_t word10, uintptr_t word11, uintptr_t word12,
                                     uintptr_t word13)
{
    (void)err, (void)table, (void)document, (void)out, (void)word1, (void)word2, (void)word3, (void)word4, (void)word5;
    (void)engine, (void)ticket, (void)word8, (void)word9, (void)word10, (void)word11, (void)word12, (void)word13;
    return 0;
}

static uint32_t end(void* context)
{
    free(context);
    return 1;
}

ORVLOG_RENDERER_EXPORT uint32_t orvlog_renderer(const ORVLOG_RendererHost* host, const char* options,
                                                ORVLOG_Renderer* renderer)
{
    Blocks* blocks = host->version == ORVLOG_RENDERER_VERSION ? calloc(1, sizeof *blocks) : NULL;
    if (blocks == NULL)
        return 0;
    blocks->host = host;
    blocks->side = options != NULL && strstr(options, "small") != NULL ? SIDE / 2 : SIDE;
    blocks->wrong = option(options, "wrong=");
    blocks->by = option(options, "by=") != 0 ? option(options, "by=") : 60;
    blocks->crash = option(options, "crash=");
    blocks->hang = option(options, "hang=");
    blocks->eat = option(options, "eat=");
    blocks->slow = option(options, "slow=");
    renderer->version = ORVLOG_RENDERER_VERSION;
    renderer->context = blocks;
    renderer->end = end;
    renderer->table.document_start.fn = document_start;
    renderer->table.document_start.context = blocks;
    renderer->table.document_finish.fn = document_finish;
    renderer->table.resource_destroy.fn = resource_destroy;
    renderer->table.face_start.fn = face_start;
    renderer->table.face_start.context = blocks;
    renderer->table.resource_start.fn = resource_start;
    renderer->table.resource_start.context = blocks;
    renderer->table.memory_context_start.fn = memory_context_start;
    return 1;
}
