#include "holv-core/gio/gio-result.h"

#include <cerrno>

namespace
{

constexpr int32_t kCodes[] = {GIO_OK,
                              GIO_ERR_NOT_FOUND,
                              GIO_ERR_BAD_HANDLE,
                              GIO_ERR_NO_MEMORY,
                              GIO_ERR_PERMISSION,
                              GIO_ERR_BAD_ADDRESS,
                              GIO_ERR_INVALID,
                              GIO_ERR_TOO_MANY_SYSTEM,
                              GIO_ERR_TOO_MANY_OPEN,
                              GIO_ERR_TOO_LARGE,
                              GIO_ERR_NO_SPACE,
                              GIO_ERR_RANGE,
                              GIO_ERR_BAD_NAME,
                              GIO_ERR_UNSUPPORTED,
                              GIO_ERR_LOCK_OR_OUTPUT,
                              GIO_ERR_PLATFORM,
                              GIO_ERR_OTHER};

}  // namespace

int32_t gio_map_errno(int32_t number)
{
    for (const int32_t code : kCodes)
        if (code == number)
            return code;
    return GIO_ERR_OTHER;
}

int32_t gio_host_error(void)
{
    return errno == ENAMETOOLONG ? static_cast<int32_t>(GIO_ERR_BAD_NAME) : gio_map_errno(errno);
}

int32_t gio_host_failure(void)
{
    if (errno == ENOSYS || errno == EOPNOTSUPP)
        return GIO_ERR_UNSUPPORTED;
    return errno == ELOOP ? static_cast<int32_t>(GIO_ERR_OTHER) : gio_host_error();
}

void gio_set_error(int32_t code)
{
    errno = code;
}

void gio_clear_error(void)
{
    errno = 0;
}
