// See stdio.h. The numbers are those of the system.

#ifndef MSVC_ABI_ERRNO_H
#define MSVC_ABI_ERRNO_H

#ifdef __cplusplus
extern "C" {
#endif

int* _errno(void);

#ifdef __cplusplus
}
#endif

#define errno (*_errno())
#define EPERM 1
#define EIO 5
#define EBADF 9
#define ENOMEM 12
#define EACCES 13
#define EFBIG 27
#define ENOSPC 28

#endif
