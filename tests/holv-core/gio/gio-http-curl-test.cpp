// What is asked of libcurl alone: Wine's WinINet takes bytes without a head for a page, follows a redirection in
// circles, and keeps no limit while a server is silent.

#include "tests/holv-core/gio/http-client-fixture.h"

#include "holv-core/gio/gio-http.h"

#include <netinet/in.h>
#include <sys/socket.h>
#include <unistd.h>

#include <chrono>
#include <thread>
#include <vector>

namespace
{

using orvlog::test::HttpClient;

TEST_F(HttpClient, GarbageGivesNoHandle)
{
    EXPECT_EQ(open_page("/garbage"), 1001);
}

TEST_F(HttpClient, CirclesGiveNoHandle)
{
    EXPECT_EQ(open_page("/turning"), 1001);
    EXPECT_EQ(server_.requests().size(), 6U);
}

TEST_F(HttpClient, AnEarlyEndIsAFailure)
{
    ASSERT_EQ(open_page("/early"), 0);
    EXPECT_EQ(read(1000), content_.substr(0, 10));
    EXPECT_EQ(ops_->gio_Error(c_), 1);
    EXPECT_EQ(ops_->gio_Eof(c_), 0);
    EXPECT_EQ(ops_->gio_LastError(c_), 1001);
}

TEST_F(HttpClient, SilenceEndsAtTheLimit)
{
    const auto begun = std::chrono::steady_clock::now();
    EXPECT_EQ(open_page("/silent"), 1001);
    ASSERT_EQ(open_page("/stall"), 0);
    EXPECT_EQ(read(1000), content_.substr(0, 5));
    EXPECT_EQ(ops_->gio_LastError(c_), 1001);
    EXPECT_EQ(ops_->gio_Error(c_), 1);
    EXPECT_EQ(ops_->gio_Eof(c_), 0);
    close();
    EXPECT_LT(std::chrono::steady_clock::now() - begun, std::chrono::seconds(15));
}

// A listener whose places are taken answers no connection: the limit of connecting ends it, whatever the other is.
TEST_F(HttpClient, ConnectingEndsAtItsLimit)
{
    const int listening = socket(AF_INET, SOCK_STREAM, 0);
    sockaddr_in address = {};
    address.sin_family = AF_INET;
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    socklen_t size = sizeof address;
    auto* general = reinterpret_cast<sockaddr*>(&address);
    ASSERT_EQ(bind(listening, general, size), 0);
    ASSERT_EQ(listen(listening, 0), 0);
    ASSERT_EQ(getsockname(listening, general, &size), 0);
    std::vector<int> waiting;
    for (int i = 0; i < 8; ++i)
    {
        waiting.push_back(socket(AF_INET, SOCK_STREAM | SOCK_NONBLOCK, 0));
        connect(waiting.back(), general, size);
    }
    std::this_thread::sleep_for(std::chrono::milliseconds(100));
    gio_SetHttpLimits(700, 60000);
    const auto begun = std::chrono::steady_clock::now();
    EXPECT_EQ(open("http://127.0.0.1:" + std::to_string(ntohs(address.sin_port)) + "/x"), 1001);
    const auto taken = std::chrono::steady_clock::now() - begun;
    EXPECT_GE(taken, std::chrono::milliseconds(500));
    EXPECT_LT(taken, std::chrono::seconds(5));
    for (const int one : waiting)
        ::close(one);
    ::close(listening);
}

TEST_F(HttpClient, AsksForRanges)
{
    ASSERT_EQ(open_page("/whole"), 0);
    ASSERT_EQ(ops_->gio_Seek(c_, 300000, GIO_SEEK_SET), 0);
    EXPECT_EQ(read(5), content_.substr(300000, 5));
    const auto requests = server_.requests();
    ASSERT_EQ(requests.size(), 2U);
    EXPECT_EQ(requests[0].find("Range:"), std::string::npos);
    EXPECT_NE(requests[1].find("Range: bytes=300000-\r\n"), std::string::npos);
}

TEST_F(HttpClient, SessionsHaveAgentsOfTheirOwn)
{
    const GIO_HttpOps* client = gio_HttpClient();
    const std::string url = server_.url("/whole");
    void* one = client->http_Open("one");
    void* other = client->http_Open("other");
    ASSERT_NE(one, nullptr);
    ASSERT_NE(other, nullptr);
    void* of_one = client->http_OpenUrl(one, url.c_str());
    void* of_other = client->http_OpenUrl(other, url.c_str());
    ASSERT_NE(of_one, nullptr);
    ASSERT_NE(of_other, nullptr);
    // A request goes on under its agent, be the session given up or not.
    client->http_Close(one);
    EXPECT_EQ(client->http_SetPosition(of_one, 300000, 0), 300000);
    char piece[5];
    uint32_t read = 0;
    EXPECT_EQ(client->http_Read(of_one, piece, sizeof piece, &read), 1);
    client->http_Close(of_one);
    client->http_Close(of_other);
    client->http_Close(other);
    std::vector<std::string> agents;
    for (const std::string& head : server_.requests())
        agents.push_back(head.substr(head.find("User-Agent: "), 16));
    EXPECT_EQ(agents, (std::vector<std::string>{"User-Agent: one\r", "User-Agent: othe", "User-Agent: one\r"}));
}

}  // namespace
