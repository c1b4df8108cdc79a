#include "orvlog/image/orvlog-side-file.h"

#include "holv-core/gio/gio-file.h"
#include "holv-core/gmm/gmm-typed.h"

#include <cstdio>
#include <cstring>

namespace
{

// What a name has besides prefix and kind: two dashes, a number, the ending, a terminator.
constexpr uint64_t kNameRest = 27;

}  // namespace

uint32_t ORVLOG_OpenSideFile(ORVLOG_ImageContext* context, GIO_Stream** stream, char** name, const char* kind)
{
    const ORVLOG_ImageParams* params = context->params;
    const uint64_t size = std::strlen(params->file_prefix) + std::strlen(kind) + kNameRest;
    *stream = nullptr;
    if (*name == nullptr)
        *name = gmm_alloc_array<char>(context->allocator, size);
    if (*name == nullptr)
        return 0;
    std::snprintf(*name, size, "%s-%s-%d.bin", params->file_prefix, kind, static_cast<int>(context->counters[0]++));
    if (gio_OpenFile(*name, GIO_OPEN_WRITE, 0, context->session_allocator, stream) == GIO_OK)
        return 1;
    *stream = nullptr;
    return 0;
}

void orvlog_side_file_write(GIO_Stream* stream, const uint8_t* bytes, uint64_t count)
{
    if (stream != nullptr && bytes != nullptr && count != 0)
        stream->ops->gio_Write(bytes, 1, count, stream->instance);
}

void orvlog_close_stream(GIO_Stream** stream)
{
    if (*stream != nullptr)
        (*stream)->ops->gio_Close((*stream)->instance);
    *stream = nullptr;
}
