#include "orvlog/session/orvlog-creators.h"

#include "holv-core/gmm/gmm-typed.h"
#include "orvlog/log/orvlog-merge.h"
#include "orvlog/log/orvlog-root.h"

#include <cstring>

namespace
{

constexpr size_t kPrefixLimit = sizeof(ORVLOG_ImageParams::file_prefix) - 1;

bool read_identity(ORVLOG_Session* session, const ORVLOG_IdentitySource* identity)
{
    if (identity == nullptr || identity->object == nullptr)
        return false;
    ORVLOG_IdentityObject* object = identity->object;
    session->identity_object = object;
    session->identity_pointer = identity;
    return object->functions != nullptr && object->functions->orvlog_get_session_id != nullptr &&
           object->functions->orvlog_get_session_id(object, session->session_id) != 0;
}

void store_prefix(ORVLOG_ImageParams* image, const char* file_prefix)
{
    if (file_prefix == nullptr)
        return;
    std::strncpy(image->file_prefix, file_prefix, kPrefixLimit);
    image->file_prefix[kPrefixLimit] = '\0';
    image->has_file_prefix = 1;
}

// The three operations that a session calls on the client's allocator.
bool can_allocate(const GMM_Allocator* allocator)
{
    return allocator != nullptr && allocator->gmm_Alloc != nullptr && allocator->gmm_Free != nullptr &&
           allocator->gmm_Realloc != nullptr;
}

// Puts a temporary log in the place of the client's stream until the shutdown.
bool open_temporary_log(ORVLOG_Session* session, GIO_Stream* log_stream, uint32_t compress)
{
    if (ORVLOG_OpenTempLog(session->allocator, session->session_id, &session->merge_source_stream,
                           session->merge_file_name) == 0)
        return false;
    session->merge_target_stream = log_stream;
    session->merge_compress = compress;
    session->merge_pending = 1;
    return true;
}

// The text of a temporary log is plain: it is the merge that codes it.
bool set_up_writer(ORVLOG_Session* session, const ORVLOG_SessionOptions* options)
{
    GIO_Stream* stream = options->log_stream;
    const bool detour = options->via_temporary_log != 0 && stream != nullptr;
    if (detour && !open_temporary_log(session, stream, options->compress))
        return false;
    if (detour)
        orvlog_writer_init(&session->writer, options->allocator, session->merge_source_stream, 0, 0);
    else
        orvlog_writer_init(&session->writer, options->allocator, stream, 0, options->compress);
    return true;
}

bool set_up(ORVLOG_Session* session, const ORVLOG_SessionOptions* options)
{
    session->allocator = options->allocator;
    session->side_allocator = options->allocator;
    if (!read_identity(session, options->identity))
        return false;
    if (!set_up_writer(session, options))
        return false;
    store_prefix(&session->image, options->file_prefix);
    session->ticket_functions = options->ticket_functions;
    session->ticket_serial_functions = options->ticket_serial_functions;
    session->third_client_table = options->third_client_table;
    orvlog_choose_mode(session, options->mode);
    session->image.image_dump_flag = options->image_dump_flag;
    session->glyph_fixed_format = options->glyph_fixed_format;
    session->glyph_get_format = options->glyph_get_format;
    session->second_interface = options->second_interface;
    session->name_unknown_families = options->name_unknown_families;
    return true;
}

int32_t comment(void* writer, const char* format, va_list args)
{
    if (writer == nullptr || format == nullptr)
        return -1;
    return orvlog_writer_vcomment(static_cast<ORVLOG_Writer*>(writer), format, args);
}

ORVLOG_Session* session_of(const ORV_Interface* table)
{
    return static_cast<ORVLOG_Session*>(table->document_start.context);
}

}  // namespace

uint32_t orvlog_create_session_with(const ORVLOG_SessionOptions* options)
{
    if (options == nullptr)
        return 0;
    GMM_Allocator* allocator = options->allocator;
    if (options->interface_out == nullptr || options->interface_out == options->interface_in)
        return 0;
    if (options->interface_in != nullptr)
        *options->interface_out = *options->interface_in;
    if (!can_allocate(allocator))
        return 0;
    auto* session = gmm_alloc_record<ORVLOG_Session>(allocator);
    if (session == nullptr)
        return 0;
    std::memset(session, 0, sizeof *session);
    if (!set_up(session, options))
    {
        allocator->gmm_Free(allocator, session);
        return 0;
    }
    if (options->comment_fn_out != nullptr && options->comment_ctx_out != nullptr)
    {
        *options->comment_fn_out = comment;
        *options->comment_ctx_out = &session->writer;
    }
    options->interface_out->base = {options->interface_in, 0};
    orvlog_fill_interface(options->interface_out, session);
    orvlog_open_root(&session->writer, orvlog_session_is_base(session));
    if (options->base_content != 0)
        orvlog_choose_mode(session, ORVLOG_MODE_BASE);
    return 1;
}

uint32_t orvlog_create_session(ORV_Interface* interface_out, const ORV_Interface* interface_in,
                               GMM_Allocator* allocator, const ORVLOG_IdentitySource* identity, GIO_Stream* log_stream,
                               const char* file_prefix, const ORVLOG_TicketFunctions* ticket_functions,
                               const ORVLOG_TicketSerialFunctions* ticket_serial_functions,
                               const void* third_client_table, orvlog_comment_fn_type* comment_fn_out,
                               void** comment_ctx_out, uint32_t compress, uint32_t mode)
{
    const ORVLOG_SessionOptions options = {
        .interface_out = interface_out,
        .interface_in = interface_in,
        .allocator = allocator,
        .identity = identity,
        .log_stream = log_stream,
        .file_prefix = file_prefix,
        .ticket_functions = ticket_functions,
        .ticket_serial_functions = ticket_serial_functions,
        .third_client_table = third_client_table,
        .comment_fn_out = comment_fn_out,
        .comment_ctx_out = comment_ctx_out,
        .compress = compress,
        .mode = mode,
        .via_temporary_log = 0,
        .base_content = 0,
        .image_dump_flag = 0,
        .glyph_fixed_format = 0,
        .glyph_get_format = 0,
        .second_interface = nullptr,
        .name_unknown_families = 0,
    };
    return orvlog_create_session_with(&options);
}

uint32_t orvlog_initialise_legacy(ORV_Interface* interface_out, const ORV_Interface* interface_in,
                                  GMM_Allocator* allocator, const ORVLOG_IdentitySource* identity,
                                  GIO_Stream* log_stream, const char* file_prefix,
                                  const ORVLOG_TicketFunctions* ticket_functions,
                                  const ORVLOG_TicketSerialFunctions* ticket_serial_functions,
                                  orvlog_comment_fn_type* comment_fn_out, void** comment_ctx_out)
{
    return orvlog_create_session(interface_out, interface_in, allocator, identity, log_stream, file_prefix,
                                 ticket_functions, ticket_serial_functions, nullptr, comment_fn_out, comment_ctx_out, 0,
                                 ORVLOG_MODE_TRANSPARENT);
}

uint32_t orvlog_initialise_capture(ORV_Interface* interface_out, const ORV_Interface* second_interface,
                                   GMM_Allocator* allocator, const ORVLOG_IdentitySource* identity, uint64_t,
                                   GIO_Stream* log_stream, const char* file_prefix, uint64_t,
                                   const ORVLOG_TicketFunctions* ticket_functions,
                                   const ORVLOG_TicketSerialFunctions* ticket_serial_functions,
                                   orvlog_comment_fn_type* comment_fn_out, void** comment_ctx_out,
                                   uint32_t image_dump_flag, uint32_t glyph_fixed_format, uint32_t glyph_get_format,
                                   uint32_t compress)
{
    if (orvlog_create_session(interface_out, nullptr, allocator, identity, log_stream, file_prefix, ticket_functions,
                              ticket_serial_functions, nullptr, comment_fn_out, comment_ctx_out, compress,
                              ORVLOG_MODE_BASE) == 0)
        return 0;
    ORVLOG_Session* session = session_of(interface_out);
    session->second_interface = second_interface;
    session->image.image_dump_flag = image_dump_flag;
    session->glyph_fixed_format = glyph_fixed_format;
    session->glyph_get_format = glyph_get_format;
    return 1;
}

uint32_t orvlog_initialise_forwarding(ORV_Interface* interface_out, const ORV_Interface* interface_in,
                                      GMM_Allocator* allocator, const ORVLOG_IdentitySource* identity, uint64_t,
                                      GIO_Stream* log_stream, const char* file_prefix, uint64_t,
                                      const ORVLOG_TicketFunctions* ticket_functions,
                                      const ORVLOG_TicketSerialFunctions* ticket_serial_functions,
                                      const void* third_client_table, orvlog_comment_fn_type* comment_fn_out,
                                      void** comment_ctx_out)
{
    if (orvlog_create_session(interface_out, interface_in, allocator, identity, log_stream, file_prefix,
                              ticket_functions, ticket_serial_functions, third_client_table, comment_fn_out,
                              comment_ctx_out, 0, ORVLOG_MODE_BASE) == 0)
        return 0;
    session_of(interface_out)->glyph_get_format = 1;
    return 1;
}
