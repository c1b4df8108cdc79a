#include "holv-core/gio/gio-stream.h"

#include <gtest/gtest.h>

namespace
{

TEST(StreamRecords, KindsAndOrigins)
{
    EXPECT_EQ(GIO_KIND_FILE, 0);
    EXPECT_EQ(GIO_KIND_FORWARD_ONLY, 2);
    EXPECT_EQ(GIO_KIND_MEMORY, 4);
    EXPECT_EQ(GIO_SEEK_SET, 0);
    EXPECT_EQ(GIO_SEEK_CUR, 1);
    EXPECT_EQ(GIO_SEEK_END, 2);
}

}  // namespace
