#include "holv-core/ger/ger-error.h"

void GER_ErrorSet(GER_Error* error, int32_t severity, int32_t module, int32_t code, const char*, ...)
{
    if (error == nullptr || severity == 0 || error->ge_Severity != 0)
        return;
    error->ge_Severity = severity;
    error->ge_Module = module;
    error->ge_Code = code;
}
