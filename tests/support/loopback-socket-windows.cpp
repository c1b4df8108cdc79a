#include "tests/support/loopback-socket.h"

#include <winsock2.h>

#include <ws2tcpip.h>

namespace orvlog::test
{

namespace
{

SOCKET of(SocketHandle socket)
{
    return static_cast<SOCKET>(socket);
}

bool ready_within(SocketHandle socket, int milliseconds)
{
    fd_set one;
    one.fd_count = 1;
    one.fd_array[0] = of(socket);
    timeval limit = {milliseconds / 1000, (milliseconds % 1000) * 1000};
    return select(0, &one, nullptr, nullptr, &limit) > 0;
}

}  // namespace

SocketHandle listen_on_loopback(uint16_t& port)
{
    WSADATA data;
    if (WSAStartup(MAKEWORD(2, 2), &data) != 0)
        return kNoSocket;
    const SOCKET socket = ::socket(AF_INET, SOCK_STREAM, 0);
    sockaddr_in address = {};
    address.sin_family = AF_INET;
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    int size = sizeof(address);
    auto* general = reinterpret_cast<sockaddr*>(&address);
    if (socket == INVALID_SOCKET || bind(socket, general, size) != 0 || listen(socket, 16) != 0 ||
        getsockname(socket, general, &size) != 0)
        return kNoSocket;
    port = ntohs(address.sin_port);
    return static_cast<SocketHandle>(socket);
}

SocketHandle accept_within(SocketHandle listening, int milliseconds)
{
    if (!ready_within(listening, milliseconds))
        return kNoSocket;
    const SOCKET socket = accept(of(listening), nullptr, nullptr);
    return socket == INVALID_SOCKET ? kNoSocket : static_cast<SocketHandle>(socket);
}

bool receive_within(SocketHandle socket, int milliseconds, std::string& received)
{
    received.clear();
    if (!ready_within(socket, milliseconds))
        return true;
    char buffer[4096];
    const int length = recv(of(socket), buffer, sizeof(buffer), 0);
    if (length > 0)
        received.assign(buffer, static_cast<size_t>(length));
    return length > 0;
}

bool send_all(SocketHandle socket, const std::string& bytes)
{
    size_t sent = 0;
    while (sent < bytes.size())
    {
        const int length = send(of(socket), bytes.data() + sent, static_cast<int>(bytes.size() - sent), 0);
        if (length <= 0)
            return false;
        sent += static_cast<size_t>(length);
    }
    return true;
}

void close_socket(SocketHandle socket)
{
    closesocket(of(socket));
}

}  // namespace orvlog::test
