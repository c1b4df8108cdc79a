/* A client of the static library, which opens its session by named options. It's C and C++ alike.
 *
 * usage: every-option LOG KIND
 *
 * Draws a document with a page, to no renderer, into LOG. KIND is "base" (base mode, as the root says), "content" (base
 * mode, which the root doesn't say), "coded" (coded on the fly) or "merged" (coded, by way of a temporary log). */

#include "clients/stream/orvlog-stream.h"
#include "orvlog/interface/orvlog-session-options.h"

#include <stdio.h>
#include <stdlib.h>
#include <string.h>

static void* allocate(GMM_Allocator* allocator, uint64_t size, uint32_t channel)
{
    (void)allocator;
    (void)channel;
    return malloc((size_t)size);
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

static uint32_t session_number(ORVLOG_IdentityObject* object, uint8_t* session_id)
{
    (void)object;
    memset(session_id, 7, 16);
    return 1;
}

static void draw_everything(const ORV_Interface* orv)
{
    void* document = NULL;
    ORV_DrawingInterface page;
    ORV_FaceProperties letter;
    memset(&letter, 0, sizeof letter);
    letter.fp_WidthInPixels = 850;
    orv->document_start.fn(NULL, orv, &document, 7, NULL, NULL);
    orv->face_start.fn(NULL, orv, document, &page, NULL, 1, &letter, NULL, 0, 0);
    page.drawing_finish.fn(&page);
    orv->document_finish.fn(orv, document);
}

int main(int argc, char** argv)
{
    const char* kind = argc > 2 ? argv[2] : "";
    GIO_Stream* log = argc > 2 ? orvlog_open_file_stream(argv[1]) : NULL;
    if (log == NULL)
        return 2;

    GMM_Allocator memory;
    memset(&memory, 0, sizeof memory);
    memory.gmm_Alloc = allocate;
    memory.gmm_Free = release;
    memory.gmm_Realloc = resize;
    memory.self = &memory;

    ORVLOG_IdentityTable functions;
    memset(&functions, 0, sizeof functions);
    functions.orvlog_get_session_id = session_number;
    ORVLOG_IdentityObject object = {&functions};
    const ORVLOG_IdentitySource identity = {&object};

    ORV_Interface wrapped;
    ORVLOG_SessionOptions options;
    memset(&options, 0, sizeof options);
    options.interface_out = &wrapped;
    options.allocator = &memory;
    options.identity = &identity;
    options.log_stream = log;
    options.mode = strcmp(kind, "base") == 0 ? ORVLOG_MODE_BASE : ORVLOG_MODE_TRANSPARENT;
    options.base_content = strcmp(kind, "content") == 0;
    options.glyph_get_format = GFI_GDT_PATH;
    options.via_temporary_log = strcmp(kind, "merged") == 0;
    options.compress = options.via_temporary_log != 0 || strcmp(kind, "coded") == 0;
    if (orvlog_create_session_with(&options) == 0)
        return 3;
    draw_everything(&wrapped);
    if (ORVLOG_DLL_shutdown(wrapped.document_start.context) == 0)
        return 4;
    return orvlog_stream_close(log, NULL) == GIO_OK ? 0 : 5;
}
