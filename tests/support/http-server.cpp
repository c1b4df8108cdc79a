#include "tests/support/http-server.h"

#include <algorithm>
#include <chrono>
#include <cstdlib>

namespace orvlog::test
{

namespace
{

constexpr int kTick = 20;
constexpr auto kLongest = std::chrono::seconds(20);

std::string head_of(const std::string& status, const std::string& lines)
{
    return "HTTP/1.1 " + status + "\r\nConnection: close\r\nContent-Type: text/plain\r\n" + lines + "\r\n";
}

std::string with_length(const std::string& status, const std::string& body, const std::string& lines = "")
{
    return head_of(status, "Content-Length: " + std::to_string(body.size()) + "\r\n" + lines) + body;
}

// Where an open range starts; 0 without one.
size_t range_start(const std::string& head)
{
    const size_t at = head.find("Range: bytes=");
    return at == std::string::npos ? 0 : static_cast<size_t>(std::atoll(head.c_str() + at + 13));
}

}  // namespace

HttpServer::HttpServer(std::string content) : content_(std::move(content)), listening_(listen_on_loopback(port_))
{
    if (listening_ != kNoSocket)
        thread_ = std::thread([this] { run(); });
}

HttpServer::~HttpServer()
{
    ending_ = true;
    if (thread_.joinable())
        thread_.join();
    if (listening_ != kNoSocket)
        close_socket(listening_);
}

std::string HttpServer::url(const std::string& page) const
{
    return "http://127.0.0.1:" + std::to_string(port_) + page;
}

std::vector<std::string> HttpServer::requests()
{
    const std::lock_guard lock(mutex_);
    return requests_;
}

void HttpServer::run()
{
    while (!ending_)
    {
        const SocketHandle socket = accept_within(listening_, kTick);
        if (socket == kNoSocket)
            continue;
        serve(socket);
        close_socket(socket);
    }
}

void HttpServer::serve(SocketHandle socket)
{
    const auto begun = std::chrono::steady_clock::now();
    std::string head, piece;
    while (head.find("\r\n\r\n") == std::string::npos)
    {
        if (ending_ || !receive_within(socket, kTick, piece) || std::chrono::steady_clock::now() - begun > kLongest)
            return;
        head += piece;
    }
    {
        const std::lock_guard lock(mutex_);
        requests_.push_back(head);
    }
    const size_t from = head.find(' ') + 1;
    answer(socket, head.substr(from, head.find(' ', from) - from), head);
}

void HttpServer::answer(SocketHandle socket, const std::string& page, const std::string& head)
{
    const std::string length = "Content-Length: " + std::to_string(content_.size()) + "\r\n";
    if (page == "/whole")
        serve_content(socket, head);
    else if (page == "/no-ranges")
        send_all(socket, with_length("200 OK", content_));
    else if (page == "/no-length")
        send_all(socket, head_of("200 OK", "") + content_);
    else if (page == "/early")
        send_all(socket, head_of("200 OK", length) + content_.substr(0, 10));
    else if (page == "/stall")
        send_all(socket, head_of("200 OK", length) + content_.substr(0, 5));
    else if (page == "/garbage")
        send_all(socket, "\x01\x02 no such protocol\r\n\r\n");
    else if (page == "/moved")
        send_all(socket, with_length("302 Found", "", "Location: " + url("/whole") + "\r\n"));
    else if (page == "/moved-out")
        send_all(socket, with_length("302 Found", "", "Location: file:///etc/hostname\r\n"));
    else if (page == "/turning")
        send_all(socket, with_length("302 Found", "", "Location: " + url("/turning") + "\r\n"));
    else if (page != "/silent")
        send_all(socket, with_length("404 Not Found", "no such page"));
    if (page == "/stall" || page == "/silent")
        wait_for_close(socket);
}

void HttpServer::serve_content(SocketHandle socket, const std::string& head)
{
    const size_t start = std::min(range_start(head), content_.size());
    if (start == 0)
    {
        send_all(socket, with_length("200 OK", content_, "Accept-Ranges: bytes\r\n"));
        return;
    }
    const std::string range = "Content-Range: bytes " + std::to_string(start) + "-" +
                              std::to_string(content_.size() - 1) + "/" + std::to_string(content_.size()) + "\r\n";
    send_all(socket, with_length("206 Partial Content", content_.substr(start), range));
}

void HttpServer::wait_for_close(SocketHandle socket)
{
    const auto begun = std::chrono::steady_clock::now();
    std::string ignored;
    while (!ending_ && std::chrono::steady_clock::now() - begun < kLongest)
        if (!receive_within(socket, kTick, ignored))
            return;
}

}  // namespace orvlog::test
