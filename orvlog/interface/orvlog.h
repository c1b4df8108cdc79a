/// \file
/// ORVLOG: a logger between a caller of the ORV drawing interface and the renderer that implements it.
///
/// Give it the renderer's table, an allocator and an open stream; it gives a table of the same shape. Every
/// call on that table is written to the stream as XML and passed on unchanged. One session is driven by one
/// thread at a time; sessions do not know of one another.

#ifndef ORVLOG_INTERFACE_ORVLOG_H
#define ORVLOG_INTERFACE_ORVLOG_H

#include "holv-core/ger/ger-error-record.h"
#include "holv-core/gio/gio-stream.h"
#include "holv-core/gmm/gmm-allocator.h"
#include "orvlog/interface/orv-interface.h"

#include <stdarg.h>
#include <stddef.h>
#include <stdint.h>

#ifdef __cplusplus
extern "C" {
#endif

#if defined(ORVLOG_BUILD) && defined(_WIN32)
#define ORVLOG_EXPORT __declspec(dllexport)
#elif defined(ORVLOG_BUILD)
#define ORVLOG_EXPORT __attribute__((visibility("default")))
#else
#define ORVLOG_EXPORT
#endif

/// An object that knows the unique number of a session. Its first word points at a table of functions, of
/// which the 27th alone is called.
typedef struct ORVLOG_IdentityObject ORVLOG_IdentityObject;

/// Fills 16 bytes; non-zero for success.
typedef uint32_t (*orvlog_get_session_id_fn)(ORVLOG_IdentityObject* object, uint8_t* session_id);

/// The functions of an identity object.
typedef struct ORVLOG_IdentityTable
{
    void (*other[26])(void);                         ///< not called
    orvlog_get_session_id_fn orvlog_get_session_id;  ///< the 27th
} ORVLOG_IdentityTable;

/// An object that knows the number of a session.
struct ORVLOG_IdentityObject
{
    const ORVLOG_IdentityTable* functions;  ///< its table
};

/// A word that points at the identity object.
typedef struct ORVLOG_IdentitySource
{
    ORVLOG_IdentityObject* object;  ///< the object
} ORVLOG_IdentitySource;

/// The client's colour ticket operations, by their place in its table. Each takes the ticket first and gives
/// non-zero for success. Entries that are not named here are not called.
typedef struct ORVLOG_TicketFunctions
{
    void (*unused1[3])(void);           ///< not called
    uint32_t (*retain)(void* ticket);   ///< 4th
    uint32_t (*release)(void* ticket);  ///< 5th
    void (*unused2[6])(void);           ///< not called
    /// 12th: fills a block of 20 bytes, whose first word is the kind of the space and whose fourth is the
    /// number of render channels, and one of 16 bytes.
    uint32_t (*query)(void* ticket, void* ticket_space, void* ticket_render);
    void (*unused3[6])(void);  ///< not called
    /// 19th: gives a list of colour space definitions; the last two arguments are 0.
    uint32_t (*csd_list)(void* ticket, const GCM_Csd* const** list, uintptr_t zero1, uintptr_t zero2);
    void (*unused4[14])(void);                     ///< not called
    uint32_t (*key)(void* ticket, uint32_t* key);  ///< 34th: a number that names the ticket
} ORVLOG_TicketFunctions;

/// The client's ticket serialiser.
typedef struct ORVLOG_TicketSerialFunctions
{
    void (*unused1[4])(void);  ///< not called
    /// 5th: writes the ticket into the stream; the last two arguments are 1 and 0.
    uint32_t (*serialise)(void* ticket, GIO_Stream* stream, uintptr_t one, uintptr_t zero);
} ORVLOG_TicketSerialFunctions;

/// What ORVLOG_DLL_set_parameters reads.
typedef struct ORVLOG_Params
{
    const ORV_Interface* up_SecondInterface;  ///< a second receiver of document and face calls; may be null
    uint64_t reserved;                        ///< not read
    uint32_t up_DumpReqImgDataOnly;           ///< non-zero asks for an obsolete mode and gives "transparent"
} ORVLOG_Params;

/// Puts a comment of the client's into the log: an empty line, an opener, the text as it stands, a closer.
/// The text should end with a newline and is not escaped. Gives the length of the text. The first argument
/// is what initialise stored in `comment_ctx_out`.
typedef int32_t (*orvlog_comment_fn_type)(void* writer, const char* format, va_list args);

/// Opens a log.
/// \param interface_out  receives the wrapped table; must not be null. On 0 it is a copy of `interface_in`, if both
///     were given: the client draws on it all the same, without a log, and doesn't call the shutdown
/// \param interface_in   the renderer's table; null: calls are logged and not passed on
/// \param allocator      all memory of the session; must live until the shutdown and the last release of a kept image
/// \param identity       source of the session's 16-byte number; read during the call
/// \param reserved5      not read
/// \param log_stream     the open log; stays the client's, who closes it after the shutdown. Null, or writes that fail:
///     the session stands and passes calls on
/// \param file_prefix    first part of the name of image files beside the log, UTF-8, 999 bytes at most, copied; null:
///     image bytes go into the log
/// \param reserved8      not read
/// \param ticket_functions         the client's colour manager; may be null, and then no ticket is logged
/// \param ticket_serial_functions  its serialiser; may be null
/// \param reserved11     not read
/// \param comment_fn_out   receives the comment function if `comment_ctx_out` is given too; may be null
/// \param comment_ctx_out  receives the first argument of the comment function; may be null
/// \return non-zero for success; 0: nothing was opened, no memory is held, nothing was written
ORVLOG_EXPORT uint32_t ORVLOG_DLL_initialise(ORV_Interface* interface_out, const ORV_Interface* interface_in,
                                             GMM_Allocator* allocator, const ORVLOG_IdentitySource* identity,
                                             uint64_t reserved5, GIO_Stream* log_stream, const char* file_prefix,
                                             uint64_t reserved8, const ORVLOG_TicketFunctions* ticket_functions,
                                             const ORVLOG_TicketSerialFunctions* ticket_serial_functions,
                                             uint64_t reserved11, orvlog_comment_fn_type* comment_fn_out,
                                             void** comment_ctx_out);

/// Ends the log and frees the session. What is still open is given back without a word in the log, and nothing of the
/// client's but its allocator and the log's stream is called for it: its renderer, engines and colour manager may have
/// ended. References on tickets that it held stay held.
/// \param session  the context word of any entry of the wrapped table but the first; null gives 1
/// \return non-zero for success; 0 where a temporary log could not be merged
ORVLOG_EXPORT uint32_t ORVLOG_DLL_shutdown(void* session);

/// Chooses the logging mode ("base" unless the obsolete mode is asked for) and the second receiver. Call it before the
/// first drawing call.
/// \param session  as for the shutdown
/// \param params   read during the call; up_SecondInterface must live until the shutdown
/// \return 1 always
ORVLOG_EXPORT uint32_t ORVLOG_DLL_set_parameters(void* session, const ORVLOG_Params* params);

#ifdef __cplusplus
}
#endif

#endif
