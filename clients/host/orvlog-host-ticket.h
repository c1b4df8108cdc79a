/// \file
/// A colour manager of the smallest kind, to bring along: its tickets are an ICC profile each, or a device space.
///
/// For a client that has profiles and no colour manager with tickets of its own. One that has gives its own tables,
/// which docs/for-drivers.md tells how to fill.

#ifndef ORVLOG_HOST_TICKET_H
#define ORVLOG_HOST_TICKET_H

#include "orvlog/interface/orvlog.h"

#include <stddef.h>
#include <stdint.h>
#include <string.h>

#ifdef __cplusplus
extern "C" {
#endif

/// Made by the client with zeros in all other fields. Its address is the ticket that goes with a page, a resource or a
/// group, and it must stay where it is until the session has ended.
typedef struct ORVLOG_ProfileTicket
{
    uint32_t key;            ///< names the ticket: each one of a session has another number
    uint32_t channels;       ///< 1: gray, 3: RGB, 4: CMYK
    uint32_t intent;         ///< GCM_RI_*
    const uint8_t* profile;  ///< the ICC profile; null: the device space without one
    uint32_t profile_bytes;  ///< bytes of the profile

    /// The manager's own.
    uint32_t references;     ///< taken by the session and not given back
    GCM_Csd definition;      ///< what the session is told of the space
    const GCM_Csd* list[2];  ///< the definition, and a null behind it
} ORVLOG_ProfileTicket;

/// \cond inner

static inline uint32_t orvlog_profile_ticket_type(const ORVLOG_ProfileTicket* ticket)
{
    return ticket->profile != NULL ? (uint32_t)GCM_CSDTYPE_PROFILE_BUFFER : (uint32_t)GCM_CSDTYPE_NONCOLORIMETRIC;
}

static inline uint32_t orvlog_profile_ticket_retain(void* ticket)
{
    ++((ORVLOG_ProfileTicket*)ticket)->references;
    return 1;
}

static inline uint32_t orvlog_profile_ticket_release(void* ticket)
{
    --((ORVLOG_ProfileTicket*)ticket)->references;
    return 1;
}

static inline uint32_t orvlog_profile_ticket_query(void* ticket, void* space, void* render)
{
    const uint32_t channels = ((ORVLOG_ProfileTicket*)ticket)->channels;
    const uint32_t words[5] = {channels == 4 ? (uint32_t)GCM_CST_SUBTRACTIVE : (uint32_t)GCM_CST_ADDITIVE, 0, 0,
                               channels, 0};
    memcpy(space, words, sizeof words);
    memset(render, 0, 16);
    return 1;
}

static inline uint32_t orvlog_profile_ticket_list(void* ticket, const GCM_Csd* const** list, uintptr_t zero1,
                                                  uintptr_t zero2)
{
    ORVLOG_ProfileTicket* t = (ORVLOG_ProfileTicket*)ticket;
    (void)zero1, (void)zero2;
    t->definition.csd_Type = orvlog_profile_ticket_type(t);
    t->definition.csd_NumBaseChans = (uint8_t)t->channels;
    t->definition.csd_DefaultRenderIntent = t->intent;
    t->list[0] = &t->definition;
    *list = t->list;
    return 1;
}

static inline uint32_t orvlog_profile_ticket_key(void* ticket, uint32_t* key)
{
    *key = ((ORVLOG_ProfileTicket*)ticket)->key;
    return 1;
}

// Puts a number into `bytes`, the lowest byte first; gives the place behind it.
static inline uint8_t* orvlog_put_u32(uint8_t* bytes, uint32_t number)
{
    for (uint32_t shift = 0; shift < 32; shift += 8)
        *bytes++ = (uint8_t)(number >> shift);
    return bytes;
}

static inline uint32_t orvlog_profile_ticket_write(GIO_Stream* stream, const uint8_t* bytes, uint64_t count)
{
    return count == 0 || stream->ops->gio_Write(bytes, 1, count, stream->instance) == count ? 1U : 0U;
}

// Fixed data of zeros; one definition, the render space; the section that names it.
static inline uint32_t orvlog_profile_ticket_serialise(void* ticket, GIO_Stream* stream, uintptr_t one, uintptr_t zero)
{
    const ORVLOG_ProfileTicket* t = (const ORVLOG_ProfileTicket*)ticket;
    const uint32_t device = t->channels == 1   ? (uint32_t)GNC_FORMAT_GRAY
                            : t->channels == 4 ? (uint32_t)GNC_FORMAT_CMYK
                                               : (uint32_t)GNC_FORMAT_RGB;
    uint8_t head[64] = {0};
    uint8_t tail[64] = {0};
    uint8_t* h = orvlog_put_u32(head + 16, 0);  // the marker in front of the definition
    uint8_t* e = orvlog_put_u32(tail, 0);       // the end of its extensions
    (void)one, (void)zero;
    h = orvlog_put_u32(h, orvlog_profile_ticket_type(t));
    h = orvlog_put_u32(h, t->channels);  // and no names, no second profile, no alternate
    h = orvlog_put_u32(h, t->intent);
    h = orvlog_put_u32(h, t->profile != NULL ? t->profile_bytes : device);
    e = orvlog_put_u32(e, 0xFFFFFFFFU);  // the end of the definitions
    e = orvlog_put_u32(e, 1);            // the section of the render space, 26 bytes
    e = orvlog_put_u32(e, 26);
    for (int object = 0; object < 4; ++object)  // the intents of text, lines, graphics and images
        e = orvlog_put_u32(e, t->intent);
    e = orvlog_put_u32(e, 8);  // bits of a channel
    e += 2;                    // no alpha, not premultiplied
    e = orvlog_put_u32(e, 0);  // the place of the definition
    e = orvlog_put_u32(e, 0);  // the end
    return orvlog_profile_ticket_write(stream, head, (uint64_t)(h - head)) &&
                   orvlog_profile_ticket_write(stream, t->profile, t->profile != NULL ? t->profile_bytes : 0) &&
                   orvlog_profile_ticket_write(stream, tail, (uint64_t)(e - tail))
               ? 1U
               : 0U;
}

/// \endcond

/// The operations of this colour manager.
/// \return a table that is there as long as the program
static inline const ORVLOG_TicketFunctions* orvlog_profile_ticket_functions(void)
{
    static const ORVLOG_TicketFunctions functions = {
        {NULL, NULL, NULL},
        orvlog_profile_ticket_retain,
        orvlog_profile_ticket_release,
        {NULL, NULL, NULL, NULL, NULL, NULL},
        orvlog_profile_ticket_query,
        {NULL, NULL, NULL, NULL, NULL, NULL},
        orvlog_profile_ticket_list,
        {NULL, NULL, NULL, NULL, NULL, NULL, NULL, NULL, NULL, NULL, NULL, NULL, NULL, NULL},
        orvlog_profile_ticket_key};
    return &functions;
}

/// The serialiser of this colour manager.
/// \return a table that is there as long as the program
static inline const ORVLOG_TicketSerialFunctions* orvlog_profile_ticket_serial_functions(void)
{
    static const ORVLOG_TicketSerialFunctions functions = {{NULL, NULL, NULL, NULL}, orvlog_profile_ticket_serialise};
    return &functions;
}

#ifdef __cplusplus
}
#endif

#endif
