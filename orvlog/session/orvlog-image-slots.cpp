#include "orvlog/session/orvlog-image-slots.h"

#include "holv-core/gmm/gmm-typed.h"

#include <cstddef>
#include <cstring>

namespace
{

// A word has a mark, the number of the use, and the slot's address without the bits that are always zero. Pointers to
// anything have the upper bits all alike, so no pointer has the mark.
constexpr uint32_t kZeroBits = 3;
constexpr uint32_t kAddressBits = 45;
constexpr uint32_t kUseBits = 12;
constexpr uint64_t kMark = 0x5A;
constexpr uint64_t kAddressMask = (uint64_t{1} << kAddressBits) - 1;
constexpr uint64_t kUseMask = (uint64_t{1} << kUseBits) - 1;

static_assert(sizeof(void*) == sizeof(uint64_t));
static_assert(alignof(ORVLOG_ImageSlot) == 1U << kZeroBits);
static_assert(offsetof(ORVLOG_ImageSlot, record) == 0);

bool has_word(const ORVLOG_ImageSlot* slot)
{
    const auto address = reinterpret_cast<uint64_t>(slot);
    return address % (1U << kZeroBits) == 0 && address >> (kAddressBits + kZeroBits) == 0;
}

void* word_of(const ORVLOG_ImageSlot* slot)
{
    const uint64_t address = reinterpret_cast<uint64_t>(slot) >> kZeroBits;
    return reinterpret_cast<void*>(kMark << (kAddressBits + kUseBits) | (slot->use & kUseMask) << kAddressBits |
                                   address);
}

// The slot that a word names, in this use or an earlier one; null for other words.
ORVLOG_ImageSlot* slot_named(const void* context)
{
    const auto word = reinterpret_cast<uint64_t>(context);
    if (word >> (kAddressBits + kUseBits) != kMark)
        return nullptr;
    return reinterpret_cast<ORVLOG_ImageSlot*>((word & kAddressMask) << kZeroBits);
}

ORVLOG_ImageSlot* live_slot(const void* context)
{
    ORVLOG_ImageSlot* slot = slot_named(context);
    return slot != nullptr && slot->wrapper != nullptr && word_of(slot) == context ? slot : nullptr;
}

const void* context_of(const GOP_OperandImagePointer* record)
{
    return record != nullptr ? record->imp_Context : nullptr;
}

// Slots that have never been used come ahead of those that rest.
void add_block(ORVLOG_ImageSlots* slots)
{
    GMM_Allocator* allocator = slots->allocator;
    auto* block = gmm_alloc_record<ORVLOG_ImageSlotBlock>(allocator);
    if (block == nullptr)
        return;
    std::memset(block, 0, sizeof *block);
    block->next = slots->first.next;
    slots->first.next = block;
    for (ORVLOG_ImageSlot& slot : block->slots)
    {
        slot.next_free = slots->first_free;
        slots->first_free = &slot;
        if (slots->last_free == nullptr)
            slots->last_free = &slot;
    }
    slots->free_count += ORVLOG_SLOTS_IN_BLOCK;
}

ORVLOG_ImageSlot* take_rested(ORVLOG_ImageSlots* slots)
{
    if (slots->free_count <= ORVLOG_RESTING_SLOTS)
        add_block(slots);
    ORVLOG_ImageSlot* slot = slots->first_free;
    if (slot == nullptr)
        return nullptr;
    slots->first_free = slot->next_free;
    if (slots->first_free == nullptr)
        slots->last_free = nullptr;
    --slots->free_count;
    return slot;
}

}  // namespace

ORVLOG_ImageSlot* orvlog_image_slot_take(ORVLOG_ImageSlots* slots)
{
    ORVLOG_ImageSlot* slot =
        slots->fresh < ORVLOG_SLOTS_IN_BLOCK ? &slots->first.slots[slots->fresh++] : take_rested(slots);
    if (slot == nullptr || !has_word(slot))
        return nullptr;
    slot->slots = slots;
    slot->next_free = nullptr;
    slot->record = {};
    slot->record.imp_Context = word_of(slot);
    ++slots->live;
    return slot;
}

void orvlog_image_slot_give_back(ORVLOG_ImageSlot* slot)
{
    ORVLOG_ImageSlots* slots = slot->slots;
    slot->wrapper = nullptr;
    ++slot->use;
    if (slots->last_free != nullptr)
        slots->last_free->next_free = slot;
    else
        slots->first_free = slot;
    slots->last_free = slot;
    ++slots->free_count;
    --slots->live;
}

ORVLOG_ImageSlot* orvlog_image_slot_of(GOP_OperandImagePointer* record)
{
    return reinterpret_cast<ORVLOG_ImageSlot*>(record);
}

ORVLOG_ImageSlot* orvlog_image_slot_find(const GOP_OperandImagePointer* record, const void* context)
{
    ORVLOG_ImageSlot* slot = live_slot(context_of(record));
    return slot != nullptr ? slot : live_slot(context);
}

ORVLOG_ImageSlots* orvlog_image_slots_behind(const GOP_OperandImagePointer* record, const void* context)
{
    const ORVLOG_ImageSlot* slot = slot_named(context_of(record));
    if (slot == nullptr)
        slot = slot_named(context);
    return slot != nullptr ? slot->slots : nullptr;
}

ORVLOG_ImageSlot* orvlog_image_slots_next(ORVLOG_ImageSlots* slots, const ORVLOG_ImageSlot* before)
{
    bool passed = before == nullptr;
    for (ORVLOG_ImageSlotBlock* block = &slots->first; block != nullptr; block = block->next)
    {
        // The blocks ahead of the one that holds `before` are passed over without a look at their slots.
        if (!passed && (before < block->slots || before >= block->slots + ORVLOG_SLOTS_IN_BLOCK))
            continue;
        const ptrdiff_t from = passed ? 0 : before - block->slots + 1;
        for (ptrdiff_t i = from; i < ptrdiff_t{ORVLOG_SLOTS_IN_BLOCK}; ++i)
            if (block->slots[i].wrapper != nullptr)
                return &block->slots[i];
        passed = true;
    }
    return nullptr;
}

void orvlog_image_slots_end(ORVLOG_ImageSlots* slots, GMM_Allocator* allocator, void* owner)
{
    slots->session = nullptr;
    slots->allocator = allocator;
    slots->owner = owner;
    orvlog_image_slots_settle(slots);
}

void orvlog_image_slots_settle(ORVLOG_ImageSlots* slots)
{
    if (slots->session != nullptr || slots->live != 0)
        return;
    GMM_Allocator* allocator = slots->allocator;
    while (slots->first.next != nullptr)
    {
        ORVLOG_ImageSlotBlock* block = slots->first.next;
        slots->first.next = block->next;
        allocator->gmm_Free(allocator, block);
    }
    slots->first_free = slots->last_free = nullptr;
    slots->free_count = slots->fresh = 0;
    if (slots->owner != nullptr)
        allocator->gmm_Free(allocator, slots->owner);
}
