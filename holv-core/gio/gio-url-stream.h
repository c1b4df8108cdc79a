// The URL stream: a read-only GIO_Stream over the HTTP client, and the opener of names that may be URLs.

#ifndef HOLV_CORE_GIO_URL_STREAM_H
#define HOLV_CORE_GIO_URL_STREAM_H

#include "holv-core/gio/gio-http.h"
#include "holv-core/gio/gio-stream.h"
#include "holv-core/gmm/gmm-allocator.h"

#ifdef __cplusplus
extern "C" {
#endif

enum
{
    GIO_URL_INSTANCE_KIND = 2
};

typedef struct GIO_HttpState
{
    void* internet_handle;
    void* request_handle;
    int64_t position;
    const GIO_HttpOps* client;
} GIO_HttpState;

typedef struct GIO_UrlInstance
{
    uint32_t kind;  // GIO_URL_INSTANCE_KIND
    GMM_Allocator* allocator;
    GIO_Stream* owner;
    GIO_HttpState* http;
    char* url;
    uint32_t last_error;  // until gio_ClearErr
    uint32_t eof_flag;    // until gio_ClearErr
    uint32_t error_flag;  // for the rest of the stream's life
} GIO_UrlInstance;

// Opens a stream for reading, in binary. `name` is of kind `name_kind` (GIO_PATH_*); a relative one is resolved
// against `base`, which may be null. Local names and "file:" URLs open files, with "\" for each "/"; a "file:" URL
// with an authority other than "localhost" opens "\\authority\path", with "$" for each ":". "http:" URLs open over
// the HTTP client. Gives 0 or a code: GIO_ERR_INVALID for a relative name without a base, or a kind or scheme that
// nothing opens; GIO_ERR_BAD_NAME for a malformed name; GIO_ERR_NO_MEMORY; GIO_ERR_PLATFORM when the HTTP client
// gives no handle; or the host's reason why a file doesn't open.
int32_t gio_OpenUrlOrPath(const char* name, uint32_t name_kind, const char* base, uint32_t base_kind,
                          GMM_Allocator* allocator, GIO_Stream** out_stream);

// Opens an absolute "http:" URL of `url_size` bytes, its terminator included.
//
// The stream moves forward only, keeps its own `last_error`, and doesn't know 64-bit positions. gio_Gets reads ahead
// and, when it took more than the line, opens the URL afresh and moves to the line's end. It ends a line that has a
// line feed with a terminator, behind the line feed or, at the buffer's last byte, in its place; without a line
// feed no terminator is written, and gio_Tell says how much came.
int32_t gio_OpenHttp(const char* url, uint64_t url_size, GMM_Allocator* allocator, GIO_Stream** out_stream);

#ifdef __cplusplus
}
#endif

#endif
