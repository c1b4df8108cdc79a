#include "holv-core/gmm/gmm-ut/gmm-ut-functions.h"

#include "holv-core/gio/gio-file.h"
#include "holv-core/gmm/gmm-chunk.h"
#include "tests/support/memory-stream.h"
#include "tests/support/test-allocator.h"

#include <gtest/gtest.h>

#include <cstring>
#include <string>

namespace
{

using namespace orvlog::test;

// Puts a stream of the test's in the place of the standard error's handle.
class SelfCheck : public testing::Test
{
protected:
    SelfCheck()
    {
        gio_setup_standard_streams();
        saved = *gio_stderr();
        *gio_stderr() = *stream.get();
    }
    ~SelfCheck() override
    {
        *gio_stderr() = saved;
    }

    MemoryStream stream;
    TestAllocator allocator;
    GIO_Stream saved;
};

TEST_F(SelfCheck, CompleteTableWritesNothing)
{
    EXPECT_EQ(gmm_ut_debug_integrity_check_default(allocator.get()), 1U);
    EXPECT_EQ(stream.text(), "");
}

struct Row
{
    int order;
    const char* name;
    const char* line;
};

TEST_F(SelfCheck, EachMissingOperationHasItsLine)
{
    const Row rows[] = {
        {1, "gmm_Delete", "384"},
        {2, "gmm_RegisterMinimise", "385"},
        {3, "gmm_RegisterAllocFail", "386"},
        {4, "gmm_Alloc", "387"},
        {5, "gmm_Free", "388"},
        {6, "gmm_FreeChannel", "389"},
        {7, "gmm_FreeAll", "390"},
        {8, "gmm_Calloc", "391"},
        {9, "gmm_Realloc", "392"},
        {10, "gmm_AllocSize", "393"},
        {11, "gmm_Truncate", "394"},
        {15, "gmm_PeakAllocCnt", "395"},
        {16, "gmm_IsPtrValid", "396"},
        {17, "gmm_IsPtrInChan", "397"},
        {18, "gmm_IntegrityCheck", "398"},
        {19, "gmm_CurAllocCnt", "399"},
        {20, "gmm_CurChanAllocCnt", "400"},
    };
    for (const Row& row : rows)
    {
        GMM_Allocator bent = *allocator.get();
        std::memset(reinterpret_cast<char*>(&bent) + 8 * row.order, 0, 8);
        stream.clear();
        EXPECT_EQ(gmm_ut_debug_integrity_check_default(&bent), 0U);
        EXPECT_EQ(stream.text(), std::string("\n>>>> FAIL (NULL != allocator->") + row.name +
                                     ") holv-core\\gmm\\gmm-ut\\gmm-ut-functions:" + row.line +
                                     " gmm_ut_debug_integrity_check_default() [ID 666 $Revision: 14171 $]\n");
        EXPECT_EQ(stream.flushes(), 0U);
    }
}

TEST_F(SelfCheck, StopsAtTheFirst)
{
    GMM_Allocator bent = {};
    EXPECT_EQ(gmm_ut_debug_integrity_check_default(&bent), 0U);
    EXPECT_NE(stream.text().find("gmm_Delete"), std::string::npos);
    EXPECT_EQ(stream.text().find("gmm_Alloc)"), std::string::npos);
}

TEST_F(SelfCheck, NoTableIsNotComplete)
{
    EXPECT_EQ(gmm_ut_debug_integrity_check_default(nullptr), 0U);
    EXPECT_EQ(stream.text(), "");
}

TEST_F(SelfCheck, TableOfTheChunkAllocatorIsComplete)
{
    const GMM_ChunkParams params = {allocator.get(), 16384, 0};
    GMM_Allocator* pool = gmm_chunk_allocator_create(&params);
    EXPECT_EQ(gmm_ut_debug_integrity_check_default(pool), 1U);
    EXPECT_EQ(stream.text(), "");
    pool->gmm_Delete(pool);
}

TEST_F(SelfCheck, UnusedOperationsAreNotLookedAt)
{
    GMM_Allocator bent = *allocator.get();
    bent.gmm_SetInfo = nullptr;
    bent.gmm_UsedBytes = nullptr;
    bent.gmm_NoOp14 = nullptr;
    EXPECT_EQ(gmm_ut_debug_integrity_check_default(&bent), 1U);
}

}  // namespace
