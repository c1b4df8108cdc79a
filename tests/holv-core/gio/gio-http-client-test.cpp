// The system's HTTP client against a real server: libcurl, or WinINet.

#include "tests/holv-core/gio/http-client-fixture.h"

namespace
{

using orvlog::test::HttpClient;
using orvlog::test::HttpServer;

#define SKIP_WHERE_THE_CLIENT_CANNOT_SEEK()                                                                            \
    if (!can_seek())                                                                                                   \
    GTEST_SKIP() << "Wine's WinINet cannot seek: shown on the scripted client by UrlStream and UrlGets"

TEST_F(HttpClient, ReadsWhole)
{
    ASSERT_EQ(open_page("/whole"), 0);
    EXPECT_EQ(read(1000000), content_);
    EXPECT_EQ(ops_->gio_Eof(c_), 1);
    EXPECT_EQ(ops_->gio_Error(c_), 0);
    EXPECT_EQ(ops_->gio_Tell(c_), static_cast<int32_t>(content_.size()));
    ASSERT_EQ(server_.requests().size(), 1U);
    EXPECT_NE(server_.requests()[0].find("User-Agent: Kelvo\r\n"), std::string::npos);
}

TEST_F(HttpClient, ReadsInPieces)
{
    ASSERT_EQ(open_page("/whole"), 0);
    std::string text;
    for (std::string piece = read(777); !piece.empty(); piece = read(777))
        text += piece;
    EXPECT_EQ(text, content_);
    EXPECT_EQ(ops_->gio_Getc(c_), -1);
}

TEST_F(HttpClient, ReadsToTheEndWithoutALength)
{
    ASSERT_EQ(open_page("/no-length"), 0);
    EXPECT_EQ(read(1000000), content_);
    EXPECT_EQ(ops_->gio_Error(c_), 0);
}

TEST_F(HttpClient, ReadsLinesByReopening)
{
    SKIP_WHERE_THE_CLIENT_CANNOT_SEEK();
    for (const char* page : {"/whole", "/no-ranges"})
    {
        ASSERT_EQ(open_page(page), 0);
        char line[100];
        for (int i = 0; i < 5; ++i)
        {
            ASSERT_EQ(ops_->gio_Gets(line, sizeof(line), c_), line) << page;
            EXPECT_EQ(line, "line " + std::to_string(i) + " of the text\n") << page;
        }
        EXPECT_EQ(ops_->gio_Tell(c_), 5 * 19);
    }
}

TEST_F(HttpClient, SeeksForward)
{
    SKIP_WHERE_THE_CLIENT_CANNOT_SEEK();
    for (const char* page : {"/whole", "/no-ranges"})
    {
        ASSERT_EQ(open_page(page), 0);
        // A little ahead, and far ahead.
        for (const int32_t to : {1000, 300000, 300010})
        {
            ASSERT_EQ(ops_->gio_Seek(c_, to, GIO_SEEK_SET), 0) << page;
            EXPECT_EQ(ops_->gio_Tell(c_), to);
            EXPECT_EQ(read(10), content_.substr(static_cast<size_t>(to), 10)) << page;
        }
        ASSERT_EQ(ops_->gio_Seek(c_, 0, GIO_SEEK_END), 0);
        EXPECT_EQ(read(10), "");
        EXPECT_EQ(ops_->gio_Eof(c_), 1);
        EXPECT_EQ(ops_->gio_Error(c_), 0);
    }
}

TEST_F(HttpClient, TellsTheSize)
{
    SKIP_WHERE_THE_CLIENT_CANNOT_SEEK();
    ASSERT_EQ(open_page("/whole"), 0);
    EXPECT_EQ(read(10), content_.substr(0, 10));
    EXPECT_EQ(ops_->gio_Size(c_), static_cast<int64_t>(content_.size()));
    EXPECT_EQ(read(10), content_.substr(10, 10));
    EXPECT_EQ(ops_->gio_Seek(c_, static_cast<int32_t>(content_.size()) + 1, GIO_SEEK_SET), -1);
    EXPECT_EQ(ops_->gio_LastError(c_), 1001);
    ASSERT_EQ(open_page("/no-length"), 0);
    EXPECT_EQ(ops_->gio_Size(c_), -1);
    EXPECT_EQ(ops_->gio_LastError(c_), 1001);
}

TEST_F(HttpClient, RefusalGivesNoHandle)
{
    EXPECT_EQ(open_page("/missing"), 1001);
    EXPECT_EQ(open_page("/moved-out"), 1001);
}

TEST_F(HttpClient, FollowsWithinHttp)
{
    ASSERT_EQ(open_page("/moved"), 0);
    EXPECT_EQ(read(10), content_.substr(0, 10));
}

TEST_F(HttpClient, NobodyListens)
{
    std::string url;
    {
        HttpServer gone("x");
        url = gone.url("/whole");
    }
    EXPECT_EQ(open(url), 1001);
}

TEST_F(HttpClient, AnEarlyEndIsNotTheWhole)
{
    ASSERT_EQ(open_page("/early"), 0);
    EXPECT_EQ(read(1000), content_.substr(0, 10));
    EXPECT_NE(ops_->gio_Error(c_) + ops_->gio_Eof(c_), 0);
}

}  // namespace
