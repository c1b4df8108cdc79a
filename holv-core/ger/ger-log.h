// GER_Log: numbered output channels with a level filter, through which any module prints one line. Built for
// several threads: every access to its arrays happens with the client's lock held.

#ifndef HOLV_CORE_GER_LOG_H
#define HOLV_CORE_GER_LOG_H

#include "holv-core/ger/ger-error.h"
#include "holv-core/gio/gio-stream.h"
#include "holv-core/gmm/gmm-allocator.h"

#ifdef __cplusplus
extern "C" {
#endif

enum
{
    GER_LOCK_SUCCESS = 5,    // what the lock operations give for success
    GER_LEVEL_OF_LOG = -1,   // as unsigned: the channel has no level of its own
    GER_MAX_CHANNEL = 9998,  // highest channel number
    GER_MAX_CHANNEL_COUNT = 9999
};

// The client's lock operations, by their place in its table. Each takes the table first. Entries that are not
// named here are not called.
typedef struct GER_OsServices GER_OsServices;

struct GER_OsServices
{
    void (*unused1[6])(void);
    int32_t (*create)(const GER_OsServices* services, void* null, void** lock, uintptr_t one,
                      uintptr_t also_one);                           // 7th
    int32_t (*destroy)(const GER_OsServices* services, void* lock);  // 8th
    void (*unused2[1])(void);
    int32_t (*release)(const GER_OsServices* services, void* lock);                                 // 10th
    int32_t (*take)(const GER_OsServices* services, void* lock, uintptr_t zero, uint32_t timeout);  // 11th
};

// Replaces the write of a line; its result is the result of the print. `channel` is never negative.
typedef int32_t (*GER_OutputHook)(GIO_Stream* output, void* context, const GER_OsServices* services, int32_t level,
                                  int32_t channel, const char* text, uint64_t length);

struct GER_Log
{
    GMM_Allocator* gl_Allocator;
    const GER_OsServices* gl_OsServices;
    void* gl_Lock;
    GER_OutputHook gl_OutputHook;  // may be null
    void* gl_HookContext;
    uint32_t gl_LockTimeout;     // given to each lock request
    uint32_t gl_DefaultLevel;    // limit for channels with no level of their own
    uint32_t* gl_ChannelLevels;  // 0xFFFFFFFF: gl_DefaultLevel applies
    int32_t gl_DefaultChannel;
    int32_t gl_ChannelCount;     // channels that have an output
    int32_t gl_ChannelCapacity;  // length of both arrays
    GIO_Stream* gl_Outputs;      // handles by value; an empty slot is all zeros. The streams stay the client's
};

// All give 0 or a code: GIO_ERR_INVALID for bad arguments, GIO_ERR_NO_MEMORY, GIO_ERR_NO_SPACE for too many
// channels, GIO_ERR_LOCK_OR_OUTPUT, and GIO_ERR_PLATFORM where a lock could not be released or destroyed at the end.

// A log with one channel, number 0, which is the default, and default level 2. `log_out` takes null on failure.
int32_t GER_LogCreate(const GIO_Stream* output, GMM_Allocator* allocator, const GER_OsServices* services,
                      uint32_t lock_timeout, GER_OutputHook hook, void* hook_context, GER_Log** log_out);
int32_t GER_LogDestroy(GER_Log* log);

// Prints a line of at most 1023 bytes, with no line end added. A level above the channel's goes nowhere and gives
// 0. A negative channel means the default one; one that has no output gets a copy of the default one's.
int32_t GER_LogPrint(GER_Log* log, int32_t level, int32_t channel, const char* format, ...);

int32_t GER_LogSetOutput(GER_Log* log, const GIO_Stream* output, int32_t channel, uint32_t make_default);
int32_t GER_LogSetDefaultLevel(GER_Log* log, uint32_t level);
int32_t GER_LogSetChannelLevel(GER_Log* log, uint32_t level, int32_t channel);
int32_t GER_LogSetDefaultChannel(GER_Log* log, int32_t channel);

#ifdef __cplusplus
}
#endif

#endif
