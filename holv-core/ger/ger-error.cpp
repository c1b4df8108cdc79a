#include "holv-core/ger/ger-error.h"

#include "holv-core/ger/ger-log.h"

#include <cstdio>

namespace
{

constexpr uint64_t kLongestMessage = 0x7FFFFFFE;

char* text_of(GER_Error* error)
{
    return error->ge_Text;
}

// The steps that both setters share once the new error is to be stored.
void store(GER_Error* error, int32_t severity, int32_t module, int32_t code, const char* format, va_list args)
{
    error->ge_Severity = severity;
    error->ge_Module = module;
    error->ge_Code = code;
    char* message = text_of(error) + error->ge_PrefixLength;
    if (format == nullptr)
    {
        message[0] = '\0';
    }
    else if (error->ge_TextCapacity != 0)
    {
        // One byte more than the capacity holds the terminator.
        const uint64_t capacity = error->ge_TextCapacity < kLongestMessage ? error->ge_TextCapacity : kLongestMessage;
        if (std::vsnprintf(message, capacity + 1, format, args) < 0)
            message[0] = '\0';
        message[capacity] = '\0';
    }
    GER_LogPrint(error->ge_Log, error->ge_Level, error->ge_Channel, "GER %d:%d:%d '%s'", severity, module, code,
                 text_of(error));
}

}  // namespace

void GER_ErrorSet(GER_Error* error, int32_t severity, int32_t module, int32_t code, const char* format, ...)
{
    if (error == nullptr || severity == 0)
        return;
    if (error->ge_Severity != 0)
    {
        GER_LogPrint(error->ge_Log, error->ge_Level, error->ge_Channel, "GER (Error Already Set)%d:%d:%d", severity,
                     module, code);
        return;
    }
    va_list args;
    va_start(args, format);
    store(error, severity, module, code, format, args);
    va_end(args);
}

void GER_ErrorRaise(GER_Error* error, int32_t severity, int32_t module, int32_t code, const char* format, ...)
{
    if (error == nullptr || severity == 0)
        return;
    if (severity <= error->ge_Severity)
    {
        GER_LogPrint(error->ge_Log, error->ge_Level, error->ge_Channel, "GER (Error Ignored)%d:%d:%d '%s'",
                     error->ge_Severity, error->ge_Module, error->ge_Code, text_of(error));
        return;
    }
    va_list args;
    va_start(args, format);
    store(error, severity, module, code, format, args);
    va_end(args);
}
