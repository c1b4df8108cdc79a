#include "clients/stream/malloc-allocator.h"

#include <gtest/gtest.h>

#include <cstdint>

namespace
{

using orvlog::client_stream::MallocAllocator;

TEST(MallocAllocator, CountsWhatIsInUse)
{
    MallocAllocator allocator;
    GMM_Allocator* gmm = allocator.allocator();
    EXPECT_EQ(gmm->self, gmm);
    void* first = gmm->gmm_Alloc(gmm, 100, 0);
    unsigned char* zeros = static_cast<unsigned char*>(gmm->gmm_Calloc(gmm, 10, 0));
    ASSERT_NE(first, nullptr);
    ASSERT_NE(zeros, nullptr);
    for (int i = 0; i < 10; ++i)
        EXPECT_EQ(zeros[i], 0);
    zeros[9] = 42;
    EXPECT_EQ(allocator.bytes_in_use(), 110U);
    zeros = static_cast<unsigned char*>(gmm->gmm_Realloc(gmm, zeros, 50));
    ASSERT_NE(zeros, nullptr);
    EXPECT_EQ(zeros[9], 42);
    EXPECT_EQ(gmm->gmm_AllocSize(gmm, zeros), 50U);
    EXPECT_EQ(gmm->gmm_UsedBytes(gmm), 150U);
    gmm->gmm_Free(gmm, first);
    gmm->gmm_Free(gmm, zeros);
    EXPECT_EQ(allocator.bytes_in_use(), 0U);
    EXPECT_EQ(allocator.peak_bytes(), 160U);
    EXPECT_EQ(gmm->gmm_Alloc(gmm, UINT64_MAX, 0), nullptr);
}

}  // namespace
