// Result codes from error numbers.

#ifndef HOLV_CORE_GIO_RESULT_H
#define HOLV_CORE_GIO_RESULT_H

#include "holv-core/gio/gio-stream.h"

#ifdef __cplusplus
extern "C" {
#endif

// 0 and the codes of gio-stream.h stay as they are, all else becomes GIO_ERR_OTHER.
int32_t gio_map_errno(int32_t number);

// The code of the error that the calling thread's error variable holds now. It knows the host's numbers for what
// the codes name, and takes codes that the streams themselves have stored for what they are.
int32_t gio_host_error(void);

// The same right after a call of the host has failed, when the variable can hold none but the host's numbers: one
// that the host uses for another error than the code of the same number is no such code.
int32_t gio_host_failure(void);

// The calling thread's error variable.
void gio_set_error(int32_t code);
void gio_clear_error(void);

#ifdef __cplusplus
}
#endif

#endif
