#include "inspect/c-source/c-prelude.h"

namespace orvlog::inspect
{

const char* const kCCallRecords = R"c(
/* The arguments of the calls, as they stand in the log. */

typedef struct DocumentStart { void** document; uint32_t id; const GFI_FontEngineTable* engine; } DocumentStart;
typedef struct DocumentFinish { void** document; } DocumentFinish;
typedef struct ResourceDestroy { void** document; const ORV_DrawingInterface* parent; const uint32_t* resource; } ResourceDestroy;
typedef struct FaceStart { void** document; ORV_DrawingInterface* drawing; const GFI_FontEngineTable* engine; uint32_t number; const ORV_FaceProperties* properties; void* ticket; uint32_t orientation, placement; } FaceStart;
typedef struct ResourceStart { void** document; ORV_DrawingInterface* drawing; const ORV_DrawingInterface* parent; const GFI_FontEngineTable* engine; const ORV_ResourceProperties* properties; void* ticket; uint32_t* resource; } ResourceStart;
typedef struct MemoryContextStart { void** document; ORV_DrawingInterface* drawing; const GFI_FontEngineTable* engine; } MemoryContextStart;
typedef struct ObjectPaint { const ORV_DrawingInterface* drawing; uint8_t object_type; uint32_t hints; const GOP_Operator* op; const GSH_ShapePointer* path; uint32_t placement; const GSH_ShapeList* clip; void *operand1, *operand2, *operand3; } ObjectPaint;
typedef struct ObjectPaintAndStroke { const ORV_DrawingInterface* drawing; uint8_t fill_type, stroke_type; uint32_t hints; const GOP_Operator *fill_op, *stroke_op; const GSH_ShapePointer* path; const void* stroking; const GGO_Matrix* transform; uint32_t placement; const GSH_ShapeList* clip; uint32_t flags; void *fill_operand1, *fill_operand2, *fill_operand3, *stroke_operand1, *stroke_operand2, *stroke_operand3; } ObjectPaintAndStroke;
typedef struct GroupStart { const ORV_DrawingInterface* drawing; uint32_t unique_id; const GFI_FontEngineTable* engine; uint32_t hints, type, knockout, replayable; void* ticket; uint32_t orientation, has_placement, placement; const GGO_Matrix* retransform; const GOP_Operator* op; void* operand2; const GSH_ShapeList* clip; uint32_t tiling; double x_interval, y_interval; const void *mask, *color; const GGO_BoxFloat* box; } GroupStart;
typedef struct ResourcePaint { const ORV_DrawingInterface* drawing; const uint32_t* resource; uint32_t hints, type; const GGO_Matrix* retransform; const GOP_Operator* op; void* operand2; const GSH_ShapeList* clip; uint32_t tiling; double x_interval, y_interval; const void *mask, *color; uint32_t orientation; } ResourcePaint;
typedef struct Between { int none; } Between;
typedef struct DrawingCall { const ORV_DrawingInterface* drawing; } DrawingCall;

#define BETWEEN(...) .make = make_between, .about = &(const Between){__VA_ARGS__}
#define DOCUMENT_START(...) .make = make_document_start, .about = &(const DocumentStart){__VA_ARGS__}
#define DOCUMENT_FINISH(...) .make = make_document_finish, .about = &(const DocumentFinish){__VA_ARGS__}
#define RESOURCE_DESTROY(...) .make = make_resource_destroy, .about = &(const ResourceDestroy){__VA_ARGS__}
#define FACE_START(...) .make = make_face_start, .about = &(const FaceStart){__VA_ARGS__}
#define RESOURCE_START(...) .make = make_resource_start, .about = &(const ResourceStart){__VA_ARGS__}
#define MEMORY_CONTEXT_START(...) .make = make_memory_context_start, .about = &(const MemoryContextStart){__VA_ARGS__}
#define OBJECT_PAINT(...) .make = make_object_paint, .about = &(const ObjectPaint){__VA_ARGS__}
#define OBJECT_PAINT_AND_STROKE(...) .make = make_object_paint_and_stroke, .about = &(const ObjectPaintAndStroke){__VA_ARGS__}
#define GROUP_START(...) .make = make_group_start, .about = &(const GroupStart){__VA_ARGS__}
#define GROUP_FINISH(...) .make = make_group_finish, .about = &(const DrawingCall){__VA_ARGS__}
#define RESOURCE_PAINT(...) .make = make_resource_paint, .about = &(const ResourcePaint){__VA_ARGS__}
#define DRAWING_FINISH(...) .make = make_drawing_finish, .about = &(const DrawingCall){__VA_ARGS__}
#define DRAWING_DISCARD(...) .make = make_drawing_discard, .about = &(const DrawingCall){__VA_ARGS__}
)c";

const char* const kCMaking = R"c(
/* Makes calls. */

void make(const Call* call)
{
    Present now = {.call = call, .outer = present};
    present = &now;
    for (size_t i = 0; i < call->load_count; ++i)
        if (call->loads[i].direct != NULL)
            load_direct(&call->loads[i]);
        else
            load(call->loads[i].to, call->loads[i].size, call->loads[i].file, call->loads[i].from);
    call->make(call->about);
    make_asides();
    if (now.next < call->logger_steps)
        complain("the logger asked for less than the log says");
    while (now.loaded_count > 0)
        free(now.loaded[--now.loaded_count]);
    present = now.outer;
}

void make_all(const Step* steps, size_t count)
{
    for (size_t i = 0; i < count; ++i)
        make_aside(&steps[i]);
}

void* opened(void** document)
{
    return document != NULL ? *document : NULL;
}

/* What the renderer asks between two calls. */
void make_between(const void* about)
{
    (void)about;
    run(NULL, NULL, 0);
}

void make_document_start(const void* about)
{
    const DocumentStart* a = about;
    orv.document_start.fn(NULL, &orv, a->document, a->id, a->engine, NULL);
}

void make_document_finish(const void* about)
{
    const DocumentFinish* a = about;
    orv.document_finish.fn(&orv, opened(a->document));
}

void make_resource_destroy(const void* about)
{
    const ResourceDestroy* a = about;
    orv.resource_destroy.fn(NULL, &orv, opened(a->document), a->parent, *a->resource);
}

void make_face_start(const void* about)
{
    const FaceStart* a = about;
    orv.face_start.fn(NULL, &orv, opened(a->document), a->drawing, a->engine, a->number, a->properties, a->ticket, a->orientation, a->placement);
}

void make_resource_start(const void* about)
{
    const ResourceStart* a = about;
    orv.resource_start.fn(NULL, &orv, opened(a->document), a->drawing, a->parent, a->engine, a->properties, a->ticket, a->resource);
}

void make_memory_context_start(const void* about)
{
    const MemoryContextStart* a = about;
    orv.memory_context_start.fn(NULL, &orv, opened(a->document), a->drawing, 0, 0, 0, 0, 0, a->engine, NULL, 0, 0, 0, 0, 0, 0);
}

void make_object_paint(const void* about)
{
    const ObjectPaint* a = about;
    a->drawing->object_paint.fn(a->drawing, a->object_type, a->hints, a->op, a->path, a->placement, a->clip, a->operand1, a->operand2, a->operand3);
}

void make_object_paint_and_stroke(const void* about)
{
    const ObjectPaintAndStroke* a = about;
    GGO_Point end_point = {0, 0};
    a->drawing->object_paint_and_stroke.fn(a->drawing, a->fill_type, a->stroke_type, a->hints, a->fill_op, a->stroke_op, a->path, a->stroking, a->transform, a->placement, a->clip, a->flags, &end_point, a->fill_operand1, a->fill_operand2, a->fill_operand3, a->stroke_operand1, a->stroke_operand2, a->stroke_operand3);
}

void make_group_start(const void* about)
{
    const GroupStart* a = about;
    uint32_t group = 0;
    a->drawing->group_start.fn(a->drawing, a->unique_id, &group, a->engine, a->hints, a->type, a->knockout, a->replayable, a->ticket, a->orientation, a->has_placement, a->placement, a->retransform, a->op, a->operand2, a->clip, a->tiling, a->x_interval, a->y_interval, a->mask, a->color, a->box);
}

void make_group_finish(const void* about)
{
    const DrawingCall* a = about;
    uint32_t again = 0;
    a->drawing->group_finish.fn(a->drawing, &again);
}

void make_resource_paint(const void* about)
{
    const ResourcePaint* a = about;
    a->drawing->resource_paint.fn(a->drawing, *a->resource, a->hints, a->type, a->retransform, a->op, a->operand2, a->clip, a->tiling, a->x_interval, a->y_interval, a->mask, a->color, a->orientation);
}

void make_drawing_finish(const void* about)
{
    const DrawingCall* a = about;
    a->drawing->drawing_finish.fn(a->drawing);
}

void make_drawing_discard(const void* about)
{
    const DrawingCall* a = about;
    a->drawing->drawing_discard.fn(a->drawing);
}
)c";

}  // namespace orvlog::inspect
