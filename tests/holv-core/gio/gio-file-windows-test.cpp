#include "holv-core/gio/gio-file.h"
#include "holv-core/gio/gio-wide-path-windows.h"

#include "tests/support/guarded-block.h"
#include "tests/support/test-allocator.h"

#include <gtest/gtest.h>

#include <cstring>
#include <string>

namespace
{

using orvlog::test::GuardedBlock;

TEST(WidePath, CharactersBeyondSixteenBitsBecomeTwoUnits)
{
    GuardedBlock block(6 * sizeof(wchar_t));
    auto* wide = block.as<wchar_t>();
    gio_wide_convert("a\xc3\xa9\xe2\x82\xac\xf0\x9f\x98\x80", wide);
    EXPECT_EQ(std::memcmp(wide, L"a\x00e9\x20ac\xd83d\xde00", 6 * sizeof(wchar_t)), 0);
    gio_wide_convert("\xf0\x90\x80\x80\xf4\x8f\xbf\xbf", wide);
    EXPECT_EQ(std::memcmp(wide, L"\xd800\xdc00\xdbff\xdfff", 5 * sizeof(wchar_t)), 0);
}

TEST(WidePath, IsBounded)
{
    GuardedBlock block((GIO_WIDE_PATH_LIMIT + 1) * sizeof(wchar_t));
    auto* wide = block.as<wchar_t>();
    EXPECT_EQ(gio_wide_path(std::string(1024, 'x').c_str(), wide), 1U);
    EXPECT_EQ(wide[1024], 0);
    EXPECT_EQ(gio_wide_path(std::string(1025, 'x').c_str(), wide), 0U);
    EXPECT_EQ(gio_wide_path("x\x80", wide), 0U);
}

TEST(FileWindows, TextModeTurnsLineFeeds)
{
    orvlog::test::TestAllocator allocator;
    const char* path = "gio-file-windows-test.tmp";
    const auto bytes = [&](uint32_t text)
    {
        GIO_Stream* stream = nullptr;
        EXPECT_EQ(gio_OpenFile(path, GIO_OPEN_WRITE, text, allocator.get(), &stream), 0);
        stream->ops->gio_Puts("a\nb\n", stream->instance);
        stream->ops->gio_Close(stream->instance);
        EXPECT_EQ(gio_OpenFile(path, GIO_OPEN_READ, 0, allocator.get(), &stream), 0);
        std::string read(16, '\0');
        read.resize(stream->ops->gio_Read(read.data(), 1, read.size(), stream->instance));
        stream->ops->gio_Close(stream->instance);
        return read;
    };
    EXPECT_EQ(bytes(0), "a\nb\n");
    EXPECT_EQ(bytes(1), "a\r\nb\r\n");
    EXPECT_EQ(GIO_FileDelete(path), 0);
    EXPECT_EQ(allocator.outstanding(), 0U);
}

TEST(FileWindows, ConversionWithoutMemoryGivesTwelve)
{
    orvlog::test::TestAllocator allocator;
    GIO_Stream* stream = nullptr;
    allocator.refuse(3);
    EXPECT_EQ(gio_OpenFile("gio-file-\xc3\xa9.tmp", GIO_OPEN_READ, 0, allocator.get(), &stream), 12);
    EXPECT_EQ(allocator.outstanding(), 0U);
}

}  // namespace
