// A small HTTP server on the loopback address, with pages that behave and pages that don't.

#pragma once

#include "tests/support/loopback-socket.h"

#include <atomic>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

namespace orvlog::test
{

// /whole       the content, ranges too          /no-ranges  the content, whatever range is asked for
// /no-length   the content, its end the end     /early      closes after 10 bytes of the content
// /stall       sends 5 bytes and no more        /silent     sends nothing at all
// /missing     404 and a page                   /garbage    no HTTP
// /moved       moved to /whole                  /moved-out  moved to a "file:" URL
// /turning     moved to itself
//
// Serves one connection at a time, one request each, and ends with its object.
class HttpServer
{
public:
    explicit HttpServer(std::string content);
    HttpServer(const HttpServer&) = delete;
    HttpServer& operator=(const HttpServer&) = delete;
    ~HttpServer();

    std::string url(const std::string& page) const;
    // The head of each request so far.
    std::vector<std::string> requests();

private:
    void run();
    void serve(SocketHandle socket);
    void answer(SocketHandle socket, const std::string& page, const std::string& head);
    void serve_content(SocketHandle socket, const std::string& head);
    void wait_for_close(SocketHandle socket);

    std::string content_;
    uint16_t port_ = 0;
    SocketHandle listening_;
    std::atomic<bool> ending_ = false;
    std::mutex mutex_;
    std::vector<std::string> requests_;
    std::thread thread_;
};

}  // namespace orvlog::test
