// What belongs to an image that stands wrapped in the place of a client's. All of it lies in the image's private
// allocator, so that it goes away at once, however the calls ended; the records that renderers hold stand in slots of
// the session (orvlog-image-slots.h).

#pragma once

#include "orvlog/interface/gop-image.h"
#include "orvlog/session/orvlog-session.h"

#include <cstdint>

// Words of a render description; the fourth counts the render channels.
constexpr uint32_t ORVLOG_RENDER_WORDS = 5;
constexpr uint32_t ORVLOG_RENDER_CHANNELS_WORD = 3;

// One for each replaced image.
struct ORVLOG_ImageContext
{
    uint32_t* kept_flag;   // of the call that replaced the operand; null after a keep
    uint32_t* async_flag;  // the session's merge_mode; null after a keep
    const ORVLOG_ImageParams* params;
    uint32_t* counters;        // side file number, image id
    GMM_Allocator* allocator;  // the private one
    uint32_t object_type;      // for the prepare of a read-through
    uint32_t render_description[ORVLOG_RENDER_WORDS];
    uint8_t session_id[16];

    GMM_Allocator* session_allocator;       // for streams, which must be aligned
    ORVLOG_ImageSlots* slots;               // the session's
    GOP_OperandImagePointer* first_record;  // head of the chain of wrapped records
    GIO_Stream* async_stream;               // the log of a kept image, while it is open
    uint32_t number;                        // rises from image to image
    uint32_t in_call;                       // calls that have not ended: the one that replaced the operand, callbacks
    uint32_t granted;                       // the client has agreed to a keep
    uint32_t released;                      // the renderer has no more use for the image
    uint32_t endless;                       // a read-through was cut off
    uint32_t warned;                        // of a negative count
    ORVLOG_ImageParams own_params;          // those of the session may change while an image is kept
    uint32_t own_counters[2];
};

// One for each wrapped pointer record, whose context leads to it.
struct ORVLOG_ImageWrapper
{
    GOP_OperandImagePointer* next;  // the next wrapped record of the image, made by a prepare
    ORVLOG_Writer writer;           // as it stood when the wrapper was made; drops warnings
    ORVLOG_ImageContext* context;
    uint32_t id;
    GOP_OperandImagePointer* client_record;
    uint32_t files_open;  // 1 after the first read
    GIO_Stream* image_file;
    char* image_file_name;
    GIO_Stream* attr_file;
    char* attr_file_name;

    ORVLOG_ImageSlot* slot;  // where the wrapped record stands
    void* word;              // by which the slot is known: the record's context
    uint32_t asynchronous;   // the image can be kept
};

// The wrapper of a record that was wrapped here, or of a copy of it, while its image is there; found by the record's
// context, or else by the one that came as an argument. Null for all others: a client's own record, whose context is
// not looked into, and what a renderer holds on to beyond its end.
ORVLOG_ImageWrapper* orvlog_image_wrapper_of(const GOP_OperandImagePointer* record, const void* context = nullptr);

// A block for a record, aligned; null without memory.
void* orvlog_image_alloc(GMM_Allocator* allocator, uint64_t size);

void orvlog_close_stream(GIO_Stream** stream);
