// The HTTP client under "http:" streams: five operations, in a table that can be replaced.
//
// The library brings none: until a table is set, no URL opens. gio-http-client.h sets the system's.

#ifndef HOLV_CORE_GIO_HTTP_H
#define HOLV_CORE_GIO_HTTP_H

#include <stdint.h>

#ifdef __cplusplus
extern "C" {
#endif

typedef struct GIO_HttpOps
{
    // A session under an agent's name; null if it can't be had.
    void* (*http_Open)(const char* agent);
    // A request for an absolute URL, at its first byte; null if it can't be had. Text is 8-bit.
    void* (*http_OpenUrl)(void* session, const char* url);
    // Reads up to `count` bytes and stores how many came; none is the end. Gives 0 for failure.
    int32_t (*http_Read)(void* request, void* buffer, uint32_t count, uint32_t* read);
    // Moves the read position, from the start (0), the current position (1) or the end (2); gives the new
    // position, or a negative value for failure.
    int32_t (*http_SetPosition)(void* request, int32_t distance, uint32_t origin);
    // Gives up a session or a request.
    void (*http_Close)(void* handle);
} GIO_HttpOps;

// The table that new streams use. A stream keeps the one that it was opened with.
const GIO_HttpOps* gio_HttpClient(void);

// Sets it; null brings back the table that opens nothing. Takes no lock: a program does this as it starts. The table
// is not copied and has to live as long as streams that use it.
void gio_SetHttpClient(const GIO_HttpOps* ops);

#ifdef __cplusplus
}
#endif

#endif
