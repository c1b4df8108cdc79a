#include "holv-core/gmm/gmm-typed.h"

#include "tests/support/test-allocator.h"

#include <gtest/gtest.h>

namespace
{

using orvlog::test::TestAllocator;

struct Record
{
    uint64_t words[3];
};

TEST(TypedBlocks, AskForTheBytesOfTheirItems)
{
    TestAllocator allocator;
    auto* record = gmm_alloc_record<Record>(allocator.get());
    ASSERT_NE(record, nullptr);
    EXPECT_EQ(allocator.bytes(), 24U);
    auto* shorts = gmm_alloc_array<uint16_t>(allocator.get(), 7);
    ASSERT_NE(shorts, nullptr);
    EXPECT_EQ(allocator.bytes(), 24U + 14U);
    for (uint16_t i = 0; i < 7; ++i)
        shorts[i] = i;
    shorts = gmm_realloc_array(allocator.get(), shorts, 9);
    ASSERT_NE(shorts, nullptr);
    EXPECT_EQ(allocator.bytes(), 24U + 18U);
    EXPECT_EQ(shorts[6], 6);
    allocator.get()->gmm_Free(allocator.get(), shorts);
    allocator.get()->gmm_Free(allocator.get(), record);
    EXPECT_EQ(allocator.outstanding(), 0U);
}

// The product of 2^61 + 1 and 24 would be a block of 24 bytes.
TEST(TypedBlocks, OfMoreThanCanBeCountedAreRefusedUnasked)
{
    TestAllocator allocator;
    constexpr uint64_t kTooMany = (uint64_t{1} << 61) + 1;
    EXPECT_EQ(gmm_alloc_array<Record>(allocator.get(), kTooMany), nullptr);
    EXPECT_EQ(allocator.requests(), 0U);
    auto* record = gmm_alloc_record<Record>(allocator.get());
    ASSERT_NE(record, nullptr);
    EXPECT_EQ(gmm_realloc_array(allocator.get(), record, kTooMany), nullptr);
    EXPECT_EQ(allocator.requests(), 1U);
    EXPECT_EQ(allocator.outstanding(), 1U);
    allocator.get()->gmm_Free(allocator.get(), record);
}

TEST(TypedBlocks, RefusedOnesAreNull)
{
    TestAllocator allocator;
    allocator.refuse(1, true);
    EXPECT_EQ(gmm_alloc_record<Record>(allocator.get()), nullptr);
    EXPECT_EQ(gmm_alloc_array<char>(allocator.get(), 5), nullptr);
    EXPECT_EQ(allocator.refused(), 2U);
}

TEST(TypedBlocks, CarryTheirChannel)
{
    static uint32_t channel;
    TestAllocator inner;
    GMM_Allocator outer = *inner.get();
    outer.gmm_Alloc = [](GMM_Allocator*, uint64_t, uint32_t given) -> void*
    {
        channel = given;
        return nullptr;
    };
    gmm_alloc_record<Record>(&outer, 7);
    EXPECT_EQ(channel, 7U);
    gmm_alloc_array<char>(&outer, 1);
    EXPECT_EQ(channel, 0U);
}

}  // namespace
