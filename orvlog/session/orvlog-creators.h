// The creators behind the exports, and those that only programs with the static form can call.

#pragma once

#include "orvlog/interface/orvlog-session-options.h"
#include "orvlog/session/orvlog-session.h"

#include <cstdint>

// Fills entries 1 to 6 of a document table. The calls stand above the session, which knows no more of them than this.
void orvlog_fill_interface(ORV_Interface* table, ORVLOG_Session* session);

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
