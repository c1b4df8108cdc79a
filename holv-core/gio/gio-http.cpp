#include "holv-core/gio/gio-http.h"

namespace
{

constexpr GIO_HttpOps kNoClient = {
    .http_Open = [](const char*) -> void* { return nullptr; },
    .http_OpenUrl = [](void*, const char*) -> void* { return nullptr; },
    .http_Read = [](void*, void*, uint32_t, uint32_t*) -> int32_t { return 0; },
    .http_SetPosition = [](void*, int32_t, uint32_t) -> int32_t { return -1; },
    .http_Close = [](void*) {},
};

const GIO_HttpOps* client = &kNoClient;

}  // namespace

const GIO_HttpOps* gio_HttpClient(void)
{
    return client;
}

void gio_SetHttpClient(const GIO_HttpOps* ops)
{
    client = ops != nullptr ? ops : &kNoClient;
}
