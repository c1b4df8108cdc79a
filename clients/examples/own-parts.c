/* A whole client, with all that it brings: a renderer, an allocator, a stream and an identity. It's C and C++ alike.
 *
 * usage: own-parts LOG [WHAT-IS-REFUSED]
 *
 * Draws a document with a page, logged into LOG, and prints the calls that reached the renderer. The second argument
 * lets the logger's beginning fail: "allocator", "memory", "identity" or "number". The job is drawn all the same. */

#include "orvlog/interface/orvlog.h"

#include <stdio.h>
#include <stdlib.h>
#include <string.h>

/* The renderer: says what it is told. */

static uint32_t document_start(void* err, const ORV_Interface* table, void** document_out, uint32_t document_id,
                               const GFI_FontEngineTable* font_engine_functions, void* document_extra)
{
    (void)err;
    (void)font_engine_functions;
    (void)document_extra;
    *document_out = table->document_start.context;
    printf("document %u starts\n", (unsigned)document_id);
    return 1;
}

static uint32_t document_finish(const ORV_Interface* table, void* document)
{
    printf("document finishes%s\n", document == table->document_finish.context ? "" : ", but not the one that started");
    return 1;
}

static uint32_t drawing_finish(const ORV_DrawingInterface* table)
{
    (void)table;
    printf("page finishes\n");
    return 1;
}

static uint32_t face_start(void* err, const ORV_Interface* table, void* document, ORV_DrawingInterface* drawing_out,
                           const GFI_FontEngineTable* font_engine_functions, uint32_t face_seq_number,
                           const ORV_FaceProperties* face_properties, void* colour_ticket,
                           uint32_t pixel_placement_orientation, uint32_t pixel_placement)
{
    (void)err;
    (void)table;
    (void)document;
    (void)font_engine_functions;
    (void)colour_ticket;
    (void)pixel_placement_orientation;
    (void)pixel_placement;
    memset(drawing_out, 0, sizeof *drawing_out);
    drawing_out->drawing_finish.fn = drawing_finish;
    printf("page %u starts, %u pixels wide\n", (unsigned)face_seq_number, (unsigned)face_properties->fp_WidthInPixels);
    return 1;
}

/* The allocator: the three operations that a session calls. */

static void* allocate(GMM_Allocator* allocator, uint64_t size, uint32_t channel)
{
    (void)allocator;
    (void)channel;
    return malloc((size_t)size);
}

static void* refuse(GMM_Allocator* allocator, uint64_t size, uint32_t channel)
{
    (void)allocator;
    (void)size;
    (void)channel;
    return NULL;
}

static void* resize(GMM_Allocator* allocator, void* block, uint64_t size)
{
    (void)allocator;
    return realloc(block, (size_t)size);
}

static void release(GMM_Allocator* allocator, void* block)
{
    (void)allocator;
    free(block);
}

/* The stream of the log: it's printed to, written to and flushed. */

static int32_t print(void* file, const char* format, va_list args)
{
    return vfprintf((FILE*)file, format, args);
}

static uint64_t write_items(const void* buffer, uint64_t item_size, uint64_t item_count, void* file)
{
    return fwrite(buffer, (size_t)item_size, (size_t)item_count, (FILE*)file);
}

static int32_t flush(void* file)
{
    return fflush((FILE*)file) == 0 ? 0 : -1;
}

/* The identity: sixteen bytes that no other session has. A driver takes them from its system. */

static uint32_t session_number(ORVLOG_IdentityObject* object, uint8_t* session_id)
{
    (void)object;
    memset(session_id, 7, 16);
    return 1;
}

static uint32_t no_number(ORVLOG_IdentityObject* object, uint8_t* session_id)
{
    (void)object;
    (void)session_id;
    return 0;
}

static void draw_everything(const ORV_Interface* orv)
{
    void* document = NULL;
    ORV_DrawingInterface page;
    ORV_FaceProperties letter;
    memset(&page, 0, sizeof page);
    memset(&letter, 0, sizeof letter);
    letter.fp_WidthInPixels = 850;
    if (orv->document_start.fn(NULL, orv, &document, 7, NULL, NULL) == 0)
        return;
    if (orv->face_start.fn(NULL, orv, document, &page, NULL, 1, &letter, NULL, 0, 0) != 0)
        page.drawing_finish.fn(&page);
    orv->document_finish.fn(orv, document);
}

int main(int argc, char** argv)
{
    const char* refused = argc > 2 ? argv[2] : "";
    FILE* file = argc > 1 ? fopen(argv[1], "wb") : NULL;
    if (file == NULL)
        return 2;

    int here = 0;
    ORV_Interface renderer;
    memset(&renderer, 0, sizeof renderer);
    renderer.document_start.fn = document_start;
    renderer.document_start.context = &here;
    renderer.document_finish.fn = document_finish;
    renderer.document_finish.context = &here;
    renderer.face_start.fn = face_start;

    GMM_Allocator memory;
    memset(&memory, 0, sizeof memory);
    memory.gmm_Alloc = strcmp(refused, "memory") == 0 ? refuse : allocate;
    memory.gmm_Free = release;
    memory.gmm_Realloc = resize;
    memory.self = &memory;
    GMM_Allocator* allocator = strcmp(refused, "allocator") == 0 ? NULL : &memory;

    GIO_StreamOps operations;
    memset(&operations, 0, sizeof operations);
    operations.gio_VPrintf = print;
    operations.gio_Write = write_items;
    operations.gio_Flush = flush;
    GIO_Stream stream = {file, GIO_KIND_FILE, &operations};
    GIO_Stream* log_stream = &stream;

    ORVLOG_IdentityTable functions;
    memset(&functions, 0, sizeof functions);
    functions.orvlog_get_session_id = strcmp(refused, "number") == 0 ? no_number : session_number;
    ORVLOG_IdentityObject object = {&functions};
    ORVLOG_IdentitySource identity = {strcmp(refused, "identity") == 0 ? NULL : &object};

    ORV_Interface wrapped;
    const uint32_t logged = ORVLOG_DLL_initialise(&wrapped, &renderer, allocator, &identity, 0, log_stream, NULL, 0,
                                                  NULL, NULL, 0, NULL, NULL);
    draw_everything(&wrapped);
    if (logged)
        ORVLOG_DLL_shutdown(wrapped.document_start.context);

    printf(logged ? "logged\n" : "not logged\n");
    return fclose(file) == 0 ? 0 : 1;
}
