// What is asked of libcurl alone: Wine's WinINet takes bytes without a head for a page, follows a redirection in
// circles, and keeps no limit while a server is silent.

#include "tests/holv-core/gio/http-client-fixture.h"

#include "holv-core/gio/gio-http.h"

#include <arpa/inet.h>
#include <chrono>
#include <netinet/in.h>
#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>
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

// A server that takes no connection: its queue is full, and what asks for one more is not answered.
class FullServer
{
public:
    FullServer()
    {
        sockaddr_in address = {};
        address.sin_family = AF_INET;
        address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
        socklen_t size = sizeof address;
        auto* any = reinterpret_cast<sockaddr*>(&address);
        sockets_.push_back(socket(AF_INET, SOCK_STREAM, 0));
        EXPECT_EQ(bind(sockets_[0], any, size), 0);
        EXPECT_EQ(listen(sockets_[0], 0), 0);
        EXPECT_EQ(getsockname(sockets_[0], any, &size), 0);
        url_ = "http://127.0.0.1:" + std::to_string(ntohs(address.sin_port)) + "/whole";
        while (sockets_.size() < 20 && !is_full_)
        {
            const int client = socket(AF_INET, SOCK_STREAM | SOCK_NONBLOCK, 0);
            sockets_.push_back(client);
            connect(client, any, size);
            pollfd ready = {client, POLLOUT, 0};
            is_full_ = poll(&ready, 1, 200) == 0;
        }
    }
    ~FullServer()
    {
        for (const int socket : sockets_)
            close(socket);
    }
    bool is_full() const
    {
        return is_full_;
    }
    const std::string& url() const
    {
        return url_;
    }

private:
    std::vector<int> sockets_;
    std::string url_;
    bool is_full_ = false;
};

TEST_F(HttpClient, ConnectingEndsAtItsOwnLimit)
{
    const FullServer full;
    if (!full.is_full())
        GTEST_SKIP() << "this system takes any number of connections";
    gio_SetHttpLimits(400, 30000);
    const auto begun = std::chrono::steady_clock::now();
    EXPECT_EQ(open(full.url()), 1001);
    const auto took = std::chrono::steady_clock::now() - begun;
    EXPECT_GE(took, std::chrono::milliseconds(350));
    EXPECT_LT(took, std::chrono::seconds(10));
}

}  // namespace
