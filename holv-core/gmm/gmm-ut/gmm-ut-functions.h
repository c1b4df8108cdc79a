// The self-check of an allocator's table of operations.

#ifndef HOLV_CORE_GMM_UT_FUNCTIONS_H
#define HOLV_CORE_GMM_UT_FUNCTIONS_H

#include "holv-core/gmm/gmm-allocator.h"

#ifdef __cplusplus
extern "C" {
#endif

// 1 if all named operations are set. At the first that is null, one line goes to the standard error stream of
// gio-file.h, and the result is 0. gmm_SetInfo, gmm_UsedBytes and gmm_NoOp14 are not looked at. Null gives 0.
uint32_t gmm_ut_debug_integrity_check_default(const GMM_Allocator* allocator);

#ifdef __cplusplus
}
#endif

#endif
