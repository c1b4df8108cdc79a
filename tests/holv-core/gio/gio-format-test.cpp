#include "holv-core/gio/gio-format.h"

#include "tests/support/guarded-block.h"
#include "tests/support/memory-stream.h"

#include <gtest/gtest.h>

#include <string>

namespace
{

using orvlog::test::GuardedBlock;

TEST(FormatBounded, GivesTheLengthOfWhatFits)
{
    GuardedBlock block(8);
    char* buffer = block.as<char>();
    EXPECT_EQ(GIO_FormatBounded(buffer, 8, "%s", "abcdef"), 6);
    EXPECT_STREQ(buffer, "abcdef");
    EXPECT_EQ(GIO_FormatBounded(buffer, 8, "%i-%i", 12, 345), 6);
    EXPECT_STREQ(buffer, "12-345");
    EXPECT_EQ(GIO_FormatBounded(buffer, 8, "%s", ""), 0);
    EXPECT_STREQ(buffer, "");
}

TEST(FormatBounded, ExactlyOneLessThanTheSizeFits)
{
    GuardedBlock block(8);
    char* buffer = block.as<char>();
    EXPECT_EQ(GIO_FormatBounded(buffer, 8, "%s", "abcdefg"), 7);
    EXPECT_STREQ(buffer, "abcdefg");
}

TEST(FormatBounded, LongerTextIsCutAndTerminated)
{
    GuardedBlock block(8);
    char* buffer = block.as<char>();
    EXPECT_EQ(GIO_FormatBounded(buffer, 8, "%s", "abcdefgh"), 7);
    EXPECT_STREQ(buffer, "abcdefg");
    EXPECT_EQ(GIO_FormatBounded(buffer, 8, "%s", std::string(5000, 'x').c_str()), 7);
    EXPECT_STREQ(buffer, "xxxxxxx");
    EXPECT_EQ(GIO_FormatBounded(buffer, 1, "%s", "abc"), 0);
    EXPECT_STREQ(buffer, "");
}

TEST(FormatBounded, SizeOfZeroPutsATerminatorAllTheSame)
{
    char buffer[] = "x";
    EXPECT_EQ(GIO_FormatBounded(buffer, 0, "%s", "abc"), 0);
    EXPECT_EQ(buffer[0], '\0');
}

TEST(StreamPrint, PassesToTheStream)
{
    orvlog::test::MemoryStream stream;
    GIO_StreamPrint(stream.get(), "%s %u", "n", 7U);
    EXPECT_EQ(stream.text(), "n 7");
    EXPECT_EQ(stream.flushes(), 0U);
}

}  // namespace
