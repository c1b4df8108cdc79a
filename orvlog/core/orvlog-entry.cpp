// The three exports.

#include "holv-core/gio/gio-file.h"
#include "orvlog/colour/orvlog-colour-ticket.h"
#include "orvlog/core/orvlog-orv.h"
#include "orvlog/font/orvlog-font-wrapper.h"
#include "orvlog/image/orvlog-image-wrapper.h"
#include "orvlog/log/orvlog-coding.h"
#include "orvlog/log/orvlog-merge.h"
#include "orvlog/log/orvlog-root.h"
#include "orvlog/session/orvlog-creators.h"
#include "orvlog/session/orvlog-frames.h"

namespace
{

// The client is asked to finish what it opened. The memory of what it left is given back all the same, without a call
// to the renderer, an engine or the colour manager: the client may have ended them already.
void release_open_work(ORVLOG_Session* session)
{
    while (session->live_drawings != nullptr)
    {
        while (session->live_drawings->group_frames != nullptr)
            orvlog_pop_group(session->live_drawings);
        orvlog_close_drawing(session->live_drawings);
    }
    while (session->live_documents != nullptr)
        orvlog_close_document(session->live_documents);
    orvlog_detach_images(session);
    font_wrapper_release_all(session);
    orvlog_free_colour_frames(session);
    orvlog_session_clear_scratch(session);
}

uint32_t merge(ORVLOG_Session* session)
{
    if (session->merge_pending == 0)
        return 1;
    GIO_Stream* source = session->merge_source_stream;
    if (source != nullptr)
        source->ops->gio_Close(source->instance);
    return ORVLOG_MergeLogs(session->allocator, session->merge_file_name, session->merge_target_stream,
                            session->merge_compress, session->merge_mode) != 0
               ? 1
               : 0;
}

}  // namespace

uint32_t ORVLOG_DLL_initialise(ORV_Interface* interface_out, const ORV_Interface* interface_in,
                               GMM_Allocator* allocator, const ORVLOG_IdentitySource* identity, uint64_t,
                               GIO_Stream* log_stream, const char* file_prefix, uint64_t,
                               const ORVLOG_TicketFunctions* ticket_functions,
                               const ORVLOG_TicketSerialFunctions* ticket_serial_functions, uint64_t,
                               orvlog_comment_fn_type* comment_fn_out, void** comment_ctx_out)
{
    gio_setup_standard_streams();
    return orvlog_create_session(interface_out, interface_in, allocator, identity, log_stream, file_prefix,
                                 ticket_functions, ticket_serial_functions, nullptr, comment_fn_out, comment_ctx_out, 0,
                                 ORVLOG_MODE_TRANSPARENT);
}

uint32_t ORVLOG_DLL_set_parameters(void* session_word, const ORVLOG_Params* params)
{
    auto* session = static_cast<ORVLOG_Session*>(session_word);
    if (session == nullptr || params == nullptr)
        return 1;
    const bool obsolete = params->up_DumpReqImgDataOnly != 0;
    orvlog_choose_mode(session, obsolete ? ORVLOG_MODE_TRANSPARENT : ORVLOG_MODE_BASE);
    if (obsolete)
        orvlog_writer_warn(&session->writer,
                           "Version 1.1 ORVLOG_Params.up_DumpReqImgDataOnly converted to transparent mode logging");
    session->glyph_fixed_format = 0;
    session->image.image_dump_flag = 0;
    session->glyph_get_format = 1;
    if (session->second_interface != params->up_SecondInterface)
        session->second_drawing = nullptr;
    session->second_interface = params->up_SecondInterface;
    return 1;
}

uint32_t ORVLOG_DLL_shutdown(void* session_word)
{
    auto* session = static_cast<ORVLOG_Session*>(session_word);
    if (session == nullptr)
        return 1;
    orvlog_close_root(&session->writer);
    orvlog_resource_map_clear(session);
    ORVLOG_FreeTicketList(session);
    release_open_work(session);
    orvlog_writer_end_coding(&session->writer);
    const uint32_t result = merge(session);
    orvlog_free_session(session);
    return result;
}
