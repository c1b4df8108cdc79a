/// \file
/// All that a program has to bring along for a session, ready made, and a session opened by named options: in C, with
/// nothing to link but the library.
///
/// \code
///   ORV_Interface table;
///   ORVLOG_OpenOptions options = {0};
///   options.interface_out = &table;
///   options.interface_in = renderer;
///   options.log_path = "job.xml";
///   ORVLOG_Host* host = orvlog_open(&options);
///   draw_everything(&table);
///   if (orvlog_close(host) != 0)
///       ...                           // the log isn't whole; the job is
/// \endcode
///
/// The table is good to draw with whether the log could be begun or not: it is the renderer's own table if not.

#ifndef ORVLOG_HOST_H
#define ORVLOG_HOST_H

#include "clients/host/orvlog-host-identity.h"
#include "clients/host/orvlog-host-library.h"
#include "clients/host/orvlog-host-memory.h"
#include "clients/host/orvlog-host-stream.h"
#include "clients/host/orvlog-host-ticket.h"
#include "clients/host/orvlog-record-sizes.h"
#include "orvlog/interface/orvlog.h"

#ifdef __cplusplus
extern "C" {
#endif

/// Why no log was begun.
enum
{
    ORVLOG_OPEN_DONE = 0,      ///< it was
    ORVLOG_OPEN_NO_TABLE,      ///< interface_out is null, or the same record as interface_in
    ORVLOG_OPEN_NO_LIBRARY,    ///< an export is missing
    ORVLOG_OPEN_NO_MEMORY,     ///< malloc refused the host's own record
    ORVLOG_OPEN_NO_LOG,        ///< the log can't be opened; errno says why
    ORVLOG_OPEN_NO_LOG_NAMED,  ///< neither log_path nor log_stream is there
    ORVLOG_OPEN_REFUSED        ///< by ORVLOG_DLL_initialise: the allocator or the identity gave nothing
};

/// Fill it with zeros first: zero is the default of each field. Read while the log is opened, and not kept.
typedef struct ORVLOG_OpenOptions
{
    ORV_Interface* interface_out;       ///< the client's, receives the table to draw on; must be there
    const ORV_Interface* interface_in;  ///< the renderer; null: calls are logged and not passed on

    /// The log: a path, whose file is begun anew, or a stream of the client's, which stays the client's to close. The
    /// stream counts if both are there.
    const char* log_path;
    GIO_Stream* log_stream;  ///< see log_path
    /// How the path is opened, orvlog_open_mapped_stream of orvlog-stream.h for example. Null: by fopen.
    GIO_Stream* (*open_stream)(const char* path);

    const char* file_prefix;                ///< not null: image bytes go to files of that prefix, at most 999 bytes
    uint32_t base_mode;                     ///< non-zero: the logger reads each image and glyph by itself
    const ORV_Interface* second_interface;  ///< a second receiver of documents and faces. Without base mode the log has
                                            ///< a warning of an obsolete mode then
    const ORVLOG_TicketFunctions* ticket_functions;               ///< both or none
    const ORVLOG_TicketSerialFunctions* ticket_serial_functions;  ///< with ticket_functions
    orvlog_comment_fn_type* comment_fn_out;                       ///< both or none
    void** comment_ctx_out;                                       ///< with comment_fn_out

    GMM_Allocator* allocator;               ///< null: malloc, for any number of threads
    const ORVLOG_IdentitySource* identity;  ///< null: a number by chance
    uint32_t* why_out;                      ///< may be null; receives ORVLOG_OPEN_*
} ORVLOG_OpenOptions;

/// A log that was begun.
typedef struct ORVLOG_Host
{
    ORVLOG_Library library;  ///< the exports
    void* session;           ///< what the shutdown takes; null without a log
    GIO_Stream* log;         ///< the log's stream
    uint32_t closes_log;     ///< boolean
    ORVLOG_FileStream file;  ///< the stream, where it is over a FILE of its own
} ORVLOG_Host;

/// \cond inner

// Opens what the options name; gives ORVLOG_OPEN_*.
static inline uint32_t orvlog_host_open_log(ORVLOG_Host* host, const ORVLOG_OpenOptions* options)
{
    host->log = options->log_stream;
    if (host->log != NULL)
        return ORVLOG_OPEN_DONE;
    if (options->log_path == NULL)
        return ORVLOG_OPEN_NO_LOG_NAMED;
    host->closes_log = 1;
    host->log = options->open_stream != NULL ? options->open_stream(options->log_path)
                                             : orvlog_stream_over_file(&host->file, fopen(options->log_path, "wb"));
    return host->log != NULL ? ORVLOG_OPEN_DONE : ORVLOG_OPEN_NO_LOG;
}

static inline uint32_t orvlog_host_begin(ORVLOG_Host* host, const ORVLOG_OpenOptions* options)
{
    ORVLOG_RandomIdentity chance;
    const ORVLOG_IdentitySource* identity =
        options->identity != NULL ? options->identity : orvlog_random_identity(&chance);
    GMM_Allocator* allocator = options->allocator != NULL ? options->allocator : orvlog_malloc_allocator();
    if (host->library.initialise(options->interface_out, options->interface_in, allocator, identity, 0, host->log,
                                 options->file_prefix, 0, options->ticket_functions, options->ticket_serial_functions,
                                 0, options->comment_fn_out, options->comment_ctx_out) == 0)
        return ORVLOG_OPEN_REFUSED;
    host->session = options->interface_out->document_start.context;
    if (options->base_mode != 0 || options->second_interface != NULL)
    {
        ORVLOG_Params params;
        memset(&params, 0, sizeof params);
        params.up_SecondInterface = options->second_interface;
        params.up_DumpReqImgDataOnly = options->base_mode == 0 ? 1U : 0U;
        host->library.set_parameters(host->session, &params);
    }
    return ORVLOG_OPEN_DONE;
}

static inline int32_t orvlog_host_close_log(ORVLOG_Host* host)
{
    const GIO_StreamOps* ops = host->log->ops;
    if (host->closes_log != 0)
        return ops->gio_Close(host->log->instance);
    if (ops != NULL && ops->gio_Error != NULL && ops->gio_Error(host->log->instance) != 0)
        return GIO_ERR_OTHER;
    return GIO_OK;
}

// The opening itself, with the exports that the program has found. What is made is in `host`, of zeros before.
static inline uint32_t orvlog_host_try(ORVLOG_Host* host, const ORVLOG_Library* library,
                                       const ORVLOG_OpenOptions* options)
{
    uint32_t why = ORVLOG_OPEN_NO_LIBRARY;
    if (library == NULL || library->initialise == NULL || library->shutdown == NULL || library->set_parameters == NULL)
        return why;
    host->library = *library;
    why = orvlog_host_open_log(host, options);
    if (why == ORVLOG_OPEN_DONE)
        why = orvlog_host_begin(host, options);
    if (why == ORVLOG_OPEN_REFUSED)
        orvlog_host_close_log(host);
    return why;
}

/// \endcond

/// As orvlog_open, for a program that finds the library at run time.
/// \param library  the exports, read during the call and kept by the host; null or one that is null:
///     ORVLOG_OPEN_NO_LIBRARY
/// \param options  as for orvlog_open
/// \return as of orvlog_open
static inline ORVLOG_Host* orvlog_open_in(const ORVLOG_Library* library, const ORVLOG_OpenOptions* options)
{
    uint32_t why = ORVLOG_OPEN_NO_TABLE;
    ORVLOG_Host* host = NULL;
    if (options == NULL)
        return NULL;
    if (options->interface_out != NULL && options->interface_out != options->interface_in)
    {
        if (options->interface_in != NULL)
            *options->interface_out = *options->interface_in;
        else
            memset(options->interface_out, 0, sizeof *options->interface_out);
        host = (ORVLOG_Host*)calloc(1, sizeof *host);
        why = ORVLOG_OPEN_NO_MEMORY;
        if (host != NULL)
            why = orvlog_host_try(host, library, options);
    }
    if (options->why_out != NULL)
        *options->why_out = why;
    if (why == ORVLOG_OPEN_DONE)
        return host;
    const int error = errno;
    free(host);
    errno = error;
    return NULL;
}

/// Begins a log.
/// \param options  read during the call, and not kept; what they point at lives as for ORVLOG_DLL_initialise
/// \return for orvlog_close. Null if the log can't be begun, and `why_out` says why; interface_out is a copy of
///     interface_in then, or all zeros where that is null. Null options give null too
static inline ORVLOG_Host* orvlog_open(const ORVLOG_OpenOptions* options)
{
    ORVLOG_Library library;
    library.initialise = ORVLOG_DLL_initialise;
    library.shutdown = ORVLOG_DLL_shutdown;
    library.set_parameters = ORVLOG_DLL_set_parameters;
    return orvlog_open_in(&library, options);
}

/// Ends the log, after the job's last call, and closes the stream if orvlog_open opened it.
/// \param host  what orvlog_open gave; not to be used any more
/// \return 0 if all of the log was written, else a result code: the first failure, GIO_ERR_OTHER for that of a stream
///     of the client's, or GIO_ERR_BAD_HANDLE for a null host, so for a log that wasn't begun
static inline int32_t orvlog_close(ORVLOG_Host* host)
{
    if (host == NULL)
        return GIO_ERR_BAD_HANDLE;
    host->library.shutdown(host->session);
    const int32_t code = orvlog_host_close_log(host);
    free(host);
    return code;
}

#ifdef __cplusplus
}
#endif

#endif
