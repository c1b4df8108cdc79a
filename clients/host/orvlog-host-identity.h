/// \file
/// An identity to bring along: sixteen bytes by chance, from the system.

#ifndef ORVLOG_HOST_IDENTITY_H
#define ORVLOG_HOST_IDENTITY_H

#include "orvlog/interface/orvlog.h"

#include <stddef.h>
#include <stdint.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>

#ifdef __cplusplus
extern "C" {
#endif

/// Read during ORVLOG_DLL_initialise alone; must stay where it is until then.
typedef struct ORVLOG_RandomIdentity
{
    ORVLOG_IdentitySource source;  ///< what a session takes
    ORVLOG_IdentityObject object;  ///< the object
    ORVLOG_IdentityTable table;    ///< its functions
} ORVLOG_RandomIdentity;

/// \cond inner

// Fills `bytes` with what the system has for keys. Gives 1; 0 if it gives nothing.
#ifdef _WIN32
#ifndef _CRT_RAND_S
int rand_s(unsigned int* number);
#endif

static inline uint32_t orvlog_random_bytes(uint8_t* bytes, uint32_t count)
{
    for (uint32_t i = 0; i < count; ++i)
    {
        unsigned int number = 0;
        if (rand_s(&number) != 0)
            return 0;
        bytes[i] = (uint8_t)number;
    }
    return 1;
}
#else
static inline uint32_t orvlog_random_bytes(uint8_t* bytes, uint32_t count)
{
    FILE* file = fopen("/dev/urandom", "rb");
    if (file == NULL)
        return 0;
    const size_t had = fread(bytes, 1, count, file);
    fclose(file);
    return had == count ? 1U : 0U;
}
#endif

static inline uint32_t orvlog_random_session_id(ORVLOG_IdentityObject* object, uint8_t* session_id)
{
    (void)object;
    return orvlog_random_bytes(session_id, 16);
}

/// \endcond

/// Fills the caller's record.
/// \param identity  the caller's; read and written
/// \return what a session takes, a part of the record
static inline const ORVLOG_IdentitySource* orvlog_random_identity(ORVLOG_RandomIdentity* identity)
{
    memset(identity, 0, sizeof *identity);
    identity->table.orvlog_get_session_id = orvlog_random_session_id;
    identity->object.functions = &identity->table;
    identity->source.object = &identity->object;
    return &identity->source;
}

#ifdef __cplusplus
}
#endif

#endif
