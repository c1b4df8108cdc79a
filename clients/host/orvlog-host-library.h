/// \file
/// The three exports as function types, for a program that finds them at run time: by GetProcAddress in orvlog.dll, by
/// dlsym in liborvlog.so.1.
///
///   const ORVLOG_Library library = ORVLOG_EXPORTS_BY(GetProcAddress, dll);
///   ORVLOG_Host* host = orvlog_open_in(&library, &options);
///
/// The library must stay loaded until the session has ended and the last kept image is released.

#ifndef ORVLOG_HOST_LIBRARY_H
#define ORVLOG_HOST_LIBRARY_H

#include "orvlog/interface/orvlog.h"

#include <stdint.h>

#ifdef __cplusplus
extern "C" {
#endif

/// The type of ORVLOG_DLL_initialise.
typedef uint32_t (*ORVLOG_DLL_initialise_fn)(ORV_Interface* interface_out, const ORV_Interface* interface_in,
                                             GMM_Allocator* allocator, const ORVLOG_IdentitySource* identity,
                                             uint64_t reserved5, GIO_Stream* log_stream, const char* file_prefix,
                                             uint64_t reserved8, const ORVLOG_TicketFunctions* ticket_functions,
                                             const ORVLOG_TicketSerialFunctions* ticket_serial_functions,
                                             uint64_t reserved11, orvlog_comment_fn_type* comment_fn_out,
                                             void** comment_ctx_out);

/// The type of ORVLOG_DLL_shutdown.
typedef uint32_t (*ORVLOG_DLL_shutdown_fn)(void* session);

/// The type of ORVLOG_DLL_set_parameters.
typedef uint32_t (*ORVLOG_DLL_set_parameters_fn)(void* session, const ORVLOG_Params* params);

/// The exports as they were found; all three must be there.
typedef struct ORVLOG_Library
{
    ORVLOG_DLL_initialise_fn initialise;          ///< ORVLOG_DLL_initialise
    ORVLOG_DLL_shutdown_fn shutdown;              ///< ORVLOG_DLL_shutdown
    ORVLOG_DLL_set_parameters_fn set_parameters;  ///< ORVLOG_DLL_set_parameters
} ORVLOG_Library;

/// An ORVLOG_Library's initialiser. `find` is GetProcAddress, with an HMODULE, or dlsym, with what dlopen gave; an
/// export that isn't there is null.
#define ORVLOG_EXPORTS_BY(find, module)                                                                                \
    {                                                                                                                  \
        (ORVLOG_DLL_initialise_fn)(uintptr_t) find((module), "ORVLOG_DLL_initialise"),                                 \
            (ORVLOG_DLL_shutdown_fn)(uintptr_t)find((module), "ORVLOG_DLL_shutdown"),                                  \
            (ORVLOG_DLL_set_parameters_fn)(uintptr_t)find((module), "ORVLOG_DLL_set_parameters")                       \
    }

#ifdef __cplusplus
}
#endif

#endif
