/* The calls of page.xml, made again. Written by orvlog to-c 1.0.0.
 *
 *     cc -std=c11 page.c $(pkg-config --cflags --libs orvlog) -o page
 *     ./page LOG [FOLDER]
 *
 * The program makes these calls on the logger, which writes them to LOG. A renderer within it asks for what
 * the job's renderer asked for. FOLDER, the present one unless told, is where the files beside this one are. */

#include "orvlog/interface/orvlog.h"

#include <math.h>
#include <stdarg.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>

#define LENGTH(array) (sizeof(array) / sizeof((array)[0]))
#define IMAGES "page-images.bin"
#define PROFILES "page-profiles.bin"
#define GLYPHS "page-glyphs.bin"

/* Records that end in an array, with room for n. */

#define PATH(n) struct { uint32_t pa_NumEdges; uint16_t pa_PathHints; GGO_BoxFloat pa_EnclosingBox; GGO_Point pa_EdgeStart[n]; }
#define PATH_POINTER(n) struct { const GPA_Path* lpp_Path; uint32_t lpp_PixelPlacement, lpp_EnablePixelPlacement, lpp_PathOwned; GPA_EdgePointer lpp_EdgePointer[n]; }
#define EDGE(type, n) struct { GPA_Edge edge; uint32_t positive; type segments[n]; }
#define STRAIGHT(n) EDGE(GGO_Vector, n)
#define BEZIER(n) EDGE(GPA_BezierSegment, n)
#define QUAD_BEZIER(n) EDGE(GPA_QuadBezierSegment, n)
#define STAIRCASE(n) EDGE(GPA_StaircaseSegment, n)
#define ELLIPTICAL(n) EDGE(GPA_EllipticalSegment, n)
#define STROKE(n) struct { uint16_t psp_Flags, psp_DashCount; uint8_t psp_DashCaps; float psp_StrokeWidth, psp_MiterLimit, psp_DashStart, psp_DashLength[n]; }
#define STROKE_FLAGS(start, end, join, adjust, z) ((start) | (end) << 4 | (join) << 8 | (adjust) << 12 | (z) << 15)
#define STROKED_PATH_SHAPE(n) struct { GSH_Shape shape; uint32_t winding; STROKE(n) stroke; }
#define STROKED_GLYPH_SHAPE(n) struct { GSH_Shape shape; GGO_Matrix transform; STROKE(n) stroke; }
#define MULTI_RECT_SHAPE(n) struct { GSH_Shape shape; uint32_t count; GGO_BoxInt boxes[n]; }
#define SCANLINE_SHAPE(n) struct { GSH_Shape shape; GGO_BoxInt box; int32_t start; uint32_t height; GSH_XLimits limits[n]; }
#define COLOR(type, n) struct { uint16_t num_chans; uint8_t bit_depth, has_alpha; uint32_t empty_chans; type channels[n]; }
#define FLAT(type, n) struct { GOP_Operand operand; COLOR(type, n) color; }
#define STOP(type, n) struct { double position; COLOR(type, n) color; }
#define RADIAL(type, n) struct { GOP_Operand operand; GGO_Matrix transform; GGO_Point center_1; double radius_1; GGO_Point center_2; double radius_2; uint8_t interpolate, extend, rounding; COLOR(type, n) color; }
#define STOPS_POINTER(n) struct { GOP_OperandPointer pointer; const GOP_GradStop* stops[n]; }
#define GLYPH_FBE(n) struct { GFI_GlyphDesc desc; uint16_t width, height; uint32_t size; uint8_t payload[n]; }
#define GLYPH_BITMAP(n) struct { GFI_GlyphDesc desc; uint16_t width, height, row_step, black_is_one; uint8_t payload[n]; }
#define GLYPH_TRUETYPE(n) struct { GFI_GlyphDesc desc; uint16_t size; uint8_t payload[n]; }
#define GLYPH_RLE(n) struct { GFI_GlyphDesc desc; uint16_t width, height, size; uint8_t payload[n]; }

/* What a renderer, or the logger itself, asks while a call is made, and what the client answers. */

typedef struct StringStart { uint32_t engine, result; const GGO_Matrix* to_pixels; uint32_t flags, scaled; const GFI_FontSpecPointer* font; const GFI_StringDescPointer* string; int32_t font_id; const GGO_Matrix* glyph_to_pixels; uint32_t glyph_flags; } StringStart;
typedef struct GlyphIndex { uint32_t engine, result, returned, index; uint16_t variant; const GGO_Vector* advance; const GGO_BoxFloat* box; } GlyphIndex;
typedef struct Glyph { uint32_t engine, result, type, returned, changed; const GGO_Matrix* to_pixels; uint32_t flags; const GFI_GlyphDescPointer* glyph; } Glyph;
typedef struct Prepare { uint32_t image, now, result, replaced, object_type, decompress, rescale; float max_width, min_width, max_height, min_height; uint32_t render_space, depth, attributes; GOP_OperandImagePointer* left; } Prepare;
typedef struct Read { uint32_t times, image, result, skip; int32_t row_step; uint32_t size; int32_t returned; uint32_t bytes; uint64_t from; uint32_t with_attributes; int32_t attr_row_step; uint32_t attr_size; int32_t attr_returned; uint32_t attr_bytes; uint64_t attr_from; } Read;
typedef struct Plain { uint32_t image, result; const GOP_OperandImagePointer* given; } Plain; /* given: if the renderer has changed the record */

enum { STRING_START_STEP, GLYPH_INDEX_STEP, GLYPH_FIXED_STEP, GLYPH_STEP, PREPARE_STEP, READ_STEP, FINISH_STEP, RESET_STEP, KEEP_STEP, RELEASE_STEP, COMMENT_STEP, CALL_STEP };

typedef struct Step { int kind; const void* about; } Step;

#define STRING_START(...) {STRING_START_STEP, &(const StringStart){__VA_ARGS__}}
#define GLYPH_INDEX(...) {GLYPH_INDEX_STEP, &(const GlyphIndex){__VA_ARGS__}}
#define GLYPH_FIXED(...) {GLYPH_FIXED_STEP, &(const Glyph){__VA_ARGS__}}
#define GLYPH(...) {GLYPH_STEP, &(const Glyph){__VA_ARGS__}}
#define PREPARE(...) {PREPARE_STEP, &(const Prepare){__VA_ARGS__}}
#define READ(...) {READ_STEP, &(const Read){__VA_ARGS__}}
#define FINISH(...) {FINISH_STEP, &(const Plain){__VA_ARGS__}}
#define RESET(...) {RESET_STEP, &(const Plain){__VA_ARGS__}}
#define KEEP(...) {KEEP_STEP, &(const Plain){__VA_ARGS__}}
#define RELEASE(...) {RELEASE_STEP, &(const Plain){__VA_ARGS__}}
#define COMMENT(text) {COMMENT_STEP, text}
#define CALL(call) {CALL_STEP, &(call)}

/* Bytes that are loaded ahead of a call: to `to`, or to memory that `direct` points to until the call ends. */
typedef struct Load { void* to; const uint8_t** direct; size_t size; const char* file; uint64_t from; } Load;

#define LOAD(to, size, file, from) {to, NULL, size, file, from}
#define LOAD_DIRECT(direct, size, file, from) {NULL, &(direct), size, file, from}

/* A call of the log. Images and engines are places in the tables below, from 1. */
typedef struct Call
{
    const char* name;
    void (*make)(const void* about);
    const void* about;
    const Load* loads;
    size_t load_count;
    const Step* by_logger;
    size_t logger_steps;
    const Step* by_renderer;
    size_t renderer_steps;
    uint32_t images[6], engine, again;
    uint32_t resource, refused, without_resource_paint; /* what the renderer makes of it */
} Call;

/* One that is being made. */
typedef struct Present
{
    const Call* call;
    size_t next;       /* of by_logger */
    uint32_t repeated; /* reads of the present step that have been made */
    const Step* asked; /* by the renderer */
    void* loaded[6];
    size_t loaded_count;
    struct Present* outer;
} Present;

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

static void* documents[2];
static ORV_DrawingInterface drawings[2];
static const GFI_FontEngineTable* engines[2];
static GOP_OperandImagePointer* images[2];

static ORV_Interface orv;
static Present* present;
static int failed;
static orvlog_comment_fn_type comment_function;
static void* comment_context;
static const char* folder = ".";

const uint8_t no_bytes[1] = {0};

void complain(const char* what)
{
    fprintf(stderr, "%s: %s\n", present != NULL ? present->call->name : "the job", what);
    failed = 1;
}

void transfer(void)
{
}

/* Bytes that lie in files beside the source. */

void load(void* to, size_t size, const char* name, uint64_t from)
{
    static FILE* file;
    static const char* open_name;
    static uint64_t place;
    if (open_name != name)
    {
        char path[4096];
        if (file != NULL)
            fclose(file);
        snprintf(path, sizeof path, "%s/%s", folder, name);
        file = fopen(path, "rb");
        open_name = name;
        place = 0;
        if (file == NULL)
            complain(path);
    }
    memset(to, 0, size);
    if (file == NULL || size == 0)
        return;
    if (from < place)
    {
        rewind(file);
        place = 0;
    }
    while (place < from)
    {
        const uint64_t step = from - place < 1000000000 ? from - place : 1000000000;
        fseek(file, (long)step, SEEK_CUR);
        place += step;
    }
    place += size;
    if (fread(to, 1, size, file) != size)
        complain("a file with data is too short");
}

void load_direct(const Load* wanted)
{
    uint8_t* bytes = malloc(wanted->size);
    *wanted->direct = bytes != NULL ? bytes : no_bytes;
    if (bytes == NULL)
    {
        complain("no memory");
        return;
    }
    load(bytes, wanted->size, wanted->file, wanted->from);
    present->loaded[present->loaded_count++] = bytes;
}

void comment(const char* text)
{
    (void)text;
}

/* The client's answers. */

void make(const Call* call);

int is_aside(const Step* step)
{
    return step->kind == COMMENT_STEP || step->kind == CALL_STEP;
}

void make_aside(const Step* step)
{
    if (step->kind == COMMENT_STEP)
        comment(step->about);
    else
        make(step->about);
}

void make_asides(void)
{
    Present* now = present;
    while (now->next < now->call->logger_steps && is_aside(&now->call->by_logger[now->next]))
        make_aside(&now->call->by_logger[now->next++]);
}

/* What is to be answered now: to the renderer, or to the logger. Null, and said, where something else was to be asked. */
const void* answer(int kind)
{
    const Step* step = present != NULL ? present->asked : NULL;
    if (present != NULL && step == NULL)
    {
        make_asides();
        step = present->next < present->call->logger_steps ? &present->call->by_logger[present->next] : NULL;
        if (step != NULL && step->kind == kind && (kind != READ_STEP || present->repeated + 1 >= ((const Read*)step->about)->times))
            ++present->next;
    }
    if (step == NULL || step->kind != kind)
    {
        complain("the client is asked for what it wasn't asked for");
        return NULL;
    }
    return step->about;
}

const GFI_FontSpecPointer stray_font = {NULL};
const GFI_StringDescPointer stray_string = {NULL, NULL, NULL};
static GFI_GlyphDescPointer given;

void give_matrix(GGO_Matrix* to, uint32_t* flags, const GGO_Matrix* matrix, uint32_t value)
{
    if (to != NULL && matrix != NULL)
        *to = *matrix;
    if (flags != NULL)
        *flags = value;
}

uint32_t string_start(void* context, const GFI_FontSpecPointer* font, const GGO_Matrix* to_pixels, uint32_t flags, uint32_t scaled, const GFI_StringDescPointer* string, int32_t* font_id, GGO_Matrix* glyph_to_pixels, uint32_t* glyph_flags)
{
    const StringStart* step = answer(STRING_START_STEP);
    (void)context, (void)font, (void)to_pixels, (void)flags, (void)scaled, (void)string;
    if (step == NULL)
        return 0;
    *font_id = step->font_id;
    give_matrix(glyph_to_pixels, glyph_flags, step->glyph_to_pixels, step->glyph_flags);
    return step->result;
}

uint32_t glyph_index_get(void* context, uint32_t* returned, uint32_t* index, uint16_t* variant, GGO_Vector* advance, GGO_BoxFloat* box)
{
    const GlyphIndex* step = answer(GLYPH_INDEX_STEP);
    (void)context;
    *returned = 0;
    if (step == NULL)
        return 0;
    *returned = step->returned;
    *index = step->index;
    *variant = step->variant;
    if (advance != NULL && step->advance != NULL)
        *advance = *step->advance;
    if (box != NULL && step->box != NULL)
        *box = *step->box;
    return step->result;
}

uint32_t give_glyph(const Glyph* step, uint32_t* changed, GGO_Matrix* matrix, uint32_t* flags, GFI_GlyphDescPointer** glyph)
{
    if (step == NULL)
        return 0;
    *changed = step->changed;
    if (step->changed)
        give_matrix(matrix, flags, step->to_pixels, step->flags);
    if (step->glyph != NULL)
        given = *step->glyph;
    *glyph = step->glyph != NULL ? &given : NULL;
    return step->result;
}

uint32_t glyph_get_fixed(void* context, uint32_t type, uint32_t* returned, uint32_t* changed, GGO_Matrix* matrix, uint32_t* flags, GFI_GlyphDescPointer** glyph)
{
    const Glyph* step = answer(GLYPH_FIXED_STEP);
    (void)context, (void)type;
    *returned = step != NULL ? step->returned : 0;
    return give_glyph(step, changed, matrix, flags, glyph);
}

uint32_t glyph_get(void* context, uint32_t type, uint32_t* changed, GGO_Matrix* matrix, uint32_t* flags, GFI_GlyphDescPointer** glyph)
{
    (void)context, (void)type;
    return give_glyph(answer(GLYPH_STEP), changed, matrix, flags, glyph);
}

const char* engine_name(void* context)
{
    return context;
}

#define NAMED_ENGINE(name) {string_start, glyph_index_get, glyph_get_fixed, glyph_get, engine_name, NULL, (void*)name}
#define ENGINE {string_start, glyph_index_get, glyph_get_fixed, glyph_get, NULL, NULL, NULL}

uint32_t image_prepare(GOP_OperandImagePointer** operand, uint32_t object_type, uint32_t decompress, uint32_t rescale, float max_width, float min_width, float max_height, float min_height, uint32_t render_space, uint32_t depth, uint32_t attributes)
{
    const Prepare* step = answer(PREPARE_STEP);
    (void)object_type, (void)decompress, (void)rescale, (void)max_width, (void)min_width, (void)max_height;
    (void)min_height, (void)render_space, (void)depth, (void)attributes;
    if (step == NULL)
        return 0;
    if (step->left != NULL && step->replaced)
        *operand = step->left;
    else if (step->left != NULL)
    {
        const uint8_t* direct = (*operand)->imp_DirectImage;
        **operand = *step->left;
        if (direct != NULL && step->left->imp_DirectImage != NULL)
            (*operand)->imp_DirectImage = direct;
    }
    return step->result;
}

uint32_t image_read(GOP_OperandImagePointer* operand, void* context, uint32_t skip, uint8_t* image, uint32_t size, int32_t row_step, int32_t* returned, uint8_t* attributes, uint32_t attr_size, int32_t attr_row_step, int32_t* attr_returned)
{
    const Read* step = answer(READ_STEP);
    (void)operand, (void)context, (void)skip, (void)row_step, (void)attr_row_step;
    if (step == NULL)
        return 0;
    load(image, step->bytes < size ? step->bytes : size, IMAGES, step->from + (uint64_t)present->repeated * step->bytes);
    *returned = step->returned;
    if (attributes != NULL)
    {
        load(attributes, step->attr_bytes < attr_size ? step->attr_bytes : attr_size, IMAGES, step->attr_from);
        *attr_returned = step->attr_returned;
    }
    if (present->asked == NULL)
        present->repeated = present->repeated + 1 < step->times ? present->repeated + 1 : 0;
    return step->result;
}

uint32_t plain_answer(int kind)
{
    const Plain* step = answer(kind);
    return step != NULL ? step->result : 0;
}

uint32_t image_finish(GOP_OperandImagePointer* operand, void* context)
{
    (void)operand, (void)context;
    return plain_answer(FINISH_STEP);
}

uint32_t image_reset(GOP_OperandImagePointer* operand, void* context)
{
    (void)operand, (void)context;
    return plain_answer(RESET_STEP);
}

uint32_t image_keep(GOP_OperandImagePointer* operand)
{
    (void)operand;
    return plain_answer(KEEP_STEP);
}

void* image_release(GOP_OperandImagePointer* operand)
{
    (void)operand;
    plain_answer(RELEASE_STEP);
    return NULL;
}

/* A stream over bytes, for profiles that come by one. */

typedef struct Bytes { const uint8_t* bytes; size_t size, place; } Bytes;

uint64_t bytes_read(void* to, uint64_t item_size, uint64_t count, void* self)
{
    Bytes* from = self;
    const uint64_t left = (from->size - from->place) / (item_size != 0 ? item_size : 1);
    count = count < left ? count : left;
    memcpy(to, from->bytes + from->place, (size_t)(count * item_size));
    from->place += (size_t)(count * item_size);
    return count;
}

int32_t bytes_seek(void* self, int32_t offset, int32_t origin)
{
    Bytes* from = self;
    if (origin != GIO_SEEK_SET || offset < 0 || (size_t)offset > from->size)
        return -1;
    from->place = (size_t)offset;
    return 0;
}

const GIO_StreamOps byte_operations = {.gio_Read = bytes_read, .gio_Seek = bytes_seek};

/* The client's colour manager. */

typedef struct Ticket
{
    uint32_t key, kind, channels;
    const uint8_t* bytes;
    size_t size;
    GCM_Csd first;
    const GCM_Csd* list[2];
} Ticket;

uint32_t ticket_nothing(void* ticket)
{
    (void)ticket;
    return 1;
}

uint32_t ticket_query(void* ticket, void* space, void* render)
{
    const Ticket* told = ticket;
    const uint32_t numbers[5] = {told->kind, 8, 0, told->channels, told->key};
    const uint32_t keys[4] = {told->key, 0, 0, 0};
    memcpy(space, numbers, sizeof numbers);
    memcpy(render, keys, sizeof keys);
    return 1;
}

uint32_t ticket_csd_list(void* ticket, const GCM_Csd* const** list, uintptr_t zero1, uintptr_t zero2)
{
    Ticket* told = ticket;
    (void)zero1, (void)zero2;
    told->list[0] = &told->first;
    *list = told->list;
    return 1;
}

uint32_t ticket_key(void* ticket, uint32_t* key)
{
    *key = ((const Ticket*)ticket)->key;
    return *key != 0;
}

uint32_t ticket_serialise(void* ticket, GIO_Stream* stream, uintptr_t one, uintptr_t zero)
{
    const Ticket* told = ticket;
    (void)one, (void)zero;
    if (stream->ops->gio_Write(told->bytes, 1, told->size, stream->instance) != told->size)
        return 0;
    return stream->ops->gio_Seek(stream->instance, (int32_t)told->size, GIO_SEEK_SET) == 0;
}

static const ORVLOG_TicketFunctions ticket_functions = {.retain = ticket_nothing, .release = ticket_nothing, .query = ticket_query, .csd_list = ticket_csd_list, .key = ticket_key};
static const ORVLOG_TicketSerialFunctions ticket_serial_functions = {.serialise = ticket_serialise};

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

static const uint8_t session[16] = {7, 7, 7, 7, 7, 7, 7, 7, 7, 7, 7, 7, 7, 7, 7, 7};

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

/* line 2: ORV_document_start */
static const Call call_1 = {.name = "line 2",
    DOCUMENT_START(.document = &documents[0], .id = 1)};

/* line 4: ORV_face_start */
static _Alignas(8) uint8_t ticket_bytes_2[82];
static Ticket ticket_2 = {.key = 1, .channels = 3, .bytes = ticket_bytes_2, .size = 82, .first = {.csd_Type = GCM_CSDTYPE_NONCOLORIMETRIC, .csd_NumBaseChans = 3}};
static const ORV_FaceProperties face_2 = {.fp_FaceInchToPixels = {{100, 0, 0, 100, 0, 0}}, .fp_WidthInPixels = 900, .fp_HeightInPixels = 1100, .fp_TrimBox = {0, 0, 9, 11}, .fp_ClipBox = {0, 0, 9, 11}, .fp_MediaSize = {9, 11}};
static const Load loads_2[] = {
    LOAD(ticket_bytes_2, 82, PROFILES, 0),
};
static const Call call_2 = {.name = "line 4", .loads = loads_2, .load_count = LENGTH(loads_2),
    FACE_START(.document = &documents[0], .drawing = &drawings[0], .number = 1, .properties = &face_2, .ticket = &ticket_2, .orientation = GPA_PP_ORIENTATION_0_DEG, .placement = GPA_PLACEMENT_PS)};

/* id 0, line 60: ORV_object_paint */
static const GSH_FilledPathShape shape_3 = {.fps_Shape = {GSH_SHAPE_FILL, 0, {{1, 0, 0, 1, 0, 0}}}, .fps_WindingRule = GPA_WINDING_NON_ZERO};
typedef STRAIGHT(2) STRAIGHT_2;
static const STRAIGHT_2 edge_3 = {.edge = {GPA_EDGE_STRAIGHT, GPA_SUBPATH_END_CLOSED, 2}, .segments = {{3, 0}, {0, 4}}};
typedef PATH(1) PATH_1;
static const PATH_1 path_3 = {.pa_NumEdges = 1, .pa_PathHints = GPA_HINT_ONLY_STRAIGHTS, .pa_EnclosingBox = {1, 1, 4, 5}, .pa_EdgeStart = {{1, 1}}};
typedef PATH_POINTER(1) PATH_POINTER_1;
static const PATH_POINTER_1 path_pointer_3 = {.lpp_Path = (const GPA_Path*)&path_3, .lpp_EdgePointer = {{(const GPA_Edge*)&edge_3, 0}}};
static const GSH_ShapePointer paint_path_3 = {.sp_HeaderPtr = (const GSH_Shape*)&shape_3, .sp_U = {.filled_path = (const GPA_PathPointer*)&path_pointer_3}};
typedef FLAT(float, 3) FLAT_float_3;
static const FLAT_float_3 flat_3 = {.operand = {GOP_OPERAND_FLAT, GOP_COLOR_INFO(GOP_OCS_INPUT, GCM_CF_OTHER), 0, 0, GCM_CSF_RGB}, .color = {.num_chans = 3, .bit_depth = 32, .channels = {1.0F, 0, 0}}};
static GOP_OperandFlatPointer operand1_3 = {.flp_Pointer = {.op_Operand = (const GOP_Operand*)&flat_3, .op_UniqueId = 1}};
static const Call call_3 = {.name = "id 0, line 60",
    OBJECT_PAINT(.drawing = &drawings[0], .object_type = 4, .path = &paint_path_3, .placement = GPA_PLACEMENT_PS, .operand1 = &operand1_3)};

/* id 1, line 103: ORV_object_paint */
static const GOP_OperandImage image_4 = {.im_Operand = {GOP_OPERAND_IMAGE, GOP_COLOR_INFO(GOP_OCS_INPUT, GCM_CF_OTHER), 3, 0, GCM_CSF_RGB}, .im_QualitySetting = GOP_QUAL_HIGHEST_QUALITY, .im_NumNonalphaChans = 3, .im_Flags = GOP_OP_FLAGS_HAS_COLOR_DATA, .im_ImageWidthPixels = 2, .im_ImageHeightPixels = 2, .im_Transform = {{1, 0, 0, 1, 5, 5}}};
static GOP_OperandImagePointer operand1_4 = {.imp_Image = &image_4, .op_UniqueId = 2, .imp_DirectImage = no_bytes, .imp_RowStep = 6, .imp_ImagePrepareFn = image_prepare, .imp_ImageReadFn = image_read, .imp_ImageFinishFn = image_finish};
static const Load loads_4[] = {
    LOAD_DIRECT(operand1_4.imp_DirectImage, 12, IMAGES, 0),
};
static const Call call_4 = {.name = "id 1, line 103", .images[0] = 1, .loads = loads_4, .load_count = LENGTH(loads_4),
    OBJECT_PAINT(.drawing = &drawings[0], .object_type = 8, .placement = GPA_PLACEMENT_PS, .operand1 = &operand1_4)};

/* line 117: ORV_drawing_finish */
static const Call call_5 = {.name = "line 117",
    DRAWING_FINISH(.drawing = &drawings[0])};

/* line 119: ORV_document_finish */
static const Call call_6 = {.name = "line 119",
    DOCUMENT_FINISH(.document = &documents[0])};

static const Step part_1[] = {
    CALL(call_1),
    CALL(call_2),
    CALL(call_3),
    CALL(call_4),
    CALL(call_5),
    CALL(call_6),
};

int main(int argc, char** argv)
{
    static const ORVLOG_IdentityTable identities = {{NULL}, session_number};
    static const GIO_StreamOps operations = {.gio_Write = write_items, .gio_Flush = flush, .gio_VPrintf = print};
    ORVLOG_IdentityObject object = {&identities};
    const ORVLOG_IdentitySource identity = {&object};
    GMM_Allocator memory = {.gmm_Alloc = allocate, .gmm_Free = release, .gmm_Realloc = resize};
    FILE* log = argc == 2 || argc == 3 ? fopen(argv[1], "wb") : NULL;
    GIO_Stream stream = {log, 0, &operations};
    if (argc == 3)
        folder = argv[2];
    if (log == NULL)
    {
        fprintf(stderr, argc == 2 || argc == 3 ? "the log can't be opened\n" : "usage: LOG [FOLDER]\n");
        return argc == 2 || argc == 3 ? 1 : 2;
    }
    const uint32_t begun = ORVLOG_DLL_initialise(&orv, &renderer, &memory, &identity, 0, &stream, NULL, 0, &ticket_functions, &ticket_serial_functions, 0, &comment_function, &comment_context);
    if (!begun)
        complain("the log can't be begun");
    if (!begun)
        return 1;
    make_all(part_1, LENGTH(part_1));
    if (!ORVLOG_DLL_shutdown(orv.document_start.context))
        complain("the log can't be ended");
    if (fclose(log) != 0)
        complain("not all of the log could be written");
    return failed;
}
