#include "holv-core/gio/gio-stream.h"

#include <gtest/gtest.h>

#include <cstddef>

namespace
{

TEST(StreamRecords, HandleHasThreeWords)
{
    EXPECT_EQ(offsetof(GIO_Stream, instance), 0U);
    EXPECT_EQ(offsetof(GIO_Stream, kind), 8U);
    EXPECT_EQ(sizeof(GIO_Stream::kind), 4U);
    EXPECT_EQ(offsetof(GIO_Stream, ops), 16U);
    EXPECT_EQ(sizeof(GIO_Stream), 24U);
}

TEST(StreamRecords, TwentyOperationsInTheirOrder)
{
    EXPECT_EQ(offsetof(GIO_StreamOps, gio_Read), 0U * 8);
    EXPECT_EQ(offsetof(GIO_StreamOps, gio_Write), 1U * 8);
    EXPECT_EQ(offsetof(GIO_StreamOps, gio_Seek), 2U * 8);
    EXPECT_EQ(offsetof(GIO_StreamOps, gio_Tell), 3U * 8);
    EXPECT_EQ(offsetof(GIO_StreamOps, gio_Seek64), 4U * 8);
    EXPECT_EQ(offsetof(GIO_StreamOps, gio_Tell64), 5U * 8);
    EXPECT_EQ(offsetof(GIO_StreamOps, gio_Flush), 6U * 8);
    EXPECT_EQ(offsetof(GIO_StreamOps, gio_Gets), 7U * 8);
    EXPECT_EQ(offsetof(GIO_StreamOps, gio_Puts), 8U * 8);
    EXPECT_EQ(offsetof(GIO_StreamOps, gio_Getc), 9U * 8);
    EXPECT_EQ(offsetof(GIO_StreamOps, gio_Putc), 10U * 8);
    EXPECT_EQ(offsetof(GIO_StreamOps, gio_GetPath), 11U * 8);
    EXPECT_EQ(offsetof(GIO_StreamOps, gio_ReadBuffer), 12U * 8);
    EXPECT_EQ(offsetof(GIO_StreamOps, gio_VPrintf), 13U * 8);
    EXPECT_EQ(offsetof(GIO_StreamOps, gio_ClearErr), 14U * 8);
    EXPECT_EQ(offsetof(GIO_StreamOps, gio_Eof), 15U * 8);
    EXPECT_EQ(offsetof(GIO_StreamOps, gio_Error), 16U * 8);
    EXPECT_EQ(offsetof(GIO_StreamOps, gio_LastError), 17U * 8);
    EXPECT_EQ(offsetof(GIO_StreamOps, gio_Size), 18U * 8);
    EXPECT_EQ(offsetof(GIO_StreamOps, gio_Close), 19U * 8);
    EXPECT_EQ(sizeof(GIO_StreamOps), 20U * 8);
}

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
