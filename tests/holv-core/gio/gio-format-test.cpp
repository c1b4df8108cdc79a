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

TEST(FormatBounded, NothingToPrintOrNowhere)
{
    char buffer[] = "x";
    const char* no_format = nullptr;
    EXPECT_EQ(GIO_FormatBounded(buffer, 2, no_format), 0);
    EXPECT_STREQ(buffer, "");
    EXPECT_EQ(GIO_FormatBounded(nullptr, 2, "%s", "abc"), 0);
}

TEST(StreamPrint, NothingToPrintOrNowhere)
{
    orvlog::test::MemoryStream stream;
    const char* no_format = nullptr;
    GIO_StreamPrint(stream.get(), no_format);
    GIO_StreamPrint(nullptr, "%s", "abc");
    GIO_Stream unset = {nullptr, 0, nullptr};
    GIO_StreamPrint(&unset, "%s", "abc");
    const GIO_StreamOps none = {};
    unset.ops = &none;
    GIO_StreamPrint(&unset, "%s", "abc");
    EXPECT_EQ(stream.text(), "");
}

TEST(StreamPrint, PassesToTheStream)
{
    orvlog::test::MemoryStream stream;
    GIO_StreamPrint(stream.get(), "%s %u", "n", 7U);
    EXPECT_EQ(stream.text(), "n 7");
    EXPECT_EQ(stream.flushes(), 0U);
}

}  // namespace
