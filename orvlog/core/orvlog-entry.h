// How sessions come to be. The exports stand in orvlog.h; the creators here serve programs that link the static
// form.

#pragma once

#include "orvlog/interface/orvlog.h"
#include "orvlog/session/orvlog-session.h"

#include <cstdint>

// All that a session can be created with. Zeros are the defaults.
struct ORVLOG_SessionOptions
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
};

// What all entries share. 1, or 0 when a needed argument is null, memory is short, the identity gives no number or
// the temporary log cannot be opened.
uint32_t orvlog_create_session_with(const ORVLOG_SessionOptions* options);

uint32_t orvlog_create_session(ORV_Interface* interface_out, const ORV_Interface* interface_in,
                               GMM_Allocator* allocator, const ORVLOG_IdentitySource* identity, GIO_Stream* log_stream,
                               const char* file_prefix, const ORVLOG_TicketFunctions* ticket_functions,
                               const ORVLOG_TicketSerialFunctions* ticket_serial_functions,
                               const void* third_client_table, orvlog_comment_fn_type* comment_fn_out,
                               void** comment_ctx_out, uint32_t compress, uint32_t mode);

// The export without its reserved arguments.
uint32_t orvlog_initialise_legacy(ORV_Interface* interface_out, const ORV_Interface* interface_in,
                                  GMM_Allocator* allocator, const ORVLOG_IdentitySource* identity,
                                  GIO_Stream* log_stream, const char* file_prefix,
                                  const ORVLOG_TicketFunctions* ticket_functions,
                                  const ORVLOG_TicketSerialFunctions* ticket_serial_functions,
                                  orvlog_comment_fn_type* comment_fn_out, void** comment_ctx_out);

// Base mode with no renderer: the client's table becomes the second receiver.
uint32_t orvlog_initialise_capture(ORV_Interface* interface_out, const ORV_Interface* second_interface,
                                   GMM_Allocator* allocator, const ORVLOG_IdentitySource* identity, uint64_t reserved5,
                                   GIO_Stream* log_stream, const char* file_prefix, uint64_t reserved8,
                                   const ORVLOG_TicketFunctions* ticket_functions,
                                   const ORVLOG_TicketSerialFunctions* ticket_serial_functions,
                                   orvlog_comment_fn_type* comment_fn_out, void** comment_ctx_out,
                                   uint32_t image_dump_flag, uint32_t glyph_fixed_format, uint32_t glyph_get_format,
                                   uint32_t compress);

// Base mode with the renderer behind it; the arguments are those of the export.
uint32_t orvlog_initialise_forwarding(ORV_Interface* interface_out, const ORV_Interface* interface_in,
                                      GMM_Allocator* allocator, const ORVLOG_IdentitySource* identity,
                                      uint64_t reserved5, GIO_Stream* log_stream, const char* file_prefix,
                                      uint64_t reserved8, const ORVLOG_TicketFunctions* ticket_functions,
                                      const ORVLOG_TicketSerialFunctions* ticket_serial_functions,
                                      const void* third_client_table, orvlog_comment_fn_type* comment_fn_out,
                                      void** comment_ctx_out);
