// A stream in memory that a client's serialiser writes a colour ticket into.
//
// It has four operations: read, write, seek and lending its block. A seek does not move the position: it cuts the
// stream there, and the size of the block that is lent rests on it.

#pragma once

#include "holv-core/gio/gio-stream.h"
#include "holv-core/gmm/gmm-allocator.h"

#include <cstdint>

struct ORVLOG_TicketStreamInstance
{
    GMM_Allocator* allocator;
    uint8_t* buffer;  // owned; null until the first write
    uint64_t capacity;
    uint64_t position;
};

struct ORVLOG_TicketStream
{
    GIO_Stream stream;  // to be handed out; points at the instance
    ORVLOG_TicketStreamInstance instance;
};

// Makes an empty stream in place; it must not be moved afterwards.
void orvlog_ticket_stream_open(ORVLOG_TicketStream* ticket_stream, GMM_Allocator* allocator);

// Gives the block back.
void orvlog_ticket_stream_close(ORVLOG_TicketStream* ticket_stream);
