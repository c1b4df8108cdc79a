#include "orvlog/session/orvlog-image-slots.h"

#include "tests/support/test-allocator.h"

#include <gtest/gtest.h>

#include <memory>
#include <vector>

namespace
{

using orvlog::test::TestAllocator;

class ImageSlots : public testing::Test
{
protected:
    ImageSlots() : slots(new ORVLOG_ImageSlots{})
    {
        slots->session = reinterpret_cast<ORVLOG_Session*>(&some_session);
        slots->allocator = allocator.get();
    }
    ORVLOG_ImageSlot* take()
    {
        ORVLOG_ImageSlot* slot = orvlog_image_slot_take(slots.get());
        if (slot != nullptr)
            slot->wrapper = reinterpret_cast<ORVLOG_ImageWrapper*>(&some_wrapper);
        return slot;
    }

    TestAllocator allocator;
    std::unique_ptr<ORVLOG_ImageSlots> slots;
    uint64_t some_session = 0;
    uint64_t some_wrapper = 0;
};

TEST_F(ImageSlots, FoundByTheContextOfTheRecordOrOfACopy)
{
    ORVLOG_ImageSlot* slot = take();
    const GOP_OperandImagePointer copy = slot->record;
    EXPECT_EQ(orvlog_image_slot_of(&slot->record), slot);
    EXPECT_EQ(orvlog_image_slot_find(&slot->record, nullptr), slot);
    EXPECT_EQ(orvlog_image_slot_find(&copy, nullptr), slot);
    EXPECT_EQ(orvlog_image_slot_find(nullptr, copy.imp_Context), slot);
    GOP_OperandImagePointer wiped = copy;
    wiped.imp_Context = &wiped;
    EXPECT_EQ(orvlog_image_slot_find(&wiped, copy.imp_Context), slot);
    EXPECT_EQ(orvlog_image_slot_find(&wiped, nullptr), nullptr);
    EXPECT_EQ(orvlog_image_slots_behind(&wiped, nullptr), nullptr);
}

// What a client has as its context is anything, and is not looked into.
TEST_F(ImageSlots, OtherContextsAreNotRead)
{
    for (const uint64_t word : {uint64_t{0}, uint64_t{1}, uint64_t{16}, uint64_t{0x7FFF'FFFF'FFFF}, UINT64_MAX,
                                UINT64_MAX - 15, uint64_t{0x8000'0000'0000'0000}, uint64_t{0x3FF0'0000'0000'0000}})
    {
        GOP_OperandImagePointer record = {};
        record.imp_Context = reinterpret_cast<void*>(word);
        EXPECT_EQ(orvlog_image_slot_find(&record, record.imp_Context), nullptr) << word;
        EXPECT_EQ(orvlog_image_slots_behind(&record, record.imp_Context), nullptr) << word;
    }
    EXPECT_EQ(orvlog_image_slot_find(nullptr, nullptr), nullptr);
    const ORVLOG_ImageSlot* slot = take();
    EXPECT_EQ(orvlog_image_slot_find(nullptr, slot), nullptr) << "a pointer is no word";
}

TEST_F(ImageSlots, WordIsStaleOnceTheSlotIsGivenBack)
{
    ORVLOG_ImageSlot* slot = take();
    const GOP_OperandImagePointer copy = slot->record;
    orvlog_image_slot_give_back(slot);
    EXPECT_EQ(orvlog_image_slot_find(&slot->record, nullptr), nullptr);
    EXPECT_EQ(orvlog_image_slot_find(&copy, copy.imp_Context), nullptr);
    EXPECT_EQ(orvlog_image_slots_behind(&copy, nullptr), slots.get());
    // It is stale, too, when the slot is used once more.
    for (uint32_t i = 0; i < 4000; ++i)
    {
        ORVLOG_ImageSlot* other = take();
        EXPECT_EQ(orvlog_image_slot_find(&other->record, nullptr), other);
        EXPECT_EQ(orvlog_image_slot_find(&copy, nullptr), nullptr) << i;
        orvlog_image_slot_give_back(other);
    }
    EXPECT_EQ(allocator.requests(), 0U) << "one image at a time needs no memory";
}

TEST_F(ImageSlots, SlotRestsWhileOthersAreUsed)
{
    std::vector<ORVLOG_ImageSlot*> held;
    for (uint32_t number = 0; number < 200; ++number)
        held.push_back(take());
    for (uint32_t round = 0; round < 300; ++round)
    {
        ORVLOG_ImageSlot* rests = held[round % held.size()];
        orvlog_image_slot_give_back(rests);
        std::vector<ORVLOG_ImageSlot*> next;
        for (uint32_t i = 0; i < ORVLOG_RESTING_SLOTS; ++i)
        {
            next.push_back(take());
            EXPECT_NE(next.back(), rests);
        }
        held[round % held.size()] = next.back();
        next.pop_back();
        for (ORVLOG_ImageSlot* slot : next)
            orvlog_image_slot_give_back(slot);
    }
    // Memory follows what is held at once, not how often.
    EXPECT_LE(allocator.outstanding(), (200U + 2 * ORVLOG_RESTING_SLOTS) / ORVLOG_SLOTS_IN_BLOCK + 1);
    for (ORVLOG_ImageSlot* slot : held)
        orvlog_image_slot_give_back(slot);
    orvlog_image_slots_end(slots.get(), allocator.get(), nullptr);
    EXPECT_EQ(allocator.outstanding(), 0U);
}

TEST_F(ImageSlots, NoneWithoutMemoryAndMoreWithIt)
{
    allocator.refuse(1, true);
    std::vector<ORVLOG_ImageSlot*> held;
    for (ORVLOG_ImageSlot* slot = take(); slot != nullptr; slot = take())
        held.push_back(slot);
    EXPECT_EQ(held.size(), ORVLOG_SLOTS_IN_BLOCK);
    allocator.refuse(0);
    held.push_back(take());
    ASSERT_NE(held.back(), nullptr);
    uint32_t count = 0;
    for (ORVLOG_ImageSlot* slot = nullptr; (slot = orvlog_image_slots_next(slots.get(), slot)) != nullptr;)
        ++count;
    EXPECT_EQ(count, held.size());
    for (ORVLOG_ImageSlot* slot : held)
        orvlog_image_slot_give_back(slot);
    EXPECT_EQ(orvlog_image_slots_next(slots.get(), nullptr), nullptr);
    EXPECT_EQ(allocator.outstanding(), 1U);
    orvlog_image_slots_end(slots.get(), allocator.get(), nullptr);
    EXPECT_EQ(allocator.outstanding(), 0U);
}

TEST_F(ImageSlots, NextGoesThroughAllThatAreInUse)
{
    std::vector<ORVLOG_ImageSlot*> held;
    for (uint32_t i = 0; i < 300; ++i)
        held.push_back(take());
    for (size_t i = 0; i < held.size(); i += 3)
        orvlog_image_slot_give_back(held[i]);
    uint32_t count = 0;
    for (ORVLOG_ImageSlot* slot = nullptr; (slot = orvlog_image_slots_next(slots.get(), slot)) != nullptr;)
        ++count;
    EXPECT_EQ(count, 200U);
    for (size_t i = 0; i < held.size(); ++i)
        if (i % 3 != 0)
            orvlog_image_slot_give_back(held[i]);
    orvlog_image_slots_end(slots.get(), allocator.get(), nullptr);
    EXPECT_EQ(allocator.outstanding(), 0U);
}

TEST(ImageSlotsOfAnEndedSession, StandUntilTheLastIsGivenBack)
{
    TestAllocator allocator;
    auto* slots =
        static_cast<ORVLOG_ImageSlots*>(allocator.get()->gmm_Calloc(allocator.get(), sizeof(ORVLOG_ImageSlots), 0));
    slots->allocator = allocator.get();
    uint64_t some = 0;
    slots->session = reinterpret_cast<ORVLOG_Session*>(&some);
    std::vector<ORVLOG_ImageSlot*> held;
    for (uint32_t i = 0; i < 100; ++i)
    {
        held.push_back(orvlog_image_slot_take(slots));
        held.back()->wrapper = reinterpret_cast<ORVLOG_ImageWrapper*>(&some);
    }
    orvlog_image_slots_end(slots, allocator.get(), slots);
    EXPECT_GT(allocator.outstanding(), 1U);
    while (!held.empty())
    {
        EXPECT_GT(allocator.outstanding(), 1U);
        orvlog_image_slot_give_back(held.back());
        orvlog_image_slots_settle(slots);
        held.pop_back();
    }
    EXPECT_EQ(allocator.outstanding(), 0U);
    EXPECT_EQ(allocator.bad_frees(), 0U);
}

}  // namespace
