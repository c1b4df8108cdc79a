#include "tests/support/test-allocator.h"

#include <gtest/gtest.h>

using orvlog::test::is_readable;
using orvlog::test::TestAllocator;

namespace
{

TEST(TestAllocator, HasNothingToReadBehindABlockWithGuardPages)
{
    TestAllocator allocator(true);
    GMM_Allocator* gmm = allocator.get();
    for (const uint64_t size : {0U, 1U, 8U, 24U, 4096U, 4104U})
    {
        auto* block = static_cast<uint8_t*>(gmm->gmm_Alloc(gmm, size, 0));
        const uint64_t whole = size == 0 ? 8 : (size + 7) / 8 * 8;
        EXPECT_TRUE(is_readable(block + whole - 1)) << size;
        EXPECT_FALSE(is_readable(block + whole)) << size;
        EXPECT_EQ(reinterpret_cast<uintptr_t>(block) % 8, 0U) << size;
        gmm->gmm_Free(gmm, block);
        EXPECT_FALSE(is_readable(block)) << size;
    }
    EXPECT_EQ(allocator.outstanding(), 0U);
}

TEST(TestAllocator, SaysWhatWasWrittenBetweenABlockAndItsGuardPage)
{
    TestAllocator allocator(true);
    GMM_Allocator* gmm = allocator.get();
    auto* block = static_cast<uint8_t*>(gmm->gmm_Alloc(gmm, 5, 0));
    block[4] = 1;
    gmm->gmm_Free(gmm, block);
    EXPECT_EQ(allocator.overwritten(), 0U);

    block = static_cast<uint8_t*>(gmm->gmm_Alloc(gmm, 5, 0));
    block[5] = 1;
    gmm->gmm_Free(gmm, block);
    EXPECT_EQ(allocator.overwritten(), 1U);
    allocator.forget_overwritten();
}

TEST(TestAllocator, KeepsABlocksBytesWhenItGrowsWithGuardPages)
{
    TestAllocator allocator(true);
    GMM_Allocator* gmm = allocator.get();
    auto* block = static_cast<uint8_t*>(gmm->gmm_Alloc(gmm, 2, 0));
    block[0] = 7;
    block[1] = 9;
    auto* grown = static_cast<uint8_t*>(gmm->gmm_Realloc(gmm, block, 5000));
    EXPECT_EQ(grown[0], 7);
    EXPECT_EQ(grown[1], 9);
    EXPECT_FALSE(is_readable(block));
    EXPECT_EQ(gmm->gmm_AllocSize(gmm, grown), 5000U);
    gmm->gmm_Free(gmm, grown);
    EXPECT_EQ(allocator.bytes(), 0U);
}

}  // namespace
