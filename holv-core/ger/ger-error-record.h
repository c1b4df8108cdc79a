/// \file
/// GER_Error: the one error of a unit of work. Who sets it first, or worst, decides what is seen later.
///
/// The record is the client's: it reads the fields, and clears `ge_Severity` itself. It has no lock.

#ifndef HOLV_CORE_GER_ERROR_RECORD_H
#define HOLV_CORE_GER_ERROR_RECORD_H

#include <stddef.h>
#include <stdint.h>

#ifdef __cplusplus
extern "C" {
#endif

/// Where errors are printed; opaque to clients.
typedef struct GER_Log GER_Log;

/// An error record, owned by the client.
typedef struct GER_Error
{
    void* ge_Client;           ///< the client's; nothing here reads it
    GER_Log* ge_Log;           ///< where changes are printed; null prints nothing
    int32_t ge_Channel;        ///< channel of those lines
    int32_t ge_Level;          ///< level of those lines
    uint64_t ge_TextCapacity;  ///< bytes of room for the message; 0 stores no message
    uint32_t ge_PrefixLength;  ///< bytes at the start of ge_Text that are the client's and stay
    int32_t ge_Severity;       ///< 0: no error
    int32_t ge_Module;         ///< number of the module that set the error
    int32_t ge_Code;           ///< the module's own number of the error
    char ge_Text[1];           ///< ge_PrefixLength bytes, then ge_TextCapacity bytes, then one for the terminator
} GER_Error;

#ifdef __cplusplus
}
#endif

#endif
