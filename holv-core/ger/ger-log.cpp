#include "holv-core/ger/ger-log.h"

#include "holv-core/gio/gio-result.h"
#include "holv-core/gmm/gmm-typed.h"

#include <cstddef>
#include <cstdio>
#include <cstring>

static_assert(offsetof(GER_Log, gl_Allocator) == 0);
static_assert(offsetof(GER_Log, gl_OsServices) == 8);
static_assert(offsetof(GER_Log, gl_Lock) == 16);
static_assert(offsetof(GER_Log, gl_OutputHook) == 24);
static_assert(offsetof(GER_Log, gl_HookContext) == 32);
static_assert(offsetof(GER_Log, gl_LockTimeout) == 40);
static_assert(offsetof(GER_Log, gl_DefaultLevel) == 44);
static_assert(offsetof(GER_Log, gl_ChannelLevels) == 48);
static_assert(offsetof(GER_Log, gl_DefaultChannel) == 56);
static_assert(offsetof(GER_Log, gl_ChannelCount) == 60);
static_assert(offsetof(GER_Log, gl_ChannelCapacity) == 64);
static_assert(offsetof(GER_Log, gl_Outputs) == 72);
static_assert(sizeof(GER_Log) == 80);
static_assert(offsetof(GER_OsServices, create) == 48);
static_assert(offsetof(GER_OsServices, destroy) == 56);
static_assert(offsetof(GER_OsServices, release) == 72);
static_assert(offsetof(GER_OsServices, take) == 80);

namespace
{

constexpr uint32_t kNoLevel = 0xFFFFFFFF;
constexpr uint32_t kFirstDefaultLevel = 2;
constexpr size_t kLine = 1024;

bool take_lock(const GER_Log* log)
{
    return log->gl_OsServices->take(log->gl_OsServices, log->gl_Lock, 0, log->gl_LockTimeout) == GER_LOCK_SUCCESS;
}

void release_lock(const GER_Log* log)
{
    log->gl_OsServices->release(log->gl_OsServices, log->gl_Lock);
}

bool is_empty(const GIO_Stream* output)
{
    return output->instance == nullptr || output->ops == nullptr;
}

bool is_channel(int32_t channel)
{
    return channel >= 0 && channel <= GER_MAX_CHANNEL;
}

// Makes room for a channel number. What has grown stays grown, even if the other array cannot.
int32_t grow(GER_Log* log, int32_t channel)
{
    GMM_Allocator* allocator = log->gl_Allocator;
    const auto capacity = static_cast<uint64_t>(channel) + 1;
    auto* outputs = gmm_realloc_array(allocator, log->gl_Outputs, capacity);
    if (outputs == nullptr)
        return GIO_ERR_NO_MEMORY;
    log->gl_Outputs = outputs;
    auto* levels = gmm_realloc_array(allocator, log->gl_ChannelLevels, capacity);
    if (levels == nullptr)
        return GIO_ERR_NO_MEMORY;
    log->gl_ChannelLevels = levels;
    for (int32_t i = log->gl_ChannelCapacity; i <= channel; ++i)
    {
        outputs[i] = {nullptr, 0, nullptr};
        levels[i] = kNoLevel;
    }
    log->gl_ChannelCapacity = channel + 1;
    return GIO_OK;
}

// The steps of GER_LogSetOutput behind its lock.
int32_t set_output(GER_Log* log, const GIO_Stream* output, int32_t channel, uint32_t make_default)
{
    if (!is_channel(channel) || output == nullptr)
        return GIO_ERR_INVALID;
    if (log->gl_ChannelCount > GER_MAX_CHANNEL_COUNT)
        return GIO_ERR_NO_SPACE;
    const GIO_Stream copy = *output;
    if (channel >= log->gl_ChannelCapacity)
    {
        const int32_t code = grow(log, channel);
        if (code != GIO_OK)
            return code;
    }
    GIO_Stream* slot = &log->gl_Outputs[channel];
    if (is_empty(slot))
        ++log->gl_ChannelCount;
    *slot = copy;
    if (make_default != 0)
        log->gl_DefaultChannel = channel;
    return GIO_OK;
}

int32_t write_line(const GIO_Stream* output, const char* text, uint64_t length)
{
    const uint64_t written = output->ops->gio_Write(text, 1, length, output->instance);
    const bool failed = output->ops->gio_Error(output->instance) != 0 || written < length;
    return failed ? static_cast<int32_t>(GIO_ERR_LOCK_OR_OUTPUT) : static_cast<int32_t>(GIO_OK);
}

int32_t print_locked(GER_Log* log, int32_t level, int32_t channel, const char* text, uint64_t length)
{
    if (channel >= log->gl_ChannelCapacity)
    {
        const int32_t code = set_output(log, &log->gl_Outputs[log->gl_DefaultChannel], channel, 0);
        if (code != GIO_OK)
            return code;
    }
    const int32_t resolved = channel < 0 ? log->gl_DefaultChannel : channel;
    uint32_t limit = log->gl_ChannelLevels[resolved];
    if (limit == kNoLevel)
        limit = log->gl_DefaultLevel;
    if (level > static_cast<int32_t>(limit))
        return GIO_OK;
    GIO_Stream* output = &log->gl_Outputs[resolved];
    if (is_empty(output))
        *output = log->gl_Outputs[log->gl_DefaultChannel];
    if (is_empty(output))
        return GIO_OK;
    if (log->gl_OutputHook != nullptr)
        return log->gl_OutputHook(output, log->gl_HookContext, log->gl_OsServices, level, resolved, text, length);
    return write_line(output, text, length);
}

void free_blocks(GMM_Allocator* allocator, GER_Log* log)
{
    if (log->gl_ChannelLevels != nullptr)
        allocator->gmm_Free(allocator, log->gl_ChannelLevels);
    if (log->gl_Outputs != nullptr)
        allocator->gmm_Free(allocator, log->gl_Outputs);
    allocator->gmm_Free(allocator, log);
}

}  // namespace

int32_t GER_LogCreate(const GIO_Stream* output, GMM_Allocator* allocator, const GER_OsServices* services,
                      uint32_t lock_timeout, GER_OutputHook hook, void* hook_context, GER_Log** log_out)
{
    if (log_out != nullptr)
        *log_out = nullptr;
    if (output == nullptr || allocator == nullptr || services == nullptr || log_out == nullptr)
        return GIO_ERR_INVALID;
    gio_clear_error();
    auto* log = static_cast<GER_Log*>(allocator->gmm_Calloc(allocator, sizeof(GER_Log), 0));
    if (log == nullptr)
        return GIO_ERR_NO_MEMORY;
    log->gl_Outputs = gmm_alloc_record<GIO_Stream>(allocator);
    if (log->gl_Outputs != nullptr)
        log->gl_ChannelLevels = gmm_alloc_record<uint32_t>(allocator);
    if (log->gl_ChannelLevels == nullptr)
    {
        free_blocks(allocator, log);
        return GIO_ERR_NO_MEMORY;
    }
    if (services->create(services, nullptr, &log->gl_Lock, 1, 1) != GER_LOCK_SUCCESS)
    {
        free_blocks(allocator, log);
        return GIO_ERR_LOCK_OR_OUTPUT;
    }
    log->gl_Allocator = allocator;
    log->gl_OsServices = services;
    log->gl_OutputHook = hook;
    log->gl_HookContext = hook_context;
    log->gl_LockTimeout = lock_timeout;
    log->gl_DefaultLevel = kFirstDefaultLevel;
    log->gl_DefaultChannel = 0;
    log->gl_ChannelCount = 1;
    log->gl_ChannelCapacity = 1;
    log->gl_ChannelLevels[0] = kNoLevel;
    log->gl_Outputs[0] = *output;
    *log_out = log;
    return GIO_OK;
}

int32_t GER_LogDestroy(GER_Log* log)
{
    if (log == nullptr)
        return GIO_ERR_INVALID;
    if (!take_lock(log))
        return GIO_ERR_LOCK_OR_OUTPUT;
    const GER_OsServices* services = log->gl_OsServices;
    void* lock = log->gl_Lock;
    free_blocks(log->gl_Allocator, log);
    const bool released = services->release(services, lock) == GER_LOCK_SUCCESS;
    const bool destroyed = services->destroy(services, lock) == GER_LOCK_SUCCESS;
    return released && destroyed ? static_cast<int32_t>(GIO_OK) : static_cast<int32_t>(GIO_ERR_PLATFORM);
}

int32_t GER_LogPrint(GER_Log* log, int32_t level, int32_t channel, const char* format, ...)
{
    if (log == nullptr || format == nullptr || *format == '\0')
        return GIO_ERR_INVALID;
    char text[kLine];
    va_list args;
    va_start(args, format);
    const int length = std::vsnprintf(text, kLine, format, args);
    va_end(args);
    if (length < 0)
        return GIO_ERR_LOCK_OR_OUTPUT;
    const uint64_t kept = static_cast<uint64_t>(length) < kLine ? static_cast<uint64_t>(length) : kLine - 1;
    if (!take_lock(log))
        return GIO_ERR_LOCK_OR_OUTPUT;
    const int32_t code = print_locked(log, level, channel, text, kept);
    release_lock(log);
    return code;
}

int32_t GER_LogSetOutput(GER_Log* log, const GIO_Stream* output, int32_t channel, uint32_t make_default)
{
    if (log == nullptr || output == nullptr || !is_channel(channel))
        return GIO_ERR_INVALID;
    if (!take_lock(log))
        return GIO_ERR_LOCK_OR_OUTPUT;
    const int32_t code = set_output(log, output, channel, make_default);
    release_lock(log);
    return code;
}

int32_t GER_LogSetDefaultLevel(GER_Log* log, uint32_t level)
{
    if (log == nullptr)
        return GIO_ERR_INVALID;
    if (!take_lock(log))
        return GIO_ERR_LOCK_OR_OUTPUT;
    log->gl_DefaultLevel = level;
    release_lock(log);
    return GIO_OK;
}

int32_t GER_LogSetChannelLevel(GER_Log* log, uint32_t level, int32_t channel)
{
    if (log == nullptr || !is_channel(channel))
        return GIO_ERR_INVALID;
    if (!take_lock(log))
        return GIO_ERR_LOCK_OR_OUTPUT;
    int32_t code = GIO_ERR_INVALID;
    if (channel < log->gl_ChannelCapacity)
    {
        log->gl_ChannelLevels[channel] = level;
        code = GIO_OK;
    }
    release_lock(log);
    return code;
}

int32_t GER_LogSetDefaultChannel(GER_Log* log, int32_t channel)
{
    if (log == nullptr || channel < 0)
        return GIO_ERR_INVALID;
    if (!take_lock(log))
        return GIO_ERR_LOCK_OR_OUTPUT;
    int32_t code = GIO_ERR_INVALID;
    if (channel < log->gl_ChannelCapacity)
    {
        log->gl_DefaultChannel = channel;
        code = GIO_OK;
    }
    release_lock(log);
    return code;
}
