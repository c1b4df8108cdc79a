#include "tests/support/loopback-socket.h"

#include <arpa/inet.h>
#include <netinet/in.h>
#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>

namespace orvlog::test
{

namespace
{

int of(SocketHandle socket)
{
    return static_cast<int>(socket);
}

bool ready_within(SocketHandle socket, int milliseconds)
{
    pollfd one = {of(socket), POLLIN, 0};
    return poll(&one, 1, milliseconds) > 0;
}

}  // namespace

SocketHandle listen_on_loopback(uint16_t& port)
{
    const int socket = ::socket(AF_INET, SOCK_STREAM, 0);
    sockaddr_in address = {};
    address.sin_family = AF_INET;
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    socklen_t size = sizeof(address);
    auto* general = reinterpret_cast<sockaddr*>(&address);
    if (socket < 0 || bind(socket, general, size) != 0 || listen(socket, 16) != 0 ||
        getsockname(socket, general, &size) != 0)
        return kNoSocket;
    port = ntohs(address.sin_port);
    return static_cast<SocketHandle>(socket);
}

SocketHandle accept_within(SocketHandle listening, int milliseconds)
{
    if (!ready_within(listening, milliseconds))
        return kNoSocket;
    const int socket = accept(of(listening), nullptr, nullptr);
    return socket < 0 ? kNoSocket : static_cast<SocketHandle>(socket);
}

bool receive_within(SocketHandle socket, int milliseconds, std::string& received)
{
    received.clear();
    if (!ready_within(socket, milliseconds))
        return true;
    char buffer[4096];
    const ssize_t length = recv(of(socket), buffer, sizeof(buffer), 0);
    if (length > 0)
        received.assign(buffer, static_cast<size_t>(length));
    return length > 0;
}

bool send_all(SocketHandle socket, const std::string& bytes)
{
    size_t sent = 0;
    while (sent < bytes.size())
    {
        const ssize_t length = send(of(socket), bytes.data() + sent, bytes.size() - sent, MSG_NOSIGNAL);
        if (length <= 0)
            return false;
        sent += static_cast<size_t>(length);
    }
    return true;
}

void close_socket(SocketHandle socket)
{
    close(of(socket));
}

}  // namespace orvlog::test
