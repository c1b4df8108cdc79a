#include "holv-core/gio/gio-url-stream.h"

#include "holv-core/gio/gio-url.h"
#include "holv-core/gmm/gmm-typed.h"

#include <cstring>
#include <initializer_list>

namespace
{

constexpr const char* kAgent = "Kelvo";
constexpr uint64_t kLongestRead = 0x7FFFFFFF;

// The handle first, so that the block and the handle are one address.
struct UrlBlock
{
    GIO_Stream handle;
    GIO_UrlInstance instance;
    GIO_StreamOps ops;
};

GIO_UrlInstance* of(void* c)
{
    auto* instance = static_cast<GIO_UrlInstance*>(c);
    const bool sound = instance != nullptr && instance->kind == GIO_URL_INSTANCE_KIND && instance->http != nullptr;
    return sound ? instance : nullptr;
}

void client_failed(GIO_UrlInstance* u)
{
    u->last_error = GIO_ERR_PLATFORM;
    u->error_flag = 1;
}

int32_t refuse(void* c, int32_t result)
{
    GIO_UrlInstance* u = of(c);
    if (u == nullptr)
        return result;
    u->last_error = GIO_ERR_UNSUPPORTED;
    u->error_flag = 1;
    return result;
}

int32_t not_supported(void* c)
{
    if (GIO_UrlInstance* u = of(c))
        u->last_error = GIO_ERR_UNSUPPORTED;
    return -1;
}

// One read of the client. False, with the failure noted, if it failed.
bool read_once(GIO_UrlInstance* u, void* buffer, uint64_t count, uint32_t* read)
{
    const auto wanted = static_cast<uint32_t>(count < kLongestRead ? count : kLongestRead);
    const GIO_HttpState* http = u->http;
    *read = 0;
    if (http->request_handle != nullptr && http->client->http_Read(http->request_handle, buffer, wanted, read) != 0 &&
        *read <= wanted)
        return true;
    *read = 0;
    client_failed(u);
    return false;
}

void note_end(GIO_UrlInstance* u)
{
    if (u->error_flag == 0)
        u->eof_flag = 1;
}

uint64_t url_read(void* buffer, uint64_t item_size, uint64_t item_count, void* c)
{
    GIO_UrlInstance* u = of(c);
    if (u == nullptr)
        return 0;
    if (buffer == nullptr || item_size == 0 || item_count == 0 || item_count > UINT64_MAX / item_size)
    {
        u->last_error = GIO_ERR_INVALID;
        return 0;
    }
    const uint64_t wanted = item_size * item_count;
    uint64_t got = 0;
    uint32_t piece = 1;
    while (got < wanted && piece != 0 && read_once(u, static_cast<char*>(buffer) + got, wanted - got, &piece))
        got += piece;
    if (got < wanted)
        note_end(u);
    u->http->position += static_cast<int64_t>(got);
    return got / item_size;
}

bool is_forward_only(const GIO_UrlInstance* u)
{
    return u->owner == nullptr || (u->owner->kind & GIO_KIND_FORWARD_ONLY) != 0;
}

int32_t set_position(GIO_UrlInstance* u, int64_t distance, int32_t origin)
{
    GIO_HttpState* http = u->http;
    const bool backwards = distance < 0 || (origin == GIO_SEEK_SET && distance < http->position);
    if (is_forward_only(u) && backwards)
    {
        u->last_error = GIO_ERR_INVALID;
        return -1;
    }
    const bool possible = http->request_handle != nullptr && distance >= INT32_MIN && distance <= INT32_MAX;
    const int32_t reached = possible
                                ? http->client->http_SetPosition(http->request_handle, static_cast<int32_t>(distance),
                                                                 static_cast<uint32_t>(origin))
                                : -1;
    if (reached < 0)
    {
        client_failed(u);
        return -1;
    }
    http->position = reached;
    return 0;
}

int32_t url_seek(void* c, int32_t offset, int32_t origin)
{
    GIO_UrlInstance* u = of(c);
    if (u == nullptr || origin < GIO_SEEK_SET || origin > GIO_SEEK_END)
        return -1;
    return set_position(u, offset, origin);
}

int32_t url_tell(void* c)
{
    GIO_UrlInstance* u = of(c);
    if (u == nullptr)
        return -1;
    if (u->http->position >= 0 && u->http->position <= INT32_MAX)
        return static_cast<int32_t>(u->http->position);
    client_failed(u);
    return -1;
}

void close_handles(GIO_HttpState* http)
{
    if (http->request_handle != nullptr)
        http->client->http_Close(http->request_handle);
    if (http->internet_handle != nullptr)
        http->client->http_Close(http->internet_handle);
    http->request_handle = nullptr;
    http->internet_handle = nullptr;
}

bool open_handles(GIO_HttpState* http, const char* url)
{
    http->internet_handle = url != nullptr ? http->client->http_Open(kAgent) : nullptr;
    if (http->internet_handle != nullptr)
        http->request_handle = http->client->http_OpenUrl(http->internet_handle, url);
    return http->request_handle != nullptr;
}

// The client can't take bytes back: what was read beyond the line is read again from a fresh request.
bool reopen_at(GIO_UrlInstance* u, int64_t position)
{
    close_handles(u->http);
    if (open_handles(u->http, u->url))
        return set_position(u, position, GIO_SEEK_CUR) == 0;
    client_failed(u);
    return false;
}

char* url_gets(char* buffer, int32_t size, void* c)
{
    GIO_UrlInstance* u = of(c);
    if (u == nullptr)
        return nullptr;
    if (buffer == nullptr || size <= 0)
    {
        u->last_error = GIO_ERR_INVALID;
        return nullptr;
    }
    uint32_t read = 0;
    if (!read_once(u, buffer, static_cast<uint64_t>(size), &read))
        return nullptr;
    if (read == 0)
    {
        note_end(u);
        return nullptr;
    }
    const auto* feed = static_cast<const char*>(std::memchr(buffer, '\n', read));
    const auto line = feed != nullptr ? static_cast<uint32_t>(feed - buffer) + 1 : read;
    u->http->position += line;
    if (read > line && !reopen_at(u, u->http->position))
    {
        buffer[0] = '\0';
        return nullptr;
    }
    if (feed != nullptr)
        buffer[line < static_cast<uint32_t>(size) ? line : line - 1] = '\0';
    return buffer;
}

int32_t url_getc(void* c)
{
    GIO_UrlInstance* u = of(c);
    unsigned char byte = 0;
    uint32_t read = 0;
    if (u == nullptr || !read_once(u, &byte, 1, &read))
        return -1;
    if (read == 0)
    {
        note_end(u);
        return -1;
    }
    ++u->http->position;
    return byte;
}

const char* url_get_path(void* c, uint32_t* path_kind)
{
    GIO_UrlInstance* u = of(c);
    if (u == nullptr)
        return nullptr;
    if (path_kind != nullptr)
        *path_kind = GIO_PATH_URL;
    return u->url;
}

void url_clear_error(void* c)
{
    GIO_UrlInstance* u = of(c);
    if (u == nullptr)
        return;
    u->last_error = 0;
    u->eof_flag = 0;
}

int64_t url_size(void* c)
{
    GIO_UrlInstance* u = of(c);
    if (u == nullptr || u->owner == nullptr)
        return -1;
    const int64_t remembered = u->http->position;
    const uint32_t kind = u->owner->kind;
    if (set_position(u, 0, GIO_SEEK_END) != 0)
        return -1;
    const int64_t size = u->http->position;
    u->owner->kind = kind & ~static_cast<uint32_t>(GIO_KIND_FORWARD_ONLY);
    const int32_t back = set_position(u, remembered, GIO_SEEK_SET);
    u->owner->kind = kind;
    return back == 0 ? size : -1;
}

int32_t url_close(void* c)
{
    GIO_UrlInstance* u = of(c);
    if (u == nullptr || u->allocator == nullptr || u->owner == nullptr || u->url == nullptr)
        return GIO_ERR_BAD_HANDLE;
    GMM_Allocator* allocator = u->allocator;
    GIO_Stream* owner = u->owner;
    close_handles(u->http);
    allocator->gmm_Free(allocator, u->http);
    allocator->gmm_Free(allocator, u->url);
    u->kind = 0;
    allocator->gmm_Free(allocator, owner);
    return GIO_OK;
}

const GIO_StreamOps kOps = {
    .gio_Read = url_read,
    .gio_Write = [](const void*, uint64_t, uint64_t, void* c) -> uint64_t
    { return static_cast<uint64_t>(refuse(c, 0)); },
    .gio_Seek = url_seek,
    .gio_Tell = url_tell,
    .gio_Seek64 = [](void* c, int64_t, int32_t) { return not_supported(c); },
    .gio_Tell64 = [](void* c) -> int64_t { return not_supported(c); },
    .gio_Flush = not_supported,
    .gio_Gets = url_gets,
    .gio_Puts = [](const char*, void* c) { return refuse(c, -1); },
    .gio_Getc = url_getc,
    .gio_Putc = [](int32_t, void* c) { return refuse(c, -1); },
    .gio_GetPath = url_get_path,
    .gio_ReadBuffer = [](void* c, void**, uint64_t*) { return refuse(c, 0); },
    .gio_VPrintf = [](void* c, const char*, va_list) { return refuse(c, -1); },
    .gio_ClearErr = url_clear_error,
    .gio_Eof = [](void* c) { return of(c) != nullptr ? static_cast<int32_t>(of(c)->eof_flag) : -1; },
    .gio_Error = [](void* c) { return of(c) != nullptr ? static_cast<int32_t>(of(c)->error_flag) : -1; },
    .gio_LastError = [](void* c) -> int32_t
    { return of(c) != nullptr ? static_cast<int32_t>(of(c)->last_error) : GIO_ERR_BAD_HANDLE; },
    .gio_Size = url_size,
    .gio_Close = url_close,
};

}  // namespace

int32_t gio_OpenHttp(const char* url, uint64_t url_size_in_bytes, GMM_Allocator* allocator, GIO_Stream** out_stream)
{
    if (out_stream != nullptr)
        *out_stream = nullptr;
    if (url == nullptr || url_size_in_bytes == 0 || allocator == nullptr || out_stream == nullptr)
        return GIO_ERR_INVALID;
    if (url[url_size_in_bytes - 1] != '\0')
        return GIO_ERR_INVALID;
    auto* block = gmm_alloc_record<UrlBlock>(allocator);
    auto* copy = gmm_alloc_array<char>(allocator, url_size_in_bytes);
    auto* http = gmm_alloc_record<GIO_HttpState>(allocator);
    int32_t code = block == nullptr || copy == nullptr || http == nullptr ? GIO_ERR_NO_MEMORY : GIO_OK;
    if (code == GIO_OK)
    {
        std::memcpy(copy, url, url_size_in_bytes);
        *http = {nullptr, nullptr, 0, gio_HttpClient()};
        code = open_handles(http, copy) ? GIO_OK : GIO_ERR_PLATFORM;
    }
    if (code == GIO_OK)
    {
        block->ops = kOps;
        block->handle = {&block->instance, GIO_KIND_FORWARD_ONLY, &block->ops};
        block->instance = {GIO_URL_INSTANCE_KIND, allocator, &block->handle, http, copy, 0, 0, 0};
        *out_stream = &block->handle;
        return GIO_OK;
    }
    for (void* taken : {static_cast<void*>(http), static_cast<void*>(copy), static_cast<void*>(block)})
        if (taken != nullptr)
            allocator->gmm_Free(allocator, taken);
    return code;
}
