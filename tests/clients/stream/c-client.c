/* The smallest client in C that logs to a mapped file: it opens a session, ends it, and looks at the log. */

#include "clients/stream/orvlog-stream.h"
#include "orvlog/interface/orvlog.h"

#include <stdio.h>
#include <stdlib.h>
#include <string.h>

static void* allocate(GMM_Allocator* allocator, uint64_t size, uint32_t channel)
{
    (void)allocator;
    (void)channel;
    return malloc((size_t)size);
}

static void* reallocate(GMM_Allocator* allocator, void* block, uint64_t size)
{
    (void)allocator;
    return realloc(block, (size_t)size);
}

static void release(GMM_Allocator* allocator, void* block)
{
    (void)allocator;
    free(block);
}

static uint32_t give_number(ORVLOG_IdentityObject* object, uint8_t* session_id)
{
    (void)object;
    memset(session_id, 7, 16);
    return 1;
}

static int ends_like_a_log(const char* path, uint64_t bytes)
{
    static const char end[] = "</ORV>\n";
    char last[sizeof end] = "";
    FILE* file = fopen(path, "rb");
    int same = 0;
    if (file != NULL && fseek(file, -(long)(sizeof end - 1), SEEK_END) == 0)
    {
        same = fread(last, 1, sizeof end - 1, file) == sizeof end - 1 && strcmp(last, end) == 0 &&
               (uint64_t)ftell(file) == bytes;
    }
    if (file != NULL)
        fclose(file);
    return same;
}

int main(int argc, char** argv)
{
    static const ORVLOG_IdentityTable identities = {{0}, give_number};
    ORVLOG_IdentityObject object = {&identities};
    const ORVLOG_IdentitySource identity = {&object};
    GMM_Allocator allocator = {0};
    ORV_Interface wrapped;
    ORVLOG_StreamReport report;
    GIO_Stream* log = argc == 2 ? orvlog_open_mapped_stream(argv[1]) : NULL;
    allocator.gmm_Alloc = allocate;
    allocator.gmm_Free = release;
    allocator.gmm_Realloc = reallocate;
    allocator.self = &allocator;
    if (log == NULL ||
        !ORVLOG_DLL_initialise(&wrapped, NULL, &allocator, &identity, 0, log, NULL, 0, NULL, NULL, 0, NULL, NULL))
        return 1;
    ORVLOG_DLL_shutdown(wrapped.document_start.context);
    if (orvlog_stream_close(log, &report) != GIO_OK || report.error != 0)
        return 2;
    return ends_like_a_log(argv[1], report.text_bytes) ? 0 : 3;
}
