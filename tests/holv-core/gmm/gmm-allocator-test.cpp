#include "holv-core/gmm/gmm-allocator.h"

#include <gtest/gtest.h>

#include <cstddef>

namespace
{

TEST(AllocatorRecord, TwentyTwoWordsInTheirOrder)
{
    EXPECT_EQ(offsetof(GMM_Allocator, instance), 0U * 8);
    EXPECT_EQ(offsetof(GMM_Allocator, gmm_Delete), 1U * 8);
    EXPECT_EQ(offsetof(GMM_Allocator, gmm_RegisterMinimise), 2U * 8);
    EXPECT_EQ(offsetof(GMM_Allocator, gmm_RegisterAllocFail), 3U * 8);
    EXPECT_EQ(offsetof(GMM_Allocator, gmm_Alloc), 4U * 8);
    EXPECT_EQ(offsetof(GMM_Allocator, gmm_Free), 5U * 8);
    EXPECT_EQ(offsetof(GMM_Allocator, gmm_FreeChannel), 6U * 8);
    EXPECT_EQ(offsetof(GMM_Allocator, gmm_FreeAll), 7U * 8);
    EXPECT_EQ(offsetof(GMM_Allocator, gmm_Calloc), 8U * 8);
    EXPECT_EQ(offsetof(GMM_Allocator, gmm_Realloc), 9U * 8);
    EXPECT_EQ(offsetof(GMM_Allocator, gmm_AllocSize), 10U * 8);
    EXPECT_EQ(offsetof(GMM_Allocator, gmm_Truncate), 11U * 8);
    EXPECT_EQ(offsetof(GMM_Allocator, gmm_SetInfo), 12U * 8);
    EXPECT_EQ(offsetof(GMM_Allocator, gmm_UsedBytes), 13U * 8);
    EXPECT_EQ(offsetof(GMM_Allocator, gmm_NoOp14), 14U * 8);
    EXPECT_EQ(offsetof(GMM_Allocator, gmm_PeakAllocCnt), 15U * 8);
    EXPECT_EQ(offsetof(GMM_Allocator, gmm_IsPtrValid), 16U * 8);
    EXPECT_EQ(offsetof(GMM_Allocator, gmm_IsPtrInChan), 17U * 8);
    EXPECT_EQ(offsetof(GMM_Allocator, gmm_IntegrityCheck), 18U * 8);
    EXPECT_EQ(offsetof(GMM_Allocator, gmm_CurAllocCnt), 19U * 8);
    EXPECT_EQ(offsetof(GMM_Allocator, gmm_CurChanAllocCnt), 20U * 8);
    EXPECT_EQ(offsetof(GMM_Allocator, self), 21U * 8);
    EXPECT_EQ(sizeof(GMM_Allocator), 22U * 8);
}

}  // namespace
