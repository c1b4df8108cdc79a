#include "holv-core/gio/gio-url-stream.h"

#include "holv-core/gio/gio-url.h"
#include "tests/support/failure-sweep.h"
#include "tests/support/scripted-http.h"
#include "tests/support/test-allocator.h"

#include <gtest/gtest.h>

#include <cstdarg>
#include <cstddef>
#include <cstring>
#include <string>
#include <tuple>
#include <vector>

namespace
{

using orvlog::test::ScriptedHttp;
using orvlog::test::sweep_failures;
using orvlog::test::TestAllocator;
using Calls = std::vector<std::string>;

int32_t open(const char* name, TestAllocator& allocator, GIO_Stream** stream)
{
    return gio_OpenUrlOrPath(name, GIO_PATH_URL, nullptr, GIO_PATH_URL, allocator.get(), stream);
}

// A stream over a script, closed at the end with a look at what was given back.
struct Opened
{
    TestAllocator allocator;
    ScriptedHttp http;
    GIO_Stream* stream = nullptr;
    const GIO_StreamOps* ops = nullptr;
    void* c = nullptr;

    explicit Opened(std::string content) : http(std::move(content))
    {
        EXPECT_EQ(open("http://h/x", allocator, &stream), GIO_OK);
        ops = stream->ops;
        c = stream->instance;
    }
    ~Opened()
    {
        EXPECT_EQ(ops->gio_Close(c), 0);
        EXPECT_EQ(http.open_handles(), 0);
        EXPECT_EQ(allocator.outstanding(), 0U);
        EXPECT_EQ(allocator.bad_frees(), 0U);
    }
    void expect_state(int32_t last_error, int32_t eof, int32_t error)
    {
        EXPECT_EQ(ops->gio_LastError(c), last_error);
        EXPECT_EQ(ops->gio_Eof(c), eof);
        EXPECT_EQ(ops->gio_Error(c), error);
    }
    int32_t print(const char* format, ...)
    {
        va_list args;
        va_start(args, format);
        const int32_t result = ops->gio_VPrintf(c, format, args);
        va_end(args);
        return result;
    }
};

TEST(UrlStream, RecordsHaveTheirLayout)
{
    EXPECT_EQ(offsetof(GIO_UrlInstance, kind), 0U);
    EXPECT_EQ(offsetof(GIO_UrlInstance, allocator), 8U);
    EXPECT_EQ(offsetof(GIO_UrlInstance, owner), 16U);
    EXPECT_EQ(offsetof(GIO_UrlInstance, http), 24U);
    EXPECT_EQ(offsetof(GIO_UrlInstance, url), 32U);
    EXPECT_EQ(offsetof(GIO_UrlInstance, last_error), 40U);
    EXPECT_EQ(offsetof(GIO_UrlInstance, eof_flag), 44U);
    EXPECT_EQ(offsetof(GIO_UrlInstance, error_flag), 48U);
    EXPECT_EQ(offsetof(GIO_HttpState, internet_handle), 0U);
    EXPECT_EQ(offsetof(GIO_HttpState, request_handle), 8U);
    EXPECT_EQ(offsetof(GIO_HttpState, position), 16U);
}

TEST(UrlStream, IncompleteInstances)
{
    Opened o("a\nbc");
    auto* whole = static_cast<GIO_UrlInstance*>(o.c);
    char buffer[8];
    GIO_UrlInstance part = *whole;
    part.owner = nullptr;
    EXPECT_EQ(o.ops->gio_Seek(&part, -1, 0), -1);
    EXPECT_EQ(part.last_error, 22U);
    EXPECT_EQ(o.ops->gio_Size(&part), -1);
    EXPECT_EQ(o.ops->gio_Close(&part), 9);
    part = *whole;
    part.allocator = nullptr;
    EXPECT_EQ(o.ops->gio_Close(&part), 9);
    part = *whole;
    part.url = nullptr;
    EXPECT_EQ(o.ops->gio_Close(&part), 9);
    EXPECT_EQ(o.ops->gio_Gets(buffer, 8, &part), nullptr) << "nothing to open afresh";
    EXPECT_EQ(part.last_error, 1001U);
}

TEST(UrlStream, TheTextHasToEndWhereItsSizeSays)
{
    TestAllocator allocator;
    ScriptedHttp http("abc");
    GIO_Stream* stream = nullptr;
    EXPECT_EQ(gio_OpenHttp("http://h", 8, allocator.get(), &stream), 22);
    EXPECT_EQ(stream, nullptr);
    ASSERT_EQ(gio_OpenHttp("http://h", 9, allocator.get(), &stream), 0);
    EXPECT_EQ(stream->ops->gio_Close(stream->instance), 0);
}

TEST(UrlStream, OpensAndCloses)
{
    Opened o("abc");
    EXPECT_EQ(o.http.calls(), (Calls{"open Kelvo", "url http://h/x"}));
    EXPECT_EQ(o.stream->kind, 2U);
    EXPECT_EQ(*static_cast<uint32_t*>(o.c), 2U);
    uint32_t kind = 99;
    EXPECT_STREQ(o.ops->gio_GetPath(o.c, &kind), "http://h/x");
    EXPECT_EQ(kind, 3U);
    EXPECT_STREQ(o.ops->gio_GetPath(o.c, nullptr), "http://h/x");
    EXPECT_EQ(o.ops->gio_Tell(o.c), 0);
    o.expect_state(0, 0, 0);
    o.http.forget_calls();
}

TEST(UrlStream, ClosesTheRequestFirst)
{
    TestAllocator allocator;
    ScriptedHttp http("abc");
    GIO_Stream* stream = nullptr;
    ASSERT_EQ(open("http://h/x", allocator, &stream), GIO_OK);
    http.forget_calls();
    EXPECT_EQ(stream->ops->gio_Close(stream->instance), 0);
    EXPECT_EQ(http.calls(), (Calls{"close request", "close session"}));
    EXPECT_EQ(allocator.outstanding(), 0U);
}

TEST(UrlStream, ReadsUntilAllHasCome)
{
    Opened o("abcdefghij");
    o.http.serve_in_pieces_of(3);
    char buffer[32] = {};
    EXPECT_EQ(o.ops->gio_Read(buffer, 2, 4, o.c), 4U);
    EXPECT_STREQ(buffer, "abcdefgh");
    EXPECT_EQ(o.ops->gio_Tell(o.c), 8);
    o.expect_state(0, 0, 0);
    EXPECT_EQ(o.ops->gio_Read(buffer, 4, 4, o.c), 0U);
    EXPECT_EQ(o.ops->gio_Tell(o.c), 10);
    o.expect_state(0, 1, 0);
    o.ops->gio_ClearErr(o.c);
    o.expect_state(0, 0, 0);
    EXPECT_EQ(o.http.calls(),
              (Calls{"open Kelvo", "url http://h/x", "read 8", "read 5", "read 2", "read 16", "read 14"}));
}

TEST(UrlStream, ReadRefusesEmptyRequests)
{
    Opened o("abc");
    char buffer[4];
    for (const auto& [to, size, count] : {std::tuple<char*, uint64_t, uint64_t>{nullptr, 1, 1},
                                          {buffer, 0, 1},
                                          {buffer, 1, 0},
                                          {buffer, UINT64_MAX, 2}})
    {
        o.ops->gio_ClearErr(o.c);
        EXPECT_EQ(o.ops->gio_Read(to, size, count, o.c), 0U);
        o.expect_state(22, 0, 0);
    }
}

TEST(UrlStream, FailedReadIsNoEnd)
{
    Opened o("abcdef");
    o.http.serve_in_pieces_of(2);
    o.http.fail(2);
    char buffer[8] = {};
    EXPECT_EQ(o.ops->gio_Read(buffer, 1, 6, o.c), 2U);
    o.expect_state(1001, 0, 1);
    EXPECT_EQ(o.ops->gio_Tell(o.c), 2);
    o.ops->gio_ClearErr(o.c);
    o.expect_state(0, 0, 1);
    // The error stays, and so an end is no longer noted.
    EXPECT_EQ(o.ops->gio_Read(buffer, 1, 8, o.c), 4U);
    o.expect_state(0, 0, 1);
}

TEST(UrlStream, ClientThatClaimsTooMuchFails)
{
    Opened o("abcdef");
    o.http.claim_too_much();
    char buffer[4];
    EXPECT_EQ(o.ops->gio_Read(buffer, 1, 4, o.c), 0U);
    o.expect_state(1001, 0, 1);
    EXPECT_EQ(o.ops->gio_Gets(buffer, 4, o.c), nullptr);
    EXPECT_EQ(o.ops->gio_Getc(o.c), -1);
}

TEST(UrlStream, ReadsBytes)
{
    Opened o(std::string("a\xFF", 2));
    EXPECT_EQ(o.ops->gio_Getc(o.c), 'a');
    EXPECT_EQ(o.ops->gio_Getc(o.c), 0xFF);
    EXPECT_EQ(o.ops->gio_Tell(o.c), 2);
    o.expect_state(0, 0, 0);
    EXPECT_EQ(o.ops->gio_Getc(o.c), -1);
    o.expect_state(0, 1, 0);
    o.ops->gio_ClearErr(o.c);
    o.http.fail(1);
    EXPECT_EQ(o.ops->gio_Getc(o.c), -1);
    o.expect_state(1001, 0, 1);
}

TEST(UrlStream, SeeksForward)
{
    Opened o("abcdefghij");
    EXPECT_EQ(o.ops->gio_Seek(o.c, 4, 0), 0);
    EXPECT_EQ(o.ops->gio_Tell(o.c), 4);
    EXPECT_EQ(o.ops->gio_Getc(o.c), 'e');
    EXPECT_EQ(o.ops->gio_Seek(o.c, 2, 1), 0);
    EXPECT_EQ(o.ops->gio_Getc(o.c), 'h');
    EXPECT_EQ(o.ops->gio_Seek(o.c, 0, 2), 0);
    EXPECT_EQ(o.ops->gio_Tell(o.c), 10);
    o.expect_state(0, 0, 0);
}

TEST(UrlStream, SeekBackwardsIsInvalid)
{
    Opened o("abcdefghij");
    EXPECT_EQ(o.ops->gio_Seek(o.c, 4, 0), 0);
    o.http.forget_calls();
    EXPECT_EQ(o.ops->gio_Seek(o.c, 3, 0), -1);
    o.expect_state(22, 0, 0);
    o.ops->gio_ClearErr(o.c);
    EXPECT_EQ(o.ops->gio_Seek(o.c, -1, 1), -1);
    EXPECT_EQ(o.ops->gio_Seek(o.c, -1, 2), -1);
    o.expect_state(22, 0, 0);
    o.ops->gio_ClearErr(o.c);
    EXPECT_EQ(o.ops->gio_Seek(o.c, 5, 3), -1);
    EXPECT_EQ(o.ops->gio_Seek(o.c, 5, -1), -1);
    o.expect_state(0, 0, 0);
    EXPECT_TRUE(o.http.calls().empty());
    EXPECT_EQ(o.ops->gio_Seek(o.c, 4, 0), 0);
    o.stream->kind = 0;
    EXPECT_EQ(o.ops->gio_Seek(o.c, -1, 1), 0);
    EXPECT_EQ(o.ops->gio_Tell(o.c), 3);
    o.stream->kind = 2;
}

TEST(UrlStream, FailedSeek)
{
    Opened o("abc");
    EXPECT_EQ(o.ops->gio_Seek(o.c, 4, 0), -1);
    o.expect_state(1001, 0, 1);
    EXPECT_EQ(o.ops->gio_Tell(o.c), 0);
}

TEST(UrlStream, SizeLeavesThePosition)
{
    Opened o("abcdefghij");
    EXPECT_EQ(o.ops->gio_Getc(o.c), 'a');
    o.http.forget_calls();
    EXPECT_EQ(o.ops->gio_Size(o.c), 10);
    EXPECT_EQ(o.http.calls(), (Calls{"seek 0 2", "seek 1 0"}));
    EXPECT_EQ(o.stream->kind, 2U);
    EXPECT_EQ(o.ops->gio_Getc(o.c), 'b');
    o.http.fail(1);
    EXPECT_EQ(o.ops->gio_Size(o.c), -1);
    o.expect_state(1001, 0, 1);
    o.http.fail(2);
    EXPECT_EQ(o.ops->gio_Size(o.c), -1);
    EXPECT_EQ(o.stream->kind, 2U);
}

TEST(UrlStream, NegativePositionIsAFailure)
{
    Opened o("abc");
    static_cast<GIO_UrlInstance*>(o.c)->http->position = -1;
    EXPECT_EQ(o.ops->gio_Tell(o.c), -1);
    o.expect_state(1001, 0, 1);
    static_cast<GIO_UrlInstance*>(o.c)->http->position = 0x80000000;
    EXPECT_EQ(o.ops->gio_Tell(o.c), -1);
}

TEST(UrlStream, WhatItDoesNotDo)
{
    const auto refused = [](auto operation, bool sets_error)
    {
        Opened o("abc");
        operation(o);
        o.expect_state(40, 0, sets_error ? 1 : 0);
        EXPECT_EQ(o.http.calls().size(), 2U);
    };
    refused([](Opened& o) { EXPECT_EQ(o.ops->gio_Write("x", 1, 1, o.c), 0U); }, true);
    refused([](Opened& o) { EXPECT_EQ(o.ops->gio_Puts("x", o.c), -1); }, true);
    refused([](Opened& o) { EXPECT_EQ(o.ops->gio_Putc('x', o.c), -1); }, true);
    refused([](Opened& o) { EXPECT_EQ(o.print("x"), -1); }, true);
    refused(
        [](Opened& o)
        {
            void* data = nullptr;
            uint64_t length = 0;
            EXPECT_EQ(o.ops->gio_ReadBuffer(o.c, &data, &length), 0);
        },
        true);
    refused([](Opened& o) { EXPECT_EQ(o.ops->gio_Seek64(o.c, 1, 0), -1); }, false);
    refused([](Opened& o) { EXPECT_EQ(o.ops->gio_Tell64(o.c), -1); }, false);
    refused([](Opened& o) { EXPECT_EQ(o.ops->gio_Flush(o.c), -1); }, false);
}

TEST(UrlStream, BadInstances)
{
    Opened o("abc");
    GIO_UrlInstance wrong_kind = {}, no_state = {};
    no_state.kind = 2;
    char buffer[4];
    uint32_t kind = 99;
    for (void* bad : {static_cast<void*>(nullptr), static_cast<void*>(&wrong_kind), static_cast<void*>(&no_state)})
    {
        EXPECT_EQ(o.ops->gio_Read(buffer, 1, 1, bad), 0U);
        EXPECT_EQ(o.ops->gio_Write(buffer, 1, 1, bad), 0U);
        EXPECT_EQ(o.ops->gio_Seek(bad, 0, 0), -1);
        EXPECT_EQ(o.ops->gio_Tell(bad), -1);
        EXPECT_EQ(o.ops->gio_Seek64(bad, 0, 0), -1);
        EXPECT_EQ(o.ops->gio_Tell64(bad), -1);
        EXPECT_EQ(o.ops->gio_Flush(bad), -1);
        EXPECT_EQ(o.ops->gio_Gets(buffer, 4, bad), nullptr);
        EXPECT_EQ(o.ops->gio_Puts("x", bad), -1);
        EXPECT_EQ(o.ops->gio_Getc(bad), -1);
        EXPECT_EQ(o.ops->gio_Putc('x', bad), -1);
        EXPECT_EQ(o.ops->gio_GetPath(bad, &kind), nullptr);
        EXPECT_EQ(o.ops->gio_ReadBuffer(bad, nullptr, nullptr), 0);
        o.ops->gio_ClearErr(bad);
        EXPECT_EQ(o.ops->gio_Eof(bad), -1);
        EXPECT_EQ(o.ops->gio_Error(bad), -1);
        EXPECT_EQ(o.ops->gio_LastError(bad), 9);
        EXPECT_EQ(o.ops->gio_Size(bad), -1);
        EXPECT_EQ(o.ops->gio_Close(bad), 9);
    }
    EXPECT_EQ(kind, 99U);
    EXPECT_EQ(no_state.last_error, 0U);
    EXPECT_EQ(no_state.error_flag, 0U);
    o.expect_state(0, 0, 0);
}

TEST(UrlGets, ReopensBehindTheLine)
{
    Opened o("first\nsecond\nthird");
    o.http.forget_calls();
    char buffer[64];
    std::memset(buffer, '#', sizeof(buffer));
    EXPECT_EQ(o.ops->gio_Gets(buffer, 64, o.c), buffer);
    EXPECT_STREQ(buffer, "first\n");
    EXPECT_EQ(o.ops->gio_Tell(o.c), 6);
    EXPECT_EQ(o.http.calls(),
              (Calls{"read 64", "close request", "close session", "open Kelvo", "url http://h/x", "seek 6 1"}));
    EXPECT_EQ(o.ops->gio_Gets(buffer, 64, o.c), buffer);
    EXPECT_STREQ(buffer, "second\n");
    // The last line has no line feed: it stands without a terminator.
    std::memset(buffer, '#', sizeof(buffer));
    EXPECT_EQ(o.ops->gio_Gets(buffer, 64, o.c), buffer);
    EXPECT_EQ(std::string(buffer, 7), "third##");
    EXPECT_EQ(o.ops->gio_Tell(o.c), 18);
    o.expect_state(0, 0, 0);
    EXPECT_EQ(o.ops->gio_Gets(buffer, 64, o.c), nullptr);
    o.expect_state(0, 1, 0);
}

TEST(UrlGets, LineThatFillsTheBuffer)
{
    Opened o("abc\nd\n");
    o.http.forget_calls();
    char buffer[8] = {'#', '#', '#', '#', '#', '#', '#', '\0'};
    EXPECT_EQ(o.ops->gio_Gets(buffer, 4, o.c), buffer);
    EXPECT_STREQ(buffer, "abc");
    EXPECT_EQ(buffer[4], '#');
    EXPECT_EQ(o.http.calls(), (Calls{"read 4"}));
    EXPECT_EQ(o.ops->gio_Tell(o.c), 4);
    EXPECT_EQ(o.ops->gio_Gets(buffer, 3, o.c), buffer);
    EXPECT_STREQ(buffer, "d\n");
}

TEST(UrlGets, LongLinesComeInPieces)
{
    Opened o("abcdef\n");
    char buffer[8] = "#######";
    EXPECT_EQ(o.ops->gio_Gets(buffer, 4, o.c), buffer);
    EXPECT_STREQ(buffer, "abcd###");
    EXPECT_EQ(o.ops->gio_Tell(o.c), 4);
}

TEST(UrlGets, Failures)
{
    char buffer[16];
    {
        Opened o("a\nb\n");
        EXPECT_EQ(o.ops->gio_Gets(nullptr, 4, o.c), nullptr);
        EXPECT_EQ(o.ops->gio_Gets(buffer, 0, o.c), nullptr);
        EXPECT_EQ(o.ops->gio_Gets(buffer, -1, o.c), nullptr);
        o.expect_state(22, 0, 0);
        o.http.fail(1);
        EXPECT_EQ(o.ops->gio_Gets(buffer, 16, o.c), nullptr);
        o.expect_state(1001, 0, 1);
    }
    // The session, the request, the seek: each failure empties the buffer.
    for (const uint64_t call : {4U, 5U, 6U})
    {
        Opened o("a\nb\n");
        o.http.fail(call);
        std::strcpy(buffer, "####");
        EXPECT_EQ(o.ops->gio_Gets(buffer, 16, o.c), nullptr);
        EXPECT_EQ(buffer[0], '\0');
        o.expect_state(1001, 0, 1);
        const bool without_request = call != 6;
        EXPECT_EQ(o.ops->gio_Getc(o.c), without_request ? -1 : 'a');
        EXPECT_EQ(o.ops->gio_Seek(o.c, 3, 0), without_request ? -1 : 0);
    }
    Opened o("a\nb\n");
    static_cast<GIO_UrlInstance*>(o.c)->http->position = -10;
    EXPECT_EQ(o.ops->gio_Gets(buffer, 16, o.c), nullptr);
    EXPECT_EQ(buffer[0], '\0');
    o.expect_state(22, 0, 0);
}

TEST(OpenUrl, CodesOfNames)
{
    TestAllocator allocator;
    ScriptedHttp http("abc");
    GIO_Stream* stream = nullptr;
    const auto code = [&](const char* name, uint32_t kind, const char* base, uint32_t base_kind)
    {
        stream = reinterpret_cast<GIO_Stream*>(1);
        const int32_t result = gio_OpenUrlOrPath(name, kind, base, base_kind, allocator.get(), &stream);
        EXPECT_EQ(stream, nullptr);
        EXPECT_EQ(allocator.outstanding(), 0U);
        return result;
    };
    EXPECT_EQ(code("ftp://x/y", 3, nullptr, 3), 22);
    EXPECT_EQ(code("x/y", 3, nullptr, 3), 22);
    EXPECT_EQ(code("x", 0, nullptr, 0), 22);
    EXPECT_EQ(code("a:b", 0, nullptr, 0), 38);
    EXPECT_EQ(code("*", 3, nullptr, 3), 38);
    EXPECT_EQ(code("http://h/%C3", 3, nullptr, 3), 38);
    EXPECT_EQ(code("http://h/%E9a", 3, nullptr, 3), 38);
    EXPECT_EQ(code("x", 3, "ftp://h/y", 3), 22);
    EXPECT_EQ(code("x", 3, "http://h/y#f", 3), 38);
    EXPECT_EQ(code("x", 0, "c:\\nowhere\\at-all", 0), 2);
    EXPECT_EQ(code("\\x\\y", 1, nullptr, 0), 22);
    EXPECT_EQ(code("\\x\\y", 2, nullptr, 0), 22);
    EXPECT_EQ(code("x", 3, "\\b\\", 1), 22);
    EXPECT_EQ(code("x", 4, nullptr, 3), 22);
    EXPECT_EQ(code("x", 3, "http://h/y", 4), 22);
    EXPECT_EQ(code(nullptr, 3, nullptr, 3), 22);
    EXPECT_EQ(gio_OpenUrlOrPath("http://h", 3, nullptr, 3, nullptr, &stream), 22);
    EXPECT_EQ(gio_OpenUrlOrPath("http://h", 3, nullptr, 3, allocator.get(), nullptr), 22);
    EXPECT_TRUE(http.calls().empty());
}

TEST(OpenUrl, ResolvesBeforeItOpens)
{
    TestAllocator allocator;
    ScriptedHttp http("abc");
    GIO_Stream* stream = nullptr;
    for (const auto& [name, kind, url] :
         {std::tuple<const char*, uint32_t, const char*>{"../%7Ex", 3, "url http://h/~x"},
          {"x\\..\\y", 0, "url http://h/a/y"},
          {"HTTP://o/y", 3, "url HTTP://o/y"},
          {"?q#f", 3, "url http://h/a/b?q#f"}})
    {
        http.forget_calls();
        ASSERT_EQ(gio_OpenUrlOrPath(name, kind, "http://h/a/b", 3, allocator.get(), &stream), 0) << name;
        EXPECT_EQ(http.calls(), (Calls{"open Kelvo", url}));
        EXPECT_EQ(stream->ops->gio_Close(stream->instance), 0);
        EXPECT_EQ(allocator.outstanding(), 0U);
    }
}

TEST(OpenUrl, WithoutAClientNothingOpens)
{
    TestAllocator allocator;
    GIO_Stream* stream = nullptr;
    EXPECT_EQ(open("http://127.0.0.1/x", allocator, &stream), 1001);
    EXPECT_EQ(stream, nullptr);
    EXPECT_EQ(allocator.outstanding(), 0U);
    const GIO_HttpOps* none = gio_HttpClient();
    void* session = none->http_Open("Kelvo");
    EXPECT_EQ(session, nullptr);
    EXPECT_EQ(none->http_OpenUrl(session, "http://h"), nullptr);
    uint32_t length = 0;
    EXPECT_EQ(none->http_Read(nullptr, nullptr, 0, &length), 0);
    EXPECT_LT(none->http_SetPosition(nullptr, 0, 0), 0);
    none->http_Close(nullptr);
}

TEST(OpenUrl, HandlesThatCantBeHad)
{
    TestAllocator allocator;
    ScriptedHttp http("abc");
    GIO_Stream* stream = nullptr;
    http.fail(1);
    EXPECT_EQ(open("http://h/x", allocator, &stream), 1001);
    EXPECT_EQ(http.calls(), (Calls{"open Kelvo"}));
    http.forget_calls();
    http.fail(2);
    EXPECT_EQ(open("http://h/x", allocator, &stream), 1001);
    // The session is not closed then.
    EXPECT_EQ(http.calls(), (Calls{"open Kelvo", "url http://h/x"}));
    EXPECT_EQ(allocator.outstanding(), 0U);
}

TEST(OpenUrl, EveryRefusedAllocationIsGivenBack)
{
    const auto refused = [](uint64_t n)
    {
        TestAllocator allocator;
        ScriptedHttp http("abc");
        GIO_Stream* stream = nullptr;
        allocator.refuse(n);
        const int32_t code = open("http://h/x", allocator, &stream);
        const bool met = allocator.refused() != 0;
        EXPECT_EQ(code, met ? 12 : 0) << n;
        if (code == 0)
            stream->ops->gio_Close(stream->instance);
        EXPECT_EQ(allocator.outstanding(), 0U) << n;
        EXPECT_EQ(http.open_handles(), 0) << n;
        return met;
    };
    EXPECT_EQ(sweep_failures(refused), 4U);
    for (uint64_t n = 1; n <= 4; ++n)
    {
        TestAllocator allocator;
        GIO_Stream* stream = nullptr;
        allocator.refuse(n);
        EXPECT_NE(open("file:///nowhere", allocator, &stream), 0);
        EXPECT_EQ(allocator.outstanding(), 0U) << n;
    }
}

}  // namespace
