#include "holv-core/gmm/gmm-ut/gmm-ut-functions.h"

#include "holv-core/gio/gio-file.h"
#include "holv-core/gio/gio-format.h"

#include <cstddef>
#include <cstring>

namespace
{

struct Check
{
    size_t offset;
    const char* test;
    int32_t line;
};

#define CHECK(operation, line)                                                                                         \
    {                                                                                                                  \
        offsetof(GMM_Allocator, operation), "NULL != allocator->" #operation, line                                     \
    }

// The lines name the place of each test to those who read reports.
constexpr Check kChecks[] = {
    CHECK(gmm_Delete, 384),
    CHECK(gmm_RegisterMinimise, 385),
    CHECK(gmm_RegisterAllocFail, 386),
    CHECK(gmm_Alloc, 387),
    CHECK(gmm_Free, 388),
    CHECK(gmm_FreeChannel, 389),
    CHECK(gmm_FreeAll, 390),
    CHECK(gmm_Calloc, 391),
    CHECK(gmm_Realloc, 392),
    CHECK(gmm_AllocSize, 393),
    CHECK(gmm_Truncate, 394),
    CHECK(gmm_PeakAllocCnt, 395),
    CHECK(gmm_IsPtrValid, 396),
    CHECK(gmm_IsPtrInChan, 397),
    CHECK(gmm_IntegrityCheck, 398),
    CHECK(gmm_CurAllocCnt, 399),
    CHECK(gmm_CurChanAllocCnt, 400),
};

bool is_set(const GMM_Allocator* allocator, size_t offset)
{
    void (*operation)(void) = nullptr;
    std::memcpy(&operation, reinterpret_cast<const char*>(allocator) + offset, sizeof operation);
    return operation != nullptr;
}

}  // namespace

uint32_t gmm_ut_debug_integrity_check_default(const GMM_Allocator* allocator)
{
    if (allocator == nullptr)
        return 0;
    for (const Check& check : kChecks)
    {
        if (is_set(allocator, check.offset))
            continue;
        GIO_Stream* output = gio_stderr();
        if (output->ops != nullptr)
            GIO_StreamPrint(output, "\n>>>> FAIL (%s) %s:%d %s() [ID %d %s]\n", check.test,
                            "holv-core\\gmm\\gmm-ut\\gmm-ut-functions", check.line,
                            "gmm_ut_debug_integrity_check_default", 666, "$Revision: 14171 $");
        return 0;
    }
    return 1;
}
