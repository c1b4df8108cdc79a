#include "holv-core/gio/gio-memory.h"

#include "holv-core/gio/gio-format.h"
#include "holv-core/gio/gio-result.h"
#include "holv-core/gmm/gmm-typed.h"

#include <cstddef>
#include <cstring>

static_assert(offsetof(GIO_MemoryInstance, kind) == 0);
static_assert(offsetof(GIO_MemoryInstance, allocator) == 8);
static_assert(offsetof(GIO_MemoryInstance, self) == 16);
static_assert(offsetof(GIO_MemoryInstance, data) == 24);
static_assert(offsetof(GIO_MemoryInstance, size) == 32);
static_assert(offsetof(GIO_MemoryInstance, position) == 40);
static_assert(offsetof(GIO_MemoryInstance, last_error) == 48);
static_assert(offsetof(GIO_MemoryInstance, at_end) == 52);
static_assert(offsetof(GIO_MemoryInstance, error_flag) == 56);

namespace
{

struct MemoryStreamBlock
{
    GIO_Stream handle;
    GIO_MemoryInstance instance;
    GIO_StreamOps ops;
};

// The instance with its data, or null.
GIO_MemoryInstance* of(void* c)
{
    auto* m = static_cast<GIO_MemoryInstance*>(c);
    if (m == nullptr || m->kind != GIO_MEMORY_TAG)
        return nullptr;
    if (m->data != nullptr)
        return m;
    m->last_error = GIO_ERR_BAD_HANDLE;
    return nullptr;
}

bool is_at_end(GIO_MemoryInstance* m)
{
    if (m->size > m->position)
        return false;
    m->at_end = 1;
    return true;
}

// How many whole items a transfer moves; sets at_end where it comes to the end of the data.
uint64_t items_of(GIO_MemoryInstance* m, const void* buffer, uint64_t item_size, uint64_t item_count)
{
    if (is_at_end(m))
        return 0;
    if (buffer == nullptr || item_size == 0 || item_count == 0)
    {
        m->last_error = GIO_ERR_INVALID;
        return 0;
    }
    const uint64_t left = m->size - m->position;
    const uint64_t fitting = left / item_size;
    if (item_count > fitting || item_count * item_size == left)
        m->at_end = 1;
    return item_count < fitting ? item_count : fitting;
}

uint64_t memory_read(void* buffer, uint64_t item_size, uint64_t item_count, void* c)
{
    GIO_MemoryInstance* m = of(c);
    const uint64_t items = m != nullptr ? items_of(m, buffer, item_size, item_count) : 0;
    if (items == 0)
        return 0;
    std::memcpy(buffer, m->data + m->position, items * item_size);
    m->position += items * item_size;
    return items;
}

uint64_t memory_write(const void* buffer, uint64_t item_size, uint64_t item_count, void* c)
{
    GIO_MemoryInstance* m = of(c);
    const uint64_t items = m != nullptr ? items_of(m, buffer, item_size, item_count) : 0;
    if (items == 0)
        return 0;
    std::memcpy(m->data + m->position, buffer, items * item_size);
    m->position += items * item_size;
    return items;
}

bool is_forward_only(const GIO_MemoryInstance* m)
{
    return m->self != nullptr && (static_cast<MemoryStreamBlock*>(m->self)->handle.kind & GIO_KIND_FORWARD_ONLY) != 0;
}

int32_t refuse_seek(GIO_MemoryInstance* m)
{
    m->last_error = GIO_ERR_INVALID;
    return -1;
}

int32_t memory_seek64(void* c, int64_t offset, int32_t origin)
{
    GIO_MemoryInstance* m = of(c);
    if (m == nullptr)
        return -1;
    if (origin != GIO_SEEK_SET && origin != GIO_SEEK_CUR && origin != GIO_SEEK_END)
        return refuse_seek(m);
    const bool back = offset < 0 || (origin == GIO_SEEK_SET && static_cast<uint64_t>(offset) < m->position);
    if (is_forward_only(m) && back)
        return refuse_seek(m);
    const uint64_t base = origin == GIO_SEEK_SET ? 0 : origin == GIO_SEEK_CUR ? m->position : m->size;
    const uint64_t distance = offset < 0 ? 0 - static_cast<uint64_t>(offset) : static_cast<uint64_t>(offset);
    if (base > m->size || (offset < 0 ? distance > base : distance > m->size - base))
        return refuse_seek(m);
    m->position = offset < 0 ? base - distance : base + distance;
    return 0;
}

int32_t memory_seek(void* c, int32_t offset, int32_t origin)
{
    return memory_seek64(c, offset, origin);
}

int64_t memory_tell64(void* c)
{
    const GIO_MemoryInstance* m = of(c);
    return m != nullptr ? static_cast<int64_t>(m->position) : -1;
}

int32_t memory_tell(void* c)
{
    const int64_t position = memory_tell64(c);
    return position <= INT32_MAX ? static_cast<int32_t>(position) : -1;
}

int32_t memory_flush(void* c)
{
    GIO_MemoryInstance* m = of(c);
    if (m != nullptr)
        m->last_error = GIO_ERR_UNSUPPORTED;
    return -1;
}

char* memory_gets(char* buffer, int32_t size, void* c)
{
    GIO_MemoryInstance* m = of(c);
    if (m == nullptr)
        return nullptr;
    if (buffer == nullptr || size <= 0)
    {
        m->last_error = GIO_ERR_INVALID;
        return nullptr;
    }
    char* to = buffer;
    const char* last = buffer + size - 1;
    while (to < last && !is_at_end(m))
    {
        *to = static_cast<char>(m->data[m->position]);
        if (*to++ == '\n')
            break;
        ++m->position;
    }
    *to = '\0';
    return m->at_end == 1 ? nullptr : buffer;
}

int32_t memory_puts(const char* text, void* c)
{
    GIO_MemoryInstance* m = of(c);
    if (m == nullptr || is_at_end(m))
        return -1;
    if (text == nullptr)
    {
        m->last_error = GIO_ERR_INVALID;
        return -1;
    }
    for (; *text != '\0'; ++text)
    {
        if (is_at_end(m))
            return -1;
        m->data[m->position++] = static_cast<uint8_t>(*text);
    }
    return 0;
}

int32_t memory_getc(void* c)
{
    GIO_MemoryInstance* m = of(c);
    if (m == nullptr || is_at_end(m))
        return -1;
    const int32_t byte = m->data[m->position++];
    is_at_end(m);
    return byte;
}

int32_t memory_putc(int32_t byte, void* c)
{
    GIO_MemoryInstance* m = of(c);
    if (m == nullptr || is_at_end(m))
        return -1;
    const auto stored = static_cast<uint8_t>(byte);
    m->data[m->position++] = stored;
    is_at_end(m);
    return stored;
}

const char* memory_get_path(void* c, uint32_t* path_kind)
{
    GIO_MemoryInstance* m = of(c);
    if (m == nullptr)
        return nullptr;
    m->last_error = GIO_ERR_UNSUPPORTED;
    m->error_flag = 1;
    if (path_kind != nullptr)
        *path_kind = GIO_KIND_MEMORY;
    return nullptr;
}

int32_t memory_read_buffer(void* c, void** data, uint64_t* length)
{
    GIO_MemoryInstance* m = of(c);
    if (m == nullptr || is_at_end(m))
        return 0;
    if (data == nullptr || length == nullptr)
    {
        m->last_error = GIO_ERR_INVALID;
        return 0;
    }
    *data = m->data + m->position;
    *length = m->size - m->position;
    return 1;
}

int32_t memory_vprintf(void* c, const char* format, va_list args)
{
    GIO_MemoryInstance* m = of(c);
    if (m == nullptr || is_at_end(m))
        return -1;
    if (format == nullptr)
    {
        m->last_error = GIO_ERR_INVALID;
        return -1;
    }
    gio_clear_error();
    char* to = reinterpret_cast<char*>(m->data + m->position);
    const int32_t length = GIO_VFormatBounded(to, m->size - m->position, format, args);
    m->position += static_cast<uint64_t>(length);
    m->last_error = static_cast<uint32_t>(gio_host_error());
    return length;
}

void memory_clear_err(void* c)
{
    GIO_MemoryInstance* m = of(c);
    if (m == nullptr)
        return;
    m->last_error = GIO_OK;
    m->at_end = 0;
}

int32_t memory_eof(void* c)
{
    const GIO_MemoryInstance* m = of(c);
    return m != nullptr ? static_cast<int32_t>(m->at_end) : -1;
}

int32_t memory_error(void* c)
{
    const GIO_MemoryInstance* m = of(c);
    return m != nullptr ? static_cast<int32_t>(m->error_flag) : -1;
}

int32_t memory_last_error(void* c)
{
    const GIO_MemoryInstance* m = of(c);
    return m != nullptr ? static_cast<int32_t>(m->last_error) : -1;
}

int64_t memory_size(void* c)
{
    const GIO_MemoryInstance* m = of(c);
    return m != nullptr ? static_cast<int64_t>(m->size) : -1;
}

int32_t memory_close(void* c)
{
    auto* m = static_cast<GIO_MemoryInstance*>(c);
    if (m == nullptr || m->kind != GIO_MEMORY_TAG)
        return -1;
    if (of(c) == nullptr || m->allocator == nullptr || m->self == nullptr)
        return GIO_ERR_BAD_HANDLE;
    m->allocator->gmm_Free(m->allocator, m->self);
    return GIO_OK;
}

constexpr GIO_StreamOps kMemoryOps = {
    memory_read,   memory_write,    memory_seek,        memory_tell,    memory_seek64,
    memory_tell64, memory_flush,    memory_gets,        memory_puts,    memory_getc,
    memory_putc,   memory_get_path, memory_read_buffer, memory_vprintf, memory_clear_err,
    memory_eof,    memory_error,    memory_last_error,  memory_size,    memory_close,
};

}  // namespace

int32_t GIO_OpenMemory(void* data, uint64_t size, GMM_Allocator* allocator, GIO_Stream** stream_out)
{
    if (data == nullptr || allocator == nullptr || stream_out == nullptr)
        return GIO_ERR_INVALID;
    *stream_out = nullptr;
    auto* block = gmm_alloc_record<MemoryStreamBlock>(allocator);
    if (block == nullptr)
        return GIO_ERR_NO_MEMORY;
    if (size == 0)
    {
        allocator->gmm_Free(allocator, block);
        return GIO_ERR_INVALID;
    }
    block->instance = {GIO_MEMORY_TAG, allocator, block, static_cast<uint8_t*>(data), size, 0, GIO_OK, 0, 0};
    block->ops = kMemoryOps;
    block->handle = {&block->instance, GIO_KIND_MEMORY, &block->ops};
    *stream_out = &block->handle;
    return GIO_OK;
}
