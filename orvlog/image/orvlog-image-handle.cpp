#include "orvlog/image/orvlog-image-handle.h"

#include <atomic>
#include <cstdint>

namespace
{

struct Bucket
{
    std::atomic_flag busy;
    ORVLOG_ImageHandle* first;
};

constexpr uintptr_t kBuckets = 256;
constinit Bucket buckets[kBuckets] = {};

Bucket* enter_bucket(const void* record)
{
    const auto at = reinterpret_cast<uintptr_t>(record);
    Bucket* bucket = &buckets[(at >> 4 ^ at >> 14) % kBuckets];
    while (bucket->busy.test_and_set(std::memory_order_acquire))
    {
    }
    return bucket;
}

void leave_bucket(Bucket* bucket)
{
    bucket->busy.clear(std::memory_order_release);
}

}  // namespace

void orvlog_image_handle_enter(ORVLOG_ImageHandle* handle)
{
    Bucket* bucket = enter_bucket(&handle->record);
    handle->next_known = bucket->first;
    bucket->first = handle;
    leave_bucket(bucket);
}

void orvlog_image_handle_leave(const ORVLOG_ImageHandle* handle)
{
    Bucket* bucket = enter_bucket(&handle->record);
    ORVLOG_ImageHandle** link = &bucket->first;
    while (*link != nullptr && *link != handle)
        link = &(*link)->next_known;
    if (*link != nullptr)
        *link = handle->next_known;
    leave_bucket(bucket);
}

ORVLOG_ImageHandle* orvlog_image_handle_find(const GOP_OperandImagePointer* record)
{
    if (record == nullptr)
        return nullptr;
    Bucket* bucket = enter_bucket(record);
    ORVLOG_ImageHandle* handle = bucket->first;
    while (handle != nullptr && &handle->record != record)
        handle = handle->next_known;
    leave_bucket(bucket);
    return handle;
}
