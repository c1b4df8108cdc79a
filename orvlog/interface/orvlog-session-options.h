/// \file
/// All that a session can be opened with, by name: what ORVLOG_DLL_initialise takes, and what it has no argument for.
///
/// For programs that link the static library orvlog-static; the shared library exports what orvlog.h declares and no
/// more. A session that is opened here is driven and ended as any other: by its table, ORVLOG_DLL_set_parameters and
/// ORVLOG_DLL_shutdown, which are in the static library too. A program links one of the two libraries, not both.

#ifndef ORVLOG_INTERFACE_ORVLOG_SESSION_OPTIONS_H
#define ORVLOG_INTERFACE_ORVLOG_SESSION_OPTIONS_H

#include "orvlog/interface/orvlog.h"

#include <stdint.h>

#ifdef __cplusplus
extern "C" {
#endif

/// What a session logs of its own accord. Any other value is taken as transparent.
enum
{
    ORVLOG_MODE_TRANSPARENT = 0,  ///< what passes by
    ORVLOG_MODE_BASE = 1          ///< each image and glyph besides, read by the logger when the call is logged
};

/// Fill it with zeros first: zero is the default of each field, and fields that a later version adds are then off.
/// The record is read while the session is opened and isn't kept.
typedef struct ORVLOG_SessionOptions
{
    /// As the arguments of ORVLOG_DLL_initialise that have these names, and owned as they are. The first, the allocator
    /// and the identity must be there.
    ORV_Interface* interface_out;
    const ORV_Interface* interface_in;                            ///< may be null
    GMM_Allocator* allocator;                                     ///< must not be null
    const ORVLOG_IdentitySource* identity;                        ///< must not be null
    GIO_Stream* log_stream;                                       ///< may be null: nothing is written
    const char* file_prefix;                                      ///< may be null
    const ORVLOG_TicketFunctions* ticket_functions;               ///< may be null
    const ORVLOG_TicketSerialFunctions* ticket_serial_functions;  ///< may be null
    const void* third_client_table;                               ///< reserved: kept, and read by nothing
    orvlog_comment_fn_type* comment_fn_out;                       ///< may be null
    void** comment_ctx_out;                                       ///< may be null

    /// 1: the log is coded while it is written. Any other value: it is text. A renderer that keeps images would take
    /// bits out of a log that is coded so; set via_temporary_log with it.
    uint32_t compress;

    /// ORVLOG_MODE_*; the root element says which.
    uint32_t mode;

    /// Non-zero: the log is written to a temporary file in the present folder first, as text. ORVLOG_DLL_shutdown
    /// merges it into log_stream, together with the logs of kept images, codes the whole if `compress` is 1, and
    /// removes the files; its result is 0 if that fails. Without effect where log_stream is null.
    uint32_t via_temporary_log;

    /// Non-zero: base mode, though the root element says what `mode` is. So is the log of a client that chooses base
    /// mode by ORVLOG_DLL_set_parameters, whose call comes behind the root.
    uint32_t base_content;

    /// Non-zero: when the logger reads an image by itself and the image has attribute data, it asks for that too.
    uint32_t image_dump_flag;

    /// Non-zero: the logger, in base mode, asks for each glyph by GFI_GlyphGetFixedFormatFn first, as GFI_GDT_FBE,
    /// GFI_GDT_BITMAP and GFI_GDT_PATH, and in another way only if none of these gave it.
    uint32_t glyph_fixed_format;

    /// The form, GFI_GDT_*, in which the logger asks for glyphs in base mode. It goes to the font engine as it stands.
    /// ORVLOG_DLL_set_parameters makes it GFI_GDT_BITMAP, makes image_dump_flag and glyph_fixed_format 0, and chooses
    /// mode and second receiver anew.
    uint32_t glyph_get_format;

    /// A second receiver of document and face calls, as up_SecondInterface; it must live until the shutdown. May be
    /// null.
    const ORV_Interface* second_interface;

    /// Non-zero: a colour ticket whose family can't be told by what its colour manager answers stands in the element
    /// UnknownRenderColorSpace, and the log warns of it. 0: in one that is no XML, which readers of logs know.
    uint32_t name_unknown_families;
} ORVLOG_SessionOptions;

/// Opens a log.
/// \param options  read during the call, and not kept
/// \return 1; or 0, with no session, no memory held and nothing logged, for the reasons that ORVLOG_DLL_initialise
///     has, where `options` is null, and where the temporary log can't be opened. As there, interface_out is a copy of
///     interface_in then, if both were given and aren't the same table
uint32_t orvlog_create_session_with(const ORVLOG_SessionOptions* options);

#ifdef __cplusplus
}
#endif

#endif
