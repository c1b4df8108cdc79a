/* A log in a mapped file, with an allocator that counts what the session took. usage: mapped LOG */

#include "clients/stream/orvlog-stream.h"

#include <orvlog-host.h>

static void draw_everything(const ORV_Interface* orv)
{
    void* document = NULL;
    if (orv->document_start.fn(NULL, orv, &document, 7, NULL, NULL) != 0)
        orv->document_finish.fn(orv, document);
}

int main(int argc, char** argv)
{
    ORV_Interface table;
    ORVLOG_HostMemory memory;
    const ORVLOG_OpenOptions options = {.interface_out = &table,
                                        .log_path = argc > 1 ? argv[1] : "job.xml",
                                        .open_stream = orvlog_open_mapped_stream,
                                        .allocator = orvlog_counting_allocator(&memory)};
    ORVLOG_Host* host = orvlog_open(&options);
    if (host == NULL)
        return 1;
    draw_everything(&table);
    if (orvlog_close(host) != 0)
        return 2;
    return memory.blocks == 0 && memory.peak_bytes > 0 ? 0 : 3;
}
