#include "holv-core/gio/gio-result.h"

#include <gtest/gtest.h>

#include <cerrno>
#include <set>

namespace
{

TEST(Result, CodesStayAndAllElseIsOther)
{
    const std::set<int32_t> codes = {0, 2, 9, 12, 13, 14, 22, 23, 24, 27, 28, 34, 38, 40, 1000, 1001, 1002};
    for (int32_t number = -10; number < 1100; ++number)
        EXPECT_EQ(gio_map_errno(number), codes.count(number) != 0 ? number : 1002) << number;
    EXPECT_EQ(gio_map_errno(5), 1002);
}

TEST(Result, NamesHaveTheirNumbers)
{
    EXPECT_EQ(GIO_ERR_NOT_FOUND, 2);
    EXPECT_EQ(GIO_ERR_BAD_HANDLE, 9);
    EXPECT_EQ(GIO_ERR_NO_MEMORY, 12);
    EXPECT_EQ(GIO_ERR_PERMISSION, 13);
    EXPECT_EQ(GIO_ERR_BAD_ADDRESS, 14);
    EXPECT_EQ(GIO_ERR_INVALID, 22);
    EXPECT_EQ(GIO_ERR_TOO_MANY_SYSTEM, 23);
    EXPECT_EQ(GIO_ERR_TOO_MANY_OPEN, 24);
    EXPECT_EQ(GIO_ERR_TOO_LARGE, 27);
    EXPECT_EQ(GIO_ERR_NO_SPACE, 28);
    EXPECT_EQ(GIO_ERR_RANGE, 34);
    EXPECT_EQ(GIO_ERR_BAD_NAME, 38);
    EXPECT_EQ(GIO_ERR_UNSUPPORTED, 40);
    EXPECT_EQ(GIO_ERR_LOCK_OR_OUTPUT, 1000);
    EXPECT_EQ(GIO_ERR_PLATFORM, 1001);
    EXPECT_EQ(GIO_ERR_OTHER, 1002);
}

TEST(Result, HostErrorReadsTheErrorVariable)
{
    errno = ENOENT;
    EXPECT_EQ(gio_host_error(), 2);
    errno = ENAMETOOLONG;
    EXPECT_EQ(gio_host_error(), 38);
    errno = EIO;
    EXPECT_EQ(gio_host_error(), 1002);
    gio_set_error(40);
    EXPECT_EQ(gio_host_error(), 40);
    gio_clear_error();
    EXPECT_EQ(gio_host_error(), 0);
}

TEST(Result, HostFailureKnowsOnlyTheHostsNumbers)
{
    errno = ENOSYS;
    EXPECT_EQ(gio_host_failure(), 40);
    errno = EOPNOTSUPP;
    EXPECT_EQ(gio_host_failure(), 40);
    errno = ELOOP;
    EXPECT_EQ(gio_host_failure(), 1002);
    errno = ENAMETOOLONG;
    EXPECT_EQ(gio_host_failure(), 38);
    errno = ENOENT;
    EXPECT_EQ(gio_host_failure(), 2);
    errno = EBADF;
    EXPECT_EQ(gio_host_failure(), 9);
    errno = ENOMEM;
    EXPECT_EQ(gio_host_failure(), 12);
    errno = EACCES;
    EXPECT_EQ(gio_host_failure(), 13);
    errno = EFAULT;
    EXPECT_EQ(gio_host_failure(), 14);
    errno = EINVAL;
    EXPECT_EQ(gio_host_failure(), 22);
    errno = ENFILE;
    EXPECT_EQ(gio_host_failure(), 23);
    errno = EMFILE;
    EXPECT_EQ(gio_host_failure(), 24);
    errno = EFBIG;
    EXPECT_EQ(gio_host_failure(), 27);
    errno = ENOSPC;
    EXPECT_EQ(gio_host_failure(), 28);
    errno = ERANGE;
    EXPECT_EQ(gio_host_failure(), 34);
    errno = 0;
    EXPECT_EQ(gio_host_failure(), 0);
}

}  // namespace
