// Where the records stand that renderers hold of wrapped images, and how the logger knows them again.
//
// A renderer may call back with its own copy of a record, or come back with one whose image is gone: it releases
// twice. So a record carries its slot as its context: a word that no pointer looks like, with the number of the slot's
// use in it. The word alone tells whether the image is still there, and of a word that is none of the library's nothing
// is read. Slots belong to the session, so what stands in them can be read as long as there is one. A slot that has
// been given back rests: ORVLOG_RESTING_SLOTS others are used before it. Sessions share nothing of this.

#pragma once

#include "holv-core/gmm/gmm-allocator.h"
#include "orvlog/interface/gop-image.h"

#include <cstdint>

struct ORVLOG_ImageSlots;
struct ORVLOG_ImageWrapper;
struct ORVLOG_Session;

constexpr uint32_t ORVLOG_SLOTS_IN_BLOCK = 64;
constexpr uint32_t ORVLOG_RESTING_SLOTS = 32;

struct ORVLOG_ImageSlot
{
    GOP_OperandImagePointer record;  // what the renderer sees, and may write to
    GOP_OperandImage image;          // what `record` points at
    ORVLOG_ImageWrapper* wrapper;    // null once the image is gone
    ORVLOG_ImageSlots* slots;
    ORVLOG_ImageSlot* next_free;
    uint32_t use;  // raised whenever the slot is given back
};

struct ORVLOG_ImageSlotBlock
{
    ORVLOG_ImageSlotBlock* next;
    ORVLOG_ImageSlot slots[ORVLOG_SLOTS_IN_BLOCK];
};

// All slots of a session. All zero is a table that has not been used.
struct ORVLOG_ImageSlots
{
    ORVLOG_Session* session;  // null before the first image, and once the session has ended
    GMM_Allocator* allocator;
    ORVLOG_ImageSlot* first_free;  // the one that has rested longest
    ORVLOG_ImageSlot* last_free;
    uint32_t free_count;
    uint32_t fresh;               // how many slots of the first block have been used
    uint32_t live;                // how many are in use
    uint32_t warned;              // of a record whose image is gone
    void* owner;                  // the block that this table lies in, once it waits for the last image
    ORVLOG_ImageSlotBlock first;  // further ones are added when more images are held at once
};

// Takes a slot whose `record` has the slot's word as its context, and is zero apart from that; `wrapper` is the
// caller's to fill in. Null without memory.
ORVLOG_ImageSlot* orvlog_image_slot_take(ORVLOG_ImageSlots* slots);
// From here on the slot's word is stale.
void orvlog_image_slot_give_back(ORVLOG_ImageSlot* slot);

// The slot of a wrapped record itself, as the logger made it; not for a renderer's copy.
ORVLOG_ImageSlot* orvlog_image_slot_of(GOP_OperandImagePointer* record);

// The slot of a record or of a copy of it, by the record's context or else by `context`; either may be null. Null if
// neither names an image that is there.
ORVLOG_ImageSlot* orvlog_image_slot_find(const GOP_OperandImagePointer* record, const void* context);
// The table that a stale word of either comes from; null if neither is a word of the library's.
ORVLOG_ImageSlots* orvlog_image_slots_behind(const GOP_OperandImagePointer* record, const void* context);

// The first slot in use, and the next one; null at the end.
ORVLOG_ImageSlot* orvlog_image_slots_next(ORVLOG_ImageSlots* slots, const ORVLOG_ImageSlot* before);

// Says that the session has ended. When no slot is in use any more, now or later, the blocks that were added are given
// back, and `owner`, too, unless it is null.
void orvlog_image_slots_end(ORVLOG_ImageSlots* slots, GMM_Allocator* allocator, void* owner);
// To be called when slots have been given back and nothing is read of them any more.
void orvlog_image_slots_settle(ORVLOG_ImageSlots* slots);
