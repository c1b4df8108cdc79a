// How a session comes to be, with every option that a log has. The exports stand in orvlog.h; this serves programs
// that link the static form.

#ifndef ORVLOG_SESSION_ORVLOG_SESSION_OPTIONS_H
#define ORVLOG_SESSION_ORVLOG_SESSION_OPTIONS_H

#include "orvlog/interface/orvlog.h"

#include <stdint.h>

#ifdef __cplusplus
extern "C" {
#endif

// What a session logs by itself. Anything but base counts as transparent.
enum
{
    ORVLOG_MODE_TRANSPARENT = 0,  // what passes by
    ORVLOG_MODE_BASE = 1          // all images and glyphs, read as the call is logged
};

// All that a session can be created with. Zeros are the defaults.
typedef struct ORVLOG_SessionOptions
{
    ORV_Interface* interface_out;
    const ORV_Interface* interface_in;
    GMM_Allocator* allocator;
    const ORVLOG_IdentitySource* identity;
    GIO_Stream* log_stream;
    const char* file_prefix;
    const ORVLOG_TicketFunctions* ticket_functions;
    const ORVLOG_TicketSerialFunctions* ticket_serial_functions;
    const void* third_client_table;
    orvlog_comment_fn_type* comment_fn_out;
    void** comment_ctx_out;
    uint32_t compress;
    uint32_t mode;  // ORVLOG_MODE_*
    // 1: the log goes to a temporary file, uncoded, and is merged into log_stream at the shutdown together with the
    // logs of kept images; `compress` then codes the merged log.
    uint32_t via_temporary_log;
} ORVLOG_SessionOptions;

// What all entries share. 1, or 0 when a needed argument is null, memory is short, the identity gives no number or
// the temporary log cannot be opened.
uint32_t orvlog_create_session_with(const ORVLOG_SessionOptions* options);

#ifdef __cplusplus
}
#endif

#endif
