#include "inspect/c-source/c-prelude.h"

namespace orvlog::inspect
{

const char* const kCIncludes = "\n#include <math.h>\n#include <stdarg.h>\n#include <stdio.h>\n#include <stdlib.h>\n"
                               "#include <string.h>\n\n"
                               "#define LENGTH(array) (sizeof(array) / sizeof((array)[0]))\n";

const char* const kCRecordTypes = R"c(
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
)c";

const char* const kCSteps = R"c(
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
)c";

const char* const kCState = R"c(
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
)c";

const char* const kCComment = R"c(
void comment_with(const char* format, ...)
{
    va_list args;
    va_start(args, format);
    comment_function(comment_context, format, args);
    va_end(args);
}

void comment(const char* text)
{
    comment_with("%s", text);
}
)c";

const char* const kCNoComment = R"c(
void comment(const char* text)
{
    (void)text;
}
)c";

const char* const kCClient = R"c(
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
)c";

}  // namespace orvlog::inspect
