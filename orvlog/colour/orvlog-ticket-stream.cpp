#include "orvlog/colour/orvlog-ticket-stream.h"

#include "holv-core/gmm/gmm-typed.h"

#include <cstring>

namespace
{

constexpr uint64_t kFirstCapacity = 1024;
constexpr uint64_t kGrowth = 1024;

ORVLOG_TicketStreamInstance* of(void* c)
{
    return static_cast<ORVLOG_TicketStreamInstance*>(c);
}

bool byte_count(uint64_t item_size, uint64_t item_count, uint64_t* bytes)
{
    if (item_size != 0 && item_count > UINT64_MAX / item_size)
        return false;
    *bytes = item_size * item_count;
    return true;
}

bool allocate_first(ORVLOG_TicketStreamInstance* s)
{
    s->buffer = gmm_alloc_array<uint8_t>(s->allocator, kFirstCapacity);
    if (s->buffer == nullptr)
        return false;
    std::memset(s->buffer, 0, kFirstCapacity);
    s->capacity = kFirstCapacity;
    s->position = 0;
    return true;
}

// A cut may have left the capacity below the position, which the block reaches at least.
bool grow(ORVLOG_TicketStreamInstance* s, uint64_t count)
{
    const uint64_t end = s->position + count;
    const uint64_t told = s->capacity + kGrowth + count;
    const uint64_t capacity = told < end ? end : told;
    if (count > UINT64_MAX / 4)
        return false;
    auto* buffer = gmm_realloc_array(s->allocator, s->buffer, capacity);
    if (buffer == nullptr)
        return false;
    std::memset(buffer + end, 0, capacity - end);
    s->buffer = buffer;
    s->capacity = capacity;
    return true;
}

// Gives bytes, not items.
uint64_t ticket_read(void* buffer, uint64_t item_size, uint64_t item_count, void* c)
{
    ORVLOG_TicketStreamInstance* s = of(c);
    uint64_t bytes = 0;
    if (buffer == nullptr || s->buffer == nullptr || s->position >= s->capacity)
        return 0;
    const uint64_t left = s->capacity - s->position;
    if (!byte_count(item_size, item_count, &bytes) || bytes > left)
        bytes = left;
    if (bytes != 0)
        std::memcpy(buffer, s->buffer + s->position, bytes);
    s->position += bytes;
    return bytes;
}

uint64_t ticket_write(const void* buffer, uint64_t item_size, uint64_t item_count, void* c)
{
    ORVLOG_TicketStreamInstance* s = of(c);
    uint64_t count = 0;
    if (!byte_count(item_size, item_count, &count) || (buffer == nullptr && count != 0))
        return 0;
    if (s->buffer == nullptr && !allocate_first(s))
        return 0;
    if ((s->position > s->capacity || count > s->capacity - s->position) && !grow(s, count))
        return 0;
    if (count != 0)
        std::memcpy(s->buffer + s->position, buffer, count);
    s->position += count;
    return item_count;
}

int32_t ticket_seek(void* c, int32_t offset, int32_t origin)
{
    ORVLOG_TicketStreamInstance* s = of(c);
    uint64_t base = 0;
    if (origin == GIO_SEEK_CUR)
        base = s->position;
    else if (origin == GIO_SEEK_END)
        base = s->capacity;
    else if (origin != GIO_SEEK_SET)
        return -1;
    const auto cut = static_cast<int32_t>(static_cast<uint32_t>(base + static_cast<uint64_t>(int64_t{offset})));
    if (cut < 0 || static_cast<uint64_t>(cut) > s->capacity)
        return -1;
    s->capacity = static_cast<uint64_t>(cut);
    return 0;
}

int32_t ticket_read_buffer(void* c, void** data, uint64_t* length)
{
    const ORVLOG_TicketStreamInstance* s = of(c);
    if (data == nullptr || length == nullptr)
        return 0;
    *data = s->buffer;
    *length = s->capacity;
    return 1;
}

constexpr GIO_StreamOps make_operations()
{
    GIO_StreamOps ops = {};
    ops.gio_Read = ticket_read;
    ops.gio_Write = ticket_write;
    ops.gio_Seek = ticket_seek;
    ops.gio_ReadBuffer = ticket_read_buffer;
    return ops;
}

constexpr GIO_StreamOps kOperations = make_operations();

}  // namespace

void orvlog_ticket_stream_open(ORVLOG_TicketStream* ticket_stream, GMM_Allocator* allocator)
{
    ticket_stream->instance = {allocator, nullptr, 0, 0};
    ticket_stream->stream = {&ticket_stream->instance, GIO_KIND_MEMORY, &kOperations};
}

void orvlog_ticket_stream_close(ORVLOG_TicketStream* ticket_stream)
{
    ORVLOG_TicketStreamInstance* s = &ticket_stream->instance;
    if (s->buffer != nullptr)
        s->allocator->gmm_Free(s->allocator, s->buffer);
    s->buffer = nullptr;
}
